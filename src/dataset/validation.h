#pragma once
// The checks that stand between an ASC file and the engine.
//
// - ValidateAscSize_And_NSeries: the quick test before series are added to a file; it
//   speaks to the person (title "FYI") and raises the general cancel flag.
// - The run's checks, called by the run loop for each file of a project in this order:
//     CheckAscBeforeReading   empty file, more than 150 series, size, seasonality, kind
//     ReadAndCheckAscFile     the whole file, with the value checks between its stages
//   Each rejection appends the file name and the reason to Process Errors.Err; the run
//   adds one to its ErrorCount for every outcome other than Accepted and goes on with the
//   next file. Names with unacceptable characters are repaired with a warning in the same
//   log (not a rejection).
// - ValidateASC (dataset/validate_asc.h): the stricter pre-flight that reports by codes.
#include <cstdint>
#include <string>

#include "dataset/asc_dataset.h"
#include "dataset/process_errors.h"

namespace tessaly::dataset {

// Quick test of the file `file` before series are added to it. Sets `cancel` (the general
// cancel flag) to false, and on a failure shows the reason through platform::Dialogs()
// under the title "FYI", sets `cancel` to true and returns false. `name` is the name the
// messages show (the file's name when empty); `header` receives what was read.
[[nodiscard]] bool ValidateAscSize_And_NSeries(const fs::path& file, bool& cancel, const std::string& name = {},
                                 AscHeader* header = nullptr);

// Which kind of dataset a run takes, fixed by its first file.
enum class RunKind { Univariate, Causal };

enum class [[nodiscard]] CheckOutcome {
  Accepted,
  Rejected,   // the reason is in the log
  Malformed,  // a 16-bit value overflowed; "<name> is malformed. ..." is in the log
};

// What the run knows when it checks a file.
struct RunCheckContext {
  int16_t seasonality = 0;    // the Seasonality of the run's SeriesProperties
  RunKind kind = RunKind::Univariate;
  std::string project_name;   // leads the message of a file of the other kind
};

// Steps before the file is read whole: line count (a missing file counts 0), empty file,
// DataProp and names and types read with K counted, more than 150 series, the size, the
// seasonality against the run's, the kind against the run's. `name` is the file name as
// the log shows it. `header` (optional) receives the header read.
CheckOutcome CheckAscBeforeReading(const fs::path& file, const std::string& name,
                                   const RunCheckContext& run, const ProcessErrorsLog& log,
                                   AscHeader* header = nullptr);

// Reads the file whole into `dataset` with the value checks between its stages:
// DataProp numeric, then their ranges, name lengths with the repair of names, types, and
// future values against forecasts. The repaired names are what DataNames holds
// afterwards; the file itself is not changed.
CheckOutcome ReadAndCheckAscFile(const fs::path& file, const std::string& name,
                                 AscDataset& dataset, const ProcessErrorsLog& log);

// A name rebuilt from its trimmed text: letters, digits, "(", ")", "+", "-" and "_" are
// kept, every other character becomes "_". `replaced` receives how many were replaced.
std::string RepairSeriesName(const std::string& name, int* replaced = nullptr);

}  // namespace tessaly::dataset
