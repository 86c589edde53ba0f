#pragma once
// The parts of pooled modelling that its identification and its fitting share: the model
// as columns over the groups, the data split into groups, and the input the fit works on.
// Internal to the modelling core.
#include <cstdint>
#include <string>
#include <vector>

#include "engine/model.h"
#include "engine/model/arma.h"
#include "engine/model/pooled.h"

namespace quorvane::pooled_parts {

inline constexpr double kMissing = 99999999999.0;
inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr int16_t kCodeEstimation = 3;
inline constexpr int16_t kCodeModelMalformed = 2190;
// Half the 95 % point of a chi-square with one degree of freedom: the gain in likelihood a
// power transform must show.
inline constexpr double kTransformGain = 1.92;
inline constexpr int kMinForTransform = 30;
inline constexpr const char* kHeadPool = "Pooled cross-section";
inline constexpr const char* kRedundancyText = " TESSALY HAS IDENTIFIED A LINEAR REDUNDANCY. DELETE REDUNDANT VARIABLES.";

// One regression column, over each group's observations (the last group's followed by
// the forecast periods).
struct PooledColumn {
  std::string term;
  std::string kind;             // "input", "trend", "fourier", "seasonal"
  std::string input;
  int lag = 0;
  double denominator = 0.0;
  std::vector<std::vector<double>> values;  // per group; NaN before a lag reaches the data
};

struct PooledModel {
  std::string name;             // "" for automatic modelling, else the preset's or "USER MODEL"
  double lambda = 1.0;
  ArimaOrders noise;
  std::vector<PooledColumn> columns;
  int leading = 0;              // observations of each group before its lags reach the data
  bool has_start = false;
  ArmaCoefficients start;
};

// The data of the run, split into its groups.
struct PooledData {
  std::vector<int> sizes;                  // estimation sample of each group
  std::vector<int> offsets;                // first observation of each group in the stack
  std::vector<std::vector<double>> y;      // each group, missing values filled
  int horizon = 0;
};

// The transformed, scaled groups and columns the model is fitted on (each group from its
// `leading` observation on).
struct FitInput {
  std::vector<std::vector<double>> y;  // each group from `leading` on, on the scale of the data
  std::vector<std::vector<double>> z;
  GroupColumns X;
  double lambda = 1.0;
  double scale = 1.0;
  int leading = 0;
};

// Whether the pooled regression has columns.
inline bool HasColumns(const GroupColumns& X) { return !X.empty() && !X[0].empty(); }

// The groups transformed and scaled, each from the model's `leading` observation on.
FitInput MakeFitInput(const PooledData& d, const PooledModel& m);
// The preset's structure in its ARIMA and regression form (trends and seasonal terms counted
// from each group's start). False, with the code in r, when it does not suit the groups.
bool PresetStructure(const ModelingProblem& problem, const PooledData& d, PooledModel& m, std::vector<Note>& notes,
                     ModelResult& r);

// The user's model of STARTMOD.123: its noise and its input terms. False, with 2190 in r,
// when it cannot be used on the groups.
bool UserStructure(const ModelingProblem& problem, const PooledData& d, PooledModel& m, std::vector<Note>& notes,
                   ModelResult& r);

// Automatic identification on the groups together: inputs at lag 0, the transform, the
// differencing and the ARMA orders.
void IdentifyStructure(const ModelingProblem& problem, const PooledData& d, int period, const ConvergenceCriteria& crit,
                       PooledModel& m, std::vector<Note>& notes, std::vector<std::string>& warnings);

}  // namespace quorvane::pooled_parts
