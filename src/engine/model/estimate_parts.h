#pragma once
// The estimator's parts that the single-series and the pooled ARIMA fits share: the free
// coefficients of a model as a parameter vector, the admissibility of a point, and the
// Levenberg-Marquardt minimiser. Internal to the modelling core.
#include <functional>
#include <utility>
#include <vector>

#include <Eigen/Dense>

#include "engine/model/arma.h"
#include "engine/model/estimate.h"

namespace quorvane {

// Free coefficients of the orders, in parameter order: (group, index), group 0 ar, 1 ma,
// 2 sar, 3 sma; terms held at zero are left out.
std::vector<std::pair<int, int>> Slots(const ArimaOrders& s);

// All coefficients of the orders at zero.
ArmaCoefficients ZeroCoefficients(const ArimaOrders& s);
// The coefficients at parameter vector x (terms not in `slots` at zero).
ArmaCoefficients Unpack(const ArimaOrders& s, const std::vector<std::pair<int, int>>& slots, const Eigen::VectorXd& x);
// The parameter vector of c (a term c does not have: 0).
Eigen::VectorXd Pack(const ArmaCoefficients& c, const std::vector<std::pair<int, int>>& slots);

// Stationary and invertible, with the roots at least `margin` outside the unit circle.
bool Admissible(const ArmaCoefficients& c, double margin);

// Residuals at a point; false where they cannot be evaluated (an inadmissible point).
using ResidualFn = std::function<bool(const Eigen::VectorXd&, Eigen::VectorXd&)>;

struct LmOutcome {
  int iterations = 0;
  bool converged = false;
  Eigen::MatrixXd jtj;   // at the solution, when asked for
};

// Levenberg-Marquardt on a sum of squares with a forward-difference Jacobian. A step to an
// inadmissible point counts as a failed step. Stops when the relative changes of the sum of
// squares and of the parameters are both below their limits, or after max_iterations.
// `with_jtj`: J'J at the solution is made too (one more Jacobian, a residual evaluation per
// parameter), which only the standard errors' fallback reads: the search's candidates and
// the conditional start do without it.
LmOutcome Marquardt(const ResidualFn& f, Eigen::VectorXd& x, int max_iterations, double sse_tol, double par_tol,
                    bool with_jtj = true);

// Log-likelihood at a point; false where it cannot be evaluated.
using LogLikelihoodFn = std::function<bool(const Eigen::VectorXd&, double&)>;

// Standard errors of the free coefficients from the numerical Hessian of the
// log-likelihood at the maximum x (value f0), by central differences. False (se left as it
// was, or not finite) when the likelihood fails near x or the information is not positive
// definite; se must hold x.size() values.
// `covariance` (optional) receives the whole inverse information matrix.
bool HessianStdErrors(const LogLikelihoodFn& ll, const Eigen::VectorXd& x, double f0, Eigen::VectorXd& se,
                      Eigen::MatrixXd* covariance = nullptr);

// The standard errors of the free coefficients laid out as ArimaFit::std_errors: ar, ma,
// sar, sma (held-at-zero terms 0), then the constant's from the variance of the mean.
std::vector<double> LaidOutStdErrors(const ArimaOrders& orders, const std::vector<std::pair<int, int>>& slots,
                                     const Eigen::VectorXd& se, double mean_variance);

// AIC, AICc (infinite when too few observations) and BIC from fit.loglik and fit.n with
// kk parameters.
void SetInformationCriteria(ArimaFit& fit, int kk);

}  // namespace quorvane
