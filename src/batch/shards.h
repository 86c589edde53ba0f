#pragma once
// Scale-out of a project run: a shard is one of N disjoint parts of the project's list, run
// by its own process (on this machine or another that shares the project's folders), with
// its engine in a private working folder and everything it writes under OUTPUT/shards/I/,
// so that no two shards ever write the same file. The merge then joins the shards into the
// OUTPUT folder and the project file exactly as one serial run would have left them.
// Parallel jobs on one machine are shards too: K children and the merge.
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "batch/run.h"

namespace tessaly::batch {

namespace fs = std::filesystem;

// Shard `index` (1-based) of `count`.
struct ShardSpec {
  int index = 1;
  int count = 1;
};

// "I/N" with 1 <= I <= N; nullopt with a reason in `error` otherwise.
[[nodiscard]] std::optional<ShardSpec> ParseShard(std::string_view text, std::string& error);

// The shard of this task from the batch system's environment: Slurm's job array
// (SLURM_ARRAY_TASK_ID, less SLURM_ARRAY_TASK_MIN, of SLURM_ARRAY_TASK_COUNT), else
// Kubernetes' Indexed Job (JOB_COMPLETION_INDEX, from 0) of `shards`. `getenv` is the
// environment's lookup (tests give their own).
[[nodiscard]] std::optional<ShardSpec> ShardFromEnvironment(std::optional<int> shards, std::string& error,
                                              const std::function<const char*(const char*)>& getenv);

// The project entries [first, last) of a shard among `files`: a stable split by position into
// contiguous parts whose sizes differ by at most one. Joining the parts in shard order gives
// the project's order back, which is what lets the merge rebuild the run-wide files.
std::pair<int, int> ShardRange(const ShardSpec& shard, int files);

// OUTPUT/shards/I under the project's output folder: the shard's project file (its statuses),
// its error log and markers; its outputs in OUTPUT below it.
fs::path ShardFolder(const fs::path& output_path, int index);

struct ShardRunOptions {
  fs::path program_folder;  // the program's folder (qvxengine, rules, model)
  bool no_graphs = false;
  std::chrono::seconds series_timeout{0};
  // Graphs and the intervention page (the link-tree site is the merge's).
  std::shared_ptr<RunReports> reports;
  // Where the private working folder is made; empty: under the program's folder, or the
  // system's temporary folder when that cannot be written.
  fs::path work_root;
};

// Runs one shard of the project: its part of the list, with its engine in a private working
// folder that gets the program's rules, model and marker files. Exit status as the
// unattended run's; a shard that ended (not cancelled) is marked done for the merge.
int RunShard(const fs::path& project, const ShardSpec& shard, const ShardRunOptions& options);

struct MergeOptions {
  fs::path program_folder;
  // The number of shards when known (an absent shard is then noticed even when no shard
  // ran); nullopt: as the shards that ran recorded it.
  std::optional<int> shards;
  // The link-tree site of the whole project; none written when null.
  std::shared_ptr<RunReports> reports;
};

// Joins the shards: the per-series outputs into OUTPUT, CON<project>.PRO and the run-wide
// summaries in project order, the statuses into the project file, the error logs into the
// program's "Process Errors.Err", then the link-tree site; the shards' folders go. A shard
// missing or not done: it says which, merges nothing and returns 1. 0 when merged, 2 when the
// project cannot be read.
int MergeShards(const fs::path& project, const MergeOptions& options);

// The project run by `jobs` shards at a time on this machine, each a child process running
// `tsly run PROJECT --shard i/N` (with `extra_args`), then the merge. `tsly` is the program to
// start. The list is cut into N = max(jobs, files / part_size) parts: a part's outputs are
// filed into a folder of its own, whose files the run looks through by name for each dataset,
// so parts of a bounded size keep that cost from growing with the square of the project.
// The children's progress shares this standard error, each line with its shard.
inline constexpr int kDefaultPartSize = 100;
int RunJobs(const fs::path& project, int jobs, const fs::path& tsly, const std::vector<std::string>& extra_args,
            const MergeOptions& merge, int part_size = kDefaultPartSize);

}  // namespace tessaly::batch
