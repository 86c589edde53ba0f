#include "engine/model/series_stats.h"

#include <algorithm>
#include <cmath>

#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/students_t.hpp>

namespace quorvane {

double Mean(const std::vector<double>& x) {
  if (x.empty()) return 0.0;
  double s = 0.0;
  for (double v : x) s += v;
  return s / static_cast<double>(x.size());
}

double Variance(const std::vector<double>& x) {
  if (x.size() < 2) return 0.0;
  const double m = Mean(x);
  double s = 0.0;
  for (double v : x) s += (v - m) * (v - m);
  return s / static_cast<double>(x.size());
}

std::vector<double> Autocorrelations(const std::vector<double>& x, int max_lag) {
  std::vector<double> r(std::max(max_lag, 0), 0.0);
  const int n = static_cast<int>(x.size());
  if (n < 2) return r;
  const double m = Mean(x);
  double c0 = 0.0;
  for (double v : x) c0 += (v - m) * (v - m);
  if (!(c0 > 0.0) || !std::isfinite(c0)) return r;
  for (int k = 1; k <= max_lag && k < n; ++k) {
    double c = 0.0;
    for (int t = k; t < n; ++t) c += (x[t] - m) * (x[t - k] - m);
    r[k - 1] = c / c0;
  }
  return r;
}

std::vector<double> RobustlyClipped(const std::vector<double>& x, double k) {
  if (x.size() < 3) return x;
  auto median = [](std::vector<double> v) {
    const size_t h = v.size() / 2;
    std::nth_element(v.begin(), v.begin() + h, v.end());
    const double upper = v[h];
    if (v.size() % 2) return upper;
    return 0.5 * (upper + *std::max_element(v.begin(), v.begin() + h));
  };
  const double med = median(x);
  std::vector<double> dev(x.size());
  for (size_t i = 0; i < x.size(); ++i) dev[i] = std::fabs(x[i] - med);
  const double sd = 1.4826 * median(dev);
  if (!(sd > 0.0)) return x;
  std::vector<double> out(x);
  for (double& v : out) v = std::clamp(v, med - k * sd, med + k * sd);
  return out;
}

std::vector<double> PartialAutocorrelations(const std::vector<double>& x, int max_lag) {
  const std::vector<double> r = Autocorrelations(x, max_lag);
  std::vector<double> pacf(r.size(), 0.0);
  std::vector<double> phi, prev;
  double v = 1.0;
  for (int k = 1; k <= static_cast<int>(r.size()); ++k) {
    double num = r[k - 1];
    for (int j = 1; j < k; ++j) num -= prev[j - 1] * r[k - j - 1];
    if (!(v > 1e-12)) break;
    const double a = num / v;
    phi.assign(k, 0.0);
    for (int j = 1; j < k; ++j) phi[j - 1] = prev[j - 1] - a * prev[k - j - 1];
    phi[k - 1] = a;
    pacf[k - 1] = a;
    v *= (1.0 - a * a);
    prev = phi;
  }
  return pacf;
}

std::vector<double> Difference(const std::vector<double>& x, int lag, int times) {
  if (lag < 1 || times < 1) return x;
  std::vector<double> cur = x;
  for (int i = 0; i < times; ++i) {
    if (static_cast<int>(cur.size()) <= lag) return {};
    std::vector<double> next(cur.size() - lag);
    for (size_t t = lag; t < cur.size(); ++t) next[t - lag] = cur[t] - cur[t - lag];
    cur.swap(next);
  }
  return cur;
}

double ChiSquareUpperTail(double statistic, int df) {
  if (df < 1 || !(statistic > 0.0)) return 1.0;
  if (!std::isfinite(statistic)) return 0.0;
  boost::math::chi_squared dist(df);
  return boost::math::cdf(boost::math::complement(dist, statistic));
}

double TwoSidedTPValue(double t, int df) {
  if (std::isnan(t)) return 1.0;
  if (!std::isfinite(t)) return 0.0;
  const double a = std::fabs(t);
  if (df < 1) {
    boost::math::normal dist;
    return 2.0 * boost::math::cdf(boost::math::complement(dist, a));
  }
  boost::math::students_t dist(df);
  return 2.0 * boost::math::cdf(boost::math::complement(dist, a));
}

double CentralNormalQuantile(double coverage_pct) {
  double c = coverage_pct;
  if (!(c >= 1.0)) c = 1.0;
  if (c > 99.9999) c = 99.9999;
  boost::math::normal dist;
  return boost::math::quantile(dist, 0.5 + c / 200.0);
}

TestResult LjungBox(const std::vector<double>& residuals, int lags, int fitted_parameters) {
  TestResult out;
  const int n = static_cast<int>(residuals.size());
  if (lags < 1 || n < lags + 2) return out;
  const std::vector<double> r = Autocorrelations(residuals, lags);
  double q = 0.0;
  for (int k = 1; k <= lags; ++k) q += r[k - 1] * r[k - 1] / static_cast<double>(n - k);
  q *= static_cast<double>(n) * (n + 2);
  out.statistic = q;
  out.df = std::max(1, lags - std::max(0, fitted_parameters));
  out.p_value = ChiSquareUpperTail(q, out.df);
  return out;
}

TestResult JarqueBera(const std::vector<double>& residuals) {
  TestResult out;
  out.df = 2;
  const int n = static_cast<int>(residuals.size());
  if (n < 3) return out;
  const double m = Mean(residuals);
  double m2 = 0.0, m3 = 0.0, m4 = 0.0;
  for (double v : residuals) {
    const double d = v - m;
    m2 += d * d;
    m3 += d * d * d;
    m4 += d * d * d * d;
  }
  m2 /= n;
  m3 /= n;
  m4 /= n;
  if (!(m2 > 0.0) || !std::isfinite(m4)) return out;
  const double skew = m3 / std::pow(m2, 1.5);
  const double kurt = m4 / (m2 * m2);
  out.statistic = n / 6.0 * (skew * skew + 0.25 * (kurt - 3.0) * (kurt - 3.0));
  out.p_value = ChiSquareUpperTail(out.statistic, 2);
  return out;
}

}  // namespace quorvane
