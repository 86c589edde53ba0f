// Pooled cross-sections, the groups and the estimation over them: how a stacked series
// divides into groups, the exact likelihood of segments that share one ARMA, and the
// regression with ARIMA errors fitted over the groups.
#include "engine/model/pooled.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <numeric>
#include <tuple>

#include <Eigen/Dense>
#include <boost/math/distributions/fisher_f.hpp>

#include "engine/model/arma.h"
#include "engine/model/equation_text.h"
#include "engine/model/estimate_parts.h"
#include "engine/model/forecast.h"
#include "engine/model/model_parts.h"
#include "engine/model/pooled_parts.h"
#include "engine/model/regression_noise.h"
#include "engine/model/search.h"
#include "engine/model/series_stats.h"
#include "engine/model/simulation.h"
#include "engine/model/structured.h"
#include "engine/model/texts.h"
#include "engine/model/transform.h"
#include "engine/model/unit_root.h"

namespace quorvane {

using pooled_parts::HasColumns;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::string JoinSizes(const std::vector<int>& sizes) {
  std::string text;
  for (size_t i = 0; i < sizes.size(); ++i)
    text += (i == 0 ? "" : (i + 1 == sizes.size() ? " and " : ", ")) + std::to_string(sizes[i]);
  return text;
}

}  // namespace

PoolLayout PoolLayoutFor(const EngineRules& rules, int observations) {
  PoolLayout out;
  const std::string alone = "; it was modelled as one series.";
  if (rules.group_sizes.size() > 1) {
    long total = 0;
    for (int s : rules.group_sizes) total += s;
    if (total != observations) {
      std::string sum;
      for (size_t i = 0; i < rules.group_sizes.size(); ++i)
        sum += (i ? " + " : "") + std::to_string(rules.group_sizes[i]);
      out.message = "The group sizes of the pooled cross-section (" + sum + " = " + std::to_string(total) +
                    ") do not add up to the " + std::to_string(observations) + " observations of the series" + alone;
      return out;
    }
    out.sizes = rules.group_sizes;
  } else if (rules.groups > 1) {
    if (observations % rules.groups != 0) {
      out.message = "The " + std::to_string(observations) +
                    " observations of the series cannot be divided evenly into " + std::to_string(rules.groups) +
                    " groups of a pooled cross-section" + alone;
      return out;
    }
    out.sizes.assign(rules.groups, observations / rules.groups);
  } else {
    return out;
  }
  const int smallest = *std::min_element(out.sizes.begin(), out.sizes.end());
  if (smallest < kMinPoolGroupSize) {
    out.error_code = kCodePoolGroups;
    out.message = "A group of the pooled cross-section holds " + std::to_string(smallest) +
                  " observation(s); each group needs at least " + std::to_string(kMinPoolGroupSize) + ".";
    out.sizes.clear();
  }
  return out;
}

std::string PoolDescription(const std::vector<int>& sizes) {
  const std::string count = std::to_string(sizes.size()) + " groups";
  if (sizes.empty()) return count;
  if (std::all_of(sizes.begin(), sizes.end(), [&](int s) { return s == sizes[0]; }))
    return count + " of " + std::to_string(sizes[0]) + " observations each";
  return count + " of sizes " + JoinSizes(sizes);
}

std::vector<std::vector<double>> SplitGroups(const std::vector<double>& y, const std::vector<int>& sizes) {
  std::vector<std::vector<double>> out;
  size_t at = 0;
  for (int s : sizes) {
    const size_t from = std::min(at, y.size());
    const size_t to = std::min(at + static_cast<size_t>(std::max(s, 0)), y.size());
    out.emplace_back(y.begin() + static_cast<long>(from), y.begin() + static_cast<long>(to));
    at += static_cast<size_t>(std::max(s, 0));
  }
  return out;
}

double PooledLikelihood::LogLikelihoodAt(double v) const {
  if (!(v > 0.0)) return -std::numeric_limits<double>::infinity();
  return -0.5 * n * (std::log(2.0 * M_PI) + std::log(v)) - 0.5 * ssq / v - 0.5 * sum_log_f;
}

