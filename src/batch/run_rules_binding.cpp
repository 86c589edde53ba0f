#include "batch/run_rules_binding.h"

namespace tessaly::batch {

RulesWizardBinding::RulesWizardBinding(fs::path program_folder, std::shared_ptr<rules::WizardUi> ui,
                                       bool no_trend_at_start)
    : wizard_(std::move(program_folder), std::move(ui), session_) {
  wizard_.SetNoTrendAtStartup(no_trend_at_start);
}

bool RulesWizardBinding::Show(const WizardRequest& request) {
  return wizard_.Show(request.project_stem, request.first_asc);
}

std::optional<int16_t> RulesWizardBinding::ObjectiveOne() const { return wizard_.ObjectiveOne(); }

void RulesWizardBinding::Check4Model(const std::string& stem, const std::string& model_name) {
  wizard_.Check4Model(stem, model_name);
}

}  // namespace tessaly::batch
