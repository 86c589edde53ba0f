#pragma once
// Models of a given structure: the preset models (objectives 1 to 15, 51, 52), the user's
// model (objective 99, from STARTMOD.123) and transfer-function models of input series.
// All are a regression with ARIMA errors,
//   T(y)(t) = sum_j beta_j x_j(t) + N(t),   N an ARIMA (with its constant),
// where the columns x_j are lags (or leads) of input series, filtered through a
// denominator where the model has one, a time trend, harmonics or seasonal factors. They are
// estimated jointly by exact likelihood and forecast with the core's functions.
#include <string>
#include <vector>

#include "engine/model.h"
#include "engine/model/estimate.h"
#include "engine/model/interventions.h"

namespace quorvane {

// The preset objectives.
bool IsPresetObjective(int objective);
// The preset's name as the list of models gives it ("AIRLINE"); "" for other values.
std::string PresetName(int objective);
// Seasonal presets need a seasonality of at least 4 (code 2163 below it).
bool IsSeasonalPreset(int objective);

// One column of the regression, over the estimation sample and the forecast periods.
struct RegressorColumn {
  std::string term;             // "X1 LAG 2", "TREND", "COS(1)", "SEASON 3"
  std::string kind;             // "input", "trend", "fourier", "seasonal", "intervention"
  std::string input;            // the input series' name ("" for deterministic columns)
  int lag = 0;                  // lag of the input (negative: a lead)
  double denominator = 0.0;     // delta of a first-order denominator 1/(1 - delta B), 0 none
  int intervention = 0;         // an intervention's type (1 pulse .. 4 local trend), 0 none
  int at = -1;                  // the intervention's 0-based observation
  std::vector<double> values;   // n + horizon values; NaN where undefined (before the start)
};

struct StructuredModel {
  std::string name;             // description: "AIRLINE", "TRANSFER FUNCTION ..."
  double lambda = 1.0;          // power transform of the output series
  ArimaOrders noise;              // the ARIMA of N(t)
  std::vector<RegressorColumn> columns;
  int leading = 0;              // observations left out at the start (lags reach before them)
  bool has_start = false;       // start values of the ARMA coefficients (a user's model)
  ArmaCoefficients start;
};

// Estimates `model` on y (the estimation sample, missing values filled) and forecasts
// `horizon` periods, filling everything the reports need. `fit_out` (optional) receives
// the fit on the model's scale. error_code 3 when the model cannot be estimated.
ModelResult FitStructured(const ModelingProblem& problem, const std::vector<double>& y,
                          const StructuredModel& model, const ConvergenceCriteria& criteria, int horizon,
                          RegressionArimaFit* fit_out = nullptr);

// The values of an input over the estimation sample, then the forecast periods and `extra`
// periods beyond (for leads): the values retained and the future values as given for types
// 1 to 3; for type 0 the forecasts of the input's own automatic model. Missing values are
// filled by interpolation; values past the end of what is known repeat the last one.
std::vector<double> InputPath(const InputSeries& input, int n, int horizon, int extra, const EngineRules& rules,
                              std::vector<std::string>* notes, int seasonality = 1);

// A column of lag k (negative: lead) of `path`, filtered through 1/(1 - delta B) when
// delta is not 0; NaN where the lag reaches before the first value.
std::vector<double> LagColumn(const std::vector<double>& path, int lag, double delta, int length);

// The preset models: the structure each one's name promises, estimated under the rules.
// Codes 2164 (a regression preset without inputs) and 2163 (a seasonal preset below
// seasonality 4) come back in error_code.
ModelResult FitPreset(const ModelingProblem& problem, const StageCallback& on_stage);

// The user's model of problem.start_model: held as it is (its terms estimated from its
// coefficients as start values, or kept as given when estimation is off), or, with
// ALLOWMOD.QVX, tuned (terms that are not needed dropped) and extended (ARMA terms added
// while the residuals stay autocorrelated). Code 2190 when the model does not fit the data.
ModelResult FitUserModel(const ModelingProblem& problem, const StageCallback& on_stage);

// The noise block of a model file (STARTMOD.123) as ARIMA orders with its coefficients as
// start values. False, with the reason in `why`, when the block cannot be expressed
// (differencing of two seasonal periods, powers out of range).
bool NoiseOrdersFromBlock(const ModelBlock& block, int seasonality, ArimaOrders& orders, ArmaCoefficients& start,
                          std::string& why);

// A transfer-function model of the output series on its inputs, identified from the
// cross-correlations of the prewhitened series, with the noise's ARIMA identified on what
// the inputs leave; inputs that are not needed are dropped.
ModelResult FitTransferFunction(const ModelingProblem& problem, const StageCallback& on_stage);

// The engine's modelling: presets, the user's model and problems with inputs here,
// everything else to FitAndForecast.
ModelResult FitModel(const ModelingProblem& problem, const StageCallback& on_stage);

// The residual checks every fitted model reports: Ljung-Box over two seasons (or 10 lags),
// Jarque-Bera, and the residual ACF with its 2/sqrt(n) limit. `used` is the number of
// residuals the model fitted; `arma_parameters` reduces the Ljung-Box degrees of freedom.
void FillResidualDiagnostics(ModelResult& r, const std::vector<double>& residuals, int period,
                             int arma_parameters, int used);

}  // namespace quorvane
