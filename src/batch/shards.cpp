#include "batch/shards.h"

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <map>
#include <vector>

#include "batch/batch_file.h"
#include "batch/batch_texts.h"
#include "batch/engine/engine_client.h"
#include "batch/engine/engine_wait.h"
#include "batch/engine/unattended_wait.h"
#include "batch/output_owner.h"
#include "batch/report_tree.h"
#include "batch/run_outputs.h"
#include "batch/unattended_run.h"
#include "dataset/process_errors.h"
#include "engine/reports.h"
#include "platform/dialogs.h"
#include "platform/paths.h"
#include "platform/process.h"
#include "platform/textfile.h"

extern char** environ;

namespace tessaly::batch {

using platform::Dialogs;
namespace mb = platform::mb;

namespace {

constexpr const char* kShardsFolder = "shards";
constexpr const char* kStartedMarker = "SHARD.RUN";
constexpr const char* kDoneMarker = "SHARD.DONE";
constexpr const char* kMergeTitle = "Tessaly Merge";
// The files the engine reads from its working folder besides the request: the rules, the
// starting model and the markers that change how it models.
constexpr const char* kEngineInputs[] = {"ENGINE.GO",    "STARTMOD.123", "NOTREND.QVX",
                                         "ALLOWMOD.QVX", "SAVEMOD.QVX",  "GROUPLST.QVX"};

std::optional<int> ToInt(std::string_view text) {
  int value = 0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

// A marker: the shard, the shard count and the part of the list, one "key=value" a line.
struct Marker {
  int shard = 0, shards = 0, first = 0, last = 0, files = 0;
};

bool WriteMarker(const fs::path& file, const Marker& m) {
  return platform::WriteAllLines(
      file, {"shard=" + std::to_string(m.shard), "shards=" + std::to_string(m.shards),
             "first=" + std::to_string(m.first + 1), "last=" + std::to_string(m.last),
             "files=" + std::to_string(m.files)});
}

std::optional<Marker> ReadMarker(const fs::path& file) {
  auto lines = platform::ReadAllLines(file);
  if (!lines) return std::nullopt;
  std::map<std::string, int> values;
  for (const std::string& line : *lines) {
    auto eq = line.find('=');
    if (eq == std::string::npos) continue;
    if (auto v = ToInt(line.substr(eq + 1))) values[line.substr(0, eq)] = *v;
  }
  for (const char* key : {"shard", "shards", "first", "last", "files"})
    if (!values.count(key)) return std::nullopt;
  return Marker{values["shard"], values["shards"], values["first"] - 1, values["last"], values["files"]};
}

fs::path ProjectOutput(const cBatchFile& project) {
  std::error_code ec;
  fs::create_directories(project.OutDirectory(), ec);
  return platform::EnsureSubfolder(project.OutDirectory(), "OUTPUT");
}

// The shards write no link-tree site: the merge writes it once for the whole project.
class ShardReports : public RunReports {
 public:
  explicit ShardReports(std::shared_ptr<RunReports> inner) : inner_(std::move(inner)) {}
  std::array<bool, 9> DrawGraphs(const SeriesResult& s) override {
    return inner_ ? inner_->DrawGraphs(s) : std::array<bool, 9>{};
  }
  void WriteInterventPage(const SeriesResult& s, const fs::path& target) override {
    if (inner_) inner_->WriteInterventPage(s, target);
  }

 private:
  std::shared_ptr<RunReports> inner_;
};

std::string HostName() {
  char name[256] = {};
  if (::gethostname(name, sizeof name - 1) != 0) return "host";
  return name;
}

// A fresh private working folder for one shard's engine, with the program's engine inputs.
fs::path MakeWorkingFolder(const ShardRunOptions& options, const ShardSpec& shard) {
  const std::string name =
      HostName() + "-" + std::to_string(::getpid()) + "-shard" + std::to_string(shard.index);
  std::error_code ec;
  fs::path root = options.work_root.empty() ? options.program_folder / "jobs" : options.work_root;
  fs::path folder = root / name;
  fs::remove_all(folder, ec);
  if (!fs::create_directories(folder, ec)) {
    folder = fs::temp_directory_path(ec) / "tessaly-jobs" / name;
    fs::remove_all(folder, ec);
    fs::create_directories(folder, ec);
  }
  for (const char* input : kEngineInputs)
    if (auto found = platform::FindNoCase(options.program_folder, input))
      // An input that cannot be copied is missing to the job's engine as it would be here.
      (void)platform::CopyFileOver(*found, folder / found->filename());
  return folder;
}

std::string NumberList(const std::vector<int>& numbers) {
  std::string text;
  for (int n : numbers) text += (text.empty() ? "" : ", ") + std::to_string(n);
  return text;
}

// How a run-wide file grows over a run: whole files one after the other (the combined
// forecasts), rows under one heading line (the engine's tables), or dataset lines under a
// total over them all (the summary of accuracy).
enum class Growth { WholeFiles, RowsUnderHeading, AccuracySummary };

// The run-wide file `name` of every shard, joined in shard order as the run would have grown
// it; nothing when no shard has it.
void JoinRunWideFile(const std::vector<fs::path>& shard_outputs, const std::string& name,
                     Growth growth, const fs::path& target) {
  std::vector<fs::path> present;
  for (const fs::path& out : shard_outputs)
    if (auto found = platform::FindNoCase(out, name)) present.push_back(*found);
  if (present.empty()) return;
  if (growth == Growth::AccuracySummary) {
    std::vector<std::string> rows;
    for (const fs::path& file : present)
      for (std::string& row : quorvane::SummaryMapeDatasetLines(file)) rows.push_back(std::move(row));
    quorvane::WriteSummaryMape(target, rows);
    return;
  }
  std::string joined;
  for (size_t i = 0; i < present.size(); ++i) {
    std::string text = platform::ReadWholeFile(present[i]).value_or("");
    if (i > 0 && growth == Growth::RowsUnderHeading) {
      auto eol = text.find('\n');
      text = eol == std::string::npos ? std::string() : text.substr(eol + 1);
    }
    joined += text;
  }
  // The merged report is one of the run's extras; each shard's datasets keep their own files.
  (void)platform::WriteWholeFile(target, joined);
}

}  // namespace

std::optional<ShardSpec> ParseShard(std::string_view text, std::string& error) {
  auto slash = text.find('/');
  std::optional<int> index, count;
  if (slash != std::string_view::npos) {
    index = ToInt(text.substr(0, slash));
    count = ToInt(text.substr(slash + 1));
  }
  if (!index || !count || *count < 1 || *index < 1 || *index > *count) {
    error = "'" + std::string(text) + "' is not a shard: give I/N with 1 <= I <= N, as 2/4.";
    return std::nullopt;
  }
  return ShardSpec{*index, *count};
}

std::optional<ShardSpec> ShardFromEnvironment(std::optional<int> shards, std::string& error,
                                              const std::function<const char*(const char*)>& getenv) {
  auto number = [&](const char* name) -> std::optional<int> {
    const char* value = getenv(name);
    if (!value || !*value) return std::nullopt;
    return ToInt(value);
  };
  if (auto id = number("SLURM_ARRAY_TASK_ID")) {
    auto count = number("SLURM_ARRAY_TASK_COUNT");
    int min = number("SLURM_ARRAY_TASK_MIN").value_or(0);
    if (!count && shards) count = shards;
    if (!count || *id - min < 0 || *id - min >= *count) {
      error = "the Slurm array task " + std::to_string(*id) +
              " is not one of a job array of SLURM_ARRAY_TASK_COUNT tasks (--array=0-N or 1-N).";
      return std::nullopt;
    }
    return ShardSpec{*id - min + 1, *count};
  }
  if (auto index = number("JOB_COMPLETION_INDEX")) {
    if (!shards || *index < 0 || *index >= *shards) {
      error = "JOB_COMPLETION_INDEX is " + std::to_string(*index) +
              (shards ? " but --shards is " + std::to_string(*shards) + "."
                      : ": give the Job's completions with --shards N.");
      return std::nullopt;
    }
    return ShardSpec{*index + 1, *shards};
  }
  error = "--shard auto needs SLURM_ARRAY_TASK_ID (a Slurm job array) or JOB_COMPLETION_INDEX "
          "(a Kubernetes Indexed Job).";
  return std::nullopt;
}

std::pair<int, int> ShardRange(const ShardSpec& shard, int files) {
  auto edge = [&](int k) { return static_cast<int>(static_cast<long long>(files) * k / shard.count); };
  return {edge(shard.index - 1), edge(shard.index)};
}

fs::path ShardFolder(const fs::path& output_path, int index) {
  return output_path / kShardsFolder / std::to_string(index);
}

int RunShard(const fs::path& project_path, const ShardSpec& shard, const ShardRunOptions& options) {
  std::error_code ec;
  const fs::path path = fs::absolute(project_path, ec);
  cBatchFile whole(options.program_folder);
  if (!whole.Load(path)) return 1;
  const fs::path folder = ShardFolder(ProjectOutput(whole), shard.index);
  fs::remove_all(folder, ec);
  fs::create_directories(folder / "OUTPUT", ec);

  // The shard's part of the list, with the statuses it had, as a project of its own.
  const int files = static_cast<int>(whole.Count());
  const auto [first, last] = ShardRange(shard, files);
  cBatchFile part = whole;
  while (part.Count()) part.Remove_File();
  for (int i = first; i < last; ++i)
    part.Add_File(whole.List(i), whole.Completed(i), whole.Error(i), whole.RunDate(i));
  part.SetChanged(false);
  const fs::path part_file = folder / whole.BatchName();
  const Marker marker{shard.index, shard.count, first, last, files};
  if (!part.Build(part_file) || !WriteMarker(folder / kStartedMarker, marker)) {
    Dialogs().Message("The shard's folder " + folder.string() + " cannot be written.", mb::OKOnly,
                      texts::kAppTitle);
    return 2;
  }
  int status = 0;
  bool done = true;
  if (first < last) {
    const fs::path work = MakeWorkingFolder(options, shard);
    UnattendedRunOptions run;
    run.program_folder = options.program_folder;
    run.working_folder = work;
    run.output_path = folder / "OUTPUT";
    run.no_graphs = options.no_graphs;
    run.series_timeout = options.series_timeout;
    run.reports = std::make_shared<ShardReports>(options.reports);
    run.run_kind_from = path;
    run.progress_prefix = "Shard " + std::to_string(shard.index) + "/" + std::to_string(shard.count) + ": ";
    run.first_number = first + 1;
    run.whole_count = files;
    bool ended = false;
    run.ended = &ended;
    status = RunProjectUnattended(part_file, run);
    done = ended;
    if (auto log = platform::FindNoCase(work, dataset::kProcessErrorsFileName))
      // A log that cannot be kept leaves the part's rejections to its project's statuses.
      (void)platform::CopyFileOver(*log, folder / dataset::kProcessErrorsFileName);
    fs::remove_all(work, ec);
    fs::remove(work.parent_path(), ec);  // the folder of private folders, once empty
  }
  if (done) WriteMarker(folder / kDoneMarker, marker);
  return status;
}

namespace {
// The datasets a run turned away, from its error log: each entry is a dataset's file name on a
// line of its own and then why. A dataset that was started (failed in the engine, say) is no
// rejection, whatever its log says.
std::vector<FileReport> RejectedFromLog(const cBatchFile& project, const std::string& log) {
  std::vector<FileReport> reports;
  FileReport* current = nullptr;
  size_t start = 0;
  while (start < log.size()) {
    size_t end = log.find('\n', start);
    if (end == std::string::npos) end = log.size();
    std::string line = log.substr(start, end - start);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    start = end + 1;
    bool named = false;
    for (int i = 0; i < static_cast<int>(project.Count()); ++i) {
      if (!platform::EqualsNoCase(line, project.List(i))) continue;
      named = true;
      current = nullptr;
      if (project.Completed(i) != 0) break;
      FileReport r;
      r.number = i + 1;
      r.count = static_cast<int>(project.Count());
      r.name = project.List(i);
      r.result = FileResult::Rejected;
      reports.push_back(r);
      current = &reports.back();
      break;
    }
    if (named || !current || line.empty()) continue;
    current->reason += (current->reason.empty() ? "" : "\n") + line;
  }
  return reports;
}
}  // namespace

int MergeShards(const fs::path& project_path, const MergeOptions& options) {
  std::error_code ec;
  const fs::path path = fs::absolute(project_path, ec);
  cBatchFile project(options.program_folder);
  if (!project.Load(path)) return 2;
  const fs::path output = ProjectOutput(project);
  const int files = static_cast<int>(project.Count());

  // How many shards: as given, else as the shards that started recorded it.
  int count = options.shards.value_or(0);
  if (count == 0) {
    for (auto it = fs::directory_iterator(output / kShardsFolder, ec); !ec && it != fs::directory_iterator();
         it.increment(ec))
      if (auto m = ReadMarker(it->path() / kStartedMarker)) count = std::max(count, m->shards);
  }
  if (count == 0) {
    Dialogs().Message("No shard of " + project.BatchName() + " has run under " +
                          (output / kShardsFolder).string() + ": nothing was merged.",
                      mb::OKOnly, kMergeTitle);
    return 1;
  }
  // Every shard must have ended, over the project's list as it stands now.
  std::vector<int> missing, incomplete;
  std::vector<cBatchFile> parts;
  for (int i = 1; i <= count; ++i) {
    const fs::path folder = ShardFolder(output, i);
    auto started = ReadMarker(folder / kStartedMarker);
    auto done = ReadMarker(folder / kDoneMarker);
    const auto [first, last] = ShardRange({i, count}, files);
    cBatchFile part(options.program_folder);
    if (!started) {
      missing.push_back(i);
      continue;
    }
    bool whole = done && done->shards == count && done->files == files && done->first == first &&
                 done->last == last && part.Load(folder / project.BatchName()) &&
                 static_cast<int>(part.Count()) == last - first;
    for (int k = first; whole && k < last; ++k) whole = part.List(k - first) == project.List(k);
    if (!whole) incomplete.push_back(i);
    parts.push_back(std::move(part));
  }
  if (!missing.empty() || !incomplete.empty()) {
    std::string text = "The " + std::to_string(count) + " shards of " + project.BatchName() +
                       " cannot be merged:";
    if (!missing.empty())
      text += " shard" + std::string(missing.size() > 1 ? "s " : " ") + NumberList(missing) + " never ran;";
    if (!incomplete.empty())
      text += " shard" + std::string(incomplete.size() > 1 ? "s " : " ") + NumberList(incomplete) +
              " did not finish (or ran over another list);";
    std::vector<int> again = missing;
    again.insert(again.end(), incomplete.begin(), incomplete.end());
    std::sort(again.begin(), again.end());
    std::string runs;
    for (int i : again)
      runs += (runs.empty() ? "--shard " : ", --shard ") + std::to_string(i) + "/" + std::to_string(count);
    text += " run again with " + runs + ". Nothing was merged.";
    Dialogs().Message(text, mb::OKOnly, kMergeTitle);
    return 1;
  }

  // OUTPUT emptied of an earlier run's files, as a run does at its start; then each
  // shard's per-series outputs moved in.
  for (auto it = fs::directory_iterator(output, ec); !ec && it != fs::directory_iterator(); it.increment(ec))
    if (it->is_regular_file()) fs::remove(it->path(), ec);
  const std::string stem = ProjectStem(project.BatchName());
  const std::string combined = CombinedForecastName(project.BatchName());
  auto run_wide = [&](const std::string& name) {
    if (platform::EqualsNoCase(name, combined)) return true;
    for (const SummaryRow& row : kSummaryRows)
      if (platform::EqualsNoCase(name, stem + row.suffix)) return true;
    return false;
  };
  std::vector<fs::path> shard_outputs;
  for (int i = 1; i <= count; ++i) {
    const fs::path out = ShardFolder(output, i) / "OUTPUT";
    shard_outputs.push_back(out);
    for (auto it = fs::directory_iterator(out, ec); !ec && it != fs::directory_iterator(); it.increment(ec)) {
      const std::string name = it->path().filename().string();
      // A file that cannot be moved stays in its shard's folder.
      if (it->is_regular_file() && !run_wide(name)) (void)MoveFileOver(it->path(), output / name);
    }
  }
  // The run-wide files in project order.
  JoinRunWideFile(shard_outputs, combined, Growth::WholeFiles, output / combined);
  for (const SummaryRow& row : kSummaryRows)
    JoinRunWideFile(shard_outputs, stem + row.suffix,
                    platform::EqualsNoCase(row.engine_file, "SUMMAPE.TXT") ? Growth::AccuracySummary
                                                                           : Growth::RowsUnderHeading,
                    output / (stem + row.suffix));

  // The statuses into the project, saved where it was read.
  bool started_not_finished = false;
  for (int i = 1; i <= count; ++i) {
    const cBatchFile& part = parts[i - 1];
    const int first = ShardRange({i, count}, files).first;
    for (int k = 0; k < static_cast<int>(part.Count()); ++k) {
      project.SetCompleted(first + k, part.Completed(k));
      project.SetError(first + k, part.Error(k));
      project.SetRunDate(first + k, part.RunDate(k));
      if (part.Completed(k) == -1) started_not_finished = true;
    }
  }
  project.SetAllComplete(started_not_finished ? -1 : 1);
  if (!project.Build(path)) {
    Dialogs().Message("The project could not be saved to " + path.string() + ".", mb::OKOnly, kMergeTitle);
    return 1;
  }
  // The error logs, one after the other, where a run leaves its log.
  std::string log;
  for (int i = 1; i <= count; ++i)
    log += platform::ReadWholeFile(ShardFolder(output, i) / dataset::kProcessErrorsFileName).value_or("");
  const fs::path log_file = options.program_folder / dataset::kProcessErrorsFileName;
  while (platform::RemoveNoCase(options.program_folder, dataset::kProcessErrorsFileName)) {
  }
  // The datasets' statuses in the project say what the log would.
  if (!log.empty()) (void)platform::WriteWholeFile(log_file, log);

  // The overview gives each rejected dataset's reason, as a run of the whole project does.
  if (options.reports) options.reports->FilesDone(RejectedFromLog(project, log));
  if (options.reports) options.reports->WriteLinkTree(project, output);
  // Without the owner file the folder is still known by the project's menu page.
  (void)WriteOutputOwner(output, path);
  fs::remove_all(output / kShardsFolder, ec);
  Dialogs().Message("The " + std::to_string(count) + " shards of " + project.BatchName() +
                        " are merged into " + output.string() + ".",
                    mb::OKOnly, kMergeTitle);
  if (!log.empty())
    Dialogs().Message(std::string(texts::kReasons1) + "\r\n\r\n" + log + "\r\n" + texts::kReasons2,
                      mb::OKOnly, texts::kFyi);
  return 0;
}

int RunJobs(const fs::path& project, int jobs, const fs::path& tsly, const std::vector<std::string>& extra_args,
            const MergeOptions& merge, int part_size) {
  // A Ctrl-C reaches the children, which cancel their own engines; this process stays to
  // tell that the shards did not finish.
  UnattendedProgressWait::CatchInterrupts();
  while (platform::RemoveNoCase(merge.program_folder, kKillFile)) {
  }
  std::error_code ec;
  cBatchFile whole(merge.program_folder);
  if (!whole.Load(fs::absolute(project, ec))) return 2;
  const int files = static_cast<int>(whole.Count());
  const int size = std::max(1, part_size);
  const int shards = std::max(jobs, (files + size - 1) / size);

  // The jobs work under this process's lock on the working folder.
  ::setenv(platform::kJobsParentVariable, std::to_string(::getpid()).c_str(), 1);
  // The jobs' statuses add up as one run's would: all forecast, some, or none at all. A job
  // whose datasets were all rejected says 2 for its part, not for the project.
  bool some_forecast = false, some_short = false;
  int running = 0, next = 1;
  auto canceled = [&] {
    return UnattendedProgressWait::Interrupted() || platform::ExistsNoCase(merge.program_folder, kKillFile);
  };
  while (next <= shards || running > 0) {
    if (running < jobs && next <= shards && !canceled()) {
      std::vector<std::string> words = {tsly.string(), "run", project.string(), "--shard",
                                        std::to_string(next) + "/" + std::to_string(shards)};
      words.insert(words.end(), extra_args.begin(), extra_args.end());
      std::vector<char*> argv;
      for (std::string& w : words) argv.push_back(w.data());
      argv.push_back(nullptr);
      pid_t pid = 0;
      if (posix_spawn(&pid, tsly.c_str(), nullptr, nullptr, argv.data(), environ) != 0) {
        Dialogs().Message("The job for shard " + std::to_string(next) + " could not be started: " + tsly.string(),
                          mb::OKOnly, texts::kAppTitle);
        some_short = true;
      } else {
        ++running;
      }
      ++next;
      continue;
    }
    if (running == 0) break;  // cancelled before every shard was started
    int status = 0;
    pid_t ended = ::waitpid(-1, &status, 0);
    if (ended < 0) {
      if (errno == EINTR) continue;
      break;
    }
    --running;
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 2;
    if (code == 0 || code == 1) some_forecast = true;
    if (code != 0) some_short = true;
  }
  while (platform::RemoveNoCase(merge.program_folder, kKillFile)) {
  }
  MergeOptions all = merge;
  all.shards = shards;
  int merged = MergeShards(project, all);
  if (merged != 0) return merged;
  return !some_forecast ? 2 : some_short ? 1 : 0;
}

}  // namespace tessaly::batch
