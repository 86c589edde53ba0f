#pragma once
// What the rules subsystem keeps for one run: the rules text, the model table, the
// objectives the wizard leaves, and the flags the run reads after it. Each run's wizard
// binding holds its own, so two runs (or two tests) never share one.
#include "rules/model_file.h"
#include "rules/objectives.h"
#include "rules/rules_text.h"

namespace tessaly::rules {

struct RulesSession {
  RulesText rules;
  ModelTable models;
  Objectives objectives;
  bool validation_failed = false;   // raised by a failed check or load, cleared by the next
  bool wizard_cancelled = false;
  bool save_model = false;          // the final model is to be taken up after each run
  bool forecasting_enabled = true;
  int lambda_count = 0;
};

}  // namespace tessaly::rules
