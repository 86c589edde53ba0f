// Runs the sample projects through the real engine in a fresh copy of the program folder and
// checks the files left behind.
#include "batch/unattended_run.h"

#include <gtest/gtest.h>

#include <chrono>
#include <regex>
#include <sstream>
#include <thread>

#include "platform/progress_wait.h"
#include "saved_project.h"
#include "support/messages.h"
#include "support/program_folder.h"
#include "support/text_checks.h"

namespace tessaly::batch {
namespace {

using tessaly::testing::ProgramFolderCopy;
using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;

class UnattendedRunTest : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::copy(program / "examples", work.path(), fs::copy_options::recursive);
  }
  int Run(const std::string& project, int series_timeout = 0, int large_dataset_timeout = 900) {
    UnattendedRunOptions options;
    options.program_folder = program.path();
    options.series_timeout = std::chrono::seconds(series_timeout);
    options.large_dataset_timeout = std::chrono::seconds(large_dataset_timeout);
    options.install_unattended_hosts = false;
    lines.str("");
    options.out = &lines;
    return RunProjectUnattended(work / project, options);
  }
  // A project of the example datasets (or others written to the work folder).
  cBatchFile Project(const std::vector<std::string>& files, const fs::path& out) {
    cBatchFile p(program.path());
    p.SetInDirectory(work.path().string());
    p.SetOutDirectory(out.string());
    for (const auto& f : files) p.Add_File(f, 0, 0, "00/00/00");
    return p;
  }
  std::ostringstream lines;  // the datasets' lines and the tally of the last run
  ProgramFolderCopy program;
  TempDir work;
  tessaly::testing::RecordedMessages host;
};

TEST_F(UnattendedRunTest, TwoProjectsRunOneAfterTheOtherKeepBothProjectsReports) {
  ASSERT_EQ(Run("quarterly.xml"), kRunAllForecast);
  EXPECT_EQ(lines.str(), "1/2 REALGDP.ASC: forecast\n2/2 REALCONS.ASC: forecast\n"
                         "quarterly.xml: 2 forecast, 0 rejected, 0 failed (2 datasets)\n"
                         "Reports: " + (work / "quarterly/OUTPUT/").string() + "\n");
  EXPECT_FALSE(fs::exists(program / "Process Errors.Err"));
  ASSERT_EQ(Run("annual.xml"), kRunAllForecast);
  EXPECT_NE(lines.str().find("annual.xml: 1 forecast, 0 rejected, 0 failed (1 dataset)\n"), std::string::npos);
  for (const char* file : {"quarterly/OUTPUT/REALGDP.PRO", "quarterly/OUTPUT/REALCONS.PRO",
                           "annual/OUTPUT/NILE.PRO", "annual/OUTPUT/NILEEQUATION.TXT"})
    EXPECT_TRUE(fs::exists(work / file)) << file;
  EXPECT_FALSE(host.Starting("The folder "));  // neither run asked about another's reports
  tessaly::testing::WriteFile(work / "bad.xml", "<batch>");
  EXPECT_EQ(Run("bad.xml"), kRunNothing);
  EXPECT_EQ(lines.str(), "bad.xml: not run, the project could not be read\n");
}

TEST_F(UnattendedRunTest, ARunAsksBeforeDeletingAnotherProjectsReports) {
  ASSERT_EQ(Run("annual.xml"), kRunAllForecast);
  // A second project whose output folder is the annual project's.
  ASSERT_TRUE(Project({"REALGDP.ASC"}, work / "annual").Build(work / "gdp.xml"));
  const std::string question = "The folder " + (work / "annual/OUTPUT").string() +
                               " holds the reports of the project \"" + (work / "annual.xml").string() +
                               "\".\r\nRunning \"gdp.xml\" will delete them.\r\n\r\nRun it all the same?";
  host->answers.push_back(platform::mb::No);
  EXPECT_EQ(Run("gdp.xml"), kRunNothing);
  ASSERT_NE(host.Starting("The folder "), nullptr);
  EXPECT_EQ(host.Starting("The folder ")->text, question);
  EXPECT_TRUE(fs::exists(work / "annual/OUTPUT/NILE.PRO"));
  // Yes: the run takes the folder, and the next run of the same project asks nothing.
  host->shown.clear();
  host->answers.push_back(platform::mb::Yes);
  EXPECT_EQ(Run("gdp.xml"), kRunAllForecast);
  EXPECT_FALSE(fs::exists(work / "annual/OUTPUT/NILE.PRO"));
  EXPECT_TRUE(fs::exists(work / "annual/OUTPUT/REALGDP.PRO"));
  host->shown.clear();
  EXPECT_EQ(Run("gdp.xml"), kRunAllForecast);
  EXPECT_EQ(host.Starting("The folder "), nullptr);
}

