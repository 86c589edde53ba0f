// Smoothing benchmark.
//
// Holt-Winters: on the real seasonal series kept for the reference tests, and on synthetic
// weekly series (period 52), each with its last two cycles (at most 24 values) held out:
// the time of one estimate with least-squares initial states and with the decomposition's
// alone, their in-sample SSE, and the out-of-sample MASE of preset 11 beside preset 14 (its
// ARIMA form) and preset 15 (airline).
//
// Croston: synthetic intermittent demand (demand in a period with probability 0.2, 0.35 or
// 0.5, sizes 1 + Poisson(3) or 1 + geometric with mean 6, lengths 60 and 120, seeded), the
// last 12 periods held out: mean squared and absolute error of the SBA forecast, of
// Croston's own, of automatic modelling without the rule and of the sample mean; the share
// of held-out values inside the 95 % limits; time per fit.
//
// Usage: bench_engine_smoothing [replications per Croston cell, default 50]
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "engine/model.h"
#include "engine/model/holt_winters.h"
#include "engine/model/intermittent.h"
#include "engine/model/structured.h"

using namespace quorvane;
using Clock = std::chrono::steady_clock;

namespace {

std::vector<double> LoadSeries(const std::string& name) {
  std::ifstream in(std::string(TESSALY_SOURCE_DIR) + "/tests/engine/model/reference/series/" + name + ".csv");
  std::vector<double> v;
  for (double x; in >> x;) v.push_back(x);
  return v;
}

double Ms(Clock::time_point a, Clock::time_point b) {
  return std::chrono::duration<double, std::milli>(b - a).count();
}

// MASE with the seasonal naive in-sample scale.
double Mase(const std::vector<double>& train, const std::vector<double>& test, const std::vector<double>& f, int m) {
  double scale = 0.0;
  int k = 0;
  for (size_t t = m; t < train.size(); ++t, ++k) scale += std::fabs(train[t] - train[t - m]);
  scale /= std::max(1, k);
  double e = 0.0;
  for (size_t h = 0; h < test.size(); ++h) e += std::fabs(test[h] - f[h]);
  return e / test.size() / scale;
}

ModelResult Preset(const std::vector<double>& y, int m, int objective, int horizon) {
  ModelingProblem p;
  p.output_name = "Y";
  p.y = y;
  p.seasonality = m;
  p.begin_year = 2000;
  p.horizon = horizon;
  p.objective = objective;
  return FitModel(p, nullptr);
}

void HoltWintersPart() {
  struct Case {
    std::string name;
    int m;
    std::vector<double> y;
  };
  std::vector<Case> cases = {{"airline", 12, LoadSeries("airline")},
                             {"co2", 12, LoadSeries("co2")},
                             {"elnino", 12, LoadSeries("elnino")},
                             {"macro_realgdp", 4, LoadSeries("macro_realgdp")},
                             {"macro_unemp", 4, LoadSeries("macro_unemp")}};
  std::mt19937 rng(11);
  std::normal_distribution<double> N(0.0, 1.0);
  {
    // The longest cycle a dataset may have: 200 periods, three cycles and a bit.
    std::vector<double> y;
    for (int t = 0; t < 650; ++t)
      y.push_back(50.0 + 0.02 * t + 10.0 * std::sin(2 * M_PI * t / 200.0) + N(rng));
    cases.push_back({"period_200", 200, y});
  }
  for (int r = 0; r < 3; ++r) {
    // Weekly sales: a slow trend, a yearly pattern, noise and a wandering level.
    std::vector<double> y;
    double level = 100.0;
    for (int t = 0; t < 260; ++t) {
      level += 0.05 + 0.3 * N(rng);
      y.push_back(level + 15.0 * std::sin(2 * M_PI * t / 52.0) + 6.0 * std::cos(4 * M_PI * t / 52.0) + 2.0 * N(rng));
    }
    cases.push_back({"weekly_" + std::to_string(r + 1), 52, y});
  }
  std::printf("Holt-Winters (preset 11)\n");
  std::printf("%-14s %4s %5s %10s %10s %12s %12s %8s %8s %8s %8s\n", "series", "m", "n", "ms (LS)", "ms (dec)",
              "SSE (LS)", "SSE (dec)", "MASE 11", "11 (dec)", "MASE 14", "MASE 15");
  double sum11 = 0, sum11d = 0, sum14 = 0, sum15 = 0;
  for (const Case& c : cases) {
    const int hold = std::min(24, 2 * c.m);
    const std::vector<double> train(c.y.begin(), c.y.end() - hold), test(c.y.end() - hold, c.y.end());
    auto t0 = Clock::now();
    const HoltWintersEstimate ls = EstimateHoltWinters(train, c.m, true);
    auto t1 = Clock::now();
    const HoltWintersEstimate dec = EstimateHoltWinters(train, c.m, false);
    auto t2 = Clock::now();
    const ModelResult r11 = Preset(train, c.m, 11, hold);
    const ModelResult r14 = Preset(train, c.m, 14, hold);
    const ModelResult r15 = Preset(train, c.m, 15, hold);
    const double m11 = r11.error_code ? NAN : Mase(train, test, r11.forecasts, c.m);
    const double m14 = r14.error_code ? NAN : Mase(train, test, r14.forecasts, c.m);
    const double m15 = r15.error_code ? NAN : Mase(train, test, r15.forecasts, c.m);
    std::vector<double> fd(hold);
    const HoltWintersStates& st = dec.run.final_states;
    for (int h = 1; h <= hold; ++h)
      fd[h - 1] = st.level + h * st.trend + st.seasonal[(train.size() + h - 1) % c.m];
    const double m11d = Mase(train, test, fd, c.m);
    sum11 += m11;
    sum11d += m11d;
    sum14 += m14;
    sum15 += m15;
    std::printf("%-14s %4d %5zu %10.1f %10.1f %12.5g %12.5g %8.3f %8.3f %8.3f %8.3f\n", c.name.c_str(), c.m,
                train.size(), Ms(t0, t1), Ms(t1, t2), ls.run.sse, dec.run.sse, m11, m11d, m14, m15);
  }
  const double k = static_cast<double>(cases.size());
  std::printf("mean MASE: preset 11 %.3f (decomposition's states alone %.3f), preset 14 %.3f, preset 15 %.3f\n\n",
              sum11 / k, sum11d / k, sum14 / k, sum15 / k);
}

void CrostonPart(int replications) {
  std::printf("Croston (SBA) on synthetic intermittent demand, last 12 periods held out, %d series per cell\n",
              replications);
  std::printf("%5s %-9s %4s %9s %9s %9s %9s  %9s %9s %9s %9s %9s %8s\n", "p", "sizes", "n", "MSE sba", "MSE cro",
              "MSE auto", "MSE mean", "MAE sba", "MAE cro", "MAE auto", "MAE mean", "in 95 %", "ms");
  std::mt19937 rng(2024);
  for (double p : {0.2, 0.35, 0.5})
    for (int kind = 0; kind < 2; ++kind)
      for (int n : {60, 120}) {
        double mse[4] = {0, 0, 0, 0}, mae[4] = {0, 0, 0, 0}, inside = 0, count = 0, ms = 0;
        int fitted = 0;
        for (int r = 0; r < replications; ++r) {
          std::bernoulli_distribution demand(p);
          std::poisson_distribution<int> poisson(3.0);
          std::geometric_distribution<int> geometric(1.0 / 6.0);
          std::vector<double> y;
          for (int t = 0; t < n + 12; ++t)
            y.push_back(demand(rng) ? 1.0 + (kind == 0 ? poisson(rng) : geometric(rng)) : 0.0);
          const std::vector<double> train(y.begin(), y.begin() + n), test(y.begin() + n, y.end());
          ModelingProblem prob;
          prob.output_name = "DEMAND";
          prob.y = train;
          prob.seasonality = 12;
          prob.begin_year = 2000;
          prob.horizon = 12;
          prob.rules.intermittent = true;
          const IntermittentCheck check = CheckIntermittent(train);
          if (!check.intermittent) continue;
          auto t0 = Clock::now();
          const ModelResult sba = FitAndForecast(prob, nullptr);
          ms += Ms(t0, Clock::now());
          const CrostonEstimate classic = EstimateCroston(train, CrostonVariant::Classic);
          prob.rules.intermittent = false;
          const ModelResult automatic = FitAndForecast(prob, nullptr);
          double mean = 0;
          for (double v : train) mean += v / n;
          ++fitted;
          for (int h = 0; h < 12; ++h) {
            const double f[4] = {sba.forecasts[h], classic.run.forecast, automatic.forecasts[h], mean};
            for (int i = 0; i < 4; ++i) {
              mse[i] += (test[h] - f[i]) * (test[h] - f[i]);
              mae[i] += std::fabs(test[h] - f[i]);
            }
            inside += test[h] >= sba.lower[h] && test[h] <= sba.upper[h];
            ++count;
          }
        }
        if (count == 0) continue;
        std::printf("%5.2f %-9s %4d %9.3f %9.3f %9.3f %9.3f  %9.3f %9.3f %9.3f %9.3f %8.1f%% %8.2f\n", p,
                    kind == 0 ? "poisson" : "geometric", n, mse[0] / count, mse[1] / count, mse[2] / count,
                    mse[3] / count, mae[0] / count, mae[1] / count, mae[2] / count, mae[3] / count,
                    100.0 * inside / count, ms / fitted);
      }
}

}  // namespace

int main(int argc, char** argv) {
  const int replications = argc > 1 ? std::max(1, std::atoi(argv[1])) : 50;
  HoltWintersPart();
  CrostonPart(replications);
  return 0;
}
