// tsly run: a project through the engine with no window, as `tessaly PROJECT.xml` runs it;
// with --shard one part of it, with --jobs K parts at once on this machine and their merge.
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <ostream>

#include "app/tsly.h"
#include "app/unattended.h"
#include "batch/engine/unattended_wait.h"
#include "report/run_reports_binding.h"
#include "batch/shards.h"
#include "batch/unattended_run.h"
#include "platform/paths.h"
#include "platform/working_folder.h"
#include "shell/command_line.h"

namespace tessaly::app::tsly {

namespace {

struct RunChoice {
  int jobs = 1;
  // --jobs given, even 1: the run goes in parts of bounded size (one engine at a time with 1),
  // which keeps filing a large project's outputs from growing with its square; a plain run is
  // the one serial pass over the list.
  bool jobs_given = false;
  int part_size = batch::kDefaultPartSize;
  std::optional<batch::ShardSpec> shard;
  bool no_graphs = false;
  std::chrono::seconds series_timeout{0};
};

class ProjectRunner : public shell::CommandLineRunner {
 public:
  explicit ProjectRunner(RunChoice choice) : choice_(choice) {}
  int RunProject(const std::filesystem::path& project) override {
    const std::filesystem::path program = platform::ProgramFolder();
    auto reports = std::make_shared<batch::ProgramRunReports>(program);
    if (choice_.shard) {
      batch::ShardRunOptions options{program, choice_.no_graphs, choice_.series_timeout, reports, {}};
      return batch::RunShard(project, *choice_.shard, options);
    }
    if (choice_.jobs_given) {
      std::vector<std::string> extra;
      if (choice_.no_graphs) extra.push_back("--no-graphs");
      if (choice_.series_timeout.count() > 0)
        extra.insert(extra.end(), {"--series-timeout", std::to_string(choice_.series_timeout.count())});
      batch::MergeOptions merge{program, std::nullopt, reports};
      return batch::RunJobs(project, choice_.jobs, platform::ShippedFile(program, "tsly"), extra, merge, choice_.part_size);
    }
    batch::UnattendedRunOptions options;
    options.program_folder = program;
    options.reports = reports;
    options.no_graphs = choice_.no_graphs;
    options.series_timeout = choice_.series_timeout;
    return batch::RunProjectUnattended(project, options);
  }

 private:
  RunChoice choice_;
};

std::optional<int> PositiveNumber(const std::string& text) {
  char* end = nullptr;
  long value = std::strtol(text.c_str(), &end, 10);
  if (text.empty() || *end != '\0' || value < 1 || value > 100000) return std::nullopt;
  return static_cast<int>(value);
}

}  // namespace

int RunCommand(const Args& args, std::ostream& out, std::ostream& err) {
  RunChoice choice;
  std::string project_word, shard_word;
  std::optional<int> shards;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    auto value = [&]() -> std::optional<std::string> {
      if (i + 1 >= args.size()) return std::nullopt;
      return args[++i];
    };
    if (a == "--no-graphs") {
      choice.no_graphs = true;
    } else if (a == "--jobs" || a == "--shards" || a == "--series-timeout" || a == "--part-size") {
      auto v = value();
      auto n = v ? PositiveNumber(*v) : std::nullopt;
      if (!n) return UsageError("run", a + " takes a whole number of at least 1.", err);
      if (a == "--jobs") choice.jobs = *n, choice.jobs_given = true;
      if (a == "--shards") shards = *n;
      if (a == "--part-size") choice.part_size = *n;
      if (a == "--series-timeout") choice.series_timeout = std::chrono::seconds(*n);
    } else if (a == "--shard") {
      auto v = value();
      if (!v) return UsageError("run", "--shard takes I/N or auto.", err);
      shard_word = *v;
    } else if (a.rfind("--", 0) == 0) {
      return UsageError("run", "unknown option " + a + ".", err);
    } else if (project_word.empty()) {
      project_word = a;
    } else {
      return UsageError("run", "name one project file.", err);
    }
  }
  if (project_word.empty()) return UsageError("run", "name one project file.", err);
  std::filesystem::path project(project_word);
  std::string ext = platform::ToUpper(project.extension().string());
  if (ext != ".XML") return UsageError("run", "'" + project_word + "' is not a project (.xml).", err);
  if (!shard_word.empty()) {
    if (choice.jobs_given || choice.part_size != batch::kDefaultPartSize)
      return UsageError("run", "give --jobs (and --part-size) or --shard, not both.", err);
    std::string error;
    choice.shard = shard_word == "auto"
                       ? batch::ShardFromEnvironment(shards, error, [](const char* n) { return std::getenv(n); })
                       : batch::ParseShard(shard_word, error);
    if (!choice.shard) return UsageError("run", error, err);
  } else if (shards) {
    return UsageError("run", "--shards goes with --shard auto.", err);
  }
  // Ctrl-C and SIGTERM (Slurm's scancel, Kubernetes' pod stop) cancel the engine call under
  // way as the Cancel button does: the run ends in order and only its own engines are ended.
  batch::UnattendedProgressWait::CatchInterrupts();
  std::error_code ec;
  std::filesystem::path current = std::filesystem::current_path(ec);
  shell::CommandLine line{{std::filesystem::absolute(project, ec).string()}};
  ProjectRunner runner(choice);
  return RunUnattended(line, platform::ProgramFolder(), current, runner);
}

}  // namespace tessaly::app::tsly
