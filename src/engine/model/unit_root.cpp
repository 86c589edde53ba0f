#include "engine/model/unit_root.h"

#include <algorithm>
#include <cmath>

#include "engine/model/series_stats.h"

namespace quorvane {

namespace {

bool IsConstant(const std::vector<double>& x) {
  if (x.empty()) return true;
  const double lo = *std::min_element(x.begin(), x.end());
  const double hi = *std::max_element(x.begin(), x.end());
  return !(hi - lo > 1e-12 * std::max(std::fabs(lo), std::fabs(hi)));
}

}  // namespace

KpssResult Kpss(const std::vector<double>& x) {
  KpssResult out;
  out.p_value = 0.10;
  const int n = static_cast<int>(x.size());
  if (n < 4 || IsConstant(x)) return out;
  const double m = Mean(x);
  std::vector<double> e(n);
  for (int t = 0; t < n; ++t) e[t] = x[t] - m;
  double partial = 0.0, eta = 0.0;
  for (int t = 0; t < n; ++t) {
    partial += e[t];
    eta += partial * partial;
  }
  eta /= static_cast<double>(n) * n;
  int lags = static_cast<int>(std::floor(3.0 * std::sqrt(static_cast<double>(n)) / 13.0));
  lags = std::min(lags, n - 1);
  out.lags = lags;
  double s2 = 0.0;
  for (double v : e) s2 += v * v;
  for (int l = 1; l <= lags; ++l) {
    double c = 0.0;
    for (int t = l; t < n; ++t) c += e[t] * e[t - l];
    s2 += 2.0 * (1.0 - l / (lags + 1.0)) * c;
  }
  s2 /= n;
  if (!(s2 > 0.0)) return out;
  out.statistic = eta / s2;
  // Critical values of the level-stationarity test: 10 %, 5 %, 2.5 %, 1 %.
  static const double crit[4] = {0.347, 0.463, 0.574, 0.739};
  static const double prob[4] = {0.10, 0.05, 0.025, 0.01};
  const double s = out.statistic;
  if (s <= crit[0]) out.p_value = 0.10;
  else if (s >= crit[3]) out.p_value = 0.01;
  else {
    for (int i = 0; i < 3; ++i) {
      if (s <= crit[i + 1]) {
        const double f = (s - crit[i]) / (crit[i + 1] - crit[i]);
        out.p_value = prob[i] + f * (prob[i + 1] - prob[i]);
        break;
      }
    }
  }
  return out;
}

int RegularDifferences(const std::vector<double>& x, int max_d, std::vector<KpssResult>* steps) {
  std::vector<double> cur = x;
  int d = 0;
  while (d < max_d) {
    if (IsConstant(cur) || cur.size() < 4) break;
    const KpssResult r = Kpss(cur);
    if (steps) steps->push_back(r);
    if (!(r.statistic > 0.463)) break;
    cur = Difference(cur, 1);
    ++d;
  }
  return d;
}

double SeasonalStrength(const std::vector<double>& x, int period) {
  const int n = static_cast<int>(x.size());
  if (period < 2 || n < 2 * period + 2) return 0.0;
  // Centred moving average of order `period` (2 x period when even).
  std::vector<double> trend(n, std::nan(""));
  const int half = period / 2;
  for (int t = half; t + half < n; ++t) {
    double s = 0.0;
    if (period % 2 == 0) {
      s = 0.5 * x[t - half] + 0.5 * x[t + half];
      for (int j = -half + 1; j <= half - 1; ++j) s += x[t + j];
    } else {
      for (int j = -half; j <= half; ++j) s += x[t + j];
    }
    trend[t] = s / period;
  }
  // Each season's detrended values smoothed over the cycles by local linear regression
  // with tricube weights on the 11 nearest cycles, so that a seasonal pattern that grows
  // or drifts counts as seasonal, not as remainder.
  std::vector<double> detr(n, std::nan("")), seas(n, std::nan(""));
  for (int t = 0; t < n; ++t)
    if (!std::isnan(trend[t])) detr[t] = x[t] - trend[t];
  for (int j = 0; j < period; ++j) {
    std::vector<int> idx;
    for (int t = j; t < n; t += period)
      if (!std::isnan(detr[t])) idx.push_back(t);
    const int m = static_cast<int>(idx.size());
    if (m == 0) continue;
    const int q = std::min(m, 11);
    for (int k = 0; k < m; ++k) {
      int lo = std::max(0, k - q / 2);
      int hi = lo + q - 1;
      if (hi >= m) {
        hi = m - 1;
        lo = std::max(0, hi - q + 1);
      }
      const double reach = std::max(k - lo, hi - k) + 1.0;
      double sw = 0, sx = 0, sy = 0, sxx = 0, sxy = 0;
      for (int i = lo; i <= hi; ++i) {
        const double dist = std::fabs(static_cast<double>(i - k)) / reach;
        const double wgt = std::pow(1.0 - dist * dist * dist, 3.0);
        sw += wgt;
        sx += wgt * i;
        sy += wgt * detr[idx[i]];
        sxx += wgt * i * i;
        sxy += wgt * i * detr[idx[i]];
      }
      const double den = sw * sxx - sx * sx;
      double fitv = sy / sw;
      if (std::fabs(den) > 1e-12 * sw * sxx) {
        const double b = (sw * sxy - sx * sy) / den;
        fitv = (sy - b * sx) / sw + b * k;
      }
      seas[idx[k]] = fitv;
    }
  }
  std::vector<double> rem, seas_rem;
  for (int t = 0; t < n; ++t) {
    if (std::isnan(detr[t]) || std::isnan(seas[t])) continue;
    rem.push_back(detr[t] - seas[t]);
    seas_rem.push_back(detr[t]);
  }
  const double vsr = Variance(seas_rem);
  if (!(vsr > 0.0)) return 0.0;
  return std::max(0.0, 1.0 - Variance(rem) / vsr);
}

int SeasonalDifferences(const std::vector<double>& x, int period, double* strength) {
  const double f = SeasonalStrength(x, period);
  if (strength) *strength = f;
  return f > 0.64 ? 1 : 0;
}

}  // namespace quorvane
