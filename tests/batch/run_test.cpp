#include "batch/run.h"

#include <gtest/gtest.h>

#include "batch/engine/engine_client.h"
#include "saved_project.h"
#include "support/messages.h"
#include "support/program_folder.h"

namespace tessaly::batch {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

// An ASC file: one output series (or an input and an output), its values one a line.
std::string Asc(const std::string& name, int seasonality, int n_obs, bool causal = false,
                int forecasts = 12) {
  std::string s = "0\n0\n0\n";
  int n = causal ? 2 : 1;
  for (int v : {n, seasonality, 1949, 1, n_obs, 0, 0, forecasts}) s += std::to_string(v) + "\n";
  if (causal) s += "PRICE\n";
  s += name + "\n";
  if (causal) s += "1\n";
  s += "0\n";
  for (int k = 0; k < n; ++k)
    for (int j = 0; j < n_obs; ++j) s += std::to_string(100 + j * 3 + k) + "\n";
  return s;
}

// Plays the engine: writes its report files into the working folder like qvxengine does,
// fails the datasets it is told to, and can be cancelled during a given call.
struct FakeEngine {
  fs::path folder;
  std::map<std::string, int16_t> failures;  // series name -> code
  int cancel_on_call = 0;
  int calls = 0;
  std::vector<std::string> names;

  EngineCallResult operator()(quorvane::EngineArrays& a, EngineReturn& r, const EngineCallContext& c) {
    ++calls;
    names.push_back(c.series_name);
    EngineCallResult result;
    if (calls == cancel_on_call) {
      c.session->canceled = true;
      result.outcome = EngineCallOutcome::Canceled;
      return result;
    }
    int n = a.property_values[0];
    std::string output = a.series_names[n - 1];
    r.returned_data_prop.assign(8, 0);
    r.returned_data_prop[0] = static_cast<int16_t>(n);
    r.returned_data_prop[7] = a.property_values[7];
    a.series_names[n - 1] = output + std::string(1, '\0');
    if (auto f = failures.find(output); f != failures.end()) {
      result.error_code = f->second;
      return result;
    }
    WriteFile(folder / "DETAILS.HTM", "<html>details of " + output + "</html>");
    WriteFile(folder / "STAT.HTM", "stat " + output);
    WriteFile(folder / "VERBAL.TXT", "verbal " + output);
    WriteFile(folder / "TS50PRO.123", output + "\r\n101.5\r\n102.5\r\n");
    std::string mape = fs::exists(folder / "SUMMAPE.TXT") ? ReadFile(folder / "SUMMAPE.TXT") : "";
    WriteFile(folder / "SUMMAPE.TXT", mape + output + " 3.1\r\n");
    WriteFile(folder / (output + ".STA"), "leftover");
    return result;
  }
};

struct RecordingView : RunView {
  std::vector<std::string> statuses;
  int menus_enabled = 0, menus_disabled = 0;
  void SetStatus(const std::string& t) override { statuses.push_back(t); }
  void SetRunMenusEnabled(bool enabled, bool) override { (enabled ? menus_enabled : menus_disabled)++; }
};

class RunTest : public ::testing::Test {
 protected:
  void SetUp() override {
    engine.folder = program.path();
    fs::create_directories(data / "out");
  }

  std::unique_ptr<BatchRun> MakeRun(bool no_trend_at_start = false) {
    RunOptions options{program.path(), false, no_trend_at_start};
    auto run = std::make_unique<BatchRun>(options, tree);
    run->SetEngineCall(std::ref(engine));
    run->SetEngineCreate([](int&, std::string&) { return true; });
    run->SetView(view);
    return run;
  }
  std::unique_ptr<cBatchFile> Project(const std::vector<std::string>& files) {
    auto p = std::make_unique<cBatchFile>(program.path());
    p->SetInDirectory(data.path().string());
    p->SetOutDirectory((data / "out").string());
    p->SetBatchName("sample.xml");
    for (auto& f : files) p->Add_File(f, 0, 0, "00/00/00");
    return p;
  }

