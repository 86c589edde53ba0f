// The headless program as a script calls it: its help, its exit statuses, and a project run
// through the real engine in a fresh copy of the program folder.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/program_folder.h"

namespace {

namespace fs = std::filesystem;
using tessaly::testing::ProgramFolderCopy;
using tessaly::testing::TempDir;

class TslyTest : public ::testing::Test {
 protected:
  int Tsly(const std::string& words, std::string* output) {
    return tessaly::testing::RunCommand(
        "cd '" + work.path().string() + "' && QT_QPA_PLATFORM=offscreen '" +
            program.Executable("tsly").string() + "' " + words + " 2>&1",
        output);
  }
  ProgramFolderCopy program;
  TempDir work;
};

TEST_F(TslyTest, HelpListsEveryCommandAndBadUsageSaysSoWithStatusTwo) {
  std::string out;
  EXPECT_EQ(Tsly("--help", &out), 0);
  EXPECT_NE(out.find("usage: tsly COMMAND"), std::string::npos) << out;
  for (const char* command : {"  run ", "  pool ", "  import ", "  aggregate ", "  add-series "})
    EXPECT_NE(out.find(command), std::string::npos) << command << out;
  for (const char* asked : {"run --help", "help run"}) {
    EXPECT_EQ(Tsly(asked, &out), 0);
    EXPECT_EQ(out.rfind("usage: tsly run PROJECT.xml", 0), 0u) << asked << out;
  }

  EXPECT_EQ(Tsly("", &out), 2);
  EXPECT_EQ(Tsly("forecast x.xml", &out), 2);
  EXPECT_NE(out.find("tsly: 'forecast' is not a command."), std::string::npos) << out;
  EXPECT_EQ(Tsly("run", &out), 2);
  EXPECT_NE(out.find("tsly run: name one project file."), std::string::npos) << out;
  EXPECT_EQ(Tsly("run AIRLINE.ASC", &out), 2);
}

TEST_F(TslyTest, RunForecastsTheSampleProjectNamedRelativeToTheCallersFolder) {
  fs::copy(program / "examples", work.path(), fs::copy_options::recursive);
  std::string out;
  EXPECT_EQ(Tsly("run quarterly.xml", &out), 0) << out;
  EXPECT_TRUE(fs::exists(work / "quarterly/OUTPUT/REALGDP.PRO")) << out;
  EXPECT_TRUE(fs::exists(work / "quarterly/OUTPUT/REALCONS.PRO")) << out;
  EXPECT_EQ(Tsly("run missing.xml", &out), 2);
  // The run's forecasts in one table.
  EXPECT_EQ(Tsly("export quarterly.xml", &out), 0) << out;
  EXPECT_NE(out.find("2 series of 2 exported to " + (work / "quarterly/OUTPUT/quarterlyFORECASTS.csv").string()),
            std::string::npos)
      << out;
  EXPECT_EQ(tessaly::testing::ReadFile(work / "quarterly/OUTPUT/quarterlyFORECASTS.csv")
                .rfind("PERIOD,REALGDP FORECAST,REALGDP LOWER ", 0),
            0u);
  EXPECT_EQ(Tsly("export annual.xml", &out), 2) << out;  // not run yet
  EXPECT_NE(out.find("NILE.ASC: no forecasts (not run, rejected or failed)"), std::string::npos) << out;
}

}  // namespace
