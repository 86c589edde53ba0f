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

// Number of regular differences (0..max_d) that the KPSS test asks for at the 5 % level,
// testing again after each difference. Stops when the differenced series is constant.
int RegularDifferences(const std::vector<double>& x, int max_d, std::vector<KpssResult>* steps);

// Strength of seasonality in [0, 1]: 1 - var(remainder) / var(seasonal + remainder) after a
// decomposition with a centred moving-average trend and a seasonal component smoothed
// locally over the cycles (it may change slowly). Needs n >= 2*period + 2; otherwise 0.
// period < 2 gives 0.
double SeasonalStrength(const std::vector<double>& x, int period);

// Seasonal differences (0 or 1) from the seasonal strength: one when it exceeds 0.64.
int SeasonalDifferences(const std::vector<double>& x, int period, double* strength);

}  // namespace quorvane
