#include "batch/engine/progress_logic.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <random>
#include <vector>

#include "platform/paths.h"

namespace tessaly::batch {

int NextBarValue(int bar, const std::function<int()>& random_step) {
  // The tick that finds the bar full only empties it, so a full bar is seen for one tick.
  if (bar == 100) return 0;
  int remaining = 100 - bar;
  if (remaining <= 10) return bar + remaining;
  return bar + random_step();
}

int RandomBarStep() {
  static std::mt19937 generator{std::random_device{}()};
  std::uniform_real_distribution<double> rnd(0.0, 1.0);
  return static_cast<int>(10 * rnd(generator) + 1);
}

namespace {

bool MatchesStagePattern(const std::string& name) {
  // "stage?.123": exactly one character in place of the question mark.
  static constexpr std::string_view kHead = "STAGE", kTail = ".123";
  if (name.size() != kHead.size() + 1 + kTail.size()) return false;
  std::string upper = platform::ToUpper(name);
  return upper.compare(0, kHead.size(), kHead) == 0 &&
         upper.compare(kHead.size() + 1, kTail.size(), kTail) == 0;
}

}  // namespace

std::string StageLabel(const fs::path& folder) {
  std::vector<std::string> matches;
  std::error_code ec;
  for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
    std::string name = it->path().filename().string();
    if (MatchesStagePattern(name)) matches.push_back(name);
  }
  if (matches.empty()) return kProcessingLabel;
  std::string first = platform::ToUpper(*std::min_element(
      matches.begin(), matches.end(),
      [](const std::string& a, const std::string& b) {
        return platform::ToUpper(a) < platform::ToUpper(b);
      }));
  if (first == "STAGE1.123") return " Data Preparation ";
  if (first == "STAGE2.123") return " Model Identification ";
  if (first == "STAGE3.123") return " Model Estimation ";
  if (first == "STAGE4.123") return " Model Diagnosis ";
  return kProcessingLabel;
}

double TimeOfDay(int hours, int minutes, double seconds) {
  return (hours * 3600.0 + minutes * 60.0 + seconds) / 86400.0;
}

double TimeOfDayNow() {
  auto now = std::chrono::system_clock::now();
  std::time_t t = std::chrono::system_clock::to_time_t(now);
  std::tm local{};
  localtime_r(&t, &local);
  double fraction =
      std::chrono::duration<double>(now - std::chrono::system_clock::from_time_t(t)).count();
  return TimeOfDay(local.tm_hour, local.tm_min, local.tm_sec + fraction);
}

double ElapsedDayFraction(double start, double now) {
  if (now > start) return now - start;
  return (0.999999 - start) + now;
}

std::string FormatHhMmSs(double day_fraction) {
  long long seconds = std::llround(day_fraction * 86400.0);
  if (seconds < 0) seconds = 0;
  seconds %= 86400;
  char text[16];
  std::snprintf(text, sizeof text, "%02lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60,
                seconds % 60);
  return text;
}

void ProgressFormState::Load(double now_time_of_day) {
  label_ = kProgressStarting;
  start_ = now_time_of_day;
  time_text_ = std::string(kStartTimePrefix) + FormatHhMmSs(start_);
  bar_ = 1;
  finished_ = false;
}

bool ProgressFormState::Tick(bool engine_finished, double now_time_of_day,
                             const std::function<int()>& random_step,
                             const std::string& stage_label) {
  if (finished_) return false;
  bar_ = NextBarValue(bar_, random_step);
  label_ = stage_label;
  if (!engine_finished) return false;
  finished_ = true;
  time_text_ = std::string(kElapsedTimePrefix) +
               FormatHhMmSs(ElapsedDayFraction(start_, now_time_of_day));
  return true;
}

namespace {

// The engine's stages by their labels, in the order it passes them.
constexpr const char* kEngineStages[] = {" Data Preparation ", " Model Identification ", " Model Estimation ",
                                         " Model Diagnosis "};

}  // namespace

void RunProgressState::BeginRun(int count, double now_time_of_day) {
  *this = RunProgressState();
  count_ = std::max(count, 0);
  start_ = now_time_of_day;
  time_text_ = std::string(kStartTimePrefix) + FormatHhMmSs(start_);
}

void RunProgressState::BeginDataset(int number, int count, std::string name) {
  number_ = number;
  count_ = std::max(count, 0);
  done_ = std::clamp(number - 1, 0, count_);
  name_ = std::move(name);
  step_ = 0;
  engine_stage_.clear();
  in_dataset_ = true;
  closing_ = false;
}

void RunProgressState::EngineStage(const std::string& stage_label) {
  if (!in_dataset_) return;
  for (int k = 0; k < 4; ++k)
    if (stage_label == kEngineStages[k] && k + 1 >= step_) {
      step_ = k + 1;
      engine_stage_ = stage_label;
    }
}

void RunProgressState::Stage(platform::RunStage stage) {
  if (!in_dataset_) {
    // After the last dataset: the project's own pages.
    closing_ = stage == platform::RunStage::Filing;
    return;
  }
  switch (stage) {
    case platform::RunStage::Engine: step_ = 0; break;
    case platform::RunStage::Reports: step_ = 5; break;
    case platform::RunStage::Graphs: step_ = 6; break;
    case platform::RunStage::Filing: step_ = 7; break;
  }
}

void RunProgressState::EndDataset() {
  if (!in_dataset_) return;
  in_dataset_ = false;
  done_ = std::clamp(number_, 0, count_);
}

void RunProgressState::EndRun(double now_time_of_day) {
  in_dataset_ = false;
  closing_ = false;
  time_text_ = std::string(kElapsedTimePrefix) + FormatHhMmSs(ElapsedDayFraction(start_, now_time_of_day));
}

std::string RunProgressState::ProjectText() const {
  return "Project: " + std::to_string(done_) + " of " + std::to_string(count_) + " datasets done";
}

std::string RunProgressState::DatasetText() const {
  if (number_ < 1) return {};
  return "Series " + std::to_string(number_) + " of " + std::to_string(count_) + ": " + name_;
}

std::string RunProgressState::StepText() const {
  static const char* const kNames[] = {"starting the engine", "Data Preparation", "Model Identification",
                                       "Model Estimation", "Model Diagnosis", "Reports", "Graphs", "Filing"};
  const std::string what = kNames[std::clamp(step_, 0, RunProgressState::kSteps)];
  return (name_.empty() ? std::string() : name_ + ": ") + what + " (stage " + std::to_string(step_) + " of " +
         std::to_string(kSteps) + ")";
}

std::string RunProgressState::Label() const {
  if (closing_) return "Writing the project's report pages";
  if (!in_dataset_ || step_ < 5) return {};
  if (stop_requested_) return "Canceled: the run ends after " + name_;
  static const char* const kLabels[] = {"Filing the reports", "Drawing the graphs", "Saving the project"};
  return kLabels[step_ - 5];
}

}  // namespace tessaly::batch
