#pragma once
// The files the engine writes into its working folder for one dataset: the reports a
// person reads (DETAILS.HTM, STAT.HTM, EQUATION.TXT, RHSIDE.TXT, VERBAL.TXT, OUTCAST.TXT,
// ADJUSTED.TXT), the forecast file TS50PRO.123, the final model PASS2MOD.123 (and
// <series>.MOD when SAVEMOD.QVX asks for it), the tables FITTED.CSV, FORECAST.CSV,
// RESIDUALACF.CSV, EQUATION.CSV, and the lines added to the run-wide files.
#include <filesystem>
#include <string>
#include <vector>

#include "engine/model.h"
#include "engine/request.h"

namespace quorvane {

struct ReportInput {
  const PreparedRequest* request = nullptr;
  const ModelResult* result = nullptr;
  std::string rules_source;          // "ENGINE.GO" or "built-in rules"
  std::vector<std::string> notes;    // control files and the starting model, as found
  bool identification_only = false;  // objective #1 97: descriptive measures, no forecast
};

// Descriptive measures of the output series for identification: the series after the
// transform and the differencing that the model chose, with its autocorrelations and
// partial autocorrelations and their limits (two standard errors of white noise).
struct IdentificationTable {
  std::string series_text;           // "ln PASSENGERS, differenced (1 - B)(1 - B**12)"
  int n = 0;
  double mean = 0.0, sd = 0.0;
  std::vector<double> acf, pacf;
  double limit = 0.0;
};
IdentificationTable Identify(const ReportInput& in);

// The figures the reports share, in one place.
std::string FormatNumber(double value, int decimals);
std::string PercentText(double level);  // 95 -> "95%", 97.5 -> "97.5%"

// Each report's content (lines without their CR LF, or the whole HTML page).
std::string DetailsHtml(const ReportInput& in);
std::string StatHtml(const ReportInput& in);
std::vector<std::string> EquationText(const ReportInput& in);
std::vector<std::string> RhsideText(const ReportInput& in);
std::vector<std::string> VerbalText(const ReportInput& in);
std::vector<std::string> OutcastText(const ReportInput& in);
std::vector<std::string> AdjustedText(const ReportInput& in);

// Writes every per-dataset file; returns the names of the files that could not be written.
std::vector<std::string> WriteDatasetReports(const std::filesystem::path& folder,
                                             const ReportInput& in);

// Appends this dataset's lines to the run-wide files that have content for it
// (PULSERPT.CSV, LEVELRPT.CSV, TRENDRPT.CSV, EARLYSIG.CSV), writing a header line into
// a file that is created.
void AppendRunWideReports(const std::filesystem::path& folder, const ReportInput& in);

// Observations at the end of the series where an intervention counts as an early signal.
constexpr int kEarlySignalWindow = 3;

}  // namespace quorvane
