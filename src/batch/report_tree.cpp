#include "batch/report_tree.h"

#include <algorithm>

#include "platform/paths.h"

namespace tessaly::batch {

void ReportTree::Clear() { nodes_.clear(); }

const ReportNode* ReportTree::Find(std::string_view key) const {
  for (const auto& n : nodes_)
    if (n.key == key) return &n;
  return nullptr;
}

bool ReportTree::Add(ReportNode node) {
  if (Contains(node.key)) return false;
  if (!node.parent.empty() && !Contains(node.parent)) return false;
  nodes_.push_back(std::move(node));
  return true;
}

bool ReportTree::Remove(std::string_view key) {
  if (!Contains(key)) return false;
  // Gather the node and its descendants; children were always added after their parents.
  std::vector<std::string> gone{std::string(key)};
  for (const auto& n : nodes_)
    if (std::find(gone.begin(), gone.end(), n.parent) != gone.end()) gone.push_back(n.key);
  std::erase_if(nodes_, [&](const ReportNode& n) {
    return std::find(gone.begin(), gone.end(), n.key) != gone.end();
  });
  return true;
}

std::vector<const ReportNode*> ReportTree::Children(std::string_view parent) const {
  std::vector<const ReportNode*> out;
  for (const auto& n : nodes_)
    if (n.parent == parent) out.push_back(&n);
  return out;
}

std::string ReportTree::Display() const {
  std::string out;
  auto walk = [&](auto&& self, const std::string& parent, int level) -> void {
    for (const ReportNode* n : Children(parent)) {
      for (int i = 0; i < level; ++i) out += "..";
      out += n->text + " [" + n->key + "]\n";
      self(self, n->key, level + 1);
    }
  };
  walk(walk, "", 0);
  return out;
}

std::string SeriesKey(std::string_view asc_name) { return std::string(asc_name); }
std::string ReportsKey(std::string_view asc_name) { return std::string(asc_name) + "Rpts"; }
std::string GraphsKey(std::string_view asc_name) { return std::string(asc_name) + "Gphs"; }
std::string RowKey(std::string_view asc_name, std::string_view id) {
  return std::string(asc_name) + std::string(id);
}

bool AddSeriesNode(ReportTree& tree, std::string_view asc_name) {
  return tree.Add({SeriesKey(asc_name), std::string(asc_name), "", NodeKind::Series, "",
                   std::string(asc_name)});
}

bool AddReportsNode(ReportTree& tree, std::string_view asc_name) {
  return tree.Add({ReportsKey(asc_name), kReportsHeading, SeriesKey(asc_name), NodeKind::Heading,
                   "Rpts", std::string(asc_name)});
}

bool AddReportRow(ReportTree& tree, std::string_view asc_name, const ReportRow& row) {
  return tree.Add({RowKey(asc_name, row.id), row.text, ReportsKey(asc_name), NodeKind::Report,
                   row.id, std::string(asc_name)});
}

bool AddGraphsNode(ReportTree& tree, std::string_view asc_name) {
  return tree.Add({GraphsKey(asc_name), kGraphsHeading, SeriesKey(asc_name), NodeKind::Heading,
                   "Gphs", std::string(asc_name)});
}

bool AddGraphRow(ReportTree& tree, std::string_view asc_name, const GraphRow& row) {
  return tree.Add({RowKey(asc_name, row.id), row.text, GraphsKey(asc_name), NodeKind::Graph,
                   row.id, std::string(asc_name)});
}

void AddAllNodes(ReportTree& tree, const RowFlags& flags, const std::filesystem::path& output_path,
                 std::string_view project_stem) {
  tree.Add({kAllReportsKey, kAllReportsHeading, "", NodeKind::Heading, "", ""});
  for (const auto& r : kAllReportRows)
    if (flags.report[r.row]) tree.Add({r.id, r.text, kAllReportsKey, NodeKind::AllReports, r.id, ""});
  tree.Add({kAllGraphsKey, kAllGraphsHeading, "", NodeKind::Heading, "", ""});
  for (const auto& g : kAllGraphRows)
    if (flags.graph[g.row]) tree.Add({g.id, g.text, kAllGraphsKey, NodeKind::AllGraphs, g.id, ""});

  std::vector<const SummaryRow*> present;
  for (const auto& s : kSummaryRows)
    if (platform::ExistsNoCase(output_path, std::string(project_stem) + s.suffix))
      present.push_back(&s);
  if (present.empty()) return;
  tree.Add({kSummaryKey, kSummaryHeading, "", NodeKind::Heading, "", ""});
  for (const SummaryRow* s : present)
    tree.Add({s->id, s->text, kSummaryKey, NodeKind::Summary, s->id, ""});
}

const ReportRow* FindReportRowByText(std::string_view text) {
  for (const auto& r : kReportRows)
    if (platform::EqualsNoCase(r.text, text)) return &r;
  return nullptr;
}

const GraphRow* FindGraphRowByText(std::string_view text) {
  for (const auto& g : kGraphRows)
    if (platform::EqualsNoCase(g.text, text)) return &g;
  return nullptr;
}

const SummaryRow* FindSummaryRowByText(std::string_view text) {
  for (const auto& s : kSummaryRows)
    if (platform::EqualsNoCase(s.text, text)) return &s;
  return nullptr;
}

}  // namespace tessaly::batch
