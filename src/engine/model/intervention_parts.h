#pragma once
// The parts of intervention detection that its candidate statistics and its search share:
// whitening under the noise model, generalised least squares on whitened columns, where
// each type of effect can be placed, and the columns of the effects found. Internal to the
// modelling core.
#include <algorithm>
#include <utility>
#include <vector>

#include <Eigen/Dense>

#include "engine/model/interventions.h"
#include "engine/model/regression_noise.h"

namespace quorvane::intervention_parts {

// covariance. Linear in the series for fixed coefficients, so regressions on whitened
// columns are generalised least squares. The common factor of the core's scaled residuals
// cancels in every ratio used here.
bool Whiten(const std::vector<double>& w, const std::vector<double>& phi, const std::vector<double>& theta,
            Eigen::VectorXd& out);

// beta of w = Xw beta (+ mean) + ARMA noise. The mean column, when asked for, is estimated
// alongside but not returned: the noise model keeps its own constant.
GlsOutcome Gls(const std::vector<double>& w, const std::vector<std::vector<double>>& Xw,
               const ArmaCoefficients& coef, bool with_mean);

// Observations the differencing takes before its first value.
inline int BurnIn(const ArimaOrders& s) { return s.d + s.D * std::max(1, s.period); }

// The first and last observation where an effect of the type can be told apart from the
// model's own terms: nothing before the differencing has started; a step or a trend at the
// very start is the constant or the drift; a step or a trend at the last observations is a
// pulse; a seasonal pulse needs a second occurrence to differ from a pulse.
std::pair<int, int> CandidateRange(int type, int n, const ArimaOrders& orders, const DetectionOptions& opt);

// The types of effect the options ask for.
std::vector<int> EnabledTypes(const DetectionOptions& opt);

// Each column x of X run backwards through pi(F) = a(F) / theta(F) over zeros past its end,
// u(q) = sum over i of pi(i) x(q + i); a(B) has its unit lead, theta(B) is 1 + theta.
Eigen::MatrixXd BackFiltered(const Eigen::MatrixXd& X, const std::vector<double>& a, const std::vector<double>& theta);

// Row q: the products of the columns back-filtered in U with an effect of `type` placed at
// row q, the sums over s of p(s) U(q + s) for the type's pattern p to the end of the series.
Eigen::MatrixXd PatternProducts(const Eigen::MatrixXd& U, int type, int period);

// The columns of the effects found, over n observations.
std::vector<std::vector<double>> Regressors(const std::vector<DetectedIntervention>& found, int period, int n);

// Each effect's size, standard error and t-value from a fit of the model with their columns.
void TakeEstimates(std::vector<DetectedIntervention>& found, const RegressionArimaFit& fit);

}  // namespace quorvane::intervention_parts
