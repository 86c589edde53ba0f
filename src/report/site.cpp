#include "report/site.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <map>
#include <cstdio>
#include <ctime>

#include "batch/report_tree.h"
#include "platform/dialogs.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/textfile.h"
#include "report/report_texts.h"

namespace tessaly::report {

namespace {

std::string FileName(const std::string& path) {
  const size_t cut = path.find_last_of("/\\");
  return cut == std::string::npos ? path : path.substr(cut + 1);
}

std::string WithoutSuffix(const std::string& name, const char* suffix) {
  const std::string_view s(suffix);
  return platform::EndsWithNoCase(name, s) ? name.substr(0, name.size() - s.size()) : name;
}

using platform::HtmlEscape;

// A file name as a link address: blanks and the few characters that break one escaped.
std::string Href(const std::string& name) {
  std::string out;
  for (unsigned char c : name) {
    if (c == ' ' || c == '#' || c == '%' || c == '?' || c == '"' || c == '<' || c == '>') {
      char hex[4];
      std::snprintf(hex, sizeof hex, "%%%02X", c);
      out += hex;
    } else {
      out += static_cast<char>(c);
    }
  }
  return out;
}

// The files of a folder by their names in capitals, read once: the overview asks for
// some twenty names per dataset, and a project may hold thousands.
class FolderIndex {
 public:
  explicit FolderIndex(const fs::path& folder) {
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(folder, ec)) {
      const std::string name = entry.path().filename().string();
      names_[platform::ToUpper(name)].push_back(name);
    }
    for (auto& [key, list] : names_) std::sort(list.begin(), list.end());
  }
  // The name under which a file exists, the exact case first; "" when none.
  std::string Find(const std::string& name) const {
    auto it = names_.find(platform::ToUpper(name));
    if (it == names_.end()) return {};
    for (const std::string& candidate : it->second)
      if (candidate == name) return candidate;
    return it->second.front();
  }

 private:
  std::map<std::string, std::vector<std::string>> names_;
};

// The sentence of an error page: its third line is the text of the code.
std::string ErrorPageText(const fs::path& page) {
  auto lines = platform::ReadAllLines(page);
  if (!lines || lines->size() < 3) return {};
  std::string text;
  bool in_tag = false;
  const std::string& line = (*lines)[2];
  for (size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    const char next = i + 1 < line.size() ? line[i + 1] : ' ';
    if (!in_tag && c == '<' && (std::isalpha(static_cast<unsigned char>(next)) || next == '/'))
      in_tag = true;
    else if (in_tag && c == '>')
      in_tag = false;
    else if (!in_tag)
      text += c;
  }
  return platform::Trim(text, platform::kBlanksAndTabs);
}

std::string Now() {
  std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  std::tm local{};
  localtime_r(&now, &local);
  char text[64];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &local);
  return text;
}

