#pragma once
// Pooled cross-sections: like series (the groups) stacked end to end in one output series
// and fitted by one model. The groups share the power transform, the differencing, the
// ARMA coefficients, the constant, the regression coefficients and the innovation
// variance, and no lag crosses a group boundary: each group is differenced on its own, its
// Kalman filter starts afresh, and the likelihood is the sum of the groups' exact
// likelihoods. Forecasts continue the last group, the most recent cross-section.
#include <cstdint>
#include <string>
#include <vector>

#include "engine/model.h"
#include "engine/model/estimate.h"
#include "engine/model/interventions.h"

namespace quorvane {

// Fewest observations a group may hold.
inline constexpr int kMinPoolGroupSize = 3;
// " ARRAY.API HAS INCORRECT # OF OBSERVATIONS.": the groups do not fit the observations.
inline constexpr int16_t kCodePoolGroups = 2180;

// How a stacked series divides into groups.
struct PoolLayout {
  int16_t error_code = 0;     // kCodePoolGroups: a group too small to be fitted
  std::string message;        // what is wrong, in words (with error_code 0: a warning)
  std::vector<int> sizes;     // observations of each group in stacking order; empty: one series
  bool pooled() const { return sizes.size() > 1; }
};

// The groups the rules ask for over `observations` (the observations as given, retained
// values included): the sizes of GROUPLST.QVX when they add up to the observations, else
// "# OF GROUPS" equal groups when the count divides them. One group: not pooled. Groups
// that do not fit the observations leave the dataset one series, with a warning in
// `message`: the pooling flow runs each of its series alone under the rules of the stack,
// and those must be fitted alone. A group below kMinPoolGroupSize is an error.
PoolLayout PoolLayoutFor(const EngineRules& rules, int observations);

// "3 groups of 40 observations each" or "3 groups of sizes 40, 40 and 38".
std::string PoolDescription(const std::vector<int>& sizes);

// The groups of a stacked series (a short series gives short or empty last groups).
std::vector<std::vector<double>> SplitGroups(const std::vector<double>& y, const std::vector<int>& sizes);

// Exact Gaussian likelihood of independent segments w[g] that share one ARMA (phi, theta),
// one mean (estimated by generalised least squares over all of them when `with_mean`) and
// one innovation variance (concentrated out). Domain: stationary phi, finite values; the
// segments together must hold a value that the model does not fit exactly. An empty
// segment adds nothing.
struct PooledLikelihood {
  bool ok = false;
  double loglik = 0.0;        // concentrated: sigma2 = ssq / n
  double sigma2 = 0.0;
  double mean = 0.0;
  double mean_variance = 0.0;
  double ssq = 0.0;           // sum over all segments of e(t)^2 / F(t)
  double sum_log_f = 0.0;     // sum over all segments of log F(t)
  int n = 0;
  std::vector<double> scaled; // residuals of all segments whose sum of squares the fit minimises
  // The log-likelihood at a given innovation variance (the mean and the ARMA as estimated).
  double LogLikelihoodAt(double innovation_variance) const;
};
PooledLikelihood PooledArmaLikelihood(const std::vector<std::vector<double>>& w, const std::vector<double>& phi,
                                      const std::vector<double>& theta, bool with_mean);

// Columns of a pooled regression: X[g][j] is column j over the observations of group g.
using GroupColumns = std::vector<std::vector<std::vector<double>>>;

// Regression with ARIMA errors over the groups: z[g] = X[g] beta + u[g], the u[g]
// independent ARIMAs of `orders` with common coefficients. With no columns it is the
// pooled ARIMA alone. The result's `arima.n` counts the differenced observations of all
// groups; `arima.loglik` is the pooled likelihood. ok false when too few observations
// remain for the parameters or the likelihood cannot be evaluated.
RegressionArimaFit FitPooledRegressionArima(const std::vector<std::vector<double>>& z, const GroupColumns& X,
                                            const ArimaOrders& orders, const ConvergenceCriteria& crit,
                                            bool with_errors, const ArmaCoefficients* start = nullptr);

// One-step prediction errors of each group under the fit (NaN for the observations that
// start the group's differencing).
std::vector<std::vector<double>> PooledInnovations(const std::vector<std::vector<double>>& z, const GroupColumns& X,
                                                   const RegressionArimaFit& fit);

// The pooled model of problem.y under the rules' groups: automatic modelling (objective 0
// and the values that run as 0), the presets in their ARIMA and regression forms, and the
// user's model (objective 99). Forecasts continue the last group. A problem whose rules
// ask for one group, or for groups that do not fit its observations (with a warning), goes
// to FitModel.
ModelResult FitPooled(const ModelingProblem& problem, const StageCallback& on_stage);

// The engine's modelling: pooled cross-sections to FitPooled, everything else to FitModel.
ModelResult FitEngineModel(const ModelingProblem& problem, const StageCallback& on_stage);

}  // namespace quorvane
