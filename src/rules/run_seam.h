#pragma once
// What a run asks of the rules subsystem: the wizard at its preparation (before any file
// is run), the objective #1 the wizard chose for every file, and after each good dataset
// the final model taken up when the person asked for models to be saved. The batch run
// holds one of these behind its own wizard interface.
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "rules/session.h"
#include "rules/wizard.h"

namespace tessaly::rules {

class RulesWizardForRun {
 public:
  RulesWizardForRun(fs::path app_folder, std::shared_ptr<WizardUi> ui,
                    RulesSession& session);

  // The run's shape that the wizard narrows to.
  void SetAggregationRun(bool on) { aggregation_ = on; }
  void SetPoolingRun(bool on) { pooling_ = on; }
  // A pooling run's question of the number of groups (see WizardContext).
  void SetGroupCountDialog(std::function<std::optional<int>(long)> ask) { ask_group_count_ = std::move(ask); }
  // NOTREND.QVX existed when the program started.
  void SetNoTrendAtStartup(bool on) { notrend_at_startup_ = on; }

  // Shows the wizard for the run whose first file is `first_asc`; false when cancelled
  // (or when the file's shape cannot be read, after telling the person).
  [[nodiscard]] bool Show(const std::string& project_stem, const fs::path& first_asc);
  // Objective #1 for every file of the run; none when the wizard was not finished.
  std::optional<int16_t> ObjectiveOne() const;
  // After a good dataset: with the save-model flag up, the engine's "<name>.MOD" becomes
  // the next "<stem>.F<i><j>". `model_name` is the engine's file name without ".MOD"
  // (the dataset's stem when empty).
  void Check4Model(const std::string& stem, const std::string& model_name = "");

  const WizardOutcome& Outcome() const { return outcome_; }

 private:
  fs::path folder_;
  std::shared_ptr<WizardUi> ui_;
  RulesSession& session_;
  bool aggregation_ = false, pooling_ = false, notrend_at_startup_ = false;
  std::function<std::optional<int>(long)> ask_group_count_;
  WizardOutcome outcome_;
};

}  // namespace tessaly::rules