constexpr const char* kStyle = R"(<style>
body { font-family: "Segoe UI", "DejaVu Sans", Helvetica, Arial, sans-serif; color: #1d2733;
       margin: 24px 32px; background: #ffffff; font-size: 14px; }
h1 { font-size: 22px; margin: 0 0 4px 0; }
h2 { font-size: 16px; margin: 28px 0 8px 0; color: #33414f; }
.sub { color: #5b6773; margin-bottom: 18px; }
.counts span { display: inline-block; margin-right: 18px; padding: 4px 10px; border-radius: 12px;
               background: #eef2f6; }
table { border-collapse: collapse; width: 100%; }
th { text-align: left; font-weight: 600; color: #4b5763; border-bottom: 2px solid #d5dbe1;
     padding: 8px 10px; }
td { border-bottom: 1px solid #e6eaee; padding: 8px 10px; vertical-align: top; }
tr:hover td { background: #f8fafc; }
.ok { color: #1e7d3a; font-weight: 600; }
.failed { color: #b3261e; font-weight: 600; }
.notrun { color: #7b8794; }
td.failed a, td.ok a { font-weight: normal; white-space: nowrap; }
.why { font-weight: normal; color: #5b2a26; max-width: 320px; margin-top: 4px; }
a { color: #1f5fa8; text-decoration: none; }
a:hover { text-decoration: underline; }
.links a { margin-right: 10px; white-space: nowrap; }
img.thumb { width: 200px; border: 1px solid #d5dbe1; border-radius: 4px; }
</style>)";

}  // namespace

std::string LinkTreeBaseName(const std::string& project_file) {
  return WithoutSuffix(FileName(project_file), ".xml");
}

std::string ErrorPageReason(const fs::path& page) { return ErrorPageText(page); }

std::string DatasetName(const std::string& asc_file) {
  return WithoutSuffix(FileName(asc_file), ".asc");
}

void BuildLinkTree(cLinkTree& tree, const std::vector<std::string>& asc_files) {
  // The first graph row has the caption of the second, so that the tree reads as in the
  // sites of earlier versions.
  static const std::pair<const char*, const char*> kGraphLinks[] = {
      {"actfit.jpg", "Actuals/Forecasts"},
      {"actfore.jpg", "Actuals/Forecasts"},
      {"fitfore.jpg", "Fitted/Forecasts"},
      {"actfitfore.jpg", "Actuals/Fitted/Forecasts"},
      {"actcleanse.jpg", "Actuals/Cleansed"},
      {"res.jpg", "Residuals"},
      {"actres.jpg", "Actuals/Residuals"},
      {"fore.jpg", "Forecasts"},
      {"act.jpg", "Actuals"},
  };
  for (const std::string& asc : asc_files) {
    const std::string dataset = DatasetName(asc);
    tree.addSibling("display.html", dataset);
    // addSibling leaves the cursor: step to the node just added.
    while (tree.Cursor()->nextSibling()) tree.StepForward();
    tree.addChild(dataset + ".htm", "Details");
    for (const auto& [suffix, caption] : kGraphLinks) tree.addSibling(dataset + suffix, caption);
    tree.StepUp();
  }
}

bool WriteLinkTreeSite(const std::string& project_file, const std::vector<std::string>& asc_files,
                       const fs::path& output_folder, const fs::path& program_folder) {
  cLinkTree tree;
  BuildLinkTree(tree, asc_files);
  const std::string name = LinkTreeBaseName(project_file);
  return tree.writeJavascript(program_folder, output_folder, name, name, "gifs\\", true);
}

bool WriteDisplayHtml(const fs::path& output_folder, const std::string& project_file,
                      const std::vector<std::string>& asc_files,
                      const std::map<std::string, std::string>& rejected) {
  const std::string project = LinkTreeBaseName(project_file);
  struct Row {
    std::string dataset, status_class, status, error_page, error_text;
    std::vector<std::pair<std::string, std::string>> reports, graphs;  // file, caption
    std::string thumb;
  };
  std::vector<Row> rows;
  int finished = 0, failed = 0, refused = 0, not_run = 0;
  const FolderIndex folder(output_folder);
  auto Existing = [&folder](const fs::path&, const std::string& name) { return folder.Find(name); };
  for (const std::string& asc : asc_files) {
    Row row;
    row.dataset = DatasetName(asc);
    row.error_page = Existing(output_folder, row.dataset + "err.html");
    for (const auto& r : batch::kReportRows) {
      const std::string file = Existing(output_folder, row.dataset + r.suffix);
      if (!file.empty()) row.reports.emplace_back(file, r.id == std::string("R1") ? "Details" : r.text);
    }
    for (const auto& g : batch::kGraphRows) {
      const std::string file = Existing(output_folder, row.dataset + g.suffix);
      if (!file.empty()) row.graphs.emplace_back(file, g.text);
    }
    for (const char* preferred : {"actfitfore.jpg", "actfore.jpg", "act.jpg"}) {
      row.thumb = Existing(output_folder, row.dataset + preferred);
      if (!row.thumb.empty()) break;
    }
    if (!row.error_page.empty()) {
      row.error_text = ErrorPageText(output_folder / row.error_page);
      row.status_class = "failed";
      row.status = "Failed";
      ++failed;
    } else if (!row.reports.empty() || !row.graphs.empty()) {
      row.status_class = "ok";
      row.status = "Finished";
      ++finished;
    } else if (auto why = rejected.find(platform::ToUpper(asc)); why != rejected.end()) {
      // Turned down by the run's checks before the engine: the reason they logged.
      row.error_text = why->second;
      row.status_class = "failed";
      row.status = "Rejected";
      ++refused;
    } else {
      // Not reached (a cancel), or from before the run's checks told their reasons.
      row.status_class = "notrun";
      row.status = "Not run";
      ++not_run;
    }
    rows.push_back(std::move(row));
  }

  platform::TextWriter out(output_folder / "display.html");
  if (!out.IsOpen()) return false;
  out.Line("<!DOCTYPE html>");
  out.Line("<html lang=\"en\"><head><meta charset=\"utf-8\">");
  out.Line("<title>" + HtmlEscape(project) + ": forecasting reports</title>");
  out.Line(kStyle);
  out.Line("</head><body>");
  out.Line("<h1>" + HtmlEscape(project) + "</h1>");
  out.Line("<div class=\"sub\">Forecasting reports, written " + Now() + "</div>");
  // The separators keep the counts apart where the page's style is not applied.
  out.Line("<div class=\"counts\"><span>" + std::to_string(rows.size()) +
           " datasets</span> &middot; <span class=\"ok\">" + std::to_string(finished) +
           " finished</span> &middot; <span class=\"failed\">" + std::to_string(failed) +
           " failed</span> &middot; <span class=\"failed\">" + std::to_string(refused) +
           " rejected</span> &middot; <span>" + std::to_string(not_run) + " not run</span></div>");
  out.Line("<h2>Datasets</h2>");
  out.Line("<table><tr><th>Dataset</th><th>Status</th><th>Reports</th><th>Graphs</th>"
           "<th>Forecast</th></tr>");
  for (const Row& row : rows) {
    out.Line("<tr id=\"" + HtmlEscape(row.dataset) + "\"><td><a name=\"" + HtmlEscape(row.dataset) + "\"></a><b>" +
             HtmlEscape(row.dataset) + "</b></td>");
    // A dataset with nothing to link to gives its reason the width of the row.
    const bool bare = row.reports.empty() && row.graphs.empty() && row.thumb.empty() && !row.error_text.empty();
    std::string status = "<td class=\"" + row.status_class + "\"" + (bare ? " colspan=\"4\"" : "") + ">" + row.status;
    if (!row.error_text.empty()) status += "<div class=\"why\">" + HtmlEscape(row.error_text) + "</div>";
    if (!row.error_page.empty())
      status += "<br><a href=\"" + Href(row.error_page) + "\">Why it failed</a>";
    out.Line(status + "</td>");
    if (bare) {
      out.Line("</tr>");
      continue;
    }
    std::string reports = "<td class=\"links\">";
    for (const auto& [file, caption] : row.reports)
      reports += "<a href=\"" + Href(file) + "\">" + HtmlEscape(caption) + "</a> ";
    out.Line(reports + "</td>");
    std::string graphs = "<td class=\"links\">";
    for (const auto& [file, caption] : row.graphs)
      graphs += "<a href=\"" + Href(file) + "\">" + HtmlEscape(caption) + "</a> ";
    out.Line(graphs + "</td>");
    out.Line(row.thumb.empty() ? "<td></td>"
                               : "<td><a href=\"" + Href(row.thumb) + "\"><img class=\"thumb\" src=\"" +
                                     Href(row.thumb) + "\" alt=\"" + HtmlEscape(row.dataset) + "\"></a></td>");
    out.Line("</tr>");
  }
  out.Line("</table>");

  std::string summaries;
  for (const auto& s : batch::kSummaryRows) {
    const std::string file = Existing(output_folder, project + s.suffix);
    if (!file.empty()) summaries += "<a href=\"" + Href(file) + "\">" + HtmlEscape(s.text) + "</a> ";
  }
  const std::string combined = Existing(output_folder, "CON" + project + ".PRO");
  if (!combined.empty()) summaries += "<a href=\"" + Href(combined) + "\">All forecasts</a> ";
  if (!summaries.empty()) {
    out.Line("<h2>Summary reports</h2>");
    out.Line("<p class=\"links\">" + summaries + "</p>");
  }
  out.Line("</body></html>");
  return out.Close();
}

bool WriteReportFile(const fs::path& file, const std::vector<std::string>& lines) {
  std::error_code ec;
  if (fs::exists(file, ec)) {
    const int16_t answer = platform::Dialogs().Message(
        texts::kFileExists,
        platform::mb::YesNo | platform::mb::Exclamation | platform::mb::DefaultButton2,
        texts::kFileExistsTitle);
    if (answer != platform::mb::Yes) return false;
  }
  if (!platform::WriteAllLines(file, lines)) return false;
  platform::Dialogs().Message(texts::kFileCreated, platform::mb::Information, texts::kFileExistsTitle);
  return true;
}

}  // namespace tessaly::report
