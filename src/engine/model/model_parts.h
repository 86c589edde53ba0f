#pragma once
// Small pieces shared by the kinds of model (automatic, given structure, pooled,
// intermittent): the filling of missing values, the working scale, the estimator's limits
// from the rules, the ARMA rows of the coefficient table, the trend column, the forecast
// horizon and the stage checkpoints.
// Internal to the modelling core: included by its .cpp files only.
#include <string>
#include <vector>

#include "engine/model.h"
#include "engine/model/estimate.h"
#include "engine/model/forecast.h"
#include "engine/model/interventions.h"
#include "engine/rules.h"

namespace quorvane {

// Missing values (the engine's mark, or not a number) filled by linear interpolation, the
// nearest value at the ends (0 where nothing is known). Returns how many were filled.
int FillMissing(std::vector<double>& y);

// A power of two near the largest finite magnitude of the values: fitting on z / scale
// keeps squares finite for huge values and costs no precision. 1 when nothing is nonzero.
double ScaleOf(const std::vector<double>& z);
// The same over all the groups of a pooled cross-section together.
double ScaleOf(const std::vector<std::vector<double>>& groups);

// The estimator's stopping rules as the rules set them (no iterations when estimation is off).
ConvergenceCriteria CriteriaOf(const EngineRules& rules);

// Appends the fit's AR, MA, SAR and SMA rows to the coefficient table (terms held at zero
// left out), and puts the constant first, on the scale of the data (`scale` undoes the
// working scale). t and p values with `df` degrees of freedom.
void AddArmaCoefficients(const ArimaFit& f, double scale, int df, std::vector<Coefficient>& out);

// The model's orders into the result.
void SetOrders(ModelResult& r, const ArimaOrders& orders);

// The coefficient-table row of regression column j of fr, on the scale of the data.
Coefficient ColumnCoefficient(const std::string& term, const std::string& kind, int lag,
                              const RegressionArimaFit& fr, size_t j, double scale, int df);
// The row of an input's first-order denominator (a fixed value, without a test).
Coefficient DenominatorCoefficient(const std::string& input, double delta);

// The row of the coefficient table least significant at level `p` (its p-value above
// `p`, and then the largest), denominators never, with `columns_only` regression columns
// only; -1 when none. `p` becomes its p-value.
int LeastSignificant(const std::vector<Coefficient>& coefficients, bool columns_only, double& p);

// The first-order denominator of an input block of the user's model (0 without one), or
// what is wrong with it ("" when nothing).
std::string InputDenominator(const ModelBlock& b, double& delta);
// The longest lead (negative power) of an input block's numerator; 0 without leads.
int MaxLead(const ModelBlock& b);

// The ARIMA noise of a preset objective (its orders, constant and period `seasonality`);
// the preset's regression columns are the caller's. Objective 11 has no ARIMA form here.
void PresetNoise(int objective, int seasonality, ArimaOrders& a);

// A constant model at `value` (a series with no variation): its one coefficient, its
// degrees of freedom from r.observations, and flat forecasts and limits.
void SetConstantModel(ModelResult& r, double value, int horizon);

// The diagnosis note of a fitted model: Ljung-Box, R-squared and MAPE.
Note DiagnosisNote(const ModelResult& r);

// One more AR order (`ar`) or MA order for the model, its start value at zero.
void AddArmaOrder(ArimaOrders& s, ArmaCoefficients& start, bool ar);

// A column's value at period `at`: the last value where the column ends or is missing
// there, 0 for an empty column.
double FutureValue(const std::vector<double>& v, size_t at);
// Forecast h (and its limits) on the scale of the data: the noise forecast plus the
// columns' effect xb, on the working scale of the transformed series.
void SetForecast(ModelResult& r, int h, const ArimaForecast& fc, double xb, double scale, double lambda);

// The time trend 1, 2, ..., length.
std::vector<double> TrendColumn(int length);

// The in-sample figures of a fitted model, gathered one observation at a time.
struct InSampleTally {
  std::vector<double> model_resid;  // innovations, on the transformed scale of the data
  std::vector<double> used_z;       // the transformed values they belong to
  double sse = 0.0;                 // of the residuals on the scale of the data
  double ape = 0.0;                 // sum of absolute percentage errors (nonzero actuals)
  int ape_n = 0;
  int used = 0;

  // One observation: the actual value and its fitted value on the scale of the data, its
  // innovation and transformed value on the transformed scale. Returns the residual.
  double Add(double actual, double fitted, double innovation, double z);
  // Sets r's observations, degrees of freedom (r.parameters already set), SSE, variance,
  // R-squared (of the model on the transformed scale), log-likelihood `loglik` (on the
  // scale of the data), AIC, BIC, MAPE and residual diagnostics.
  void Finish(ModelResult& r, double loglik, const ArimaFit& f) const;
};

// How many periods to forecast: the problem's own horizon or the rules', none when the
// rules disable forecasting, at most 600; each adjustment is explained in `warnings`.
int ForecastHorizon(const ModelingProblem& problem, std::vector<std::string>& warnings);

// Reports reaching stage `s`; false (and r marked cancelled) when the caller asks to stop.
bool Stage_(const StageCallback& on_stage, Stage s, ModelResult& r);

}  // namespace quorvane
