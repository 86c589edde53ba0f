// Runs the sample projects through the real engine in a fresh copy of the program folder and
// checks the files left behind.
#include "batch/unattended_run.h"

#include <gtest/gtest.h>

#include "platform/dialogs.h"
#include "platform/progress_wait.h"
#include "support/program_folder.h"

namespace tessaly::batch {
namespace {

using tessaly::testing::ProgramFolderCopy;
using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;

class UnattendedRunTest : public ::testing::Test {
 protected:
  void SetUp() override {
    host = std::make_shared<platform::RecordingDialogHost>();
    platform::SetDialogHost(host);
    RunState() = RunFlags{};
    fs::copy(program / "examples", work.path(), fs::copy_options::recursive);
  }
  void TearDown() override { platform::SetDialogHost(nullptr); }
  int Run(const std::string& project) {
    UnattendedRunOptions options;
    options.program_folder = program.path();
    options.install_unattended_hosts = false;
    return RunProjectUnattended(work / project, options);
  }
  const platform::RecordingDialogHost::Shown* Shown(const std::string& start) const {
    for (auto& s : host->shown)
      if (s.text.rfind(start, 0) == 0) return &s;
    return nullptr;
  }
  ProgramFolderCopy program;
  TempDir work;
  std::shared_ptr<platform::RecordingDialogHost> host;
};

TEST_F(UnattendedRunTest, SampleProjectForecastsTheMonthlySeriesAndRejectsTheOthers) {
  ASSERT_EQ(Run("sample.xml"), 0);
  fs::path out = work / "OUTPUT";
  for (const char* stem : {"AIRLINE", "ELNINO"}) {
    std::string s = stem;
    EXPECT_TRUE(fs::exists(out / (s + ".htm"))) << s;
    EXPECT_TRUE(fs::exists(out / (s + "STAT.HTM"))) << s;
    EXPECT_TRUE(fs::exists(out / (s + ".PRO"))) << s;
    EXPECT_FALSE(fs::exists(out / (s + "err.html"))) << s;
  }
  EXPECT_TRUE(fs::exists(out / "report.xml"));
  // The combined forecasts hold both series' files, one after the other.
  std::string combined = ReadFile(out / "CONsample.PRO");
  std::string airline = ReadFile(out / "AIRLINE.PRO"), elnino = ReadFile(out / "ELNINO.PRO");
  ASSERT_FALSE(airline.empty());
  EXPECT_EQ(combined.size(), airline.size() + elnino.size());

  std::string errors = ReadFile(program / "Process Errors.Err");
  EXPECT_EQ(errors.rfind("BROKEN.ASC\r\nThe total size of BROKEN.ASC does not agree", 0), 0u) << errors;
  EXPECT_NE(errors.find("NILE.ASC\r\nYou cannot process datasets with different seasonalities in the same "
                        "xml. Since the initial series seasonality is 12 and NILE.ASC seasonality is 1,it "
                        "will not be processed.\r\n"),
            std::string::npos)
      << errors;

  cBatchFile saved(program.path());
  ASSERT_TRUE(saved.Load(work / "sample.xml"));
  EXPECT_EQ(saved.Completed(0), 1);
  EXPECT_EQ(saved.Completed(1), 1);
  EXPECT_EQ(saved.Completed(2), 0);
  EXPECT_EQ(saved.Completed(3), 0);
  EXPECT_EQ(saved.AllComplete(), 1);
  EXPECT_EQ(saved.InDirectory(), work.path().string() + "/");
  EXPECT_NE(Shown("The forecasts for individual series are shown in "), nullptr);
  EXPECT_NE(Shown("Please see the following for reasons"), nullptr);
  // The engine's leftovers are gone from the program's folder.
  EXPECT_FALSE(fs::exists(program / "AIRLINE.PRO"));
  EXPECT_FALSE(fs::exists(program / "QVXRESPONSE.BIN"));
}

TEST_F(UnattendedRunTest, QuarterlyAndAnnualProjectsAndAnUnreadableOne) {
  ASSERT_EQ(Run("quarterly.xml"), 0);
  EXPECT_TRUE(fs::exists(work / "OUTPUT/REALGDP.PRO"));
  EXPECT_TRUE(fs::exists(work / "OUTPUT/REALCONS.PRO"));
  EXPECT_FALSE(fs::exists(program / "Process Errors.Err"));
  RunState() = RunFlags{};
  ASSERT_EQ(Run("annual.xml"), 0);
  EXPECT_TRUE(fs::exists(work / "OUTPUT/NILE.PRO"));
  EXPECT_FALSE(fs::exists(work / "OUTPUT/REALGDP.PRO"));  // a run starts with an empty OUTPUT
  tessaly::testing::WriteFile(work / "bad.xml", "<batch>");
  EXPECT_EQ(Run("bad.xml"), 1);
}

}  // namespace
}  // namespace tessaly::batch
