// Two projects' runs side by side in one program, each in its own thread and program folder
// with real engines: both complete, and a cancel stops its own run and none of the other's
// engines, even one running while the cancel kills.
#include <gtest/gtest.h>

#include <signal.h>

#include <future>
#include <thread>

#include "batch/run.h"
#include "support/program_folder.h"

namespace tessaly::batch {
namespace {

using namespace std::chrono_literals;

// Polls like the unattended wait; `on_second` is called as the second dataset's engine starts.
struct HookedWait : platform::ProgressWait {
  std::function<void(platform::WaitedWork&)> on_second;
  void Wait(platform::WaitedWork& work) override {
    if (on_second && work.SeriesNumber() == 2) on_second(work);
    for (work.Poll(); !work.Finished(); work.Poll()) std::this_thread::sleep_for(2ms);
  }
};

// A project of three monthly datasets with its own data and program folders.
struct ProjectRun {
  tessaly::testing::ProgramFolderCopy program;
  tessaly::testing::TempDir data;
  ReportTree tree;
  HookedWait wait;
  BatchRun run{RunOptions{program.path(), true, false}, tree};
  std::unique_ptr<cBatchFile> project = std::make_unique<cBatchFile>(program.path());

  ProjectRun() {
    project->SetInDirectory(data.path().string());
    project->SetOutDirectory(data.path().string());
    project->SetBatchName("monthly.xml");
    for (const char* asc : {"AIRLINE.ASC", "SECOND.ASC", "THIRD.ASC"}) {
      fs::copy_file(program / "examples/AIRLINE.ASC", data / asc);
      project->Add_File(asc, 0, 0, "00/00/00");
    }
    run.SetEngineCall([this](quorvane::EngineArrays& a, EngineReturn& r, const EngineCallContext& c) {
      EngineCallHooks hooks;
      hooks.cancel_grace = 0ms;  // a cancelled engine is killed at once, from its run's record
      return CallEngine(a, r, program.path(), c, wait, hooks);
    });
  }
  std::vector<FileResult> Results() const {
    std::vector<FileResult> results;
    for (const auto& report : run.FileReports()) results.push_back(report.result);
    return results;
  }
};

TEST(RunState, TwoRunsSideBySideEachCancelOnlyItsOwn) {
  // The runs' messages go to standard error, as an unattended run's do.
  using enum FileResult;
  for (const bool first_cancels : {true, false}) {
    SCOPED_TRACE(first_cancels ? "the first run cancels" : "the second run cancels");
    ProjectRun runs[2];
    ProjectRun& canceler = runs[first_cancels ? 0 : 1];
    ProjectRun& bystander = runs[first_cancels ? 1 : 0];
    std::promise<void> paused, canceled;
    // The bystander's second engine is stopped where it stands until the cancel is over: a
    // kill that reached it would find it still running.
    bystander.wait.on_second = [&](platform::WaitedWork&) {
      for (pid_t pid : bystander.run.Session().engine.RecordedEngines()) ::kill(pid, SIGSTOP);
      paused.set_value();
      (void)canceled.get_future().wait_for(60s);
      for (pid_t pid : bystander.run.Session().engine.RecordedEngines()) ::kill(pid, SIGCONT);
    };
    canceler.wait.on_second = [&](platform::WaitedWork& work) {
      (void)paused.get_future().wait_for(60s);
      work.Cancel();
    };
    std::thread by([&] { EXPECT_TRUE(bystander.run.mnuBatchRun(bystander.project)); });
    EXPECT_TRUE(canceler.run.mnuBatchRun(canceler.project));
    canceled.set_value();
    by.join();
    EXPECT_EQ(canceler.Results(), (std::vector<FileResult>{Forecast, Canceled}));
    EXPECT_EQ(bystander.Results(), (std::vector<FileResult>{Forecast, Forecast, Forecast}));
    EXPECT_EQ(bystander.run.lblStatus(), "Finished processing.");
    EXPECT_TRUE(canceler.run.Session().engine.canceled);
    EXPECT_FALSE(bystander.run.Session().engine.canceled);
    for (const ProjectRun& r : runs) EXPECT_TRUE(r.run.Session().engine.RecordedEngines().empty());
  }
}

}  // namespace
}  // namespace tessaly::batch
