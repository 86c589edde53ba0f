#pragma once
// Tests that decide the differencing of the output series.
#include <vector>

namespace quorvane {

struct KpssResult {
  double statistic = 0.0;
  double p_value = 1.0;   // interpolated in the table of critical values, within [0.01, 0.10]
  int lags = 0;           // Newey-West truncation lag used
};

// KPSS test of level stationarity. Lag truncation trunc(3*sqrt(n)/13). Fewer than 4 values
// or a constant series: statistic 0, p-value 0.10 (nothing to difference).
KpssResult Kpss(const std::vector<double>& x);

struct AdfResult {
  bool computed = false;   // too few values for the regression, or a singular one: false
  double statistic = 0.0;  // t statistic of the level's coefficient
  double critical_5 = 0.0; // the 5 % point for this length (below it: no unit root)
  int lags = 0;            // lagged changes in the regression
};

// Augmented Dickey-Fuller test of a unit root against a stationary series around a
// constant, the number of lagged changes chosen by the AIC up to ceil(12 (n/100)^(1/4)).
AdfResult Adf(const std::vector<double>& x);

// One test of the regular differencing: the KPSS test, and the Dickey-Fuller test where it
// was asked to decide (otherwise `adf.computed` is false).
struct DifferencingStep {
  KpssResult kpss;
  AdfResult adf;
};

// Number of regular differences (0..max_d) that the unit-root tests ask for, testing again
// after each difference: the first when the KPSS test rejects stationarity at the 5 % level,
// or at the 10 % level when the augmented Dickey-Fuller test does not reject the unit root at
// 5 %; a second only when KPSS rejects at 1 %. Stops when the differenced series is constant.
int RegularDifferences(const std::vector<double>& x, int max_d, std::vector<DifferencingStep>* steps);

// Strength of seasonality in [0, 1]: 1 - var(remainder) / var(seasonal + remainder) after a
// decomposition with a centred moving-average trend and a seasonal component smoothed
// locally over the cycles (it may change slowly). Needs n >= 2*period + 2; otherwise 0.
// period < 2 gives 0.
double SeasonalStrength(const std::vector<double>& x, int period);

// Seasonal differences (0 or 1) from the seasonal strength: one when it exceeds 0.64.
int SeasonalDifferences(const std::vector<double>& x, int period, double* strength);

}  // namespace quorvane
