#pragma once
// Forecasts and one-step predictions of a fitted ARIMA on the (transformed) series z.
#include <vector>

#include "engine/model/estimate.h"

namespace quorvane {

struct ArimaForecast {
  std::vector<double> mean, lower, upper, se;   // on the scale of z
};

// Point forecasts for 1..horizon with limits at the given central coverage (percent),
// the variance from the psi weights of the integrated model. horizon < 1: empty.
ArimaForecast ForecastArima(const std::vector<double>& z, const ArimaFit& fit, int horizon, double coverage_pct);

// One-step predictions of z from the exact filter, sized to z; NaN for the first
// d + D*period observations that start the differencing.
std::vector<double> OneStepPredictions(const std::vector<double>& z, const ArimaFit& fit);

}  // namespace quorvane
