// The engine's modelling through a whole call: a preset's final model saved (PASS2MOD.123,
// <series>.MOD under SAVEMOD.QVX) reads back as the user's model and gives the same fit;
// a causal dataset returns the inputs left in the model, the output series last.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include "engine/engine_run.h"
#include "engine/model/structured.h"
#include "engine/model_file.h"
#include "engine/request.h"
#include "engine_test_data.h"
#include "platform/textfile.h"
#include "support/program_folder.h"

namespace quorvane {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;
namespace fs = std::filesystem;

std::vector<double> Series(const std::string& name) {
  std::ifstream in(testdata::RepoPath("tests/engine/model/reference/series/" + name + ".csv"));
  std::vector<double> v;
  for (double x; in >> x;) v.push_back(x);
  return v;
}

TEST(CausalRun, PresetModelSavedAndReadBackAsTheUsersModel) {
  TempDir dir;
  WriteFile(dir / "SAVEMOD.QVX", "");
  EngineArrays a = testdata::MonthlyRequest(testdata::AirlinePassengers(), 12);
  a.objective_values[0] = 15;
  RunSummary s = RunRequest(a, dir.path(), &FitModel);
  ASSERT_EQ(s.error_code, 0);
  EXPECT_EQ(s.model, "AIRLINE: ARIMA(0,1,1)(0,1,1)12");
  ASSERT_TRUE(fs::exists(dir / "PASSENGERS.MOD"));
  EXPECT_EQ(ReadFile(dir / "PASSENGERS.MOD"), ReadFile(dir / "PASS2MOD.123"));
  // No fit where the differencing starts.
  for (int t = 0; t < 13; ++t) EXPECT_EQ(a.doubles10000a[t], kMissingValue) << t;
  EXPECT_NE(a.doubles10000a[13], kMissingValue);
  const double loglik = a.doubles20[d20::kLogLikelihood - 1];
  const std::vector<double> forecasts(a.forecast_values.begin(), a.forecast_values.begin() + 12);

  // The saved model as the starting model, held fixed: the same model and fit.
  fs::copy_file(dir / "PASSENGERS.MOD", dir / "STARTMOD.123");
  fs::remove(dir / "SAVEMOD.QVX");
  EngineArrays b = testdata::MonthlyRequest(testdata::AirlinePassengers(), 12);
  b.objective_values[0] = 99;
  s = RunRequest(b, dir.path(), &FitModel);
  ASSERT_EQ(s.error_code, 0);
  EXPECT_EQ(s.model, "USER MODEL: ARIMA(0,1,1)(0,1,1)12");
  EXPECT_NEAR(b.doubles20[d20::kLogLikelihood - 1], loglik, 1e-3);
  for (int h = 0; h < 12; ++h) EXPECT_NEAR(b.forecast_values[h], forecasts[h], 1e-3 * forecasts[h]) << h;
  // And the final model of that run is the file it started from.
  EXPECT_EQ(ReadFile(dir / "PASS2MOD.123"), ReadFile(dir / "STARTMOD.123"));
}

// Unemployment with two inputs: an input of noise (type 0, forecast by its own model) and
// log real GDP (type 1, future values given). The engine keeps GDP, drops the noise and
// returns one input and the output, in that order; the model file holds GDP's lags, and
// read back as the user's model it fits the same.
TEST(CausalRun, InputsLeftInTheModelAndTheirModelFileRoundTrip) {
  const auto unemp = Series("macro_unemp");
  const auto gdp = Series("macro_realgdp");
  const int total = static_cast<int>(unemp.size());
  const int future = 4;
  const int n = total - future;
  auto request = [&] {
    EngineArrays a;
    a.objective_values = {0, 0, 0};
    a.property_values = {3, 4, 1959, 1, static_cast<int16_t>(n), static_cast<int16_t>(future), 0,
                         static_cast<int16_t>(future)};
    a.series_names[0] = "NOISE";
    a.series_names[1] = "LNGDP";
    a.series_names[2] = "UNEMP";
    a.series_types[0] = 0;
    a.series_types[1] = 1;
    a.series_types[2] = 0;
    uint32_t seed = 99;
    for (int t = 0; t < n; ++t) {
      seed = seed * 1664525u + 1013904223u;
      a.series_data[t] = (seed >> 8) / 16777216.0;
      a.series_data[n + t] = 100.0 * std::log(gdp[t]);
      a.series_data[2 * n + t] = unemp[t];
    }
    for (int h = 0; h < future; ++h) a.future_data[h] = 100.0 * std::log(gdp[n + h]);
    return a;
  };
  TempDir dir;
  // The model file has no place for interventions: without their search the model read
  // back is the whole model.
  WriteFile(dir / "ENGINE.GO", testdata::RulesWith(testdata::ShippedRules(), {{"(DETERMINISTIC STRUCTURE )", "   0"}}));
  EngineArrays a = request();
  RunSummary s = RunRequest(a, dir.path(), &FitModel);
  ASSERT_EQ(s.error_code, 0);
  EXPECT_EQ(a.property_values[0], 2);
  EXPECT_EQ(a.series_names[0], "LNGDP");
  EXPECT_EQ(a.series_names[1], "UNEMP");
  EXPECT_EQ(a.series_names[2], "");
  EXPECT_DOUBLE_EQ(a.series_data[0], 100.0 * std::log(gdp[0]));
  EXPECT_DOUBLE_EQ(a.series_data[n], unemp[0]);
  EXPECT_EQ(a.integers20[i20::kInputsKept - 1], 1);
  EXPECT_EQ(a.property_values[7], future);
  auto lines = tessaly::platform::ReadAllLines(dir / "PASS2MOD.123");
  ASSERT_TRUE(lines);
  auto model = ParseModelFile(*lines);
  ASSERT_TRUE(model);
  ASSERT_EQ(model->series, 2);
  EXPECT_EQ(model->blocks[1].name, "LNGDP");
  ASSERT_EQ(model->blocks[1].second.size(), 1u);
  EXPECT_EQ(model->blocks[1].second[0].powers[0], 0);
  EXPECT_LT(model->blocks[1].second[0].coefficients[0], 0.0);
  const double loglik = a.doubles20[d20::kLogLikelihood - 1];

  fs::copy_file(dir / "PASS2MOD.123", dir / "STARTMOD.123");
  EngineArrays b = request();
  b.objective_values[0] = 99;
  s = RunRequest(b, dir.path(), &FitModel);
  ASSERT_EQ(s.error_code, 0);
  EXPECT_EQ(b.property_values[0], 2);
  EXPECT_EQ(b.series_names[0], "LNGDP");
  EXPECT_NEAR(b.doubles20[d20::kLogLikelihood - 1], loglik, 1e-3);
  for (int h = 0; h < future; ++h) EXPECT_NEAR(b.forecast_values[h], a.forecast_values[h], 1e-3) << h;
}

}  // namespace
}  // namespace quorvane
