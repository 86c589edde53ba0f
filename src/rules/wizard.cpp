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

namespace tessaly::rules {

namespace {

constexpr int16_t kNoStep = -1;

bool Is(int index, std::initializer_list<int> set) {
  for (int i : set)
    if (i == index) return true;
  return false;
}

}  // namespace

// ---- Dataset shape -------------------------------------------------------------------------

bool DatasetShape::HasLeadSeries() const {
  for (int16_t t : types)
    if (t == 3) return true;
  return false;
}

std::string DatasetShape::OutputSeriesName() const {
  return names.empty() ? std::string() : Trim(names.back());
}

std::optional<DatasetShape> ReadDatasetShape(const fs::path& asc_file) {
  dataset::AscHeader header;
  if (!dataset::ReadAscHeader(asc_file, header).ok()) return std::nullopt;
  DatasetShape shape;
  platform::LineReader reader(asc_file);
  for (auto& objective : shape.objectives) {
    auto line = reader.Next();
    auto value = line ? platform::ToInt16(*line) : platform::Int16Conversion{};
    objective = value.ok() ? value.value : 0;
  }
  for (int i = 1; i <= 8; ++i) shape.data_prop[i] = header.DataProp[i];
  shape.names = header.names;
  shape.types = header.types;
  return shape;
}

std::string WizardContext::DatasetStem() const {
  std::string name = dataset_path.filename().string();
  if (platform::EndsWithNoCase(name, ".asc")) name.resize(name.size() - 4);
  return Trim(name);
}

// ---- Construction and load ------------------------------------------------------------------

RulesWizard::RulesWizard(WizardContext context, RulesSession& session)
    : ctx_(std::move(context)), session_(session) {
  cboEditConditions.text = std::string(text::kSelectFile);
  cboModelsinMemory.text = std::string(text::kSelectModel);
  cboEditModel.text = std::string(text::kNewModel);
  optModels0_caption = std::string(text::kImplicitModelCaption);
  SetNoiseDefaults(startmod);
  SetInputDefaults(inputmod);
  buttons_.help = false;
}

void RulesWizard::Load() {
  session_.objectives.value = ctx_.dataset.objectives;
  session_.wizard_cancelled = false;
  session_.validation_failed = false;
  if (session_.objectives.Objective1() != 0) {
    ClickModelingType(1);
    finish.chkSaveConditions.enabled = true;
    finish.chkSaveModels.enabled = true;
  } else if (ctx_.aggregation_run) {
    ClickModelingType(2);
    finish.chkSaveConditions.enabled = false;
    finish.chkSaveModels.enabled = false;
    SetCheck(finish.chkInitialModel, false, false);
    SetCheck(finish.chkFinalModel, false, false);
  } else {
    ClickModelingType(2);
    finish.chkSaveConditions.enabled = true;
    finish.chkSaveModels.enabled = true;
  }
  if (!ctx_.pooling_run) {
    for (CheckField* c : {&estimation.chkModelEst2, &estimation.chkModelEst3, &estimation.chkModelEst11,
                          &estimation.chkModelEst13, &estimation.chkModelEst14,
                          &auto_model_id.chkAutoModelID2, &auto_model_id.chkAutoModelID3})
      c->enabled = true;
    estimation.chkModelEst3.value = true;
    estimation.chkModelEst14.value = false;
    auto_model_id.txtAutoModelID1.enabled = true;
    chkAllowModifications.enabled = true;
    optConditions[6].enabled = true;
  }
  ApplyPoolingShape();
  if (ctx_.pooling_run) {
    // The stack is fitted with an explicit model or a canned one, nothing else.
    for (int hidden : {0, 2, 4, 5}) optModelingType[hidden] = {false, false};
    ClickModelingType(1);
    cboLocalTimeTrend = {false, cboLocalTimeTrend.enabled, false};
  }
  optModelingType[5] = {false, false};
  models = -1;
  ClickModels(0);
  ShowStep(0);
  LoadRules(ctx_.app_folder, cboEditConditions.text, session_.rules, session_.validation_failed);
  ModelEstimation_Get(session_.rules, estimation);
  session_.lambda_count = Lambda_Est_Get(session_.rules, lambdas);
  ApplyPoolingShape();
}

// The pooled run keeps estimation on with its pooled-group options only.
void RulesWizard::ApplyPoolingShape() {
  if (!ctx_.pooling_run) return;
  SetCheck(chkAllowModifications, false, false);
  if (!estimation.chkModelEst1.value) EnableEstimationPage(estimation, true);
  SetCheck(estimation.chkModelEst1, true, false);
  if (groups.answer == YesNo::None) groups.answer = YesNo::No;
  if (lambdas.answer == YesNo::None) lambdas.answer = YesNo::Yes;
  for (CheckField* c : {&estimation.chkModelEst2, &estimation.chkModelEst3, &estimation.chkModelEst11,
                        &estimation.chkModelEst13, &estimation.chkModelEst14})
    SetCheck(*c, false, false);
  auto_model_id.txtAutoModelID1.text = "0";
  auto_model_id.txtAutoModelID1.enabled = false;
  SetCheck(auto_model_id.chkAutoModelID2, false, false);
  SetCheck(auto_model_id.chkAutoModelID3, true, false);
  optConditions[6].enabled = false;
}

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

// ---- Steps, titles and buttons -----------------------------------------------------------------

std::string RulesWizard::StepTitle() const {
  switch (step_) {
    case 0: return std::string(text::kStepIntro);
    case 1: return std::string(text::kStepRules);
    case 2: return std::string(text::kStepNonautomatic);
    case 3: return step3_title_;
    case 4: return step4_title_;
    case 5: return std::string(text::kStepFinished);
  }
  return {};
}

std::string RulesWizard::WindowTitle() const {
  return std::string(text::kWizardTitle) + " - " + StepTitle();
}

std::string RulesWizard::PageTitle() const {
  switch (sub_page_) {
    case SubPage::Startmod: return startmod.title;
    case SubPage::Inputmod: return inputmod.title;
    default: return page_title_;
  }
}

int RulesWizard::SeriesInModel() const {
  int n = platform::ValInt(startmod.txtStartmod13.text);
  return n < 1 ? 1 : n;
}

void RulesWizard::UpdateButtons() {
  buttons_.help = false;
  switch (step_) {
    case 0:
      buttons_.back = false;
      buttons_.next = true;
      buttons_.finish = false;
      break;
    case 3:
      buttons_.back = true;
      buttons_.next = true;
      buttons_.finish = SeriesInModel() > 1;
      break;
    case 4:
      buttons_.back = buttons_.next = true;
      buttons_.finish = false;
      break;
    case 5:
      buttons_.next = false;
      buttons_.back = true;
      break;
    default:
      buttons_.back = buttons_.next = true;
  }
  if (step_ != 0) buttons_.finish = finish_allowed_;
}

void RulesWizard::ShowStep(int16_t step) {
  previous_step_ = step_;
  step_ = step;
  if (step != 3 && step != 4) sub_page_ = SubPage::None;
  UpdateButtons();
}

// The step switch: the entry action of the step, then the step shown. A step whose entry
// stops (the rules could not be loaded) leaves the wizard where it was.
void RulesWizard::GoTo(int16_t step) {
  int16_t from = step_;
  bool entered = true;
  switch (step) {
    case 2: entered = do_step_2(); break;
    case 3: entered = do_step_3(from); break;
    case 4: entered = do_step_4(from); break;
    case 5: entered = do_step_5(); break;
    default: break;
  }
  if (entered) ShowStep(step);
}

void RulesWizard::cmdNav_Click(int index) {
  switch (index) {
    case 0: break;  // Help is hidden and does nothing.
    case 1: Cancel(); break;
    case 2: if (buttons_.back) Back(); break;
    case 3: if (buttons_.next) Next(); break;
    case 4: if (buttons_.finish) Finish(); break;
  }
}

// ---- Conditions frames ----------------------------------------------------------------------

void RulesWizard::LayOutConditions(std::string_view frame_title) {
  conditions_frame_title = std::string(frame_title);
  for (int i : {0, 3, 4, 5}) optConditions[i] = {false, false};
  ClickConditions(2);
}

void RulesWizard::SetAutomaticConditons() { LayOutConditions(text::kAutomaticRulesFrame); }
void RulesWizard::SetNonautomaticConditions() { LayOutConditions(text::kNonautomaticRulesFrame); }

// ---- Next ---------------------------------------------------------------------------------------

void RulesWizard::Next() {
  session_.validation_failed = false;
  switch (step_) {
    case 0: NextFromStep0(); break;
    case 1: NextFromStep1(); break;
    case 2: NextFromStep2(); break;
    case 3: NextFromStep3(); break;
    case 4: NextFromStep4(); break;
    default: break;
  }
}

// The rules pages write into the loaded text; with none loaded (no rules files at all)
// the step stops with the load's message rather than writing an empty rules file.
bool RulesWizard::RulesReady() {
  if (!session_.rules.Empty()) return true;
  LoadRules(ctx_.app_folder, cboEditConditions.text, session_.rules, session_.validation_failed);
  return !session_.validation_failed;
}

void RulesWizard::NextFromStep0() {
  if (Is(modeling_type, {0, 1}) && !RulesReady()) return;
  switch (Type()) {
    case ModelingType::WithUserRules:
      SetAutomaticConditons();
      session_.rules.PutRule(key::kInitialModel, key::kNoInitialModel);
      simulation.chkSimulation1.value = false;
      Sim_Put(session_.rules, simulation);
      SaveRules(ctx_.app_folder, session_.rules);
      GoTo(1);
      break;
    case ModelingType::ExplicitModelUserRules:
      use_model_ = false;
      simulation.chkSimulation1.value = false;
      Sim_Put(session_.rules, simulation);
      SaveRules(ctx_.app_folder, session_.rules);
      GoTo(2);
      break;
    case ModelingType::WithQvxRules:
      use_model_ = false;
      GoTo(5);
      break;
    case ModelingType::ImplicitCanned:
      use_model_ = false;
      GoTo(2);
      break;
    case ModelingType::IdentificationOnly:
      use_model_ = false;
      simulation.chkSimulation1.value = false;
      GoTo(5);
      break;
    case ModelingType::MonteCarlo:
      GoTo(2);
      break;
  }
}

void RulesWizard::NextFromStep1() {
  if (conditions == 0) {
    GoTo(5);
    return;
  }
  if (conditions == 6 && platform::ExistsNoCase(ctx_.app_folder, text::kEngineUsr)) {
    RestoreDefaultRules(ctx_.app_folder);
    ClickConditions(2);
    cboEditConditions.text = std::string(text::kPresentRules);
  }
  GoTo(4);
}

void RulesWizard::NextFromStep2() {
  if (models == 0) {
    if (cboModelsinMemory.text == text::kSelectModel) {
      Inform(text::kMustSelectModel, text::kForYourInformation);
      return;
    }
    GoTo(5);
  } else if (models == 1) {
    GoTo(5);
  } else if (models == 2) {
    if (cboEditModel.text == text::kSelectModel) {
      Inform(text::kMustSelectModel, text::kForYourInformation);
      return;
    }
    saved_model_name_ =
        cboEditModel.text == text::kNewModel ? std::string() : EntryFileName(cboEditModel.text);
    use_model_ = false;
    GoTo(3);
  }
}

void RulesWizard::NextFromStep3() {
  switch (sub_page_) {
    case SubPage::ReviewEditUse:
      use_model_ = review.chkModeOptions2.value;
      if (!review.chkModelOptions1.value && use_model_) {
        SetNonautomaticConditions();
        GoTo(1);
      } else if (review.chkModelOptions1.value) {
        LoadOutputSeriesModelParameters();
        Show(SubPage::Startmod);
      } else {
        Inform(text::kSelectOneOption, text::kForYourInformation);
      }
      return;
    case SubPage::Startmod:
      if (!ValidateStartmodAndSave()) return;
      if (SeriesInModel() > 1) {
        LoadInputSeriesModelParameters(1);
        Show(SubPage::Inputmod);
        return;
      }
      EndModelWalk();
      return;
    case SubPage::Inputmod:
      if (!ValidateInputmodAndSave()) return;
      if (current_input_ + 1 < SeriesInModel()) {
        LoadInputSeriesModelParameters(current_input_ + 1);
        return;
      }
      EndModelWalk();
      return;
    default:
      return;
  }
}

void RulesWizard::EndModelWalk() {
  if (use_model_) {
    SetNonautomaticConditions();
    GoTo(Type() == ModelingType::MonteCarlo ? 4 : 1);
  } else {
    GoTo(5);
  }
}

void RulesWizard::NextFromStep4() {
  RulesText& r = session_.rules;
  auto failed = [&](const Validation& v) {
    if (!v.failed) return false;
    session_.validation_failed = true;
    Focus(v.field);
    return true;
  };
  int series = ctx_.dataset.SeriesCount();
  switch (sub_page_) {
    case SubPage::AutoModelID:
      if (failed(ValidateAutoModelID(auto_model_id, series))) return;
      AutoModelID_put(r, auto_model_id, Type(), series);
      if (Type() == ModelingType::WithUserRules) {
        if (!estimation.chkModelEst1.value) SetEstimationEnabled(true);
        ShowTree();
      } else {
        Show(SubPage::ModelEstimation0);
        page_title_ = std::string(text::kModelEstimation0Title);
      }
      return;
    case SubPage::Simulation:
      if (failed(ValidateSimulation(simulation))) return;
      Sim_Put(r, simulation);
      if (simulation.chkSimulation1.value) {
        GoTo(5);
      } else {
        Show(SubPage::ModelEstimation0);
        page_title_ = std::string(text::kModelEstimation0Title);
        groups.visited.clear();
        lambdas.visited.clear();
      }
      return;
    case SubPage::GroupPC:
      if (failed(ValidateGroupPC(groups, ctx_.dataset.Observations()))) return;
      groups.group_count = GroupCount(groups);
      Group_PC_Put(r, groups);
      ShowTree();
      buttons_.next = true;
      return;
    case SubPage::LambdaEst:
      if (failed(ValidateLambdaEst(lambdas))) return;
      session_.lambda_count = Lambda_est_Put(r, lambdas);
      ShowTree();
      buttons_.next = true;
      return;
    case SubPage::ModelEstimation0:
    case SubPage::ModelEstimation1: {
      bool tree = sub_page_ == SubPage::ModelEstimation1;
      if (failed(ValidateModelEstimation(estimation, groups, lambdas, tree))) return;
      ModelEstimation_put(r, estimation);
      // Declining the lambda page empties its list; the rules follow.
      if (lambdas.answer == YesNo::No && lambdas.visited == "True")
        session_.lambda_count = Lambda_est_Put(r, lambdas);
      if (!tree && estimation.chkModelEst1.value) {
        ShowTree();
      } else {
        Show(SubPage::ModelForecasting);
        page_title_ = std::string(text::kForecastingTitle);
      }
      return;
    }
    case SubPage::ModelForecasting:
      if (failed(ValidateModelForecasting(forecasting))) return;
      ModelForecasting_put(r, forecasting, ctx_.dataset.Forecasts());
      GoTo(5);
      return;
    default:
      return;
  }
}

// ---- Entering steps -------------------------------------------------------------------------------

bool RulesWizard::do_step_2() {
  if (Is(modeling_type, {1, 5})) {
    optModels[0] = {false, false};
    optModels[1] = {false, false};
    optModels[2] = {true, true};
    if (models != 2) ClickModels(2);
    cboEditModel.visible = true;
    cboModelsinMemory.visible = false;
  } else if (modeling_type == 3) {
    optModels[0] = {true, true};
    optModels[1] = {false, false};
    optModels[2] = {false, false};
    if (models != 0) ClickModels(0);
    cboModelsinMemory.enabled = cboModelsinMemory.visible = true;
    chkAllowModifications.visible = true;
    if (ctx_.pooling_run) SetCheck(chkAllowModifications, false, false);
    cboEditModel.visible = false;
  }
  return true;
}

void RulesWizard::LoadOutputSeriesModelParameters() {
  int count = SeriesInModel();
  if (!session_.models.Empty()) {
    FillNoisePage(session_.models.Row(0), startmod);
  } else {
    SetNoiseDefaults(startmod);
  }
  startmod.txtStartmod13.text = std::to_string(count);
  startmod.txtStartmod13.visible = false;
  std::string_view head = count > 1 ? text::kNoiseTitleCausal : text::kNoiseTitleNoncausal;
  startmod.title = std::string(head) + ctx_.dataset.OutputSeriesName();
  current_input_ = 0;
}

void RulesWizard::LoadInputSeriesModelParameters(int series) {
  current_input_ = series;
  InputmodPage& p = inputmod;
  p.series = series;
  p.series_name = series - 1 < static_cast<int>(ctx_.dataset.names.size())
                      ? Trim(ctx_.dataset.names[series - 1])
                      : std::string();
  p.title = std::string(text::kInputTitle) + p.series_name;
  std::vector<std::string> row = session_.models.Row(series);
  if (!row.empty())
    FillInputPage(row, p);
  else
    SetInputDefaults(p);
  p.txtInputmod13.text = std::to_string(SeriesInModel());
  p.copy_to.clear();
  for (int i = 1; i < SeriesInModel() && i <= static_cast<int>(ctx_.dataset.names.size()); ++i)
    p.copy_to.emplace_back(Trim(ctx_.dataset.names[i - 1]), false);
}

bool RulesWizard::do_step_3(int16_t from) {
  int count = SeriesInModel();
  if (from == 5 || from == 1) {
    buttons_.next = true;
    if (cboEditModel.text == text::kNewModel || review.chkModelOptions1.value)
      Show(count == 1 ? SubPage::Startmod : SubPage::Inputmod);
    else
      Show(SubPage::ReviewEditUse);
    return true;
  }
  if (from == 2) {
    // The model to start from: a saved one read into the table, or a new one.
    if (!saved_model_name_.empty()) {
      auto count_read = ReadModelFile(platform::ResolveNoCase(ctx_.app_folder, saved_model_name_),
                                      session_.models);
      count = count_read.value_or(ctx_.dataset.SeriesCount());
    } else {
      session_.models.Clear();
      count = ctx_.dataset.SeriesCount();
    }
    if (count < 1) count = 1;
    model_series_ = count;
    startmod.txtStartmod13.text = std::to_string(count);
    LoadOutputSeriesModelParameters();
    step3_title_ = std::string(count == 1 ? text::kStepModelNoncausal : text::kStepModelCausal);
    if (cboEditModel.text == text::kNewModel) {
      use_model_ = true;
      Show(SubPage::Startmod);
    } else {
      review.chkModeOptions2.value = true;
      Show(SubPage::ReviewEditUse);
    }
    series_saved_.fill(false);
    current_input_ = 0;
    return true;
  }
  if (from == 4) {
    step3_title_ = std::string(count == 1 ? text::kStepModelNoncausal : text::kStepModelCausal);
    if (count == 1) {
      LoadOutputSeriesModelParameters();
      Show(SubPage::Startmod);
    } else {
      LoadInputSeriesModelParameters(current_input_ > 0 ? current_input_ : count - 1);
      Show(SubPage::Inputmod);
    }
  }
  return true;
}

void RulesWizard::ReadDatasetHeader() {
  if (ctx_.dataset_path.empty()) return;
  if (auto shape = ReadDatasetShape(ctx_.dataset_path)) {
    ctx_.dataset = *shape;
    session_.objectives.value[1] = shape->objectives[1];
    session_.objectives.value[2] = shape->objectives[2];
  }
}

bool RulesWizard::do_step_4(int16_t from) {
  ReadDatasetHeader();
  if (from == 5) {
    buttons_.next = true;
    if (simulation.chkSimulation1.value) {
      Show(SubPage::Simulation);
      page_title_ = std::string(text::kSimulationTitle);
    } else {
      Show(SubPage::ModelForecasting);
      page_title_ = std::string(text::kForecastingTitle);
    }
    return true;
  }
  LoadRules(ctx_.app_folder, cboEditConditions.text, session_.rules, session_.validation_failed);
  if (session_.validation_failed) {
    session_.validation_failed = false;
    return false;
  }
  int series = ctx_.dataset.SeriesCount();
  AutoModelIdPage& a = auto_model_id;
  AutoModelID_get(session_.rules, a);
  auto several = [&](bool explicit_model) {
    step4_title_ = std::string(text::kStepRulesCausal);
    a.chkAutoModelID1.visible = false;
    a.chkAutoModelID2 = {false, !explicit_model, true};
    a.chkAutoModelID3 = {explicit_model, !explicit_model, true};
    bool lead = ctx_.dataset.HasLeadSeries();
    a.txtAutoModelID1.visible = lead;
    a.txtAutoModelID1.enabled = lead;
    page_title_ = std::string(text::kAutoModelIdTitle);
    Show(SubPage::AutoModelID);
  };
  switch (Type()) {
    case ModelingType::WithUserRules:
      ClearSimulationPage(simulation);
      if (series == 1) {
        step4_title_ = std::string(text::kStepRulesNoncausal);
        a.chkAutoModelID1 = {false, true, true};
        a.chkAutoModelID2 = {a.chkAutoModelID2.value, false, false};
        a.chkAutoModelID3 = {a.chkAutoModelID3.value, false, false};
        a.txtAutoModelID1.visible = a.txtAutoModelID1.enabled = false;
        page_title_ = std::string(text::kAutoModelIdTitle);
        Show(SubPage::AutoModelID);
      } else {
        several(false);
      }
      break;
    case ModelingType::ExplicitModelUserRules:
      if (SeriesInModel() > 1) {
        several(true);
      } else {
        step4_title_ = std::string(text::kStepRulesNoncausal);
        page_title_ = std::string(text::kModelEstimation0Title);
        Show(SubPage::ModelEstimation0);
      }
      break;
    case ModelingType::MonteCarlo:
      step4_title_ = std::string(series == 1 ? text::kStepRulesNoncausal : text::kStepRulesCausal);
      Sim_Get(session_.rules, simulation);
      SetSimulationEnabled(true);
      simulation.chkSimulation1 = {true, false, true};
      page_title_ = std::string(text::kSimulationTitle);
      Show(SubPage::Simulation);
      break;
    default:
      break;
  }
  ModelEstimation_Get(session_.rules, estimation);
  session_.lambda_count = Lambda_Est_Get(session_.rules, lambdas);
  ModelForecasting_Get(session_.rules, forecasting, ctx_.dataset.Forecasts());
  ApplyPoolingShape();
  if (ctx_.pooling_run) {
    a.chkAutoModelID2 = {false, false, a.chkAutoModelID2.visible};
    a.chkAutoModelID3 = {true, false, a.chkAutoModelID3.visible};
  }
  if (FlagOn(session_.rules.GetRule(key::kStore))) {
    finish.chkSaveModels.value = false;
    SetCheck(finish.chkInitialModel, false, false);
    SetCheck(finish.chkFinalModel, false, false);
  }
  return true;
}

bool RulesWizard::do_step_5() {
  bool agg = ctx_.aggregation_run;
  const fs::path& folder = ctx_.app_folder;
  switch (Type()) {
    case ModelingType::WithUserRules:
      RemoveMarker(folder, text::kNoTrend);
      finish.chkSaveConditions.enabled = !agg;
      finish.chkSaveModels.enabled = !agg;
      break;
    case ModelingType::ExplicitModelUserRules:
    case ModelingType::MonteCarlo:
      RemoveMarker(folder, text::kNoTrend);
      SetCheck(finish.chkSaveConditions, false, true);
      SetCheck(finish.chkSaveModels, false, true);
      break;
    case ModelingType::WithQvxRules:
      if (cboLocalTimeTrend.value)
        RemoveMarker(folder, text::kNoTrend);
      else
        WriteMarker(folder, text::kNoTrend, text::kNoTrendLine);
      SetCheck(finish.chkSaveConditions, false, false);
      SetCheck(finish.chkSaveModels, false, !agg);
      break;
    case ModelingType::ImplicitCanned:
      RemoveMarker(folder, text::kNoTrend);
      SetCheck(finish.chkSaveConditions, false, false);
      SetCheck(finish.chkSaveModels, false, true);
      break;
    case ModelingType::IdentificationOnly:
      RemoveMarker(folder, text::kNoTrend);
      SetCheck(finish.chkSaveConditions, false, false);
      SetCheck(finish.chkSaveModels, false, false);
      break;
  }
  SetCheck(finish.chkInitialModel, false, false);
  SetCheck(finish.chkFinalModel, false, false);
  finish_allowed_ = true;
  return true;
}

// ---- Back ----------------------------------------------------------------------------------------

void RulesWizard::Back() {
  session_.validation_failed = false;
  switch (step_) {
    case 1:
    case 2:
      ShowStep(0);
      break;
    case 3: BackFromStep3(); break;
    case 4: BackFromStep4(); break;
    case 5: BackFromStep5(); break;
    default: break;
  }
}

void RulesWizard::BackFromStep3() {
  switch (sub_page_) {
    case SubPage::Startmod:
      if (cboEditModel.text == text::kNewModel || !review.chkModelOptions1.value)
        GoTo(2);
      else
        Show(SubPage::ReviewEditUse);
      break;
    case SubPage::ReviewEditUse:
      GoTo(2);
      break;
    case SubPage::Inputmod:
      if (current_input_ > 1) {
        LoadInputSeriesModelParameters(current_input_ - 1);
      } else {
        LoadOutputSeriesModelParameters();
        Show(SubPage::Startmod);
      }
      break;
    default:
      GoTo(2);
  }
}

void RulesWizard::BackFromStep4() {
  RulesText& r = session_.rules;
  switch (sub_page_) {
    case SubPage::ModelForecasting:
      if (estimation.chkModelEst1.value) {
        ShowTree();
      } else {
        Show(SubPage::ModelEstimation0);
        page_title_ = std::string(text::kModelEstimation0Title);
      }
      break;
    case SubPage::GroupPC:
      if (ValidateGroupPC(groups, ctx_.dataset.Observations()).failed) return;
      groups.group_count = GroupCount(groups);
      Group_PC_Put(r, groups);
      ShowTree();
      break;
    case SubPage::LambdaEst:
      if (ValidateLambdaEst(lambdas).failed) return;
      session_.lambda_count = Lambda_est_Put(r, lambdas);
      ShowTree();
      break;
    case SubPage::ModelEstimation1:
      Show(SubPage::ModelEstimation0);
      page_title_ = std::string(text::kModelEstimation0Title);
      break;
    case SubPage::ModelEstimation0:
      if (Type() == ModelingType::MonteCarlo) {
        Show(SubPage::Simulation);
        page_title_ = std::string(text::kSimulationTitle);
      } else if (Type() == ModelingType::WithUserRules ||
                 (Type() == ModelingType::ExplicitModelUserRules && SeriesInModel() > 1)) {
        Show(SubPage::AutoModelID);
        page_title_ = std::string(text::kAutoModelIdTitle);
      } else {
        ShowStep(1);
      }
      break;
    case SubPage::AutoModelID:
      ShowStep(1);
      break;
    case SubPage::Simulation:
      GoTo(3);
      break;
    default:
      ShowStep(1);
  }
}

void RulesWizard::BackFromStep5() {
  switch (Type()) {
    case ModelingType::WithUserRules:
      if (conditions == 0)
        ShowStep(1);
      else
        GoTo(4);
      break;
    case ModelingType::ExplicitModelUserRules:
      if (simulation.chkSimulation1.value)
        GoTo(4);
      else
        ShowStep(0);
      break;
    case ModelingType::ImplicitCanned:
      GoTo(2);
      break;
    case ModelingType::MonteCarlo:
      GoTo(4);
      break;
    default:
      ShowStep(0);
  }
}

// ---- Model pages ------------------------------------------------------------------------------

bool RulesWizard::ValidateStartmodAndSave() {
  Validation v = ValidateStartmod(startmod);
  if (v.failed) {
    session_.validation_failed = true;
    Focus(v.field);
    return false;
  }
  int count = SeriesInModel();
  if (count != model_series_) {
    session_.models.Clear();
    model_series_ = count;
  }
  session_.models.SetRow(0, BuildNoiseRow(startmod, ctx_.dataset.OutputSeriesName(), count));
  series_saved_[0] = true;
  return true;
}

bool RulesWizard::ValidateInputmodAndSave() {
  Validation v = ValidateInputmod(inputmod);
  if (v.failed) {
    session_.validation_failed = true;
    Focus(v.field);
    return false;
  }
  session_.models.SetRow(current_input_, BuildInputRow(inputmod));
  series_saved_[current_input_] = true;
  // "Copy Parameters To:" gives each checked input the same transfer function.
  for (size_t i = 0; i < inputmod.copy_to.size(); ++i) {
    int series = static_cast<int>(i) + 1;
    if (!inputmod.copy_to[i].second || series == current_input_) continue;
    InputmodPage copy = inputmod;
    copy.series_name = inputmod.copy_to[i].first;
    session_.models.SetRow(series, BuildInputRow(copy));
    series_saved_[series] = true;
  }
  return true;
}

void RulesWizard::CopyModel() {
  const fs::path& folder = ctx_.app_folder;
  bool to_startmod = saved_model_name_.empty() || use_model_;
  fs::path target = to_startmod ? folder / std::string(text::kStartmod)
                                : platform::ResolveNoCase(folder, saved_model_name_);
  if (to_startmod) platform::RemoveNoCase(folder, text::kStartmod);
  WriteModelFile(target, session_.models, SeriesInModel());
  current_input_ = 0;
  if (to_startmod) {
    if (finish.chkInitialModel.value) Check4InitialModels(folder, ctx_.DatasetStem());
  } else {
    Inform(std::string(text::kInitialModelSavedHead) + target.filename().string() + ".",
           text::kForYourInformation);
    RemoveMarker(folder, text::kStartmod);
  }
}

// ---- Finish and Cancel ---------------------------------------------------------------------------

void RulesWizard::Finish() {
  const fs::path& folder = ctx_.app_folder;
  if (finish.chkSaveModels.value && !finish.chkInitialModel.value && !finish.chkFinalModel.value) {
    Inform(text::kSelectModelToSave, text::kForYourInformation);
    return;
  }
  SetAllowModifications(folder, chkAllowModifications.value);
  if (conditions == 2 || conditions == 6)
    PostGroupPC(folder, groups, estimation.chkModelEst1.value, session_.rules);
  if (ctx_.pooling_run) PostPooledGroups(folder, pooled_groups, ctx_.dataset.Observations());
  bool rules_saved = Is(modeling_type, {0, 1});
  if (rules_saved) SaveRules(folder, session_.rules);

  ObjectiveChoice choice{Type(), conditions, models, cboModelsinMemory.text, use_model_};
  ObjectiveOutcome outcome = SetModelingObjectives(folder, choice, session_, saved_model_name_);
  if (!outcome.missing_source.empty())
    Inform("Error #53: File not found (" + outcome.missing_source + ")", text::kWizardTitle);

  std::string before = session_.rules.Text();
  SaveFilesInput save{finish.chkSaveConditions.value, conditions, session_.objectives.value[1],
                      finish.chkSaveModels.value, finish.chkFinalModel.value, ctx_.project_stem};
  session_.save_model = SetSaveFiles(folder, save, session_.rules);
  // The "STORE" choice reaches the files the run reads, not only the text in memory.
  if (rules_saved && session_.rules.Text() != before) {
    SaveRules(folder, session_.rules);
    if (outcome.go_from_usr)
      platform::CopyFileOver(platform::ResolveNoCase(folder, text::kEngineUsr),
                             folder / std::string(text::kEngineGo));
  }

  session_.forecasting_enabled = forecasting.chkModelForecasting1.value;
  RemoveMarker(folder, text::kTrend);
  if (!session_.models.Empty()) CopyModel();
  if (MarkerExists(folder, text::kAuditTrail)) Inform(text::kAuditTrailTrace, text::kAuditTrailTitle);
  finished_ = true;
  closed_ = true;
}

void RulesWizard::Cancel() {
  int16_t answer = platform::Dialogs().Message(
      std::string(text::kCancelQuestion),
      static_cast<int16_t>(platform::mb::YesNo | platform::mb::Question),
      std::string(text::kCancellationNotice));
  if (answer != platform::mb::Yes) return;
  conditions = 3;
  RemoveMarker(ctx_.app_folder, text::kStartmod);
  if (!ctx_.notrend_at_startup) RemoveMarker(ctx_.app_folder, text::kNoTrend);
  session_.rules.Clear();
  session_.validation_failed = true;
  session_.wizard_cancelled = true;
  cancelled_ = true;
  closed_ = true;
}

// ---- The seam --------------------------------------------------------------------------------------

WizardOutcome RunRulesWizard(const WizardContext& context, WizardUi& ui, RulesSession& session) {
  RulesWizard wizard(context, session);
  wizard.Load();
  ui.Run(wizard);
  WizardOutcome out;
  if (!wizard.Closed()) {
    // Closed by the window: the same as a confirmed Cancel.
    RemoveMarker(context.app_folder, text::kStartmod);
    if (!context.notrend_at_startup) RemoveMarker(context.app_folder, text::kNoTrend);
    session.rules.Clear();
    session.validation_failed = true;
    session.wizard_cancelled = true;
    out.cancelled = true;
  } else {
    out.finished = wizard.Finished();
    out.cancelled = wizard.Cancelled();
  }
  out.objectives = session.objectives;
  out.objective1 = session.objectives.Objective1();
  out.forecasting_enabled = session.forecasting_enabled;
  out.save_model = session.save_model;
  return out;
}

}  // namespace tessaly::rules