  TempDir program, data;
  ReportTree tree;
  FakeEngine engine;
  std::shared_ptr<RecordingView> view = std::make_shared<RecordingView>();
  tessaly::testing::RecordedMessages host;
};

TEST_F(RunTest, MixedProjectFilesOutputsStatusesAndReasons) {
  WriteFile(data / "AIRLINE.ASC", Asc("PASSENGERS", 12, 48));
  WriteFile(data / "short.asc", Asc("SHORT", 12, 48).substr(0, Asc("SHORT", 12, 48).size() - 4));
  WriteFile(data / "nile.asc", Asc("NILE", 1, 100));
  WriteFile(data / "sales.asc", Asc("SALES", 12, 36, true));
  WriteFile(data / "GAS.asc", Asc("GAS", 12, 60));
  WriteFile(data / "out/OUTPUT/old.txt", "from an earlier run");
  WriteFile(program / "NOTREND.QVX", "1\r\n");  // left by the wizard; absent at start
  auto project = Project({"AIRLINE.ASC", "short.asc", "missing.asc", "nile.asc", "sales.asc", "GAS.asc"});
  project->SetChanged(true);
  auto run = MakeRun();
  ASSERT_TRUE(run->mnuBatchRun(project));

  // The question about unsaved changes came first and was answered Yes.
  ASSERT_FALSE(host->shown.empty());
  EXPECT_EQ(host->shown[0].text,
            "Running will automatically overwrite changes made to \"sample.xml\".  Continue?");
  fs::path out = data / "out/OUTPUT";
  EXPECT_FALSE(fs::exists(out / "old.txt"));
  EXPECT_EQ(engine.names, (std::vector<std::string>{"AIRLINE.ASC", "GAS.asc"}));
  EXPECT_EQ(ReadFile(out / "AIRLINE.htm"), "<html>details of PASSENGERS</html>");
  EXPECT_EQ(ReadFile(out / "GASSTAT.HTM"), "stat GAS");
  EXPECT_EQ(ReadFile(out / "AIRLINE.PRO"), "PASSENGERS\r\n101.5\r\n102.5\r\n");
  EXPECT_EQ(ReadFile(out / "CONsample.PRO"), "PASSENGERS\r\n101.5\r\n102.5\r\nGAS\r\n101.5\r\n102.5\r\n");
  EXPECT_EQ(ReadFile(out / "sampleMAPE.TXT"), "PASSENGERS 3.1\r\nGAS 3.1\r\n");
  EXPECT_FALSE(fs::exists(program / "GAS.STA"));

  std::string size_text =
      " does not agree with the anticipated size based on the individual DataProp()s and the fixed "
      "number of objectives and dataproperties. You must determine if the problem lies in the values "
      "supplied or the DataProp()s; and correct your .asc file accordingly. Please see \"Create Your "
      "Own ASC File\" in the user's guide for detailed instructions.";
  std::string errors =
      "short.asc\r\nThe total size of short.asc" + size_text + "\r\n"
      "missing.asc\r\nThe asc file was not found in the input folder " + data.path().string() +
      ". Check the project's input folder.\r\n"
      "nile.asc\r\nYou cannot process datasets with different seasonalities in the same xml. Since the "
      "initial series seasonality is 12 and nile.asc seasonality is 1,it will not be processed.\r\n"
      "sales.asc\r\nsample.xml You cannot process univariate and causal series in the same xml. Since the "
      "initial series is a univariate and sales.asc is a causal, it will not be processed.\r\n";
  EXPECT_EQ(ReadFile(program / "Process Errors.Err"), errors);
  EXPECT_EQ(run->Session().flags.ErrorCount, 4);

  // The saved project: the good files finished, the rejected ones untouched.
  cBatchFile saved(program.path());
  ASSERT_TRUE(saved.Load(data / "out/sample.xml"));
  EXPECT_EQ(saved.AllComplete(), 1);
  EXPECT_EQ(test::CompletedStatuses(saved), (std::vector<int>{1, 0, 0, 0, 0, 1}));
  EXPECT_EQ(saved.RunDate(0), TodayMmDdYy());
  EXPECT_EQ(saved.RunDate(1), "00/00/00");

  EXPECT_EQ(run->lblStatus(), "Finished processing.");
  const auto* fyi = host.Starting("The forecasts for individual series are shown in ");
  ASSERT_NE(fyi, nullptr);
  EXPECT_EQ(fyi->title, "FYI");
  EXPECT_EQ(fyi->text, "The forecasts for individual series are shown in " + out.string() +
                           "/Seriesname.Pro.\r\n\r\nThe forecast values for all the series processed "
                           "are shown in " + (out / "CONsample.PRO").string());
  const auto* reasons = host.Starting("Please see the following");
  ASSERT_NE(reasons, nullptr);
  EXPECT_EQ(reasons->text, "Please see the following for reasons the indicated series could not be "
                           "processed\r\n\r\n" + errors + "\r\nYou should delete \".err\" files periodically");
  // The tree: both series, the All nodes and the summary row that exists.
  EXPECT_TRUE(tree.Contains("AIRLINE.ASCR1"));
  EXPECT_TRUE(tree.Contains("GAS.ascR7"));
  // The rejected dataset keeps its place, its outcome in its name, with nothing under it.
  ASSERT_TRUE(tree.Contains("nile.asc"));
  EXPECT_EQ(tree.Find("nile.asc")->text, "nile.asc (rejected)");
  EXPECT_TRUE(tree.Children("nile.asc").empty());
  EXPECT_TRUE(tree.Contains("AR1"));
  EXPECT_FALSE(tree.Contains("AR2"));
  EXPECT_TRUE(tree.Contains("S6"));
  EXPECT_EQ(view->menus_disabled, 1);
  EXPECT_EQ(view->menus_enabled, 1);
  EXPECT_FALSE(fs::exists(program / "NOTREND.QVX"));
  EXPECT_FALSE(run->Session().flags.UnivariateRun);
}

// A first entry that is no dataset (a folder, a broken link) is rejected on its own turn;
// the run takes its kind from the first readable file, so the good files after it run.
TEST_F(RunTest, AFirstEntryThatIsNoFileDoesNotSetTheRunsKind) {
  fs::create_directories(data / "folder.asc");
  fs::create_symlink(data / "nowhere.asc", data / "broken.asc");
  WriteFile(data / "AIRLINE.ASC", Asc("PASSENGERS", 12, 48));
  WriteFile(data / "GAS.asc", Asc("GAS", 12, 60));
  auto project = Project({"folder.asc", "broken.asc", "AIRLINE.ASC", "GAS.asc"});
  auto run = MakeRun();
  ASSERT_TRUE(run->mnuBatchRun(project));
  EXPECT_EQ(engine.names, (std::vector<std::string>{"AIRLINE.ASC", "GAS.asc"}));
  EXPECT_EQ(ReadFile(program / "Process Errors.Err"),
            "folder.asc\r\nThe asc file is not a data file (a folder, a device or a pipe); it was not read.\r\n"
            "broken.asc\r\nThe asc file was not found in the input folder " + data.path().string() +
                ". Check the project's input folder.\r\n");
}

TEST_F(RunTest, AllRejectedEndsIncompleteAndEngineFailureLeavesFileStarted) {
  WriteFile(data / "a.asc", "0\n0\n0\n1\n12\n");
  auto project = Project({"a.asc", "gone.asc"});
  auto run = MakeRun(/*no_trend_at_start=*/true);
  ASSERT_TRUE(run->mnuBatchRun(project));
  EXPECT_EQ(run->lblStatus(), "Processing was incomplete.");
  EXPECT_EQ(project->AllComplete(), 1);
  EXPECT_EQ(engine.calls, 0);
  EXPECT_EQ(host.Starting("The forecasts"), nullptr);
  EXPECT_NE(host.Starting("Please see the following"), nullptr);
  EXPECT_EQ(ReadFile(program / "NOTREND.QVX"), "1\r\n");  // put back as it was at start

  host->shown.clear();
  WriteFile(data / "x.asc", Asc("X", 4, 40));
  WriteFile(data / "y.asc", Asc("Y", 4, 40));
  WriteFile(data / "z.asc", Asc("Z", 4, 40));
  engine.failures["Y"] = 34;
  auto second = Project({"x.asc", "y.asc", "z.asc"});
  auto run2 = MakeRun(true);
  ASSERT_TRUE(run2->mnuBatchRun(second));
  EXPECT_EQ(run2->lblStatus(), "Finished processing.");
  EXPECT_EQ(test::CompletedStatuses(*second), (std::vector<int>{1, -1, 1}));
  EXPECT_EQ(second->Error(1), 34);
  EXPECT_EQ(second->AllComplete(), -1);
  fs::path out = data / "out/OUTPUT";
  EXPECT_TRUE(fs::exists(out / "yerr.html"));
  EXPECT_FALSE(fs::exists(out / "y.htm"));
  ASSERT_TRUE(tree.Contains("y.asc"));
  EXPECT_EQ(tree.Find("y.asc")->text, "y.asc (failed)");
  EXPECT_TRUE(tree.Children("y.asc").empty());
  std::string errors = ReadFile(program / "Process Errors.Err");
  EXPECT_EQ(errors.rfind("y.asc\r\n", 0), 0u) << errors;
}

// Two datasets are already a project whose series can be walked together.
TEST_F(RunTest, TwoDatasetsGetTheAllNodes) {
  WriteFile(data / "a.asc", Asc("A", 12, 30));
  WriteFile(data / "b.asc", Asc("B", 12, 30));
  auto project = Project({"a.asc", "b.asc"});
  ASSERT_TRUE(MakeRun()->mnuBatchRun(project));
  EXPECT_TRUE(tree.Contains("AllRpts"));
  EXPECT_TRUE(tree.Contains("AllGphs"));
}

TEST_F(RunTest, CancelDuringTheThirdFile) {
  for (const char* n : {"a", "b", "c", "d", "e"}) WriteFile(data / (std::string(n) + ".asc"), Asc(n, 12, 30));
  auto project = Project({"a.asc", "b.asc", "c.asc", "d.asc", "e.asc"});
  project->SetCompleted(4, 1);
  project->SetRunDate(4, "01/02/25");
  engine.cancel_on_call = 3;
  auto run = MakeRun();
  ASSERT_TRUE(run->mnuBatchRun(project));
  EXPECT_EQ(engine.calls, 3);
  cBatchFile saved(program.path());
  ASSERT_TRUE(saved.Load(data / "out/sample.xml"));
  EXPECT_EQ(test::CompletedStatuses(saved), (std::vector<int>{1, 1, -1, 0, 1}));
  EXPECT_EQ(saved.RunDate(4), "01/02/25");
  EXPECT_EQ(saved.AllComplete(), -1);
  EXPECT_EQ(run->lblStatus(), "Finished processing.");
  // No "All" nodes after a cancel, and the run flags are cleared.
  EXPECT_FALSE(tree.Contains("AllRpts"));
  EXPECT_FALSE(run->Session().flags.UnivariateRun);
  EXPECT_NE(host.Starting("The forecasts"), nullptr);
}

TEST_F(RunTest, ProjectLimitOf2500Files) {
  WriteFile(data / "good.asc", Asc("GOOD", 12, 30));
  std::vector<std::string> files{"good.asc"};
  for (int i = 1; i < 2500; ++i) files.push_back("m" + std::to_string(i) + ".asc");
  auto project = Project(files);
  auto run = MakeRun();
  run->PrepareRunKind(*project);
  run->PrepareOutputPath(*project);
  run->RunEngine(*project, data / "p2500.xml");
  EXPECT_EQ(engine.calls, 1);
  EXPECT_EQ(run->Session().flags.ErrorCount, 2499);
  EXPECT_EQ(project->Completed(0), 1);
  EXPECT_TRUE(fs::exists(data / "p2500.xml"));

  host->shown.clear();
  fs::remove(program / "Process Errors.Err");
  project->Add_File("one-too-many.asc", 0, 0, "00/00/00");
  run->RunEngine(*project, data / "p2501.xml");
  ASSERT_EQ(host->shown.size(), 1u);
  EXPECT_EQ(host->shown[0].title, "FYI");
  EXPECT_EQ(host->shown[0].text,
            "sample.xml contains 2501 asc files. The allowable limit of asc files in a xml is 2500. Use "
            "\"Batch\\Edit\" to delete the excess asc files; or make a new xml file.");
  EXPECT_EQ(engine.calls, 1);
  EXPECT_FALSE(fs::exists(data / "p2501.xml"));
  EXPECT_FALSE(fs::exists(program / "Process Errors.Err"));
}

TEST_F(RunTest, WizardCancelAndAnsweringNoStopBeforeAnything) {
  WriteFile(data / "a.asc", Asc("A", 12, 30));
  struct Cancelling : RunRulesWizard {
    bool Show(const WizardRequest& r) override {
      seasonality = r.first.Seasonality();
      was_univariate = r.univariate;
      first = r.first_asc;
      stem = r.project_stem;
      return false;
    }
    fs::path first;
    std::string stem;
    int seasonality = 0;
    bool was_univariate = false;
  };
  auto wizard = std::make_shared<Cancelling>();
  auto project = Project({"a.asc"});
  auto run = MakeRun();
  run->SetRulesWizard(wizard);
  EXPECT_FALSE(run->mnuBatchRun(project));
  EXPECT_EQ(wizard->seasonality, 12);
  EXPECT_TRUE(wizard->was_univariate);
  EXPECT_EQ(wizard->first, data / "a.asc");
  EXPECT_EQ(wizard->stem, "sample");
  EXPECT_FALSE(run->Session().flags.UnivariateRun);
  EXPECT_EQ(engine.calls, 0);

  project->SetChanged(true);
  host->answers.push_back(platform::mb::No);
  EXPECT_FALSE(run->mnuBatchRun(project));
  EXPECT_TRUE(project->Changed());
  EXPECT_EQ(engine.calls, 0);

  std::unique_ptr<cBatchFile> none;
  EXPECT_FALSE(run->mnuBatchRun(none));
}

}  // namespace
}  // namespace tessaly::batch
