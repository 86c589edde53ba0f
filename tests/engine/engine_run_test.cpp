#include "engine/engine_run.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

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

std::vector<std::string> StageFilesIn(const fs::path& folder) {
  std::vector<std::string> found;
  for (int s = 1; s <= 4; ++s)
    if (fs::exists(folder / ("STAGE" + std::to_string(s) + ".123")))
      found.push_back("STAGE" + std::to_string(s) + ".123");
  return found;
}

// A stand-in for the modelling core: walks the stages, noting the stage files it finds
// at each, and returns the known model.
struct FakeCore {
  explicit FakeCore(fs::path f) : folder(std::move(f)) {}
  fs::path folder;
  std::vector<std::vector<std::string>> seen;
  int calls = 0;
  int horizon = -1, rules_forecasts = -1;
  std::function<void(Stage)> during;  // runs inside a stage, after its callback
  ModelResult result = testdata::KnownResult(144, 12);

  Fitter AsFitter() {
    return [this](const ModelingProblem& p, const StageCallback& on_stage) {
      ++calls;
      for (Stage s : {Stage::Identification, Stage::Estimation, Stage::Diagnosis}) {
        if (!on_stage(s)) {
          ModelResult stopped;
          stopped.cancelled = true;
          return stopped;
        }
        seen.push_back(StageFilesIn(folder));
        if (during) during(s);
      }
      horizon = p.horizon;
      rules_forecasts = p.rules.forecasts;
      ModelResult r = result;
      r.forecasts.resize(p.horizon);
      return r;
    };
  }
};

TEST(EngineRun, StagesAreMarkedOneAtATimeAndRemovedAtTheEnd) {
  TempDir dir;
  FakeCore core(dir.path());
  EngineArrays a = testdata::MonthlyRequest(testdata::AirlinePassengers(), 12);
  RunSummary s = RunRequest(a, dir.path(), core.AsFitter());
  EXPECT_EQ(s.error_code, 0);
  EXPECT_EQ(a.error_code, 0);
  ASSERT_EQ(core.seen.size(), 3u);
  EXPECT_EQ(core.seen[0], std::vector<std::string>{"STAGE2.123"});
  EXPECT_EQ(core.seen[1], std::vector<std::string>{"STAGE3.123"});
  EXPECT_EQ(core.seen[2], std::vector<std::string>{"STAGE4.123"});
  EXPECT_TRUE(StageFilesIn(dir.path()).empty());
  for (const auto& name : DatasetFileNames()) EXPECT_TRUE(fs::exists(dir / name)) << name;
  EXPECT_EQ(a.property_values[7], 12);
  EXPECT_EQ(a.forecast_values[0], 500);
}

TEST(EngineRun, KillRequestBetweenStagesEndsWithCode21AndNoFiles) {
  TempDir dir;
  FakeCore core(dir.path());
  core.during = [&](Stage s) {
    if (s == Stage::Identification) WriteFile(dir / "KILLQUOR.QVX", " Outahere\r\n");
  };
  // Reports of an earlier dataset are cleared first, so none can pass for this one's.
  WriteFile(dir / "DETAILS.HTM", "<html>earlier dataset</html>");
  EngineArrays a = testdata::MonthlyRequest(testdata::AirlinePassengers(), 12);
  RunSummary s = RunRequest(a, dir.path(), core.AsFitter());
  EXPECT_EQ(s.error_code, kUserTerminated);
  EXPECT_EQ(a.error_code, 21);
  EXPECT_EQ(a.strings2250[0], "User terminated the process.");
  EXPECT_EQ(core.seen.size(), 1u);  // stopped before estimation
  EXPECT_FALSE(fs::exists(dir / "KILLQUOR.QVX"));
  EXPECT_TRUE(StageFilesIn(dir.path()).empty());
  EXPECT_FALSE(fs::exists(dir / "DETAILS.HTM"));
  EXPECT_FALSE(fs::exists(dir / "TS50PRO.123"));

  // A kill request already waiting stops the call before the core starts.
  FakeCore idle(dir.path());
  WriteFile(dir / "killquor.qvx", " Outahere\r\n");
  EngineArrays b = testdata::MonthlyRequest(testdata::AirlinePassengers(), 12);
  EXPECT_EQ(RunRequest(b, dir.path(), idle.AsFitter()).error_code, 21);
  EXPECT_EQ(idle.calls, 0);
  EXPECT_FALSE(fs::exists(dir / "killquor.qvx"));
}

