#pragma once
// Descriptive statistics and residual tests on plain series. Every function takes finite
// values only (the caller removes missing values first) and states what it gives back at
// the edges instead of failing.
#include <vector>

namespace quorvane {

// Arithmetic mean. Empty input: 0.
double Mean(const std::vector<double>& x);

// Variance about the mean with divisor n (the maximum-likelihood form). Fewer than two
// values: 0.
double Variance(const std::vector<double>& x);

// Autocorrelations r(1)..r(max_lag) with the usual divisor n. Lags at or beyond n, and
// every lag of a constant series, give 0.
std::vector<double> Autocorrelations(const std::vector<double>& x, int max_lag);

// Partial autocorrelations 1..max_lag from the autocorrelations (Durbin-Levinson).
std::vector<double> PartialAutocorrelations(const std::vector<double>& x, int max_lag);

// The series with each value held within k robust standard deviations (1.4826 times the
// median absolute deviation) of its median: autocorrelations of it are robust to a few
// outliers, which otherwise pull every correlation towards zero.
std::vector<double> RobustlyClipped(const std::vector<double>& x, double k = 2.5);

// Applies (1 - B^lag) `times` times. The result is shorter by lag*times (empty when the
// series is not longer than that). lag < 1 or times < 0 give the series unchanged.
std::vector<double> Difference(const std::vector<double>& x, int lag, int times = 1);

struct TestResult {
  double statistic = 0.0;
  double p_value = 1.0;
  int df = 0;
};

// Ljung-Box portmanteau test over lags 1..lags with lags - fitted_parameters degrees of
// freedom (at least 1). A series shorter than lags + 2 gives statistic 0, p 1.
TestResult LjungBox(const std::vector<double>& residuals, int lags, int fitted_parameters);

// Jarque-Bera normality test (chi-square, 2 df). Fewer than 3 values or zero variance:
// statistic 0, p 1.
TestResult JarqueBera(const std::vector<double>& residuals);

// Upper-tail probability of a chi-square with df degrees of freedom; df < 1 or a
// statistic that is not positive gives 1.
double ChiSquareUpperTail(double statistic, int df);

// Two-sided p-value of a t statistic with df degrees of freedom (normal when df < 1).
double TwoSidedTPValue(double t, int df);

// Normal quantile for a central coverage given in percent (95 gives 1.959964). Coverage
// outside (0, 100) is clamped to [1, 99.9999].
double CentralNormalQuantile(double coverage_pct);

}  // namespace quorvane
