#pragma once
// The wait of a run with no user: no pauses, a quick poll, and the progress on standard
// error: series k of n, its name, the engine's stage and the elapsed time. On a terminal the
// line is rewritten in place; otherwise one line is written per series, when it ends, and
// for a series that takes long one more after 10 seconds and then every 30.
#include <chrono>
#include <filesystem>
#include <iosfwd>
#include <string>

#include "platform/progress_wait.h"

namespace tessaly::batch {

inline constexpr std::chrono::seconds kLongSeriesFirstNote{10};
inline constexpr std::chrono::seconds kLongSeriesNoteEvery{30};

class UnattendedProgressWait : public platform::ProgressWait {
 public:
  // Standard error, in place when it is a terminal.
  UnattendedProgressWait();
  UnattendedProgressWait(std::ostream& out, bool in_place,
                         std::chrono::milliseconds poll = std::chrono::milliseconds(10));

  void Wait(platform::WaitedWork& work) override;

  // Text put before every progress line ("Shard 2/4: "), so that the lines of several runs
  // that share one standard error can be told apart.
  void SetPrefix(std::string prefix) { prefix_ = std::move(prefix); }
  // A KILLQUOR.QVX that appears in `folder` cancels the run too: a run whose engines work in
  // private folders watches the program's folder, where the user puts the file.
  void SetCancelFolder(std::filesystem::path folder) { cancel_folder_ = std::move(folder); }
  // When a long series' lines come off a terminal: first after `first`, then every `every`.
  void SetLongSeriesNotes(std::chrono::milliseconds first, std::chrono::milliseconds every) {
    first_note_ = first;
    note_every_ = every;
  }
  // From now on Ctrl-C (SIGINT) and SIGTERM cancel the engine call under way, as the cancel
  // button does, instead of ending the program with its engine left running.
  static void CatchInterrupts();
  static bool Interrupted();

  // The progress line: "Series 2 of 5: SALES - Model Estimation - 00:00:12".
  static std::string ProgressLine(const platform::WaitedWork& work, const std::string& stage,
                                  double elapsed_seconds);

 private:
  std::ostream& out_;
  bool in_place_;
  std::chrono::milliseconds poll_;
  std::string prefix_;
  std::filesystem::path cancel_folder_;
  std::chrono::milliseconds first_note_ = kLongSeriesFirstNote;
  std::chrono::milliseconds note_every_ = kLongSeriesNoteEvery;
};

}  // namespace tessaly::batch
