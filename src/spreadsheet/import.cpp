#include "spreadsheet/import.h"

#include <cmath>
#include <set>

#include "batch/batch_file.h"
#include "dataset/asc_dataset.h"
#include "platform/numfmt.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "spreadsheet/texts.h"

namespace tessaly::spreadsheet {

void clFileInfo::parsepath(const std::string& path) {
  FullPath = path;
  Drive = path.size() >= 2 && path[1] == ':' ? path.substr(0, 2) : "";
  size_t dot = path.rfind('.');
  size_t slash = path.find_last_of("/\\");
  Ext = dot != std::string::npos && (slash == std::string::npos || dot > slash) && path.size() - dot - 1 <= 4
            ? path.substr(dot)
            : "";
  Filename = slash == std::string::npos ? path : path.substr(slash + 1);
  SourcePath = slash == std::string::npos ? "" : path.substr(0, slash + 1);
}

std::string CheckSeriesName(const std::string& name, bool& truncated, bool& illegal) {
  std::string trimmed = dataset::TrimBlanks(name), out;
  for (size_t i = 0; i < trimmed.size(); ++i) {
    if (i == static_cast<size_t>(dataset::MaxOutputNameLength)) {
      truncated = true;
      break;
    }
    unsigned char c = static_cast<unsigned char>(trimmed[i]);
    bool allowed = c == '(' || c == ')' || c == '+' || c == '-' || c == '_' || (c >= '0' && c <= '9') ||
                   (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    if (!allowed) illegal = true;
    out += allowed ? static_cast<char>(c) : '_';
  }
  return out;
}

std::string SeriesNameErrorMessage(bool truncated, bool illegal) {
  std::string text;
  if (illegal) text = texts::kIllegalNames;
  if (truncated) {
    if (!text.empty()) text += "\n\n";
    text += texts::kLongNamesHead + std::to_string(dataset::MaxOutputNameLength) + texts::kLongNamesTail;
  }
  return text;
}

ImportOpen OpenForImport(const fs::path& path) {
  ImportOpen open;
  WorkbookFormat format = FormatOfExtension(path);
  if (format == WorkbookFormat::Other) {
    open.message = texts::kOnlyXls;
    return open;
  }
  if (format == WorkbookFormat::Xlsx && fs::exists(path) && !IsExcel2007File(path)) {
    open.message = texts::kBadXlsx;
    return open;
  }
  WorkbookRead read = ReadWorkbook(path, open.book);
  if (read.status == WorkbookStatus::Malformed)
    open.message = format == WorkbookFormat::Xls ? texts::kBadXls : texts::kBadXlsx;
  else if (!read.ok())
    open.message = texts::kOpenError;
  return open;
}

int CheckNumOfSeries(const Grid& grid, bool tabular) {
  int last = tabular ? grid.MaxCols() : grid.MaxRows(), n = 0;
  for (int k = 1; k <= last; ++k) {
    if ((tabular ? grid.At(1, k) : grid.At(k, 1)).Empty()) break;
    ++n;
  }
  return n;
}

bool CkBlankR1C1(const Grid& grid) { return grid.At(1, 1).Empty(); }

namespace {
std::string TypeOf(const Grid& g, bool tabular, bool names, int k, int& numbers) {
  bool any = false, text = false, date = false, fraction = false;
  numbers = 0;
  int last = tabular ? g.MaxRows() : g.MaxCols();
  for (int r = names ? 2 : 1; r <= last; ++r) {
    int row = tabular ? r : k, col = tabular ? k : r;
    const Cell& c = g.At(row, col);
    if (c.Empty()) continue;
    any = true;
    double v;
    if (!g.NumericValue(row, col, v)) {
      text = true;
      continue;
    }
    ++numbers;
    if (c.is_date) date = true;
    else if (v != std::floor(v)) fraction = true;
  }
  if (!any) return "Unknown";
  if (text) return "Char";
  if (date) return "Date";
  return fraction ? "Double" : "Integer";
}
}  // namespace

std::vector<ImpField> SeriesFields(const Grid& grid, bool tabular, bool names_in_first, bool& truncated,
                                   bool& illegal) {
  std::vector<ImpField> fields;
  int count = CheckNumOfSeries(grid, tabular);
  if (!names_in_first) count = tabular ? grid.MaxCols() : grid.MaxRows();
  for (int k = 1; k <= count; ++k) {
    ImpField f;
    f.index = k;
    if (names_in_first) {
      std::string raw = tabular ? grid.Text(1, k) : grid.Text(k, 1);
      std::string name;
      for (char c : raw)
        if (c != '\n' && c != '\r') name += c;
      f.FieldName = name;
      f.NewName = CheckSeriesName(name, truncated, illegal);
    } else {
      f.FieldName = f.NewName = "S-" + std::to_string(k);
    }
    f.FieldType = TypeOf(grid, tabular, names_in_first, k, f.numeric_cells);
    fields.push_back(std::move(f));
  }
  return fields;
}

std::vector<int> FilterRecords(const Grid& grid, bool tabular, bool names_in_first, int field_index,
                               const std::string& value) {
  std::vector<int> all = AllRecords(grid, tabular, names_in_first), kept;
  if (field_index <= 0) return all;
  for (int r : all)
    if ((tabular ? grid.Text(r, field_index) : grid.Text(field_index, r)) == value) kept.push_back(r);
  return kept;
}

std::vector<std::string> FieldValues(const Grid& grid, bool tabular, bool names_in_first, int field_index) {
  std::vector<std::string> values;
  std::set<std::string> seen;
  for (int r : AllRecords(grid, tabular, names_in_first)) {
    std::string v = tabular ? grid.Text(r, field_index) : grid.Text(field_index, r);
    if (seen.insert(v).second) values.push_back(v);
  }
  return values;
}

std::optional<FigureProblem> ValidateFigures(const ImportFigures& f) {
  auto seasonality = platform::ToDouble(f.seasonality);
  if (seasonality && *seasonality <= 0) return FigureProblem{texts::kSeasonalityAboveZero, texts::kPropertiesTitle};
  if (seasonality && *seasonality > dataset::MaxSeasonality)
    return FigureProblem{texts::kSeasonalityExceeds + std::to_string(dataset::MaxSeasonality), texts::kPropertiesTitle};
  auto minor = platform::ToDouble(f.begin_period);
  if (seasonality && minor && *minor > *seasonality) return FigureProblem{texts::kMinorExceeds, texts::kPropertiesTitle};
  auto forecasts = platform::ToDouble(f.forecasts);
  if (forecasts && *forecasts > dataset::MaxForecasts)
    return FigureProblem{texts::kForecastsExceed + std::to_string(dataset::MaxForecasts), texts::kForecastsTitle};
  return std::nullopt;
}

std::vector<std::string> IncompleteData(const ImportFigures& f) {
  std::vector<std::string> empty;
  auto check = [&](const std::string& v, const char* label) {
    if (!platform::IsNumeric(v)) empty.emplace_back(label);
  };
  check(f.seasonality, "Seasonality");
  check(f.begin_year, "Major Period");
  check(f.begin_period, "Minor Period");
  check(f.observations, "Observations");
  check(f.forecasts, "Forecasts");
  if (dataset::TrimBlanks(f.directory).empty()) empty.emplace_back("Directory");
  return empty;
}

bool ShowsFiveOrSevenNote(const std::string& seasonality) {
  return dataset::TrimBlanks(seasonality) == "5" || dataset::TrimBlanks(seasonality) == "7";
}

namespace {
using platform::HtmlEscape;
}  // namespace

std::string SummaryHtml(const fs::path& file, int series_count, const ImportFigures& f) {
  clFileInfo info;
  info.parsepath(file.string());
  std::string h = "<html><body onContextMenu=\"return false\">";
  h += "<p style=\"text-align:center; font-weight:bold; font-size:16px\">Import Summary</p>";
  h += "<p><b>File Information</b><br>";
  h += "Path:   " + HtmlEscape(info.SourcePath) + "<br>";
  h += "Filename:   " + HtmlEscape(info.Filename) + "<br>";
  h += "Number of Series: " + std::to_string(series_count) + "</p>";
  h += "<p><b>Series Properties</b><br>";
  h += "Output Series Name: " + HtmlEscape(f.output_series.empty() ? f.output_series_name : f.output_series) + "<br>";
  h += "Seasonality: " + HtmlEscape(f.seasonality) + "<br>";
  h += "Observations: " + HtmlEscape(f.observations) + "<br>";
  h += "Forecasts: " + HtmlEscape(f.forecasts) + "<br>";
  h += "Major Period: " + HtmlEscape(f.begin_year) + "<br>";
  h += "Minor Period: " + HtmlEscape(f.begin_period) + "<br>";
  h += "Directory: " + HtmlEscape(f.directory) + "</p></body></html>";
  return h;
}

ImportResult FinishImport(const ImportRequest& q, const std::function<void(const std::string&)>& status) {
  ImportResult result;
  dataset::clSeriesProperties p;
  auto num = [](const std::string& s) { return static_cast<int16_t>(std::lround(platform::ToDouble(s).value_or(0))); };
  p.SetSeasonality(num(q.figures.seasonality));
  p.SetBeginningYear(dataset::TrimBlanks(q.figures.begin_year));
  p.SetBeginningPeriod(num(q.figures.begin_period));
  p.SetNumberOfForecasts(num(q.figures.forecasts));
  std::vector<GridSeries> series;
  for (const auto& f : q.fields) series.push_back({f.index, f.FieldName, f.NewName, !f.Skip});
  GridWriteResult w;
  if (q.mode == ImportMode::OneFile) {
    if (status) status(texts::kWriting + q.one_file.filename().string());
    w = WriteAscFromGrid(q.layout, series, q.figures.output_series, q.figures.output_series_name, p, q.one_file);
  } else {
    fs::path folder = q.figures.directory;
    std::error_code ec;
    fs::create_directories(folder, ec);
    w = WriteAscPerSeries(q.layout, series, p, folder, status);
  }
  result.ok = w.ok;
  result.ErrorString = w.ErrorString;
  result.written = w.written;
  if (q.mode == ImportMode::BatchRun && !q.project_file.empty() && !w.written.empty()) {
    batch::cBatchFile project;
    fs::path folder = fs::absolute(q.figures.directory);
    project.SetBatchName(q.project_file.filename().string());
    project.SetInDirectory(platform::WithTrailingSlash(folder.string()));
    project.SetOutDirectory(platform::WithTrailingSlash(folder.string()));
    for (const auto& file : w.written) project.Add_File(file.filename().string(), 0, 0, "");
    if (!project.Build(q.project_file)) {
      result.ok = false;
      result.ErrorString = "Path/File access error: " + q.project_file.string();
    } else {
      result.written.push_back(q.project_file);
    }
  }
  if (q.mode != ImportMode::OneFile)
    result.end_message = texts::kFinishedImporting + std::to_string(w.written.size()) + texts::kSeriesDot;
  return result;
}

}  // namespace tessaly::spreadsheet
