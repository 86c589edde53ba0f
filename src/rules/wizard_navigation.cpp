// The wizard's Next and Back: what each step checks and saves on leaving it, and where
// it goes from there.
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

}  // namespace tessaly::rules
