// The wizard's pages as a person meets them: clicks on options and ticks, what a text
// field does on focus and on leaving it, and the conditions frames.
#include "rules/wizard.h"

#include "dataset/asc_dataset.h"
#include "platform/dialogs.h"
#include "platform/numfmt.h"
#include "platform/paths.h"
#include "platform/textfile.h"
#include "rules/model_file.h"
#include "rules/modeling_objectives.h"
#include "rules/objectives.h"
#include "rules/rule_keys.h"
#include "rules/rule_values.h"
#include "rules/rules_files.h"
#include "rules/saved_models.h"
#include "rules/texts.h"
#include "rules/validation.h"
#include "rules/wizard_detail.h"

namespace tessaly::rules {

using wizard_detail::Is;

// ---- Clicks ---------------------------------------------------------------------------------

void RulesWizard::ClickModelingType(int index) {
  modeling_type = index;
  bool agg = ctx_.aggregation_run;
  auto trend_off = [&] { cboLocalTimeTrend = {false, cboLocalTimeTrend.enabled, false}; };
  auto clear_copies = [&] { session_.objectives.copy1 = session_.objectives.copy2 = 0; };
  switch (index) {
    case 0:
      finish.chkSaveConditions.enabled = !agg;
      finish.chkSaveModels.enabled = !agg;
      trend_off();
      clear_copies();
      break;
    case 1:
      SetCheck(finish.chkSaveConditions, false, true);
      SetCheck(finish.chkSaveModels, false, true);
      trend_off();
      clear_copies();
      break;
    case 2:
      SetCheck(finish.chkSaveConditions, false, false);
      SetCheck(finish.chkSaveModels, false, !agg);
      cboLocalTimeTrend = {true, true, true};
      ClickConditions(0);
      clear_copies();
      break;
    case 3:
      SetCheck(finish.chkSaveConditions, false, false);
      SetCheck(finish.chkSaveModels, false, true);
      trend_off();
      optModels0_caption = std::string(ImplicitModelCaption(ctx_.dataset.Seasonality()));
      break;
    case 4:
      SetCheck(finish.chkSaveConditions, false, false);
      SetCheck(finish.chkSaveModels, false, false);
      trend_off();
      break;
    case 5:
      SetCheck(finish.chkSaveConditions, false, true);
      SetCheck(finish.chkSaveModels, false, true);
      trend_off();
      break;
  }
  SetCheck(finish.chkInitialModel, false, false);
  SetCheck(finish.chkFinalModel, false, false);
}

void RulesWizard::ClickConditions(int index) {
  conditions = index;
  txtConditions1 = std::string(text::kConditionExplanations[index]);
  if (index == 2) {
    cboEditConditions.enabled = true;
    cboEditConditions.text = std::string(text::kPresentRules);
    ConditionsList list = Check4ExistingConditions(ctx_.app_folder, ctx_.project_stem);
    cboEditConditions.items = list.items;
    archive_in_use_ = list.archive_in_use;
    next_archive_ = list.next_archive;
  } else {
    cboEditConditions.enabled = false;
  }
}

void RulesWizard::ReloadPresets() {
  cboModelsinMemory.items =
      LoadModelingOptions(ctx_.dataset.Seasonality(), ctx_.dataset.SeriesCount());
  cboModelsinMemory.text = std::string(text::kSelectModel);
  std::string named = DescriptionOf(session_.objectives.Objective1(), ctx_.dataset.Seasonality(),
                                    ctx_.dataset.SeriesCount());
  if (!named.empty()) cboModelsinMemory.text = named;
}

void RulesWizard::ClickModels(int index) {
  models = index;
  switch (index) {
    case 0:
      txtModels = std::string(text::kModelExplainPreset);
      cboModelsinMemory.enabled = true;
      ReloadPresets();
      chkAllowModifications.visible = true;
      cboEditModel.text = std::string(text::kNewModel);
      cboEditModel.enabled = false;
      break;
    case 1:
      txtModels = std::string(text::kModelExplainIdentification);
      cboModelsinMemory.enabled = false;
      cboModelsinMemory.text = std::string(text::kSelectModel);
      cboEditModel.enabled = false;
      cboEditModel.text = std::string(text::kNewModel);
      chkAllowModifications = {false, chkAllowModifications.enabled, false};
      simulation.chkSimulation1.value = false;
      break;
    case 2:
      txtModels = std::string(text::kModelExplainExplicit);
      cboModelsinMemory.enabled = false;
      chkAllowModifications = {false, chkAllowModifications.enabled, false};
      use_model_ = false;
      saved_model_name_.clear();
      cboEditModel.items = Check4ExistingInitialModels(ctx_.app_folder, ctx_.DatasetStem());
      cboEditModel.enabled = true;
      break;
  }
}

void RulesWizard::SelectEditConditions(const std::string& entry) { cboEditConditions.text = entry; }
void RulesWizard::SelectPreset(const std::string& description) { cboModelsinMemory.text = description; }
void RulesWizard::SelectEditModel(const std::string& entry) { cboEditModel.text = entry; }

void RulesWizard::SetEstimationEnabled(bool on) {
  if (on)
    EnableEstimationPage(estimation, true);
  else
    ClearEstimationPage(estimation);
  ApplyPoolingShape();
}

void RulesWizard::SetForecastingEnabled(bool on) {
  auto& f = forecasting;
  if (!on) {
    ClearForecastingPage(f, false);
    return;
  }
  f.chkModelForecasting1.value = true;
  for (CheckField* c : {&f.chkModelForecasting3, &f.chkModelForecasting4, &f.chkModelForecasting5,
                        &f.chkModelForecasting6})
    c->enabled = true;
  f.txtModelForecasting2.enabled = true;
  if (IsBlank(f.txtModelForecasting2.text)) f.txtModelForecasting2.text = "95.0";
}

void RulesWizard::SetSimulationEnabled(bool on) {
  auto& s = simulation;
  if (!on) {
    ClearSimulationPage(s);
    return;
  }
  s.chkSimulation1.value = true;
  s.txtSimulation1.enabled = s.txtSimulation2.enabled = true;
  if (IsBlank(s.txtSimulation1.text)) s.txtSimulation1.text = "1.0";
  if (IsBlank(s.txtSimulation2.text)) s.txtSimulation2.text = "0";
}

void RulesWizard::SetSaveModels(bool on) {
  finish.chkSaveModels.value = on;
  if (!on) {
    SetCheck(finish.chkInitialModel, false, false);
    SetCheck(finish.chkFinalModel, false, false);
    return;
  }
  bool only_final = Is(modeling_type, {0, 2}) || models == 0;
  if (only_final) {
    SetCheck(finish.chkFinalModel, true, true);
    SetCheck(finish.chkInitialModel, false, false);
  } else {
    SetCheck(finish.chkInitialModel, false, true);
    SetCheck(finish.chkFinalModel, false, true);
  }
}

void RulesWizard::ShowTree() {
  Show(SubPage::ModelEstimation1);
  tree_node_ = 0;
  page_title_ = std::string(text::kModelEstimation1Title);
}

void RulesWizard::SelectTreeNode(int node) {
  if (node >= 0 && node < static_cast<int>(text::kTreeKeys.size())) tree_node_ = node;
}

void RulesWizard::AnswerGroups(YesNo answer) {
  groups.answer = answer;
  if (answer == YesNo::Yes && ctx_.pooling_run) {
    // The stack's groups are all of one size: only their number is asked.
    if (ctx_.ask_group_count)
      if (auto count = ctx_.ask_group_count(ctx_.dataset.Observations())) pooled_groups = *count;
    return;
  }
  if (answer == YesNo::No && ctx_.pooling_run) pooled_groups = 0;
  if (answer == YesNo::Yes) {
    Show(SubPage::GroupPC);
    buttons_.next = true;
  }
}

void RulesWizard::AnswerLambdas(YesNo answer) {
  lambdas.answer = answer;
  if (answer == YesNo::Yes) {
    lambdas.labels_visible = true;
    Show(SubPage::LambdaEst);
    page_title_ = std::string(text::kLambdaTitle);
  }
}

// ---- Field behaviour --------------------------------------------------------------------------

namespace {

const char* FormatOf(const std::string& name) {
  static const std::pair<const char*, const char*> formats[] = {
      {"txtModelEst1", "00.0"},  {"txtModelEst2", "00.0"},  {"txtModelEst4", "00.0"},
      {"txtModelEst5", "00.0"},  {"txtModelEst9", "00.0"},  {"txtModelEst10", "00.0"},
      {"txtModelEst12", "00.0"}, {"txtModelEst3", "###0"},  {"txtModelEst6", "###0"},
      {"txtModelEst7", "###0"},  {"txtModelEst11", "###0"}, {"txtAutoModelID1", "###0"},
      {"txtModelForecasting2", "##.0"}, {"txtSimulation1", "##.0"}, {"txtSimulation2", "###0"},
      {"txtStartmod2", "#.00;-#.0"}, {"txtInputmod2", "#.00;-#.0"}};
  for (auto [field, mask] : formats)
    if (name == field) return mask;
  if (name.rfind("txtLambda_Est(", 0) == 0) return "0.00;-0.0";
  if (name.rfind("txtGroup_PC(", 0) == 0) return "###0";
  return nullptr;
}

int IndexIn(const std::string& name, const std::string& prefix) {
  if (name.rfind(prefix, 0) != 0) return -1;
  return std::atoi(name.c_str() + prefix.size());
}

}  // namespace

TextField* RulesWizard::FindField(const std::string& name) {
  auto& e = estimation;
  const std::pair<const char*, TextField*> fields[] = {
      {"txtAutoModelID1", &auto_model_id.txtAutoModelID1},
      {"txtModelEst1", &e.txtModelEst1},   {"txtModelEst2", &e.txtModelEst2},
      {"txtModelEst3", &e.txtModelEst3},   {"txtModelEst4", &e.txtModelEst4},
      {"txtModelEst5", &e.txtModelEst5},   {"txtModelEst6", &e.txtModelEst6},
      {"txtModelEst7", &e.txtModelEst7},   {"txtModelEst9", &e.txtModelEst9},
      {"txtModelEst10", &e.txtModelEst10}, {"txtModelEst11", &e.txtModelEst11},
      {"txtModelEst12", &e.txtModelEst12},
      {"txtModelForecasting2", &forecasting.txtModelForecasting2},
      {"txtSimulation1", &simulation.txtSimulation1}, {"txtSimulation2", &simulation.txtSimulation2},
      {"txtStartmod1", &startmod.txtStartmod1},   {"txtStartmod2", &startmod.txtStartmod2},
      {"txtStartmod3", &startmod.txtStartmod3},   {"txtStartmod4", &startmod.txtStartmod4},
      {"txtStartmod5", &startmod.txtStartmod5},   {"txtStartmod6", &startmod.txtStartmod6},
      {"txtStartmod7", &startmod.txtStartmod7},   {"txtStartmod8", &startmod.txtStartmod8},
      {"txtStartmod9", &startmod.txtStartmod9},   {"txtStartmod10", &startmod.txtStartmod10},
      {"txtStartmod11", &startmod.txtStartmod11}, {"txtStartmod12", &startmod.txtStartmod12},
      {"txtInputmod2", &inputmod.txtInputmod2},   {"txtInputmod3", &inputmod.txtInputmod3},
      {"txtInputmod4", &inputmod.txtInputmod4},   {"txtInputmod5", &inputmod.txtInputmod5},
      {"txtInputmod6", &inputmod.txtInputmod6},   {"txtInputmod7", &inputmod.txtInputmod7},
      {"txtInputmod8", &inputmod.txtInputmod8},   {"txtInputmod9", &inputmod.txtInputmod9},
      {"txtInputmod10", &inputmod.txtInputmod10}, {"txtInputmod11", &inputmod.txtInputmod11},
      {"txtInputmod12", &inputmod.txtInputmod12}};
  for (auto [field, ptr] : fields)
    if (name == field) return ptr;
  int i = IndexIn(name, "txtLambda_Est(");
  if (i >= 0 && i < 10) return &lambdas.txtLambda_Est[i];
  i = IndexIn(name, "txtGroup_PC(");
  if (i >= 0 && i < 100) return &groups.txtGroup_PC[i];
  return nullptr;
}

void RulesWizard::FieldGotFocus(const std::string& name) {
  TextField* f = FindField(name);
  if (!f) return;
  if (f->enabled)
    focus_field_ = name;
  else
    f->text.clear();
  if (name == "txtModelEst6") Inform(text::check::kOutliersRuntimeNote, text::kForYourInformation);
}

void RulesWizard::FieldLostFocus(const std::string& name) {
  TextField* f = FindField(name);
  if (!f) return;
  if (name == "txtModelEst10" && !estimation.chkModelEst13.value)
    Inform(text::check::kVarianceNotAvailable, text::kOptionInputError);
  if (!f->enabled) {
    f->text.clear();
    return;
  }
  const char* mask = FormatOf(name);
  if (!mask) return;
  // An unused lambda or group field stays empty rather than becoming a value of 0.
  bool keep_empty = name.rfind("txtLambda_Est(", 0) == 0 || name.rfind("txtGroup_PC(", 0) == 0;
  if (keep_empty && IsBlank(f->text)) {
    f->text.clear();
    return;
  }
  f->text = platform::FormatNumber(platform::Val(f->text), mask);
}

void RulesWizard::Focus(const std::string& field) { focus_field_ = field; }

void RulesWizard::Inform(std::string_view message, std::string_view title) {
  platform::Dialogs().Message(std::string(message), platform::mb::OKOnly, std::string(title));
}

// ---- Conditions frames ----------------------------------------------------------------------

void RulesWizard::LayOutConditions(std::string_view frame_title) {
  conditions_frame_title = std::string(frame_title);
  for (int i : {0, 3, 4, 5}) optConditions[i] = {false, false};
  ClickConditions(2);
}

void RulesWizard::SetAutomaticConditons() { LayOutConditions(text::kAutomaticRulesFrame); }
void RulesWizard::SetNonautomaticConditions() { LayOutConditions(text::kNonautomaticRulesFrame); }

}  // namespace tessaly::rules
