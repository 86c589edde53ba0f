// Croston's method and the Holt-Winters preset through a whole engine call: the rules
// file turns INTERMITTENT on, the spare-parts dataset comes back with a flat, non-negative
// forecast and reports that say what was done; preset 11 saves its ARIMA form.
#include <gtest/gtest.h>

#include <cmath>

#include "engine/engine_run.h"
#include "engine/model/structured.h"
#include "engine/model_file.h"
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

// The values of the spare-parts dataset (an ASC file: 13 header lines, then the values).
std::vector<double> SparesValues() {
  auto lines = tessaly::platform::ReadAllLines(testdata::RepoPath("tests/engine/data/spares.asc"));
  std::vector<double> y;
  if (!lines) return y;
  for (size_t i = 13; i < lines->size(); ++i)
    if (!(*lines)[i].empty()) y.push_back(std::stod((*lines)[i]));
  return y;
}

TEST(IntermittentRun, FlatNonNegativeForecastAndReportsThatSaySo) {
  TempDir dir;
  WriteFile(dir / "ENGINE.GO", testdata::RulesWith(testdata::ShippedRules(), {{"INTERMITTENT", "   1"}}));
  const std::vector<double> y = SparesValues();
  ASSERT_EQ(y.size(), 60u);
  EngineArrays a = testdata::MonthlyRequest(y, 12, 0, "SPARES");
  a.property_values[2] = 2015;  // from 2015/1, as the dataset
  const RunSummary s = RunRequest(a, dir.path(), &FitModel);
  ASSERT_EQ(s.error_code, 0);
  EXPECT_EQ(s.model.rfind("CROSTON (SBA) ALPHA SIZE ", 0), 0u) << s.model;

  // The forecasts' shape is the model's tests': here what the call returns and files.
  ASSERT_EQ(a.property_values[7], 12);
  const auto& f = a.forecast_values;
  auto pro = tessaly::platform::ReadAllLines(dir / "TS50PRO.123");
  ASSERT_TRUE(pro);
  ASSERT_EQ(pro->size(), 13u);
  EXPECT_EQ((*pro)[1].substr(0, 11), "2020/1     ");
  EXPECT_EQ((*pro)[12].substr(0, 11), "2020/12    ");
  EXPECT_EQ((*pro)[1].substr(11), (*pro)[12].substr(11));
  EXPECT_EQ(std::stod((*pro)[1].substr(34, 25)), 0.0);

  const std::string equation = ReadFile(dir / "EQUATION.TXT");
  EXPECT_TRUE(tessaly::testing::HoldsAll(equation, {"Model:      CROSTON (SBA) ALPHA SIZE ", "SPARES(t) = 0.8",
      "Forecast per period: "}));
  const std::string rhs = ReadFile(dir / "RHSIDE.TXT");
  for (const char* term : {"ALPHA (SIZE)", "ALPHA (INTERVAL)", "DEMAND SIZE", "DEMAND INTERVAL", "CONSTANT"})
    EXPECT_NE(rhs.find(term), std::string::npos) << term;
  const std::string verbal = ReadFile(dir / "VERBAL.TXT");
  EXPECT_NE(verbal.find("Note: The series is intermittent (41 of 60 periods without demand): it was forecast by "
                        "Croston's method with the Syntetos-Boylan correction, a flat demand per period."),
            std::string::npos)
      << verbal;
  const std::string details = ReadFile(dir / "DETAILS.HTM");
  EXPECT_NE(details.find("The rule INTERMITTENT is on and the series is intermittent: 41 of its 60 periods"),
            std::string::npos);
  // The saved model is the flat forecast as a constant.
  auto model = ParseModelFile(*tessaly::platform::ReadAllLines(dir / "PASS2MOD.123"));
  ASSERT_TRUE(model);
  EXPECT_TRUE(model->blocks[0].has_constant);
  EXPECT_NEAR(model->blocks[0].constant, f[0], 1e-5);

}

TEST(IntermittentRun, HoltWintersPresetSavesItsArimaForm) {
  TempDir dir;
  EngineArrays a = testdata::MonthlyRequest(testdata::AirlinePassengers(), 12);
  a.objective_values[0] = 11;
  const RunSummary s = RunRequest(a, dir.path(), &FitModel);
  ASSERT_EQ(s.error_code, 0);
  EXPECT_EQ(s.model.rfind("HOLT LINEAR TREND PLUS ADDITIVE SEASONAL FACTORS: ALPHA ", 0), 0u) << s.model;
  // The smoother fits from the first period on.
  EXPECT_NE(a.doubles10000a[0], kMissingValue);
  auto model = ParseModelFile(*tessaly::platform::ReadAllLines(dir / "PASS2MOD.123"));
  ASSERT_TRUE(model);
  const ModelBlock& noise = model->blocks[0];
  EXPECT_EQ(noise.differencing, (std::vector<int>{1, 12}));
  EXPECT_FALSE(noise.has_constant);
  ASSERT_EQ(noise.second.size(), 1u);
  EXPECT_EQ(noise.second[0].powers.size(), 13u);
  EXPECT_NE(ReadFile(dir / "EQUATION.TXT").find("ARIMA form: (1 - B)(1 - B**12) PASSENGERS(t) = (1 "),
            std::string::npos);
}

}  // namespace
}  // namespace quorvane
