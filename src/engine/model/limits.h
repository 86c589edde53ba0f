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
  double factor = 1.0;  // on the half-widths, from the allowance for the choice of the model to 2
  std::string note;     // what the check found, or that the series could not spare the periods
};

// The orders are estimated again on the series up to an origin a horizon (at most a fifth of
// the series) before its end, and again every half horizon earlier (six origins at most, as
// far as the series can spare them), and their forecasts are set against the values that
// followed. The limits are right when those errors fall inside them as often as promised;
// they are not when the coefficients, the events the model explains the past by or the
// recent behaviour of the series make the forecasts err more than the innovations alone.
// The least factor that covers the errors so, blended with the model's own errors by half a
// horizon's worth of weight, widens the limits; never by less than an allowance for the
// choice of the model, which the check (the orders chosen with the held-back periods in
// view) cannot show. `z` is the series on the model's scale with every effect still in it;
// `known` may be empty (no effects).
HoldoutCheck CheckLimitsOnHoldout(const std::vector<double>& z, const KnownEffects& known, const ArimaFit& fit,
                                  int horizon, double coverage, const LimitAllowances& allow);

}  // namespace quorvane
