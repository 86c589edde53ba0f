#include "batch/run_outputs.h"

#include <chrono>
#include <system_error>
#include <thread>

#include "batch/batch_file.h"
#include "platform/paths.h"
#include "platform/textfile.h"

namespace tessaly::batch {

using platform::ExistsNoCase;
using platform::FindNoCase;
using platform::RemoveNoCase;

std::string ProjectStem(const std::string& batch_name) {
  if (platform::EndsWithNoCase(batch_name, ".xml")) return batch_name.substr(0, batch_name.size() - 4);
  return batch_name;
}

std::string CombinedForecastName(const std::string& batch_name) {
  return "CON" + ProjectStem(batch_name) + ".PRO";
}

bool MoveFileOver(const fs::path& from, const fs::path& to) {
  for (int attempt = 0; attempt < 20; ++attempt) {
    std::error_code ec;
    fs::rename(from, to, ec);
    if (!ec) return true;
    if (ec == std::errc::cross_device_link) {
      if (platform::CopyFileOver(from, to) && fs::remove(from, ec)) return true;
      return false;
    }
    if (ec != std::errc::device_or_resource_busy && ec != std::errc::text_file_busy) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return false;
}

std::vector<std::string> FileSeriesReports(const fs::path& program_folder, const fs::path& output_path,
                                           const std::string& asc_name, ReportTree& tree, RowFlags& flags,
                                           const std::function<void(const fs::path&)>& write_intervent) {
  std::vector<std::string> unwritten;
  const std::string stem = AscStem(asc_name);
  AddReportsNode(tree, asc_name);
  for (size_t i = 0; i < kReportRows.size(); ++i) {
    const ReportRow& row = kReportRows[i];
    // The adjusted series is filed under the stem in capitals.
    std::string target_name = (i == 1 ? platform::ToUpper(stem) : stem) + row.suffix;
    // The target gets exactly the case given; an older file of another case goes too.
    while (RemoveNoCase(output_path, target_name)) {
    }
    fs::path target = output_path / target_name;
    bool filed = false;
    if (*row.engine_file) {
      if (auto engine_file = FindNoCase(program_folder, row.engine_file)) {
        filed = MoveFileOver(*engine_file, target);
        if (!filed) unwritten.push_back(target_name);
      }
    } else {
      if (write_intervent) write_intervent(target);
      filed = ExistsNoCase(output_path, target_name);
    }
    if (filed) {
      flags.report[i] = true;
      AddReportRow(tree, asc_name, row);
    }
  }
  return unwritten;
}

void ClearEarlierGraphs(const fs::path& output_path, const std::string& stem) {
  for (const char* suffix : kGraphSuffixesClearedBeforeDrawing)
    while (RemoveNoCase(output_path, stem + suffix)) {
    }
}

void AddGraphNodes(const std::string& asc_name, const std::array<bool, 9>& drawn, ReportTree& tree,
                   RowFlags& flags) {
  AddGraphsNode(tree, asc_name);
  for (size_t i = 0; i < kGraphRows.size(); ++i) {
    if (!drawn[i]) continue;
    flags.graph[i] = true;
    AddGraphRow(tree, asc_name, kGraphRows[i]);
  }
}

std::vector<std::string> CopyRunWideFiles(const fs::path& program_folder, const fs::path& output_path,
                                          const std::string& project_stem) {
  std::vector<std::string> unwritten;
  for (const SummaryRow& row : kSummaryRows) {
    auto source = FindNoCase(program_folder, row.engine_file);
    if (!source) continue;
    std::string target = project_stem + row.suffix;
    while (RemoveNoCase(output_path, target)) {
    }
    if (!platform::CopyFileOver(*source, output_path / target)) unwritten.push_back(target);
  }
  return unwritten;
}

std::vector<std::string> FileForecasts(const fs::path& program_folder, const fs::path& output_path,
                                       const std::string& stem, const std::string& batch_name) {
  std::vector<std::string> unwritten;
  auto source = FindNoCase(program_folder, "TS50PRO.123");
  if (!source) return unwritten;
  fs::path own = platform::ResolveNoCase(output_path, stem + ".PRO");
  if (!platform::CopyFileOver(*source, own)) unwritten.push_back(own.filename().string());
  auto lines = platform::ReadAllLines(*source);
  if (!lines) return unwritten;
  fs::path all = platform::ResolveNoCase(output_path, CombinedForecastName(batch_name));
  platform::TextWriter combined(all, platform::TextWriter::Mode::Append);
  for (const std::string& line : *lines) combined.Line(line);
  if (!combined.Close()) unwritten.push_back(all.filename().string());
  return unwritten;
}

void DeleteLeftovers(const fs::path& program_folder, const std::string& stem) {
  for (const char* ext : {".STA", ".RHS", ".RES", ".PRO"})
    while (RemoveNoCase(program_folder, stem + ext)) {
    }
}

}  // namespace tessaly::batch