TEST(EngineRun, FaultsBecomeErrorCodes) {
  TempDir dir;
  FakeCore core(dir.path());
  core.during = [](Stage s) {
    if (s == Stage::Estimation) throw std::runtime_error("singular matrix");
  };
  EngineArrays a = testdata::MonthlyRequest(testdata::AirlinePassengers(), 12);
  RunSummary s = RunRequest(a, dir.path(), core.AsFitter());
  EXPECT_EQ(s.error_code, kFaultInEstimation);
  EXPECT_EQ(a.strings2250[0], "Engine fault: singular matrix");
  EXPECT_TRUE(StageFilesIn(dir.path()).empty());

  // A code the core returns passes through unchanged, with no reports.
  FakeCore failing(dir.path());
  failing.result.error_code = 28;
  EngineArrays b = testdata::MonthlyRequest(testdata::AirlinePassengers(), 12);
  EXPECT_EQ(RunRequest(b, dir.path(), failing.AsFitter()).error_code, 28);
  EXPECT_FALSE(fs::exists(dir / "DETAILS.HTM"));

  // Array checks stop the call before the core.
  FakeCore unused(dir.path());
  EngineArrays c = testdata::MonthlyRequest(testdata::AirlinePassengers(), 12);
  c.series_types[0] = 2;
  EXPECT_EQ(RunRequest(c, dir.path(), unused.AsFitter()).error_code, 2219);
  EXPECT_EQ(unused.calls, 0);
}

TEST(EngineRun, RulesModelsAndPresetsChecked) {
  TempDir dir;
  auto run = [&](int16_t objective, int series = 1) {
    FakeCore core(dir.path());
    EngineArrays a = series == 1 ? testdata::MonthlyRequest(testdata::AirlinePassengers(), 12)
                                 : testdata::CausalRequest(40, 12, 12);
    a.objective_values[0] = objective;
    return RunRequest(a, dir.path(), core.AsFitter());
  };
  WriteFile(dir / "ENGINE.GO", testdata::RulesWith(testdata::ShippedRules(), {{"ITERATIONS", " 999"}}));
  RunSummary s = run(0);
  EXPECT_EQ(s.error_code, 2026);
  ASSERT_FALSE(s.messages.empty());
  EXPECT_EQ(s.messages[0], " ERR READ ENGINE.QVX MAXIMUM # OF ITERATIONS ADVISE QVX (ENGINE.GO)");
  fs::remove(dir / "ENGINE.GO");

  EXPECT_EQ(run(99).error_code, kStartModelMissing);
  WriteFile(dir / "STARTMOD.123", "PASSENGERS\r\n     1\r\n");
  EXPECT_EQ(run(99).error_code, kStartModelMalformed);
  WriteFile(dir / "STARTMOD.123",
            "PASSENGERS" + std::string(30, ' ') + "1\r\n     0\r\n    1.000000         0.0\r\n"
            "     0     1     1\r\n    12\r\n     1\r\n    12\r\n    0.400000\r\n");
  s = run(99);
  EXPECT_EQ(s.error_code, 0);
  bool noted = false;
  for (const auto& m : s.messages) noted |= m.find("STARTMOD.123 holds a model of 1 series") == 0;
  EXPECT_TRUE(noted);
  fs::remove(dir / "STARTMOD.123");

  EXPECT_EQ(run(51).error_code, kRegressionPresetNeedsInputs);
  EXPECT_EQ(run(51, 3).error_code, 0);
  EXPECT_EQ(run(15, 3).error_code, 0);  // seasonality 4 admits the seasonal presets
  for (int16_t seasonality : {1, 3}) {
    FakeCore core(dir.path());
    EngineArrays a = testdata::MonthlyRequest(testdata::AirlinePassengers(), 5);
    a.property_values[1] = seasonality;
    a.objective_values[0] = 13;
    EXPECT_EQ(RunRequest(a, dir.path(), core.AsFitter()).error_code, kSeasonalPresetInvalid) << seasonality;
  }
}

