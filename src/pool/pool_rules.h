#pragma once
// The rules wizard as a pooling run asks it: narrowed to an explicit or a canned model, the
// number of groups asked through the pooling dialog (frmLoadGroupData on the desktop).
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "batch/run.h"
#include "rules/run_seam.h"

namespace tessaly::pool {

namespace fs = std::filesystem;

class PoolRulesWizard : public batch::RunRulesWizard {
 public:
  // `ask_groups` asks the number of groups for the stack's observations; nullopt on Cancel.
  PoolRulesWizard(fs::path program_folder, std::shared_ptr<rules::WizardUi> ui, bool no_trend_at_start,
                  std::function<std::optional<int>(long observations)> ask_groups);
  [[nodiscard]] bool Show(const batch::WizardRequest& request) override;
  std::optional<int16_t> ObjectiveOne() const override { return wizard_.ObjectiveOne(); }
  void Check4Model(const std::string& stem, const std::string& model_name) override {
    wizard_.Check4Model(stem, model_name);
  }

 private:
  rules::RulesSession session_;
  rules::RulesWizardForRun wizard_;
};

}  // namespace tessaly::pool