TEST_F(UnattendedRunTest, AnEngineFailureAmongGoodFilesLeavesThatFileStarted) {
  // Holding back as many values as there are observations passes the front-end's checks
  // (retained equals forecasts) but not the engine's.
  std::string retained = "0\r\n0\r\n0\r\n1\r\n12\r\n2001\r\n1\r\n30\r\n0\r\n30\r\n30\r\nHELDBACK\r\n0\r\n";
  for (int i = 0; i < 60; ++i) retained += std::to_string(200 + (i % 12) * 7 + i) + "\r\n";
  tessaly::testing::WriteFile(work / "HELDBACK.ASC", retained);
  ASSERT_TRUE(Project({"AIRLINE.ASC", "HELDBACK.ASC", "ELNINO.ASC"}, work.path()).Build(work / "mixed.xml"));
  ASSERT_EQ(Run("mixed.xml"), kRunInPart);

  cBatchFile saved(program.path());
  ASSERT_TRUE(saved.Load(work / "mixed.xml"));
  EXPECT_EQ(test::CompletedStatuses(saved), (std::vector<int>{1, -1, 1}));
  EXPECT_GT(saved.Error(1), 0);
  const std::string printed = lines.str();
  EXPECT_EQ(printed.rfind("1/3 AIRLINE.ASC: forecast\n2/3 HELDBACK.ASC: failed (engine error " +
                          std::to_string(saved.Error(1)) + "): ",
                      0),
            0u)
      << printed;
  EXPECT_NE(printed.find("\n3/3 ELNINO.ASC: forecast\nmixed.xml: 2 forecast, 0 rejected, 1 failed (3 datasets)\n"),
            std::string::npos)
      << printed;
  EXPECT_EQ(saved.AllComplete(), -1);
  fs::path out = work / "OUTPUT";
  EXPECT_TRUE(fs::exists(out / "HELDBACKerr.html"));
  EXPECT_FALSE(fs::exists(out / "HELDBACK.htm"));
  EXPECT_TRUE(fs::exists(out / "ELNINO.htm"));
  std::string errors = ReadFile(program / "Process Errors.Err");
  EXPECT_EQ(errors.rfind("HELDBACK.ASC\r\n", 0), 0u) << errors;
  EXPECT_NE(ReadFile(out / "HELDBACKerr.html").find("Error Report for HELDBACK.ASC"), std::string::npos);
}