namespace {

// A segment's one-step errors divided by their standard deviations (in units of the
// innovation standard deviation), from the core's exact filter: its scaled residuals
// carry a common factor g, the geometric mean of the sqrt(F(t)), which the unit vector's
// filter (never an exact fit) gives. `sum_log_f` receives the sum of log F(t).
struct SegmentFilter {
  bool ok = false;
  double g = 1.0;
  double sum_log_f = 0.0;
  Eigen::VectorXd ones;  // the whitened unit vector
};

SegmentFilter FilterOf(int n, const std::vector<double>& phi, const std::vector<double>& theta) {
  SegmentFilter f;
  if (n < 1) {
    f.ok = true;
    return f;
  }
  const ArmaLikelihood L = ArmaExactLikelihood(std::vector<double>(n, 1.0), phi, theta, false);
  if (!L.ok || !(L.sigma2 > 0.0)) return f;
  const double g2 = L.scaled_ssq / (L.sigma2 * n);
  if (!(g2 > 0.0) || !std::isfinite(g2)) return f;
  f.g = std::sqrt(g2);
  f.sum_log_f = n * std::log(g2);
  f.ones = Eigen::Map<const Eigen::VectorXd>(L.scaled.data(), n) / f.g;
  f.ok = f.ones.allFinite();
  return f;
}

bool Whiten(const std::vector<double>& v, const SegmentFilter& f, const std::vector<double>& phi,
            const std::vector<double>& theta, Eigen::VectorXd& out) {
  const int n = static_cast<int>(v.size());
  out = Eigen::VectorXd::Zero(n);
  if (n == 0) return true;
  double biggest = 0.0;
  for (double x : v) {
    if (!std::isfinite(x)) return false;
    biggest = std::max(biggest, std::fabs(x));
  }
  if (biggest == 0.0) return true;  // a column that is zero over the segment stays zero
  const ArmaLikelihood L = ArmaExactLikelihood(v, phi, theta, false);
  if (!L.ok) return false;
  out = Eigen::Map<const Eigen::VectorXd>(L.scaled.data(), n) / f.g;
  return out.allFinite();
}

}  // namespace

PooledLikelihood PooledArmaLikelihood(const std::vector<std::vector<double>>& w, const std::vector<double>& phi,
                                      const std::vector<double>& theta, bool with_mean) {
  PooledLikelihood out;
  double sxx = 0.0, sxw = 0.0, sww = 0.0, sum_log_f = 0.0;
  int n = 0;
  std::vector<Eigen::VectorXd> ws, xs;
  // The filter's variances depend on the segment's length only: groups of one size share them.
  std::map<int, SegmentFilter> filters;
  for (const auto& seg : w) {
    const int m = static_cast<int>(seg.size());
    auto known = filters.find(m);
    if (known == filters.end()) known = filters.emplace(m, FilterOf(m, phi, theta)).first;
    const SegmentFilter& f = known->second;
    if (!f.ok) return out;
    Eigen::VectorXd a;
    if (!Whiten(seg, f, phi, theta, a)) return out;
    if (m > 0) {
      sxx += f.ones.squaredNorm();
      sxw += f.ones.dot(a);
      sww += a.squaredNorm();
    }
    sum_log_f += f.sum_log_f;
    n += m;
    ws.push_back(std::move(a));
    xs.push_back(m > 0 ? f.ones : Eigen::VectorXd());
  }
  if (n < 1) return out;
  double beta = 0.0;
  if (with_mean) {
    if (!(sxx > 0.0)) return out;
    beta = sxw / sxx;
  }
  double ssq = 0.0;
  for (size_t g = 0; g < ws.size(); ++g)
    if (ws[g].size() > 0) ssq += (ws[g] - beta * xs[g]).squaredNorm();
  // An exact fit has no likelihood.
  if (!std::isfinite(ssq) || !(ssq > 1e-24 * sww)) return out;
  out.n = n;
  out.mean = beta;
  out.ssq = ssq;
  out.sum_log_f = sum_log_f;
  out.sigma2 = ssq / n;
  out.loglik = -0.5 * n * (std::log(2.0 * M_PI) + 1.0 + std::log(out.sigma2)) - 0.5 * sum_log_f;
  out.mean_variance = with_mean ? out.sigma2 / sxx : 0.0;
  const double G = std::exp(sum_log_f / (2.0 * n));
  out.scaled.reserve(n);
  for (size_t g = 0; g < ws.size(); ++g)
    for (int t = 0; t < ws[g].size(); ++t) out.scaled.push_back((ws[g](t) - beta * xs[g](t)) * G);
  out.ok = std::isfinite(out.loglik);
  return out;
}

