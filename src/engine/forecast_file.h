#pragma once
// TS50PRO.123, the forecast file: a header line, then one line per forecast period with
// the period label left-justified in columns 1-11, the forecast right-justified in
// columns 12-34, the lower limit in 35-59 and the upper limit in 60-84. The
// reconciliation reads and rewrites this layout, so it must read back exactly.
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

struct ForecastLine {
  std::string label;  // "1961/1", or "1961" for seasonality 1
  double forecast = 0.0;
  double lower = 0.0;
  double upper = 0.0;
};

// The header line for a series and a confidence level (percent).
std::string ForecastFileHeader(const std::string& series, double confidence);

// One line in the fixed columns.
std::string FormatForecastLine(const ForecastLine& line);

// Writes the header and the lines with CR LF ends. False when the file cannot be written.
bool WriteForecastFile(const std::filesystem::path& path, const std::string& header,
                       const std::vector<ForecastLine>& lines);

// Reads the lines back by their columns, skipping the header. nullopt when the file is
// missing or a line's numbers cannot be read.
std::optional<std::vector<ForecastLine>> ReadForecastFile(const std::filesystem::path& path);

}  // namespace quorvane
