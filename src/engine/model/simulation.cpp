#include "engine/model/simulation.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <random>

#include "engine/model/arma.h"
#include "engine/model/transform.h"

namespace quorvane {

namespace {

constexpr double kMissing = 99999999999.0;
constexpr int kMaxSeed = 9999;

SimulationModel FromArma(const ArmaCoefficients& c, int d, int D, int period, const std::vector<double>& center,
                         double lambda) {
  SimulationModel m;
  m.center = center;
  m.lambda = lambda;
  std::vector<double> phi;
  ExpandArma(c, phi, m.theta);
  m.phi = MultiplyRegression(phi, DifferencingPolynomial(d, D, std::max(1, period)));
  return m;
}

// Empirical quantile of sorted values, interpolated between order statistics.
double Quantile(const std::vector<double>& sorted, double prob) {
  if (sorted.empty()) return 0.0;
  const double pos = prob * static_cast<double>(sorted.size() - 1);
  const size_t i = static_cast<size_t>(std::floor(pos));
  if (i + 1 >= sorted.size()) return sorted.back();
  const double w = pos - static_cast<double>(i);
  return sorted[i] * (1.0 - w) + sorted[i + 1] * w;
}

std::string Num(double v, const char* fmt = "%.6g") {
  char buf[64];
  std::snprintf(buf, sizeof buf, fmt, v);
  return buf;
}

}  // namespace

SimulationModel SimulationModelOfFit(const ArimaFit& fit, const std::vector<double>& center, double lambda) {
  return FromArma(fit.coef, fit.orders.d, fit.orders.D, fit.orders.period, center, lambda);
}

bool SimulationModelOfResult(const ModelResult& r, SimulationModel& model, std::string& why_not) {
  bool smoothing = false;
  ArmaCoefficients c;
  const int period = std::max(1, r.period);
  c.period = period;
  auto put = [](std::vector<double>& v, int index, double value) {
    if (index < 0) return;
    if (static_cast<int>(v.size()) <= index) v.resize(index + 1, 0.0);
    v[index] = value;
  };
  for (const Coefficient& k : r.coefficients) {
    if (k.kind == "smoothing") smoothing = true;
    else if (k.kind == "ar") put(c.ar, k.lag - 1, k.value);
    else if (k.kind == "ma") put(c.ma, k.lag - 1, k.value);
    else if (k.kind == "sar") put(c.sar, k.lag / period - 1, k.value);
    else if (k.kind == "sma") put(c.sma, k.lag / period - 1, k.value);
  }
  if (smoothing && r.d == 0 && r.D == 0 && c.ma.empty() && c.ar.empty()) {
    why_not = "the model (" + r.description + ") has no ARIMA form to simulate";
    return false;
  }
  std::vector<double> center(r.forecasts.size());
  for (size_t h = 0; h < r.forecasts.size(); ++h) {
    center[h] = BoxCox(r.forecasts[h], r.lambda);
    if (!std::isfinite(center[h])) {
      why_not = "a forecast (" + Num(r.forecasts[h]) + ") lies outside the domain of the power transform";
      return false;
    }
  }
  model = FromArma(c, r.d, r.D, period, center, r.lambda);
  return true;
}

SimulationSummary Simulate(const SimulationModel& model, int paths, double variance, uint64_t seed,
                           double coverage_pct) {
  SimulationSummary s;
  const int H = static_cast<int>(model.center.size());
  s.paths = std::max(1, paths);
  s.seed = seed;
  s.noise_variance = variance;
  s.coverage = coverage_pct;
  std::mt19937_64 engine(seed);
  std::normal_distribution<double> draw(0.0, std::sqrt(std::max(0.0, variance)));
  const int p = static_cast<int>(model.phi.size());
  const int q = static_cast<int>(model.theta.size());
  // by_horizon[h][path]: the simulated value on the series' scale.
  std::vector<std::vector<double>> by_horizon(H, std::vector<double>(s.paths));
  std::vector<double> a(H), e(H);
  for (int path = 0; path < s.paths; ++path) {
    for (int h = 0; h < H; ++h) {
      a[h] = draw(engine);
      double v = a[h];
      for (int k = 1; k <= p && k <= h; ++k) v += model.phi[k - 1] * e[h - k];
      for (int k = 1; k <= q && k <= h; ++k) v += model.theta[k - 1] * a[h - k];
      e[h] = v;
      by_horizon[h][path] = InverseBoxCox(model.center[h] + v, model.lambda);
    }
    if (path == 0)
      for (int h = 0; h < H; ++h) s.sample_path.push_back(by_horizon[h][0]);
  }
  const double tail = (1.0 - coverage_pct / 100.0) / 2.0;
  for (int h = 0; h < H; ++h) {
    std::vector<double>& x = by_horizon[h];
    double sum = 0.0;
    for (double v : x) sum += v;
    const double mean = sum / s.paths;
    double ss = 0.0;
    for (double v : x) ss += (v - mean) * (v - mean);
    std::sort(x.begin(), x.end());
    s.mean.push_back(mean);
    s.sd.push_back(s.paths > 1 ? std::sqrt(ss / (s.paths - 1)) : 0.0);
    s.median.push_back(Quantile(x, 0.5));
    s.lower.push_back(Quantile(x, tail));
    s.upper.push_back(Quantile(x, 1.0 - tail));
  }
  s.done = true;
  return s;
}

double TransformedInnovationVariance(const ModelResult& r) {
  double ss = 0.0;
  int count = 0;
  for (size_t t = 0; t < r.fitted.size() && t < r.residuals.size(); ++t) {
    if (r.fitted[t] == kMissing || r.residuals[t] == kMissing || r.residuals[t] == 0.0) continue;
    const double e = BoxCox(r.fitted[t] + r.residuals[t], r.lambda) - BoxCox(r.fitted[t], r.lambda);
    if (!std::isfinite(e)) continue;
    ss += e * e;
    ++count;
  }
  const int df = count - r.parameters;
  return df > 0 ? ss / df : (count > 0 ? ss / count : 0.0);
}

void ApplySimulation(const ModelingProblem& problem, ModelResult& r) {
  const EngineRules& rules = problem.rules;
  if (!rules.simulation || r.cancelled || r.error_code != 0 || r.simulation.done) return;
  if (r.forecasts.empty()) {
    r.warnings.push_back("Simulation was asked for, but no forecast periods were computed: nothing was simulated.");
    return;
  }
  SimulationModel model;
  std::string why_not;
  if (!SimulationModelOfResult(r, model, why_not)) {
    r.warnings.push_back("No simulation: " + why_not + "; the forecasts and limits are the model's own.");
    return;
  }
  double variance = rules.noise_variance;
  bool estimated = false;
  if (!(variance > 0.0)) {
    variance = TransformedInnovationVariance(r);
    estimated = true;
  }
  uint64_t seed = rules.seed > 0 ? static_cast<uint64_t>(rules.seed) : 0;
  const bool from_clock = seed == 0;
  if (from_clock) {
    // A seed the rules could hold, so that a run can be repeated by entering it.
    const auto ticks = std::chrono::system_clock::now().time_since_epoch().count();
    seed = 1 + static_cast<uint64_t>(ticks < 0 ? -ticks : ticks) % kMaxSeed;
  }
  SimulationSummary s = Simulate(model, kSimulationPaths, variance, seed, rules.forecast_confidence);
  s.seed_from_clock = from_clock;
  s.variance_estimated = estimated;
  r.forecasts = s.median;
  r.lower = s.lower;
  r.upper = s.upper;
  r.notes.push_back(
      {"Simulation",
       std::to_string(s.paths) + " futures of the model simulated with innovations of variance " + Num(variance) +
           (estimated ? " (the model's estimate: the rules gave none)" : "") + " on the model's scale, seed " +
           std::to_string(seed) + (from_clock ? " (from the clock)" : "") +
           ". The forecasts are the simulated medians and the limits the simulated quantiles."});
  r.simulation = std::move(s);
}

}  // namespace quorvane
