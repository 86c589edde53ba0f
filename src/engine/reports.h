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

// A forecast of a retained period beside the value held out (the forecasts start at the
// end of the estimation sample, so forecast h is that of retained period h).
struct RetainedForecast {
  double actual = 0.0;
  double forecast = 0.0;
  double lower = 0.0;
  double upper = 0.0;
};

// Out-of-sample accuracy over the retained periods.
struct RetainedAccuracy {
  int count = 0;          // retained periods with a forecast
  int mape_count = 0;     // of those, with an actual other than zero
  double mape = 0.0;      // mean absolute percentage error, %
  double mae = 0.0;
  double rmse = 0.0;
  int within_limits = 0;  // actuals inside the forecast limits
};

// The forecasts of the retained periods beside their actuals (as many as both reach).
std::vector<RetainedForecast> CompareRetained(const std::vector<double>& retained,
                                              const ModelResult& result);
RetainedAccuracy Accuracy(const std::vector<RetainedForecast>& rows);

struct ReportInput {
  const PreparedRequest* request = nullptr;
  const ModelResult* result = nullptr;
  std::string rules_source;          // "ENGINE.GO" or "built-in rules"
  std::vector<std::string> notes;    // control files and the starting model, as found
  bool identification_only = false;  // objective #1 97: descriptive measures, no forecast
  std::vector<RetainedForecast> retained;  // out-of-sample forecasts of the retained periods
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
// (PULSERPT.CSV, LEVELRPT.CSV, TRENDRPT.CSV, EARLYSIG.CSV, PARCHRPT.CSV, VARCHRPT.CSV;
// POOLCOEF.CSV for a pooled cross-section; with retained values MAPECOMP.CSV and
// FORE-MON.CSV), writing a header line into a file that is created, and
// brings SUMMAPE.TXT up to date: one line per dataset and the sum over all of them.
void AppendRunWideReports(const std::filesystem::path& folder, const ReportInput& in);

// SUMMAPE.TXT, the run's summary of out-of-sample accuracy: its dataset lines, in order (none
// when the file is missing), and the whole file written anew from dataset lines with the total
// over them. Joining the summaries of parts of a run gives the summary of the whole run.
std::vector<std::string> SummaryMapeDatasetLines(const std::filesystem::path& file);
bool WriteSummaryMape(const std::filesystem::path& file, const std::vector<std::string>& rows);

// Observations at the end of the series where an intervention counts as an early signal.
constexpr int kEarlySignalWindow = 3;

}  // namespace quorvane
