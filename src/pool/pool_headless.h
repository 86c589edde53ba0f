#pragma once
// Pooling without a person: the rules wizard of the pooling run driven to Finish with a model
// given as a file in STARTMOD.123's layout or as a canned model's number, and the groups set
// to the chosen files (each file one group). `tsly pool` runs this after the selection's tests.
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "batch/batch_file.h"
#include "batch/run.h"
#include "pool/pool_run.h"
#include "rules/wizard.h"

namespace tessaly::pool {

namespace fs = std::filesystem;

struct ModelChoice {
  std::optional<fs::path> model_file;  // --model
  std::optional<int> preset;           // --preset: the canned model's objective value
};

// Drives the pooling wizard as a person would: an explicit model (the file, kept for the
// moment as the stack's next initial-model archive) or a canned one, and the groups
// answered Yes. A choice the wizard refuses leaves it open: the run is cancelled.
class ScriptedPoolWizard : public rules::WizardUi {
 public:
  explicit ScriptedPoolWizard(ModelChoice choice) : choice_(std::move(choice)) {}
  void Run(rules::RulesWizard& wizard) override;
  // The stack's initial-model archive that holds the model file.
  void SetArchive(std::string name) { archive_ = std::move(name); }
  // Why the choice could not be made ("" when it was).
  const std::string& Problem() const { return problem_; }

 private:
  ModelChoice choice_;
  std::string archive_;
  std::string problem_;
};

struct HeadlessPool {
  PoolOutcome outcome;
  std::string problem;  // why the wizard could not take the model ("" when it did)
  bool opened = true;   // false when the unsaved-changes question stopped the flow
};

// Opens the flow and runs it on `chosen` (already validated) with the model choice; the
// rules wizard is played by ScriptedPoolWizard. `reports` draws graphs when given;
// `engine_call` replaces the engine call (a benchmark times it).
HeadlessPool RunPoolHeadless(batch::cBatchFile& project, const std::vector<std::string>& chosen, const ModelChoice& choice,
                             const PoolOptions& options, std::shared_ptr<batch::RunReports> reports = nullptr,
                             batch::ReportTree* tree = nullptr, batch::EngineCallFunction engine_call = {});

}  // namespace tessaly::pool
