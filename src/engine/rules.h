#pragma once
// The modelling rules as the engine holds them after reading ENGINE.GO (or its built-in
// copy of the shipped ENGINE.CND). One field per rules key; the reader fills them in the
// file's line order and reports the first line it cannot read by that line's code.
#include <cstdint>
#include <string>
#include <vector>

namespace quorvane {

struct EngineRules {
  // Identification.
  int maximum_lead = 0;                 // 2015 MAXIMUM LEAD: leads allowed for type-3 inputs, 0..6
  bool difference_inputs = true;        // 2018 DIFFERENCE: apply the ARIMA's differencing to inputs
  bool constrain_causal = false;        // 2029 CONSTRAIN: causal coefficients constrained
  bool intermittent = false;            // INTERMITTENT: Croston-type modelling

  // Estimation.
  bool estimation_enabled = true;       // 2020 MODEL ESTIMATION
  double sse_change_pct = 0.1;          // 2024 SQUARES: convergence on % change in SSE
  double parameter_change_pct = 0.1;    // 2025 PARAMETER VALUES: convergence on % change in parameters
  int max_iterations = 20;              // 2026 ITERATIONS
  bool necessity = true;                // 2027 NECESSITY TEST:
  double necessity_level = 95.0;        // 2028 LEVEL FOR NECESSITY (confidence %, drop terms below it)
  bool sufficiency_stochastic = true;   // 2030 STOCHASTIC
  double sufficiency_ss_level = 90.0;   // 2031 (SS)
  bool sufficiency_deterministic = true;// 2035 DETERMINISTIC STRUCTURE: intervention detection
  double sufficiency_ds_level = 95.0;   // 2037 (DS): confidence for detected interventions
  int max_outliers = 5;                 // 2038 TO BE IDENTIFIED
  bool include_pulse = true;            // 2039 INCLUDE PULSE
  bool include_step = true;             // 2041 INCLUDE STEP
  int min_group_size = 8;               // 2042 OBSERVATIONS IN GROUP (constancy and variance tests)
  bool include_seasonal_pulse = true;   // 2043 INCLUDE SEASONAL PULSE
  bool include_local_trend = true;      // 2044 LOCAL TREND
  bool fixup_seasonal_dummies = false;  // 2047 FIXUP FOR FIXED EFFECTS
  std::vector<double> lambdas{1.0};     // 2050 / 2052: power transforms to evaluate (1 = none)
  bool variance_change = false;         // 2053 DISCRETE
  double variance_level = 90.0;         // 2054 LEVEL FOR VARIANCE
  int min_residuals_to_pool = 5;        // 2055 RESIDUALS TO POOL
  bool constancy = false;               // 2056 CONSTANCY OF PARAMETERS
  double constancy_level = 95.0;        // 2057 CONSTANCY TEST

  // Forecasting.
  bool forecasting_enabled = true;      // 2058 MODEL FORECASTING
  int forecasts = 0;                    // 2060 VALUES TO COMPUTE (the request's DataProp(8) wins when set)
  double forecast_confidence = 95.0;    // 2061 FOR THE FORECASTS (%)
  bool convert_positive = false;        // 2062 POSITIVE VALUES
  bool convert_integers = false;        // 2063 INTEGERS
  bool last_pulse_to_step = false;      // 2064 LAST OBSERVATION
  bool pulse_to_seasonal = false;       // 2065 PULSE TO SEASONAL

  // Simulation.
  bool simulation = false;              // 2066 SIMULATION ENABLED
  double noise_variance = 0.0;          // 2067 NOISE SERIES
  int seed = 0;                         // 2068 SEED VALUE (0: from the clock)

  // Models and pooling.
  bool store_model = false;             // 2112 STORE
  int groups = 1;                       // # OF GROUPS
  std::string initial_model;            // INITIAL MODEL: "" or "STARTMOD.123"

  // Lines the engine reads but that steer only what it displays.
  bool robust_acf = false;              // 2002 USE ROBUST AUTOCORRELATION FUNCTION
  std::vector<int> display_options;     // 2098..2107, in file order
  bool exception_report = false;        // 2121 PRINT EXCEPTION REPORT

  // Control files of the working folder.
  bool no_trend = false;                // NOTREND.QVX present: no local time trends
  bool allow_modifications = false;     // ALLOWMOD.QVX present
  bool save_model_file = false;         // SAVEMOD.QVX present
  std::vector<int> group_sizes;         // GROUPLST.QVX: sample size of each pooled group
};

}  // namespace quorvane
