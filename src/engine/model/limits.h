#pragma once
// How much wider the forecast limits must be than the model says, judged on the series' own
// last periods (forecasts from earlier origins set against the values that followed).
#include <functional>
#include <string>
#include <vector>

#include "engine/model/estimate.h"
#include "engine/model/forecast.h"

namespace quorvane {

// The effects (n values, on z's scale) of what was known at an origin: the interventions that
// began before it (with their whole course, also after it) and the seasonal dummies. The
// ones that begin at or after the origin are not known there: to a forecast from that origin
// they are surprises, and the check must count them as errors as the future will.
using KnownEffects = std::function<std::vector<double>(int origin)>;

struct HoldoutCheck {
  double factor = 1.0;  // on the half-widths, from the allowance for the choice of the model to 2.08
  std::string note;     // what the check found, or that the series could not spare the periods
};

// The model's one-step errors on `u` (the series less the effects of its interventions),
// with the pulses found (`pulse_at`, 0-based observations, of sizes `pulse_size`) put back
// into the errors of their periods: one-period shocks like the innovations, only larger,
// which the tails of the innovations to come must show.
std::vector<double> InnovationsWithPulses(const std::vector<double>& u, const ArimaFit& fit,
                                          const std::vector<int>& pulse_at, const std::vector<double>& pulse_size);

// How far the innovations' tails are from the normal's, as a factor on the half-width at
// horizons 1..horizon at the given coverage (percent): the quantile of the forecast error
// when the innovations are drawn from the model's own (standardised) `innovations` and run
// through its psi weights, over the normal quantile of the same variance. Where a few large
// shocks carry much of the variance, most errors are smaller than the normal of that
// variance says: the 80 % limits narrow most, the 95 % ones less or not at all; the farther
// horizons, sums of many innovations, come nearer the normal. Empty (the normal stands)
// when the innovations are too few to show their tails or the Jarque-Bera test does not
// reject their normality at 1 %.
std::vector<double> TailRatios(const std::vector<double>& innovations, const ArimaFit& fit, int horizon,
                               double coverage);

// The orders are estimated again on the series up to an origin a horizon (at most a fifth of
// the series) before its end, and again every horizon earlier (six origins at most, as far
// as the series can spare them), and their forecasts are set against the values that
// followed: each held-back period is forecast from one origin only, so that one stretch of
// the series does not count twice. The limits are right when those errors fall inside them
// as often as promised; they are not when the coefficients, the events the model explains
// the past by or the recent behaviour of the series make the forecasts err more than the
// innovations alone. The least factor that covers the errors so, blended with the model's
// own errors by half a horizon's worth of weight, widens the limits, together with an
// allowance for the choice of the model, which the check (the orders chosen with the
// held-back periods in view) cannot show: an error of its own, whose variance adds to the
// one the check finds. `z` is the series on the model's scale with every effect still in
// it; `known` may be empty (no effects).
HoldoutCheck CheckLimitsOnHoldout(const std::vector<double>& z, const KnownEffects& known, const ArimaFit& fit,
                                  int horizon, double coverage, const LimitAllowances& allow);

}  // namespace quorvane
