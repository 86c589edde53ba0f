#pragma once
// Forecasts and one-step predictions of a fitted ARIMA on the (transformed) series z.
#include <vector>

#include "engine/model/estimate.h"

namespace quorvane {

struct ArimaForecast {
  std::vector<double> mean, lower, upper, se;   // on the scale of z
};

// How an event that is not foreseen acts on the series from the period it happens in:
// a pulse only then, a step from then on, a seasonal pulse then and every cycle after,
// a ramp 1, 2, 3, ... from then on.
enum class EventShape { Pulse, Step, SeasonalPulse, Ramp };

// Events of one shape that happened in the sample and may happen again in the forecast
// periods: at `rate` per period, with sizes of mean square `mean_square` (on z's scale).
struct RecurringEvents {
  EventShape shape = EventShape::Pulse;
  double rate = 0.0;
  double mean_square = 0.0;
};

// What the limits allow for beyond the innovations of a model taken as known. The default
// is the model as known: the fit's innovation variance, normal quantiles, nothing more.
struct LimitAllowances {
  // Innovation variance the limits rest on; below 0 the fit's own (maximum-likelihood) one.
  double sigma2 = -1.0;
  // Above 0: quantiles of Student's t with these degrees of freedom (the variance being
  // estimated), else of the normal distribution.
  int degrees_of_freedom = 0;
  // The error of the estimated ARMA coefficients: the innovation part of the variance grows
  // by this share (the number of coefficients over the number of innovations).
  double coefficient_share = 0.0;
  // Beside it, when the fit carries the estimates' covariance: their error carried to each
  // horizon through the forecast function (the delta method: the variance of the gradient of
  // each forecast along the coefficients), which grows with the horizon where the forecasts
  // lean on the coefficients (an AR near one far from its mean). The larger of the two counts,
  // the second at most the innovation part.
  bool coefficient_delta = false;
  // The error of the estimated constant (a mean, a drift), carried through the
  // differencing to each horizon: a drift's error grows with the horizon.
  bool constant_error = false;
  // Interventions that may recur: unforeseen events in the forecast periods. Their count by
  // a horizon is Poisson (rate times horizon), each at a random period up to it; the limits
  // are the quantiles of that scale mixture of normals, not of one normal of the total
  // variance, since a rare event widens the tails without moving the bulk.
  std::vector<RecurringEvents> events;
  int period = 1;  // for seasonal pulses
  // The innovations' own distribution where it is not normal: the half-width at horizon h
  // (0-based) is multiplied by tail_ratio[h] (beyond its end by the last; empty: by 1).
  std::vector<double> tail_ratio;
};

// The allowances for estimation: the innovation variance `sigma2` (a maximum-likelihood one,
// over the fit's innovations) taken over the degrees of freedom left when `parameters` were
// estimated in all (coefficients, constant, regressors, effects), t quantiles with those
// degrees of freedom, the ARMA coefficients' share and the constant's error.
LimitAllowances EstimationAllowances(const ArimaFit& fit, int parameters, double sigma2);

// Point forecasts for 1..horizon with limits at the given central coverage (percent), the
// variance from the psi weights of the integrated model with the allowances added.
// `se` is the standard deviation of the whole forecast error. horizon < 1: empty.
ArimaForecast ForecastArima(const std::vector<double>& z, const ArimaFit& fit, int horizon, double coverage_pct,
                            const LimitAllowances& allow = {});

// Half-width of the central interval of coverage `coverage_pct` of the error
// N(0, base + K * event_variance), K Poisson with mean `event_count` (a normal or, with
// degrees of freedom above 0, a scaled t in place of the normal). Beyond 50 events on
// average, the normal of the total variance.
double MixtureHalfWidth(double base_variance, double event_count, double event_variance, double coverage_pct,
                        int degrees_of_freedom);

// The rules' conversions of the forecasts ("POSITIVE VALUES", "INTEGERS"), applied to the
// forecasts and their limits alike: negative values become 0; forecasts are rounded to the
// nearest integer and the limits outwards (lower down, upper up), so the limits still hold
// the interval they held before.
void ConvertForecastValues(std::vector<double>& forecasts, std::vector<double>& lower, std::vector<double>& upper,
                           bool positive, bool integers);

// One-step predictions of z from the exact filter, sized to z; NaN for the first
// d + D*period observations that start the differencing.
std::vector<double> OneStepPredictions(const std::vector<double>& z, const ArimaFit& fit);

}  // namespace quorvane
