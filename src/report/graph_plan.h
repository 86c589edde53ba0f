#pragma once
// What each of the nine graphs of a series shows, worked out as plain data: which lines,
// over which points, with which legend, titles and period labels. The chart drawer only
// paints a GraphPlan; every decision about content is made here, without Qt.
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "batch/graph_preferences.h"

namespace tessaly::report {

// The value the engine leaves where it has no fit or residual.
constexpr double kMissingValue = 99999999999.0;

// True for a value a graph can draw: finite and not the engine's missing value.
bool IsDrawable(double value);

// The nine graphs, numbered by their tree ids G1 to G9.
enum class GraphKind : int {
  ActFit = 1,      // G1 "Actuals/Fit"
  ActFore = 2,     // G2 "Actuals/Forecasts"
  FitFore = 3,     // G3 "Fitted/Forecasts"
  ActFitFore = 4,  // G4 "Actuals/Fitted/Forecasts"
  ActCleanse = 5,  // G5 "Actuals/Cleansed"
  Res = 6,         // G6 "Residuals"
  ActRes = 7,      // G7 "Actuals/Residuals"
  Fore = 8,        // G8 "Forecasts"
  Act = 9,         // G9 "Actuals"
};

// The order in which the run draws them after each series.
constexpr std::array<GraphKind, 9> kDrawingOrder = {
    GraphKind::Act,     GraphKind::Fore,       GraphKind::ActFit,
    GraphKind::ActFore, GraphKind::FitFore,    GraphKind::ActFitFore,
    GraphKind::ActCleanse, GraphKind::Res,     GraphKind::ActRes};

// A graph's picture file. Its labels in the report tree and the site are the run's
// (batch/report_tree.h) and the site's own.
struct GraphInfo {
  GraphKind kind;
  const char* file_suffix;  // "actfit.jpg": the picture is <series><suffix>
};

// G1 to G9 in tree order.
const std::array<GraphInfo, 9>& AllGraphs();
const GraphInfo& Info(GraphKind kind);

// The user's graph preferences live with the run, which hands them to its reports.
using batch::GraphPreferences;
using batch::GraphPreferencesFrom;

// Whether the preferences let this graph be drawn: no graphs at all when NOGRAPHS is set;
// with "Select Graphs", only those whose box is ticked.
bool WantsGraph(const GraphPreferences& prefs, GraphKind kind);

// One series as the engine returned it, in plain vectors (element k-1 holds period k).
struct GraphInput {
  std::string series_name;        // names the files and heads the titles
  std::vector<double> actuals;    // the observations of the output series
  std::vector<double> fitted;     // Doubles10000A: kMissingValue where there is no fit
  std::vector<double> residuals;  // Doubles10000B
  std::vector<double> cleansed;   // Doubles10000C
  std::vector<double> forecasts;  // ForecastValues 1-600
  std::vector<double> lower;      // ForecastValues 601-1200
  std::vector<double> upper;      // ForecastValues 1201-1800
  int begin_year = 0;             // DataProp(3), start Major Period
  int begin_period = 0;           // DataProp(4), start Minor Period
  int seasonality = 1;            // DataProp(2)
  int leading_left_out = 0;       // Integers20(1): observations the model left out
  std::string date_text;          // the date in the titles; empty: today as mm/dd/yyyy
};

enum class LineRole { Actual, Fitted, Forecast, Lower, Upper, Cleansed, Residual };

struct GraphLine {
  LineRole role;
  std::string legend;                // exactly as the legend shows it
  std::vector<std::optional<double>> values;  // one per point; empty where nothing is drawn
};

struct GraphPlan {
  GraphKind kind;
  std::string file_name;            // <series><suffix>
  std::string title;                // name + title text + date + ")"
  std::string x_title;              // "Periods From ... to ...(Seasonality=...)"
  std::vector<std::string> labels;  // one per point
  int label_step = 1;               // every label_step-th label is shown, from the first
  std::vector<GraphLine> lines;
  int forecast_origin = -1;         // index of the first forecast point, -1 when none
  double y_min = 0, y_max = 0;      // smallest and largest drawn value
  bool zero_line = false;           // residual graphs mark zero
  // A line drawn against its own scale, in a panel under the others (residuals beside
  // actuals, which would flatten them on the actuals' scale); -1 when all share one.
  int secondary_line = -1;
  double y2_min = 0, y2_max = 0;
};

// The label step: every point up to 10 points, every second up to 20, every third up to
// 30, beyond that n / 16 rounded to the nearest integer (halves to even).
int LabelStep(int points);

// Period labels for `count` periods from (year, period): the year alone for seasonality
// 1, else "year/period", the period wrapping at the seasonality.
std::vector<std::string> PeriodLabels(int begin_year, int begin_period, int seasonality,
                                      int count);

// The plan of one graph, or nullopt when there is nothing to draw (no points, or a line
// of the graph without a single drawable value): then no picture is made.
[[nodiscard]] std::optional<GraphPlan> PlanGraph(const GraphInput& input, GraphKind kind, bool no_limits);

// Today as mm/dd/yyyy, the form the titles use.
std::string TodayText();

}  // namespace tessaly::report