namespace {

std::vector<std::vector<double>> Differenced(const std::vector<std::vector<double>>& z, const ArimaOrders& orders) {
  std::vector<std::vector<double>> w;
  w.reserve(z.size());
  for (const auto& seg : z) w.push_back(DifferenceSeries(seg, orders));
  return w;
}

// The pooled ARIMA alone, estimated by exact likelihood over the groups.
ArimaFit FitPooledArima(const std::vector<std::vector<double>>& z, const ArimaOrders& orders,
                        const ConvergenceCriteria& crit, bool with_errors, const ArmaCoefficients* start) {
  ArimaFit fit;
  fit.orders = orders;
  const std::vector<std::vector<double>> w = Differenced(z, orders);
  const auto slots = Slots(orders);
  const int k = static_cast<int>(slots.size());
  int n = 0;
  for (const auto& seg : w) {
    n += static_cast<int>(seg.size());
    for (double v : seg)
      if (!std::isfinite(v)) return fit;
  }
  const int nparams = k + (orders.constant ? 1 : 0);
  if (n < nparams + 2 || n < 2) return fit;

  std::vector<double> phi, theta;
  auto evaluate = [&](const Eigen::VectorXd& x, double margin, PooledLikelihood& L) {
    const ArmaCoefficients c = Unpack(orders, slots, x);
    if (!Admissible(c, margin)) return false;
    ExpandArma(c, phi, theta);
    L = PooledArmaLikelihood(w, phi, theta, orders.constant);
    return L.ok;
  };

  // Start: the given values, else the longest group's own estimates, else zero.
  Eigen::VectorXd x = Eigen::VectorXd::Zero(k);
  bool started = false;
  if (start && k > 0) {
    x = Pack(*start, slots);
    started = Admissible(Unpack(orders, slots, x), 1e-6);
  }
  if (!started && k > 0) {
    size_t longest = 0;
    for (size_t g = 1; g < z.size(); ++g)
      if (z[g].size() > z[longest].size()) longest = g;
    ConvergenceCriteria quick = crit;
    quick.polish = false;
    const ArimaFit own = FitArima(z[longest], orders, quick, false);
    Eigen::VectorXd guess = own.ok ? Pack(own.coef, slots) : Eigen::VectorXd::Zero(k);
    PooledLikelihood at_guess, at_zero;
    const bool guess_ok = own.ok && evaluate(guess, 1e-6, at_guess);
    const bool zero_ok = evaluate(Eigen::VectorXd::Zero(k), 1e-6, at_zero);
    x = guess_ok && (!zero_ok || at_guess.loglik > at_zero.loglik) ? guess : Eigen::VectorXd::Zero(k);
  }

  ResidualFn exact = [&](const Eigen::VectorXd& xv, Eigen::VectorXd& r) {
    PooledLikelihood L;
    if (!evaluate(xv, 1e-6, L)) return false;
    r = Eigen::Map<const Eigen::VectorXd>(L.scaled.data(), static_cast<int>(L.scaled.size()));
    return r.allFinite();
  };
  const double sse_tol = crit.polish ? std::min(crit.sse_change_pct, 1e-4) : crit.sse_change_pct;
  const double par_tol = crit.polish ? std::min(crit.parameter_change_pct, 1e-2) : crit.parameter_change_pct;
  LmOutcome lm;
  if (crit.max_iterations > 0) lm = Marquardt(exact, x, crit.max_iterations, sse_tol, par_tol);
  else lm.converged = true;
  fit.iterations = lm.iterations;
  fit.converged = lm.converged;
  fit.coef = Unpack(orders, slots, x);
  PooledLikelihood L;
  if (!evaluate(x, 0.0, L)) return fit;
  fit.mean = L.mean;
  fit.loglik = L.loglik;
  fit.sigma2 = L.sigma2;
  fit.n = n;
  SetInformationCriteria(fit, nparams + 1);
  fit.ok = std::isfinite(fit.loglik);

  if (with_errors && fit.ok) {
    Eigen::VectorXd se = Eigen::VectorXd::Zero(k);
    bool have = k == 0;
    if (k > 0) {
      // Numerical Hessian of the pooled log-likelihood by central differences.
      auto ll = [&](const Eigen::VectorXd& xv, double& value) {
        PooledLikelihood l;
        if (!evaluate(xv, 0.0, l)) return false;
        value = l.loglik;
        return std::isfinite(value);
      };
      have = HessianStdErrors(ll, x, L.loglik, se);
      if (!have && lm.jtj.rows() == k) {
        Eigen::LDLT<Eigen::MatrixXd> ldlt(lm.jtj);
        const double s2 = L.ssq * std::exp(L.sum_log_f / L.n) / L.n;
        const Eigen::MatrixXd cov = s2 * ldlt.solve(Eigen::MatrixXd::Identity(k, k));
        for (int i = 0; i < k; ++i) se(i) = std::sqrt(std::max(cov(i, i), 0.0));
      }
    }
    fit.hessian_ok = have;
    fit.std_errors = LaidOutStdErrors(orders, slots, se, L.mean_variance);
  }
  return fit;
}

// beta of w[g] = Xw[g] beta (+ mean) + ARMA noise over all groups, by least squares on the
// whitened segments stacked. The mean, when asked for, is estimated alongside but not
// returned: the noise model keeps its own constant.
GlsOutcome PooledGls(const std::vector<std::vector<double>>& w, const GroupColumns& Xw, const ArmaCoefficients& coef,
                     bool with_mean) {
  GlsOutcome out;
  std::vector<double> phi, theta;
  ExpandArma(coef, phi, theta);
  const int k = Xw.empty() ? 0 : static_cast<int>(Xw[0].size());
  const int cols = k + (with_mean ? 1 : 0);
  int m = 0;
  for (const auto& seg : w) m += static_cast<int>(seg.size());
  if (m <= cols || k == 0) return out;
  Eigen::VectorXd ws(m);
  Eigen::MatrixXd A(m, cols);
  int row = 0;
  std::map<int, SegmentFilter> filters;
  for (size_t g = 0; g < w.size(); ++g) {
    const int len = static_cast<int>(w[g].size());
    if (len == 0) continue;
    auto known = filters.find(len);
    if (known == filters.end()) known = filters.emplace(len, FilterOf(len, phi, theta)).first;
    const SegmentFilter& f = known->second;
    if (!f.ok) return out;
    Eigen::VectorXd v;
    if (!Whiten(w[g], f, phi, theta, v)) return out;
    ws.segment(row, len) = v;
    for (int j = 0; j < k; ++j) {
      if (g >= Xw.size() || j >= static_cast<int>(Xw[g].size()) || !Whiten(Xw[g][j], f, phi, theta, v) ||
          v.size() != len)
        return out;
      A.block(row, j, len, 1) = v;
    }
    if (with_mean) A.block(row, k, len, 1) = f.ones;
    row += len;
  }
  return WhitenedLeastSquares(A, ws, k);
}

std::vector<std::vector<double>> RemoveGroupRegressors(const std::vector<std::vector<double>>& z, const GroupColumns& X,
                                                       const std::vector<double>& beta) {
  std::vector<std::vector<double>> u;
  u.reserve(z.size());
  for (size_t g = 0; g < z.size(); ++g)
    u.push_back(g < X.size() ? RemoveRegressors(z[g], X[g], beta) : z[g]);
  return u;
}


}  // namespace

