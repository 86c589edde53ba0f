// The whole run as its progress window tells it: what the desktop test of a run cannot stage.
#include <gtest/gtest.h>

#include "batch/engine/progress_logic.h"

namespace tessaly::batch {
namespace {

TEST(RunProgressStateTest, StagesNeverGoBackAndTheRunClosesWithItsOwnPages) {
  RunProgressState run;
  run.BeginRun(4, TimeOfDay(23, 58, 30));
  EXPECT_EQ(run.time_text(), "Start Time: 23:58:30");
  run.BeginDataset(2, 4, "ELNINO.ASC");
  // The stage files come and go between the ticks: the step never goes back.
  for (const char* stage : {" Model Estimation ", " Data Preparation ", "Processing "}) {
    run.EngineStage(stage);
    EXPECT_EQ(run.StepText(), "ELNINO.ASC: Model Estimation (stage 3 of 7)") << stage;
  }
  EXPECT_EQ(run.ProjectText(), "Project: 1 of 4 datasets done");
  run.EndDataset();
  EXPECT_EQ(run.ProjectText(), "Project: 2 of 4 datasets done");
  EXPECT_EQ(run.Label(), "");
  run.Stage(platform::RunStage::Filing);
  EXPECT_EQ(run.Label(), "Writing the project's report pages");
  run.EndRun(TimeOfDay(0, 0, 5));  // past midnight
  EXPECT_EQ(run.time_text(), "Elapsed Time: 00:01:35");
}

}  // namespace
}  // namespace tessaly::batch
