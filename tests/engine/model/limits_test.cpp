// Forecast limits of automatic modelling on series drawn from known models: over many draws
// the share of held-out values inside the 80 % and 95 % limits must be near 80 and 95.
#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/model.h"

namespace quorvane {
namespace {

// One draw of length n; `e` gives standard normal innovations.
using Process = std::function<std::vector<double>(int n, const std::function<double()>& e)>;

std::vector<double> Ar1(int n, const std::function<double()>& e) {
  std::vector<double> y(n);
  double x = 0.0;
  for (int t = -50; t < n; ++t) {
    x = 0.7 * x + e();
    if (t >= 0) y[t] = 50.0 + x;
  }
  return y;
}

// (0,1,1)(0,1,1)12 with MA coefficients -0.4 and -0.6, innovations of standard deviation sd.
std::vector<double> Airline(int n, const std::function<double()>& e, double level, double sd) {
  const int s = 12, burn = 13;
  std::vector<double> a(n + burn), y(n + burn, 0.0);
  for (double& v : a) v = sd * e();
  for (int t = 0; t < n + burn; ++t) {
    const double w = a[t] - 0.4 * (t >= 1 ? a[t - 1] : 0) - 0.6 * (t >= s ? a[t - s] : 0) +
                     0.24 * (t >= s + 1 ? a[t - s - 1] : 0);
    y[t] = w + (t >= 1 ? y[t - 1] : 0) + (t >= s ? y[t - s] : 0) - (t >= s + 1 ? y[t - s - 1] : 0);
  }
  std::vector<double> out(y.begin() + burn, y.end());
  for (double& v : out) v += level;
  return out;
}

struct Case {
  std::string name;
  Process process;
  int period, n, horizon;
};

TEST(ForecastLimits, HoldTheirCoverageOnSeriesOfKnownModels) {
  const Case cases[] = {
      {"AR(1)", Ar1, 1, 120, 12},
      {"airline", [](int n, const auto& e) { return Airline(n, e, 100.0, 1.0); }, 12, 144, 18},
      // Multiplicative: the model runs on logs and the limits are taken back.
      {"airline on logs",
       [](int n, const auto& e) {
         std::vector<double> y = Airline(n, e, std::log(500.0), 0.1);
         for (double& v : y) v = std::exp(v);
         return y;
       },
       12, 144, 18},
  };
  constexpr int kDraws = 40;
  for (const Case& c : cases) {
    std::mt19937_64 gen(20261124);
    std::normal_distribution<double> normal;
    const std::function<double()> e = [&] { return normal(gen); };
    int inside80 = 0, inside95 = 0, total = 0;
    for (int draw = 0; draw < kDraws; ++draw) {
      const std::vector<double> y = c.process(c.n + c.horizon, e);
      ModelingProblem p;
      p.y.assign(y.begin(), y.begin() + c.n);
      p.seasonality = c.period;
      p.horizon = c.horizon;
      // The shipped rules: the power transforms evaluated, necessity at 90 %.
      p.rules.lambdas = {1.0, 0.5, 0.0};
      p.rules.necessity_level = 90.0;
      p.rules.forecast_confidence = 95.0;
      const ModelResult r95 = FitAndForecast(p, nullptr);
      p.rules.forecast_confidence = 80.0;
      const ModelResult r80 = FitAndForecast(p, nullptr);
      ASSERT_EQ(r95.upper.size(), static_cast<size_t>(c.horizon)) << c.name;
      ASSERT_EQ(r80.upper.size(), static_cast<size_t>(c.horizon)) << c.name;
      for (int h = 0; h < c.horizon; ++h) {
        const double v = y[c.n + h];
        inside95 += r95.lower[h] <= v && v <= r95.upper[h];
        inside80 += r80.lower[h] <= v && v <= r80.upper[h];
        ++total;
      }
    }
    // The errors of one draw move together: the bands are loose, some four standard errors
    // of the share over this many draws.
    EXPECT_NEAR(100.0 * inside80 / total, 80.0, 8.0) << c.name;
    EXPECT_NEAR(100.0 * inside95 / total, 95.0, 4.5) << c.name;
  }
}

}  // namespace
}  // namespace quorvane
