#include "report/chart_data.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "platform/paths.h"
#include "platform/textfile.h"

namespace tessaly::report {

std::optional<Period> ParsePeriod(const std::string& text) {
  char* end = nullptr;
  const long year = std::strtol(text.c_str(), &end, 10);
  if (end == text.c_str()) return std::nullopt;
  Period p{static_cast<int>(year), 1};
  if (*end == '/') {
    const char* start = end + 1;
    const long period = std::strtol(start, &end, 10);
    if (end == start || period < 1) return std::nullopt;
    p.period = static_cast<int>(period);
  }
  if (*end != '\0') return std::nullopt;
  return p;
}

namespace {

// A table row of the reports: a period, then figures separated by blanks.
bool TableRow(const std::string& line, Period& period, std::string& label, std::vector<double>& figures) {
  std::istringstream in(line);
  if (!(in >> label)) return false;
  auto p = ParsePeriod(label);
  if (!p) return false;
  period = *p;
  figures.clear();
  std::string word;
  while (in >> word) {
    char* end = nullptr;
    const double v = std::strtod(word.c_str(), &end);
    if (end != word.c_str() + word.size()) return false;
    figures.push_back(v);
  }
  return !figures.empty();
}

std::string Column(const std::string& text, size_t width, bool left = false) {
  if (text.size() >= width) return text;
  const std::string fill(width - text.size(), ' ');
  return left ? text + fill : fill + text;
}

std::string Figure(double value) {
  char text[64];
  std::snprintf(text, sizeof text, "%.4f", value);
  return text;
}

// The fitted values of the file, by the label of their period.
void ReadFitted(const fs::path& output_folder, const std::string& dataset, ChartData& data) {
  auto file = platform::FindNoCase(output_folder, dataset + kFittedSuffix);
  if (!file) return;
  auto lines = platform::ReadAllLines(*file);
  if (!lines) return;
  Period period;
  std::string label;
  std::vector<double> figures;
  size_t point = 0;
  for (const std::string& line : *lines) {
    // PERIOD, ACTUAL, FITTED, RESIDUAL; the rows follow the history's order.
    if (!TableRow(line, period, label, figures) || figures.size() < 2) continue;
    while (point < data.labels.size() && data.labels[point] != label) ++point;
    if (point == data.labels.size()) return;
    data.fitted.values[point] = figures[1];
  }
}

}  // namespace

bool WriteFittedValues(const fs::path& file, const std::string& series, const std::vector<FittedRow>& rows) {
  platform::TextWriter out(file);
  if (!out.IsOpen()) return false;
  const std::string head = "Fitted values: " + series;
  out.Line(head);
  out.Line(std::string(head.size(), '='));
  out.Line("");
  out.Line(Column("PERIOD", 10, true) + "  " + Column("ACTUAL", 16) + "  " + Column("FITTED", 16) + "  " +
           Column("RESIDUAL", 16));
  out.Line(std::string(64, '-'));
  for (const FittedRow& r : rows) {
    std::string line = Column(r.period, 10, true) + "  " + Column(Figure(r.actual), 16);
    if (r.fitted) line += "  " + Column(Figure(*r.fitted), 16);
    if (r.fitted && r.residual) line += "  " + Column(Figure(*r.residual), 16);
    while (!line.empty() && line.back() == ' ') line.pop_back();
    out.Line(line);
  }
  out.Line(std::string(64, '-'));
  return out.Close();
}

std::optional<ChartData> ReadChartData(const fs::path& output_folder, const std::string& dataset) {
  auto adjusted_file = platform::FindNoCase(output_folder, dataset + "ADJUSTED.TXT");
  if (!adjusted_file) return std::nullopt;
  auto history = platform::ReadAllLines(*adjusted_file);
  if (!history) return std::nullopt;
  ChartData data;
  data.actual.legend = "Actuals";
  data.adjusted.legend = "Adjusted for interventions";
  data.fitted.legend = "Fitted";
  data.forecast.legend = "Forecasts";
  data.lower.legend = "Lower limit";
  data.upper.legend = "Upper limit";
  const std::string title_head = "Series adjusted for interventions: ";
  Period period;
  std::string label;
  std::vector<double> figures;
  for (const std::string& line : *history) {
    if (line.rfind(title_head, 0) == 0) data.series = line.substr(title_head.size());
    // PERIOD, ACTUAL, ADJUSTED, EFFECT.
    if (!TableRow(line, period, label, figures) || figures.size() < 2) continue;
    data.periods.push_back(period);
    data.labels.push_back(label);
    data.actual.values.emplace_back(figures[0]);
    data.adjusted.values.emplace_back(figures[1]);
  }
  if (data.periods.empty()) return std::nullopt;
  const size_t history_points = data.periods.size();
  // PERIOD, then the forecast and its two limits as the last three figures.
  if (auto forecasts = platform::FindNoCase(output_folder, dataset + ".PRO")) {
    if (auto lines = platform::ReadAllLines(*forecasts)) {
      for (const std::string& line : *lines) {
        if (!TableRow(line, period, label, figures) || figures.size() < 3) continue;
        if (data.forecast_origin < 0) data.forecast_origin = static_cast<int>(data.periods.size());
        data.periods.push_back(period);
        data.labels.push_back(label);
        const size_t n = figures.size();
        data.forecast.values.resize(data.periods.size() - 1);
        data.lower.values.resize(data.periods.size() - 1);
        data.upper.values.resize(data.periods.size() - 1);
        data.forecast.values.emplace_back(figures[n - 3]);
        data.lower.values.emplace_back(figures[n - 2]);
        data.upper.values.emplace_back(figures[n - 1]);
      }
    }
  }
  data.fitted.values.resize(data.periods.size());
  ReadFitted(output_folder, dataset, data);
  // The forecast line starts at the last actual, so the two join.
  if (data.forecast_origin > 0) data.forecast.values[history_points - 1] = data.actual.values[history_points - 1];
  for (const Period& p : data.periods) data.seasonality = std::max(data.seasonality, p.period);
  for (ChartLine* line : {&data.actual, &data.adjusted, &data.fitted, &data.forecast, &data.lower, &data.upper})
    line->values.resize(data.periods.size());
  return data;
}

PointWindow DefaultWindow(int points, int forecast_origin, int seasonality) {
  if (points <= 0) return {};
  if (forecast_origin < 0 || forecast_origin >= points) return {0, points - 1};
  const int horizon = points - forecast_origin;
  const int history = std::max({4 * horizon, 3 * seasonality, 24});
  // Hiding only a little of the history helps no one.
  const int first = forecast_origin - history < forecast_origin / 4 ? 0 : forecast_origin - history;
  return {first, points - 1};
}

std::vector<Tick> AxisTicks(const std::vector<Period>& periods, int seasonality, int first, int last,
                            int max_ticks) {
  std::vector<Tick> ticks;
  first = std::max(first, 0);
  last = std::min(last, static_cast<int>(periods.size()) - 1);
  if (first > last || max_ticks < 1) return ticks;
  const int span = last - first + 1;
  const int s = std::max(seasonality, 1);
  auto label = [&](const Period& p) {
    return s == 1 || p.period == 1 ? std::to_string(p.year) : std::to_string(p.year) + "/" + std::to_string(p.period);
  };
  static const int kYearSteps[] = {1, 2, 5, 10, 20, 25, 50, 100, 200, 500, 1000};
  if (s == 1 || span > 2 * s) {
    // Whole years: the smallest step that keeps the ticks few.
    const int years = (span + s - 1) / s;
    int step = kYearSteps[std::size(kYearSteps) - 1];
    for (int candidate : kYearSteps)
      if ((years + candidate - 1) / candidate <= max_ticks) {
        step = candidate;
        break;
      }
    for (int i = first; i <= last; ++i) {
      const Period& p = periods[static_cast<size_t>(i)];
      if (p.period == 1 && ((p.year % step) + step) % step == 0) ticks.push_back({i, label(p)});
    }
    return ticks;
  }
  // A short window: steps that divide the season, so ticks fall on the same months each year.
  int step = s;
  for (int candidate = 1; candidate <= s; ++candidate)
    if (s % candidate == 0 && (span + candidate - 1) / candidate <= max_ticks) {
      step = candidate;
      break;
    }
  for (int i = first; i <= last; ++i) {
    const Period& p = periods[static_cast<size_t>(i)];
    if ((p.period - 1) % step == 0) ticks.push_back({i, label(p)});
  }
  return ticks;
}

}  // namespace tessaly::report
