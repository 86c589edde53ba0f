#pragma once
// "FIXUP FOR FIXED EFFECTS": seasonal pulses found at several periods of the cycle are
// often a fixed seasonal pattern the model lacks. The fixup tries a full set of seasonal
// dummies in their place, estimated jointly with the model, and keeps them only when the
// small-sample AIC says the series is better described that way.
#include <string>
#include <vector>

#include "engine/model/interventions.h"

namespace quorvane {

struct SeasonalFixup {
  bool tried = false;     // seasonal pulses at two or more periods of the cycle
  bool applied = false;   // the dummies were kept
  std::vector<DetectedIntervention> found;   // the interventions left (no seasonal pulses)
  RegressionArimaFit fit;                    // with the interventions left, then the dummies
  std::vector<double> dummies, dummies_se;   // s - 1 coefficients, on the model's scale
  std::vector<double> effects;               // the dummies' effects for n + horizon periods
  double aicc_pulses = 0.0, aicc_dummies = 0.0;  // of the one-step errors
  std::string note;                          // what was tried and why it was kept or not
};

// Centred seasonal dummy j (0-based cycle position j = 0..s-2 of the observation index,
// counted from the first observation): 1 - 1/s at that position, -1/s elsewhere.
std::vector<double> SeasonalDummy(int j, int period, int length);

// Tries the dummies for the detection `found` / `with_pulses` on z (n observations, the
// model's scale). `period` is the seasonality; `first_position` the 0-based position in
// the cycle of the first observation (for the labels). Not tried when fewer than two
// distinct periods carry seasonal pulses. A seasonally differenced model is tried without
// its seasonal difference and seasonal ARMA terms (a fixed pattern in place of a wandering
// one). The two are compared by the AICc of their one-step errors over the same
// observations (those the model with the pulses can predict).
SeasonalFixup TrySeasonalDummies(const std::vector<double>& z, const std::vector<DetectedIntervention>& found,
                                 const RegressionArimaFit& with_pulses, int period, int first_position,
                                 int horizon, const ConvergenceCriteria& crit);

// The dummies as coefficients "SEASONAL DUMMY 1" .. (by period of the cycle), kind "dummy",
// on the data's scale (times `scale`).
void DescribeSeasonalDummies(const SeasonalFixup& fixup, double scale, int period, int first_position, int df,
                             std::vector<Coefficient>& coefficients);

}  // namespace quorvane
