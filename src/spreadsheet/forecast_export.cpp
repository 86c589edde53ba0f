#include "spreadsheet/forecast_export.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <map>
#include <utility>

#include "batch/batch_file.h"
#include "platform/paths.h"
#include "platform/textfile.h"
#include "spreadsheet/workbook.h"

namespace tessaly::spreadsheet {

namespace {

// The fields of a forecast file's line: its columns are set apart by runs of two blanks or
// more, so a heading such as "LOWER 95%" stays one field.
std::vector<std::string> Columns(const std::string& line) {
  std::vector<std::string> out;
  size_t i = 0;
  while (i < line.size()) {
    while (i < line.size() && (line[i] == ' ' || line[i] == '\t' || line[i] == '\r')) ++i;
    if (i >= line.size()) break;
    size_t end = i;
    while (end < line.size()) {
      if (line[end] == '\t' || line[end] == '\r') break;
      if (line[end] == ' ' && (end + 1 >= line.size() || line[end + 1] == ' ')) break;
      ++end;
    }
    out.push_back(line.substr(i, end - i));
    i = end;
  }
  return out;
}

// "1961/12" as (1961, 12) for the time order; a period of another form sorts last.
std::pair<long, long> PeriodOrder(const std::string& period) {
  char* end = nullptr;
  long year = std::strtol(period.c_str(), &end, 10);
  if (end == period.c_str()) return {LONG_MAX, 0};
  long minor = *end == '/' ? std::strtol(end + 1, nullptr, 10) : 0;
  return {year, minor};
}

struct SeriesForecasts {
  std::string stem;
  std::string lower_heading = "LOWER", upper_heading = "UPPER";
  std::map<std::string, std::array<std::string, 3>> values;  // period -> forecast, lower, upper
};

bool ReadForecastFile(const fs::path& file, SeriesForecasts& series) {
  auto lines = platform::ReadAllLines(file);
  if (!lines || lines->empty()) return false;
  std::vector<std::string> heading = Columns(lines->front());
  if (heading.size() >= 4) {
    series.lower_heading = heading[2];
    series.upper_heading = heading[3];
  }
  for (size_t i = 1; i < lines->size(); ++i) {
    std::vector<std::string> fields = Columns((*lines)[i]);
    if (fields.size() < 4) continue;
    series.values[fields[0]] = {fields[1], fields[2], fields[3]};
  }
  return !series.values.empty();
}

void SetValue(Grid& grid, int row, int col, const std::string& text) {
  char* end = nullptr;
  double value = std::strtod(text.c_str(), &end);
  if (end != text.c_str() && *end == '\0')
    grid.SetNumber(row, col, value);
  else
    grid.SetText(row, col, text);
}

std::string CsvField(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + "\"";
}

}  // namespace

ForecastExport CollectForecasts(const batch::cBatchFile& project, const fs::path& output) {
  ForecastExport result;
  std::vector<SeriesForecasts> all;
  for (int i = 0; i < static_cast<int>(project.Count()); ++i) {
    const std::string name = project.List(i);
    SeriesForecasts series;
    series.stem = batch::AscStem(name);
    auto file = platform::FindNoCase(output, series.stem + ".PRO");
    if (file && ReadForecastFile(*file, series)) {
      result.exported.push_back(name);
      all.push_back(std::move(series));
    } else {
      result.missing.push_back(name);
    }
  }
  std::vector<std::string> periods;
  for (const SeriesForecasts& s : all)
    for (const auto& [period, values] : s.values)
      if (std::find(periods.begin(), periods.end(), period) == periods.end()) periods.push_back(period);
  std::stable_sort(periods.begin(), periods.end(),
                   [](const std::string& a, const std::string& b) { return PeriodOrder(a) < PeriodOrder(b); });

  Grid& grid = result.table;
  grid.SetText(1, 1, "PERIOD");
  for (size_t s = 0; s < all.size(); ++s) {
    const int col = 2 + static_cast<int>(s) * 3;
    grid.SetText(1, col, all[s].stem + " FORECAST");
    grid.SetText(1, col + 1, all[s].stem + " " + all[s].lower_heading);
    grid.SetText(1, col + 2, all[s].stem + " " + all[s].upper_heading);
  }
  for (size_t p = 0; p < periods.size(); ++p) {
    const int row = 2 + static_cast<int>(p);
    grid.SetText(row, 1, periods[p]);
    for (size_t s = 0; s < all.size(); ++s) {
      auto it = all[s].values.find(periods[p]);
      if (it == all[s].values.end()) continue;
      for (int k = 0; k < 3; ++k) SetValue(grid, row, 2 + static_cast<int>(s) * 3 + k, it->second[k]);
    }
  }
  return result;
}

bool ExportForecasts(const batch::cBatchFile& project, const fs::path& output, const fs::path& folder,
                     ForecastExport& result, std::string& error) {
  result = CollectForecasts(project, output);
  if (result.exported.empty()) {
    error = "No dataset of " + project.BatchName() + " has forecasts in " + output.string() +
            ": run the project first.";
    return false;
  }
  const fs::path target = folder.empty() ? output : folder;
  std::string stem = project.BatchName();
  if (platform::EndsWithNoCase(stem, ".xml")) stem.resize(stem.size() - 4);
  result.csv = target / (stem + "FORECASTS.csv");
  result.xlsx = target / (stem + "FORECASTS.xlsx");

  const Grid& grid = result.table;
  std::vector<std::string> lines;
  for (int r = 1; r <= grid.MaxRows(); ++r) {
    std::string line;
    for (int c = 1; c <= grid.MaxCols(); ++c) {
      if (c > 1) line += ",";
      const Cell& cell = grid.At(r, c);
      line += cell.IsNumber() ? grid.Text(r, c) : CsvField(cell.text);
    }
    lines.push_back(line);
  }
  if (!platform::WriteAllLines(result.csv, lines)) {
    error = "The forecasts could not be written to " + result.csv.string() + ".";
    return false;
  }
  Sheet sheet{"Forecasts", grid};
  if (!SaveXlsx(result.xlsx, {&sheet})) {
    error = "The forecasts could not be written to " + result.xlsx.string() + ".";
    return false;
  }
  return true;
}

}  // namespace tessaly::spreadsheet
