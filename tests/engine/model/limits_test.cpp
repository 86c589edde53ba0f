// Limits of automatic modelling on series of known models: over many draws the held-out
// values must fall inside the 80 % and 95 % limits about 80 and 95 % of the time, also
// when the innovations have heavy tails.
#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "engine/model.h"
#include "engine/model/limits.h"

namespace quorvane {
namespace {

// Period 1: AR(1) of 0.7 around 50. Period 12: the airline model (0,1,1)(0,1,1)12 with MA
// coefficients -0.4 and -0.6 from 100, or from log(500) and taken through exp (a log model).
// Innovations of standard deviation sd: normal, or with `df` above 2 Student's t of so many
// degrees of freedom (heavy tails).
std::vector<double> Innovations(int n, double sd, double df, std::mt19937_64& gen) {
  std::normal_distribution<double> normal(0.0, sd);
  std::student_t_distribution<double> t(df > 2.0 ? df : 3.0);
  std::vector<double> a(n);
  for (double& v : a) v = df > 2.0 ? sd * t(gen) * std::sqrt((df - 2.0) / df) : normal(gen);
  return a;
}

std::vector<double> Draw(int period, int n, double sd, bool exp, std::mt19937_64& gen, double df = 0.0) {
  std::vector<double> a = Innovations(n + 60, sd, df, gen), y(n + 60, 0.0);
  for (int t = 13; t < n + 60; ++t)
    y[t] = period == 1 ? 0.7 * y[t - 1] + a[t]
                       : y[t - 1] + y[t - 12] - y[t - 13] + a[t] - 0.4 * a[t - 1] - 0.6 * a[t - 12] + 0.24 * a[t - 13];
  std::vector<double> out(y.end() - n, y.end());
  for (double& v : out) v = exp ? std::exp(std::log(500.0) + v) : v + (period == 1 ? 50.0 : 100.0);
  return out;
}

TEST(ForecastLimits, HoldTheirCoverageOnSeriesOfKnownModels) {
  struct Case { int period, n, horizon; double sd; bool exp; double df; };
  for (const Case c : {Case{1, 120, 12, 1, false, 0}, Case{12, 144, 18, 1, false, 0}, Case{12, 144, 18, 0.1, true, 0},
                       Case{1, 120, 12, 1, false, 3}}) {
    std::mt19937_64 gen(20261124 + 7 * c.period + c.exp);
    int inside[2] = {0, 0}, total = 0;
    for (int draw = 0; draw < 60; ++draw, total += c.horizon) {
      const std::vector<double> y = Draw(c.period, c.n + c.horizon, c.sd, c.exp, gen, c.df);
      ModelingProblem p;
      p.y.assign(y.begin(), y.begin() + c.n);
      p.seasonality = c.period;
      p.horizon = c.horizon;
      p.rules.lambdas = {1.0, 0.5, 0.0};  // the shipped rules
      p.rules.necessity_level = 90.0;
      for (int k = 0; k < 2; ++k) {
        p.rules.forecast_confidence = k == 0 ? 80.0 : 95.0;
        const ModelResult r = FitAndForecast(p, nullptr);
        ASSERT_EQ(r.upper.size(), static_cast<size_t>(c.horizon));
        for (int h = 0; h < c.horizon; ++h) inside[k] += r.lower[h] <= y[c.n + h] && y[c.n + h] <= r.upper[h];
      }
    }
    // A draw's errors move together: between seeds the shares spread by 5 and 3.5 points.
    EXPECT_NEAR(100.0 * inside[0] / total, 80.0, 12.0) << c.period << " " << c.exp << " " << c.df;
    EXPECT_NEAR(100.0 * inside[1] / total, 95.0, 8.0) << c.period << " " << c.exp << " " << c.df;
  }
}

// The tails' factor against the exact one: t(6) of unit variance has its 80 % and 95 % points
// at 1.176 and 1.998 (the normal's 1.282, 1.960); a random walk's far errors, sums of many,
// come near the normal; normal innovations leave the formula alone. The bounds allow for
// the draws (a 97.5 % point from 2000 of them errs by some 3 %).
TEST(ForecastLimits, FollowTheTailsOfInnovationsThatAreNotNormal) {
  struct Case { int d; double df, coverage; int h; double low, high; };
  for (const Case c : {Case{0, 6, 80, 1, 0.86, 0.95}, Case{0, 6, 95, 1, 0.93, 1.07}, Case{0, 6, 80, 12, 0.86, 0.95},
                       Case{1, 6, 80, 12, 0.95, 1.05}, Case{0, 0, 95, 1, 1, 1}}) {
    std::mt19937_64 gen(7);
    const std::vector<double> a = Innovations(20000, 2.0, c.df, gen);
    ArimaFit fit;
    fit.ok = true;
    fit.orders.d = c.d;
    const std::vector<double> r = TailRatios(a, fit, 12, c.coverage);
    ASSERT_EQ(r.size(), c.df > 0 ? 12u : 0u);
    if (r.empty()) continue;
    EXPECT_TRUE(r[c.h - 1] > c.low && r[c.h - 1] < c.high) << r[c.h - 1] << " " << c.d << " " << c.coverage;
  }
}

}  // namespace
}  // namespace quorvane
