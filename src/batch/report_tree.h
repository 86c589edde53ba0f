#pragma once
// The report tree as a plain model: what a run (and PopulateTree for an existing project)
// leaves for the desktop's trvMenu to show. Nodes have a unique key, a text, a parent key
// ("" at the top level) and a kind; children keep the order in which they were added.
//
// The families and their fixed rows (per-series reports R1-R8 and graphs G1-G9, the
// top-level "All" and summary rows) are tables here, so the run, PopulateTree, the click
// handler and the link-tree site all read the same names.
#include <array>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tessaly::batch {

enum class NodeKind {
  Series,          // a node named after an ASC file
  Heading,         // "Reports", "Graphs", "All Reports By Type", "All Graphs By Type", "Summary Reports"
  Report,          // R1-R8 under a series' "Reports"
  Graph,           // G1-G9 under a series' "Graphs"
  AllReports,      // AR rows
  AllGraphs,       // AG rows
  Summary,         // S1-S9
  Other,           // rows other flows add (pooling, F-tests)
};

struct ReportNode {
  std::string key;
  std::string text;
  std::string parent;   // key of the parent, "" at the top level
  NodeKind kind = NodeKind::Other;
  std::string id;       // "R1", "G4", "AR2", "S6", "Rpts", "Gphs"; "" for series and top headings
  std::string series;   // the ASC file name the node belongs to; "" for top-level rows
};

class ReportTree {
 public:
  void Clear();
  // Adds a node as the last child of `parent` ("" for the top level). False, and nothing
  // added, when the key is taken or the parent doesn't exist.
  bool Add(ReportNode node);
  // Removes the node and everything under it; false when there is no such key.
  bool Remove(std::string_view key);
  const ReportNode* Find(std::string_view key) const;
  bool Contains(std::string_view key) const { return Find(key) != nullptr; }
  std::vector<const ReportNode*> Children(std::string_view parent) const;
  const std::vector<ReportNode>& Nodes() const { return nodes_; }  // in order of adding
  std::size_t Size() const { return nodes_.size(); }
  bool Empty() const { return nodes_.empty(); }
  // One line per node, indented by ".." per level: text, " [", key, "]". For tracing and tests.
  std::string Display() const;

 private:
  std::vector<ReportNode> nodes_;
};

// A per-series report row.
struct ReportRow {
  const char* id;           // "R1"
  const char* engine_file;  // in the program's folder; "" for R4, which the front-end writes
  const char* suffix;       // appended to OutputPath and the stem
  const char* text;         // node text
};
inline constexpr std::array<ReportRow, 8> kReportRows{{
    {"R1", "DETAILS.HTM", ".htm", "DETAILS.HTM"},
    {"R2", "ADJUSTED.TXT", "ADJUSTED.TXT", "Adjusted.txt"},
    {"R3", "EQUATION.TXT", "EQUATION.TXT", "Equation.txt"},
    {"R4", "", "INTRVENT.HTM", "Intrvent.htm"},
    {"R5", "OUTCAST.TXT", "OUTCAST.TXT", "Outcast.txt"},
    {"R6", "RHSIDE.TXT", "RHSIDE.TXT", "RHSide.txt"},
    {"R7", "STAT.HTM", "STAT.HTM", "Stat.htm"},
    {"R8", "VERBAL.TXT", "VERBAL.TXT", "Verbal.txt"},
}};

struct GraphRow {
  const char* id;      // "G1"
  const char* text;    // node text
  const char* suffix;  // picture file: OutputPath, stem, suffix
};
inline constexpr std::array<GraphRow, 9> kGraphRows{{
    {"G1", "Actuals/Fit", "actfit.jpg"},
    {"G2", "Actuals/Forecasts", "actfore.jpg"},
    {"G3", "Fitted/Forecasts", "fitfore.jpg"},
    {"G4", "Actuals/Fitted/Forecasts", "actfitfore.jpg"},
    {"G5", "Actuals/Cleansed", "actcleanse.jpg"},
    {"G6", "Residuals", "res.jpg"},
    {"G7", "Actuals/Residuals", "actres.jpg"},
    {"G8", "Forecasts", "fore.jpg"},
    {"G9", "Actuals", "act.jpg"},
}};
// The earlier pictures of a stem deleted before its graphs are drawn ("fore.jpg" and
// "actfit.jpg" are not among them).
inline constexpr std::array<const char*, 7> kGraphSuffixesClearedBeforeDrawing{
    "actfore.jpg", "fitfore.jpg", "actfitfore.jpg", "actcleanse.jpg", "res.jpg", "actres.jpg",
    "act.jpg"};

