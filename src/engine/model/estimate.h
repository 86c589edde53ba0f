#pragma once
// Estimation of a seasonal ARIMA(p,d,q)(P,D,Q)s with an optional constant (the mean of the
// differenced series: a level when nothing is differenced, a drift after one difference).
#include <string>
#include <vector>

#include <Eigen/Dense>

#include "engine/model/arma.h"

namespace quorvane {

struct ArimaOrders {
  int p = 0, d = 0, q = 0;
  int P = 0, D = 0, Q = 0;
  int period = 1;
  bool constant = false;
  // Coefficients held at zero (a subset model after the necessity test), by lag index 0..
  std::vector<bool> ar_zero, ma_zero, sar_zero, sma_zero;

  int FreeCount() const;       // estimated ARMA coefficients (constant not counted)
  std::string Name() const;    // "ARIMA(0,1,1)(0,1,1)12", "ARIMA(1,0,0) with constant"
};

// How the estimator stops: both changes (in percent) below their limits, or the limit of
// iterations (0: the conditional-least-squares start values are kept as they are).
struct ConvergenceCriteria {
  double sse_change_pct = 0.1;
  double parameter_change_pct = 0.1;
  int max_iterations = 20;
  // Beyond the rules' limits, go on to the precision that reports and comparisons need
  // (off during the search, where candidates are only ranked).
  bool polish = true;
};

struct ArimaFit {
  bool ok = false;
  ArimaOrders orders;
  ArmaCoefficients coef;
  double mean = 0.0;            // constant: mean of the differenced series (0 without)
  double loglik = 0.0;          // exact Gaussian log-likelihood of the differenced series
  double sigma2 = 0.0;
  double aic = 0.0, aicc = 0.0, bic = 0.0;
  int n = 0;                    // observations in the likelihood (after differencing)
  int iterations = 0;
  bool converged = false;
  // Standard errors in the order ar, ma, sar, sma (held-at-zero terms: 0), then constant.
  std::vector<double> std_errors;
  bool hessian_ok = false;      // standard errors from the numerical Hessian (else Gauss-Newton)
  // The estimates' covariance from that Hessian, free coefficients in the order of the
  // standard errors (held-at-zero terms and the constant left out), k x k; empty without it.
  std::vector<double> covariance;
};

// Differencing polynomial delta of (1-B)^d (1-B^s)^D as regression coefficients:
// y(t) = w(t) + sum_k delta_k y(t-k).
std::vector<double> DifferencingPolynomial(int d, int D, int period);

// Applies the orders's differencing.
std::vector<double> DifferenceSeries(const std::vector<double>& y, const ArimaOrders& orders);

// Fits the orders to z (already transformed). `with_errors` computes standard errors from the
// numerical Hessian of the log-likelihood. `start` (optional) gives starting values, e.g. a
// neighbouring model's estimates; missing terms start at zero, and an inadmissible start
// falls back to conditional least squares. Fails (ok false) when fewer observations remain
// after differencing than parameters + 2, or the likelihood cannot be evaluated.
ArimaFit FitArima(const std::vector<double>& z, const ArimaOrders& orders, const ConvergenceCriteria& crit,
                  bool with_errors, const ArmaCoefficients* start = nullptr);

}  // namespace quorvane
