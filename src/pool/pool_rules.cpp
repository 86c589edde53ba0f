#include "pool/pool_rules.h"

namespace tessaly::pool {

PoolRulesWizard::PoolRulesWizard(fs::path program_folder, std::shared_ptr<rules::WizardUi> ui,
                                 bool no_trend_at_start,
                                 std::function<std::optional<int>(long observations)> ask_groups)
    : wizard_(std::move(program_folder), std::move(ui), session_) {
  wizard_.SetPoolingRun(true);
  wizard_.SetNoTrendAtStartup(no_trend_at_start);
  wizard_.SetGroupCountDialog(std::move(ask_groups));
}

bool PoolRulesWizard::Show(const batch::WizardRequest& request) {
  return wizard_.Show(request.project_stem, request.first_asc);
}

}  // namespace tessaly::pool
