#pragma once
// What the modelling core is given and what it gives back. The engine process (request,
// stage files, arrays, report files) sits on one side of this header; the numerics
// (transforms, identification, estimation, diagnosis, forecasting) on the other.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "engine/rules.h"

namespace quorvane {

// One input (causal) series of a dataset.
struct InputSeries {
  std::string name;
  int type = 1;                 // DataTypes: 1, 2 or 3 (3 allows leads)
  std::vector<double> history;  // the estimation sample, aligned with the output series
  std::vector<double> future;   // future values (types 1 to 3), used as given
  std::vector<double> retained; // values of the retained periods
};

// One polynomial of a model file: the back-order powers of its terms and their coefficients.
struct Polynomial {
  std::vector<int> powers;
  std::vector<double> coefficients;
};

// One block of a model file (STARTMOD.123, PASS2MOD.123). For the noise block `first` are
// the AR polynomials and `second` the MA ones (regression signs: w(t) = sum ar w(t-k) + a(t)
// + sum ma a(t-k)); for an input block, the denominator and the numerator polynomials
// (v(t) = sum den v(t-k) + sum num x(t-k); a negative power is a lead).
struct ModelBlock {
  std::string name;
  bool has_constant = false;  // noise block only
  double constant = 0.0;
  double lambda = 1.0;
  std::vector<int> differencing;  // back-order power of each differencing operator
  std::vector<Polynomial> first;
  std::vector<Polynomial> second;
};

// The problem handed to the modelling core: one output series, its inputs, the rules.
struct ModelingProblem {
  std::string output_name;
  std::vector<double> y;         // the estimation sample (retained values already held out)
  std::vector<double> retained;  // actuals of the held-out periods, compared after the fit
  int seasonality = 1;           // periods per major period (DataProp(2))
  int begin_year = 1;            // DataProp(3)
  int begin_period = 1;          // DataProp(4)
  int horizon = 0;               // forecasts to compute
  int objective = 0;             // objective #1: 0 automatic, 1-15/51/52 presets, 97, 99
  std::vector<InputSeries> inputs;
  EngineRules rules;
  // Objective 99: the user's model (STARTMOD.123), the noise block first, then the inputs.
  std::vector<ModelBlock> start_model;
};

// Where the work stands; the engine process maps these to STAGE1.123 .. STAGE4.123.
enum class Stage { DataPreparation = 1, Identification = 2, Estimation = 3, Diagnosis = 4 };

// Called when a stage begins. Returning false asks the core to stop (a cancel was found);
// the core then returns with `cancelled` set as soon as it can.
using StageCallback = std::function<bool(Stage)>;

// One estimated coefficient.
struct Coefficient {
  std::string term;      // human name: "CONSTANT", "AR(1)", "SAR(12)", "MA(1)", "PULSE 1899/1", "X1 LAG 2"
  std::string kind;      // "constant", "ar", "ma", "sar", "sma", "input", "intervention", "trend"
  int lag = 0;           // lag (or period of the polynomial term)
  double value = 0.0;
  double std_error = 0.0;
  double t_value = 0.0;
  double p_value = 1.0;
};

// A detected intervention (written to Doubles745 and the reports).
struct Intervention {
  int type = 1;          // 1 pulse, 2 level shift, 3 seasonal pulse, 4 local trend, 5 dynamic pulse
  int observation = 0;   // 1-based observation number in the series as given
  int major = 0;         // year / major period of that observation
  int minor = 0;         // period / minor period
  double impact = 0.0;
  double t_value = 0.0;
};

// A change found by a diagnostic test: of the parameters (PARCHRPT.CSV) or of the residual
// variance (VARCHRPT.CSV).
struct DiagnosticChange {
  int observation = 0;   // 1-based observation in the series as given where the change begins
  double before = 0.0;   // variance changes: the residual variance before and after
  double after = 0.0;
  double statistic = 0.0;
  double critical = 0.0; // parameter changes: the F statistic and the value it had to pass
};

// A line of the identification story, for DETAILS.HTM.
struct Note {
  std::string heading;
  std::string text;
};

// Monte Carlo simulation of the fitted model over the forecast periods ("SIMULATION
// ENABLED"): what was drawn and what the paths gave, by horizon, on the series' own scale.
struct SimulationSummary {
  bool done = false;
  int paths = 0;
  uint64_t seed = 0;              // the seed used
  bool seed_from_clock = false;   // the rules gave 0: the seed was taken from the clock
  double noise_variance = 0.0;    // innovation variance on the model's (transformed) scale
  bool variance_estimated = false;// the rules gave none: the fit's estimated variance
  double coverage = 95.0;         // percent, of the limits
  std::vector<double> mean, median, sd, lower, upper;
  std::vector<double> sample_path;// one simulated future, as an example
};

// A finished model with everything the reports need.
struct ModelResult {
  int16_t error_code = 0;       // 0 success; else a code of the catalogue
  bool cancelled = false;       // stopped by KILLQUOR.QVX (reported as code 21)

  // The model.
  double lambda = 1.0;          // Box-Cox power used (1 = none, 0 = log)
  int d = 0, D = 0;             // regular and seasonal differencing
  int p = 0, q = 0, P = 0, Q = 0;
  int period = 1;               // seasonal period used for P, D, Q
  bool has_constant = false;
  std::vector<Coefficient> coefficients;
  std::vector<Intervention> interventions;
  std::vector<std::string> inputs_kept;   // names of inputs left in the model, in order
  std::string equation;                   // the model as one equation (EQUATION.TXT)
  std::string description;                // short name, e.g. "ARIMA(0,1,1)(0,1,1)12"
  int leading_left_out = 0;               // observations before the modelled segment (Integers20(1))

  // In-sample figures, one per observation of `y` (MissingValue where there is no fit).
  std::vector<double> fitted;
  std::vector<double> residuals;
  std::vector<double> cleansed;           // y less the effects of the interventions

  // Forecasts.
  std::vector<double> forecasts;
  std::vector<double> lower;
  std::vector<double> upper;

  // Statistics.
  int observations = 0;         // used in estimation
  int parameters = 0;           // estimated parameters
  int degrees_of_freedom = 0;
  double sse = 0.0;
  double variance = 0.0;        // residual variance
  double r_squared = 0.0;
  double aic = 0.0, bic = 0.0, loglik = 0.0;
  double mape = 0.0;            // in-sample MAPE (%)
  double ljung_box_q = 0.0, ljung_box_p = 1.0;
  int ljung_box_lags = 0;
  double normality_stat = 0.0, normality_p = 1.0;  // Jarque-Bera
  std::vector<double> residual_acf;       // lags 1..k
  double residual_acf_limit = 0.0;        // 2 / sqrt(n)

  std::vector<DiagnosticChange> parameter_changes;
  std::vector<DiagnosticChange> variance_changes;

  std::vector<Note> notes;                // identification and diagnosis steps, in order
  std::vector<std::string> warnings;

  SimulationSummary simulation;           // filled when the rules ask for simulation
};

// Automatic modelling (and, as they arrive, the presets and the user's model) of one problem.
ModelResult FitAndForecast(const ModelingProblem& problem, const StageCallback& on_stage);

}  // namespace quorvane
