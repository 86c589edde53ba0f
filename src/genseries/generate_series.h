#pragma once
// GenerateSeries: the one entry point of the generator. For one ASC file it loads the
// generation variables (rwf.his), reads the file, drops what the new request replaces, adds
// the interventions, the user series and the holidays in that order, puts the dependent
// series back last and writes the file again. It asks nobody anything: what it has to say
// goes to a per-file log named after the dataset (SALES.ASC logs to SALES beside it), which
// the caller shows and deletes.
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "genseries/variables.h"

namespace tessaly::genseries {

namespace fs = std::filesystem;

struct WorkingDataset;
struct GenContext;

// The values the user typed into the manual grids, one text per period (row t + 1 is
// period t): the observations and the future values.
struct ManualData {
  std::vector<std::string> history;
  std::vector<std::string> future;
};

class clsGenerateSeries {
 public:
  explicit clsGenerateSeries(fs::path program_folder);

  // The properties, as LoadXmlFile filled them for the last file.
  GenerationVariables vars;
  ManualData manual;

  // Runs the generator on `asc_path`, writing `output_path` (or the input file when none).
  // Returns ImportOK: false when anything was refused or logged, though the file may have
  // been written with what was added so far (see Written()).
  [[nodiscard]] bool GenerateSeries(const fs::path& asc_path, const fs::path& variables_path,
                      const std::optional<fs::path>& output_path = std::nullopt);

  // The log of the last call: its file (empty when the ASC name has no "."), and its lines.
  const fs::path& LogPath() const { return log_path_; }
  const std::vector<std::string>& LogLines() const { return log_lines_; }
  bool Written() const { return written_; }
  bool DuplicateFound() const { return duplicate_found_; }

  // The log file of a dataset: the ASC file's name less its last four characters, in
  // capitals, beside it. Empty when the name holds no ".".
  static fs::path LogFileOf(const fs::path& asc_path);

 private:
  void Log(const std::string& line);
  [[nodiscard]] bool Run(const fs::path& asc_path, const std::optional<fs::path>& output_path);
  [[nodiscard]] std::optional<int> CheckDataset(const fs::path& asc_path);
  [[nodiscard]] bool ReadDataset(const fs::path& asc_path, int n, WorkingDataset& ds, std::vector<std::string>& file_names);
  bool LimitReached(const WorkingDataset& ds, const std::string& what);
  bool AddInterventions(GenContext& ctx);
  bool AddUserDefinedSeries(GenContext& ctx, const std::vector<std::string>& file_names);
  void AddHolidays(GenContext& ctx);

  fs::path program_folder_;
  fs::path log_path_;
  std::vector<std::string> log_lines_;
  bool import_ok_ = true;
  bool written_ = false;
  bool duplicate_found_ = false;
  int previous_series_count_ = 0;  // NewSeriesCount of the previous call on this object
};

enum class GenerationOutcome { Adjusted, PartlyAdjusted, Refused };

struct [[nodiscard]] GenerationResult {
  GenerationOutcome outcome = GenerationOutcome::Refused;
  bool import_ok = false;
  std::vector<std::string> log_lines;  // the lines of the dataset's log, as it stood
  fs::path written;                    // the file written, when one was
};

// One generation run on one file with a fresh generator, for any flow (the adjusting dialog,
// tsly, another subsystem's "Add Series" step). Reads the log back and deletes it. The
// outcome: Adjusted (written, nothing logged), PartlyAdjusted (written, with log lines:
// a refusal after some series were added, or the renamed daily output series), Refused
// (not written).
GenerationResult GenerateSeries(const fs::path& variables_file, const fs::path& asc_file,
                                const std::optional<fs::path>& output_file = std::nullopt,
                                const ManualData& manual = {},
                                const fs::path& program_folder = {});

// "adjusted", "partly adjusted", "refused".
const char* OutcomeText(GenerationOutcome outcome);

}  // namespace tessaly::genseries
