// The stepwise search finds the process that made a series, and the forecasts of a fixed
// model follow the closed forms of its point forecasts and error variances.
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "engine/model/forecast.h"
#include "engine/model/search.h"
#include "model_test_data.h"

namespace quorvane {
namespace {

TEST(StepwiseSearch, FindsTheOrdersOfSimulatedProcesses) {
  // AR(1) with a strong coefficient, MA(1), white noise: each should be found as itself.
  struct Case {
    double phi, theta;
    int p, q;
  } cases[] = {{0.8, 0.0, 1, 0}, {0.0, 0.7, 0, 1}, {0.0, 0.0, 0, 0}};
  for (const Case& c : cases) {
    const std::vector<double> y = testdata::SimulateArma11(400, c.phi, c.theta, 1.0, 99);
    std::vector<SearchStep> trail;
    const ArimaFit f = StepwiseSearch(y, 0, 0, 1, SearchOptions{}, &trail);
    ASSERT_TRUE(f.ok);
    EXPECT_EQ(f.orders.p, c.p) << c.phi << " " << c.theta;
    EXPECT_EQ(f.orders.q, c.q) << c.phi << " " << c.theta;
    EXPECT_GE(trail.size(), 5u);
    // Each step's AICc is recorded and the chosen one is the smallest usable.
    for (const SearchStep& s : trail)
      if (s.usable) EXPECT_GE(s.aicc, f.aicc - 1e-9);
  }
}

TEST(StepwiseSearch, KeepsToTheLimitsAndRejectsNearUnitRoots) {
  const std::vector<double> y = testdata::SimulateArma11(300, 0.5, 0.4, 1.0, 4);
  SearchOptions o;
  o.max_order = 1;
  o.allow_constant = false;
  const ArimaFit f = StepwiseSearch(y, 0, 0, 1, o, nullptr);
  ASSERT_TRUE(f.ok);
  EXPECT_LE(f.orders.p + f.orders.q, 1);
  EXPECT_FALSE(f.orders.constant);
  ArimaFit unit = f;
  unit.coef.ar = {0.995};
  unit.coef.ma = {};
  EXPECT_FALSE(RootsClearOfUnitCircle(unit));
  unit.coef.ar = {0.9};
  EXPECT_TRUE(RootsClearOfUnitCircle(unit));
}

TEST(ForecastArima, FollowsTheClosedFormsOfKnownModels) {
  // AR(1) with mean: forecasts decay geometrically to the mean; variance sigma2 sum phi^2j.
  ArimaFit ar;
  ar.ok = true;
  ar.orders.p = 1;
  ar.orders.constant = true;
  ar.coef.ar = {0.6};
  ar.mean = 10.0;
  ar.sigma2 = 4.0;
  const std::vector<double> y = {9.0, 11.0, 10.5, 12.0};
  ArimaForecast fc = ForecastArima(y, ar, 3, 95.0);
  // The exact filter's last state of a pure AR is the last observation.
  EXPECT_NEAR(fc.mean[0], 10.0 + 0.6 * 2.0, 1e-9);
  EXPECT_NEAR(fc.mean[2], 10.0 + 0.216 * 2.0, 1e-9);
  EXPECT_NEAR(fc.se[1], std::sqrt(4.0 * (1 + 0.36)), 1e-9);
  EXPECT_NEAR(fc.upper[0] - fc.mean[0], 1.959964 * 2.0, 1e-5);
  // Random walk with drift: a straight line from the last value, variance h sigma2.
  ArimaFit rw;
  rw.ok = true;
  rw.orders.d = 1;
  rw.orders.constant = true;
  rw.mean = 0.5;
  rw.sigma2 = 1.0;
  fc = ForecastArima({1.0, 2.0, 2.5, 3.0}, rw, 4, 80.0);
  EXPECT_NEAR(fc.mean[3], 3.0 + 4 * 0.5, 1e-9);
  EXPECT_NEAR(fc.se[3], 2.0, 1e-9);
  EXPECT_NEAR(fc.upper[3] - fc.mean[3], 1.281552 * 2.0, 1e-5);
  // Seasonal naive (0,0,0)(0,1,0)4: each quarter repeats its value a year before.
  ArimaFit sn;
  sn.ok = true;
  sn.orders.D = 1;
  sn.orders.period = 4;
  sn.sigma2 = 1.0;
  fc = ForecastArima({1, 2, 3, 4, 5, 6, 7, 8}, sn, 6, 95.0);
  EXPECT_EQ(fc.mean, (std::vector<double>{5, 6, 7, 8, 5, 6}));
  EXPECT_NEAR(fc.se[4], std::sqrt(2.0), 1e-12);
  // One-step predictions: NaN over the differencing's start, then actual less innovation.
  const std::vector<double> pred = OneStepPredictions({1, 2, 3, 4, 5, 6, 7, 9}, sn);
  EXPECT_TRUE(std::isnan(pred[3]));
  EXPECT_NEAR(pred[7], 4.0, 1e-9);
  EXPECT_TRUE(ForecastArima(y, ar, 0, 95.0).mean.empty());
}

}  // namespace
}  // namespace quorvane
