#pragma once
// The parts that the preset models, the user's model and transfer-function models share:
// the output series made ready, columns checked for redundancy, and the tuning of a fitted
// model (terms that are not needed dropped, interventions added). Internal to the modelling core.
#include <cstdint>
#include <string>
#include <vector>

#include "engine/model.h"
#include "engine/model/structured.h"

namespace quorvane::structured_parts {

inline constexpr double kMissing = 99999999999.0;
inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr int16_t kCodeEstimation = 3;
inline constexpr int16_t kCodeObservations = 2180;
inline constexpr int16_t kCodeRedundancy = 2155;
inline constexpr int16_t kCodeSeasonalPreset = 2163;
inline constexpr int16_t kCodeRegressionPreset = 2164;
inline constexpr int16_t kCodeModelMalformed = 2190;
inline constexpr const char* kRedundancyText = " TESSALY HAS IDENTIFIED A LINEAR REDUNDANCY. DELETE REDUNDANT VARIABLES.";

// The number of forecasts the problem asks for (0, with a warning, when forecasting is off).
int HorizonOf(const ModelingProblem& p, ModelResult& r);

// The output series ready for modelling, or an error code in r.
bool PrepareOutput(const ModelingProblem& p, std::vector<double>& y, ModelResult& r);

// Integrates a column so that the model's differencing gives it back: an input that the
// rules say not to difference enters the differenced equation as it is.
std::vector<double> Integrated(const std::vector<double>& x, const ArimaOrders& orders);

// Columns (over the sample) that are a linear combination of the ones before them (and of
// the constant) once the model's differencing is applied.
std::vector<int> RedundantColumns(const std::vector<std::vector<double>>& X, const ArimaOrders& orders);

// The notes and warnings of the steps before the fit, ahead of the fit's own.
void Prepend(ModelResult& r, const std::vector<Note>& notes, const std::vector<std::string>& warnings);

// Drops the least significant term (ARMA term or column) while one is above `alpha`.
// Returns the notes of what was dropped.
std::string Necessity(const ModelingProblem& problem, const std::vector<double>& y, StructuredModel& m,
                      const ConvergenceCriteria& crit, int horizon, double alpha, ModelResult& r,
                      bool columns_only);

// Interventions found in the noise of a fitted model (the output less its columns' effects)
// join the model as columns, estimated jointly with the rest. True when some were added.
bool AddInterventions(const ModelingProblem& problem, const std::vector<double>& y, StructuredModel& m,
                      const ConvergenceCriteria& crit, int horizon, ModelResult& r, std::vector<Note>& notes);

// With ALLOWMOD.QVX a preset or user model is tuned (terms that are not needed dropped) and
// extended (ARMA terms added while the residuals stay autocorrelated and the criterion
// improves; interventions searched).
void TuneAndExtend(const ModelingProblem& problem, const std::vector<double>& y, StructuredModel& m,
                   const ConvergenceCriteria& crit, int horizon, ModelResult& r, std::vector<Note>& notes);

}  // namespace quorvane::structured_parts
