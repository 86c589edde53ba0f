#pragma once
// A temporary program folder whose qvxengine is the fake engine, and a wait that drives the
// engine work as a person would: polling, and pressing Cancel when told.
#include <sys/stat.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "batch/engine/engine_client.h"
#include "batch/engine/engine_wait.h"
#include "platform/process.h"
#include "platform/progress_wait.h"
#include "support/messages.h"
#include "support/program_folder.h"

namespace tessaly::batch::test {

namespace fs = std::filesystem;

class FakeEngineFolder {
 public:
  explicit FakeEngineFolder(const std::string& mode) {
    fs::copy_file(FAKE_QVXENGINE_PATH, dir_ / "qvxengine");
    ::chmod((dir_ / "qvxengine").c_str(), 0755);
    SetMode(mode);
  }
  void SetMode(const std::string& mode) { tessaly::testing::WriteFile(dir_ / "FAKEMODE.TXT", mode); }
  const fs::path& path() const { return dir_.path(); }
  fs::path operator/(const std::string& name) const { return dir_ / name; }
  // Kills only the engines working in this folder: other engines of the same user (other
  // test runs) are left alone.
  std::function<void()> Killer() const {
    fs::path folder = dir_.path();
    return [folder] { platform::KillEngineProcesses(folder); };
  }
  bool EngineLeft() const {
    return !platform::FindProcessesEndingNoCase("qvxengine", dir_.path()).empty() ||
           !platform::FindProcessesEndingNoCase("qvxlite", dir_.path()).empty();
  }

 private:
  tessaly::testing::TempDir dir_;
};

// Polls quickly; records the stage labels seen; cancels when `cancel_when` says so.
class ScriptedWait : public platform::ProgressWait {
 public:
  std::function<bool(const platform::WaitedWork&, std::chrono::milliseconds)> cancel_when;
  bool cancel_after_finish = false;
  std::vector<std::string> stages_seen;
  int events_let_run = 0;
  std::chrono::milliseconds waited{0};

  void Wait(platform::WaitedWork& work) override {
    auto start = std::chrono::steady_clock::now();
    for (;;) {
      work.Poll();
      auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
          std::chrono::steady_clock::now() - start);
      std::string stage = work.StageText();
      if (stages_seen.empty() || stages_seen.back() != stage) stages_seen.push_back(stage);
      if (work.Finished()) break;
      if (cancel_when && !work.CancelRequested() && cancel_when(work, elapsed)) work.Cancel();
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    if (cancel_after_finish) work.Cancel();
    waited = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - start);
  }
  void LetEventsRun() override { ++events_let_run; }
};

// Records the messages and holds the engine state of the test's run.
struct RunFlagsReset {
  tessaly::testing::RecordedMessages dialogs;
  EngineSession session;
  EngineCallContext Context(int number, int count, std::string name) {
    EngineCallContext context{number, count, std::move(name)};
    context.session = &session;
    return context;
  }
};

}  // namespace tessaly::batch::test
