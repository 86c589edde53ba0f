#pragma once
// The aggregation with no window: the children named, the parameters' questions answered in
// the dialog's order from flags, the same checks and messages, then the run. What tsly
// aggregate calls; the desktop's dialogs call the same pieces one click at a time.
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "aggregate/aggregation_run.h"

namespace tessaly::aggregate {

struct AggregationAnswers {
  std::vector<std::string> children;     // in list order
  std::optional<std::string> forecasts;  // the number of forecasts; the first child's when none
  bool parent_forecasts = false;         // GROUPT.PRO supplied
  bool parent_asc = false;               // GROUPT.ASC supplied
  bool mixed_frequency = false;
  bool add_series = false;
  bool causal = false;
  bool user_rules = false;               // "Automatic With Users Rules"; else QVX rules
  bool no_fixed_effects = false;         // "Disable Fixed Effects for Children?" Yes
  bool top_down = false;
  bool mint = false;                     // the minimum-trace reconciliation
};

// Exit statuses: 0 the run finished, 1 it was incomplete or cancelled on the way, 2 the
// selection or the answers were refused (nothing in the project folder was changed).
// `seams.rules` null: the wizard is finished as the stage shapes it, with no window.
[[nodiscard]] int RunAggregationUnattended(const fs::path& project_file, const AggregationAnswers& answers,
                             AggregationSeams seams, const fs::path& program_folder);

// Puts the children's originals back from the safety copies in ASCBACKUP, as closing the
// project does; the copies stay.
void RestoreChildrenFromBackup(const fs::path& in_directory, const std::vector<std::string>& children);

}  // namespace tessaly::aggregate
