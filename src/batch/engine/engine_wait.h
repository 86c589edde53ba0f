#pragma once
// The engine run that a progress wait watches: polling the client (whose EngineReady sets
// the run's `finished`), the stage label, and the cancel: KILLQUOR.QVX with " Outahere" and
// the run's `canceled`, then, when the engine has not ended within a short grace period, its kill.
// Without that kill an engine that never looks for the file would hold the wait forever.
#include <chrono>
#include <filesystem>
#include <functional>
#include <string>

#include "platform/progress_wait.h"

namespace tessaly::batch {

namespace fs = std::filesystem;
class EngineClient;
class EngineSession;

inline constexpr const char* kKillFile = "KILLQUOR.QVX";
inline constexpr const char* kKillFileLine = " Outahere";
inline constexpr std::chrono::milliseconds kCancelGrace{5000};

// Writes KILLQUOR.QVX into `folder` with its one line.
[[nodiscard]] bool WriteKillRequest(const fs::path& folder);

// Which series of how many the call is for, for the progress shown.
struct EngineCallContext {
  int series_number = 0;
  int series_count = 0;
  std::string series_name;
  // A time limit of this call that replaces the run's (a large dataset's own); zero: the run's.
  std::chrono::seconds series_timeout{0};
  // The run the call belongs to: its engine, its flags, its record of engines. None: the call
  // keeps its own for its length.
  EngineSession* session = nullptr;
};

class EngineWait : public platform::WaitedWork {
 public:
  using Clock = std::chrono::steady_clock;
  // `kill_engines` stops every engine process (the system-wide kill of the cancel path).
  EngineWait(EngineClient& client, fs::path work_folder, EngineCallContext context,
             std::function<void()> kill_engines,
             std::chrono::milliseconds grace = kCancelGrace);
  // Ends the engine once it has worked on the series longer than `limit` (zero: no limit).
  void SetTimeLimit(std::chrono::seconds limit) { limit_ = limit; }

  void Poll() override;
  bool Finished() const override;
  void Cancel() override;
  bool CancelRequested() const override { return cancel_requested_; }
  std::string StageText() const override;
  int SeriesNumber() const override { return context_.series_number; }
  int SeriesCount() const override { return context_.series_count; }
  std::string SeriesName() const override { return context_.series_name; }

  bool KilledAfterGrace() const { return killed_; }
  bool StoppedAtTimeLimit() const { return timed_out_; }

 private:
  EngineClient& client_;
  fs::path work_folder_;
  EngineCallContext context_;
  std::function<void()> kill_engines_;
  std::chrono::milliseconds grace_;
  bool cancel_requested_ = false;
  bool killed_ = false;
  bool timed_out_ = false;
  std::chrono::seconds limit_{0};
  Clock::time_point start_ = Clock::now();
  Clock::time_point cancel_time_{};
};

}  // namespace tessaly::batch
