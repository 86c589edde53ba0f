// The front-end's rules file (ENGINE.USR, an archive, ENGINE.CND): read, every wizard page
// filled from it, checked as the wizard checks it, and written back through its rules.
#include "fuzz_support.h"
#include "rules/page_rules.h"
#include "rules/rules_files.h"
#include "rules/rules_text.h"
#include "rules/validation.h"

using namespace tessaly;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const fuzz::fs::path& dir = fuzz::Scratch();
  fuzz::WriteInput(dir / "ENGINE.USR", data, size);
  rules::RulesText text;
  bool failed = false;
  rules::LoadRules(dir, "Present Rules", text, failed);

  rules::AutoModelIdPage auto_id;
  rules::ModelEstimationPage estimation;
  rules::ModelForecastingPage forecasting;
  rules::SimulationPage simulation;
  rules::LambdaPage lambdas;
  rules::GroupPage groups;
  rules::AutoModelID_get(text, auto_id);
  rules::ModelEstimation_Get(text, estimation);
  rules::ModelForecasting_Get(text, forecasting, 12);
  rules::Sim_Get(text, simulation);
  rules::Lambda_Est_Get(text, lambdas);

  rules::ValidateAutoModelID(auto_id, 3);
  rules::ValidateModelEstimation(estimation, groups, lambdas, false);
  rules::ValidateModelForecasting(forecasting);
  rules::ValidateSimulation(simulation);
  rules::ValidateLambdaEst(lambdas);

  rules::AutoModelID_put(text, auto_id, rules::ModelingType::WithUserRules, 3);
  rules::ModelEstimation_put(text, estimation);
  rules::ModelForecasting_put(text, forecasting, 12);
  rules::Sim_Put(text, simulation);
  rules::Lambda_est_Put(text, lambdas);
  return 0;
}
