// The wizard as a whole: the first dataset's shape, the load, the step switch with its
// titles and buttons, Finish and Cancel, and the seam the run calls. The pages' clicks and
// fields, the Next and Back walks, and the model pages live in wizard_*.cpp beside it.
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
      // The rules were saved above; ENGINE.GO is only their copy for the engine's first read.
      (void)platform::CopyFileOver(platform::ResolveNoCase(folder, text::kEngineUsr),
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
