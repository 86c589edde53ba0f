// Entering the wizard's steps, and the model pages: the noise model and one page per input
// series, filled from the saved model, checked and saved on leaving.
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

}  // namespace tessaly::rules
