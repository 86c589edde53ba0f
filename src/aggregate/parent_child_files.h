#pragma once
// The parent series GROUPT.ASC as the plain sum of the children, and each child's file as
// its own run reads it: with the parent's history and forecasts as a causal input when
// asked, and with the seasonal dummies disabled when fixed effects are turned off.
#include <filesystem>
#include <string>
#include <vector>

namespace tessaly::aggregate {

namespace fs = std::filesystem;

inline constexpr int kMaxChildObservations = 10000;
inline constexpr const char* kParentAsc = "GROUPT.ASC";
inline constexpr const char* kParentName = "GROUPT";

// ChildHistory: each child's observations in list order, and their sum.
struct ChildHistories {
  std::vector<std::vector<double>> child;  // child, observation (as many as its file has)
  std::vector<double> sum;                 // per observation, 0 to the longest child's end
};

// Reads each child (list order) from `in_directory`: 13 lines skipped, then up to 10000
// values; a line that isn't a number counts 0. A shorter child adds zero to the sum.
ChildHistories LoadChildren(const fs::path& in_directory, const std::vector<std::string>& chosen);

// The parent's name: "GROUPT", with "__mmddyy" from a first-observation date "m/d/yyyy".
std::string ParentSeriesName(const std::string& first_observation_date);

// The values the parent's and children's files take from the flow.
struct AscShape {
  std::string seasonality, major_period, minor_period, observations;  // the Keep texts
  std::string number_of_forecasts;
  int fixed_effects_choice = 2;  // 1: disabled
};

// The lines of GROUPT.ASC.
std::vector<std::string> ParentAscLines(const AscShape& shape, const ChildHistories& histories,
                                        const std::string& first_observation_date);

// The parent's data properties the children's files take: its DataProp(6) and DataProp(8).
struct ParentProps {
  std::string future_count;     // DataProp(6)
  std::string forecast_count;   // DataProp(8)
};

// The lines of one rewritten child file. `parent_forecasts` is the first value column of
// GROUPT.PRO, used when `causal`.
std::vector<std::string> ChildAscLines(const AscShape& shape, const ParentProps& parent,
                                       const std::string& child_name,
                                       const std::vector<double>& child_history,
                                       const ChildHistories& histories, bool causal,
                                       const std::vector<double>& parent_forecasts);

// The first value column of a forecast file: line 1 skipped, up to `count` lines.
std::vector<double> ForecastColumn(const fs::path& pro_file, long count);

}  // namespace tessaly::aggregate
