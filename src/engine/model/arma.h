#pragma once
// ARMA building blocks on a (differenced) stationary series w:
//   w(t) - mu = sum_k phi_k (w(t-k) - mu) + a(t) + sum_k theta_k a(t-k),  a(t) ~ N(0, sigma2).
// AR coefficients carry the sign of a regression on the past, MA coefficients a plus sign.
// Multiplicative seasonal factors are expanded into these full polynomials first.
#include <vector>

namespace quorvane {

// Coefficients of one ARMA factor pair in the regression sign convention.
struct ArmaCoefficients {
  std::vector<double> ar, ma;      // nonseasonal: lags 1..p, 1..q
  std::vector<double> sar, sma;    // seasonal: lags s, 2s, ...
  int period = 1;
};

// Full phi (lags 1..p+s*P) of (1 - sum ar B^i)(1 - sum sar B^{s j}) and full theta of
// (1 + sum ma B^i)(1 + sum sma B^{s j}).
void ExpandArma(const ArmaCoefficients& c, std::vector<double>& phi, std::vector<double>& theta);

// The product (1 - sum a B^k)(1 - sum b B^k) as 1 - sum c B^k: returns c (e.g. an AR
// polynomial times the differencing polynomial).
std::vector<double> MultiplyRegression(const std::vector<double>& a, const std::vector<double>& b);

// True when 1 - sum a_k z^k has every root outside the unit circle by the margin
// (all partial autocorrelations of the step-down recursion below 1 - margin in size).
// Empty polynomial: true. Non-finite coefficients: false.
bool IsStationary(const std::vector<double>& a, double margin = 0.0);

// Same for an MA polynomial 1 + sum b_k z^k (invertibility).
bool IsInvertible(const std::vector<double>& b, double margin = 0.0);

// Smallest modulus of the roots of 1 - sum a_k z^k (infinity for an empty polynomial).
double SmallestRootModulus(const std::vector<double>& a);

// Autocovariances gamma(0..max_lag) of the ARMA with unit innovation variance. Domain:
// stationary phi; otherwise the result is empty.
std::vector<double> ArmaAutocovariances(const std::vector<double>& phi, const std::vector<double>& theta,
                                        int max_lag);

// psi weights psi(0..count-1) of theta(B)/phi(B); phi may hold unit roots (differencing).
std::vector<double> PsiWeights(const std::vector<double>& phi, const std::vector<double>& theta, int count);

// Exact Gaussian likelihood of w through a Kalman filter on the state of h-step
// predictions, with the mean (when `with_mean`) estimated by generalised least squares
// and sigma2 concentrated out. Domain: finite w with at least one value, stationary phi;
// a series the model fits exactly (sigma2 zero, e.g. a constant with a mean) gives ok false.
struct ArmaLikelihood {
  bool ok = false;
  double loglik = 0.0;       // concentrated, full Gaussian constant included
  double sigma2 = 0.0;       // maximum-likelihood innovation variance
  double mean = 0.0;         // GLS mean of w (0 without mean)
  double mean_variance = 0.0;// variance of that estimate
  double scaled_ssq = 0.0;   // the sum of squares that maximising the likelihood minimises
  int n = 0;
  std::vector<double> innovations;   // one-step prediction errors of w, length n
  std::vector<double> scaled;        // residuals whose sum of squares is scaled_ssq
  std::vector<double> state;         // prediction of the state for time n+1 (deviations from the mean)
};
ArmaLikelihood ArmaExactLikelihood(const std::vector<double>& w, const std::vector<double>& phi,
                                   const std::vector<double>& theta, bool with_mean,
                                   bool keep_series = false);

// The scaled residuals of ArmaExactLikelihood alone, the same numbers, written to
// scaled[0..n-1] (n = w.size()); false where ArmaExactLikelihood would give ok false. The
// estimator's inner loop asks for nothing else at each trial point. With `figures`, the
// likelihood's figures besides (its series left empty), so the point need not be run again.
// Small models (states of up to six values, non-seasonal conditional residuals) take paths
// of their own, with the same numbers to the bit; off (for this thread), they go the general
// way, which is how the two are checked against each other.
void ArmaUseSmallModelPaths(bool use);

bool ArmaScaledResiduals(const std::vector<double>& w, const std::vector<double>& phi,
                         const std::vector<double>& theta, bool with_mean, double* scaled,
                         ArmaLikelihood* figures = nullptr);

// The scaled residuals of ArmaExactLikelihood (without a mean) of several series of one
// length under one ARMA, in one pass: the filter's gains depend on the model alone, so they
// are computed once for all the series. out[j] is empty where series j cannot be whitened
// (the model fits it exactly, or a value is not finite); all are empty when the model
// cannot be filtered.
std::vector<std::vector<double>> ArmaWhitenAll(const std::vector<const std::vector<double>*>& series,
                                               const std::vector<double>& phi, const std::vector<double>& theta);

// Conditional-sum-of-squares residuals (the first p values are conditioned on, residuals
// before them set to zero). Length n - p (empty when n <= p).
std::vector<double> CssResiduals(const std::vector<double>& w, double mean, const std::vector<double>& phi,
                                 const std::vector<double>& theta);
// The same into out[0..n-p-1]; false when n <= p.
bool CssResidualsInto(const std::vector<double>& w, double mean, const std::vector<double>& phi,
                      const std::vector<double>& theta, double* out);

}  // namespace quorvane
