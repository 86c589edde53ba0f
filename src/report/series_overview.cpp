#include "report/series_overview.h"

#include <cstdlib>
#include <map>
#include <utility>

#include "platform/paths.h"
#include "platform/textfile.h"
#include "report/site.h"

namespace tessaly::report {

const char* StatusText(SeriesStatus status) {
  switch (status) {
    case SeriesStatus::Forecast: return "forecast";
    case SeriesStatus::Rejected: return "rejected";
    case SeriesStatus::Failed: return "failed";
    case SeriesStatus::NotRun: break;
  }
  return "not run";
}

namespace {

std::string Trim(const std::string& text) {
  const size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

bool StartsWith(const std::string& text, const std::string& head) { return text.rfind(head, 0) == 0; }

// The overview page escapes these four; its texts come back as they were given.
std::string FromHtml(const std::string& html) {
  static const std::pair<const char*, char> kEntities[] = {{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}};
  std::string out;
  for (size_t i = 0; i < html.size();) {
    bool matched = false;
    for (const auto& [entity, c] : kEntities) {
      const std::string_view e(entity);
      if (html.compare(i, e.size(), e) == 0) {
        out += c;
        i += e.size();
        matched = true;
        break;
      }
    }
    if (!matched) out += html[i++];
  }
  return out;
}

std::optional<double> Number(const std::string& text) {
  const std::string t = Trim(text);
  char* end = nullptr;
  const double value = std::strtod(t.c_str(), &end);
  if (t.empty() || end != t.c_str() + t.size()) return std::nullopt;
  return value;
}

// The rejected datasets of the overview page: the row's id, and the reason under "Rejected".
std::map<std::string, std::string> RejectedOnOverviewPage(const fs::path& output_folder) {
  std::map<std::string, std::string> rejected;
  auto page = platform::ReadWholeFile(platform::ResolveNoCase(output_folder, "display.html"));
  if (!page) return rejected;
  const std::string row_head = "<tr id=\"", mark = ">Rejected<div class=\"why\">";
  for (size_t at = page->find(row_head); at != std::string::npos; at = page->find(row_head, at + 1)) {
    const size_t id_end = page->find('"', at + row_head.size());
    const size_t row_end = page->find("</tr>", at);
    const size_t why = page->find(mark, at);
    if (id_end == std::string::npos || why == std::string::npos || why > row_end) continue;
    const size_t why_end = page->find("</div>", why);
    if (why_end == std::string::npos) continue;
    const std::string id = FromHtml(page->substr(at + row_head.size(), id_end - at - row_head.size()));
    rejected[platform::ToUpper(id)] = FromHtml(page->substr(why + mark.size(), why_end - why - mark.size()));
  }
  return rejected;
}

struct HoldOut {
  int count = 0;
  double mape = 0;
};

// <project>MAPECOMP.TXT: "Series,Model,Retained,In-sample MAPE,Out-of-sample MAPE,...", one
// row per dataset with retained values, in the order they were run.
std::multimap<std::string, HoldOut> HoldOutAccuracy(const fs::path& file) {
  std::multimap<std::string, HoldOut> rows;
  auto lines = platform::ReadAllLines(file);
  if (!lines) return rows;
  for (const std::string& line : *lines) {
    // The series' name is quoted when it holds a comma; the figures never do.
    std::vector<std::string> fields;
    std::string field;
    bool quoted = false;
    for (char c : line) {
      if (c == '"') quoted = !quoted;
      else if (c == ',' && !quoted) fields.push_back(std::exchange(field, {}));
      else field += c;
    }
    fields.push_back(field);
    if (fields.size() < 5) continue;
    auto count = Number(fields[2]);
    auto mape = Number(fields[4]);
    if (!count || !mape) continue;  // the heading
    rows.emplace(fields[0], HoldOut{static_cast<int>(*count), *mape});
  }
  return rows;
}

void ReadEquation(const fs::path& file, SeriesOverviewRow& row) {
  auto lines = platform::ReadAllLines(file);
  if (!lines) return;
  for (const std::string& line : *lines) {
    if (StartsWith(line, "Final model: ") && row.series.empty()) row.series = Trim(line.substr(13));
    if (StartsWith(line, "Model:")) row.model = Trim(line.substr(6));
    if (StartsWith(line, "Transform:")) row.transform = Trim(line.substr(10));
  }
}

// The model in words: its list of unusual events, the in-sample MAPE, and what it warns of.
void ReadVerbal(const fs::path& file, SeriesOverviewRow& row) {
  auto lines = platform::ReadAllLines(file);
  if (!lines) return;
  bool in_events = false;
  for (const std::string& line : *lines) {
    if (StartsWith(line, "No unusual events")) row.interventions = 0;
    if (StartsWith(line, "The following unusual events")) {
      row.interventions = 0;
      in_events = true;
      continue;
    }
    if (in_events && StartsWith(line, "  - ")) {
      ++*row.interventions;
      continue;
    }
    in_events = false;
    const std::string held_head = "The last ";
    if (StartsWith(line, held_head) && line.find(" observations were held out") != std::string::npos)
      row.holdout_count = std::atoi(line.c_str() + held_head.size());
    const std::string mape_head = "miss the actuals by ";
    if (size_t at = line.find(mape_head); at != std::string::npos) {
      const size_t pct = line.find('%', at);
      if (pct != std::string::npos) row.mape = Number(line.substr(at + mape_head.size(), pct - at - mape_head.size()));
    }
    if (StartsWith(line, "Some autocorrelation remains in the residuals"))
      row.warnings.push_back("autocorrelation remains in the residuals");
  }
}

// The details page's "Warnings" notes.
void ReadDetailsWarnings(const fs::path& file, SeriesOverviewRow& row) {
  auto page = platform::ReadWholeFile(file);
  if (!page) return;
  const size_t heading = page->find("<h2>Warnings</h2>");
  if (heading == std::string::npos) return;
  const std::string open = "<div class=\"note\">";
  for (size_t at = page->find(open, heading); at != std::string::npos; at = page->find(open, at + 1)) {
    const size_t end = page->find("</div>", at);
    if (end == std::string::npos) break;
    // Only the notes of that section: the next heading ends it.
    const size_t next_heading = page->find("<h2>", heading + 1);
    if (next_heading != std::string::npos && at > next_heading) break;
    row.warnings.push_back(FromHtml(page->substr(at + open.size(), end - at - open.size())));
  }
}

std::optional<fs::path> Existing(const fs::path& folder, const std::string& name) {
  return platform::FindNoCase(folder, name);
}

}  // namespace

std::vector<SeriesOverviewRow> ReadSeriesOverview(const std::vector<std::string>& asc_files,
                                                  const std::string& project_stem,
                                                  const fs::path& output_folder) {
  const auto rejected = RejectedOnOverviewPage(output_folder);
  auto hold_out = HoldOutAccuracy(platform::ResolveNoCase(output_folder, project_stem + "MAPECOMP.TXT"));
  const fs::path overview_page = platform::ResolveNoCase(output_folder, "display.html");
  std::vector<SeriesOverviewRow> rows;
  for (const std::string& asc : asc_files) {
    SeriesOverviewRow row;
    row.asc_file = asc;
    row.dataset = DatasetName(asc);
    row.report = overview_page;
    const auto error_page = Existing(output_folder, row.dataset + "err.html");
    const auto details = Existing(output_folder, row.dataset + ".htm");
    const auto forecasts = Existing(output_folder, row.dataset + ".PRO");
    if (error_page) {
      row.status = SeriesStatus::Failed;
      row.reason = ErrorPageReason(*error_page);
      row.report = *error_page;
    } else if (details || forecasts) {
      row.status = SeriesStatus::Forecast;
      if (details) row.report = *details;
    } else if (auto why = rejected.find(platform::ToUpper(row.dataset)); why != rejected.end()) {
      row.status = SeriesStatus::Rejected;
      row.reason = why->second;
    }
    if (row.status == SeriesStatus::Forecast) {
      if (auto f = Existing(output_folder, row.dataset + "EQUATION.TXT")) ReadEquation(*f, row);
      if (auto f = Existing(output_folder, row.dataset + "VERBAL.TXT")) ReadVerbal(*f, row);
      if (details) ReadDetailsWarnings(*details, row);
      // Rows of the accuracy table are taken in run order, so two datasets of one series
      // name each get their own.
      if (auto h = hold_out.find(row.series); row.holdout_count > 0 && h != hold_out.end()) {
        row.holdout_mape = h->second.mape;
        row.holdout_count = h->second.count;
        hold_out.erase(h);
      }
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

bool RowMatches(const SeriesOverviewRow& row, const std::string& filter) {
  const std::string wanted = platform::ToUpper(Trim(filter));
  if (wanted.empty()) return true;
  auto has = [&wanted](const std::string& text) { return platform::ToUpper(text).find(wanted) != std::string::npos; };
  if (has(row.dataset) || has(row.series) || has(StatusText(row.status)) || has(row.model) || has(row.transform) ||
      has(row.reason))
    return true;
  for (const std::string& w : row.warnings)
    if (has(w)) return true;
  return false;
}

}  // namespace tessaly::report
