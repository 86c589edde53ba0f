// The stepwise search finds the process that made a series, and the forecasts of a fixed
// model follow the closed forms of its point forecasts and error variances.
#include <cmath>
#include <random>
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

TEST(ForecastArima, AllowancesWidenTheLimitsByTheirKnownAmounts) {
  // Random walk with drift on 41 values: 40 differences. The drift is their mean, whose
  // variance under white noise is sigma2 / 40; its error grows with the horizon, so the
  // h-step variance is sigma2 (h + h^2 / 40).
  std::vector<double> z{100.0};
  std::mt19937 gen(5);
  std::normal_distribution<double> N(0.3, 1.0);
  for (int t = 0; t < 40; ++t) z.push_back(z.back() + N(gen));
  ArimaFit rw;
  rw.ok = true;
  rw.orders.d = 1;
  rw.orders.constant = true;
  rw.mean = (z.back() - z.front()) / 40.0;
  rw.sigma2 = 1.0;
  LimitAllowances a;
  a.constant_error = true;
  a.sigma2 = 2.0;
  ArimaForecast fc = ForecastArima(z, rw, 12, 95.0, a);
  for (int h : {1, 6, 12})
    EXPECT_NEAR(fc.se[h - 1], std::sqrt(2.0 * (h + h * h / 40.0)), 1e-6) << h;
  EXPECT_NEAR(fc.mean[11], z.back() + 12 * rw.mean, 1e-9);
  // Student's t with 10 degrees of freedom: 2.228 in place of 1.960.
  a.degrees_of_freedom = 10;
  fc = ForecastArima(z, rw, 12, 95.0, a);
  EXPECT_NEAR((fc.upper[5] - fc.mean[5]) / fc.se[5], 2.228139, 1e-5);
  // The estimated coefficients' share scales the innovation part: AR(1), 4 coefficients
  // over 40 innovations, 1.1 times the variance.
  ArimaFit ar;
  ar.ok = true;
  ar.orders.p = 1;
  ar.coef.ar = {0.5};
  ar.sigma2 = 1.0;
  LimitAllowances k;
  k.coefficient_share = 0.1;
  fc = ForecastArima(z, ar, 3, 95.0, k);
  EXPECT_NEAR(fc.se[2], std::sqrt(1.1 * (1 + 0.25 + 0.0625)), 1e-12);
  // With the estimate's covariance, its error carried through the forecast function: the
  // h-step forecast 0.5^h z(n) moves by h 0.5^(h-1) z(n) per unit of the coefficient. That
  // part counts where it exceeds the share, up to the innovation part.
  ar.covariance = {1e-4};
  k.coefficient_delta = true;
  fc = ForecastArima(z, ar, 6, 95.0, k);
  double acc = 0.0;
  for (int h = 1; h <= 6; ++h) {
    acc += std::pow(0.25, h - 1);
    const double g = h * std::pow(0.5, h - 1) * z.back();
    const double part = std::min(std::max(0.1 * acc, g * g * 1e-4), acc);
    EXPECT_NEAR(fc.se[h - 1], std::sqrt(acc + part), 1e-5) << h;
  }
}

TEST(ForecastArima, RecurringInterventionsWidenTheTailsByTheirRateAndSize) {
  ArimaFit wn;
  wn.ok = true;
  wn.sigma2 = 1.0;
  const std::vector<double> z(50, 0.0);
  // By horizon h the events' variance is rate x size^2 x their reach: a step once in 100
  // periods reaches every period after it (1 + 0.25 h); a pulse only its own; a seasonal
  // pulse its own period of every cycle, so at 12 months still once and at 13 twice.
  const struct {
    EventShape shape;
    double rate, mean_square;
    int period, h;
    double variance;
  } cases[] = {{EventShape::Step, 0.01, 25.0, 1, 10, 3.5},
               {EventShape::Step, 0.01, 25.0, 1, 20, 6.0},
               {EventShape::SeasonalPulse, 0.01, 25.0, 12, 12, 1.25},
               {EventShape::SeasonalPulse, 0.01, 25.0, 12, 13, 1.5},
               {EventShape::SeasonalPulse, 0.01, 25.0, 1, 20, 1.25},
               {EventShape::Pulse, 0.02, 16.0, 1, 20, 1.32},
               {EventShape::Pulse, 0.02, 16.0, 1, 1, 1.32}};  // last: its limits are checked below
  LimitAllowances a;
  ArimaForecast fc;
  for (const auto& c : cases) {
    a.events = {{c.shape, c.rate, c.mean_square}};
    a.period = c.period;
    fc = ForecastArima(z, wn, 20, 95.0, a);
    EXPECT_NEAR(fc.se[c.h - 1], std::sqrt(c.variance), 1e-12) << static_cast<int>(c.shape) << " h " << c.h;
  }
  // The limits are the quantiles of the mixture: a 2 % chance of a pulse of size 4 moves the
  // 97.5 % point only a little, far less than a normal of the same total variance would.
  const double half = fc.upper[0] - fc.mean[0];
  EXPECT_GT(half, 1.959964);
  EXPECT_LT(half, 1.959964 * std::sqrt(1.32));
  // Checked against the mixture's tail probability: 0.98 P(|N(0,1)| > x) + 0.0198 P(|N(0,17)| > x)
  // + the rest at 2 and more pulses, which together make 5 %.
  double tail = 0.0, w = std::exp(-0.02);
  for (int j = 0; j < 10; ++j, w *= 0.02 / j) tail += w * std::erfc(half / std::sqrt(2.0 * (1.0 + 16.0 * j)));
  EXPECT_NEAR(tail, 0.05, 1e-6);
  // Many small events: the mixture is nearly normal with the total variance.
  EXPECT_NEAR(MixtureHalfWidth(1.0, 50.0, 0.02, 95.0, 0), 1.959964 * std::sqrt(2.0), 0.02);
  EXPECT_DOUBLE_EQ(MixtureHalfWidth(4.0, 0.0, 9.0, 95.0, 0), 1.959963984540054 * 2.0);
  // A horizon of hundreds of periods with frequent events stays finite.
  EXPECT_NEAR(MixtureHalfWidth(1.0, 400.0, 0.5, 95.0, 0), 1.959964 * std::sqrt(201.0), 1e-4);
}

}  // namespace
}  // namespace quorvane
