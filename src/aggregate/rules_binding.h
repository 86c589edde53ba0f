#pragma once
// The rules wizard as the aggregation shows it: the modelling types narrowed to the one the
// stage allows (the parent's "With QVX Rules" with the local time trend offered, or "With
// User  Rules"; the children's "With QVX Rules"), then driven by the desktop's wizard
// window, or, with no window, taken as it stands and finished.
#include <memory>

#include "aggregate/aggregation_run.h"
#include "rules/run_seam.h"

namespace tessaly::aggregate {

// Narrows the wizard's modelling types for a stage.
void ShapeRulesWizard(rules::RulesWizard& wizard, RunStage stage, bool qvx_rules);

class AggregationRulesWizard : public AggregationRules {
 public:
  // `window` null: no person; the wizard is finished as shaped.
  AggregationRulesWizard(fs::path program_folder, std::shared_ptr<rules::WizardUi> window);
  [[nodiscard]] bool Select(RunStage stage, bool qvx_rules, const fs::path& asc,
              const std::string& project_stem) override;
  std::optional<int16_t> ObjectiveOne() const override;

 private:
  fs::path program_folder_;
  std::shared_ptr<rules::WizardUi> window_;
  rules::RulesSession session_;  // shared by the stages of one aggregation run
  std::unique_ptr<rules::RulesWizardForRun> last_;
};

}  // namespace tessaly::aggregate
