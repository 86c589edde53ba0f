#include "batch/batch_file.h"

#include <gtest/gtest.h>

#include "formats/batch_schema.h"
#include "support/messages.h"
#include "support/program_folder.h"
#include "support/text_checks.h"

namespace tessaly::batch {
namespace {

namespace fs = std::filesystem;
using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

struct BatchFileTest : ::testing::Test {
  TempDir program, data;
  tessaly::testing::RecordedMessages host;
};

TEST_F(BatchFileTest, StartStateAndDirectoriesEndInSlash) {
  cBatchFile b(program.path());
  EXPECT_EQ(b.BatchName(), "defaultname.xml");
  EXPECT_EQ(b.InDirectory(), program.path().string() + "/");
  EXPECT_EQ(b.Size(), 0);
  b.SetInDirectory("/data/asc");
  b.SetOutDirectory("/data/out/");
  EXPECT_EQ(b.InDirectory(), "/data/asc/");
  EXPECT_EQ(b.OutDirectory(), "/data/out/");
  b.Add_File("A.ASC", 0, 0, "00/00/00");
  b.Clear();
  EXPECT_EQ(b.Size(), 0);
  EXPECT_EQ(b.OutDirectory(), program.path().string() + "/");
}

TEST_F(BatchFileTest, BuildWritesTheProjectFormAndLoadReadsItBack) {
  cBatchFile b(program.path());
  b.SetInDirectory(data.path().string());
  b.SetOutDirectory(data.path().string() + "/out");
  b.SetObjective(2);
  b.SetAllComplete(-1);
  b.Add_File("airline.asc", 1, 0, "11/22/26");
  b.Add_File("NILE.ASC", -1, 34, "11/21/26");
  b.Add_File("quarterly.dat", 0, 0, "00/00/00");
  fs::path xml = data / "proj.xml";
  ASSERT_TRUE(b.Build(xml));

  std::string text = ReadFile(xml);
  EXPECT_EQ(text.rfind("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<batch ", 0), 0u) << text;
  std::string second = text.substr(text.find("\r\n") + 2);
  second = second.substr(0, second.find("\r\n"));
  EXPECT_TRUE(tessaly::testing::HoldsAll(second, {"xmlns:xsd=\"http://www.w3.org/2001/XMLSchema-instance\"",
      "xsd:noNamespaceSchemaLocation=\"" + program.path().string() + "/DEFAULTXSD/batchschema1.0.2.xsd\""}));
  EXPECT_TRUE(tessaly::testing::HoldsAll(text, {"<set runcomplete=\"-1\" objective=\"2\">",
      "<series name=\"NILE\" complete=\"-1\" err=\"34\" rundate=\"11/21/26\">"}));
  // A name without ".asc" keeps its whole text.
  EXPECT_NE(text.find("<series name=\"quarterly.dat\""), std::string::npos);
  for (const char* piece :
       {"<data>airline.asc</data>", "<details>airline.htm</details>", "<history>airlineact.jpg</history>",
        "<forecasts>airlinefore.jpg</forecasts>", "<afit>airlineactfit.jpg</afit>",
        "<af>airlineactfore.jpg</af>", "<aff>airlineactfitfore.jpg</aff>", "<ff>airlinefitfore.jpg</ff>",
        "<ac>airlineactcleanse.jpg</ac>", "<res>airlineres.jpg</res>", "<ar>airlineactres.jpg</ar>"})
    EXPECT_NE(text.find(piece), std::string::npos) << piece;

  cBatchFile c(program.path());
  CurrentSchema() = false;
  ASSERT_TRUE(c.Load(xml)) << (host->shown.empty() ? "" : host->shown[0].text);
  EXPECT_TRUE(CurrentSchema());
  EXPECT_EQ(c.BatchName(), "proj.xml");
  EXPECT_EQ(c.InDirectory(), data.path().string() + "/");
  EXPECT_EQ(c.OutDirectory(), data.path().string() + "/out/");
  EXPECT_EQ(c.Objective(), 2);
  EXPECT_EQ(c.AllComplete(), -1);
  ASSERT_EQ(c.Size(), 3);
  EXPECT_EQ(c.List(1), "NILE.ASC");
  EXPECT_EQ(c.Completed(1), -1);
  EXPECT_EQ(c.Error(1), 34);
  EXPECT_EQ(c.RunDate(0), "11/22/26");
  EXPECT_TRUE(host->shown.empty());
  // The schema was written where it was missing.
  EXPECT_EQ(ReadFile(program / "DEFAULTXSD/batchschema1.0.2.xsd"), BatchSchemaText());
}

TEST_F(BatchFileTest, OlderSchemaIsRewrittenOnFirstLoad) {
  std::string series =
      "<series name=\"A\" complete=\"1\" err=\"0\" rundate=\"01/02/05\"><data>A.ASC</data>"
      "<details>A.htm</details><history>x</history><forecasts>x</forecasts><afit>x</afit><af>x</af>"
      "<aff>x</aff><ff>x</ff><ac>x</ac><res>x</res><ar>x</ar></series>";
  WriteFile(data / "old.xml",
            "<?xml version=\"1.0\"?>\n<batch inputpath=\"C:\\asc\\\" outputpath=\"/out/\" "
            "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema-instance\" "
            "xsd:noNamespaceSchemaLocation=\"C:\\Tessaly\\DEFAULTXSD\\batchschema1.0.1.xsd\">\n"
            "<set runcomplete=\"1\" objective=\"3\">" + series + "</set></batch>\n");
  cBatchFile b(program.path());
  ASSERT_TRUE(b.Load(data / "old.xml"));
  EXPECT_TRUE(CurrentSchema());
  EXPECT_EQ(b.Size(), 1);
  EXPECT_EQ(b.Objective(), 3);
  std::string text = ReadFile(data / "old.xml");
  EXPECT_NE(text.find("batchschema1.0.2.xsd"), std::string::npos);
  EXPECT_NE(text.find("<ar>Aactres.jpg</ar>"), std::string::npos);  // output names written afresh
}

TEST_F(BatchFileTest, FailedLoadsShowTheParserReason) {
  cBatchFile b(program.path());
  b.SetInDirectory("/x");
  ASSERT_TRUE(b.Build(data / "empty.xml"));  // a project with no series fails the schema
  CurrentSchema() = true;
  EXPECT_FALSE(b.Load(data / "empty.xml"));
  EXPECT_FALSE(CurrentSchema());
  EXPECT_EQ(b.Size(), 0);
  WriteFile(data / "broken.xml", "<batch><set></batch>");
  EXPECT_FALSE(b.Load(data / "broken.xml"));
  EXPECT_FALSE(b.Load(data / "missing.xml"));
  ASSERT_EQ(host->shown.size(), 3u);
  for (auto& s : host->shown) EXPECT_EQ(s.text.rfind("The xml document failed, because ", 0), 0u) << s.text;
  EXPECT_GT(host->shown[0].text.size(), std::string("The xml document failed, because ").size());
}

TEST_F(BatchFileTest, RelativeFoldersAreTakenFromTheProjectsFolder) {
  cBatchFile b(program.path());
  b.Add_File("A.ASC", 0, 0, "00/00/00");
  ASSERT_TRUE(b.Build(data / "p.xml"));
  std::string text = ReadFile(data / "p.xml");
  auto swap = [&](const std::string& attr, const std::string& value) {
    size_t at = text.find(attr + "=\"") + attr.size() + 2;
    text.replace(at, text.find('"', at) - at, value);
  };
  swap("inputpath", "./");
  swap("outputpath", "results");
  WriteFile(data / "p.xml", text);
  ASSERT_TRUE(b.Load(data / "p.xml"));
  EXPECT_EQ(b.InDirectory(), data.path().string() + "/");
  EXPECT_EQ(b.OutDirectory(), data.path().string() + "/results/");
  // No output folder (empty or blanks): beside the project, never the root of the disk.
  for (const char* out : {"", "  "}) {
    swap("outputpath", out);
    WriteFile(data / "p.xml", text);
    ASSERT_TRUE(b.Load(data / "p.xml"));
    EXPECT_EQ(b.OutDirectory(), data.path().string() + "/") << '"' << out << '"';
  }
}

// A project file from elsewhere cannot make the program read other files, reach the
// network, or swell in memory: a document that declares entities is refused whole.
TEST_F(BatchFileTest, AHostileProjectFileIsRefusedAndReadsNothingElse) {
  WriteFile(data / "secret.txt", "PASSWORD-1234");
  cBatchFile good(program.path());
  good.Add_File("A.ASC", 0, 0, "00/00/00");
  ASSERT_TRUE(good.Build(data / "good.xml"));
  std::string text = ReadFile(data / "good.xml");
  const std::string body = text.substr(text.find("<batch"));
  const std::string file_entity = "<!DOCTYPE batch [<!ENTITY s SYSTEM \"file://" + (data / "secret.txt").string() + "\">]>";
  // Each entity ten of the one before: "&g;" is 60 MB of text from a file of 1 KiB.
  std::string laughs = "<!DOCTYPE batch [<!ENTITY a \"" + std::string(60, 'a') + "\">";
  for (char c = 'b'; c <= 'g'; ++c) {
    std::string tens;
    for (int i = 0; i < 10; ++i) tens += std::string("&") + static_cast<char>(c - 1) + ";";
    laughs += std::string("<!ENTITY ") + c + " \"" + tens + "\">";
  }
  laughs += "]>";
  struct Case {
    const char* what;
    std::string prolog;
    std::string data;
  };
  const Case cases[] = {
      {"an entity naming a local file", file_entity, "&s;"},
      {"an external DTD on the network", "<!DOCTYPE batch SYSTEM \"http://127.0.0.1:9/evil.dtd\">", "A.ASC"},
      {"entities nested to 60 MB", laughs, "&g;"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    std::string hostile = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + c.prolog + "\n" + body;
    hostile.replace(hostile.find("<data>A.ASC</data>"), 18, "<data>" + c.data + "</data>");
    WriteFile(data / "hostile.xml", hostile);
    host->shown.clear();
    cBatchFile b(program.path());
    bool loaded = b.Load(data / "hostile.xml");
    for (auto& m : host->shown) EXPECT_EQ(m.text.find("PASSWORD"), std::string::npos) << m.text;
    if (loaded) {
      ASSERT_EQ(b.Size(), 1);
      EXPECT_EQ(b.List(0).find("PASSWORD"), std::string::npos);
      EXPECT_LT(b.List(0).size(), 100u);
    }
    // Only the external DTD, which is never fetched, leaves a project that can be read.
    EXPECT_EQ(loaded, c.data == "A.ASC");
  }
}

TEST_F(BatchFileTest, IndexBoundsAndEmptyListMessages) {
  cBatchFile b(program.path());
  EXPECT_EQ(b.List(0), "");
  b.SetList(0, "x");
  b.SetCompleted(0, 1);
  b.Remove_File();
  b.Add_File("A.ASC", 0, 0, "00/00/00");
  // Index Size is out of bounds everywhere.
  EXPECT_EQ(b.List(1), "");
  b.SetList(1, "x");
  EXPECT_EQ(b.Completed(1), 0);
  b.SetCompleted(1, 1);
  EXPECT_EQ(b.Error(1), 0);
  b.SetError(-1, 1);
  EXPECT_EQ(b.RunDate(1), "");
  b.SetRunDate(1, "x");
  EXPECT_EQ(host.Texts(), (std::vector<std::string>{
                         "Error: entry attempted to be retrieved from an empty list.",
                         "Error: entry attempted to be changed in an empty list.",
                         "Error: entry attempted to be retrieved from an empty list.",
                         "Error: entry attempted to be removed from an empty list",
                         "Error: out-of-bounds index in \"List(get)\" method.",
                         "Error: out-of-bounds index given in \"List (let)\" method.",
                         "Error: out-of-bounds index in \"Completed (get)\" method.",
                         "Error: out-of-bounds index in \"Completed (let)\" method.",
                         "Error: out-of-bounds index in \"Error (get)\" method.",
                         "Error: out-of-bounds index in \"Error (let)\" method.",
                         "Error: out-of-bounds index in \"RunDate (get)\" method.",
                         "Error: out-of-bounds index in \"RunDate (let)\" method.",
                     }));
  EXPECT_EQ(b.List(0), "A.ASC");
  b.Remove_File();
  EXPECT_EQ(b.Size(), 0);
}

}  // namespace
}  // namespace tessaly::batch
