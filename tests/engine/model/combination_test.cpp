// Forecast combination: the Theta member on series whose forecasts are known in shape, and
// the average of the members end to end on classic series, held out where the actuals are
// known.
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/model.h"
#include "engine/model/combination.h"
#include "model_test_data.h"

namespace quorvane {
namespace {

// A level with a fixed monthly pattern and small noise: the Theta forecasts carry the
// pattern on at its place in the cycle, whatever the series' length.
TEST(Theta, SeasonalPatternContinuesInPhase) {
  const double pattern[12] = {-8, -6, -2, 1, 4, 9, 12, 10, 4, -3, -9, -12};
  for (int n : {60, 61, 67, 71}) {
    std::vector<double> z(n);
    const std::vector<double> e = testdata::SimulateArma11(n, 0.0, 0.0, 0.3, 7 + n);
    for (int t = 0; t < n; ++t) z[t] = 100.0 + pattern[t % 12] + e[t];
    const ThetaForecast f = ThetaMethod(z, 12, 24, 95.0);
    ASSERT_TRUE(f.ok);
    for (int h = 0; h < 24; ++h) {
      EXPECT_NEAR(f.mean[h], 100.0 + pattern[(n + h) % 12], 1.0) << "n " << n << " h " << h;
      EXPECT_LT(f.lower[h], f.mean[h]);
      EXPECT_GT(f.upper[h], f.mean[h]);
    }
    EXPECT_GT(f.upper[23] - f.lower[23], f.upper[0] - f.lower[0]);
  }
}

// The drift is half the slope of the trend line, and the limits at 80 % lie inside those at
// 95 %.
TEST(Theta, DriftIsHalfTheTrendSlope) {
  struct Case {
    double slope, sigma;
  } cases[] = {{2.0, 1.0}, {-0.5, 0.2}, {10.0, 5.0}};
  for (const Case& c : cases) {
    const std::vector<double> e = testdata::SimulateArma11(80, 0.3, 0.0, c.sigma, 11);
    std::vector<double> z(80);
    for (int t = 0; t < 80; ++t) z[t] = 50.0 + c.slope * t + e[t];
    const ThetaForecast f95 = ThetaMethod(z, 1, 6, 95.0), f80 = ThetaMethod(z, 1, 6, 80.0);
    ASSERT_TRUE(f95.ok && f80.ok);
    EXPECT_NEAR(f95.drift, c.slope / 2.0, 0.05 * std::fabs(c.slope)) << c.slope;
    for (int h = 0; h < 6; ++h) {
      EXPECT_LT(f95.lower[h], f80.lower[h]);
      EXPECT_GT(f95.upper[h], f80.upper[h]);
    }
  }
}

// End to end on held-out actuals: the combination stays near the automatic model (a member
// left on the transformed scale would drag it far off), differs from it, keeps its limits
// around the forecasts, and forecasts the held-out values well.
TEST(Combination, AveragesTheMembersOnClassicSeries) {
  struct Case {
    std::string series;
    int period, holdout;
    double max_mape;
  } cases[] = {{"airline", 12, 12, 8.0}, {"nile", 1, 6, 25.0}, {"macro_realgdp", 4, 8, 5.0}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.series);
    const std::vector<double> all = testdata::LoadSeries(c.series);
    ModelingProblem p;
    p.output_name = "SALES";
    p.y.assign(all.begin(), all.end() - c.holdout);
    p.seasonality = c.period;
    p.horizon = c.holdout;
    p.rules.lambdas = {1.0, 0.5, 0.0};
    const ModelResult automatic = FitAndForecast(p, nullptr);
    p.objective = kObjectiveCombination;
    const ModelResult r = FitAndForecast(p, nullptr);
    ASSERT_EQ(r.error_code, 0);
    EXPECT_EQ(r.description.rfind("COMBINATION OF 3: ", 0), 0u) << r.description;
    for (const std::string& w : r.warnings) EXPECT_EQ(w.find("automatic"), std::string::npos) << w;
    ASSERT_EQ(r.forecasts.size(), static_cast<size_t>(c.holdout));
    double ape = 0.0, moved = 0.0;
    for (int h = 0; h < c.holdout; ++h) {
      const double actual = all[all.size() - c.holdout + h];
      EXPECT_NEAR(r.forecasts[h], automatic.forecasts[h], 0.15 * std::fabs(automatic.forecasts[h])) << h;
      EXPECT_LT(r.lower[h], r.forecasts[h]);
      EXPECT_GT(r.upper[h], r.forecasts[h]);
      ape += 100.0 * std::fabs(actual - r.forecasts[h]) / std::fabs(actual) / c.holdout;
      moved += std::fabs(r.forecasts[h] - automatic.forecasts[h]);
    }
    EXPECT_LT(ape, c.max_mape);
    EXPECT_GT(moved, 0.0);
    ASSERT_EQ(r.fitted.size(), p.y.size());
    for (size_t t = 0; t < p.y.size(); ++t) EXPECT_NEAR(r.fitted[t] + r.residuals[t], p.y[t], 1e-6 * std::fabs(p.y[t]));
  }
}

}  // namespace
}  // namespace quorvane
