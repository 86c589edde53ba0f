#pragma once
// The wizard's pages as plain data: each control the logic reads or sets is a field with
// its value and its enabled and visible state, named as on the form, so a desktop form
// binds them one to one and tests read them directly.
#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace tessaly::rules {

struct TextField {
  std::string text;
  bool enabled = true;
  bool visible = true;
};

struct CheckField {
  bool value = false;
  bool enabled = true;
  bool visible = true;
};

// Sets a check box and its state in one go.
inline void SetCheck(CheckField& f, bool value, bool enabled) {
  f.value = value;
  f.enabled = enabled;
}

// An answer to one of the "Yes"/"No" questions of the option tree.
enum class YesNo { None, Yes, No };

struct AutoModelIdPage {
  TextField txtAutoModelID1;   // MAXIMUM LEAD
  CheckField chkAutoModelID1;  // INTERMITTENT
  CheckField chkAutoModelID2;  // DIFFERENCE
  CheckField chkAutoModelID3;  // CONSTRAIN
};

struct ModelEstimationPage {
  CheckField chkModelEst1;   // MODEL ESTIMATION
  TextField txtModelEst1;    // SQUARES
  TextField txtModelEst2;    // PARAMETER VALUES
  TextField txtModelEst3;    // ITERATIONS
  CheckField chkModelEst11;  // NECESSITY TEST:
  TextField txtModelEst9;    // LEVEL FOR NECESSITY
  CheckField chkModelEst2;   // STOCHASTIC
  TextField txtModelEst4;    // (SS)
  CheckField chkModelEst3;   // DETERMINISTIC STRUCTURE
  TextField txtModelEst5;    // (DS)
  TextField txtModelEst6;    // TO BE IDENTIFIED
  CheckField chkModelEst5;   // INCLUDE PULSE
  CheckField chkModelEst7;   // INCLUDE STEP
  TextField txtModelEst7;    // OBSERVATIONS IN GROUP
  CheckField chkModelEst9;   // INCLUDE SEASONAL PULSE
  CheckField chkModelEst8;   // LOCAL TREND
  CheckField chkModelEst15;  // FIXUP FOR FIXED EFFECTS
  CheckField chkModelEst13;  // DISCRETE
  TextField txtModelEst10;   // LEVEL FOR VARIANCE
  TextField txtModelEst11;   // RESIDUALS TO POOL
  CheckField chkModelEst14;  // CONSTANCY OF PARAMETERS
  TextField txtModelEst12;   // CONSTANCY TEST
};

// The pooled cross-section: up to 100 group sizes, shown in tabs.
struct GroupPage {
  std::array<TextField, 100> txtGroup_PC;
  int current_tab = 0;
  YesNo answer = YesNo::None;  // "Groups In Pooled Cross-Section T/S ?"
  std::string visited;         // "True" or empty
  int group_count = 0;
};

struct LambdaPage {
  std::array<TextField, 10> txtLambda_Est;
  YesNo answer = YesNo::None;  // "Enter Lambda Values?"
  std::string visited;         // "True" or empty
  bool labels_visible = true;
};

struct ModelForecastingPage {
  CheckField chkModelForecasting1;  // MODEL FORECASTING
  TextField txtModelForecasting2;   // FOR THE FORECASTS
  CheckField chkModelForecasting3;  // POSITIVE VALUES
  CheckField chkModelForecasting4;  // INTEGERS
  CheckField chkModelForecasting5;  // LAST OBSERVATION
  CheckField chkModelForecasting6;  // PULSE TO SEASONAL
};

struct SimulationPage {
  CheckField chkSimulation1;  // SIMULATION ENABLED
  TextField txtSimulation1;   // NOISE SERIES
  TextField txtSimulation2;   // SEED VALUE
};

// The noise model of the output series (row 0 of the model table).
struct StartmodPage {
  std::string title;
  TextField txtStartmod1;   // Constant
  TextField txtStartmod2;   // Lambda
  TextField txtStartmod3;   // # Of Differencing Operators
  TextField txtStartmod4;   // Back Order Power Of Differencing Operators
  TextField txtStartmod5;   // # Of AR Polynomials
  TextField txtStartmod6;   // # Of MA Polynomials
  TextField txtStartmod7;   // # Of Parameters In Each AR Polynomials
  TextField txtStartmod8;   // Back Order Powers For All AR Polynomials
  TextField txtStartmod9;   // Coefficents For All AR Polynomials
  TextField txtStartmod10;  // # Of Parameters In Each MA Polynomial
  TextField txtStartmod11;  // Back Order Powers For All MA Polynomials
  TextField txtStartmod12;  // Coefficients For All MA Polynomials
  TextField txtStartmod13;  // count of series in the model (hidden)
};

// The transfer function of one input series (rows 1 up).
struct InputmodPage {
  std::string title;
  std::string series_name;
  int series = 0;           // 1-based position of the input in the dataset
  TextField txtInputmod13;  // count of series in the model
  TextField txtInputmod2;   // Lambda
  TextField txtInputmod3;   // # Of Differencing Operators
  TextField txtInputmod4;   // Back Order Power Of Differencing Operators
  TextField txtInputmod5;   // # Of Denominator Polynomials
  TextField txtInputmod6;   // # Of NumeratorPolynomials
  TextField txtInputmod7;   // # Of Parameters In Each Denominator Polynomials
  TextField txtInputmod8;   // Back Order Powers For All Denominator Polynomials
  TextField txtInputmod9;   // Coefficients For All Denominator Polynomials
  TextField txtInputmod10;  // # Of Parameters In Each Numerator Polynomial
  TextField txtInputmod11;  // Back Order Powers for all Numerator Polynomials
  TextField txtInputmod12;  // Coefficients For All Numerator Polynomials
  // "Copy Parameters To:  ": the series names and whether each is checked.
  std::vector<std::pair<std::string, bool>> copy_to;
};

struct ReviewEditUsePage {
  CheckField chkModelOptions1;  // Review/Edit Model Parameters
  CheckField chkModeOptions2;   // Use Model To Process Series, Review/Edit Conditions
};

// A drop-down list: its entries and the text it shows.
struct ComboField {
  std::vector<std::string> items;
  std::string text;
  bool enabled = true;
  bool visible = true;
};

// The Finish page's check boxes (save conditions, save models, initial and final model);
// the modelling type chosen earlier in the wizard decides which of them are enabled.
struct FinishPage {
  CheckField chkSaveConditions;
  CheckField chkSaveModels;
  CheckField chkInitialModel;
  CheckField chkFinalModel;
};

}  // namespace tessaly::rules
