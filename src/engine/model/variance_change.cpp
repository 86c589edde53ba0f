#include "engine/model/variance_change.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <Eigen/Dense>
#include <boost/math/distributions/chi_squared.hpp>

#include "engine/model/arma.h"
#include "engine/model/estimate_parts.h"

namespace quorvane {

namespace {

struct Split {
  int at = -1;      // index into the residuals
  double lr = 0.0;
};

// The best single split of e[lo, hi) by the likelihood ratio of two variances against one.
Split BestSplit(const std::vector<double>& e, int lo, int hi, int min_segment) {
  Split best;
  const int m = hi - lo;
  if (m < 2 * min_segment) return best;
  std::vector<double> cum(m + 1, 0.0);
  for (int i = 0; i < m; ++i) cum[i + 1] = cum[i] + e[lo + i] * e[lo + i];
  const double s = cum[m] / m;
  if (!(s > 0.0)) return best;
  for (int k = min_segment; k <= m - min_segment; ++k) {
    const double s1 = cum[k] / k, s2 = (cum[m] - cum[k]) / (m - k);
    if (!(s1 > 0.0) || !(s2 > 0.0)) continue;
    const double lr = m * std::log(s) - k * std::log(s1) - (m - k) * std::log(s2);
    if (lr > best.lr) {
      best.lr = lr;
      best.at = lo + k;
    }
  }
  return best;
}

}  // namespace

std::vector<VarianceChange> FindVarianceChanges(const std::vector<double>& residuals, int first,
                                                double confidence_pct, int min_segment, int max_changes) {
  std::vector<VarianceChange> out;
  const int m = static_cast<int>(residuals.size());
  min_segment = std::max(min_segment, 2);
  if (m < 2 * min_segment || max_changes < 1) return out;
  const double alpha = (100.0 - std::clamp(confidence_pct, 50.0, 99.99)) / 100.0;
  const int places = std::max(1, m - 2 * min_segment + 1);
  const boost::math::chi_squared chi1(1.0);
  const double critical = boost::math::quantile(boost::math::complement(chi1, alpha / places));

  // Binary segmentation: split where the evidence is strongest, then look inside each part.
  std::vector<int> cuts;
  std::vector<std::pair<int, int>> open{{0, m}};
  while (!open.empty() && static_cast<int>(cuts.size()) < max_changes) {
    int pick = -1;
    Split pick_split;
    for (size_t i = 0; i < open.size(); ++i) {
      const Split s = BestSplit(residuals, open[i].first, open[i].second, min_segment);
      if (s.at >= 0 && s.lr > critical && s.lr > pick_split.lr) {
        pick_split = s;
        pick = static_cast<int>(i);
      }
    }
    if (pick < 0) break;
    const auto [lo, hi] = open[pick];
    open.erase(open.begin() + pick);
    open.push_back({lo, pick_split.at});
    open.push_back({pick_split.at, hi});
    cuts.push_back(pick_split.at);
  }
  std::sort(cuts.begin(), cuts.end());
  for (size_t i = 0; i < cuts.size(); ++i) {
    const int lo = i == 0 ? 0 : cuts[i - 1];
    const int hi = i + 1 < cuts.size() ? cuts[i + 1] : m;
    double a = 0.0, b = 0.0;
    for (int t = lo; t < cuts[i]; ++t) a += residuals[t] * residuals[t];
    for (int t = cuts[i]; t < hi; ++t) b += residuals[t] * residuals[t];
    VarianceChange c;
    c.index = first + cuts[i];
    c.before = a / (cuts[i] - lo);
    c.after = b / (hi - cuts[i]);
    const Split s = BestSplit(residuals, lo, hi, std::min(min_segment, std::min(cuts[i] - lo, hi - cuts[i])));
    c.statistic = s.lr;
    out.push_back(c);
  }
  return out;
}

double LastSegmentVariance(const std::vector<double>& residuals, int first,
                           const std::vector<VarianceChange>& changes) {
  const int m = static_cast<int>(residuals.size());
  const int from = changes.empty() ? 0 : std::clamp(changes.back().index - first, 0, m);
  double s = 0.0;
  for (int t = from; t < m; ++t) s += residuals[t] * residuals[t];
  return m > from ? s / (m - from) : 0.0;
}

std::vector<double> SegmentScales(int n, const std::vector<VarianceChange>& changes) {
  std::vector<double> scales(std::max(n, 0), 1.0);
  if (changes.empty() || n <= 0) return scales;
  // Variance of each segment, from the first (before the first change) to the last.
  std::vector<double> var{changes.front().before};
  for (const VarianceChange& c : changes) var.push_back(c.after);
  const double last = var.back();
  if (!(last > 0.0)) return scales;
  size_t segment = 0;
  for (int t = 0; t < n; ++t) {
    while (segment < changes.size() && t >= changes[segment].index) ++segment;
    scales[t] = var[segment] > 0.0 ? std::sqrt(var[segment] / last) : 1.0;
  }
  return scales;
}

namespace {

// The free coefficients of a model (held-at-zero terms left out) and its constant.
struct FreeTerms {
  std::vector<std::pair<int, int>> slots;  // (group 0 ar, 1 ma, 2 sar, 3 sma; index)
  bool constant = false;

