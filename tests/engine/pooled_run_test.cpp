// Pooled cross-sections through a whole engine call: the groups from GROUPLST.QVX or the
// rules' "# OF GROUPS", the returned figures the front-end's F-test divides by, the
// coefficients appended to POOLCOEF.CSV, the reports' words, and the refusals.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "engine/engine_run.h"
#include "engine/model/pooled.h"
#include "engine/request.h"
#include "engine_test_data.h"
#include "platform/textfile.h"
#include "support/program_folder.h"
#include "support/text_checks.h"

namespace quorvane {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;
namespace fs = std::filesystem;

// Like series stacked end to end: each group an AR(1) about the same mean, from its own start.
std::vector<double> StackedGroups(int groups, int size, uint32_t seed) {
  std::mt19937 gen(seed);
  std::normal_distribution<double> e(0.0, 4.0);
  std::vector<double> y;
  for (int g = 0; g < groups; ++g) {
    double x = 0.0;
    for (int t = 0; t < 50; ++t) x = 0.6 * x + e(gen);
    for (int t = 0; t < size; ++t) y.push_back(500.0 + (x = 0.6 * x + e(gen)));
  }
  return y;
}

// The shipped rules with "# OF GROUPS" set, as ENGINE.GO.
void WriteRulesWithGroups(const fs::path& folder, int groups) {
  const std::string value = std::to_string(groups);
  WriteFile(folder / "ENGINE.GO", testdata::RulesWith(testdata::ShippedRules(),
                                                      {{"# OF GROUPS", std::string(4 - value.size(), ' ') + value}}));
}

std::vector<std::string> Lines(const fs::path& file) {
  auto lines = tessaly::platform::ReadAllLines(file);
  return lines ? *lines : std::vector<std::string>{};
}

TEST(PooledRun, GroupListGivesOneModelItsCoefficientsAndTheFTestFigures) {
  TempDir dir;
  WriteFile(dir / "GROUPLST.QVX", " 3 \r\n40\r\n40\r\n40\r\n");
  const std::vector<double> y = StackedGroups(3, 40, 7);
  EngineArrays a = testdata::MonthlyRequest(y, 6, 0, "TOTALPOOL");
  RunSummary s = RunRequest(a, dir.path(), &FitEngineModel);
  ASSERT_EQ(s.error_code, 0) << a.strings2250[0];
  EXPECT_NE(s.model.find("pooled over 3 groups"), std::string::npos) << s.model;

  // Doubles20(9) is the sum of the squared residuals returned, Doubles20(11) the number
  // of coefficients estimated.
  double sse = 0.0;
  int fitted = 0;
  for (int t = 0; t < 120; ++t) {
    if (a.doubles10000b[t] == kMissingValue) continue;
    sse += a.doubles10000b[t] * a.doubles10000b[t];
    ++fitted;
  }
  EXPECT_NEAR(a.doubles20[d20::kSse - 1], sse, 1e-6 * sse);
  EXPECT_EQ(a.doubles20[d20::kObservations - 1], fitted);
  const auto coef = Lines(dir / "POOLCOEF.CSV");
  ASSERT_GE(coef.size(), 2u);
  EXPECT_EQ(coef[0], "Series,Term,Coefficient,Std error,t-value,Groups,Group size");
  EXPECT_EQ(a.doubles20[d20::kParameters - 1], static_cast<double>(coef.size() - 1));
  for (size_t i = 1; i < coef.size(); ++i) {
    EXPECT_EQ(coef[i].rfind("TOTALPOOL,", 0), 0u) << coef[i];
    EXPECT_EQ(coef[i].substr(coef[i].size() - 5), ",3,40") << coef[i];
  }
  EXPECT_NE(ReadFile(dir / "POOLCOEF.CSV").find("TOTALPOOL,CONSTANT,"), std::string::npos);

  // The forecasts continue the last group, whose 40 months end in 1952/4.
  const auto pro = Lines(dir / "TS50PRO.123");
  ASSERT_EQ(pro.size(), 7u);
  EXPECT_EQ(pro[1].substr(0, 11), "1952/5     ");
  for (int h = 0; h < 6; ++h) EXPECT_NEAR(a.forecast_values[h], 500.0, 15.0) << h;
  // Each group spans the same months.
  const auto fitted_csv = Lines(dir / "FITTED.CSV");
  ASSERT_EQ(fitted_csv.size(), 121u);
  EXPECT_EQ(fitted_csv[41].substr(0, 7), "1949/1,");
  EXPECT_EQ(fitted_csv[120].substr(0, 7), "1952/4,");

  const std::string details = ReadFile(dir / "DETAILS.HTM");
  EXPECT_TRUE(tessaly::testing::HoldsAll(details, {"pooled cross-section of 3 groups of 40 observations each",
      "The forecasts continue the last group"}));
  const std::string verbal = ReadFile(dir / "VERBAL.TXT");
  EXPECT_NE(verbal.find("The model is a pooled cross-section of 3 groups of 40 observations each, stacked end "
                        "to end: one model for all groups, with no lag crossing a group boundary."),
            std::string::npos);

  // The next pooled dataset adds its lines under the same header.
  EngineArrays b = testdata::MonthlyRequest(y, 6, 0, "TOTALPOOL");
  ASSERT_EQ(RunRequest(b, dir.path(), &FitEngineModel).error_code, 0);
  const std::string twice = ReadFile(dir / "POOLCOEF.CSV");
  EXPECT_EQ(twice.find("Series,Term"), twice.rfind("Series,Term"));
  EXPECT_EQ(Lines(dir / "POOLCOEF.CSV").size(), 2 * coef.size() - 1);
}

TEST(PooledRun, EqualGroupsFromTheRulesAPresetAndTheUsersModel) {
  TempDir dir;
  WriteRulesWithGroups(dir.path(), 5);
  const std::vector<double> y = StackedGroups(5, 48, 3);
  EngineArrays a = testdata::MonthlyRequest(y, 12, 0, "TOTALPOOL");
  a.objective_values[0] = 2;  // the preset AR(1) with constant
  RunSummary s = RunRequest(a, dir.path(), &FitEngineModel);
  ASSERT_EQ(s.error_code, 0) << a.strings2250[0];
  EXPECT_EQ(s.model, "AUTOREGRESSIVE(1) WITH CONSTANT: ARIMA(1,0,0) with constant, pooled over 5 groups");
  EXPECT_EQ(a.doubles20[d20::kParameters - 1], 2.0);
  EXPECT_EQ(a.doubles20[d20::kObservations - 1], 240.0);
  EXPECT_NE(ReadFile(dir / "DETAILS.HTM").find("5 groups of 48 observations each"), std::string::npos);
  const std::string last = Lines(dir / "POOLCOEF.CSV").back();
  EXPECT_EQ(last.substr(last.size() - 5), ",5,48");

  // The pooling wizard's explicit model: the final model read back as the user's, held
  // fixed, fits the same.
  fs::copy_file(dir / "PASS2MOD.123", dir / "STARTMOD.123");
  EngineArrays b = testdata::MonthlyRequest(y, 12, 0, "TOTALPOOL");
  b.objective_values[0] = 99;
  s = RunRequest(b, dir.path(), &FitEngineModel);
  ASSERT_EQ(s.error_code, 0) << b.strings2250[0];
  EXPECT_EQ(s.model, "USER MODEL: ARIMA(1,0,0) with constant, pooled over 5 groups");
  EXPECT_NEAR(b.doubles20[d20::kLogLikelihood - 1], a.doubles20[d20::kLogLikelihood - 1], 1e-3);
  EXPECT_NEAR(b.doubles20[d20::kSse - 1], a.doubles20[d20::kSse - 1], 1e-4 * a.doubles20[d20::kSse - 1]);
  for (int h = 0; h < 12; ++h) EXPECT_NEAR(b.forecast_values[h], a.forecast_values[h], 1e-3) << h;
}

TEST(PooledRun, GroupsThatDoNotFitLeaveTheDatasetOneSeriesWithAWarning) {
  // The pooling flow runs each series alone under the rules and group list of the stack:
  // such a series is fitted alone, and says why it was not pooled.
  const std::vector<double> y = StackedGroups(1, 40, 9);
  auto run = [&](const std::function<void(const fs::path&)>& prepare) {
    TempDir dir;
    prepare(dir.path());
    EngineArrays a = testdata::MonthlyRequest(y, 6, 0, "SERIES1");
    RunSummary s = RunRequest(a, dir.path(), &FitEngineModel);
    EXPECT_EQ(s.error_code, 0);
    EXPECT_EQ(s.model.find("pooled"), std::string::npos) << s.model;
    EXPECT_FALSE(fs::exists(dir / "POOLCOEF.CSV"));
    EXPECT_TRUE(fs::exists(dir / "TS50PRO.123"));
    EXPECT_EQ(ReadFile(dir / "VERBAL.TXT").find("pooled cross-section"), std::string::npos);
    EXPECT_NE(ReadFile(dir / "DETAILS.HTM").find("it was modelled as one series"), std::string::npos);
    return a.strings2250[0];
  };
  EXPECT_EQ(run([](const fs::path& d) { WriteFile(d / "GROUPLST.QVX", " 3 \r\n40\r\n40\r\n40\r\n"); }),
            "The group sizes of the pooled cross-section (40 + 40 + 40 = 120) do not add up to the 40 "
            "observations of the series; it was modelled as one series.");
  EXPECT_EQ(run([](const fs::path& d) { WriteRulesWithGroups(d, 3); }),
            "The 40 observations of the series cannot be divided evenly into 3 groups of a pooled "
            "cross-section; it was modelled as one series.");
}

TEST(PooledRun, ABrokenGroupListOrATinyGroupFailsTheDataset) {
  const std::vector<double> y = StackedGroups(3, 40, 9);
  auto run = [&](const std::string& list, int16_t& code) {
    TempDir dir;
    WriteFile(dir / "GROUPLST.QVX", list);
    EngineArrays a = testdata::MonthlyRequest(y, 6, 0, "TOTALPOOL");
    code = RunRequest(a, dir.path(), &FitEngineModel).error_code;
    EXPECT_FALSE(fs::exists(dir / "POOLCOEF.CSV"));
    EXPECT_FALSE(fs::exists(dir / "TS50PRO.123"));
    return a.strings2250[0];
  };
  int16_t code = 0;
  EXPECT_EQ(run("three\r\n40\r\n40\r\n40\r\n", code),
            "GROUPLST.QVX could not be read: its first line must hold the number of groups and each "
            "further line the size of one group.");
  EXPECT_EQ(code, kCodePoolGroups);
  EXPECT_EQ(run(" 3 \r\n59\r\n59\r\n2\r\n", code),
            "A group of the pooled cross-section holds 2 observation(s); each group needs at least 3.");
  EXPECT_EQ(code, kCodePoolGroups);
}

TEST(PooledRun, OneSeriesReturnsItsSseAndParameterCountTheSameWay) {
  TempDir dir;
  EngineArrays a = testdata::MonthlyRequest(testdata::AirlinePassengers(), 12);
  ASSERT_EQ(RunRequest(a, dir.path(), &FitEngineModel).error_code, 0);
  double sse = 0.0;
  for (int t = 0; t < 144; ++t)
    if (a.doubles10000b[t] != kMissingValue) sse += a.doubles10000b[t] * a.doubles10000b[t];
  EXPECT_NEAR(a.doubles20[d20::kSse - 1], sse, 1e-6 * sse);
  // One estimated coefficient per line of EQUATION.CSV.
  EXPECT_EQ(a.doubles20[d20::kParameters - 1], static_cast<double>(Lines(dir / "EQUATION.CSV").size() - 1));
  EXPECT_FALSE(fs::exists(dir / "POOLCOEF.CSV"));
}

}  // namespace
}  // namespace quorvane
