#include "engine/model/unit_root.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <Eigen/Dense>

#include "engine/model/series_stats.h"

namespace quorvane {

namespace {
// The KPSS statistic's 10 %, 5 % and 1 % points (level stationarity).
constexpr double kKpss10 = 0.347;
constexpr double kKpss5 = 0.463;
constexpr double kKpss1 = 0.739;

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
  static const double crit[4] = {kKpss10, kKpss5, 0.574, kKpss1};
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

namespace {

// The Dickey-Fuller regression with k lagged changes over the changes from index `first`
// on (first >= k): each change on a constant, the level before it and the k changes
// before that. False when it cannot be made (ten degrees of freedom at least).
struct DfRegression {
  bool ok = false;
  int rows = 0;
  double t = 0.0, ssr = 0.0;
};

DfRegression Regress(const std::vector<double>& x, const std::vector<double>& dx, int k, int first) {
  DfRegression out;
  const int rows = static_cast<int>(dx.size()) - first, cols = 2 + k;
  if (rows < cols + 10) return out;
  Eigen::MatrixXd X(rows, cols);
  Eigen::VectorXd change(rows);
  for (int r = 0; r < rows; ++r) {
    const int t = r + first;
    change(r) = dx[t];
    X(r, 0) = 1.0;
    X(r, 1) = x[t];
    for (int i = 1; i <= k; ++i) X(r, 1 + i) = dx[t - i];
  }
  const Eigen::LDLT<Eigen::MatrixXd> ldlt(X.transpose() * X);
  if (ldlt.info() != Eigen::Success) return out;
  const Eigen::VectorXd b = ldlt.solve(X.transpose() * change);
  out.ssr = (change - X * b).squaredNorm();
  const double se = std::sqrt(out.ssr / (rows - cols) * ldlt.solve(Eigen::VectorXd::Unit(cols, 1))(1));
  if (!(se > 0.0) || !std::isfinite(b(1) / se)) return out;
  out.ok = true;
  out.rows = rows;
  out.t = b(1) / se;
  return out;
}

}  // namespace

AdfResult Adf(const std::vector<double>& x) {
  AdfResult out;
  const int n = static_cast<int>(x.size());
  if (n < 2) return out;
  const std::vector<double> dx = Difference(x, 1);
  // The number of lagged changes by the AIC over 0..max_k, every candidate fitted to the
  // same changes (those the longest regression can use).
  const int max_k = std::min(n / 2 - 2, static_cast<int>(std::ceil(12.0 * std::pow(n / 100.0, 0.25))));
  if (max_k < 0) return out;
  double best = std::numeric_limits<double>::infinity();
  int k = -1;
  for (int j = 0; j <= max_k; ++j) {
    const DfRegression r = Regress(x, dx, j, max_k);
    if (!r.ok) continue;
    const double aic = r.rows * std::log(r.ssr / r.rows) + 2.0 * (2 + j);
    if (aic < best) {
      best = aic;
      k = j;
    }
  }
  if (k < 0) return out;
  out.lags = k;
  const DfRegression r = Regress(x, dx, k, k);
  if (!r.ok) return out;
  out.computed = true;
  out.statistic = r.t;
  // MacKinnon's (2010) response surface for the 5 % point with a constant, in the number
  // of observations of the regression.
  const double inv = 1.0 / r.rows;
  out.critical_5 = -2.86154 + inv * (-2.8903 + inv * (-4.234 + inv * -40.040));
  return out;
}

int RegularDifferences(const std::vector<double>& x, int max_d, std::vector<DifferencingStep>* steps) {
  std::vector<double> cur = x;
  int d = 0;
  while (d < max_d) {
    if (IsConstant(cur) || cur.size() < 4) break;
    const KpssResult r = Kpss(cur);
    DifferencingStep step{r, {}};
    // Above the 5 % point the difference is taken. Between the 10 % and the 5 % points
    // the evidence against stationarity is weak, and KPSS with few lags has little power
    // against a unit root hidden in a persistent autoregression; the Dickey-Fuller test,
    // whose null is the unit root, then decides: unless it rejects the unit root at 5 %,
    // the two tests do not agree on stationarity and the difference is taken. Only for the
    // first difference: a second rests on KPSS alone, since a once-differenced series that
    // keeps a seasonal unit root (a season left to seasonal ARMA terms) holds the
    // Dickey-Fuller test at its null and would be differenced twice for nothing.
    // A second difference asks for the 1 % point: it turns the drift of a once-differenced
    // model into a slope that wanders, whose forecasts carry the latest slope on for good
    // and whose forecast variance grows with the cube of the horizon. A growth rate that
    // merely drifts slowly lies between the 5 % and 1 % points and is better left to one
    // difference with drift and autoregressive terms.
    bool unit = r.statistic > (d == 0 ? kKpss5 : kKpss1);
    if (d == 0 && r.statistic > kKpss10 && r.statistic <= kKpss5) {
      step.adf = Adf(cur);
      if (step.adf.computed) unit = !(step.adf.statistic < step.adf.critical_5);
    }
    if (steps) steps->push_back(step);
    if (!unit) break;
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
