#pragma once
// The model given a difference fewer for steps and trends, tried again without them. Internal
// to the modelling core.
#include <vector>

#include "engine/model/interventions.h"

namespace quorvane {

// KPSS asks for the first difference while the Dickey-Fuller test rejects the unit root when
// strong short-term dependence in a stationary series swells its statistic: the difference
// was then a false call, and the steps and trends found once it is given up are no reason to
// give it up. When the series `z` (seasonally differenced as `base` says) passes the
// Dickey-Fuller test and the candidate without a regular difference holds steps or trends,
// `out` is that candidate's model without them (pulses kept, all estimated again) and
// `extra` what the criterion must add to the candidate's for the comparison to count the
// search that found them: for each, its place and type were chosen among all those tested,
// which a criterion charges twice the log of their number, where it charged log m (`m`
// one-step errors) beside the coefficient's own log m. False when there is nothing to try.
bool WithoutLevelMoves(const std::vector<double>& z, const ArimaOrders& base, const DetectionResult& candidate,
                       const DetectionOptions& opt, int m, DetectionResult& out, double& extra);

}  // namespace quorvane
