#include "aggregate/rules_binding.h"

namespace tessaly::aggregate {

namespace {

constexpr int kUserRules = static_cast<int>(rules::ModelingType::WithUserRules);
constexpr int kQvxRules = static_cast<int>(rules::ModelingType::WithQvxRules);

class ShapedWizardUi : public rules::WizardUi {
 public:
  ShapedWizardUi(RunStage stage, bool qvx, std::shared_ptr<rules::WizardUi> window)
      : stage_(stage), qvx_(qvx), window_(std::move(window)) {}
  void Run(rules::RulesWizard& wizard) override {
    ShapeRulesWizard(wizard, stage_, qvx_);
    if (window_) {
      window_->Run(wizard);
      return;
    }
    for (int guard = 0; guard < 20 && wizard.Step() != 5 && !wizard.Closed(); ++guard) wizard.Next();
    wizard.Finish();
  }

 private:
  RunStage stage_;
  bool qvx_;
  std::shared_ptr<rules::WizardUi> window_;
};

}  // namespace

void ShapeRulesWizard(rules::RulesWizard& wizard, RunStage stage, bool qvx_rules) {
  const bool children = stage == RunStage::Children;
  const int kept = children || qvx_rules ? kQvxRules : kUserRules;
  if (!children) wizard.ClickModelingType(kept);
  for (int i = 0; i < static_cast<int>(wizard.optModelingType.size()); ++i)
    wizard.optModelingType[i].visible = i == kept;
  // The local time trend is offered for the parent under QVX rules only, set there.
  const bool trend = !children && qvx_rules;
  wizard.cboLocalTimeTrend.visible = trend;
  wizard.cboLocalTimeTrend.value = trend;
}

AggregationRulesWizard::AggregationRulesWizard(fs::path program_folder,
                                               std::shared_ptr<rules::WizardUi> window)
    : program_folder_(std::move(program_folder)), window_(std::move(window)) {}

bool AggregationRulesWizard::Select(RunStage stage, bool qvx_rules, const fs::path& asc,
                                    const std::string& project_stem) {
  last_ = std::make_unique<rules::RulesWizardForRun>(
      program_folder_, std::make_shared<ShapedWizardUi>(stage, qvx_rules, window_), session_);
  last_->SetAggregationRun(true);
  return last_->Show(project_stem, asc);
}

std::optional<int16_t> AggregationRulesWizard::ObjectiveOne() const {
  return last_ ? last_->ObjectiveOne() : std::nullopt;
}

}  // namespace tessaly::aggregate
