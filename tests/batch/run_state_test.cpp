// Two projects' runs side by side in one program, each in a thread of its own with its own
// program folder and real engines: each run's state is its own, so both complete, and a
// cancel stops the run it belongs to and none of the other's engines.
#include <gtest/gtest.h>

#include <signal.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <mutex>
#include <thread>

#include "batch/run.h"
#include "platform/dialogs.h"
#include "support/program_folder.h"

namespace tessaly::batch {
namespace {

using namespace std::chrono_literals;
using tessaly::testing::ProgramFolderCopy;
using tessaly::testing::TempDir;

// The messages of both runs, answered as an unattended run answers them.
class SharedHost : public platform::DialogHost {
 public:
  int16_t Message(const std::string& text, int16_t type, const std::string& title) override {
    std::lock_guard lock(mutex_);
    shown.push_back(title + ": " + text);
    return platform::UnattendedAnswer(type);
  }
  std::optional<std::string> OpenFile(const platform::FileDialogRequest&) override { return std::nullopt; }
  std::optional<std::string> SaveFile(const platform::FileDialogRequest&) override { return std::nullopt; }
  std::optional<std::string> ChooseFolder(const std::string&, const std::string&) override { return std::nullopt; }
  bool Unattended() const override { return true; }
  std::vector<std::string> shown;

 private:
  std::mutex mutex_;
};

// Polls the engine like the unattended wait; `on_series` is asked once when a series starts.
class HookedWait : public platform::ProgressWait {
 public:
  std::function<void(platform::WaitedWork&)> on_series;
  void Wait(platform::WaitedWork& work) override {
    if (on_series) on_series(work);
    while (!work.Finished()) {
      work.Poll();
      std::this_thread::sleep_for(2ms);
    }
  }
};

// One project's run: three monthly datasets in its own data and program folders.
struct ProjectRun {
  ProgramFolderCopy program;
  TempDir data;
  ReportTree tree;
  HookedWait wait;
  std::unique_ptr<BatchRun> run;
  std::unique_ptr<cBatchFile> project;

  explicit ProjectRun(const std::string& name) {
    fs::create_directories(data / "out");
    project = std::make_unique<cBatchFile>(program.path());
    project->SetInDirectory(data.path().string());
    project->SetOutDirectory((data / "out").string());
    project->SetBatchName(name);
    for (const char* asc : {"AIRLINE.ASC", "SECOND.ASC", "THIRD.ASC"}) {
      fs::copy_file(program / "examples/AIRLINE.ASC", data / asc);
      project->Add_File(asc, 0, 0, "00/00/00");
    }
    run = std::make_unique<BatchRun>(RunOptions{program.path(), true, false}, tree);
    const fs::path folder = program.path();
    run->SetEngineCall([this, folder](quorvane::EngineArrays& a, EngineReturn& r, const EngineCallContext& c) {
      EngineCallHooks hooks;
      hooks.cancel_grace = 0ms;  // a cancelled engine is killed at once, by its run's record
      return CallEngine(a, r, folder, c, wait, hooks);
    });
  }
  std::vector<FileResult> Results() const {
    std::vector<FileResult> results;
    for (const auto& report : run->FileReports()) results.push_back(report.result);
    return results;
  }
};

TEST(RunState, TwoRunsSideBySideEachCancelOnlyItsOwn) {
  auto host = std::make_shared<SharedHost>();
  platform::SetDialogHost(host);
  for (const bool first_cancels : {true, false}) {
    SCOPED_TRACE(first_cancels ? "the first run cancels" : "the second run cancels");
    ProjectRun first("monthly.xml"), second("quarterly.xml");
    ProjectRun& canceler = first_cancels ? first : second;
    ProjectRun& bystander = first_cancels ? second : first;
    std::promise<void> engine_paused, canceler_done;
    std::shared_future<void> paused = engine_paused.get_future().share();
    std::shared_future<void> done = canceler_done.get_future().share();
    // The bystander's second engine is held still while the canceler cancels, so that a kill
    // that reached it would find it running.
    bystander.wait.on_series = [&](platform::WaitedWork& work) {
      if (work.SeriesNumber() != 2) return;
      for (pid_t pid : bystander.run->Session().engine.RecordedEngines()) ::kill(pid, SIGSTOP);
      engine_paused.set_value();
      (void)done.wait_for(60s);
      for (pid_t pid : bystander.run->Session().engine.RecordedEngines()) ::kill(pid, SIGCONT);
    };
    canceler.wait.on_series = [&](platform::WaitedWork& work) {
      if (work.SeriesNumber() != 2) return;
      (void)paused.wait_for(60s);
      work.Cancel();
    };
    bool ran[2] = {false, false};
    std::thread by([&] { ran[1] = bystander.run->mnuBatchRun(bystander.project); });
    std::thread can([&] {
      ran[0] = canceler.run->mnuBatchRun(canceler.project);
      canceler_done.set_value();
    });
    can.join();
    by.join();
    EXPECT_TRUE(ran[0] && ran[1]);
    EXPECT_EQ(canceler.Results(), (std::vector<FileResult>{FileResult::Forecast, FileResult::Canceled}));
    EXPECT_EQ(bystander.Results(),
              (std::vector<FileResult>{FileResult::Forecast, FileResult::Forecast, FileResult::Forecast}));
    EXPECT_EQ(bystander.run->lblStatus(), "Finished processing.");
    EXPECT_TRUE(canceler.run->Session().engine.canceled);
    EXPECT_FALSE(bystander.run->Session().engine.canceled);
    EXPECT_TRUE(canceler.run->Session().engine.RecordedEngines().empty());
    EXPECT_TRUE(bystander.run->Session().engine.RecordedEngines().empty());
  }
  EXPECT_EQ(std::count(host->shown.begin(), host->shown.end(), "Tessaly RunEngine Call: Operation Canceled by user"), 2);
  platform::SetDialogHost(nullptr);
}

}  // namespace
}  // namespace tessaly::batch
