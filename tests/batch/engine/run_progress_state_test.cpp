// The whole run as its progress window tells it, step by step through one dataset.
#include <gtest/gtest.h>

#include <functional>

#include "batch/engine/progress_logic.h"

namespace tessaly::batch {
namespace {

using platform::RunStage;

TEST(RunProgressStateTest, FollowsADatasetThroughEngineReportsGraphsAndFiling) {
  RunProgressState run;
  run.BeginRun(4, TimeOfDay(23, 58, 30));
  EXPECT_EQ(run.time_text(), "Start Time: 23:58:30");
  struct Step {
    std::function<void(RunProgressState&)> event;
    std::string project, step, label;
  } steps[] = {
      {[](auto& r) { r.BeginDataset(2, 4, "ELNINO.ASC"); }, "Project: 1 of 4 datasets done",
       "ELNINO.ASC: starting the engine (stage 0 of 7)", ""},
      {[](auto& r) { r.EngineStage(" Model Estimation "); }, "Project: 1 of 4 datasets done",
       "ELNINO.ASC: Model Estimation (stage 3 of 7)", ""},
      // The stage files come and go: the step never goes back.
      {[](auto& r) { r.EngineStage(" Data Preparation "); }, "Project: 1 of 4 datasets done",
       "ELNINO.ASC: Model Estimation (stage 3 of 7)", ""},
      {[](auto& r) { r.EngineStage("Processing "); }, "Project: 1 of 4 datasets done",
       "ELNINO.ASC: Model Estimation (stage 3 of 7)", ""},
      {[](auto& r) { r.Stage(RunStage::Reports); }, "Project: 1 of 4 datasets done",
       "ELNINO.ASC: Reports (stage 5 of 7)", "Filing the reports"},
      {[](auto& r) { r.Stage(RunStage::Graphs); }, "Project: 1 of 4 datasets done",
       "ELNINO.ASC: Graphs (stage 6 of 7)", "Drawing the graphs"},
      {[](auto& r) { r.RequestStop(); }, "Project: 1 of 4 datasets done", "ELNINO.ASC: Graphs (stage 6 of 7)",
       "Canceled: the run ends after ELNINO.ASC"},
      {[](auto& r) { r.Stage(RunStage::Filing); }, "Project: 1 of 4 datasets done",
       "ELNINO.ASC: Filing (stage 7 of 7)", "Canceled: the run ends after ELNINO.ASC"},
      {[](auto& r) { r.EndDataset(); }, "Project: 2 of 4 datasets done", "ELNINO.ASC: Filing (stage 7 of 7)", ""},
      // After the last dataset the run writes its own pages.
      {[](auto& r) { r.Stage(RunStage::Filing); }, "Project: 2 of 4 datasets done",
       "ELNINO.ASC: Filing (stage 7 of 7)", "Writing the project's report pages"},
  };
  for (const Step& s : steps) {
    s.event(run);
    EXPECT_EQ(run.ProjectText(), s.project) << s.step;
    EXPECT_EQ(run.StepText(), s.step);
    EXPECT_EQ(run.Label(), s.label) << s.step;
    EXPECT_EQ(run.DatasetText(), "Series 2 of 4: ELNINO.ASC");
  }
  EXPECT_TRUE(run.stop_requested());
  run.EndRun(TimeOfDay(0, 0, 5));  // past midnight
  EXPECT_EQ(run.time_text(), "Elapsed Time: 00:01:35");
}

}  // namespace
}  // namespace tessaly::batch
