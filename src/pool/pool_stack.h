#pragma once
// The stacked dataset of a pooling run, TOTALPOOL.ASC: the chosen files' values in one
// dataset, the first series of every file end to end in list order, then every file's
// remaining values, file by file. The engine fits it as a pooled cross-section.
#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tessaly::pool {

namespace fs = std::filesystem;

// What the stack takes from the first chosen file: the header lines as text (trimmed) and
// the names of its input series.
struct StackShape {
  int series_count = 0;              // line 4 (SeriesCount)
  std::string seasonality;           // line 5
  std::string major_period;          // line 6
  std::string minor_period;          // line 7
  long observations = 0;             // line 8 (Observations)
  std::vector<std::string> input_names;  // SeriesCount - 1 names from line 12 on
  int InputCount() const { return series_count - 1; }
};

// Reads the shape from `first`; nullopt when the file cannot be read or its line 4 or 8
// is not a whole number.
[[nodiscard]] std::optional<StackShape> ReadStackShape(const fs::path& first);

// PooledData: for each file, its first SeriesCount x Observations values after the names
// and types (a line that is not a number reads as 0; a short file gives fewer values).
std::vector<std::vector<double>> ReadPooledData(const std::vector<fs::path>& files,
                                                const StackShape& shape);

// The lines of TOTALPOOL.ASC: objectives, series count, seasonality and periods, the stacked
// observations (Observations times the number of files), three zeros, the input names,
// "TOTALPOOL", a zero type per series, and the values in stacking order.
std::vector<std::string> TotalPoolLines(const std::array<int16_t, 3>& objectives,
                                        const StackShape& shape,
                                        const std::vector<std::vector<double>>& pooled);

// The stack's earlier reports in the output folder, which a new run must not show.
const std::array<const char*, 11>& OldStackOutputs();
// Deletes TOTALPOOL.ASC in `in_directory` and the old outputs in `output_path`.
void RemoveOldStack(const fs::path& in_directory, const fs::path& output_path);

}  // namespace tessaly::pool
