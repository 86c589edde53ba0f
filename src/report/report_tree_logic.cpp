#include "report/report_tree_logic.h"

#include <algorithm>
#include <optional>

#include "batch/run_outputs.h"
#include "platform/dialogs.h"
#include "platform/paths.h"
#include "report/report_texts.h"
#include "report/site.h"

namespace tessaly::report {

namespace {

using batch::NodeKind;

// The report rows a click knows, by node text in capitals, with the suffix of the file.
struct ReportText {
  const char* text;
  const char* suffix;
};
constexpr ReportText kReportTexts[] = {
    {"DETAILS.HTM", ".htm"},        {"ENGINE.TXT", "ENGINE.TXT"},   {"INTRVENT.HTM", "INTRVENT.HTM"},
    {"EQUATION.TXT", "EQUATION.TXT"}, {"VERBAL.TXT", "VERBAL.TXT"}, {"STAT.HTM", "STAT.HTM"},
    {"OUTCAST.TXT", "OUTCAST.TXT"}, {"RHSIDE.TXT", "RHSIDE.TXT"},   {"ADJUSTED.TXT", "ADJUSTED.TXT"},
};

constexpr const char* kHeadingTexts[] = {"ALL GRAPHS BY TYPE", "ALL REPORTS BY TYPE",
                                         "SUMMARY REPORTS", "REPORTS", "GRAPHS"};

// The pooling rows: the file each shows in the output folder; the F-test report is
// looked for under the project's stem as well.
struct PoolingText {
  const char* text;
  const char* file;
};
constexpr PoolingText kPoolingTexts[] = {{"POOL COEFFICIENCIES", "POOLCOEF.TXT"},
                                         {"ANALYSIS", "ANALYSIS.TXT"},
                                         {"FTABLE1", "FTable1.html"},
                                         {"FTABLE2", "FTable2.html"}};

constexpr const char* kActualsForecastsSuffix = "actfore.jpg";

// The series node above a node (the node itself when it is one).
const batch::ReportNode* SeriesOf(const batch::ReportTree& tree, const batch::ReportNode& node) {
  const batch::ReportNode* at = &node;
  for (int guard = 0; at && guard < 16; ++guard) {
    if (at->kind == NodeKind::Series) return at;
    if (at->parent.empty()) break;
    at = tree.Find(at->parent);
  }
  if (!node.series.empty()) return tree.Find(batch::SeriesKey(node.series));
  return nullptr;
}

fs::path InOutput(const ClickContext& context, const std::string& name) {
  return platform::ResolveNoCase(context.output_path, name);
}

}  // namespace

void PopulateTree(batch::ReportTree& tree, batch::RowFlags& flags,
                  const std::vector<std::string>& asc_files, const fs::path& output_path,
                  const std::string& batch_name, bool no_graphs) {
  tree.Clear();
  flags.Clear();
  for (const std::string& asc : asc_files) {
    const std::string stem = DatasetName(asc);
    batch::AddSeriesNode(tree, asc);
    batch::AddReportsNode(tree, asc);
    for (size_t i = 0; i < batch::kReportRows.size(); ++i) {
      const batch::ReportRow& row = batch::kReportRows[i];
      if (!platform::ExistsNoCase(output_path, stem + row.suffix)) continue;
      batch::AddReportRow(tree, asc, row);
      flags.report[i] = true;
    }
    batch::AddGraphsNode(tree, asc);
    for (size_t i = 0; i < batch::kGraphRows.size(); ++i) {
      const batch::GraphRow& row = batch::kGraphRows[i];
      if (!platform::ExistsNoCase(output_path, stem + row.suffix)) continue;
      batch::AddGraphRow(tree, asc, row);
      flags.graph[i] = true;
    }
  }
  if (asc_files.size() >= 2 && !no_graphs)
    batch::AddAllNodes(tree, flags, output_path, batch::ProjectStem(batch_name));
}

ClickAction RouteClick(const batch::ReportTree& tree, const batch::ReportNode& node,
                       const ClickContext& context) {
  ClickAction action;
  const std::string text = platform::ToUpper(node.text);

  if (node.kind == NodeKind::Series) {
    const std::string stem = DatasetName(node.text);
    action.kind = ClickKind::Series;
    auto error_page = platform::FindNoCase(context.output_path, stem + "err.html");
    action.file = error_page ? *error_page : InOutput(context, "display.html");
    return action;
  }
  for (const char* heading : kHeadingTexts) {
    if (text == heading) {
      action.kind = ClickKind::Heading;
      return action;
    }
  }
  if (node.kind != NodeKind::AllReports && node.kind != NodeKind::AllGraphs) {
    for (const ReportText& r : kReportTexts) {
      if (text != r.text) continue;
      if (const batch::ReportNode* series = SeriesOf(tree, node)) {
        action.kind = ClickKind::Report;
        action.file = InOutput(context, DatasetName(series->text) + r.suffix);
      }
      return action;
    }
    if (const batch::GraphRow* g = batch::FindGraphRowByText(node.text)) {
      if (const batch::ReportNode* series = SeriesOf(tree, node)) {
        action.kind = ClickKind::Graph;
        action.file = InOutput(context, DatasetName(series->text) + g->suffix);
      }
      return action;
    }
  }
  const std::string project_stem = batch::ProjectStem(context.batch_name);
  if (const batch::SummaryRow* s = batch::FindSummaryRowByText(node.text)) {
    action.kind = ClickKind::Summary;
    action.file = InOutput(context, project_stem + s->suffix);
    return action;
  }
  for (const PoolingText& p : kPoolingTexts) {
    if (text != p.text) continue;
    action.kind = ClickKind::Pooling;
    auto found = platform::FindNoCase(context.output_path, p.file);
    if (!found) found = platform::FindNoCase(context.output_path, project_stem + p.file);
    action.file = found ? *found : InOutput(context, p.file);
    return action;
  }
  for (const batch::AllRow& r : batch::kAllReportRows) {
    if (!platform::EqualsNoCase(r.text, node.text)) continue;
    action.kind = ClickKind::AllReports;
    action.suffix = batch::kReportRows[r.row].suffix;
    return action;
  }
  for (const batch::AllRow& r : batch::kAllGraphRows) {
    if (!platform::EqualsNoCase(r.text, node.text)) continue;
    action.kind = ClickKind::AllGraphs;
    action.suffix = batch::kGraphRows[r.row].suffix;
    action.actfit_jump = std::string(r.id) == "AG1";
    return action;
  }
  return action;
}

bool IsParentWalk(const ClickContext& context) {
  return context.aggregation_run || context.asc_files.size() < 2;
}

std::vector<std::string> WalkStops(const ClickContext& context, bool reports) {
  std::vector<std::string> stops;
  if (IsParentWalk(context)) {
    stops.push_back("GROUPT");
    for (size_t k = 0; k < context.chosen.size(); ++k) {
      const std::string& child = context.chosen[k];
      std::string stem = child.size() > 4 ? child.substr(0, child.size() - 4) : std::string();
      if (context.replacements_chosen && k < context.child_replacement.size() &&
          context.child_replacement[k] != "-999999")
        stem = DatasetName(context.child_replacement[k]);
      stops.push_back(stem);
    }
    return stops;
  }
  for (const std::string& asc : context.asc_files) stops.push_back(DatasetName(asc));
  if (reports) stops.push_back("TOTALPOOL");
  return stops;
}

void WalkAll(const ClickContext& context, const ClickAction& action, ReportViewer& viewer) {
  const bool reports = action.kind == ClickKind::AllReports;
  const std::string title = reports ? "Select Report" : "Select Graph";
  const std::vector<std::string> stops = WalkStops(context, reports);
  const bool parent_walk = IsParentWalk(context);
  std::string suffix = action.suffix;
  bool jump = action.actfit_jump && !parent_walk;
  const size_t n = stops.size();
  size_t i = 0;
  while (i < n) {
    auto file = platform::FindNoCase(context.output_path, stops[i] + suffix);
    if (!file || stops[i].empty()) {  // passed over forwards, without a dialog
      ++i;
      continue;
    }
    viewer.ShowWalkPosition(stops[i], static_cast<int>(i + 1), static_cast<int>(n));
    viewer.navigate(*file);
    switch (viewer.ShowStepDialog(title, i != 0, i + 1 != n)) {
      case StepChoice::Cancel:
        return;
      case StepChoice::Left:
        if (jump) {
          // "<===" in "All Actuals/Fit" goes on in "All Actuals/Forecasts".
          suffix = kActualsForecastsSuffix;
          jump = false;
        }
        if (i > 0) --i;
        break;
      case StepChoice::Right:
      case StepChoice::Closed:
        ++i;
        break;
    }
  }
}

void OnTreeClick(const batch::ReportTree& tree, const batch::ReportNode& node,
                 const ClickContext& context, ReportViewer& viewer) {
  const ClickAction action = RouteClick(tree, node, context);
  switch (action.kind) {
    case ClickKind::Nothing:
    case ClickKind::Heading:
      return;
    case ClickKind::AllReports:
    case ClickKind::AllGraphs:
      WalkAll(context, action, viewer);
      return;
    default:
      viewer.navigate(action.file);
  }
}

std::string BrowserErrorText(long number, const std::string& text) {
  return std::string(texts::kBrowserError) + std::to_string(number) + ": " + text;
}

void ShowBrowserError(long number, const std::string& text) {
  platform::Dialogs().Message(BrowserErrorText(number, text), platform::mb::Exclamation,
                              texts::kBrowserTitle);
}

}  // namespace tessaly::report
