#pragma once
// The series overview: one row per dataset of a project, read from what its last run left in
// the output folder (the engine's reports filed under the dataset's stem, the error pages,
// the overview page's statuses and the run-wide accuracy table). The desktop's overview table
// shows these rows; nothing here depends on a window.
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tessaly::report {

namespace fs = std::filesystem;

enum class SeriesStatus { Forecast, Rejected, Failed, NotRun };
// "forecast", "rejected", "failed", "not run".
const char* StatusText(SeriesStatus status);

struct SeriesOverviewRow {
  std::string asc_file;  // as the project lists it
  std::string dataset;   // the file's name less ".asc": the stem of its reports
  std::string series;    // the forecast series' name, as the engine's reports title it
  SeriesStatus status = SeriesStatus::NotRun;
  std::string reason;    // why it was rejected or failed
  std::string model;     // "ARIMA(0,1,1)(0,1,1)12"
  std::string transform; // "natural logarithm", "none"
  std::optional<int> interventions;
  std::optional<double> mape;          // in-sample, percent
  std::optional<double> holdout_mape;  // out-of-sample on the retained values, percent
  int holdout_count = 0;
  std::vector<std::string> warnings;
  fs::path report;  // what a double click opens first: the details, else the error page, else the overview page
};

// The rows of a project's datasets in the project's order. `project_stem` names the run-wide
// files (<stem>MAPECOMP.TXT).
std::vector<SeriesOverviewRow> ReadSeriesOverview(const std::vector<std::string>& asc_files,
                                                  const std::string& project_stem,
                                                  const fs::path& output_folder);

// Rows the overview shows for a filter text: those whose dataset, series, status, model,
// transform or warnings hold the text (without regard to case); every row for an empty text.
bool RowMatches(const SeriesOverviewRow& row, const std::string& filter);

}  // namespace tessaly::report
