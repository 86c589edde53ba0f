#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <sstream>

#include "batch/engine/engine_call.h"
#include "batch/engine/progress_logic.h"
#include "batch/engine/unattended_wait.h"
#include "engine_test_support.h"

namespace tessaly::batch {
namespace {

using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

TEST(ProgressBarTest, LastStepsAreExactAndAFullBarEmpties) {
  auto step7 = [] { return 7; };
  EXPECT_EQ(NextBarValue(95, step7), 100);
  EXPECT_EQ(NextBarValue(100, step7), 0);
  EXPECT_EQ(NextBarValue(0, step7), 7);
  EXPECT_EQ(NextBarValue(89, step7), 96);  // 11 to go: still a random step
  EXPECT_EQ(NextBarValue(90, step7), 100);

  // Every random step is a whole number from 1 to 10, and all of them occur.
  std::set<int> seen;
  for (int i = 0; i < 2000; ++i) {
    int s = RandomBarStep();
    ASSERT_GE(s, 1);
    ASSERT_LE(s, 10);
    seen.insert(s);
  }
  EXPECT_EQ(seen.size(), 10u);

  // From load, the bar never leaves 0..100 and comes back round.
  int bar = 1;
  bool wrapped = false;
  for (int i = 0; i < 200; ++i) {
    bar = NextBarValue(bar, RandomBarStep);
    ASSERT_GE(bar, 0);
    ASSERT_LE(bar, 100);
    wrapped |= bar == 0;
  }
  EXPECT_TRUE(wrapped);
}

TEST(StageLabelTest, FirstStageFileNamesTheStage) {
  TempDir dir;
  EXPECT_EQ(StageLabel(dir.path()), "Processing ");
  EXPECT_EQ(StageLabel(dir / "missing"), "Processing ");
  WriteFile(dir / "stage3.123", "");
  EXPECT_EQ(StageLabel(dir.path()), " Model Estimation ");
  WriteFile(dir / "STAGE2.123", "");
  EXPECT_EQ(StageLabel(dir.path()), " Model Identification ");
  fs::remove(dir / "stage3.123");
  fs::remove(dir / "STAGE2.123");
  WriteFile(dir / "STAGE4.123", "");
  EXPECT_EQ(StageLabel(dir.path()), " Model Diagnosis ");
  WriteFile(dir / "Stage1.123", "");
  EXPECT_EQ(StageLabel(dir.path()), " Data Preparation ");

  TempDir other;
  WriteFile(other / "STAGE10.123", "");  // not "stage?.123"
  WriteFile(other / "STAGE1.124", "");
  EXPECT_EQ(StageLabel(other.path()), "Processing ");
  WriteFile(other / "STAGE0.123", "");  // matches, but no stage of that name
  EXPECT_EQ(StageLabel(other.path()), "Processing ");
}

TEST(ElapsedTimeTest, CountsAcrossMidnight) {
  EXPECT_EQ(FormatHhMmSs(ElapsedDayFraction(TimeOfDay(10, 0, 0), TimeOfDay(10, 1, 5))),
            "00:01:05");
  EXPECT_EQ(FormatHhMmSs(ElapsedDayFraction(TimeOfDay(23, 59, 50), TimeOfDay(0, 0, 10))),
            "00:00:20");
  EXPECT_EQ(FormatHhMmSs(ElapsedDayFraction(TimeOfDay(22, 30, 0), TimeOfDay(1, 15, 30))),
            "02:45:30");
  EXPECT_GT(ElapsedDayFraction(TimeOfDay(23, 59, 59), TimeOfDay(0, 0, 0)), 0);
  EXPECT_EQ(FormatHhMmSs(TimeOfDay(7, 5, 9)), "07:05:09");
  EXPECT_EQ(FormatHhMmSs(TimeOfDay(23, 59, 59.4)), "23:59:59");
}

TEST(ProgressFormStateTest, FromLoadToTheElapsedTime) {
  ProgressFormState form;
  form.Load(TimeOfDay(23, 59, 58));
  EXPECT_EQ(form.label(), "Starting Engine Please wait...");
  EXPECT_EQ(form.time_text(), "Start Time: 23:59:58");
  EXPECT_EQ(form.bar(), 1);
  auto step = [] { return 10; };
  EXPECT_FALSE(form.Tick(false, TimeOfDay(23, 59, 59), step, "Processing "));
  EXPECT_EQ(form.bar(), 11);
  EXPECT_EQ(form.label(), "Processing ");
  EXPECT_FALSE(form.Tick(false, TimeOfDay(0, 0, 0), step, " Model Estimation "));
  EXPECT_EQ(form.label(), " Model Estimation ");
  EXPECT_EQ(form.time_text(), "Start Time: 23:59:58");
  EXPECT_TRUE(form.Tick(true, TimeOfDay(0, 0, 3), step, "Processing "));
  EXPECT_TRUE(form.finished());
  EXPECT_EQ(form.time_text(), "Elapsed Time: 00:00:05");
  EXPECT_FALSE(form.Tick(true, TimeOfDay(0, 0, 4), step, "Processing "));
}

quorvane::EngineArrays OneSeries() {
  quorvane::EngineArrays a;
  a.property_values = {1, 12, 2020, 1, 24, 0, 0, 6};
  a.series_names[0] = "SALES";
  for (int t = 0; t < 24; ++t) a.series_data[t] = 100 + t;
  return a;
}

// What the unattended wait writes for one call of an engine that keeps each stage `stage_ms`.
std::string UnattendedOutput(bool in_place, int stage_ms, EngineCallContext context, int note_ms = 10000) {
  test::RunFlagsReset flags;
  test::FakeEngineFolder folder("stages " + std::to_string(stage_ms));
  std::ostringstream out;
  UnattendedProgressWait wait(out, in_place);
  wait.SetLongSeriesNotes(std::chrono::milliseconds(note_ms), std::chrono::milliseconds(2 * note_ms));
  quorvane::EngineArrays arrays = OneSeries();
  EngineReturn returned;
  EngineCallHooks hooks;
  hooks.kill_engines = folder.Killer();
  EXPECT_EQ(CallEngine(arrays, returned, folder.path(), context, wait, hooks).error_code, 0);
  return out.str();
}

// Off a terminal: one line when a quick series ends; a long one also shows its stage now and
// then (here after 0.3 s and every 0.6 s of four stages of 0.5 s).
TEST(UnattendedWaitTest, WholeLinesWhenNotATerminalAndNotesWhileASeriesTakesLong) {
  std::string text = UnattendedOutput(false, 60, {3, 7, "SALES"});
  EXPECT_TRUE(std::regex_match(text,
                               std::regex("Series 3 of 7: SALES - Finished - 00:00:0[0-9]\n")))
      << text;
  text = UnattendedOutput(false, 500, {1, 2, "SALES"}, 300);
  EXPECT_TRUE(std::regex_match(
      text, std::regex("(Series 1 of 2: SALES( - (Data Preparation|Model (Identification|Estimation|Diagnosis)))? - "
                       "00:00:0[0-9]\n){2,5}Series 1 of 2: SALES - Finished - 00:00:0[0-9]\n")))
      << text;
}

TEST(UnattendedWaitTest, InPlaceLineShowsTheEngineStage) {
  std::string text = UnattendedOutput(true, 500, {1, 2, "SALES"});
  EXPECT_TRUE(std::regex_search(
      text, std::regex("\rSeries 1 of 2: SALES - Model Identification - 00:00:0[0-9]\x1b")))
      << text;
  EXPECT_NE(text.find("Model Diagnosis"), std::string::npos);
  EXPECT_EQ(text.find('\n'), text.size() - 1);
  EXPECT_TRUE(std::regex_search(
      text, std::regex("\rSeries 1 of 2: SALES - Finished - 00:00:0[0-9]\x1b\\[K\n$")))
      << text;
}

}  // namespace
}  // namespace tessaly::batch
