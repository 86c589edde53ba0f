#include "formats/batch_schema.h"

#include <gtest/gtest.h>

#include "support/program_folder.h"

namespace tessaly::batch {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::RunCommand;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

std::string Series(const std::string& stem) {
  std::string s = "<series name=\"" + stem + "\" complete=\"1\" err=\"0\" rundate=\"11/22/26\">";
  s += "<data>" + stem + ".asc</data><details>" + stem + ".htm</details>";
  for (const char* tag : {"history", "forecasts", "afit", "af", "aff", "ff", "ac", "res", "ar"})
    s += std::string("<") + tag + ">x</" + tag + ">";
  return s + "</series>";
}

std::string Project(const std::string& series, const std::string& set_attrs = "runcomplete=\"1\" objective=\"0\"") {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<batch inputpath=\"/d/\" outputpath=\"/d/\" "
         "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema-instance\" "
         "xsd:noNamespaceSchemaLocation=\"/p/DEFAULTXSD/batchschema1.0.2.xsd\">"
         "<set " + set_attrs + ">" + series + "</set></batch>\n";
}

// Validates with the stand-alone libxml2 checker, independent of our own XML layer.
bool Valid(const TempDir& dir, const std::string& xml) {
  WriteFile(dir / "p.xml", xml);
  std::string out;
  return RunCommand("xmllint --noout --schema '" + (dir / "batchschema1.0.2.xsd").string() + "' '" +
                        (dir / "p.xml").string() + "'",
                    &out) == 0;
}

TEST(BatchSchema, WritesASchemaThatAcceptsProjectsAndRefusesMalformedOnes) {
  TempDir dir;
  WriteFile(dir / "batchschema1.0.2.xsd", "an earlier file, overwritten");
  ASSERT_TRUE(CreateBATCHXSD(dir / "batchschema1.0.2.xsd"));
  EXPECT_FALSE(CreateBATCHXSD(dir / "missing-folder" / "s.xsd"));
  std::string text = ReadFile(dir / "batchschema1.0.2.xsd");
  EXPECT_EQ(text, BatchSchemaText());
  EXPECT_NE(text.find("elementFormDefault=\"qualified\""), std::string::npos);
  EXPECT_NE(text.find("\r\n"), std::string::npos);

  EXPECT_TRUE(Valid(dir, Project(Series("AIRLINE") + Series("nile"))));
  // An empty set: the series element is required once at least.
  EXPECT_FALSE(Valid(dir, Project("")));
  // A status that isn't an integer.
  EXPECT_FALSE(Valid(dir, Project(Series("A"), "runcomplete=\"yes\" objective=\"0\"")));
  // Output names out of order.
  std::string swapped = Series("A");
  swapped.replace(swapped.find("<history>"), 9, "<forecastz>");
  EXPECT_FALSE(Valid(dir, Project(swapped)));
}

}  // namespace
}  // namespace tessaly::batch