// A person who presses Cancel while the third series is in the engine.
class CancelOnSeries : public platform::ProgressWait {
 public:
  explicit CancelOnSeries(int number) : number_(number) {}
  void Wait(platform::WaitedWork& work) override {
    if (work.SeriesNumber() == number_) work.Cancel();
    while (!work.Finished()) {
      work.Poll();
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }

 private:
  int number_;
};

TEST_F(UnattendedRunTest, CancelDuringTheThirdSeriesKeepsWhatWasDone) {
  cBatchFile p = Project({"AIRLINE.ASC", "ELNINO.ASC", "AIRLINE.ASC", "ELNINO.ASC"}, work.path());
  p.SetRunDate(3, "07/04/25");
  ASSERT_TRUE(p.Build(work / "cancel.xml"));
  platform::SetProgressWait(std::make_shared<CancelOnSeries>(3));
  int status = Run("cancel.xml");
  platform::SetProgressWait(nullptr);
  ASSERT_EQ(status, kRunInPart);
  EXPECT_EQ(lines.str(), "1/4 AIRLINE.ASC: forecast\n2/4 ELNINO.ASC: forecast\n3/4 AIRLINE.ASC: canceled\n"
                         "cancel.xml: 2 forecast, 0 rejected, 0 failed, 1 canceled, 1 not run (4 datasets)\n"
                         "Reports: " + (work / "OUTPUT/").string() + "\n");

  cBatchFile saved(program.path());
  ASSERT_TRUE(saved.Load(work / "cancel.xml"));
  EXPECT_EQ(test::CompletedStatuses(saved), (std::vector<int>{1, 1, -1, 0}));
  EXPECT_EQ(saved.RunDate(3), "07/04/25");
  EXPECT_EQ(saved.AllComplete(), -1);
  const auto* canceled = host.Starting("Operation Canceled by user");
  ASSERT_NE(canceled, nullptr);
  EXPECT_EQ(canceled->title, "Tessaly RunEngine Call");
  EXPECT_FALSE(fs::exists(program / "KILLQUOR.QVX"));
}

// The program itself, as a person runs it: `tessaly PROJECT.xml` with no window. The sample
// project's monthly series are forecast; the others are rejected and the reasons shown.
TEST_F(UnattendedRunTest, TessalyRunsTheSampleProjectNamedOnTheCommandLine) {
  std::string output;
  int status = tessaly::testing::RunCommand(
      "QT_QPA_PLATFORM=offscreen '" + program.Executable().string() + "' '" + (work / "sample.xml").string() + "'",
      &output);
  EXPECT_EQ(status, kRunInPart) << output;
  fs::path out = work / "sample/OUTPUT";
  EXPECT_NE(output.find("Series 1 of 4: AIRLINE.ASC"), std::string::npos) << output;
  // Standard output: each dataset as it ends, the tally and the overview; the reasons of the
  // rejections kept on their lines; no warning of the toolkit.
  EXPECT_TRUE(tessaly::testing::HoldsAll(output, {"1/4 AIRLINE.ASC: forecast\n", "2/4 ELNINO.ASC: forecast\n",
      "3/4 BROKEN.ASC: rejected: The total size of BROKEN.ASC does not agree",
      "4/4 NILE.ASC: rejected: You cannot process datasets with different seasonalities in the "
          "same xml. Since the initial series seasonality is 12 and NILE.ASC seasonality is 1,it will "
          "not be processed.\n",
      "\nsample.xml: 2 forecast, 2 rejected, 0 failed (4 datasets)\nOverview: " + (out / "display.html").string() +
          "\n",
      "The forecasts for individual series are shown in ",
      "FYI: Please see the following for reasons the indicated series could not be processed\n\n  "
          "BROKEN.ASC\n  The total size of BROKEN.ASC"}));
  EXPECT_TRUE(tessaly::testing::HoldsNone(output, {" /  / ", "XDG_RUNTIME_DIR"}));
  for (std::string s : {"AIRLINE", "ELNINO"}) {
    for (const char* suffix : {".htm", "STAT.HTM", ".PRO", "actfore.jpg", "fore.jpg"})
      EXPECT_TRUE(fs::exists(out / (s + suffix))) << s << suffix;
    EXPECT_FALSE(fs::exists(out / (s + "err.html"))) << s;
  }
  // The overview tells the rejected datasets as such, with their reasons, and its counts add up.
  const std::string overview = ReadFile(out / "display.html");
  EXPECT_NE(overview.find(">2 finished</span> &middot; <span class=\"failed\">0 failed</span> &middot; "
                          "<span class=\"failed\">2 rejected</span> &middot; <span>0 not run</span>"),
            std::string::npos)
      << overview;
  EXPECT_NE(overview.find("Rejected<div class=\"why\">You cannot process datasets with different seasonalities"),
            std::string::npos);
  EXPECT_TRUE(fs::exists(out / "report.xml"));
  EXPECT_TRUE(fs::exists(out / "sample.html"));
  // The combined forecasts hold both series' files, one after the other.
  std::string airline = ReadFile(out / "AIRLINE.PRO");
  ASSERT_FALSE(airline.empty());
  EXPECT_EQ(ReadFile(out / "CONsample.PRO"), airline + ReadFile(out / "ELNINO.PRO"));

  std::string errors = ReadFile(program / "Process Errors.Err");
  EXPECT_EQ(errors.rfind("BROKEN.ASC\r\nThe total size of BROKEN.ASC does not agree", 0), 0u) << errors;
  EXPECT_NE(errors.find("NILE.ASC\r\nYou cannot process datasets with different seasonalities in the same "
                        "xml. Since the initial series seasonality is 12 and NILE.ASC seasonality is 1,it "
                        "will not be processed.\r\n"),
            std::string::npos)
      << errors;
  cBatchFile saved(program.path());
  ASSERT_TRUE(saved.Load(work / "sample.xml"));
  EXPECT_EQ(test::CompletedStatuses(saved), (std::vector<int>{1, 1, 0, 0}));
  EXPECT_EQ(saved.AllComplete(), 1);
  EXPECT_EQ(saved.InDirectory(), work.path().string() + "/");
  EXPECT_NE(ReadFile(work / "sample.xml").find("<series name=\"BROKEN\" complete=\"0\" err=\"0\" rundate=\"00/00/00\""),
            std::string::npos);
  // The engine's leftovers are gone from the program's folder.
  EXPECT_FALSE(fs::exists(program / "AIRLINE.PRO"));
  EXPECT_FALSE(fs::exists(program / "QVXRESPONSE.BIN"));
  // A project that cannot be read, or a word the program does not know, runs nothing.
  struct Case {
    std::string words;
    int status;
    std::string starts;
  } cases[] = {
      {"'" + (work / "missing.xml").string() + "'", kRunNothing, ""},
      {"--frobnicate", kRunNothing, "tessaly: unknown option '--frobnicate'"},
      {"--help", 0, "usage: tessaly [PROJECT.xml"},
      {"--version", 0, "tessaly 1.0\n"},
  };
  for (const Case& c : cases) {
    status = tessaly::testing::RunCommand("'" + program.Executable().string() + "' " + c.words, &output);
    EXPECT_EQ(status, c.status) << c.words << output;
    EXPECT_EQ(output.rfind(c.starts, 0), 0u) << c.words << output;
  }
}


// A dataset of 11 series of 10,000 quarterly observations, which the engine here never ends:
// with no limit given it is stopped at the large-dataset limit, said before it starts; a
// limit given holds instead, and nothing is said.
TEST_F(UnattendedRunTest, ALargeDatasetGetsATimeLimitWhenNoneIsGiven) {
  std::string asc = "0\r\n0\r\n0\r\n11\r\n4\r\n1990\r\n1\r\n10000\r\n8\r\n0\r\n8\r\n";
  for (int i = 1; i <= 22; ++i) asc += i <= 11 ? "X" + std::to_string(i) + "\r\n" : i < 22 ? "1\r\n" : "0\r\n";
  for (int v = 0; v < 11 * 10000 + 10 * 8; ++v) asc += std::to_string(100 + v % 37) + "\r\n";
  tessaly::testing::WriteFile(work / "BIG.ASC", asc);
  tessaly::testing::WriteFile(work / "big.xml", std::regex_replace(ReadFile(work / "annual.xml"), std::regex("NILE"), "BIG"));
  fs::rename(program / "qvxengine", program / "qvxengine.real");
  tessaly::testing::WriteFile(program / "qvxengine", "#!/bin/sh\nexec sleep 60\n");
  fs::permissions(program / "qvxengine", fs::perms::owner_all);
  const struct {
    int given, large;
    std::string said, logged;
  } cases[] = {{0, 2, "BIG.ASC holds 11 series of 10000 observations: the engine may take minutes on it, and is "
                      "stopped after 2 seconds (--series-timeout SECONDS sets another limit).", "limit of 2 seconds."},
               {3, 2, "", "limit of 3 seconds."}};
  for (const auto& c : cases) {
    host->shown.clear();
    EXPECT_EQ(Run("big.xml", c.given, c.large), kRunNothing);
    const auto* said = host.Starting("BIG.ASC holds");
    EXPECT_EQ(said ? said->text : "", c.said) << host.Joined();
    EXPECT_NE(ReadFile(program / "Process Errors.Err").find("The engine was stopped after the series time " + c.logged),
              std::string::npos);
  }
}

}  // namespace
}  // namespace tessaly::batch
