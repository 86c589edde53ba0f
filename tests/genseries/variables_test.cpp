// The variables file: all 33 places written and read back, the schema it must satisfy, and
// the shift a hand-inserted comment causes.
#include <gtest/gtest.h>

#include "formats/bp_schema.h"
#include "genseries/variables.h"
#include "platform/textfile.h"
#include "platform/xml.h"
#include "support/program_folder.h"

namespace tessaly::genseries {
namespace {

GenerationVariables Full() {
  GenerationVariables v;
  v.FirstObjective = "2", v.SecondObjective = "1", v.ThirdObjective = "3", v.NumberOfNewSeries = "5";
  v.BPSeaonality = "12", v.MajorPeriod = "1995", v.MinorPeriod = "4";
  v.LevelStartYear = "1996", v.LevelStartPeriod = "2", v.LevelEndYear = "1997", v.LevelEndPeriod = "3";
  v.PulseStartYear = "1998", v.PulseStartPeriod = "5", v.PulseEndYear = "1998", v.PulseEndPeriod = "5";
  v.TrendStartYear = "1999", v.TrendStartPeriod = "1", v.TrendEndYear = "2000", v.TrendEndPeriod = "12";
  v.SelectedHolidays = {{1, "M_CHRISTMAS"}, {2, "M_GOODFRIDAY"}};
  v.Dateof1stHolidayObservation = "04/01/1995";
  v.NumberofHolidaysSelected = "2";
  v.UserDefName = "BUSDAYS", v.UserDefType = "1", v.UserDefMethod = "Business Days";
  v.DateOfFirstObservation = "04/01/1995";
  v.SelectedDay = "3", v.SelectedMonth = "7", v.SelectedQuarter = "2";
  return v;
}

TEST(VariablesFile, AllPlacesRoundTripAndTheFileSatisfiesItsSchema) {
  testing::TempDir dir;
  fs::create_directories(dir / "DEFAULTXSD");
  ASSERT_TRUE(WriteBPSchema(dir / "DEFAULTXSD" / "BPSchema.xsd"));
  const fs::path his = dir / "rwf.his";
  ASSERT_TRUE(BuildXML(his, Full(), "/data/in/", "/data/out/", dir.path()));
  // Every place read back: the file written again from what was read is the same file.
  GenerationVariables back;
  ASSERT_TRUE(LoadXmlFile(his, back).ok);
  ASSERT_TRUE(BuildXML(dir / "again.his", back, "/data/in/", "/data/out/", dir.path()));
  EXPECT_EQ(platform::ReadWholeFile(dir / "again.his"), platform::ReadWholeFile(his));
  EXPECT_EQ(back.SelectedQuarter, "2");
  EXPECT_EQ(back.HolidayNames(), (std::vector<std::string>{"M_CHRISTMAS", "M_GOODFRIDAY"}));

  auto parsed = platform::xml::ParseFile(his);
  ASSERT_TRUE(parsed);
  platform::xml::Node root = parsed.document->Root();
  EXPECT_EQ(root.Name(), "BP_Variables");
  EXPECT_EQ(root.Child(0).Text(), "batch variables required for batch processing");
  EXPECT_EQ(root.Attribute("inputpath"), "/data/in/");
  EXPECT_EQ(root.ChildElements().size(), 33u);
  EXPECT_EQ(root.ElementsByTagName("Holiday18").size(), 1u);
  EXPECT_EQ(root.Attribute("xsd:noNamespaceSchemaLocation"), (dir / "DEFAULTXSD" / "BPSchema.xsd").string());
  platform::xml::ValidationResult valid =
      platform::xml::ValidateAgainstSchema(*parsed.document, dir / "DEFAULTXSD" / "BPSchema.xsd");
  EXPECT_TRUE(valid.valid) << valid.reason;
  EXPECT_EQ(platform::ReadWholeFile(his)->rfind("<?xml version=\"1.0\" encoding=\"UTF-8\"?>", 0), 0u);
  // A place left out is a fault the schema sees.
  std::string cut = *platform::ReadWholeFile(his);
  cut.erase(cut.find("<MinorPeriod>"), cut.find("</MinorPeriod>") + 14 - cut.find("<MinorPeriod>"));
  auto without = platform::xml::ParseString(cut);
  ASSERT_TRUE(without);
  EXPECT_FALSE(platform::xml::ValidateAgainstSchema(*without.document, dir / "DEFAULTXSD" / "BPSchema.xsd"));

  // The reader goes by position: a comment after the first shifts every later value by one.
  std::string text = *platform::ReadWholeFile(his);
  const std::string marker = "<FirstObjective>";
  text.insert(text.find(marker), "<!--edited by hand-->");
  EXPECT_TRUE(platform::WriteWholeFile(his, text));
  GenerationVariables shifted;
  ASSERT_TRUE(LoadXmlFile(his, shifted).ok);
  EXPECT_EQ(shifted.FirstObjective, "edited by hand");
  EXPECT_EQ(shifted.SecondObjective, "2");
  EXPECT_EQ(shifted.BPSeaonality, "5");
  EXPECT_EQ(shifted.SelectedQuarter, "7");
}

TEST(VariablesFile, DatesAndTheirAbsence) {
  EXPECT_FALSE(VariableDate("00/00/01"));
  EXPECT_FALSE(VariableDate(""));
  EXPECT_FALSE(VariableDate("02/30/2001"));
  EXPECT_EQ(VariableDate(" 1/15/2001 "), (platform::dates::Date{2001, 1, 15}));
  EXPECT_EQ(FormatVariableDate({2001, 1, 5}), "01/05/2001");
}

}  // namespace
}  // namespace tessaly::genseries
