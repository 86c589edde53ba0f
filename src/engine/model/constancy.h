#pragma once
// Constancy of parameters: a Chow-type test of whether one ARIMA describes the whole series
// or its parameters changed at some observation. When they did, the most recent stable
// segment is the one to model.
#include <vector>

#include "engine/model.h"
#include "engine/model/estimate.h"

namespace quorvane {

inline constexpr const char* kHeadConstancy = "Constancy of parameters";

struct ParameterChange {
  bool found = false;
  int index = 0;            // 0-based observation where the later segment begins
  double statistic = 0.0;   // F statistic of the best break
  double p_value = 1.0;     // its p-value before the adjustment for the breaks tried
  double critical = 0.0;    // the F value the break had to pass
  int breaks_tried = 0;
};

// Tries breaks with at least `min_group` observations (after differencing) on each side,
// at most `max_breaks` of them spread evenly; each side gets the same orders estimated
// afresh. F = ((S - S1 - S2) / k) / ((S1 + S2) / (m - 2k)), S the one-step error sums of
// squares and k the parameters, compared with the F quantile at the confidence level
// (percent) shared out over the breaks tried.
ParameterChange TestConstancy(const std::vector<double>& z, const ArimaOrders& orders, const ConvergenceCriteria& crit,
                              double confidence_pct, int min_group, int max_breaks = 12);

// Automatic modelling of the observations from `from` (0-based) on, reported against the
// whole series: `leading_left_out` set, fitted values, residuals and the cleansed series at
// full length (the actuals, with no residual, before the segment), interventions numbered
// in the whole series. The constancy test is not made again inside the segment. Only the
// stages from estimation on are passed to `on_stage`: the earlier ones were reported.
ModelResult ModelLatestSegment(const ModelingProblem& problem, int from, const StageCallback& on_stage);

}  // namespace quorvane
