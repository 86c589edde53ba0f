#pragma once
// The evidence an effect found by detection needs before the model keeps it when it is
// carried into the forecasts on the strength of a few observations. Internal to the
// modelling core.
#include <vector>

#include "engine/model/interventions.h"

namespace quorvane {

// A level shift or a local trend moves every forecast, and a seasonal pulse recurs in every
// forecast cycle, while a pulse leaves them alone. Found close to the end of the series such
// an effect rests on the few observations after it: a shift or a trend with at most
// kRampMinGap observations (or one seasonal cycle, if longer) from its place to the end
// cannot yet be told from a change that dies away or levels off, and a seasonal pulse
// within the last two cycles has been seen twice only. A misjudged one is then carried over
// the whole horizon. So these must pass the critical value by kLateEffectMargin; the weakest
// that does not leaves, the model is estimated again without it, and so on. True when any
// effect left.
constexpr double kLateEffectMargin = 0.5;
bool DropWeakLateEffects(const std::vector<double>& z, const DetectionOptions& opt, DetectionResult& r);

// True when an effect of `type` at 0-based `index` of n observations is carried into the
// forecasts on the strength of few observations (see DropWeakLateEffects).
bool RestsOnFewObservations(int type, int index, int n, int period);

}  // namespace quorvane
