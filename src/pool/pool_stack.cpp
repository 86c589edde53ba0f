#include "pool/pool_stack.h"

#include "dataset/asc_dataset.h"
#include "platform/numfmt.h"
#include "platform/paths.h"
#include "platform/textfile.h"
#include "pool/pool_texts.h"

namespace tessaly::pool {

namespace {

std::optional<long> WholeNumber(const std::string& line) {
  auto value = platform::ToDouble(dataset::TrimBlanks(line));
  if (!value || *value != static_cast<long>(*value)) return std::nullopt;
  return static_cast<long>(*value);
}

void RemoveAll(const fs::path& folder, const std::string& name) {
  while (platform::RemoveNoCase(folder, name)) {
  }
}

}  // namespace

std::optional<StackShape> ReadStackShape(const fs::path& first) {
  platform::LineReader in(first);
  if (!in.IsOpen()) return std::nullopt;
  std::vector<std::string> header;
  for (int i = 0; i < 11; ++i) {
    auto line = in.Next();
    if (!line) return std::nullopt;
    header.push_back(dataset::TrimBlanks(*line));
  }
  auto series = WholeNumber(header[3]);
  auto observations = WholeNumber(header[7]);
  if (!series || !observations || *series < 1 || *observations < 0) return std::nullopt;
  StackShape shape;
  shape.series_count = static_cast<int>(*series);
  shape.seasonality = header[4];
  shape.major_period = header[5];
  shape.minor_period = header[6];
  shape.observations = *observations;
  for (int i = 0; i < shape.InputCount(); ++i) {
    auto line = in.Next();
    if (!line) break;
    shape.input_names.push_back(dataset::TrimBlanks(*line));
  }
  return shape;
}

std::vector<std::vector<double>> ReadPooledData(const std::vector<fs::path>& files,
                                                const StackShape& shape) {
  std::vector<std::vector<double>> pooled;
  const long wanted = static_cast<long>(shape.series_count) * shape.observations;
  for (const fs::path& file : files) {
    std::vector<double>& values = pooled.emplace_back();
    platform::LineReader in(file);
    if (!in.Skip(2L * shape.series_count + 11)) continue;
    for (long k = 0; k < wanted; ++k) {
      auto line = in.Next();
      if (!line) break;
      values.push_back(platform::ToDouble(dataset::TrimBlanks(*line)).value_or(0.0));
    }
  }
  return pooled;
}

std::vector<std::string> TotalPoolLines(const std::array<int16_t, 3>& objectives,
                                        const StackShape& shape,
                                        const std::vector<std::vector<double>>& pooled) {
  std::vector<std::string> lines;
  for (int16_t o : objectives) lines.push_back(std::to_string(o));
  lines.push_back(std::to_string(shape.series_count));
  lines.push_back(shape.seasonality);
  lines.push_back(shape.major_period);
  lines.push_back(shape.minor_period);
  lines.push_back(std::to_string(shape.observations * static_cast<long>(pooled.size())));
  for (int i = 0; i < 3; ++i) lines.push_back("0");
  for (const std::string& name : shape.input_names) lines.push_back(name);
  lines.push_back(texts::kStackName);
  for (int i = 0; i < shape.series_count; ++i) lines.push_back("0");
  // The first block: every file's first Observations values, files in list order.
  const size_t first = static_cast<size_t>(shape.observations);
  for (const auto& values : pooled)
    for (size_t k = 0; k < first && k < values.size(); ++k)
      lines.push_back(platform::NumberToText(values[k]));
  // The second block: every file's remaining values, file by file.
  for (const auto& values : pooled)
    for (size_t k = first; k < values.size(); ++k) lines.push_back(platform::NumberToText(values[k]));
  return lines;
}

const std::array<const char*, 11>& OldStackOutputs() {
  static const std::array<const char*, 11> names{
      "TOTALPOOLactfit.jpg",   "TOTALPOOLactfitfore.jpg", "TOTALPOOLINTRVENT.HTM",
      "TOTALPOOLSTAT.HTM",     "TOTALPOOLRHSIDE.TXT",     "TOTALPOOLEQUATION.TXT",
      "TOTALPOOLADJUSTED.TXT", "TOTALPOOL.htm",           "TOTALPOOL.PRO",
      "TOTALPOOLOUTCAST.TXT",  "TOTALPOOLVERBAL.TXT"};
  return names;
}

void RemoveOldStack(const fs::path& in_directory, const fs::path& output_path) {
  RemoveAll(in_directory, texts::kStackFile);
  for (const char* name : OldStackOutputs()) RemoveAll(output_path, name);
}

}  // namespace tessaly::pool
