// Pooled cross-sections: one model for the stacked groups, with no lag crossing a group
// boundary, in the order the work is done: the groups, the likelihood over them, the
// estimation, and the modelling of a dataset.
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
#include "engine/model/regression_noise.h"
#include "engine/model/search.h"
#include "engine/model/series_stats.h"
#include "engine/model/simulation.h"
#include "engine/model/structured.h"
#include "engine/model/texts.h"
#include "engine/model/transform.h"
#include "engine/model/unit_root.h"

namespace quorvane {

namespace {

constexpr double kMissing = 99999999999.0;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int16_t kCodeEstimation = 3;
constexpr int16_t kCodeModelMalformed = 2190;
// Half the 95 % point of a chi-square with one degree of freedom: the gain in likelihood a
// power transform must show.
constexpr double kTransformGain = 1.92;
constexpr int kMinForTransform = 30;
constexpr const char* kHeadPool = "Pooled cross-section";
constexpr const char* kRedundancyText = " TESSALY HAS IDENTIFIED A LINEAR REDUNDANCY. DELETE REDUNDANT VARIABLES.";

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

bool HasColumns(const GroupColumns& X) { return !X.empty() && !X[0].empty(); }

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

// ---------------------------------------------------------------------------------------
// Modelling a pooled dataset.

namespace {

// One regression column, over each group's observations (the last group's followed by
// the forecast periods).
struct PooledColumn {
  std::string term;
  std::string kind;             // "input", "trend", "fourier", "seasonal"
  std::string input;
  int lag = 0;
  double denominator = 0.0;
  std::vector<std::vector<double>> values;  // per group; NaN before a lag reaches the data
};

struct PooledModel {
  std::string name;             // "" for automatic modelling, else the preset's or "USER MODEL"
  double lambda = 1.0;
  ArimaOrders noise;
  std::vector<PooledColumn> columns;
  int leading = 0;              // observations of each group before its lags reach the data
  bool has_start = false;
  ArmaCoefficients start;
};

// The data of the run, split into its groups.
struct PooledData {
  std::vector<int> sizes;                  // estimation sample of each group
  std::vector<int> offsets;                // first observation of each group in the stack
  std::vector<std::vector<double>> y;      // each group, missing values filled
  int horizon = 0;
};

// The transformed, scaled groups and columns the model is fitted on (each group from its
// `leading` observation on).
struct FitInput {
  std::vector<std::vector<double>> y;  // each group from `leading` on, on the scale of the data
  std::vector<std::vector<double>> z;
  GroupColumns X;
  double lambda = 1.0;
  double scale = 1.0;
  int leading = 0;
};

FitInput MakeFitInput(const PooledData& d, const PooledModel& m) {
  FitInput in;
  in.lambda = m.lambda;
  for (const auto& seg : d.y)
    if (!PowerApplies(seg, in.lambda)) in.lambda = 1.0;
  int smallest = std::numeric_limits<int>::max();
  for (int s : d.sizes) smallest = std::min(smallest, s);
  in.leading = std::clamp(m.leading, 0, std::max(0, smallest - 1));
  std::vector<std::vector<double>> zt;
  for (const auto& seg : d.y) {
    in.y.emplace_back(seg.begin() + in.leading, seg.end());
    zt.push_back(BoxCox(in.y.back(), in.lambda));
  }
  in.scale = ScaleOf(zt);
  for (auto& seg : zt)
    for (double& v : seg) v /= in.scale;
  in.z = std::move(zt);
  in.X.resize(d.y.size());
  for (size_t g = 0; g < d.y.size(); ++g) {
    const int len = static_cast<int>(in.z[g].size());
    for (const auto& c : m.columns) {
      std::vector<double> x(len, 0.0);
      for (int t = 0; t < len; ++t) {
        const size_t at = static_cast<size_t>(t + in.leading);
        x[t] = at < c.values[g].size() && std::isfinite(c.values[g][at]) ? c.values[g][at] : 0.0;
      }
      in.X[g].push_back(std::move(x));
    }
  }
  return in;
}

std::string Equation(const ModelingProblem& problem, const PooledModel& m, const RegressionArimaFit& fr,
                     double lambda, double scale) {
  const ArimaFit& f = fr.arima;
  const std::string name = problem.output_name.empty() ? "Y" : problem.output_name;
  std::string lhs = Factor(f.coef.ar, 1, -1.0) + Factor(f.coef.sar, f.orders.period, -1.0);
  for (int i = 0; i < f.orders.d; ++i) lhs += "(1 - B)";
  for (int i = 0; i < f.orders.D; ++i) lhs += "(1 - B**" + std::to_string(f.orders.period) + ")";
  std::string rhs = f.orders.constant ? Format("%.6g", f.mean * scale) + " + " : "";
  const std::string ma = Factor(f.coef.ma, 1, 1.0) + Factor(f.coef.sma, f.orders.period, 1.0);
  rhs += ma + (ma.empty() ? "" : " ") + "a(t)";
  if (m.columns.empty()) return lhs + (lhs.empty() ? "" : " ") + TransformName(lambda, name) + "(t) = " + rhs;
  std::string eq = TransformName(lambda, name) + "(t) =";
  for (size_t j = 0; j < m.columns.size(); ++j) {
    const double v = fr.beta[j] * scale;
    eq += (j == 0 ? " " + Format("%.6g", v) : (v < 0 ? " - " : " + ") + Format("%.6g", std::fabs(v))) + " " +
          m.columns[j].term;
    if (m.columns[j].denominator != 0.0) eq += " / (1 - " + Format("%.4f", m.columns[j].denominator) + "B)";
  }
  eq += " + N(t)";
  return eq + "\n" + lhs + (lhs.empty() ? "" : " ") + "N(t) = " + rhs;
}

// The residual autocorrelations and the Ljung-Box test within the groups (no product of
// residuals across a boundary), in place of those of the residuals one after another;
// the normality test stays as it is.
void PooledResidualChecks(ModelResult& r, const std::vector<std::vector<double>>& innov, double scale,
                          int arma_parameters, int used) {
  double sum = 0.0, ss = 0.0;
  int n = 0;
  for (const auto& seg : innov)
    for (double e : seg)
      if (std::isfinite(e)) {
        sum += e * scale;
        ++n;
      }
  if (n < 3) return;
  const double mean = sum / n;
  for (const auto& seg : innov)
    for (double e : seg)
      if (std::isfinite(e)) ss += (e * scale - mean) * (e * scale - mean);
  if (!(ss > 0.0)) return;
  auto acf = [&](int k) {
    double c = 0.0;
    for (const auto& seg : innov)
      for (size_t t = static_cast<size_t>(k); t < seg.size(); ++t)
        if (std::isfinite(seg[t]) && std::isfinite(seg[t - k])) c += (seg[t] * scale - mean) * (seg[t - k] * scale - mean);
    return c / ss;
  };
  const int acf_lags = static_cast<int>(r.residual_acf.size());
  for (int k = 1; k <= acf_lags; ++k) r.residual_acf[k - 1] = acf(k);
  const int lb_lags = r.ljung_box_lags;
  if (lb_lags < 1 || used < lb_lags + 2) return;
  double q = 0.0;
  for (int k = 1; k <= lb_lags; ++k) {
    const double a = acf(k);
    q += a * a / std::max(1, n - k);
  }
  q *= n * (n + 2.0);
  r.ljung_box_q = q;
  r.ljung_box_p = ChiSquareUpperTail(q, std::max(1, lb_lags - arma_parameters));
}

// Estimates the model on the groups and fills everything the reports need, the forecasts
// continuing the last group. error_code 3 when the model cannot be estimated.
ModelResult FitPooledModel(const ModelingProblem& problem, const PooledData& d, const PooledModel& m,
                           const ConvergenceCriteria& crit, int horizon, RegressionArimaFit* fit_out = nullptr) {
  ModelResult r;
  const FitInput in = MakeFitInput(d, m);
  if (in.lambda != m.lambda)
    r.warnings.push_back("The power transform " + Format("%.2f", m.lambda) +
                         " cannot be applied to values that are not positive; none was used.");
  const RegressionArimaFit fr =
      FitPooledRegressionArima(in.z, in.X, m.noise, crit, true, m.has_start ? &m.start : nullptr);
  if (!fr.ok) {
    r.error_code = kCodeEstimation;
    r.warnings.push_back("The pooled model " + (m.name.empty() ? std::string() : m.name + " ") + "(" +
                         m.noise.Name() + ") could not be estimated on these groups.");
    return r;
  }
  if (fit_out) *fit_out = fr;
  const ArimaFit& f = fr.arima;
  const double scale = in.scale;
  const double lambda = in.lambda;
  r.lambda = lambda;
  SetOrders(r, f.orders);
  r.parameters = f.orders.FreeCount() + (f.orders.constant ? 1 : 0) + static_cast<int>(m.columns.size());
  const int df = std::max(1, f.n - r.parameters);
  AddArmaCoefficients(f, scale, df, r.coefficients);
  for (size_t j = 0; j < m.columns.size(); ++j) {
    const PooledColumn& col = m.columns[j];
    const Coefficient c = ColumnCoefficient(col.term, col.kind, col.lag, fr, j, scale, df);
    r.coefficients.push_back(c);
    if (col.denominator != 0.0) r.coefficients.push_back(DenominatorCoefficient(col.input, col.denominator));
  }
  for (const auto& input : problem.inputs)
    for (const auto& col : m.columns)
      if (col.input == input.name) {
        r.inputs_kept.push_back(input.name);
        break;
      }
  r.description = (m.name.empty() ? std::string() : m.name + ": ") + f.orders.Name() + ", pooled over " +
                  std::to_string(d.sizes.size()) + " groups";
  r.equation = Equation(problem, m, fr, lambda, scale);

  // In-sample figures, group by group, in the places of the stacked series.
  const int n = static_cast<int>(problem.y.size());
  r.fitted.assign(n, kMissing);
  r.residuals.assign(n, kMissing);
  r.cleansed.assign(problem.y.begin(), problem.y.end());
  for (size_t g = 0; g < d.y.size(); ++g)
    for (size_t t = 0; t < d.y[g].size(); ++t) r.cleansed[d.offsets[g] + t] = d.y[g][t];
  const std::vector<std::vector<double>> innov = PooledInnovations(in.z, in.X, fr);
  InSampleTally tally;
  double jacobian = 0.0;
  const int burn = f.orders.d + f.orders.D * std::max(1, f.orders.period);
  for (size_t g = 0; g < in.z.size(); ++g) {
    if (lambda != 1.0) jacobian += BoxCoxLogJacobian(in.y[g], lambda, burn);
    for (size_t t = 0; t < in.z[g].size(); ++t) {
      if (!std::isfinite(innov[g][t])) continue;
      const double pred = in.z[g][t] - innov[g][t];
      const double fit = InverseBoxCox(pred * scale, lambda);
      const size_t at = static_cast<size_t>(d.offsets[g] + in.leading) + t;
      r.fitted[at] = fit;
      r.residuals[at] = tally.Add(in.y[g][t], fit, innov[g][t] * scale, in.z[g][t] * scale);
    }
  }
  tally.Finish(r, f.loglik - f.n * std::log(scale) + jacobian, f);
  PooledResidualChecks(r, innov, scale, f.orders.FreeCount(), tally.used);

  // Forecasts continue the last group: its noise from the common model, its columns'
  // future values.
  if (horizon > 0) {
    const size_t last = in.z.size() - 1;
    const std::vector<double> u =
        HasColumns(in.X) ? RemoveRegressors(in.z[last], in.X[last], fr.beta) : in.z[last];
    const ArimaForecast fc = ForecastArima(u, f, horizon, problem.rules.forecast_confidence);
    r.forecasts.resize(horizon);
    r.lower.resize(horizon);
    r.upper.resize(horizon);
    const size_t end = d.y[last].size();
    for (int h = 0; h < horizon; ++h) {
      double xb = 0.0;
      for (size_t j = 0; j < m.columns.size(); ++j) {
        xb += fr.beta[j] * FutureValue(m.columns[j].values[last], end + static_cast<size_t>(h));
      }
      SetForecast(r, h, fc, xb, scale, lambda);
    }
  }
  if (!f.converged && crit.max_iterations > 0) r.warnings.push_back(texts::kNotConverged);
  return r;
}

// Holds a term at zero (or drops a column, or the constant); false when there is no such term.
bool DropTerm(PooledModel& m, const Coefficient& c) {
  ArimaOrders& s = m.noise;
  auto hold = [](std::vector<bool>& zero, int& order, int index) {
    if (index < 0 || index >= order) return false;
    zero.resize(order, false);
    zero[index] = true;
    while (order > 0 && zero[order - 1]) {
      --order;
      zero.pop_back();
    }
    return true;
  };
  bool done = false;
  if (c.kind == "ar") done = hold(s.ar_zero, s.p, c.lag - 1);
  else if (c.kind == "ma") done = hold(s.ma_zero, s.q, c.lag - 1);
  else if (c.kind == "sar") done = hold(s.sar_zero, s.P, c.lag / std::max(1, s.period) - 1);
  else if (c.kind == "sma") done = hold(s.sma_zero, s.Q, c.lag / std::max(1, s.period) - 1);
  else if (c.kind == "constant") done = s.constant ? (s.constant = false, true) : false;
  else {
    auto it = std::find_if(m.columns.begin(), m.columns.end(), [&](const PooledColumn& col) { return col.term == c.term; });
    if (it != m.columns.end()) {
      m.columns.erase(it);
      done = true;
    }
  }
  m.start.ar.resize(s.p, 0.0);
  m.start.ma.resize(s.q, 0.0);
  m.start.sar.resize(s.P, 0.0);
  m.start.sma.resize(s.Q, 0.0);
  return done;
}

// Necessity: the least significant term dropped while one is above alpha.
std::string Necessity(const ModelingProblem& problem, const PooledData& d, PooledModel& m,
                      const ConvergenceCriteria& crit, double alpha, ModelResult& r) {
  std::string text;
  for (int round = 0; round < 30; ++round) {
    double worst_p = alpha;
    const int worst = LeastSignificant(r.coefficients, false, worst_p);
    if (worst < 0) break;
    PooledModel next = m;
    if (!DropTerm(next, r.coefficients[worst])) break;
    ModelResult nr = FitPooledModel(problem, d, next, crit, d.horizon);
    if (nr.error_code) break;
    text += r.coefficients[worst].term + " dropped (p-value " + Format("%.3f", worst_p) + "). ";
    m = next;
    r = nr;
  }
  return text;
}

// Sufficiency: while the pooled residuals fail the Ljung-Box test, one more AR or MA
// order, whichever lowers the AIC more, while one does.
std::string Sufficiency(const ModelingProblem& problem, const PooledData& d, PooledModel& m,
                        const ConvergenceCriteria& crit, double alpha, ModelResult& r) {
  std::string text;
  for (int round = 0; round < 2 && r.ljung_box_p < alpha; ++round) {
    ModelResult best;
    PooledModel best_model;
    bool found = false;
    for (int which = 0; which < 2; ++which) {
      PooledModel next = m;
      AddArmaOrder(next.noise, next.start, which == 0);
      ModelResult nr = FitPooledModel(problem, d, next, crit, d.horizon);
      if (nr.error_code == 0 && nr.aic < r.aic && (!found || nr.aic < best.aic)) {
        best = nr;
        best_model = next;
        found = true;
      }
    }
    if (!found) break;
    text += "Residuals autocorrelated (Ljung-Box p-value " + Format("%.4f", r.ljung_box_p) + "): extended to " +
            best_model.noise.Name() + ". ";
    m = best_model;
    r = best;
  }
  return text;
}

// The most common of the groups' choices (the larger on a tie).
int MostCommon(const std::vector<int>& v) {
  std::map<int, int> count;
  for (int x : v) ++count[x];
  int best = 0, best_count = -1;
  for (const auto& [value, c] : count)
    if (c >= best_count) {
      best = value;
      best_count = c;
    }
  return best;
}

// Whether the groups share a seasonal pattern: an F-test of period dummies on the first
// differences of all groups together, at 1 %. Short groups make the seasonal strength of
// one group an unreliable guide, the groups together do not.
bool PooledSeasonalityTest(const std::vector<std::vector<double>>& groups, int period, double& F, double& p_value) {
  F = 0.0;
  p_value = 1.0;
  if (period < 2) return false;
  std::vector<double> sum(period, 0.0);
  std::vector<int> count(period, 0);
  double total = 0.0;
  int n = 0;
  for (const auto& seg : groups)
    for (size_t t = 1; t < seg.size(); ++t) {
      const double v = seg[t] - seg[t - 1];
      sum[t % period] += v;
      ++count[t % period];
      total += v;
      ++n;
    }
  if (n <= 2 * period) return false;
  const double mean = total / n;
  double ssr0 = 0.0, ssr1 = 0.0;
  for (const auto& seg : groups)
    for (size_t t = 1; t < seg.size(); ++t) {
      const double v = seg[t] - seg[t - 1];
      const int k = static_cast<int>(t % period);
      ssr0 += (v - mean) * (v - mean);
      ssr1 += (v - sum[k] / count[k]) * (v - sum[k] / count[k]);
    }
  if (!(ssr1 > 0.0)) return ssr0 > 0.0;
  const double df1 = period - 1, df2 = n - period;
  F = ((ssr0 - ssr1) / df1) / (ssr1 / df2);
  p_value = F > 0.0 ? boost::math::cdf(boost::math::complement(boost::math::fisher_f(df1, df2), F)) : 1.0;
  return p_value < 0.01;
}

// The t statistic of rho in dw(t) = a + rho w(t-1) + sum c_k dw(t-k) + e(t), the
// coefficients common to the groups and each group's rows from its own values; `lags`
// receives the number of lagged differences (from the shortest group). NaN when the groups
// are too short or the regression is singular.
double PooledDickeyFuller(const std::vector<std::vector<double>>& groups, int& lags) {
  int shortest = std::numeric_limits<int>::max();
  for (const auto& seg : groups) shortest = std::min(shortest, static_cast<int>(seg.size()));
  lags = std::max(0, static_cast<int>(std::cbrt(std::max(0, shortest - 1))));
  lags = std::min(lags, std::max(0, shortest / 4 - 1));
  std::vector<std::vector<double>> rows;
  std::vector<double> target;
  for (const auto& seg : groups)
    for (int t = lags + 1; t < static_cast<int>(seg.size()); ++t) {
      std::vector<double> row{1.0, seg[t - 1]};
      for (int k = 1; k <= lags; ++k) row.push_back(seg[t - k] - seg[t - k - 1]);
      rows.push_back(std::move(row));
      target.push_back(seg[t] - seg[t - 1]);
    }
  const int m = static_cast<int>(rows.size());
  const int k = 2 + lags;
  if (m <= k + 2) return kNaN;
  Eigen::MatrixXd X(m, k);
  Eigen::VectorXd y(m);
  for (int i = 0; i < m; ++i) {
    for (int j = 0; j < k; ++j) X(i, j) = rows[i][j];
    y(i) = target[i];
  }
  Eigen::ColPivHouseholderQR<Eigen::MatrixXd> qr(X);
  if (qr.rank() < k) return kNaN;
  const Eigen::VectorXd b = qr.solve(y);
  const double s2 = (y - X * b).squaredNorm() / (m - k);
  const Eigen::MatrixXd cov = s2 * (X.transpose() * X).inverse();
  if (!(cov(1, 1) > 0.0)) return kNaN;
  return b(1) / std::sqrt(cov(1, 1));
}

// Stepwise search of the pooled ARMA orders by AICc for the given differencing and
// columns, as the single-series search does it.
ArimaOrders PooledSearch(const FitInput& in, int d, int D, int period, const SearchOptions& o, std::string& story) {
  const bool seasonal = period > 1;
  const bool constant_ok = o.allow_constant && d + D <= 1;
  int smallest = std::numeric_limits<int>::max();
  for (const auto& seg : in.z) smallest = std::min(smallest, static_cast<int>(seg.size()));
  SearchOptions limits = o;
  if (seasonal) {
    // Seasonal orders need cycles to estimate them, in every group.
    const int usable = smallest - d - D * period;
    const int cap = std::max(0, usable / (2 * period));
    limits.max_P = std::min(o.max_P, cap);
    limits.max_Q = std::min(o.max_Q, cap);
  }
  const ArimaFit best = StepwiseWalk(
      d, D, period, limits,
      [&](const ArimaOrders& s, const ConvergenceCriteria& quick, const ArmaCoefficients* start) {
        return FitPooledRegressionArima(in.z, in.X, s, quick, false, start).arima;
      },
      [&](const ArimaOrders& s, const ArimaFit& f, bool usable) {
        story += s.Name() + (usable ? ": AICc " + Format("%.3f", f.aicc) : std::string(": not usable")) + "; ";
      });
  if (!best.ok) {
    ArimaOrders s;
    s.d = d;
    s.D = D;
    s.period = seasonal ? period : 1;
    s.constant = constant_ok;
    story += "no model of the search could be estimated; ";
    return s;
  }
  return best.orders;
}

// A column over each group: `make(length)` for the group's own observations (and the
// forecast periods after the last group), each group counted from its own start.
PooledColumn GroupColumn(const PooledData& d, std::string term, std::string kind,
                         const std::function<std::vector<double>(int)>& make) {
  PooledColumn c;
  c.term = std::move(term);
  c.kind = std::move(kind);
  for (size_t g = 0; g < d.sizes.size(); ++g)
    c.values.push_back(make(d.sizes[g] + (g + 1 == d.sizes.size() ? d.horizon : 0)));
  return c;
}

// The paths of an input over each group (the last followed by its future values, or by
// its own model's forecasts for type 0), with `extra` periods for leads.
std::vector<std::vector<double>> InputPaths(const ModelingProblem& problem, const PooledData& d,
                                            const InputSeries& input, int extra, std::vector<std::string>* notes) {
  std::vector<std::vector<double>> paths;
  const auto history = SplitGroups(input.history, d.sizes);
  for (size_t g = 0; g < d.sizes.size(); ++g) {
    const bool last = g + 1 == d.sizes.size();
    InputSeries seg;
    seg.name = input.name;
    seg.type = input.type;
    seg.history = history[g];
    if (last) {
      seg.retained = input.retained;
      seg.future = input.future;
    }
    paths.push_back(InputPath(seg, d.sizes[g], last ? d.horizon : 0, extra, problem.rules, last ? notes : nullptr,
                              problem.seasonality));
  }
  return paths;
}

PooledColumn InputColumn(const PooledData& d, const std::vector<std::vector<double>>& paths, const std::string& name,
                         int lag, double delta) {
  PooledColumn c;
  c.input = name;
  c.kind = "input";
  c.lag = lag;
  c.denominator = delta;
  c.term = name + (lag > 0 ? " LAG " + std::to_string(lag) : lag < 0 ? " LEAD " + std::to_string(-lag) : "");
  for (size_t g = 0; g < d.sizes.size(); ++g)
    c.values.push_back(
        LagColumn(paths[g], lag, delta, d.sizes[g] + (g + 1 == d.sizes.size() ? d.horizon : 0)));
  return c;
}

// The preset's structure in its ARIMA and regression form (trends and seasonal terms counted
// from each group's start). False, with the code in r, when it does not suit the groups.
bool PresetStructure(const ModelingProblem& problem, const PooledData& d, PooledModel& m, std::vector<Note>& notes,
                     ModelResult& r) {
  const int obj = problem.objective;
  const int smallest = *std::min_element(d.sizes.begin(), d.sizes.end());
  m.name = PresetName(obj);
  ArimaOrders& a = m.noise;
  const int s = problem.seasonality;
  PresetNoise(obj, s, a);
  auto minor_of = [&](int t) { return ((problem.begin_period - 1 + t) % s + s) % s; };
  switch (obj) {
    case 8:
    case 9: m.columns.push_back(GroupColumn(d, "TREND", "trend", TrendColumn)); break;
    case 10: {
      for (int k = 1; k <= std::min(s / 2, 6); ++k) {
        auto wave = [&, k](bool cosine) {
          return [&, k, cosine](int length) {
            std::vector<double> x(length);
            for (int t = 0; t < length; ++t) {
              const double w = 2.0 * M_PI * k * (problem.begin_period - 1 + t) / s;
              x[t] = cosine ? std::cos(w) : std::sin(w);
            }
            return x;
          };
        };
        m.columns.push_back(GroupColumn(d, "COS(" + std::to_string(k) + ")", "fourier", wave(true)));
        if (2 * k != s) m.columns.push_back(GroupColumn(d, "SIN(" + std::to_string(k) + ")", "fourier", wave(false)));
      }
      break;
    }
    case 11:
      a.d = 2;
      a.q = 2;
      for (int j = 0; j + 1 < s; ++j)
        m.columns.push_back(GroupColumn(d, "SEASON " + std::to_string(j + 1), "seasonal", [&, j](int length) {
          std::vector<double> x(length);
          for (int t = 0; t < length; ++t) x[t] = minor_of(t) == j ? 1.0 : (minor_of(t) == s - 1 ? -1.0 : 0.0);
          return x;
        }));
      break;
    case 51:
    case 52: {
      std::vector<std::string> found;
      for (const auto& input : problem.inputs)
        m.columns.push_back(InputColumn(d, InputPaths(problem, d, input, 0, &found), input.name, 0, 0.0));
      for (const auto& t : found) notes.push_back({"Inputs", t});
      break;
    }
    default: break;
  }
  if ((a.D > 0 || a.P > 0 || a.Q > 0) && smallest < 2 * a.period + 3) {
    r.error_code = kCodeEstimation;
    r.warnings.push_back("Too few observations in a group (" + std::to_string(smallest) +
                         ") for the seasonal preset " + m.name + ".");
    return false;
  }
  notes.push_back({"Model", "Preset model " + std::to_string(obj) + ", " + m.name + ", in its ARIMA form: " +
                                a.Name() +
                                (m.columns.empty() ? std::string()
                                                   : " with " + std::to_string(m.columns.size()) + " regressor(s)") +
                                ", no power transform."});
  return true;
}

// The user's model of STARTMOD.123: its noise and its input terms. False, with 2190 in r,
// when it cannot be used on the groups.
bool UserStructure(const ModelingProblem& problem, const PooledData& d, PooledModel& m, std::vector<Note>& notes,
                   ModelResult& r) {
  const int smallest = *std::min_element(d.sizes.begin(), d.sizes.end());
  m.name = "USER MODEL";
  const ModelBlock& noise = problem.start_model[0];
  std::string why;
  auto malformed = [&](const std::string& reason) {
    r.error_code = kCodeModelMalformed;
    r.warnings.push_back(" STARTMOD.123 MALFORMED");
    r.warnings.push_back("The starting model cannot be used: " + reason + ".");
    return false;
  };
  if (!NoiseOrdersFromBlock(noise, problem.seasonality, m.noise, m.start, why)) return malformed(why);
  m.has_start = true;
  m.lambda = noise.lambda;
  if (!(m.lambda >= -1.0 && m.lambda <= 1.0)) return malformed("a lambda of " + Format("%g", noise.lambda));
  std::vector<std::string> found;
  for (size_t k = 1; k < problem.start_model.size(); ++k) {
    const ModelBlock& b = problem.start_model[k];
    auto input = std::find_if(problem.inputs.begin(), problem.inputs.end(), [&](const InputSeries& s) {
      return s.name.size() == b.name.size() &&
             std::equal(s.name.begin(), s.name.end(), b.name.begin(), [](char x, char y) {
               return std::toupper(static_cast<unsigned char>(x)) == std::toupper(static_cast<unsigned char>(y));
             });
    });
    if (input == problem.inputs.end()) return malformed("the input " + b.name + " is not in the dataset");
    double delta = 0.0;
    const std::string bad = InputDenominator(b, delta);
    if (!bad.empty()) return malformed(bad);
    const int max_lead = MaxLead(b);
    const auto paths = InputPaths(problem, d, *input, max_lead, &found);
    for (const auto& poly : b.second)
      for (int pw : poly.powers) {
        PooledColumn c = InputColumn(d, paths, input->name, pw, delta);
        if (pw == 0) c.term = input->name + " LAG 0";
        m.columns.push_back(std::move(c));
        m.leading = std::max(m.leading, pw);
      }
  }
  for (const auto& t : found) notes.push_back({"Inputs", t});
  if (m.leading >= smallest - 2) return malformed("its lags reach beyond the observations of a group");
  notes.push_back({"Model", "The user's model from STARTMOD.123: " + m.noise.Name() +
                                (m.columns.empty() ? std::string()
                                                   : " with " + std::to_string(m.columns.size()) + " input term(s)") +
                                (problem.rules.allow_modifications ? "; ALLOWMOD.QVX: it may be tuned and extended."
                                                           : "; its structure is held fixed.")});
  return true;
}

// Automatic identification on the groups together: inputs at lag 0, the transform, the
// differencing and the ARMA orders.
void IdentifyStructure(const ModelingProblem& problem, const PooledData& d, int period, const ConvergenceCriteria& crit,
                       PooledModel& m, std::vector<Note>& notes, std::vector<std::string>& warnings) {
  const EngineRules& rules = problem.rules;
  int total = 0;
  for (int s : d.sizes) total += s;
  // Input series enter at lag 0; the necessity test keeps those that matter.
  std::vector<std::string> found;
  for (const auto& input : problem.inputs)
    m.columns.push_back(InputColumn(d, InputPaths(problem, d, input, 0, &found), input.name, 0, 0.0));
  for (const auto& t : found) notes.push_back({"Inputs", t});
  if (!problem.inputs.empty())
    notes.push_back({"Inputs", "In a pooled cross-section each input series enters at lag 0, with one "
                               "coefficient for all groups."});

  // The power transform from the rules' list by the pooled likelihood (with the
  // Jacobian of every group), under a fixed ARIMA(1,d,1)(0,D,1).
  std::vector<double> candidates;
  for (double l : rules.lambdas) {
    bool applies = std::isfinite(l) && l >= -1.0 && l <= 1.0;
    for (const auto& seg : d.y) applies = applies && PowerApplies(seg, l);
    if (applies) candidates.push_back(l);
  }
  const bool only_none = candidates.empty() || (candidates.size() == 1 && std::fabs(candidates[0] - 1.0) < 1e-12);
  auto differencing = [&](const std::vector<std::vector<double>>& groups, int& D, int& dd, std::string* story) {
    std::vector<int> Ds, ds;
    for (const auto& seg : groups) Ds.push_back(period > 1 ? SeasonalDifferences(seg, period, nullptr) : 0);
    double F = 0.0, p_value = 1.0;
    const bool seasonal = PooledSeasonalityTest(groups, period, F, p_value);
    D = seasonal ? MostCommon(Ds) : 0;
    for (const auto& seg : groups) {
      const std::vector<double> w = Difference(seg, period, D);
      ds.push_back(RegularDifferences(w, static_cast<int>(seg.size()) - period * D > 10 ? 2 : 1, nullptr));
    }
    // The regular differences from the groups together: an augmented Dickey-Fuller
    // regression pooled over the groups (common coefficients, no lag crossing a
    // boundary), its unit root rejected at 5 % (t below -2.86) or one more difference.
    int max_d = 2;
    for (const auto& seg : groups)
      if (static_cast<int>(seg.size()) - period * D <= 10) max_d = 1;
    std::string adf_story;
    dd = 0;
    for (; dd < max_d; ++dd) {
      std::vector<std::vector<double>> w;
      for (const auto& seg : groups) w.push_back(Difference(Difference(seg, period, D), 1, dd));
      int lags = 0;
      const double t = PooledDickeyFuller(w, lags);
      if (!std::isfinite(t)) break;
      adf_story += "after " + std::to_string(dd) + " difference(s) t " + Format("%.3f", t) + " with " +
                   std::to_string(lags) + " lag(s); ";
      if (t < -2.86) break;
    }
    if (story) {
      std::string per;
      for (size_t g = 0; g < ds.size(); ++g)
        per += (g ? ", " : "") + std::to_string(ds[g]) + (period > 1 ? "/" + std::to_string(Ds[g]) : "");
      *story = (period > 1 ? "Seasonal pattern of the groups together: F " + Format("%.3f", F) + ", p-value " +
                                 Format("%.4f", p_value) +
                                 (seasonal ? " (seasonal differencing as the groups ask)" : " (no seasonal differencing)") +
                                 ". "
                           : std::string()) +
               "Differences the groups ask for one by one (regular" + std::string(period > 1 ? "/seasonal" : "") +
               "): " + per + ". The groups together, pooled Dickey-Fuller (critical -2.86): " + adf_story + std::to_string(dd) +
               " regular and " + std::to_string(D) + " seasonal difference(s).";
    }
  };
  if (!only_none && total < kMinForTransform) {
    notes.push_back({texts::kHeadTransform, "Too few observations (" + std::to_string(total) +
                                                ") to choose a power transform; none is used."});
  } else if (!only_none) {
    int D0 = 0, d0 = 0;
    differencing(d.y, D0, d0, nullptr);
    ArimaOrders s;
    s.p = 1; s.q = 1; s.d = d0; s.D = D0; s.Q = period > 1 ? 1 : 0; s.period = period;
    s.constant = d0 + D0 <= 1;
    double best = -std::numeric_limits<double>::infinity(), ll_none = best;
    std::string story;
    for (double l : candidates) {
      PooledModel trial = m;
      trial.noise = s;
      trial.lambda = l;
      const FitInput in = MakeFitInput(d, trial);
      ConvergenceCriteria quick = crit;
      quick.max_iterations = std::min(std::max(crit.max_iterations, 5), 10);
      quick.polish = false;
      const RegressionArimaFit f = FitPooledRegressionArima(in.z, in.X, s, quick, false);
      if (!f.ok) continue;
      double ll = f.arima.loglik - f.arima.n * std::log(in.scale);
      for (const auto& seg : in.y) ll += BoxCoxLogJacobian(seg, l, s.d + s.D * std::max(1, s.period));
      story += "lambda " + Format("%.2f", l) + ": log-likelihood " + Format("%.3f", ll) + "; ";
      if (std::fabs(l - 1.0) < 1e-12) ll_none = ll;
      if (ll > best) {
        best = ll;
        m.lambda = l;
      }
    }
    if (std::isfinite(ll_none) && best - ll_none < kTransformGain) {
      if (std::fabs(m.lambda - 1.0) > 1e-12) story += "gain below " + Format("%.2f", kTransformGain) + "; ";
      m.lambda = 1.0;
    }
    notes.push_back({texts::kHeadTransform, story + "chosen lambda " + Format("%.2f", m.lambda) + "."});
  } else {
    notes.push_back({texts::kHeadTransform, "No power transform (lambda 1)."});
  }

  // Differencing from the groups together.
  FitInput in = MakeFitInput(d, m);
  int D = 0, dd = 0;
  std::string story;
  differencing(in.z, D, dd, &story);
  notes.push_back({texts::kHeadDifferencing, story});
  if (!m.columns.empty()) {
    // Inputs that make the regression singular (constant within the groups, or copies of
    // one another) are left out rather than losing the dataset.
    ArimaOrders white;
    white.d = dd;
    white.D = D;
    white.period = period;
    white.constant = dd + D <= 1;
    ConvergenceCriteria quick = crit;
    quick.polish = false;
    if (!FitPooledRegressionArima(in.z, in.X, white, quick, false).ok) {
      m.columns.clear();
      in = MakeFitInput(d, m);
      warnings.push_back(std::string(kRedundancyText).substr(1) +
                         " (2155) The input series were left out of the pooled model.");
    }
  }
  SearchOptions so;
  so.criteria = crit;
  if (period > 60) so.max_P = so.max_Q = 0;
  else if (period > 24) so.max_P = so.max_Q = 1;
  std::string trail;
  m.noise = PooledSearch(in, dd, D, period, so, trail);
  notes.push_back({texts::kHeadSearch, "On the pooled likelihood: " + trail + "chosen " + m.noise.Name() + "."});
}

}  // namespace

ModelResult FitPooled(const ModelingProblem& problem, const StageCallback& on_stage) {
  ModelResult r;
  const EngineRules& rules = problem.rules;
  const int retained = static_cast<int>(problem.retained.size());
  const PoolLayout layout = PoolLayoutFor(rules, static_cast<int>(problem.y.size()) + retained);
  if (layout.error_code == 0 && !layout.pooled()) {
    ModelResult alone = FitModel(problem, on_stage);
    if (!layout.message.empty()) alone.warnings.insert(alone.warnings.begin(), layout.message);
    return alone;
  }
  if (!Stage_(on_stage, Stage::DataPreparation, r)) return r;
  if (layout.error_code) {
    r.error_code = layout.error_code;
    r.warnings.push_back(layout.message);
    return r;
  }

  // Data preparation: the groups of the estimation sample (the retained values come
  // off the last group).
  PooledData d;
  d.sizes = layout.sizes;
  d.sizes.back() -= retained;
  if (d.sizes.back() < kMinPoolGroupSize) {
    r.error_code = kCodePoolGroups;
    r.warnings.push_back("The last group of the pooled cross-section keeps " + std::to_string(d.sizes.back()) +
                         " observation(s) once the " + std::to_string(retained) +
                         " retained values are held out; at least " + std::to_string(kMinPoolGroupSize) +
                         " are needed.");
    return r;
  }
  int at = 0;
  for (int s : d.sizes) {
    d.offsets.push_back(at);
    at += s;
  }
  d.y = SplitGroups(problem.y, d.sizes);
  int filled = 0;
  for (size_t g = 0; g < d.y.size(); ++g) {
    const int f = FillMissing(d.y[g]);
    if (f == static_cast<int>(d.y[g].size())) {
      r.error_code = kCodePoolGroups;
      r.warnings.push_back("Group " + std::to_string(g + 1) + " of the pooled cross-section holds no values.");
      return r;
    }
    filled += f;
  }
  if (filled > 0)
    r.warnings.push_back(std::to_string(filled) +
                         " missing value(s) in the output series were filled by linear interpolation within their groups.");
  d.horizon = problem.horizon > 0 ? problem.horizon : rules.forecasts;
  if (!rules.forecasting_enabled) {
    d.horizon = 0;
    r.warnings.push_back(texts::kForecastingDisabled);
  }
  d.horizon = std::clamp(d.horizon, 0, 600);
  const int smallest = *std::min_element(d.sizes.begin(), d.sizes.end());

  // Groups that are each constant have no likelihood: the forecasts repeat the last
  // group's value.
  if (std::all_of(d.y.begin(), d.y.end(), [](const std::vector<double>& seg) {
        return std::all_of(seg.begin(), seg.end(), [&](double v) { return v == seg.front(); });
      })) {
    const double last = d.y.back().back();
    const std::string why = "Every group of the pooled cross-section is constant; the forecasts repeat the last "
                            "group's value with no uncertainty.";
    r.warnings.push_back(why);
    r.notes.push_back({kHeadPool, "The model is a pooled cross-section of " + PoolDescription(layout.sizes) + "."});
    r.notes.push_back({texts::kHeadModel, why});
    r.description = "CONSTANT, pooled over " + std::to_string(d.sizes.size()) + " groups";
    r.fitted = problem.y;
    r.residuals.assign(problem.y.size(), 0.0);
    r.cleansed = problem.y;
    for (size_t g = 0; g < d.y.size(); ++g)
      for (size_t t = 0; t < d.y[g].size(); ++t) r.fitted[d.offsets[g] + t] = r.cleansed[d.offsets[g] + t] = d.y[g][t];
    r.observations = static_cast<int>(problem.y.size());
    SetConstantModel(r, last, d.horizon);
    r.equation = (problem.output_name.empty() ? std::string("Y") : problem.output_name) + "(t) = " +
                 Format("%.6g", last);
    return r;
  }

  std::vector<Note> notes;
  notes.push_back({kHeadPool,
                   "The model is a pooled cross-section of " + PoolDescription(layout.sizes) +
                       ": one model for the stacked groups, with the same transform, differencing and "
                       "coefficients for all of them and no lag crossing a group boundary (each group is "
                       "differenced and filtered on its own). The forecasts continue the last group, the most "
                       "recent cross-section."});
  int period = problem.seasonality > 1 ? problem.seasonality : 1;
  if (period > 1 && smallest < 2 * period + 3) {
    notes.push_back({texts::kHeadData, "Too few observations in a group for seasonal terms of period " +
                                           std::to_string(period) + "; none are used."});
    period = 1;
  }
  const ConvergenceCriteria crit = CriteriaOf(rules);
  std::vector<std::string> warnings = r.warnings;
  if (!rules.estimation_enabled) warnings.push_back(texts::kEstimationDisabled);

  // The model's structure: the preset's, the user's, or identified from the groups.
  const int obj = problem.objective;
  const bool user = obj == 99 && !problem.start_model.empty();
  PooledModel m;
  bool identify = false;
  if (!Stage_(on_stage, Stage::Identification, r)) return r;
  if (IsPresetObjective(obj)) {
    if (!PresetStructure(problem, d, m, notes, r)) return r;
  } else if (user) {
    if (!UserStructure(problem, d, m, notes, r)) return r;
  } else {
    identify = true;
    if (obj != 0 && obj != 97 && obj != 99)
      warnings.push_back("Objective " + std::to_string(obj) + " is not available yet; the series was modelled automatically.");
    IdentifyStructure(problem, d, period, crit, m, notes, warnings);
  }

  // Estimation and the tests of the terms.
  if (!Stage_(on_stage, Stage::Estimation, r)) return r;
  r = FitPooledModel(problem, d, m, crit, d.horizon);
  if (r.error_code) {
    r.warnings.insert(r.warnings.begin(), warnings.begin(), warnings.end());
    return r;
  }
  const bool tune = identify || (rules.allow_modifications && rules.estimation_enabled);
  if (tune && rules.sufficiency_stochastic && rules.estimation_enabled) {
    const double alpha = 1.0 - std::clamp(rules.sufficiency_ss_level, 1.0, 99.99) / 100.0;
    const std::string text = Sufficiency(problem, d, m, crit, alpha, r);
    notes.push_back({texts::kHeadSufficiency,
                     text.empty() ? "The pooled residuals show no autocorrelation that a further term would remove."
                                  : text});
  }
  if (tune && rules.necessity && rules.estimation_enabled) {
    const double alpha = 1.0 - std::clamp(rules.necessity_level, 1.0, 99.99) / 100.0;
    const std::string text = Necessity(problem, d, m, crit, alpha, r);
    notes.push_back({texts::kHeadNecessity, text.empty() ? "Every term of the model is needed at " +
                                                               Format("%.1f", rules.necessity_level) + " %."
                                                         : text});
  }
  if (rules.sufficiency_deterministic)
    notes.push_back({"Interventions", "Intervention detection is not done for a pooled cross-section: an "
                                      "effect would belong to one group, the model to all of them."});
  if (rules.intermittent)
    notes.push_back({"Model", "Croston-type modelling of intermittent demand is not done for a pooled "
                              "cross-section; the groups were modelled as above."});
  if (rules.constancy || rules.variance_change)
    notes.push_back({"Diagnosis", "The tests of the constancy of parameters and of a change of variance are not "
                                  "done for a pooled cross-section: the stacked groups are not one time line."});
  if (r.forecasts.size() > 0)
    notes.push_back({"Forecasts", "The forecasts continue the last group (" + std::to_string(d.sizes.back()) +
                                      " observations), the most recent cross-section, with the pooled model."});

  // Diagnosis.
  if (!Stage_(on_stage, Stage::Diagnosis, r)) return r;
  r.notes.push_back({texts::kHeadModel, r.description + ", " + std::to_string(r.parameters) +
                                            " parameter(s) for all groups, error sum of squares " +
                                            Format("%.6g", r.sse) + ", log-likelihood " + Format("%.3f", r.loglik) +
                                            ", AIC " + Format("%.3f", r.aic) + ", BIC " + Format("%.3f", r.bic) + "."});
  r.notes.push_back({texts::kHeadDiagnosis,
                     "Ljung-Box Q " + Format("%.3f", r.ljung_box_q) + " over " + std::to_string(r.ljung_box_lags) +
                         " lags within the groups, p-value " + Format("%.4f", r.ljung_box_p) +
                         "; R-squared " + Format("%.4f", r.r_squared) + "; in-sample MAPE " + Format("%.3f", r.mape) +
                         " %."});
  r.notes.insert(r.notes.begin(), notes.begin(), notes.end());
  r.warnings.insert(r.warnings.begin(), warnings.begin(), warnings.end());
  return r;
}

ModelResult FitEngineModel(const ModelingProblem& problem, const StageCallback& on_stage) {
  const int observations = static_cast<int>(problem.y.size() + problem.retained.size());
  const PoolLayout layout = PoolLayoutFor(problem.rules, observations);
  if (layout.error_code == 0 && !layout.pooled()) return FitAndForecast(problem, on_stage);
  // A pooled model ends as every other kind does: simulated when the rules ask, then the
  // rules' conversions of its forecasts.
  ModelResult r = FitPooled(problem, on_stage);
  ApplySimulation(problem, r);
  ConvertForecastValues(r.forecasts, r.lower, r.upper, problem.rules.convert_positive,
                        problem.rules.convert_integers);
  return r;
}

}  // namespace quorvane
