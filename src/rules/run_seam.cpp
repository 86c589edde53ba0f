#include "rules/run_seam.h"

#include "platform/dialogs.h"
#include "rules/saved_models.h"
#include "rules/texts.h"

namespace tessaly::rules {

RulesWizardForRun::RulesWizardForRun(fs::path app_folder, std::shared_ptr<WizardUi> ui,
                                     RulesSession& session)
    : folder_(std::move(app_folder)), ui_(std::move(ui)), session_(session) {}

bool RulesWizardForRun::Show(const std::string& project_stem, const fs::path& first_asc) {
  outcome_ = WizardOutcome{};
  auto shape = ReadDatasetShape(first_asc);
  if (!shape) {
    platform::Dialogs().Message("The asc file " + first_asc.filename().string() +
                                    " could not be read.",
                                platform::mb::OKOnly, std::string(text::kFyi));
    outcome_.cancelled = true;
    return false;
  }
  WizardContext c;
  c.app_folder = folder_;
  c.project_stem = project_stem;
  c.dataset_path = first_asc;
  c.dataset = *shape;
  c.aggregation_run = aggregation_;
  c.pooling_run = pooling_;
  c.ask_group_count = ask_group_count_;
  c.notrend_at_startup = notrend_at_startup_;
  outcome_ = RunRulesWizard(c, *ui_, session_);
  return outcome_.finished;
}

std::optional<int16_t> RulesWizardForRun::ObjectiveOne() const {
  if (!outcome_.finished) return std::nullopt;
  return outcome_.objective1;
}

void RulesWizardForRun::Check4Model(const std::string& stem, const std::string& model_name) {
  if (!session_.save_model) return;
  std::string name = (model_name.empty() ? stem : model_name) + ".MOD";
  rules::Check4Model(folder_, stem, name);
}

}  // namespace tessaly::rules
