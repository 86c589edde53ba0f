// Prints the median time of fitting a pooled cross-section of 5 groups of 48 monthly
// observations (a seasonal pattern and AR(1) noise, the same in every group, simulated from
// a fixed seed): automatic modelling, the preset AR(1) with constant, and the model the
// automatic run found held fixed as the user's; beside it, the five groups modelled
// automatically one by one, as the pooling flow's single passes do.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include "../bench_timing.h"
#include "engine/model/pooled.h"
#include "engine/model/structured.h"

using namespace quorvane;

namespace {

using tessaly::bench::MedianMs;

constexpr int kGroups = 5;
constexpr int kSize = 48;

std::vector<double> Stacked() {
  std::mt19937 gen(2026);
  std::normal_distribution<double> e(0.0, 2.0);
  std::vector<double> y;
  for (int g = 0; g < kGroups; ++g) {
    double x = 0.0;
    for (int t = 0; t < kSize; ++t) {
      x = 0.5 * x + e(gen);
      y.push_back(100.0 + 10.0 * std::sin(2.0 * M_PI * t / 12.0) + x);
    }
  }
  return y;
}

ModelingProblem Problem(std::vector<double> y, int groups, int objective) {
  ModelingProblem p;
  p.output_name = "TOTALPOOL";
  p.y = std::move(y);
  p.seasonality = 12;
  p.begin_year = 2001;
  p.begin_period = 1;
  p.horizon = 12;
  p.objective = objective;
  p.rules.groups = groups;
  return p;
}

}  // namespace

int main() {
  const std::vector<double> y = Stacked();
  const int runs = 15;
  ModelResult automatic;
  const double t_auto = MedianMs(runs, [&] { automatic = FitPooled(Problem(y, kGroups, 0), nullptr); });
  ModelResult preset;
  const double t_preset = MedianMs(runs, [&] { preset = FitPooled(Problem(y, kGroups, 2), nullptr); });

  // The automatic run's model as the user's, its structure held fixed.
  ModelingProblem user = Problem(y, kGroups, 99);
  ModelBlock block;
  block.name = "TOTALPOOL";
  block.has_constant = automatic.has_constant;
  for (int i = 0; i < automatic.d; ++i) block.differencing.push_back(1);
  for (int i = 0; i < automatic.D; ++i) block.differencing.push_back(automatic.period);
  Polynomial ar, sar, ma, sma;
  for (const auto& c : automatic.coefficients) {
    Polynomial* poly = c.kind == "ar" ? &ar : c.kind == "sar" ? &sar : c.kind == "ma" ? &ma : c.kind == "sma" ? &sma : nullptr;
    if (!poly) continue;
    poly->powers.push_back(c.lag);
    poly->coefficients.push_back(c.value);
  }
  for (Polynomial* p : {&ar, &sar})
    if (!p->powers.empty()) block.first.push_back(*p);
  for (Polynomial* p : {&ma, &sma})
    if (!p->powers.empty()) block.second.push_back(*p);
  user.start_model = {block};
  ModelResult held;
  const double t_user = MedianMs(runs, [&] { held = FitPooled(user, nullptr); });

  double sse_alone = 0.0;
  const double t_alone = MedianMs(runs, [&] {
    sse_alone = 0.0;
    for (int g = 0; g < kGroups; ++g) {
      const ModelResult r =
          FitModel(Problem(std::vector<double>(y.begin() + g * kSize, y.begin() + (g + 1) * kSize), 1, 0), nullptr);
      sse_alone += r.sse;
    }
  });

  std::printf("Pooled cross-section, %d groups x %d monthly observations, median of %d runs\n", kGroups, kSize, runs);
  std::printf("  automatic modelling     %8.1f ms  %s, SSE %.2f, %d parameters\n", t_auto, automatic.description.c_str(),
              automatic.sse, automatic.parameters);
  std::printf("  preset AR(1) + constant %8.1f ms  SSE %.2f\n", t_preset, preset.sse);
  std::printf("  user's model, held      %8.1f ms  %s (code %d)\n", t_user, held.description.c_str(), held.error_code);
  std::printf("  the %d groups alone      %8.1f ms  SSE summed %.2f\n", kGroups, t_alone, sse_alone);
  return 0;
}
