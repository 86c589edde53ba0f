#pragma once
// What Finish leaves for the coming run: objective #1 and the presence or absence of the
// rules and model files the engine looks for.
#include <filesystem>
#include <string>

#include "rules/page_rules.h"
#include "rules/session.h"

namespace tessaly::rules {

namespace fs = std::filesystem;

struct ObjectiveChoice {
  ModelingType type = ModelingType::WithQvxRules;
  int condition_choice = 0;        // optConditions index
  int models_choice = 0;           // optModels index
  std::string preset_description;  // cboModelsinMemory text
  bool use_model = false;          // the explicit model is to be used in the run
};

struct [[nodiscard]] ObjectiveOutcome {
  bool go_from_usr = false;     // ENGINE.GO was made as a copy of ENGINE.USR
  std::string missing_source;   // a rules file that should have been copied and was missing
};

// Sets objective #1 (and its copies) and lays out ENGINE.GO and STARTMOD.123. Empties the
// model table and `saved_model_name` for rule-driven modelling.
ObjectiveOutcome SetModelingObjectives(const fs::path& folder, const ObjectiveChoice& choice,
                           RulesSession& session, std::string& saved_model_name);

// ALLOWMOD.QVX with "Modification Allowed" when allowed, removed otherwise.
void SetAllowModifications(const fs::path& folder, bool allow);

}  // namespace tessaly::rules
