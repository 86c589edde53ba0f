#pragma once
// Forecast combination: the equally weighted average of three different forecasters of one
// series, the automatic ARIMA model, exponential smoothing and the Theta method. Averages of
// unlike methods are known to forecast better than each of them alone: their errors are far
// from perfectly correlated, so the average's errors are smaller.
//
// The members:
//   - the automatic model (the engine's usual modelling, interventions included);
//   - exponential smoothing: additive Holt-Winters (level, trend and seasonal states) when the
//     automatic model found the series seasonal, else damped-trend smoothing; both on the
//     automatic model's power transform, so a multiplicative season becomes additive;
//   - the Theta method: simple exponential smoothing of the seasonally adjusted series with a
//     drift of half its linear trend's slope, seasonally adjusted by a classical additive
//     decomposition (on the same power) when the series is seasonal.
// The limits are the averages of the members' limits, each at the rules' confidence. For a
// normal average of normal errors this is the width the average would have if its members'
// errors were perfectly correlated, the widest their own widths allow; the members' own
// limits ignore the uncertainty of their model choice, which the margin makes up for.
#include <vector>

#include "engine/model.h"

namespace quorvane {

// Objective #1 of the forecast combination.
inline constexpr int kObjectiveCombination = 98;

// Theta method forecasts of z (a series on the scale the method works on, no missing values,
// at least 3 values), `period` > 1 for a seasonal adjustment first: point forecasts, limits at
// `coverage` percent and the one-step fitted values (NaN before the first).
struct ThetaForecast {
  bool ok = false;
  double alpha = 0.0;    // smoothing constant of the level
  double drift = 0.0;    // half the slope of the linear trend, per period
  double sigma2 = 0.0;   // variance of the one-step errors
  std::vector<double> fitted, mean, lower, upper;
};
ThetaForecast ThetaMethod(const std::vector<double>& z, int period, int horizon, double coverage);

// The forecast combination of problem.y (objective kObjectiveCombination). `automatic` is the
// engine's automatic modelling (called with objective 0). Its errors are the automatic
// model's; when a member other than the automatic model cannot be fitted the average is of
// those that could, with a warning.
using AutomaticModelling = ModelResult (*)(const ModelingProblem&, const StageCallback&);
ModelResult FitCombination(const ModelingProblem& problem, const StageCallback& on_stage,
                           AutomaticModelling automatic);

}  // namespace quorvane
