#pragma once
// A project named on the command line: run with no window and no person. Messages go to
// standard error through the unattended dialog host, questions take the answer that lets
// the run go on, the progress of each series is shown on standard error, and the project
// is saved where it was read.
#include <filesystem>
#include <iosfwd>
#include <memory>
#include <vector>

#include "batch/run.h"

namespace tessaly::batch {

// A run with no one to press Cancel stops the engine on a large dataset after this long.
inline constexpr std::chrono::seconds kLargeDatasetTimeout{15 * 60};

struct UnattendedRunOptions {
  fs::path program_folder;  // empty: the running program's folder
  bool no_graphs = false;
  // Whether NOTREND.QVX existed at start-up; also taken as true when it exists as the run begins.
  bool no_trend_at_start = false;
  // Graphs, the intervention page and the link-tree site; none drawn when null.
  std::shared_ptr<RunReports> reports;
  // The rules the run takes; the files found in the program's folder when null.
  std::shared_ptr<RunRulesWizard> rules;
  // Installs the unattended progress wait, and the standard-error dialog host unless an
  // unattended host is already there (tests that script their own leave this off).
  bool install_unattended_hosts = true;
  // A private working folder of this run (shards, parallel jobs): the engine works there and
  // its qvxengine is taken from `program_folder`; empty: the program's folder itself.
  fs::path working_folder;
  // Where the outputs go instead of the project's OUTPUT (a shard's own folder).
  fs::path output_path;
  // The longest the engine may work on one series; zero: no limit.
  std::chrono::seconds series_timeout{0};
  // The limit of a large dataset when none is given (see RunOptions).
  std::chrono::seconds large_dataset_timeout = kLargeDatasetTimeout;
  // The project whose first file sets the run's kind and seasonality, when not the run's own:
  // a shard is checked against the whole project's first file, as a run of it all would be.
  fs::path run_kind_from;
  // Put before each progress line ("Shard 2/4: ").
  std::string progress_prefix;
  // A part of a larger project (a shard): its datasets' lines carry their place in the
  // whole project, the part's first dataset being number `first_number`, of `whole_count`.
  int first_number = 1;
  int whole_count = 0;
  // Where the line of each dataset and the closing tally go; standard output when null.
  std::ostream* out = nullptr;
  // Set true when the run went through its list to the tally (whatever became of each
  // dataset) and was not cancelled: a shard that did is finished.
  bool* ended = nullptr;
};

// The exit statuses a script can trust.
inline constexpr int kRunAllForecast = 0;   // every dataset forecast
inline constexpr int kRunInPart = 1;        // some forecast, some rejected, failed or not reached
inline constexpr int kRunNothing = 2;       // none forecast: bad usage, an unreadable project,
                                            // no engine, or every dataset rejected or failed

// The line of one dataset: "2/4 BROKEN.ASC: rejected: <reason>", a reason of several lines
// going on below, indented.
std::string DatasetLine(const FileReport& report);
// The closing tally: "sample.xml: 2 forecast, 1 rejected, 1 failed (4 datasets)".
std::string TallyLine(const std::string& project_name, const std::vector<FileReport>& reports, int total);
// The exit status of a run that left these reports out of `total` datasets.
int RunExitStatus(const std::vector<FileReport>& reports, int total);

int RunProjectUnattended(const fs::path& project, const UnattendedRunOptions& options = {});

}  // namespace tessaly::batch
