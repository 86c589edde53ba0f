// The real qvxengine of the program folder, through one engine call from the client: a monthly
// ASC dataset goes in, forecasts, limits, fitted values and residuals come back.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "batch/engine/engine_call.h"
#include "batch/engine/engine_client.h"
#include "dataset/asc_dataset.h"
#include "engine_test_support.h"
#include "support/program_folder.h"

namespace tessaly::batch {
namespace {

using tessaly::testing::ProgramFolderCopy;

// The arrays of the airline passengers (monthly, 1949 to 1960), read from the sample ASC file
// as a run reads it.
quorvane::EngineArrays AirlineArrays() {
  auto dataset = std::make_unique<dataset::AscDataset>();
  EXPECT_TRUE(dataset::ReadAscFile(tessaly::testing::SourcePath("tests/dataset/data/files/airline.asc"), *dataset).ok());
  quorvane::EngineArrays arrays;
  arrays.objective_values = dataset->Objectives.Storage();
  arrays.property_values = dataset->DataProp.Storage();
  arrays.series_names = dataset->DataNames.Storage();
  arrays.series_types = dataset->DataTypes.Storage();
  arrays.series_data = dataset->DataValues.Storage();
  arrays.future_data = dataset->FutureValues.Storage();
  arrays.retained_data = dataset->RetainedValues.Storage();
  return arrays;
}

TEST(RealEngineTest, MonthlyDatasetComesBackWithForecastsLimitsFitAndResiduals) {
  test::RunFlagsReset flags;
  ProgramFolderCopy program;
  ASSERT_TRUE(fs::exists(program / "qvxengine"));
  quorvane::EngineArrays arrays = AirlineArrays();
  const std::vector<double> actual = arrays.series_data;

  test::ScriptedWait wait;
  EngineReturn returned;
  EngineCallHooks hooks;
  hooks.kill_engines = [&] { platform::KillEngineProcesses(program.path()); };
  EngineCallResult r = CallEngine(arrays, returned, program.path(), {1, 1, "AIRLINE"}, wait, hooks);

  ASSERT_EQ(r.outcome, EngineCallOutcome::Done);
  ASSERT_LE(r.error_code, 0) << r.failure_reason;
  ASSERT_EQ(returned.returned_data_prop.size(), 8u);
  EXPECT_EQ(returned.returned_data_prop[0], 1);
  EXPECT_EQ(returned.returned_data_prop[7], 12);
  EXPECT_EQ(arrays.series_names[returned.returned_data_prop[0] - 1].substr(0, 10), "PASSENGERS");
  EXPECT_DOUBLE_EQ(returned.returned_series_data[143], 432);

  // Forecasts for 1961 in the range of the series' level, inside their limits, peaking in
  // the summer as every year before.
  for (int k = 0; k < 12; ++k) {
    SCOPED_TRACE(k);
    double f = arrays.forecast_values[k];
    EXPECT_GT(f, 350);
    EXPECT_LT(f, 800);
    EXPECT_LT(arrays.forecast_values[600 + k], f);
    EXPECT_GT(arrays.forecast_values[1200 + k], f);
  }
  EXPECT_GT(arrays.forecast_values[6], arrays.forecast_values[10]);

  // Fitted values and residuals: where the model fits, actual = fitted + residual.
  int fitted = 0;
  for (int t = 0; t < 144; ++t) {
    double fit = arrays.doubles10000a[t];
    double res = arrays.doubles10000b[t];
    if (fit == quorvane::kMissingValue) continue;
    ++fitted;
    EXPECT_NEAR(fit + res, actual[t], 1e-6 * actual[t] + 1e-6) << t;
    EXPECT_LT(std::abs(res), 0.25 * actual[t]) << t;
  }
  EXPECT_GE(fitted, 100);
  EXPECT_TRUE(flags.dialogs->shown.empty());
  EXPECT_TRUE(fs::exists(program / "DETAILS.HTM"));
  EXPECT_FALSE(platform::FindProcessesEndingNoCase("qvxengine", program.path()).size());
}

// A cancel pressed as soon as the engine has started: the engine finds KILLQUOR.QVX at its
// next stage, stops with code 21, and no engine is left.
TEST(RealEngineTest, CancelStopsTheEngineWithCode21) {
  test::RunFlagsReset flags;
  ProgramFolderCopy program;
  quorvane::EngineArrays arrays = AirlineArrays();

  test::ScriptedWait wait;
  wait.cancel_when = [](const platform::WaitedWork&, std::chrono::milliseconds) { return true; };
  EngineReturn returned;
  EngineCallHooks hooks;
  hooks.kill_engines = [&] { platform::KillEngineProcesses(program.path()); };
  hooks.cancel_grace = std::chrono::seconds(30);
  EngineCallResult r = CallEngine(arrays, returned, program.path(), flags.Context(1, 1, "AIRLINE"), wait, hooks);
  EXPECT_EQ(r.outcome, EngineCallOutcome::Canceled);
  EXPECT_EQ(r.error_code, quorvane::kUserTerminated) << r.failure_reason;
  EXPECT_TRUE(flags.session.canceled);
  EXPECT_FALSE(fs::exists(program / "KILLQUOR.QVX"));
  EXPECT_TRUE(platform::FindProcessesEndingNoCase("qvxengine", program.path()).empty());
  ASSERT_EQ(flags.dialogs->shown.size(), 1u);
  EXPECT_EQ(flags.dialogs->shown[0].text, "Operation Canceled by user");
}

}  // namespace
}  // namespace tessaly::batch
