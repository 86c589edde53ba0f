#pragma once
// Filing a run's outputs: the engine writes its reports under fixed names into the
// program's folder, where the next dataset would overwrite them, so after each good
// dataset they are moved to the project's OUTPUT folder under the dataset's stem, the
// run-wide summaries are copied under the project's stem, and the forecasts are kept
// per series and gathered into one combined file.
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "batch/report_tree.h"

namespace tessaly::batch {

namespace fs = std::filesystem;

// The project's stem: its file name less a closing ".xml" (any case).
std::string ProjectStem(const std::string& batch_name);
// "CON", the project's stem and ".PRO": every forecast of a run in one file.
std::string CombinedForecastName(const std::string& batch_name);

// Moves a file, replacing the target; a target busy for a moment is tried again.
// False when the file could not be moved.
[[nodiscard]] bool MoveFileOver(const fs::path& from, const fs::path& to);

// R1 to R8 for one dataset: each target (output folder, stem, suffix) is deleted, the
// engine's file moved there when it exists, the row's flag set and its node added under
// the series' "Reports" node (added here). R4 is written by `write_intervent` (which gets
// the target path and writes it only when the engine found interventions); its node follows
// when the page exists.
// The value a dataset's `err` takes when the engine gave its reports but they could not
// all be put in the output folder (a full disk, a read-only folder, a file where the
// folder should be): the dataset failed, though the engine did not.
inline constexpr int kOutputsNotWrittenError = 9000;
// The reason logged for such a dataset, followed by the names of the files not written.
inline constexpr const char* kOutputsNotWrittenText = "The results could not be written to the output folder: ";

// Each filing step returns the names of the files it could not write (empty: all filed).
std::vector<std::string> FileSeriesReports(const fs::path& program_folder, const fs::path& output_path,
                       const std::string& asc_name, ReportTree& tree, RowFlags& flags,
                       const std::function<void(const fs::path&)>& write_intervent);

// Before the graphs of a stem are drawn: its earlier pictures go.
void ClearEarlierGraphs(const fs::path& output_path, const std::string& stem);

// The "Graphs" node and one node per picture that was drawn; sets the rows' flags.
void AddGraphNodes(const std::string& asc_name, const std::array<bool, 9>& drawn, ReportTree& tree,
                   RowFlags& flags);

// S1 to S9: each run-wide file of the program's folder copied over its target under the
// project's stem.
std::vector<std::string> CopyRunWideFiles(const fs::path& program_folder, const fs::path& output_path,
                      const std::string& project_stem);

// TS50PRO.123, when the engine wrote it: copied to the stem's ".PRO" in the output folder
// and appended line by line to the combined file.
std::vector<std::string> FileForecasts(const fs::path& program_folder, const fs::path& output_path,
                   const std::string& stem, const std::string& batch_name);

// The four leftovers of a dataset in the program's folder: <stem>.STA, .RHS, .RES, .PRO.
void DeleteLeftovers(const fs::path& program_folder, const std::string& stem);

}  // namespace tessaly::batch