TEST(EngineRun, IdentificationOnlyReportsTheSeriesAndForecastsNothing) {
  TempDir dir;
  FakeCore core(dir.path());
  core.result.lambda = 0.0;
  core.result.d = 1;
  core.result.D = 1;
  EngineArrays a = testdata::MonthlyRequest(testdata::AirlinePassengers(), 12);
  a.objective_values[0] = 97;
  ASSERT_EQ(RunRequest(a, dir.path(), core.AsFitter()).error_code, 0);
  EXPECT_EQ(core.horizon, 0);
  EXPECT_EQ(core.rules_forecasts, 0);  // the rules' twelve do not come back
  EXPECT_EQ(a.property_values[7], 0);
  std::string details = ReadFile(dir / "DETAILS.HTM");
  EXPECT_TRUE(tessaly::testing::HoldsAll(details, {"<h2>Identification only</h2>",
      "ln PASSENGERS, differenced (1 - B)(1 - B**12)"}));
  // 144 - 13 values after the differencing; limits 2 / sqrt(131).
  EXPECT_NE(details.find("<td>Values</td><td>131</td>"), std::string::npos);
  EXPECT_NE(details.find("&plusmn;0.1747"), std::string::npos);
  // The airline series' seasonal MA shows as a significant ACF at lag 12.
  size_t lag12 = details.find("<td class=\"num\">12</td>");
  ASSERT_NE(lag12, std::string::npos);
  EXPECT_LT(details.find("significant", lag12), details.find("</tr>", lag12));
  EXPECT_NE(ReadFile(dir / "STAT.HTM").find("Identification: autocorrelations"), std::string::npos);
  EXPECT_FALSE(fs::exists(dir / "TS50PRO.123"));
}

// The comma-separated fields of a line.
std::vector<std::string> Fields(const std::string& row) {
  std::vector<std::string> f(1);
  for (char c : row)
    if (c == ',') f.emplace_back();
    else f.back().push_back(c);
  return f;
}

// Retained values: the model never sees them; the forecasts from the end of the estimation
// sample are set against them in OUTCAST.TXT and in the run-wide accuracy files, which
// grow by each dataset and keep one header.
TEST(EngineRun, RetainedValuesAreForecastOutOfSampleAndScored) {
  TempDir dir;
  const std::vector<double>& y = testdata::AirlinePassengers();
  auto run = [&](int forecasts) {
    EngineArrays a = testdata::MonthlyRequest(y, forecasts, 12);
    RunSummary s = RunRequest(a, dir.path(), &FitAndForecast);
    EXPECT_EQ(s.error_code, 0);
    return a;
  };
  EngineArrays a = run(6);  // fewer forecasts returned than periods retained
  ASSERT_EQ(a.error_code, 0);
  EXPECT_EQ(a.property_values[7], 6);
  for (int t = 132; t < 144; ++t) EXPECT_EQ(a.doubles10000a[t], kMissingValue) << t;

  // The 12 out-of-sample forecasts: the first is the first forecast returned, 1960/1 on.
  std::string outcast = ReadFile(dir / "OUTCAST.TXT");
  ASSERT_NE(outcast.find("Out-of-sample forecasts of the 12 retained value(s)"), std::string::npos);
  EXPECT_TRUE(tessaly::testing::HoldsAll(outcast, {"1960/12", "Out-of-sample MAPE"}));
  const std::vector<std::string> rows = *tessaly::platform::ReadAllLines(dir / "FORE-MON.CSV");
  ASSERT_EQ(rows.size(), 13u);
  EXPECT_EQ(rows[0].rfind("Series,Period,Lead,Actual,Forecast,", 0), 0u);
  // A good airline model is within a few percent of 1960; the first out-of-sample forecast
  // is the first forecast returned.
  double ape = 0;
  for (int h = 1; h <= 12; ++h) {
    std::vector<std::string> f = Fields(rows[h]);
    ASSERT_EQ(f.size(), 10u);
    EXPECT_EQ(f[0], "PASSENGERS");
    EXPECT_EQ(f[2], std::to_string(h));
    EXPECT_NEAR(std::stod(f[3]), y[131 + h], 1e-6);
    ape += std::stod(f[8]);
  }
  EXPECT_EQ(Fields(rows[1])[1], "1960/1");
  EXPECT_NEAR(std::stod(Fields(rows[1])[4]), a.forecast_values[0], 1e-4);
  EXPECT_LT(ape / 12, 8.0);

  // A second dataset: one more line in MAPECOMP.CSV, 12 more in FORE-MON.CSV, and the sum
  // in SUMMAPE.TXT over both.
  run(12);
  std::string comp = ReadFile(dir / "MAPECOMP.CSV");
  EXPECT_EQ(comp.rfind("Series,Model,Retained,In-sample MAPE,Out-of-sample MAPE,", 0), 0u);
  EXPECT_EQ(std::count(comp.begin(), comp.end(), '\n'), 3);
  EXPECT_EQ(comp.find("Series", 1), std::string::npos);
  std::string mon2 = ReadFile(dir / "FORE-MON.CSV");
  EXPECT_EQ(std::count(mon2.begin(), mon2.end(), '\n'), 25);
  std::string sum = ReadFile(dir / "SUMMAPE.TXT");
  EXPECT_NE(sum.find("ALL SERIES"), std::string::npos);
  EXPECT_EQ(sum.find("ALL SERIES"), sum.rfind("ALL SERIES"));
  EXPECT_NE(sum.find("Mean of the 2 series' out-of-sample MAPEs"), std::string::npos);
  size_t total = sum.find("ALL SERIES");
  EXPECT_NE(sum.substr(total, sum.find('\n', total) - total).find(" 24 "), std::string::npos);

  // Without retained values none of these files is touched.
  TempDir plain;
  EngineArrays b = testdata::MonthlyRequest(y, 12, 0);
  RunRequest(b, plain.path(), &FitAndForecast);
  EXPECT_FALSE(fs::exists(plain / "MAPECOMP.CSV"));
  EXPECT_FALSE(fs::exists(plain / "SUMMAPE.TXT"));
  EXPECT_EQ(ReadFile(plain / "OUTCAST.TXT").find("Out-of-sample"), std::string::npos);
}

