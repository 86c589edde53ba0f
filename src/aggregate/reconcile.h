#pragma once
// Reconciliation of an aggregation's forecasts, the last stage of the run. Bottom Up makes
// the parent's forecast file the sum of the children's; Top Down shares the parent's
// forecasts out over the children by their first-period shares. Both write the detail
// table CON<batch>.PRO and, for mixed-frequency data, the per-period REC<batch>.CSV.
#include <array>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace tessaly::aggregate {

namespace fs = std::filesystem;

inline constexpr const char* kNoReplacement = "-999999";
inline constexpr int kMaxReconcilePeriods = 600;

// The three value columns of one forecast line: the line is trimmed, then 25 characters
// from positions 10, 35 and 60 are read as leading numbers (blank gives 0).
struct ProLine {
  std::array<double, 3> value{};
};
ProLine ReadProLine(const std::string& line);

// The "0.0000000000" text of a reconciled value.
std::string TenDecimals(double value);

// The parent's line of Bottom Up: the period label, nine blanks and the three sums, each
// column's text nested into the mask of the one before it.
std::string BottomUpLine(const std::string& parent_line, const std::array<double, 3>& sums);
// A child's line of Top Down: the label, then each value plus 0.000005 in ten decimals,
// nine blanks before each.
std::string TopDownLine(const std::string& child_line, const std::array<double, 3>& adjusted);

struct ReconcileInput {
  fs::path output_path;
  std::vector<std::string> chosen;       // the children, list order
  std::vector<std::string> replacement;  // per child; kNoReplacement where none (may be empty)
  std::string number_of_forecasts;       // bounds Bottom Up
  long forecast_bound = 0;               // DataProp(8), bounds Top Down
  std::string batch_name;                // the project's file name
  int direction = 1;                     // 1 Bottom Up, 2 Top Down, 3 MinT
  bool mixed_frequency = false;          // the mixed-frequency box set
  std::string stage_caption;             // the caption family's text for this stage
  std::function<void(const std::string&)> status;
  // MinT: each series' in-sample one-step errors, the parent first (NaN where none).
  std::vector<std::vector<double>> residuals;
};

// The forecast file of child `c`: its replacement's name or its own, less the last four
// characters, with ".PRO".
std::string ChildForecastName(const ReconcileInput& input, std::size_t c);
std::string DetailTableName(const std::string& batch_name);   // CON<batch>.PRO
std::string PeriodTableName(const std::string& batch_name);   // REC<batch>.CSV

// Runs the direction asked, and the detail and per-period tables. MinT without the errors of
// every series says so and reconciles bottom up.
void ReconcileForecasts(const ReconcileInput& input);

// The three closing messages, each when its file exists; `last_series_stem` names the
// series last run.
void ShowClosingMessages(const ReconcileInput& input, const std::string& last_series_stem);

}  // namespace tessaly::aggregate
