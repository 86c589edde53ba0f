#pragma once
// What the desktop's interactive graph of a dataset shows, read from the reports its run
// filed (<dataset>ADJUSTED.TXT: the actuals and the series adjusted for interventions;
// <dataset>FITTED.TXT: the fitted values; <dataset>.PRO: the forecasts and their limits),
// and where its axis ticks and its first window go. No Qt here: the chart in forms/ only
// draws this.
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tessaly::report {

namespace fs = std::filesystem;

struct Period {
  int year = 0;
  int period = 1;  // 1 for annual data
};

struct ChartLine {
  std::string legend;
  std::vector<std::optional<double>> values;  // one per point; empty where nothing is drawn
};

struct ChartData {
  std::string series;               // the series' name as the reports title it
  int seasonality = 1;
  std::vector<Period> periods;      // one per point: the history, then the forecasts
  std::vector<std::string> labels;  // "1958/7", or "1958" for annual data
  int forecast_origin = -1;         // the first forecast's point, -1 when none
  ChartLine actual, adjusted, fitted, forecast, lower, upper;
};

// nullopt when the dataset has no adjusted-series report (never forecast) or it cannot be read.
std::optional<ChartData> ReadChartData(const fs::path& output_folder, const std::string& dataset);

// None of the engine's reports carries the fitted values, so the run files them beside the
// reports as <dataset>FITTED.TXT: "Fitted values: <series>", then a table of PERIOD, ACTUAL,
// FITTED and RESIDUAL; a period without a fit (left out of the model) has its actual alone.
inline constexpr const char* kFittedSuffix = "FITTED.TXT";
struct FittedRow {
  std::string period;  // "1958/7", or "1958" for annual data
  double actual = 0;
  std::optional<double> fitted, residual;
};
[[nodiscard]] bool WriteFittedValues(const fs::path& file, const std::string& series,
                                     const std::vector<FittedRow>& rows);

// "1958/7" or "1958" (as the reports write periods) as a period; nullopt otherwise.
std::optional<Period> ParsePeriod(const std::string& text);

// The points first shown: every forecast and enough history to judge them (four times the
// horizon, at least three seasons and 24 points), or everything when that is most of it.
struct PointWindow {
  int first = 0, last = 0;  // inclusive
};
PointWindow DefaultWindow(int points, int forecast_origin, int seasonality);

// The ticks of the time axis over points first..last (inclusive): on whole years when the
// window holds several, every 1, 2, 5, 10... years so that at most `max_ticks` show; within
// a short window on steps of the season (every 1, 2, 3, 4 or 6 months, each quarter). Each
// tick is a point with its label ("1958" at a year's start, else "1958/7").
struct Tick {
  int point = 0;
  std::string label;
};
std::vector<Tick> AxisTicks(const std::vector<Period>& periods, int seasonality, int first, int last,
                            int max_ticks = 10);

}  // namespace tessaly::report
