#pragma once
// The run's wizard seam bound to the rules subsystem's Model and Rules Wizard: the desktop
// hands its modal wizard UI, and the run asks it once before the first file.
#include <memory>

#include "batch/run.h"
#include "rules/run_seam.h"

namespace tessaly::batch {

class RulesWizardBinding : public RunRulesWizard {
 public:
  RulesWizardBinding(fs::path program_folder, std::shared_ptr<rules::WizardUi> ui, bool no_trend_at_start);
  [[nodiscard]] bool Show(const WizardRequest& request) override;
  std::optional<int16_t> ObjectiveOne() const override;
  void Check4Model(const std::string& stem, const std::string& model_name) override;

 private:
  rules::RulesSession session_;
  rules::RulesWizardForRun wizard_;
};

}  // namespace tessaly::batch