// The real core over awkward datasets: every call ends with an answer (a model or a code),
// never a fault that escapes, and leaves no stage file behind.
TEST(EngineRun, AwkwardDatasetsAlwaysGetAnAnswer) {
  TempDir dir;
  struct Case {
    const char* what;
    std::vector<double> y;
    int seasonality, forecasts, retained;
  };
  std::vector<double> nan_inside = testdata::AirlinePassengers();
  nan_inside[50] = std::nan("");
  std::vector<Case> cases = {
      {"one observation", {42}, 1, 5, 0},
      {"two observations", {1, 2}, 12, 12, 0},
      {"constant series", std::vector<double>(60, 7.0), 12, 12, 0},
      {"huge values", std::vector<double>(40, 1e300), 4, 4, 0},
      {"NaN inside", nan_inside, 12, 12, 0},
      {"seasonality 200 on 30 values", std::vector<double>(30, 1.0), 200, 10, 0},
      {"600 forecasts", testdata::AirlinePassengers(), 12, 600, 0},
      {"all but one retained", {5, 6, 7, 8, 9, 10}, 1, 3, 5},
      {"negative and zero values", {-5, 0, 3, -2, 0, 8, -1, 4, 0, 2, -3, 6}, 4, 4, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EngineArrays a = testdata::MonthlyRequest(c.y, c.forecasts, c.retained);
    a.property_values[1] = static_cast<int16_t>(c.seasonality);
    RunSummary s = RunRequest(a, dir.path(), &FitAndForecast);
    EXPECT_EQ(s.error_code, a.error_code);
    EXPECT_GE(a.error_code, 0);
    if (a.error_code == 0) {
      EXPECT_TRUE(std::filesystem::exists(dir / "DETAILS.HTM"));
      EXPECT_LE(a.property_values[7], c.forecasts);
      for (int h = 0; h < a.property_values[7]; ++h) EXPECT_FALSE(std::isnan(a.forecast_values[h])) << h;
    }
    EXPECT_TRUE(StageFilesIn(dir.path()).empty());
  }
}

}  // namespace
}  // namespace quorvane
