#pragma once
// Each wizard page's pair of operations: `_Get` reads the rules into the page's fields,
// `_put` writes the fields back into the rules. Reading takes values as the file holds
// them; writing forms each value in its fixed width (see rule_values.h).
#include "rules/pages.h"
#include "rules/rules_text.h"

namespace tessaly::rules {

// The modelling types, in the order of the radio group on the first page.
enum class ModelingType : int {
  WithUserRules = 0,           // "2. With User  Rules"
  ExplicitModelUserRules = 1,  // "4. Explicit Model With User Rules"
  WithQvxRules = 2,            // "1. With QVX Rules"
  ImplicitCanned = 3,          // "3. Implicit Canned Model With QVX Rules"
  IdentificationOnly = 4,      // "5. Identification Only"
  MonteCarlo = 5,              // "6. Monte Carlo Simulation With Explicit Model"
};

void AutoModelID_get(const RulesText& rules, AutoModelIdPage& page);
// Writes the keys that the modelling type and the number of series in the dataset call for.
void AutoModelID_put(RulesText& rules, const AutoModelIdPage& page, ModelingType type,
                     int series_count);

// Estimation off clears and disables the whole page but its enable box.
void ModelEstimation_Get(const RulesText& rules, ModelEstimationPage& page);
// With estimation off only the enable flag is written: the page's cleared fields would
// otherwise blank values the engine must read.
void ModelEstimation_put(RulesText& rules, const ModelEstimationPage& page);

// With zero forecasts the rules are not read: a note is shown and the page is cleared
// and disabled.
void ModelForecasting_Get(const RulesText& rules, ModelForecastingPage& page, int forecasts);
void ModelForecasting_put(RulesText& rules, const ModelForecastingPage& page, int forecasts);

void Sim_Get(const RulesText& rules, SimulationPage& page);
void Sim_Put(RulesText& rules, const SimulationPage& page);

// Returns the count of lambda fields that hold a value.
int Lambda_Est_Get(const RulesText& rules, LambdaPage& page);
// Returns the count written to "EVALUATE IN EST".
int Lambda_est_Put(RulesText& rules, LambdaPage& page);

// The count of groups: the leading group fields that hold a size.
int GroupCount(const GroupPage& page);
void Group_PC_Put(RulesText& rules, const GroupPage& page);

// The display options are not stored: these keep their names and do nothing.
inline void Diagnostics_Get() {}
inline void Diagnostics_put() {}
inline void Estimation_Get() {}
inline void Estimation_put() {}
inline void IDInfo_GET() {}
inline void Idinfo_put() {}
inline void Forecastingetc_Get() {}
inline void Forecastingetc_put() {}
inline void Lambda_Id_Put() {}
inline void LoadPresetConditions() {}

// ---- Page states driven by the enable boxes --------------------------------------------

// The values a field takes when its enable box is pressed.
struct EstimationDefaults {
  static constexpr const char* kSquares = "00.1";
  static constexpr const char* kParameterValues = "00.1";
  static constexpr const char* kIterations = "20";
  static constexpr const char* kSS = "95.0";
  static constexpr const char* kDS = "90.0";
  static constexpr const char* kOutliers = "5";
  static constexpr const char* kObservationsInGroup = "8";
  static constexpr const char* kNecessity = "90.0";
  static constexpr const char* kResidualsToPool = "5";
  static constexpr const char* kVariance = "95.0";
  static constexpr const char* kConstancy = "99.0";
};

// Estimation turned off: every field but the enable box cleared and disabled.
void ClearEstimationPage(ModelEstimationPage& page);
// Estimation turned on: fields enabled; with `fill_defaults`, empty fields take the defaults.
void EnableEstimationPage(ModelEstimationPage& page, bool fill_defaults);
void ClearForecastingPage(ModelForecastingPage& page, bool disable_enable_box);
void ClearSimulationPage(SimulationPage& page);

}  // namespace tessaly::rules
