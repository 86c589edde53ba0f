#include "engine/forecast_file.h"

#include <cstdio>
#include <cstdlib>

#include "platform/textfile.h"

namespace quorvane {

namespace {

constexpr int kLabelWidth = 11;     // columns 1-11
constexpr int kForecastWidth = 23;  // columns 12-34
constexpr int kLimitWidth = 25;     // columns 35-59 and 60-84

std::string RightJustified(double value, int width) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%*.4f", width, value);
  std::string s = buf;
  // A number too wide for its columns would shift the rest: fall back to fewer digits.
  if (static_cast<int>(s.size()) > width) {
    std::snprintf(buf, sizeof buf, "%*.*g", width, width - 7, value);
    s = buf;
  }
  return s;
}

std::string PadRight(std::string s, int width) {
  if (static_cast<int>(s.size()) > width) s.resize(width);
  s.append(width - s.size(), ' ');
  return s;
}

std::optional<double> NumberIn(const std::string& line, size_t from, size_t width) {
  if (line.size() <= from) return std::nullopt;
  std::string field = line.substr(from, width);
  char* end = nullptr;
  double v = std::strtod(field.c_str(), &end);
  if (end == field.c_str()) return std::nullopt;
  while (*end == ' ') ++end;
  if (*end != '\0') return std::nullopt;
  return v;
}

}  // namespace

std::string ForecastFileHeader(const std::string& series, double confidence) {
  char level[32];
  std::snprintf(level, sizeof level, "%g%%", confidence);
  auto right = [](const std::string& text, int width) {
    return text.size() >= static_cast<size_t>(width) ? text.substr(0, width)
                                                     : std::string(width - text.size(), ' ') + text;
  };
  std::string title = series + " FORECAST";
  if (static_cast<int>(title.size()) >= kForecastWidth) title = "FORECAST";
  return PadRight("PERIOD", kLabelWidth) + right(title, kForecastWidth) +
         right(std::string("LOWER ") + level, kLimitWidth) +
         right(std::string("UPPER ") + level, kLimitWidth);
}

std::string FormatForecastLine(const ForecastLine& l) {
  return PadRight(l.label, kLabelWidth) + RightJustified(l.forecast, kForecastWidth) +
         RightJustified(l.lower, kLimitWidth) + RightJustified(l.upper, kLimitWidth);
}

bool WriteForecastFile(const std::filesystem::path& path, const std::string& header,
                       const std::vector<ForecastLine>& lines) {
  tessaly::platform::TextWriter out(path);
  if (!out.IsOpen()) return false;
  out.Line(header);
  for (const auto& l : lines) out.Line(FormatForecastLine(l));
  return out.Close();
}

std::optional<std::vector<ForecastLine>> ReadForecastFile(const std::filesystem::path& path) {
  auto lines = tessaly::platform::ReadAllLines(path);
  if (!lines) return std::nullopt;
  std::vector<ForecastLine> result;
  for (size_t i = 1; i < lines->size(); ++i) {
    const std::string& line = (*lines)[i];
    if (line.find_first_not_of(' ') == std::string::npos) continue;
    ForecastLine l;
    std::string label = line.substr(0, kLabelWidth);
    label.erase(label.find_last_not_of(' ') + 1);
    l.label = label;
    auto f = NumberIn(line, kLabelWidth, kForecastWidth);
    auto lo = NumberIn(line, kLabelWidth + kForecastWidth, kLimitWidth);
    auto hi = NumberIn(line, kLabelWidth + kForecastWidth + kLimitWidth, kLimitWidth);
    if (!f || !lo || !hi) return std::nullopt;
    l.forecast = *f;
    l.lower = *lo;
    l.upper = *hi;
    result.push_back(l);
  }
  return result;
}

}  // namespace quorvane
