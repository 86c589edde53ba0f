#include "engine/model/limits.h"

#include <algorithm>
#include <cmath>

#include "engine/model/equation_text.h"

namespace quorvane {

namespace {

// Origins of the check, each half a horizon before the next.
constexpr int kHoldoutOrigins = 6;

}  // namespace

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
  const int step = std::max(1, H / 2);
  for (int k = 0; k < kHoldoutOrigins; ++k) {
    const int o = n - H - k * step;
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
    }
  }
  if (count == 0) return out;
  out.factor = std::clamp(std::sqrt((0.5 * H + ratio) / (0.5 * H + count)), 1.0, 2.0);
  out.note = "Forecasts from " + std::to_string(count) + " held-back period(s) erred " +
             Format("%.2f", std::sqrt(ratio / count)) + " times the standard error of the limits; the limits are " +
             (out.factor > 1.0 ? "widened by a factor " + Format("%.3f", out.factor) + "." : std::string("kept."));
  return out;
}

}  // namespace quorvane
