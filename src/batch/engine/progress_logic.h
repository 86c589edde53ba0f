#pragma once
// What the progress form shows while the engine works, as plain code: the bar that shows the
// program lives (not how far the work is), the stage label from the engine's marker files,
// and the start and elapsed times of day. The desktop form and the unattended wait bind it.
#include <filesystem>
#include <functional>
#include <string>

#include "platform/progress_wait.h"

namespace tessaly::batch {

namespace fs = std::filesystem;

inline constexpr const char* kProgressCaption = "Tessaly Progress";
inline constexpr const char* kProgressStarting = "Starting Engine Please wait...";
inline constexpr const char* kStartTimePrefix = "Start Time: ";
inline constexpr const char* kElapsedTimePrefix = "Elapsed Time: ";
inline constexpr const char* kCompleteText = "EXECUTION\r\nCOMPLETED";
inline constexpr const char* kProcessingLabel = "Processing ";
inline constexpr int kProgressTickMs = 1000;
inline constexpr int kProgressCloseMs = 3000;

// The bar's next value: from exactly 100 back to 0 first; then, with 10 or less to go, the
// rest; else a step from `random_step` (a whole number from 1 to 10).
int NextBarValue(int bar, const std::function<int()>& random_step);
// A whole step from 1 to 10, as Int(10 x Rnd + 1).
int RandomBarStep();

// The label for the first file of `folder` that matches "stage?.123" (names compared without
// regard to case, in name order): the stage's name, or "Processing " for any other or none.
std::string StageLabel(const fs::path& folder);

// The time of day as a fraction of a day, as the system's clock gives it.
double TimeOfDayNow();
// The time of day of a moment given as seconds since midnight.
double TimeOfDay(int hours, int minutes, double seconds);
// now - start, or, when now isn't greater than start (the run crossed midnight),
// (0.999999 - start) + now.
double ElapsedDayFraction(double start, double now);
// A fraction of a day as "hh:mm:ss", to the nearest second.
std::string FormatHhMmSs(double day_fraction);

// The state of the progress form from load to close.
class ProgressFormState {
 public:
  // On load: the label, the start time, the bar at 1.
  void Load(double now_time_of_day);
  // One tick of the timer. Returns true when this tick found the engine finished: then the
  // elapsed time is set and the form is to close after its pause.
  bool Tick(bool engine_finished, double now_time_of_day, const std::function<int()>& random_step,
            const std::string& stage_label);

  int bar() const { return bar_; }
  const std::string& label() const { return label_; }
  const std::string& time_text() const { return time_text_; }
  bool finished() const { return finished_; }
  double start() const { return start_; }

 private:
  int bar_ = 0;
  std::string label_;
  std::string time_text_;
  double start_ = 0;
  bool finished_ = false;
};

// A whole project's run as its progress window shows it: which dataset of how many, and how
// far the dataset in hand has come: the engine's four stages, then its reports, its graphs
// and its filing. The window binds it; nothing here waits.
class RunProgressState {
 public:
  static constexpr int kSteps = 7;
  void BeginRun(int count, double now_time_of_day);
  void BeginDataset(int number, int count, std::string name);
  // The engine's stage label (" Model Estimation "); the step never goes back.
  void EngineStage(const std::string& stage_label);
  void Stage(platform::RunStage stage);
  void EndDataset();
  // The person asked the run to stop after the dataset in hand.
  void RequestStop() { stop_requested_ = true; }
  // At the end: the run's elapsed time.
  void EndRun(double now_time_of_day);

  bool stop_requested() const { return stop_requested_; }
  bool in_dataset() const { return in_dataset_; }
  int count() const { return count_; }
  int done() const { return done_; }
  // 0 (the engine starting) to kSteps.
  int step() const { return step_; }
  // "Project: 1 of 4 datasets done".
  std::string ProjectText() const;
  // "Series 2 of 4: ELNINO.ASC".
  std::string DatasetText() const;
  // "ELNINO.ASC: Graphs (stage 6 of 7)".
  std::string StepText() const;
  // What the stage label says outside the engine's turn; empty while the engine works.
  std::string Label() const;
  // "Start Time: hh:mm:ss" during the run, "Elapsed Time: hh:mm:ss" at its end.
  const std::string& time_text() const { return time_text_; }

 private:
  int count_ = 0, number_ = 0, done_ = 0, step_ = 0;
  bool in_dataset_ = false, stop_requested_ = false, closing_ = false;
  std::string name_, engine_stage_, time_text_;
  double start_ = 0;
};

}  // namespace tessaly::batch
