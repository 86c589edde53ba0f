#include "rules/modeling_objectives.h"

#include "platform/paths.h"
#include "rules/rule_keys.h"
#include "rules/rules_files.h"
#include "rules/texts.h"

namespace tessaly::rules {

namespace {

// A rules copy with a missing source is a fault of the installation; the caller reports it.
void CopyRules(const fs::path& folder, std::string_view from, ObjectiveOutcome& out) {
  auto source = platform::FindNoCase(folder, from);
  if (!source || !platform::CopyFileOver(*source, folder / std::string(text::kEngineGo))) {
    out.missing_source = std::string(from);
    return;
  }
  if (from == text::kEngineUsr) out.go_from_usr = true;
}

}  // namespace

ObjectiveOutcome SetModelingObjectives(const fs::path& folder, const ObjectiveChoice& c,
                                       RulesSession& s, std::string& saved_model_name) {
  ObjectiveOutcome out;
  RemoveMarker(folder, text::kEngineGo);
  Objectives& o = s.objectives;
  if (c.type == ModelingType::WithUserRules || c.type == ModelingType::WithQvxRules) {
    o.Objective1() = kAutomatic;
    s.models.Clear();
    RemoveMarker(folder, text::kStartmod);
    saved_model_name.clear();
    if (c.condition_choice == 2) CopyRules(folder, text::kEngineUsr, out);
    if (c.condition_choice == 6) CopyRules(folder, text::kEngineCnd, out);
    return out;
  }
  if (c.type == ModelingType::IdentificationOnly) {
    o.Objective1() = kIdentificationOnly;
    o.copy1 = o.copy2 = kIdentificationOnly;
    return out;
  }
  if (c.models_choice == 0) {
    SetObjective1(c.preset_description, o);
    return out;
  }
  if (c.use_model) {
    o.Objective1() = kUserModel;
    s.rules.PutRule(key::kInitialModel, key::kStartmodInitialModel);
    SaveRules(folder, s.rules);
    if (c.condition_choice == 2) CopyRules(folder, text::kEngineUsr, out);
    if (c.condition_choice == 6 && platform::ExistsNoCase(folder, text::kEngineCnd))
      CopyRules(folder, text::kEngineCnd, out);
    return out;
  }
  o.Objective1() = kAutomatic;
  return out;
}

void SetAllowModifications(const fs::path& folder, bool allow) {
  if (allow)
    WriteMarker(folder, text::kAllowMod, text::kAllowModLine);
  else
    RemoveMarker(folder, text::kAllowMod);
}

}  // namespace tessaly::rules