struct AllRow {
  const char* id;    // "AR1", "AG1"
  int row;           // index into kReportRows / kGraphRows
  const char* text;
};
inline constexpr std::array<AllRow, 7> kAllReportRows{{
    {"AR1", 0, "All Details"},
    {"AR2", 1, "All Adjusted"},
    {"AR3", 2, "All Equations"},
    {"AR5", 4, "All Outcasts"},
    {"AR6", 5, "All RHSide"},
    {"AR7", 6, "All Stat"},
    {"AR8", 7, "All Verbal"},
}};
inline constexpr std::array<AllRow, 9> kAllGraphRows{{
    {"AG1", 0, "All Actuals/Fit"},
    {"AG2", 1, "All Actuals/Forecasts"},
    {"AG3", 2, "All Fitted/Forecasts"},
    {"AG4", 3, "All Actuals/Fitted/Forecasts"},
    {"AG5", 4, "All Actuals/Cleansed"},
    {"AG6", 5, "All Residuals"},
    {"AG7", 6, "All Actuals/Residuals"},
    {"AG8", 7, "All Forecasts"},
    {"AG9", 8, "All Actuals"},
}};

// Run-wide files: the engine keeps adding to its own file; after each series the file is
// copied to OutputPath under the project's stem and the target suffix.
struct SummaryRow {
  const char* id;           // "S1"
  const char* engine_file;  // in the program's folder
  const char* suffix;       // OutputPath, project stem, suffix
  const char* text;         // node text
};
inline constexpr std::array<SummaryRow, 9> kSummaryRows{{
    {"S1", "EARLYSIG.CSV", "EARLY.TXT", "Early Signal"},
    {"S2", "MAPECOMP.CSV", "MAPECOMP.TXT", "MAPE Comp"},
    {"S3", "FORE-MON.CSV", "FORE-MON.TXT", "Forecast Monitor"},
    {"S4", "LEVELRPT.CSV", "LEVEL.TXT", "Level Shift"},
    {"S5", "PULSERPT.CSV", "PULSE.TXT", "Pulse"},
    {"S6", "SUMMAPE.TXT", "MAPE.TXT", "Summary MAPE"},
    {"S7", "TRENDRPT.CSV", "TREND.TXT", "Trend"},
    {"S8", "PARCHRPT.CSV", "PARAMETER.TXT", "Parameters"},
    {"S9", "VARCHRPT.CSV", "VARIANCE.TXT", "Variances"},
}};

inline constexpr const char* kReportsHeading = "Reports";
inline constexpr const char* kGraphsHeading = "Graphs";
inline constexpr const char* kAllReportsHeading = "All Reports By Type";
inline constexpr const char* kAllGraphsHeading = "All Graphs By Type";
inline constexpr const char* kSummaryHeading = "Summary Reports";
// Keys of the top-level headings.
inline constexpr const char* kAllReportsKey = "AllRpts";
inline constexpr const char* kAllGraphsKey = "AllGphs";
inline constexpr const char* kSummaryKey = "Summary";

// Which report and graph rows some series filled during a run (or a walk of PopulateTree):
// the "All" rows follow these.
struct RowFlags {
  std::array<bool, kReportRows.size()> report{};
  std::array<bool, kGraphRows.size()> graph{};
  void Clear() { *this = RowFlags{}; }
};

// Keys: the series node is its ASC file name; the families add "Rpts", "Gphs" and the row id.
std::string SeriesKey(std::string_view asc_name);
std::string ReportsKey(std::string_view asc_name);
std::string GraphsKey(std::string_view asc_name);
std::string RowKey(std::string_view asc_name, std::string_view id);

// The family builders. Each returns false when the node was already there (or its parent
// missing); the tree is then unchanged, as the tree control's index error is passed over.
bool AddSeriesNode(ReportTree& tree, std::string_view asc_name);
bool AddReportsNode(ReportTree& tree, std::string_view asc_name);
bool AddReportRow(ReportTree& tree, std::string_view asc_name, const ReportRow& row);
bool AddGraphsNode(ReportTree& tree, std::string_view asc_name);
bool AddGraphRow(ReportTree& tree, std::string_view asc_name, const GraphRow& row);

// The top-level nodes that join all series after a run of more than one file:
// "All Reports By Type" and "All Graphs By Type" with the rows whose flag is set, and
// "Summary Reports" with the rows whose file (output folder, project stem, suffix)
// exists, when at least one does.
void AddAllNodes(ReportTree& tree, const RowFlags& flags, const std::filesystem::path& output_path,
                 std::string_view project_stem);

// The row of a report or graph node's text, compared without regard to case; nullptr when none.
const ReportRow* FindReportRowByText(std::string_view text);
const GraphRow* FindGraphRowByText(std::string_view text);
const SummaryRow* FindSummaryRowByText(std::string_view text);

}  // namespace tessaly::batch
