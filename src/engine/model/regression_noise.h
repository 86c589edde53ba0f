#pragma once
// Regression with ARIMA noise, estimated by alternating the two parts: the single-series
// fit (interventions, transfer functions) and the pooled fit (groups stacked) share the
// scheme and differ only in how the noise is fitted and how the regression is solved.
// Internal to the modelling core.
#include <algorithm>
#include <cmath>
#include <vector>

#include <Eigen/Dense>

#include "engine/model/estimate_parts.h"
#include "engine/model/interventions.h"

namespace quorvane {

// A regression solved under a noise model: coefficients, standard errors and the whitened
// residual sum of squares.
struct GlsOutcome {
  bool ok = false;
  std::vector<double> beta, se;
  double ssr = 0.0;
};

// Least squares of the whitened series ws on the whitened columns A; the first k columns are
// the regressors returned (any after them, a mean, are estimated alongside and left out).
// Fails when the columns are collinear.
inline GlsOutcome WhitenedLeastSquares(const Eigen::MatrixXd& A, const Eigen::VectorXd& ws, int k) {
  GlsOutcome out;
  const int m = static_cast<int>(A.rows());
  const int cols = static_cast<int>(A.cols());
  Eigen::ColPivHouseholderQR<Eigen::MatrixXd> qr(A);
  qr.setThreshold(1e-10);
  if (qr.rank() < cols) return out;
  const Eigen::VectorXd b = qr.solve(ws);
  if (!b.allFinite()) return out;
  out.ssr = (ws - A * b).squaredNorm();
  const double s2 = out.ssr / std::max(1, m - cols);
  const Eigen::MatrixXd cov = s2 * (A.transpose() * A).inverse();
  out.beta.resize(k);
  out.se.resize(k);
  for (int j = 0; j < k; ++j) {
    out.beta[j] = b(j);
    out.se[j] = std::sqrt(std::max(cov(j, j), 0.0));
  }
  out.ok = true;
  return out;
}

// `fit_noise(beta, criteria, with_errors, start)` fits the ARIMA of `orders` to the series
// less the regressors at beta (start: coefficients to begin from, or null);
// `gls(coef)` solves the regression under that noise and returns an object with `ok`,
// `beta` and `se`. The two parts are close to independent in the likelihood, so a few
// rounds settle beta to well within its standard error; the ARMA part is estimated to the
// search's precision until the last fit, which gives the standard errors.
template <class FitNoise, class Gls>
RegressionArimaFit AlternateRegressionArima(const ArimaOrders& orders, const ConvergenceCriteria& crit,
                                            bool with_errors, const ArmaCoefficients* start,
                                            FitNoise fit_noise, Gls gls) {
  RegressionArimaFit out;
  ArmaCoefficients coef = start ? *start : ZeroCoefficients(orders);
  coef.period = orders.period;
  coef.ar.resize(orders.p, 0.0);
  coef.ma.resize(orders.q, 0.0);
  coef.sar.resize(orders.P, 0.0);
  coef.sma.resize(orders.Q, 0.0);
  auto g = gls(coef);
  if (!g.ok) {
    g = gls(ZeroCoefficients(orders));
    if (!g.ok) return out;
  }
  std::vector<double> beta = g.beta;

  ConvergenceCriteria quick = crit;
  quick.polish = false;
  quick.max_iterations = std::max(crit.max_iterations, 5);
  bool started = start != nullptr;
  ArimaFit arima;
  for (int it = 0; it < 8; ++it) {
    out.iterations = it + 1;
    arima = fit_noise(beta, quick, false, started ? &coef : nullptr);
    if (!arima.ok) return out;
    coef = arima.coef;
    started = true;
    const auto next = gls(coef);
    if (!next.ok) return out;
    double change = 0.0;
    for (size_t j = 0; j < beta.size(); ++j) change = std::max(change, std::fabs(next.beta[j] - beta[j]));
    beta = next.beta;
    if (change < 1e-4 * std::sqrt(std::max(arima.sigma2, 1e-300))) break;
  }
  arima = fit_noise(beta, crit, with_errors, &coef);
  if (!arima.ok) return out;
  g = gls(arima.coef);
  if (!g.ok) return out;
  out.arima = arima;
  out.beta = g.beta;
  out.beta_se = g.se;
  out.ok = true;
  return out;
}

}  // namespace quorvane
