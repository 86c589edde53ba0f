#pragma once
// The report tree beside the browser pane: filling it from an existing project's OUTPUT
// folder, and what a click on each kind of node shows, including the walks of the "All"
// rows through every series with the step dialog (frmAllgraphsSel).
#include <filesystem>
#include <string>
#include <vector>

#include "batch/report_tree.h"

namespace tessaly::report {

namespace fs = std::filesystem;

// Fills the tree from the output folder: per ASC file its node, "Reports" with the rows
// whose file exists, "Graphs" with the pictures that exist (setting the row flags, cleared
// first); then, with two files or more and graphs not switched off, the "All" rows that
// some series filled and the summary rows whose file exists.
void PopulateTree(batch::ReportTree& tree, batch::RowFlags& flags,
                  const std::vector<std::string>& asc_files, const fs::path& output_path,
                  const std::string& batch_name, bool no_graphs);

// The answer of the step dialog.
enum class StepChoice {
  Left,    // "<===": one back
  Right,   // "===>": one on
  Cancel,  // ends the walk
  Closed,  // closed with neither button
};

// The desktop's side of a click: the browser pane and the step dialog.
class ReportViewer {
 public:
  virtual ~ReportViewer() = default;
  // Shows the file in the browser pane (hiding the grid).
  virtual void navigate(const fs::path& file) = 0;
  // frmAllgraphsSel, modal: titled "Select Graph" or "Select Report", its buttons enabled
  // as given.
  virtual StepChoice ShowStepDialog(const std::string& title, bool left_enabled,
                                    bool right_enabled) = 0;
  // In an "All" walk, before each stop is shown: its dataset and its place among the stops.
  virtual void ShowWalkPosition(const std::string& dataset, int number, int count) {}
};

// What a click needs to know of the project and of an aggregation run.
struct ClickContext {
  fs::path output_path;
  std::string batch_name;               // the project's file name
  std::vector<std::string> asc_files;   // the project's list, in order
  bool aggregation_run = false;         // the walks take the parent and its children
  std::vector<std::string> chosen;      // lstChosen: the children's ASC files
  bool replacements_chosen = false;     // ReplacementsChosen
  std::vector<std::string> child_replacement;  // ChildReplacement per child, "-999999" for none
};

enum class ClickKind { Nothing, Heading, Series, Report, Graph, Summary, Pooling, AllReports, AllGraphs };

struct ClickAction {
  ClickKind kind = ClickKind::Nothing;
  fs::path file;        // what to show, for the kinds that show one file
  std::string suffix;   // for the "All" rows: the suffix each stop's stem takes
  bool actfit_jump = false;  // "All Actuals/Fit": "<===" carries over into "All Actuals/Forecasts"
};

// What a click on the node means (no side effect): its text in capitals is compared with
// the fixed list, the first match deciding.
ClickAction RouteClick(const batch::ReportTree& tree, const batch::ReportNode& node,
                       const ClickContext& context);

// The click: shows the file, walks the "All" rows, or does nothing for a heading.
void OnTreeClick(const batch::ReportTree& tree, const batch::ReportNode& node,
                 const ClickContext& context, ReportViewer& viewer);

// The stems a walk stops at: the parent "GROUPT" and the children (their replacements
// where chosen) in an aggregation run or a project of fewer than two files; otherwise the
// project's files, with "TOTALPOOL" last for reports.
std::vector<std::string> WalkStops(const ClickContext& context, bool reports);
bool IsParentWalk(const ClickContext& context);

// The walk of one "All" row; see RouteClick for the suffix and the jump.
void WalkAll(const ClickContext& context, const ClickAction& action, ReportViewer& viewer);

// "Browser error #", the number, ": " and the text; shown through the dialog host.
std::string BrowserErrorText(long number, const std::string& text);
void ShowBrowserError(long number, const std::string& text);

}  // namespace tessaly::report
