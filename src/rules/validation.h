#pragma once
// The checks each wizard page makes before Next or Finish moves on. A check that fails
// shows its box (text, two line ends, title), names the field to select and focus, and
// the caller stays on the page. Checks stop at the first failure.
#include <string>

#include "rules/pages.h"

namespace tessaly::rules {

struct Validation {
  bool failed = false;
  std::string field;  // the control to select and focus, e.g. "txtModelEst4"
  explicit operator bool() const { return !failed; }
};

Validation ValidateAutoModelID(const AutoModelIdPage& page, int series_count);
// Raises the group page's tab to the one holding the field that failed.
Validation ValidateGroupPC(GroupPage& page, int observations);
Validation ValidateLambdaEst(const LambdaPage& page);
// `tree_shown`: the option tree (with "Multiple Groups/Panels") is the current page.
Validation ValidateModelEstimation(ModelEstimationPage& page, GroupPage& groups,
                                   LambdaPage& lambdas, bool tree_shown);
Validation ValidateModelForecasting(const ModelForecastingPage& page);
Validation ValidateSimulation(const SimulationPage& page);
inline Validation ValidateDiagnostics() { return {}; }

// The model pages; a passed page has coefficients without a decimal point given ".0".
Validation ValidateStartmod(StartmodPage& page);
Validation ValidateInputmod(InputmodPage& page);

// The last of the display pages checks that the run has something to do: automatic
// modelling with a preset choice and estimation, simulation and forecasting all off, or an
// explicit model under the rules in memory with all three off. Objective #1 of 91 passes.
// No page of the present wizard leads there; the check waits for the display options.
Validation CheckSomethingToDo(int modeling_type, int models_choice, int conditions_choice,
                              bool estimation, bool simulation, bool forecasting, int objective1);

// The number of group fields on one tab of the group page.
inline constexpr int kGroupsPerTab = 10;

}  // namespace tessaly::rules
