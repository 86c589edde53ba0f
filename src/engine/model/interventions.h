#pragma once
// Interventions: unusual events in a series (pulses, level shifts, seasonal pulses, local
// time trends) found by iterative detection in the manner of Chen and Liu (1993), and the
// regression with ARIMA errors that estimates them jointly with the model.
//
// All series here are on the model's scale (after the power transform and the fitting
// scale); indices are 0-based observations of that series.
#include <string>
#include <vector>

#include "engine/model.h"
#include "engine/model/estimate.h"
#include "engine/model/search.h"

namespace quorvane {

// The intervention types, numbered as the engine returns them.
enum InterventionType : int {
  kPulse = 1,          // one observation
  kLevelShift = 2,     // from the observation on
  kSeasonalPulse = 3,  // the observation and the same period of every later cycle
  kLocalTrend = 4,     // a ramp 1, 2, 3, ... from the observation on
};

// Values of the intervention variable of `type` starting at `at`, for t = 0..length-1
// (length may reach into the forecast periods: steps and trends carry on, seasonal pulses
// recur, a pulse does not). A period below 2 makes a seasonal pulse a pulse.
std::vector<double> InterventionRegressor(int type, int at, int period, int length);

// "PULSE", "LEVEL SHIFT", "SEASONAL PULSE", "LOCAL TREND".
std::string InterventionTypeName(int type);

// Regression with ARIMA errors: z = X beta + u, u an ARIMA of `orders` (its constant being the
// mean of the differenced u). beta is estimated by generalised least squares under the
// exact ARMA covariance of the differenced series, the ARMA part by the core's exact
// likelihood on z - X beta, alternating until beta settles.
struct RegressionArimaFit {
  bool ok = false;
  ArimaFit arima;                      // the noise model, fitted to z - X beta
  std::vector<double> beta;            // one per column of X
  std::vector<double> beta_se;         // GLS standard errors (with `with_errors`)
  int iterations = 0;
};

RegressionArimaFit FitRegressionArima(const std::vector<double>& z, const std::vector<std::vector<double>>& X,
                                      const ArimaOrders& orders, const ConvergenceCriteria& crit, bool with_errors,
                                      const ArmaCoefficients* start = nullptr);

// The noise series u = z - X beta.
std::vector<double> RemoveRegressors(const std::vector<double>& z, const std::vector<std::vector<double>>& X,
                                     const std::vector<double>& beta);

struct DetectionOptions {
  bool pulse = true;
  bool level_shift = true;
  bool seasonal_pulse = true;
  bool trend = true;
  int max_count = 5;            // the rules' maximum number of interventions
  double confidence = 95.0;     // the rules' (DS) confidence level, percent
  int period = 1;               // seasonality, for seasonal pulses
  ConvergenceCriteria criteria;
};

struct DetectedIntervention {
  int type = kPulse;
  int index = 0;                // 0-based observation
  double impact = 0.0;          // coefficient on the model's scale
  double std_error = 0.0;
  double t_value = 0.0;
};

struct DetectionResult {
  RegressionArimaFit fit;                    // the model with the effects as regressors
  std::vector<DetectedIntervention> found;   // in order of time (the columns of the fit)
  double critical_value = 0.0;
  int candidates = 0;                        // tests made at each pass
  std::vector<std::string> trail;            // what was added and dropped, in order
};

// The critical value of the standardized statistics: the two-sided normal quantile at
// (100 - confidence)% shared out over `candidates` places (the observations tested), so
// that false alarms stay rare whatever the length of the series; never below 3.
double InterventionCriticalValue(double confidence_pct, int candidates);

// One pass of the search: the standardized statistic of every candidate of every enabled
// type, given the residuals of the model. Exposed for tests and the benchmark.
//
// With `ramp_gap` above 1 (and trends on), also the ramps that level off: a local trend
// from `index` taken back by an opposite one at `end`, kRampMinGap to `ramp_gap`
// observations later, tested as one effect (the best end for each start). Two such trends
// can each be too weak to enter alone, the later one cancelling the earlier, while together
// they are plain: a level that moves to a new one over a few periods.
constexpr int kRampMinGap = 6;  // a ramp over fewer observations is a level shift to the data
struct CandidateStatistic {
  int type = kPulse;
  int index = 0;
  int end = -1;         // a ramp's second trend; -1 for a single effect
  double impact = 0.0;
  double tau = 0.0;
};
std::vector<CandidateStatistic> CandidateStatistics(const std::vector<double>& z,
                                                    const std::vector<std::vector<double>>& X,
                                                    const RegressionArimaFit& fit, const DetectionOptions& opt,
                                                    int ramp_gap = 0);

// Iterative detection starting from a fitted ARIMA of z: at each pass the candidate with
// the largest statistic above the critical value joins the model (ARMA coefficients held,
// places settled as effects join; a ramp that levels off joins as its two trends when no
// single effect passes); then the model is estimated again with all effects and
// the search starts over with its coefficients, until it finds the same effects. Each effect
// may then move anywhere, or change type, given the others; at the end effects no longer
// significant together are dropped one at a time. Returns the fit without effects when none
// is found (found empty).
DetectionResult DetectInterventions(const std::vector<double>& z, const ArimaFit& initial,
                                    const DetectionOptions& opt);

// One-step prediction errors of z under the regression with ARIMA errors, sized to z (NaN
// before the differencing has started).
std::vector<double> RegressionInnovations(const std::vector<double>& z, const std::vector<std::vector<double>>& X,
                                          const RegressionArimaFit& fit);

// Detection with the model's identification checked against the effects. Effects left in
// the data mislead identification: a level shift or a local trend asks for one difference
// more than the series needs, which then hides the effect. So besides the identified model,
// models with fewer regular differences (orders searched again) are tried; within each,
// the orders are searched again on the series cleansed of what was found and, when they
// differ, detection starts over with them. The candidates are compared by a Schwarz-type
// criterion on their one-step prediction errors over the same observations (an effect
// counting as two parameters: its place and its size).
DetectionResult DetectWithIdentification(const std::vector<double>& z, const ArimaFit& identified,
                                         const DetectionOptions& opt, const SearchOptions& search);

// The detection switches and limits that the rules give: each type only when its rule is
// on, no trends when NOTREND.QVX is present, the (DS) confidence level and the maximum
// number to be identified.
DetectionOptions DetectionOptionsFromRules(const EngineRules& rules, int period, const ConvergenceCriteria& crit);

// The effects of the interventions on the model's scale, for the n observations and then
// `horizon` forecast periods: steps and trends carry on, seasonal pulses recur, pulses do
// not. With `last_pulse_to_step` a pulse at the last observation carries on as a step; with
// `pulse_to_seasonal` a pulse within the last cycle recurs at its period of each later
// cycle (the last observation's own pulse stays a pulse unless it becomes a step): an
// earlier pulse cannot be one, as the data after it show no repeat.
std::vector<double> InterventionEffects(const std::vector<DetectedIntervention>& found, int period, int n,
                                        int horizon, bool last_pulse_to_step, bool pulse_to_seasonal);

// The interventions as the engine returns them (1-based observations, major and minor
// periods, impacts on the scale of the data before any power transform is undone) and as
// coefficients named "LEVEL SHIFT 1899" or "PULSE 1949/3". `scale` is the factor the model
// was fitted at; `df` the residual degrees of freedom for p-values.
void DescribeInterventions(const std::vector<DetectedIntervention>& found, double scale, int seasonality,
                           int begin_year, int begin_period, int df, std::vector<Intervention>& interventions,
                           std::vector<Coefficient>& coefficients);

// The heading of the detection's note in DETAILS.HTM, and the note itself: the critical
// value, what was added, moved and dropped, and the model kept.
inline constexpr const char* kHeadInterventions = "Interventions";
std::string InterventionStory(const DetectionResult& detection);

// The first line of the equation of a model with interventions: "Y(t) = -247.8 LEVEL SHIFT
// 1899(t) + N(t)", from the intervention coefficients; N(t) is the ARIMA noise, whose own
// equation follows on the next line.
std::string InterventionEquation(const std::vector<Coefficient>& coefficients, const std::string& lhs);

// "1899" (seasonality 1) or "1949/3": the period of a 0-based observation.
std::string ObservationPeriodText(int index, int seasonality, int begin_year, int begin_period);

// The one-step errors of the model with its interventions from the first observation that
// has one, and that observation's index in `first`.
std::vector<double> ModelInnovations(const std::vector<double>& z, const std::vector<DetectedIntervention>& found,
                                     int period, const RegressionArimaFit& fit, int& first);

}  // namespace quorvane
