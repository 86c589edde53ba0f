#pragma once
// From the request arrays to the modelling problem, and from the finished model back to
// the returned arrays.
#include <cstdint>
#include <string>
#include <vector>

#include "engine/exchange.h"
#include "engine/model.h"

namespace quorvane {

// The shape of a dataset as DataProp gives it.
struct DatasetShape {
  int series = 0;        // DataProp(1)
  int seasonality = 1;   // DataProp(2)
  int begin_year = 1;    // DataProp(3)
  int begin_period = 1;  // DataProp(4)
  int observations = 0;  // DataProp(5), retained values included
  int future = 0;        // DataProp(6)
  int retained = 0;      // DataProp(7)
  int forecasts = 0;     // DataProp(8)
};

// The request, checked and laid out for the modelling core.
struct PreparedRequest {
  int16_t error_code = 0;            // a catalogue code when the arrays are not usable
  std::string error_detail;          // what exactly was wrong, for the warnings
  DatasetShape shape;
  std::vector<std::string> names;    // the names as given, output series last
  std::vector<int> types;            // the types as given
  std::vector<double> output_all;    // the output series, all observations as given
  ModelingProblem problem;           // estimation sample, inputs, horizon, rules
  std::vector<std::string> warnings; // adjustments made (a horizon cut to the future values)
};

// Checks the arrays (codes 2180 to 2182, 2189, 2201, 2219, 2222) and builds the problem:
// the output series is the last of the layout; its last DataProp(7) observations are
// held out as retained values; the horizon is DataProp(8) (none when forecasting is off).
PreparedRequest PrepareRequest(const EngineArrays& request, const EngineRules& rules);

// Positions of the statistics in Doubles20 (1-based, as the contract counts).
namespace d20 {
constexpr int kVariance = 1;         // residual variance
constexpr int kRSquared = 2;
constexpr int kAic = 3;
constexpr int kBic = 4;
constexpr int kLogLikelihood = 5;
constexpr int kLambda = 6;           // Box-Cox power (1 none, 0 log)
constexpr int kMape = 7;             // in-sample MAPE, %
constexpr int kObservations = 8;     // observations used in estimation
constexpr int kSse = 9;              // error sum of squares
constexpr int kDegreesOfFreedom = 10;
constexpr int kParameters = 11;      // estimated parameters
constexpr int kLjungBoxQ = 12;
constexpr int kLjungBoxP = 13;
constexpr int kStdError = 14;        // residual standard deviation
constexpr int kConfidence = 15;      // confidence of the forecast limits, %
constexpr int kNormality = 16;       // Jarque-Bera statistic
constexpr int kNormalityP = 17;
constexpr int kLjungBoxLags = 18;
constexpr int kResidualAcfLimit = 19;
constexpr int kForecastsReturned = 20;
}  // namespace d20

// Positions in Integers20 (1-based).
namespace i20 {
constexpr int kLeadingLeftOut = 1;   // observations before the modelled segment
constexpr int kObservationsUsed = 2;
constexpr int kForecasts = 3;
constexpr int kInterventions = 4;    // interventions in Doubles745
constexpr int kP = 5, kD = 6, kQ = 7, kSeasonalP = 8, kSeasonalD = 9, kSeasonalQ = 10;
constexpr int kPeriod = 11;          // seasonal period of P, D, Q
constexpr int kInputsKept = 12;
constexpr int kConstant = 13;        // 1 when the model has a constant
}  // namespace i20

// Most interventions Doubles745 holds (five elements each).
constexpr int kMaxInterventions = kDoubles745 / 5;

// Fills the returned arrays from the model. `response` starts as a copy of the request;
// arrays the engine does not return keep what was given.
void FillResponse(const PreparedRequest& request, const ModelResult& result,
                  EngineArrays& response);

// Sets the error code and puts its text (when one is known) in the warnings.
void FillFailure(int16_t code, const std::string& text, EngineArrays& response);

}  // namespace quorvane
