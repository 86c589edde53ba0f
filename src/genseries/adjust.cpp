#include "genseries/adjust.h"

#include <algorithm>
#include <memory>

#include "dataset/asc_dataset.h"
#include "genseries/texts.h"
#include "platform/numfmt.h"
#include "platform/paths.h"
#include "platform/textfile.h"

namespace tessaly::genseries {

bool PassesAdjustCheck(const fs::path& file) {
  std::error_code ec;
  if (!fs::is_regular_file(file, ec)) return false;
  dataset::AscHeader header;
  if (!dataset::ReadAscHeader(file, header).ok()) return false;
  if (header.N() < 1 || header.N() > dataset::MaxSeries) return false;
  return dataset::CountAscLines(file) == dataset::AnticipatedSize(header);
}

std::vector<std::string> AdjustableFiles(const fs::path& folder, const std::vector<std::string>& names) {
  std::vector<std::string> out;
  for (const std::string& name : names) {
    std::optional<fs::path> found = platform::FindNoCase(folder, name);
    if (found && PassesAdjustCheck(*found)) out.push_back(name);
  }
  return out;
}

std::string AdjustRun::Message() const {
  return reported ? "FYI! " + report : std::string(texts::kAllAdjusted);
}

AdjustRun AdjustChosenFiles(const fs::path& folder, const std::vector<std::string>& chosen,
                            const fs::path& variables_file, const ManualData& manual,
                            const fs::path& program_folder) {
  AdjustRun run;
  run.report = texts::kReportHeading;
  const fs::path backup = platform::EnsureSubfolder(folder, texts::kBackupFolder);
  for (const std::string& name : chosen) {
    const fs::path file = platform::ResolveNoCase(folder, name);
    // A file without its safety copy is not changed: its original could not be given back.
    if (!platform::ExistsNoCase(backup, name) && !platform::CopyFileOver(file, backup / file.filename())) {
      run.report += "\n\n" + name + "\nThe original could not be copied to " + texts::kBackupFolder +
                    "; the file was left as it is.";
      run.reported = true;
      continue;
    }
    GenerationResult result = GenerateSeries(variables_file, file, std::nullopt, manual, program_folder);
    if (!result.import_ok) {
      run.report += "\n\n" + name;
      for (const std::string& line : result.log_lines) run.report += "\n" + line;
      run.reported = true;
    }
    // A file written in part (a refusal after some series, the renamed daily output series)
    // is offered for saving as well: it was changed, and only the user can say it is wanted.
    if (result.outcome != GenerationOutcome::Refused &&
        std::none_of(run.adjusted.begin(), run.adjusted.end(),
                     [&](const std::string& a) { return platform::EqualsNoCase(a, name); }))
      run.adjusted.push_back(name);
  }
  return run;
}

namespace {
void RestoreOne(const fs::path& folder, const std::string& name) {
  std::optional<fs::path> backup_folder = platform::FindNoCase(folder, texts::kBackupFolder);
  if (!backup_folder) return;
  std::optional<fs::path> copy = platform::FindNoCase(*backup_folder, name);
  if (!copy) return;
  if (platform::CopyFileOver(*copy, platform::ResolveNoCase(folder, name))) {
    std::error_code ec;
    fs::remove(*copy, ec);
  }
}
}  // namespace

void KeepChosenAdjustedFiles(const fs::path& folder, const std::vector<std::string>& adjusted,
                             const std::vector<std::string>& chosen) {
  std::optional<fs::path> backup_folder = platform::FindNoCase(folder, texts::kBackupFolder);
  for (const std::string& name : adjusted) {
    bool keep = std::any_of(chosen.begin(), chosen.end(),
                            [&](const std::string& c) { return platform::EqualsNoCase(c, name); });
    if (!keep) {
      RestoreOne(folder, name);
    } else if (backup_folder) {
      platform::RemoveNoCase(*backup_folder, name);
    }
  }
}

void RestoreOriginals(const fs::path& folder, const std::vector<std::string>& project_files) {
  for (const std::string& name : project_files) RestoreOne(folder, name);
}

std::vector<fs::path> Create_individual_ASC_files(const fs::path& dataset_file, const fs::path& out_folder) {
  auto ds = std::make_unique<dataset::AscDataset>();
  if (!dataset::ReadAscFile(dataset_file, *ds).ok()) return {};
  const int n = ds->DataProp(1), P = ds->DataProp(5), F = ds->DataProp(6), R = ds->DataProp(7);
  if (n < 1 || n > dataset::MaxSeries || P < 1) return {};
  std::vector<fs::path> written;
  int block = 0;
  for (int i = 1; i <= n; ++i) {
    const std::string name = dataset::TrimBlanks(ds->DataNames(i));
    const int16_t type = ds->DataTypes(i);
    const bool has_future = type >= 1 && type <= 3;
    std::vector<std::string> lines = {"0", "0", "0", "1"};
    for (int k = 2; k <= 8; ++k) lines.push_back(std::to_string(ds->DataProp(k)));
    lines.push_back(name);
    lines.push_back(platform::FormatNumber(type, "###0"));
    for (int j = 1; j <= P; ++j) lines.push_back(platform::NumberToText(ds->DataValues((i - 1) * P + j)));
    if (has_future) {
      for (int j = 1; j <= F; ++j) lines.push_back(platform::NumberToText(ds->FutureValues(block * F + j)));
      ++block;
    }
    for (int j = 1; j <= R; ++j) lines.push_back(platform::NumberToText(ds->RetainedValues((i - 1) * R + j)));
    fs::path path = out_folder / (platform::ToUpper(name) + ".ASC");
    if (platform::WriteAllLines(path, lines)) written.push_back(path);
  }
  return written;
}

}  // namespace tessaly::genseries
