#pragma once
// Intermittent demand: series with many periods of no demand, modelled the Croston way. The
// sizes of the non-zero demands and the intervals between them are smoothed separately,
//   Z(t) = Z(t-1) + a_z (y(t) - Z(t-1)),  P(t) = P(t-1) + a_p (q(t) - P(t-1))
// at each period t with a demand (q(t) the periods since the one before), and held between
// demands. The demand per period is forecast flat at k Z / P, where k is 1 - a_p / 2 for the
// Syntetos-Boylan correction of Croston's bias (the default) and 1 for Croston's own method.
#include <string>
#include <vector>

#include "engine/model.h"

namespace quorvane {

// Whether a series is intermittent: no missing or negative value, at least 30 % of the
// periods without demand, and at least two periods with one. `why` says which test decided.
struct IntermittentCheck {
  bool intermittent = false;
  int zeros = 0;
  int demands = 0;
  std::string why;
};
inline constexpr double kIntermittentZeroShare = 0.30;
IntermittentCheck CheckIntermittent(const std::vector<double>& y);

enum class CrostonVariant { Sba, Classic };

struct CrostonRun {
  std::vector<double> fitted;  // one-step forecasts, one per period
  double size = 0.0;           // Z after the last period
  double interval = 0.0;       // P after the last period
  double forecast = 0.0;       // k Z / P
  double factor = 1.0;         // k
  double sse = 0.0;            // over every period
  double fit_sse = 0.0;        // over the periods after the first demand (the search's measure)
  int first_demand = -1;       // 0-based period of the first non-zero value
};

// Runs the method over y (non-negative, with at least one demand). The states start at the
// first demand: Z its size, P its period number (1-based); periods up to it are fitted by
// that first estimate.
CrostonRun CrostonFilter(const std::vector<double>& y, double alpha_size, double alpha_interval,
                         CrostonVariant variant = CrostonVariant::Sba);

struct CrostonEstimate {
  double alpha_size = 0.1;
  double alpha_interval = 0.1;
  CrostonRun run;
};

// The two constants from 0.05 to 0.30 in steps of 0.01 that minimise the squared one-step
// errors after the first demand (ties keep the smaller constants).
inline constexpr int kCrostonMinPercent = 5;
inline constexpr int kCrostonMaxPercent = 30;
// The constants when the rules turn estimation off.
inline constexpr double kCrostonDefaultAlpha = 0.10;
CrostonEstimate EstimateCroston(const std::vector<double>& y, CrostonVariant variant = CrostonVariant::Sba);

// Lower and upper limits of a flat forecast `f` at `coverage_pct`: the forecast plus the
// quantiles of the in-sample errors (after the first demand), the lower one at least 0.
struct FlatLimits {
  double lower = 0.0;
  double upper = 0.0;
};
FlatLimits EmpiricalLimits(const std::vector<double>& errors, double f, double coverage_pct);

// Croston-type modelling (SBA) of problem.y, which CheckIntermittent accepted.
ModelResult FitCroston(const ModelingProblem& problem, const IntermittentCheck& check, const StageCallback& on_stage);

// Under the rule "INTERMITTENT": an intermittent series is modelled by FitCroston; any
// other goes to `usual` (with the rule off) and carries a note saying why it was not.
using UsualModelling = ModelResult (*)(const ModelingProblem&, const StageCallback&);
ModelResult FitIntermittentDemand(const ModelingProblem& problem, const StageCallback& on_stage, UsualModelling usual);

}  // namespace quorvane
