#include "engine/model/limits.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "engine/model/arma.h"
#include "engine/model/equation_text.h"
#include "engine/model/series_stats.h"

namespace quorvane {

namespace {

// Origins of the check, each a horizon before the next.
constexpr int kHoldoutOrigins = 6;
// The factor on the half-widths where the check finds nothing. The check re-estimates the
// model chosen with the held-back periods in view, so it cannot show the error of the choice
// itself: on the accuracy benchmark's simulated series (of the kinds of model the search chooses among),
// limits widened by the check alone covered 70 % at 80 % and 91 % at 95 % over rolling
// origins, as if their standard errors were some 15 % too small. The factor was set on those
// and the real monthly series together, and holds on the other real series. The choice's
// error is one of its own beside the errors the check sees: their variances add.
constexpr double kChoiceAllowance = 1.15;

// Draws of the forecast errors for the innovations' tails: the 97.5 % point of the errors
// rests on some 50 of them. Fewer innovations than kMinTailInnovations cannot show the tails.
constexpr int kTailPaths = 2000;
constexpr int kMinTailInnovations = 40;
// The p-value under which the innovations are taken for not normal.
constexpr double kNormalityP = 0.01;

// The least factor on the half-widths (from 1 to 2) under which the held-back errors are
// covered as often as the limits promise. Their share inside is blended with the model's own
// (its errors normal: the share of |N| within the factor times the normal quantile), the
// model counting as `prior` errors: a few errors move the factor little. The factor is
// judged at the coverage asked, not by the errors' variance: a single large surprise widens
// 95 % limits more than 80 % ones, as it should.
double CoverageFactor(const std::vector<double>& reach, double coverage, double prior) {
  if (reach.empty()) return 1.0;
  const double target = std::clamp(coverage, 1.0, 99.99) / 100.0;
  const double zq = CentralNormalQuantile(coverage);
  auto inside = [&](double f) {
    double k = 0.0;
    for (double r : reach) k += r <= f;
    const double model = 1.0 - std::erfc(f * zq / std::sqrt(2.0));
    return (k + prior * model) / (static_cast<double>(reach.size()) + prior);
  };
  double lo = 1.0, hi = 2.0;
  if (inside(lo) >= target) return lo;
  if (inside(hi) < target) return hi;
  for (int it = 0; it < 40; ++it) {
    const double mid = 0.5 * (lo + hi);
    (inside(mid) >= target ? hi : lo) = mid;
  }
  return hi;
}

}  // namespace

std::vector<double> InnovationsWithPulses(const std::vector<double>& u, const ArimaFit& fit,
                                          const std::vector<int>& pulse_at, const std::vector<double>& pulse_size) {
  std::vector<double> e(u.size());
  const std::vector<double> pred = OneStepPredictions(u, fit);
  for (size_t t = 0; t < u.size(); ++t) e[t] = u[t] - pred[t];
  for (size_t k = 0; k < pulse_at.size() && k < pulse_size.size(); ++k)
    if (pulse_at[k] >= 0 && pulse_at[k] < static_cast<int>(e.size())) e[pulse_at[k]] += pulse_size[k];
  // The periods that start the differencing have no one-step error.
  e.erase(std::remove_if(e.begin(), e.end(), [](double v) { return !std::isfinite(v); }), e.end());
  return e;
}

std::vector<double> TailRatios(const std::vector<double>& innovations, const ArimaFit& fit, int horizon,
                               double coverage) {
  const int m = static_cast<int>(innovations.size());
  if (horizon < 1 || m < kMinTailInnovations || JarqueBera(innovations).p_value >= kNormalityP) return {};
  const double mean = Mean(innovations);
  const double sd = std::sqrt(Variance(innovations));
  if (!(sd > 0.0) || !std::isfinite(sd)) return {};
  std::vector<double> phi, theta;
  ExpandArma(fit.coef, phi, theta);
  const std::vector<double> psi = PsiWeights(
      MultiplyRegression(phi, DifferencingPolynomial(fit.orders.d, fit.orders.D, fit.orders.period)), theta, horizon);
  // The same series gives the same limits: the draws start from a fixed seed.
  std::mt19937_64 gen(20261124);
  // The error at horizon h is a sum of psi(j) a(j), j = 0..h, over independent draws a(j),
  // in whatever order they are drawn: each horizon's sum goes on from the one before, so
  // that the factors move smoothly from one horizon to the next.
  std::vector<std::vector<double>> err(horizon, std::vector<double>(kTailPaths));
  for (int path = 0; path < kTailPaths; ++path) {
    double e = 0.0;
    for (int h = 0; h < horizon; ++h) {
      e += psi[h] * (innovations[gen() % static_cast<uint64_t>(m)] - mean) / sd;
      err[h][path] = std::fabs(e);
    }
  }
  const double zq = CentralNormalQuantile(coverage);
  const long at = std::clamp(static_cast<long>(std::ceil(coverage / 100.0 * kTailPaths)) - 1, 0L,
                             static_cast<long>(kTailPaths - 1));
  std::vector<double> out(horizon);
  double var = 0.0;
  for (int h = 0; h < horizon; ++h) {
    var += psi[h] * psi[h];
    std::nth_element(err[h].begin(), err[h].begin() + at, err[h].end());
    out[h] = var > 0.0 && zq > 0.0 ? err[h][at] / (zq * std::sqrt(var)) : 1.0;
  }
  return out;
}

HoldoutCheck CheckLimitsOnHoldout(const std::vector<double>& z, const KnownEffects& known, const ArimaFit& fit,
                                  int horizon, double coverage, const LimitAllowances& allow) {
  HoldoutCheck out;
  const int n = static_cast<int>(z.size());
  const int H = std::min(horizon, std::max(1, n / 5));
  const int burn = fit.orders.d + fit.orders.D * fit.orders.period;
  ConvergenceCriteria quick;
  quick.polish = false;
  quick.max_iterations = 10;
  double ratio = 0.0;
  int count = 0;
  std::vector<double> reach;  // each error over the half-width of the limits it fell in
  for (int k = 0; k < kHoldoutOrigins; ++k) {
    const int o = n - H - k * H;
    if (o - burn < std::max(20, 3 * fit.orders.FreeCount() + 10)) continue;
    if (fit.orders.D > 0 && o < 3 * fit.orders.period) continue;
    std::vector<double> u = z;
    if (known) {
      const std::vector<double> effects = known(o);
      for (int t = 0; t < n && t < static_cast<int>(effects.size()); ++t) u[t] -= effects[t];
    }
    const std::vector<double> head(u.begin(), u.begin() + o);
    const ArimaFit re = FitArima(head, fit.orders, quick, false, &fit.coef);
    if (!re.ok) continue;
    // The variance the limits rest on (the whole fit's, or the last segment's after a change
    // of variance): the question is whether the limits as given hold.
    LimitAllowances a = allow;
    if (a.sigma2 < 0.0) a.sigma2 = fit.sigma2;
    a.coefficient_delta = false;
    const ArimaForecast fc = ForecastArima(head, re, std::min(H, n - o), coverage, a);
    for (int h = 0; h < static_cast<int>(fc.mean.size()) && o + h < n; ++h) {
      if (!(fc.se[h] > 0.0)) continue;
      const double e = u[o + h] - fc.mean[h];
      ratio += e * e / (fc.se[h] * fc.se[h]);
      ++count;
      const double half = fc.upper[h] - fc.mean[h];
      if (half > 0.0) reach.push_back(std::fabs(e) / half);
    }
  }
  out.factor = kChoiceAllowance;
  if (count == 0) {
    out.note = "The series is too short to check the limits on its last periods; they are widened by a factor " +
               Format("%.3f", out.factor) + " (the allowance for the choice of the model).";
    return out;
  }
  const double found = CoverageFactor(reach, coverage, 0.5 * H);
  out.factor = std::sqrt(found * found + kChoiceAllowance * kChoiceAllowance - 1.0);
  out.note = "Forecasts from " + std::to_string(count) + " held-back period(s) erred " +
             Format("%.2f", std::sqrt(ratio / count)) + " times the standard error of the limits; the limits are " +
             "widened by a factor " + Format("%.3f", out.factor) +
             (found > 1.0 ? " (with the allowance for the choice of the model)."
                          : " (the allowance for the choice of the model).");
  return out;
}

}  // namespace quorvane
