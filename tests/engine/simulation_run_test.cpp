// "SIMULATION ENABLED" through a whole engine call: the rules file switches simulation on
// with its noise variance and seed, the limits returned are the simulated ones and
// DETAILS.HTM tells how they were made.
#include <gtest/gtest.h>

#include <cmath>

#include "engine/engine_run.h"
#include "engine/model.h"
#include "engine_test_data.h"
#include "support/program_folder.h"
#include "support/text_checks.h"

namespace quorvane {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

TEST(SimulationRun, LimitsComeFromTheSimulatedPathsAndTheReportSaysSo) {
  TempDir plain_dir, sim_dir;
  // No power transform, so that the noise variance is on the passengers' own scale.
  std::string rules = testdata::RulesWith(testdata::ShippedRules(), {{"EVALUATE IN EST", "   1"}, {"(4F4.0)", "1.00"}});
  WriteFile(plain_dir / "ENGINE.GO", rules);
  EngineArrays plain = testdata::MonthlyRequest(testdata::AirlinePassengers(), 12);
  ASSERT_EQ(RunRequest(plain, plain_dir.path(), &FitAndForecast).error_code, 0);

  rules = testdata::RulesWith(rules,
                              {{"SIMULATION ENABLED", "   1"}, {"NOISE SERIES", "25.0"}, {"SEED VALUE", "  77"}});
  WriteFile(sim_dir / "ENGINE.GO", rules);
  EngineArrays sim = testdata::MonthlyRequest(testdata::AirlinePassengers(), 12);
  ASSERT_EQ(RunRequest(sim, sim_dir.path(), &FitAndForecast).error_code, 0);

  ASSERT_EQ(sim.property_values[7], 12);
  const auto& f = sim.forecast_values;
  const auto& g = plain.forecast_values;
  // One period ahead the paths spread by the noise's standard deviation, 5: the 95 % interval
  // is about 2 x 1.96 x 5 wide, whatever the fit's own variance.
  EXPECT_NEAR(f[1200] - f[600], 19.6, 3.0);
  bool moved = false;
  for (int h = 0; h < 12; ++h) {
    EXPECT_LT(f[600 + h], f[h]) << h;
    EXPECT_GT(f[1200 + h], f[h]) << h;
    EXPECT_NEAR(f[h], g[h], 0.25 * (f[1200 + h] - f[600 + h])) << h;
    if (f[600 + h] != g[600 + h] || f[1200 + h] != g[1200 + h]) moved = true;
  }
  EXPECT_TRUE(moved);

  const std::string details = ReadFile(sim_dir / "DETAILS.HTM");
  EXPECT_TRUE(tessaly::testing::HoldsAll(details, {"<h2>9. Simulation</h2>",
      "<td>Simulated paths</td><td>1000</td>", "<td>Seed used</td><td>77</td>", "<td>Noise variance</td><td>25",
      "<th class=\"num\">Sample path</th>", "medians of 1000 simulated futures",
      "The simulated limits are those of the model taken as known"}));
  EXPECT_EQ(ReadFile(plain_dir / "DETAILS.HTM").find("Simulation</h2>"), std::string::npos);
  EXPECT_NE(ReadFile(sim_dir / "OUTCAST.TXT")
                .find("Forecasts are the medians of 1000 simulated paths (seed 77, noise variance 25"),
            std::string::npos);
  EXPECT_EQ(ReadFile(plain_dir / "OUTCAST.TXT").find("simulated"), std::string::npos);
}

}  // namespace
}  // namespace quorvane