RegressionArimaFit FitPooledRegressionArima(const std::vector<std::vector<double>>& z, const GroupColumns& X,
                                            const ArimaOrders& orders, const ConvergenceCriteria& crit,
                                            bool with_errors, const ArmaCoefficients* start) {
  RegressionArimaFit out;
  if (!HasColumns(X)) {
    out.arima = FitPooledArima(z, orders, crit, with_errors, start);
    out.ok = out.arima.ok;
    return out;
  }
  const std::vector<std::vector<double>> w = Differenced(z, orders);
  GroupColumns Xw(X.size());
  for (size_t g = 0; g < X.size(); ++g)
    for (const auto& col : X[g]) Xw[g].push_back(DifferenceSeries(col, orders));
  return AlternateRegressionArima(
      orders, crit, with_errors, start,
      [&](const std::vector<double>& beta, const ConvergenceCriteria& c, bool errors, const ArmaCoefficients* from) {
        return FitPooledArima(RemoveGroupRegressors(z, X, beta), orders, c, errors, from);
      },
      [&](const ArmaCoefficients& coef) { return PooledGls(w, Xw, coef, orders.constant); });
}

std::vector<std::vector<double>> PooledInnovations(const std::vector<std::vector<double>>& z, const GroupColumns& X,
                                                   const RegressionArimaFit& fit) {
  std::vector<std::vector<double>> out;
  const auto u = HasColumns(X) ? RemoveGroupRegressors(z, X, fit.beta) : z;
  for (const auto& seg : u) {
    const std::vector<double> pred = OneStepPredictions(seg, fit.arima);
    std::vector<double> e(seg.size(), kNaN);
    for (size_t t = 0; t < seg.size(); ++t)
      if (std::isfinite(pred[t])) e[t] = seg[t] - pred[t];
    out.push_back(std::move(e));
  }
  return out;
}

}  // namespace quorvane
