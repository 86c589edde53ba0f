// `tsly pool` as a script calls it, and the selections it refuses: the system's messages,
// status 2, no stack written and no source file changed.
#include <gtest/gtest.h>

#include <sstream>

#include "batch/batch_file.h"
#include "platform/numfmt.h"
#include "platform/textfile.h"
#include "pool/pool_command.h"
#include "rules/model_file.h"
#include "support/messages.h"
#include "support/program_folder.h"

namespace tessaly::pool {
namespace {

using tessaly::testing::ProgramFolderCopy;
using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;

class PoolCommandTest : public ::testing::Test {
 public:
  // A monthly univariate file (or `series` series) of `n` values.
  void Asc(const std::string& name, int n, int series = 1, const std::string& seasonality = "12") {
    std::vector<std::string> lines{"0", "0", "0", std::to_string(series), seasonality, "2015", "1",
                                   std::to_string(n), "0", "0", "6"};
    for (int s = 1; s < series; ++s) lines.push_back("PRICE" + std::to_string(s));
    lines.push_back(name.substr(0, name.size() - 4));
    for (int s = 0; s < series; ++s) lines.push_back(s + 1 == series ? "0" : "1");
    for (int s = 0; s < series; ++s)
      for (int i = 0; i < n; ++i) lines.push_back(platform::NumberToText(100 + ((i * 37 + name.size() * 11) % 13)));
    EXPECT_TRUE(platform::WriteAllLines(work / name, lines));
  }
  fs::path Project(const std::vector<std::string>& files) {
    batch::cBatchFile p(program.path());
    p.SetInDirectory(work.path().string());
    p.SetOutDirectory(work.path().string());
    for (const auto& f : files) p.Add_File(f, 0, 0, "00/00/00");
    EXPECT_TRUE(p.Build(work / "STORES.xml"));
    return work / "STORES.xml";
  }
  int Pool(const std::vector<std::string>& files, std::string* err_text = nullptr) {
    ModelChoice choice;
    choice.preset = 2;
    std::ostringstream out, err;
    PoolCommandOptions options;
    options.program_folder = program.path();
    int status = RunPoolCommand(Project(files), files, choice, options, out, err);
    if (err_text) *err_text = err.str();
    return status;
  }
  ProgramFolderCopy program;
  TempDir work;
  tessaly::testing::RecordedMessages host;
};

TEST_F(PoolCommandTest, RefusedSelectionsSayWhyAndChangeNothing) {
  const std::string review = "  Please review all selected asc files for accuracy.";
  struct Case {
    const char* what;
    std::function<void(PoolCommandTest&)> files;
    std::vector<std::string> chosen;
    std::string message;  // the start of the message shown
  };
  std::vector<Case> cases{
      // The checks shared with the aggregation have their words checked with the children's
      // selection; these are the pooling's own, and the refusal's whole path.
      {"series counts", [](PoolCommandTest& t) { t.Asc("A.ASC", 24); t.Asc("B.ASC", 24, 2); }, {"A.ASC", "B.ASC"},
       "B.ASC does not have the same number of series as the other series." + review},
      {"an empty file", [](PoolCommandTest& t) { t.Asc("A.ASC", 24); EXPECT_TRUE(platform::WriteWholeFile(t.work / "B.ASC", "")); },
       {"A.ASC", "B.ASC"}, "B.ASC is an empty or malformed file." + review},
  };
  std::vector<std::string> many;
  for (int i = 0; i < 150; ++i) many.push_back("S" + std::to_string(i) + ".ASC");
  cases.push_back({"150 files", [](PoolCommandTest&) {}, many,
                   "You have selected 150 asc files. The allowable limit of Series in an Pooling is 149. You must "
                   "delete the excess asc files."});
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    for (const auto& entry : fs::directory_iterator(work.path())) fs::remove_all(entry.path());
    host->shown.clear();
    c.files(*this);
    std::map<std::string, std::string> before;
    for (const auto& entry : fs::directory_iterator(work.path()))
      before[entry.path().filename().string()] = ReadFile(entry.path());
    EXPECT_EQ(Pool(c.chosen), 2);
    ASSERT_FALSE(host->shown.empty());
    EXPECT_EQ(host->shown.front().text.substr(0, c.message.size()), c.message) << host.Joined();
    EXPECT_FALSE(fs::exists(work / "TOTALPOOL.ASC"));
    EXPECT_FALSE(fs::exists(program / "POOLPARAMS.RWF"));
    for (const auto& [name, bytes] : before) {
      if (name != "STORES.xml") {
        EXPECT_EQ(ReadFile(work / name), bytes) << name;
      }
    }
  }
  // A file that is not the project's is refused before anything is read.
  Asc("A.ASC", 24);
  Asc("B.ASC", 24);
  ModelChoice choice;
  choice.preset = 2;
  std::ostringstream out, err_stream;
  PoolCommandOptions options;
  options.program_folder = program.path();
  EXPECT_EQ(RunPoolCommand(Project({"A.ASC"}), {"A.ASC", "B.ASC"}, choice, options, out, err_stream), 2);
  EXPECT_NE(err_stream.str().find("B.ASC is not a file of the project"), std::string::npos);
}

TEST_F(PoolCommandTest, TslyPoolsWithAnExplicitModelAndPrintsTheFTest) {
  Asc("A.ASC", 36);
  Asc("BB.ASC", 36);
  Project({"A.ASC", "BB.ASC"});
  // AR(1) with a constant, in the layout the wizard writes.
  rules::StartmodPage page;
  rules::SetNoiseDefaults(page);
  page.txtStartmod5.text = "1";
  page.txtStartmod7.text = "1";
  page.txtStartmod8.text = "1";
  page.txtStartmod9.text = "0.4";
  rules::ModelTable table;
  table.SetRow(0, rules::BuildNoiseRow(page, "TOTALPOOL", 1));
  ASSERT_TRUE(rules::WriteModelFile(work / "AR1.MOD", table, 1));

  std::string output;
  auto tsly = [&](const std::string& words) {
    return tessaly::testing::RunCommand("cd '" + work.path().string() + "' && '" + program.Executable("tsly").string() +
                                            "' " + words + " 2>&1",
                                        &output);
  };
  EXPECT_EQ(tsly("pool --help"), 0);
  EXPECT_EQ(output.rfind("usage: tsly pool PROJECT.xml FILE.ASC FILE.ASC", 0), 0u) << output;
  EXPECT_EQ(tsly("pool STORES.xml A.ASC BB.ASC"), 2);
  EXPECT_NE(output.find("give --model MODELFILE or --preset N."), std::string::npos) << output;
  EXPECT_EQ(tsly("pool STORES.xml A.ASC BB.ASC --preset 51"), 1) << output;  // regression needs inputs
  EXPECT_NE(output.find("there is no canned model 51 for these series."), std::string::npos) << output;
  EXPECT_NE(output.find("FYI: The process has been cancelled by the user."), std::string::npos) << output;
  EXPECT_NE(output.find("Pooling - Processing was incomplete."), std::string::npos) << output;

  ASSERT_EQ(tsly("pool STORES.xml A.ASC BB.ASC --model AR1.MOD"), 0) << output;
  EXPECT_NE(output.find("F = "), std::string::npos) << output;
  EXPECT_NE(output.find(") degrees of freedom"), std::string::npos) << output;
  EXPECT_NE(output.find("Pooling - Finished processing."), std::string::npos) << output;
  std::string equation = ReadFile(work / "OUTPUT" / "TOTALPOOLEQUATION.TXT");
  EXPECT_NE(equation.find("USER"), std::string::npos) << equation;
  EXPECT_TRUE(fs::exists(work / "OUTPUT" / "STORESANALYSIS.TXT"));
  EXPECT_TRUE(fs::exists(work / "OUTPUT" / "TOTALPOOLactfit.jpg"));
  EXPECT_FALSE(fs::exists(program / "TOTALPOOL.I01"));  // the model's place in the wizard is gone
}

}  // namespace
}  // namespace tessaly::pool