  explicit FreeTerms(const ArimaOrders& s) : slots(Slots(s)), constant(s.constant) {}
  int Size() const { return static_cast<int>(slots.size()) + (constant ? 1 : 0); }
  static std::vector<double>& Group(ArmaCoefficients& c, int g) {
    return g == 0 ? c.ar : g == 1 ? c.ma : g == 2 ? c.sar : c.sma;
  }
  Eigen::VectorXd Pack(const ArimaFit& f) const {
    Eigen::VectorXd x(Size());
    ArmaCoefficients c = f.coef;
    for (size_t k = 0; k < slots.size(); ++k) x(static_cast<int>(k)) = Group(c, slots[k].first)[slots[k].second];
    if (constant) x(Size() - 1) = f.mean;
    return x;
  }
  void Unpack(const Eigen::VectorXd& x, ArimaFit& f) const {
    for (size_t k = 0; k < slots.size(); ++k) Group(f.coef, slots[k].first)[slots[k].second] = x(static_cast<int>(k));
    if (constant) f.mean = x(Size() - 1);
  }
};

// The weighted one-step errors of w under the model in x: the filter's standardized errors
// (with the geometric mean of their variances folded in, as the exact likelihood has it)
// divided by the observation's relative standard deviation.
bool WeightedErrors(const std::vector<double>& w, const std::vector<double>& inv_scale, const FreeTerms& terms,
                    ArimaFit& model, const Eigen::VectorXd& x, Eigen::VectorXd& r, ArmaLikelihood* keep = nullptr) {
  terms.Unpack(x, model);
  const ArmaCoefficients& c = model.coef;
  if (!IsStationary(c.ar, 1e-6) || !IsStationary(c.sar, 1e-6) || !IsInvertible(c.ma, 1e-6) ||
      !IsInvertible(c.sma, 1e-6))
    return false;
  std::vector<double> phi, theta, centred = w;
  ExpandArma(c, phi, theta);
  if (terms.constant)
    for (double& v : centred) v -= model.mean;
  ArmaLikelihood L = ArmaExactLikelihood(centred, phi, theta, false);
  if (!L.ok) return false;
  r.resize(static_cast<int>(w.size()));
  for (size_t t = 0; t < w.size(); ++t) r(static_cast<int>(t)) = L.scaled[t] * inv_scale[t];
  if (keep) *keep = std::move(L);
  return r.allFinite();
}

}  // namespace

ArimaFit FitArimaWeighted(const std::vector<double>& z, const ArimaFit& fit, const std::vector<double>& scales,
                          const ConvergenceCriteria& crit) {
  ArimaFit failed;
  failed.orders = fit.orders;
  if (!fit.ok || scales.size() != z.size()) return failed;
  const std::vector<double> w = DifferenceSeries(z, fit.orders);
  const int n = static_cast<int>(w.size());
  const size_t burn = z.size() - w.size();
  std::vector<double> inv_scale(n);
  double sum_log_scale = 0.0;
  for (int t = 0; t < n; ++t) {
    const double s = scales[burn + t];
    if (!(s > 0.0) || !std::isfinite(s)) return failed;
    inv_scale[t] = 1.0 / s;
    sum_log_scale += std::log(s);
  }
  const FreeTerms terms(fit.orders);
  const int k = terms.Size();
  if (n < k + 2) return failed;
  ArimaFit model = fit;
  Eigen::VectorXd x = terms.Pack(fit), r, rt, xt;
  if (!WeightedErrors(w, inv_scale, terms, model, x, r)) return failed;
  double sse = r.squaredNorm();
  // Levenberg-Marquardt from the unweighted estimates, which are close.
  Eigen::MatrixXd J(n, k);
  double mu = 1e-3;
  const int iterations = std::max(crit.max_iterations, 1);
  for (int it = 0; it < iterations && k > 0; ++it) {
    for (int j = 0; j < k; ++j) {
      const double h = 1e-6 * std::max(1.0, std::fabs(x(j)));
      xt = x;
      xt(j) += h;
      if (!WeightedErrors(w, inv_scale, terms, model, xt, rt)) {
        xt(j) = x(j) - h;
        if (!WeightedErrors(w, inv_scale, terms, model, xt, rt)) return failed;
        J.col(j) = (r - rt) / h;
      } else {
        J.col(j) = (rt - r) / h;
      }
    }
    const Eigen::MatrixXd A = J.transpose() * J;
    const Eigen::VectorXd g = J.transpose() * r;
    bool improved = false;
    double change = 0.0;
    for (int tries = 0; tries < 12 && !improved; ++tries) {
      Eigen::MatrixXd Ad = A;
      for (int j = 0; j < k; ++j) Ad(j, j) += mu * std::max(A(j, j), 1e-12);
      const Eigen::VectorXd step = Ad.ldlt().solve(-g);
      xt = x + step;
      if (step.allFinite() && WeightedErrors(w, inv_scale, terms, model, xt, rt) && rt.squaredNorm() <= sse) {
        change = sse > 0.0 ? (sse - rt.squaredNorm()) / sse * 100.0 : 0.0;
        x = xt;
        r = rt;
        sse = r.squaredNorm();
        mu = std::max(mu / 10.0, 1e-12);
        improved = true;
      } else {
        mu *= 10.0;
      }
    }
    if (!improved || change < std::min(crit.sse_change_pct, 1e-4)) break;
  }
  ArmaLikelihood L;
  if (!WeightedErrors(w, inv_scale, terms, model, x, r, &L)) return failed;
  // The filter's standardized errors carry G, the geometric mean of the square roots of the
  // prediction-error variances F: recover G and the sum of log F from the unweighted figures.
  const double kLog2Pi = std::log(2.0 * M_PI);
  if (!(L.sigma2 > 0.0) || !(L.scaled_ssq > 0.0)) return failed;
  const double g2 = L.scaled_ssq / (n * L.sigma2);
  const double sum_log_f = -2.0 * L.loglik - n * (kLog2Pi + 1.0 + std::log(L.sigma2));
  model.sigma2 = r.squaredNorm() / g2 / n;  // the innovation variance where the scale is 1
  if (!(model.sigma2 > 0.0)) return failed;
  model.loglik = -0.5 * n * (kLog2Pi + 1.0 + std::log(model.sigma2)) - 0.5 * sum_log_f - sum_log_scale;
  const int kk = k + 1;
  model.aic = -2.0 * model.loglik + 2.0 * kk;
  model.aicc = n - kk - 1 > 0 ? model.aic + 2.0 * kk * (kk + 1.0) / (n - kk - 1.0)
                               : std::numeric_limits<double>::infinity();
  model.bic = -2.0 * model.loglik + std::log(static_cast<double>(n)) * kk;
  if (!fit.std_errors.empty() && k > 0) {
    // Gauss-Newton: the weighted errors have unit variance per g2 * sigma2.
    Eigen::LDLT<Eigen::MatrixXd> ldlt(J.transpose() * J);
    const Eigen::MatrixXd cov = (r.squaredNorm() / n) * ldlt.solve(Eigen::MatrixXd::Identity(k, k));
    std::vector<double> se = fit.std_errors;
    // std_errors hold every lag of ar, ma, sar, sma (zero where held), then the constant.
    auto offset = [&](int group) {
      return group == 0 ? 0 : group == 1 ? fit.orders.p : group == 2 ? fit.orders.p + fit.orders.q
                                                                      : fit.orders.p + fit.orders.q + fit.orders.P;
    };
    for (size_t j = 0; j < terms.slots.size(); ++j) {
      const size_t at = static_cast<size_t>(offset(terms.slots[j].first) + terms.slots[j].second);
      if (at < se.size()) se[at] = std::sqrt(std::max(cov(static_cast<int>(j), static_cast<int>(j)), 0.0));
    }
    if (terms.constant && !se.empty()) se.back() = std::sqrt(std::max(cov(k - 1, k - 1), 0.0));
    if (cov.allFinite()) model.std_errors = se;
  }
  return model;
}

}  // namespace quorvane
