#pragma once
// Adjusting a project's files: which files can be adjusted, the run of GenerateSeries over
// the chosen ones with the safety copies in ASCBACKUP and the report of partly or totally
// unadjusted files, and the choice of which adjusted files replace the originals.
#include <filesystem>
#include <string>
#include <vector>

#include "genseries/generate_series.h"

namespace tessaly::genseries {

namespace fs = std::filesystem;

// The quiet file check that fills the "Available" list: the file exists, its header reads
// and its size agrees with the header. Files the generator will refuse for a reason it
// reports (retained data, 150 series) pass, so that the report names the reason.
[[nodiscard]] bool PassesAdjustCheck(const fs::path& file);
// The project's files (names, looked up in `folder` without regard to case) that pass.
std::vector<std::string> AdjustableFiles(const fs::path& folder, const std::vector<std::string>& names);

struct AdjustRun {
  std::vector<std::string> adjusted;  // written files, for the list of frmAdjSeries
  bool reported = false;              // a file was partly or totally unadjusted
  std::string report;                 // the report text (heading and each file's lines)
  // What the user is told at the end: "FYI! " + report, or that all were adjusted.
  std::string Message() const;
};

// For each chosen file in list order: keeps a safety copy in `folder`/ASCBACKUP (unless one
// is there already), runs GenerateSeries in place, and notes the result.
AdjustRun AdjustChosenFiles(const fs::path& folder, const std::vector<std::string>& chosen,
                            const fs::path& variables_file, const ManualData& manual = {},
                            const fs::path& program_folder = {});

// "Save Files": each chosen file stays as it is now and its safety copy is deleted (the
// original is gone); every other adjusted file gets its original back from ASCBACKUP.
void KeepChosenAdjustedFiles(const fs::path& folder, const std::vector<std::string>& adjusted,
                             const std::vector<std::string>& chosen);
// "Do Not Save Any files": each project file with a copy in ASCBACKUP gets it back, and the
// copy is deleted.
void RestoreOriginals(const fs::path& folder, const std::vector<std::string>& project_files);

// Create_individual_ASC_files: one ASC file per series of `dataset_file`, written into
// `out_folder` as NAME.ASC in capitals, each a univariate dataset with that series' values.
// Returns the files written; an empty list when the dataset cannot be read.
std::vector<fs::path> Create_individual_ASC_files(const fs::path& dataset_file, const fs::path& out_folder);

}  // namespace tessaly::genseries
