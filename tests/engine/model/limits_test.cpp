// Limits of automatic modelling on series of known models: over many draws the held-out
// values must fall inside the 80 % and 95 % limits about 80 and 95 % of the time.
#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "engine/model.h"

namespace quorvane {
namespace {

// Period 1: AR(1) of 0.7 around 50. Period 12: the airline model (0,1,1)(0,1,1)12 with MA
// coefficients -0.4 and -0.6 from 100, or from log(500) and taken through exp (a log model).
std::vector<double> Draw(int period, int n, double sd, bool exp, std::mt19937_64& gen) {
  std::normal_distribution<double> normal(0.0, sd);
  std::vector<double> a(n + 60), y(n + 60, 0.0);
  for (double& v : a) v = normal(gen);
  for (int t = 13; t < n + 60; ++t)
    y[t] = period == 1 ? 0.7 * y[t - 1] + a[t]
                       : y[t - 1] + y[t - 12] - y[t - 13] + a[t] - 0.4 * a[t - 1] - 0.6 * a[t - 12] + 0.24 * a[t - 13];
  std::vector<double> out(y.end() - n, y.end());
  for (double& v : out) v = exp ? std::exp(std::log(500.0) + v) : v + (period == 1 ? 50.0 : 100.0);
  return out;
}

TEST(ForecastLimits, HoldTheirCoverageOnSeriesOfKnownModels) {
  struct Case { int period, n, horizon; double sd; bool exp; };
  for (const Case c : {Case{1, 120, 12, 1, false}, Case{12, 144, 18, 1, false}, Case{12, 144, 18, 0.1, true}}) {
    std::mt19937_64 gen(20261124 + 7 * c.period + c.exp);
    int inside[2] = {0, 0}, total = 0;
    for (int draw = 0; draw < 60; ++draw, total += c.horizon) {
      const std::vector<double> y = Draw(c.period, c.n + c.horizon, c.sd, c.exp, gen);
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
    EXPECT_NEAR(100.0 * inside[0] / total, 80.0, 12.0) << c.period << " " << c.exp;
    EXPECT_NEAR(100.0 * inside[1] / total, 95.0, 8.0) << c.period << " " << c.exp;
  }
}

}  // namespace
}  // namespace quorvane
