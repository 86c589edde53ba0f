#include "engine/model/estimate.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

#include "engine/model/estimate_parts.h"
#include "engine/model/series_stats.h"

namespace quorvane {

int ArimaOrders::FreeCount() const {
  auto count = [](int n, const std::vector<bool>& zero) {
    int c = 0;
    for (int i = 0; i < n; ++i)
      if (i >= static_cast<int>(zero.size()) || !zero[i]) ++c;
    return c;
  };
  return count(p, ar_zero) + count(q, ma_zero) + count(P, sar_zero) + count(Q, sma_zero);
}

std::string ArimaOrders::Name() const {
  std::string s = "ARIMA(" + std::to_string(p) + "," + std::to_string(d) + "," + std::to_string(q) + ")";
  if (period > 1 && (P || D || Q))
    s += "(" + std::to_string(P) + "," + std::to_string(D) + "," + std::to_string(Q) + ")" +
         std::to_string(period);
  if (constant) s += (d + D == 0) ? " with constant" : " with drift";
  return s;
}

std::vector<double> DifferencingPolynomial(int d, int D, int period) {
  std::vector<double> poly{1.0};  // 1 - sum delta B^k, lead 1
  auto multiply = [&](int lag) {
    std::vector<double> next(poly.size() + lag, 0.0);
    for (size_t i = 0; i < poly.size(); ++i) {
      next[i] += poly[i];
      next[i + lag] -= poly[i];
    }
    poly.swap(next);
  };
  for (int i = 0; i < d; ++i) multiply(1);
  for (int i = 0; i < D; ++i) multiply(std::max(1, period));
  std::vector<double> delta(poly.size() - 1);
  for (size_t k = 1; k < poly.size(); ++k) delta[k - 1] = -poly[k];
  return delta;
}

std::vector<double> DifferenceSeries(const std::vector<double>& y, const ArimaOrders& orders) {
  std::vector<double> w = Difference(y, std::max(1, orders.period), orders.D);
  return Difference(w, 1, orders.d);
}

std::vector<std::pair<int, int>> Slots(const ArimaOrders& s) {
  std::vector<std::pair<int, int>> slots;
  auto add = [&](int group, int n, const std::vector<bool>& zero) {
    for (int i = 0; i < n; ++i)
      if (i >= static_cast<int>(zero.size()) || !zero[i]) slots.push_back({group, i});
  };
  add(0, s.p, s.ar_zero);
  add(1, s.q, s.ma_zero);
  add(2, s.P, s.sar_zero);
  add(3, s.Q, s.sma_zero);
  return slots;
}

ArmaCoefficients ZeroCoefficients(const ArimaOrders& s) {
  ArmaCoefficients c;
  c.period = s.period;
  c.ar.assign(s.p, 0.0);
  c.ma.assign(s.q, 0.0);
  c.sar.assign(s.P, 0.0);
  c.sma.assign(s.Q, 0.0);
  return c;
}

namespace {

// Unpack into c, its vectors' storage kept: the estimator unpacks at every trial point.
void UnpackInto(const ArimaOrders& s, const std::vector<std::pair<int, int>>& slots, const Eigen::VectorXd& x,
                ArmaCoefficients& c) {
  c.period = s.period;
  c.ar.assign(s.p, 0.0);
  c.ma.assign(s.q, 0.0);
  c.sar.assign(s.P, 0.0);
  c.sma.assign(s.Q, 0.0);
  for (size_t k = 0; k < slots.size(); ++k) {
    auto [g, i] = slots[k];
    std::vector<double>& v = g == 0 ? c.ar : g == 1 ? c.ma : g == 2 ? c.sar : c.sma;
    v[i] = x(static_cast<int>(k));
  }
}

}  // namespace

ArmaCoefficients Unpack(const ArimaOrders& s, const std::vector<std::pair<int, int>>& slots, const Eigen::VectorXd& x) {
  ArmaCoefficients c;
  UnpackInto(s, slots, x, c);
  return c;
}

Eigen::VectorXd Pack(const ArmaCoefficients& c, const std::vector<std::pair<int, int>>& slots) {
  Eigen::VectorXd x = Eigen::VectorXd::Zero(static_cast<int>(slots.size()));
  for (size_t k = 0; k < slots.size(); ++k) {
    auto [g, i] = slots[k];
    const std::vector<double>& v = g == 0 ? c.ar : g == 1 ? c.ma : g == 2 ? c.sar : c.sma;
    x(static_cast<int>(k)) = i < static_cast<int>(v.size()) ? v[i] : 0.0;
  }
  return x;
}

bool Admissible(const ArmaCoefficients& c, double margin) {
  return IsStationary(c.ar, margin) && IsStationary(c.sar, margin) && IsInvertible(c.ma, margin) &&
         IsInvertible(c.sma, margin);
}

LmOutcome Marquardt(const ResidualFn& f, Eigen::VectorXd& x, int max_iterations, double sse_tol, double par_tol,
                    bool with_jtj) {
  LmOutcome out;
  const int k = static_cast<int>(x.size());
  Eigen::VectorXd r;
  if (!f(x, r)) return out;
  double sse = r.squaredNorm();
  if (k == 0) {
    out.converged = true;
    return out;
  }
  const int m = static_cast<int>(r.size());
  Eigen::MatrixXd J(m, k);
  Eigen::VectorXd rp, xt;
  double mu = 1e-3;
  auto jacobian = [&]() {
    for (int j = 0; j < k; ++j) {
      const double h = 1e-6 * std::max(1.0, std::fabs(x(j)));
      xt = x;
      xt(j) += h;
      if (!f(xt, rp) || rp.size() != m) {
        xt(j) = x(j) - h;
        if (!f(xt, rp) || rp.size() != m) return false;
        J.col(j) = (r - rp) / h;
      } else {
        J.col(j) = (rp - r) / h;
      }
    }
    return true;
  };
  for (int it = 0; it < max_iterations; ++it) {
    if (!jacobian()) break;
    out.iterations = it + 1;
    const Eigen::MatrixXd A = J.transpose() * J;
    const Eigen::VectorXd g = J.transpose() * r;
    bool improved = false;
    for (int tries = 0; tries < 12; ++tries) {
      Eigen::MatrixXd Ad = A;
      for (int j = 0; j < k; ++j) Ad(j, j) += mu * std::max(A(j, j), 1e-12);
      const Eigen::VectorXd step = Ad.ldlt().solve(-g);
      if (!step.allFinite()) {
        mu *= 10.0;
        continue;
      }
      xt = x + step;
      if (f(xt, rp) && rp.squaredNorm() <= sse) {
        const double new_sse = rp.squaredNorm();
        const double sse_change = sse > 0.0 ? (sse - new_sse) / sse * 100.0 : 0.0;
        double par_change = 0.0;
        for (int j = 0; j < k; ++j)
          par_change = std::max(par_change, std::fabs(step(j)) / std::max(std::fabs(x(j)), 0.1) * 100.0);
        x = xt;
        r = rp;
        sse = new_sse;
        mu = std::max(mu / 10.0, 1e-12);
        improved = true;
        if (sse_change < sse_tol && par_change < par_tol) out.converged = true;
        break;
      }
      mu *= 10.0;
    }
    if (!improved) {
      out.converged = true;  // no step lowers the sum of squares: a minimum at this precision
      break;
    }
    if (out.converged) break;
  }
  if (with_jtj && jacobian()) out.jtj = J.transpose() * J;
  return out;
}

bool HessianStdErrors(const LogLikelihoodFn& ll, const Eigen::VectorXd& x, double f0, Eigen::VectorXd& se,
                      Eigen::MatrixXd* covariance) {
  const int k = static_cast<int>(x.size());
  Eigen::MatrixXd H(k, k);
  Eigen::VectorXd h(k);
  for (int i = 0; i < k; ++i) h(i) = 1e-4 * std::max(1.0, std::fabs(x(i)));
  bool okh = true;
  for (int i = 0; i < k && okh; ++i) {
    for (int j = i; j < k && okh; ++j) {
      double fpp, fpm, fmp, fmm;
      Eigen::VectorXd xs = x;
      if (i == j) {
        xs(i) = x(i) + h(i);
        okh = ll(xs, fpp);
        xs(i) = x(i) - h(i);
        okh = okh && ll(xs, fmm);
        if (okh) H(i, i) = (fpp - 2.0 * f0 + fmm) / (h(i) * h(i));
      } else {
        xs(i) = x(i) + h(i); xs(j) = x(j) + h(j); okh = ll(xs, fpp);
        xs(i) = x(i) + h(i); xs(j) = x(j) - h(j); okh = okh && ll(xs, fpm);
        xs(i) = x(i) - h(i); xs(j) = x(j) + h(j); okh = okh && ll(xs, fmp);
        xs(i) = x(i) - h(i); xs(j) = x(j) - h(j); okh = okh && ll(xs, fmm);
        if (okh) H(i, j) = H(j, i) = (fpp - fpm - fmp + fmm) / (4.0 * h(i) * h(j));
      }
    }
  }
  if (!okh) return false;
  Eigen::LLT<Eigen::MatrixXd> llt(-H);
  if (llt.info() != Eigen::Success) return false;
  const Eigen::MatrixXd cov = llt.solve(Eigen::MatrixXd::Identity(k, k));
  for (int i = 0; i < k; ++i) se(i) = std::sqrt(std::max(cov(i, i), 0.0));
  if (covariance) *covariance = cov;
  return se.allFinite();
}

std::vector<double> LaidOutStdErrors(const ArimaOrders& orders, const std::vector<std::pair<int, int>>& slots,
                                     const Eigen::VectorXd& se, double mean_variance) {
  std::vector<double> all;
  size_t slot = 0;
  auto push = [&](int group, int count) {
    for (int i = 0; i < count; ++i) {
      if (slot < slots.size() && slots[slot] == std::make_pair(group, i)) {
        all.push_back(se(static_cast<int>(slot)));
        ++slot;
      } else {
        all.push_back(0.0);
      }
    }
  };
  push(0, orders.p);
  push(1, orders.q);
  push(2, orders.P);
  push(3, orders.Q);
  if (orders.constant) all.push_back(std::sqrt(std::max(mean_variance, 0.0)));
  return all;
}

void SetInformationCriteria(ArimaFit& fit, int kk) {
  const int n = fit.n;
  fit.aic = -2.0 * fit.loglik + 2.0 * kk;
  fit.aicc = (n - kk - 1 > 0) ? fit.aic + 2.0 * kk * (kk + 1.0) / (n - kk - 1.0)
                              : std::numeric_limits<double>::infinity();
  fit.bic = -2.0 * fit.loglik + std::log(static_cast<double>(n)) * kk;
}

namespace {
// A small margin keeps the filter away from the unit circle, where it degenerates.
constexpr double kMargin = 1e-6;
}  // namespace

ArimaFit FitArima(const std::vector<double>& z, const ArimaOrders& orders, const ConvergenceCriteria& crit,
                  bool with_errors, const ArmaCoefficients* start) {
  ArimaFit fit;
  fit.orders = orders;
  const std::vector<double> w = DifferenceSeries(z, orders);
  const auto slots = Slots(orders);
  const int k = static_cast<int>(slots.size());
  const int n = static_cast<int>(w.size());
  const int nparams = k + (orders.constant ? 1 : 0);
  if (n < nparams + 2 || n < 2) return fit;
  for (double v : w)
    if (!std::isfinite(v)) return fit;

  const double wmean = orders.constant ? Mean(w) : 0.0;
  // Conditional least squares first: cheap, and close to the exact optimum.
  Eigen::VectorXd x = Eigen::VectorXd::Zero(k);
  std::vector<double> phi, theta;
  const int pfull = orders.p + orders.period * orders.P;
  bool started = false;
  if (start && k > 0) {
    x = Pack(*start, slots);
    started = Admissible(Unpack(orders, slots, x), kMargin);
    if (!started) x.setZero();
  }
  if (!started && k > 0 && n > pfull + k + 2) {
    ArmaCoefficients c;
    ResidualFn css = [&](const Eigen::VectorXd& xv, Eigen::VectorXd& r) {
      UnpackInto(orders, slots, xv, c);
      if (!Admissible(c, kMargin)) return false;
      ExpandArma(c, phi, theta);
      if (n <= static_cast<int>(phi.size())) return false;
      r.resize(n - static_cast<int>(phi.size()));
      CssResidualsInto(w, wmean, phi, theta, r.data());
      return r.allFinite();
    };
    ConvergenceCriteria cc = crit;
    cc.max_iterations = std::max(crit.max_iterations, 10);
    Eigen::VectorXd start = x;
    Marquardt(css, x, cc.max_iterations, 0.01, 1.0, false);
    if (!x.allFinite()) x = start;
  }

  ArmaCoefficients trial;
  // The points evaluated (k values each) and their likelihoods' figures: the estimate is one
  // of them, and its likelihood is not worked out a second time.
  std::vector<double> points;
  std::vector<ArmaLikelihood> figures;
  ArmaLikelihood at;
  ResidualFn exact = [&](const Eigen::VectorXd& xv, Eigen::VectorXd& r) {
    UnpackInto(orders, slots, xv, trial);
    if (!Admissible(trial, kMargin)) return false;
    ExpandArma(trial, phi, theta);
    // What r holds after a failed point is never read.
    r.resize(n);
    if (!ArmaScaledResiduals(w, phi, theta, orders.constant, r.data(), &at) || !r.allFinite()) return false;
    points.insert(points.end(), xv.data(), xv.data() + k);
    figures.push_back(at);
    return true;
  };
  // The rules' limits are the loosest we accept; the search itself keeps its own precision.
  const double sse_tol = crit.polish ? std::min(crit.sse_change_pct, 1e-4) : crit.sse_change_pct;
  const double par_tol = crit.polish ? std::min(crit.parameter_change_pct, 1e-2) : crit.parameter_change_pct;
  LmOutcome lm;
  if (crit.max_iterations > 0) {
    lm = Marquardt(exact, x, crit.max_iterations, sse_tol, par_tol, with_errors);
  } else {
    lm.converged = true;
  }
  fit.iterations = lm.iterations;
  fit.converged = lm.converged;

  fit.coef = Unpack(orders, slots, x);
  ExpandArma(fit.coef, phi, theta);
  const ArmaLikelihood* seen = nullptr;
  for (size_t i = figures.size(); i-- > 0 && !seen;)
    if (k == 0 || std::memcmp(points.data() + i * k, x.data(), sizeof(double) * k) == 0) seen = &figures[i];
  const ArmaLikelihood L = seen ? *seen : ArmaExactLikelihood(w, phi, theta, orders.constant);
  if (!L.ok) return fit;
  fit.mean = L.mean;
  fit.loglik = L.loglik;
  fit.sigma2 = L.sigma2;
  fit.n = n;
  SetInformationCriteria(fit, nparams + 1);  // + sigma2
  fit.ok = std::isfinite(fit.loglik);

  if (with_errors && fit.ok) {
    Eigen::VectorXd se = Eigen::VectorXd::Zero(k);
    bool have = false;
    if (k > 0) {
      // Numerical Hessian of the log-likelihood by central differences.
      auto ll = [&](const Eigen::VectorXd& xv, double& out) {
        const ArmaCoefficients c = Unpack(orders, slots, xv);
        if (!IsStationary(c.ar) || !IsStationary(c.sar) || !IsInvertible(c.ma) || !IsInvertible(c.sma))
          return false;
        std::vector<double> ph, th;
        ExpandArma(c, ph, th);
        const ArmaLikelihood l = ArmaExactLikelihood(w, ph, th, orders.constant);
        if (!l.ok) return false;
        out = l.loglik;
        return std::isfinite(out);
      };
      Eigen::MatrixXd cov;
      have = HessianStdErrors(ll, x, L.loglik, se, &cov);
      if (have) fit.covariance.assign(cov.data(), cov.data() + cov.size());
      if (!have && lm.jtj.rows() == k) {
        // Gauss-Newton approximation: cov = (S*/n) (J'J)^-1.
        Eigen::LDLT<Eigen::MatrixXd> ldlt(lm.jtj);
        const Eigen::MatrixXd cov =
            (L.scaled_ssq / n) * ldlt.solve(Eigen::MatrixXd::Identity(k, k));
        for (int i = 0; i < k; ++i) se(i) = std::sqrt(std::max(cov(i, i), 0.0));
      }
    } else {
      have = true;
    }
    fit.hessian_ok = have;
    fit.std_errors = LaidOutStdErrors(orders, slots, se, L.mean_variance);
  }
  return fit;
}

}  // namespace quorvane
