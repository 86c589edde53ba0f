#include "batch/unattended_run.h"

#include <algorithm>
#include <cstdlib>

#include <iostream>

#include "batch/engine/engine_client.h"
#include "batch/engine/unattended_wait.h"
#include "platform/dialogs.h"
#include "platform/paths.h"
#include "platform/process.h"
#include "platform/progress_wait.h"

namespace tessaly::batch {

namespace {

// Each dataset's line as soon as its outcome is known, with its place in the whole project.
// The line and its reason go out in one piece: parallel jobs share the standard output, and
// one write of a few hundred bytes is never split by another's.
class LineView : public RunView {
 public:
  LineView(std::ostream& out, int first_number, int whole_count)
      : out_(out), offset_(first_number - 1), whole_count_(whole_count) {}
  void FileDone(const FileReport& report) override {
    std::cerr << std::flush;
    FileReport placed = report;
    placed.number += offset_;
    if (whole_count_ > 0) placed.count = whole_count_;
    out_ << DatasetLine(placed) + "\n" << std::flush;
  }

 private:
  std::ostream& out_;
  int offset_, whole_count_;
};

}  // namespace

std::string DatasetLine(const FileReport& r) {
  std::string line = std::to_string(r.number) + "/" + std::to_string(r.count) + " " + r.name + ": ";
  switch (r.result) {
    case FileResult::Forecast: return line + "forecast";
    case FileResult::Canceled: return line + "canceled";
    case FileResult::Rejected: line += "rejected"; break;
    case FileResult::Failed:
      line += "failed";
      if (r.error_code > 0) line += " (engine error " + std::to_string(r.error_code) + ")";
      break;
  }
  if (r.reason.empty()) return line;
  line += ":";
  // The reason's lines, blank ones left out, the first beside the outcome.
  bool first = true;
  size_t start = 0;
  while (start <= r.reason.size()) {
    size_t end = r.reason.find_first_of("\r\n", start);
    if (end == std::string::npos) end = r.reason.size();
    std::string part = r.reason.substr(start, end - start);
    if (part.find_first_not_of(" \t") != std::string::npos) {
      line += (first ? " " : "\n    ") + part;
      first = false;
    }
    start = end + 1;
  }
  return line;
}

std::string TallyLine(const std::string& project_name, const std::vector<FileReport>& reports, int total) {
  int counts[4] = {0, 0, 0, 0};
  for (const FileReport& r : reports) ++counts[static_cast<int>(r.result)];
  std::string line = project_name + ": " + std::to_string(counts[0]) + " forecast, " +
                     std::to_string(counts[1]) + " rejected, " + std::to_string(counts[2]) + " failed";
  if (counts[3]) line += ", " + std::to_string(counts[3]) + " canceled";
  int not_reached = total - static_cast<int>(reports.size());
  if (not_reached > 0) line += ", " + std::to_string(not_reached) + " not run";
  return line + " (" + std::to_string(total) + (total == 1 ? " dataset)" : " datasets)");
}

int RunExitStatus(const std::vector<FileReport>& reports, int total) {
  int forecast = 0;
  for (const FileReport& r : reports) forecast += r.result == FileResult::Forecast;
  if (forecast == 0) return kRunNothing;
  return forecast == total ? kRunAllForecast : kRunInPart;
}

int RunProjectUnattended(const fs::path& project_path, const UnattendedRunOptions& options) {
  if (options.install_unattended_hosts) {
    // A host the start-up installed (with its echo to the log) is kept.
    if (!platform::Dialogs().Unattended())
      platform::SetDialogHost(std::make_shared<platform::StderrDialogHost>());
    auto wait = std::make_shared<UnattendedProgressWait>();
    wait->SetPrefix(options.progress_prefix);
    if (!options.working_folder.empty()) wait->SetCancelFolder(options.program_folder);
    platform::SetProgressWait(wait);
  }
  const fs::path engine_folder =
      options.program_folder.empty() ? platform::ProgramFolder() : options.program_folder;
  // Everything the run keeps in "the program's folder" goes to the private folder when given.
  const fs::path program = options.working_folder.empty() ? engine_folder : options.working_folder;
  std::error_code ec;
  fs::path path = fs::absolute(project_path, ec);
  auto project = std::make_unique<cBatchFile>(program);
  std::ostream& out = options.out ? *options.out : std::cout;
  if (!project->Load(path)) {
    out << path.filename().string() << ": not run, the project could not be read" << std::endl;
    return kRunNothing;
  }

  // Nothing has touched NOTREND.QVX since start-up in a command-line run: its presence now
  // is its presence at start.
  bool no_trend_at_start = options.no_trend_at_start || platform::ExistsNoCase(program, "NOTREND.QVX");
  ReportTree tree;
  RunOptions run_options{program, options.no_graphs, no_trend_at_start};
  run_options.engine_folder = engine_folder;
  run_options.output_path = options.output_path;
  run_options.series_timeout = options.series_timeout;
  run_options.large_dataset_timeout = options.large_dataset_timeout;
  BatchRun run(run_options, tree);
  if (options.reports) run.SetReports(options.reports);
  if (options.rules) run.SetRulesWizard(options.rules);
  run.SetView(std::make_shared<LineView>(out, options.first_number, options.whole_count));
  bool engine_started = true;
  run.SetEngineCreate([&](int& number, std::string& description) {
    std::shared_ptr<EngineClient> engine;
    CreateObjectError error;
    // The run's engine until the first call makes its own.
    if (fCreateObject(kEngineProgID, engine, engine_folder, {}, &error)) {
      run.Session().engine.engine = engine;
      return true;
    }
    number = error.number;
    description = error.description;
    engine_started = false;
    return false;
  });
  if (!options.run_kind_from.empty()) {
    cBatchFile whole(program);
    if (!whole.Load(options.run_kind_from)) return 1;
    run.PrepareRunKind(whole);
  }
  bool ran = run.mnuBatchRun(project, path);
  const int total = static_cast<int>(project->Count());
  std::cerr << std::flush;
  if (!engine_started || !ran) {
    out << path.filename().string() << ": not run" << (engine_started ? "" : ", the engine could not be started")
        << std::endl;
    return kRunNothing;
  }
  if (options.ended) *options.ended = !run.Session().engine.canceled;
  // A shard's tally is its part's, and says so; the reports of a parallel run's job are
  // merged away from its folder, so the parent's merge names where they are.
  const bool part = options.whole_count > 0;
  out << (part ? options.progress_prefix : "") + TallyLine(path.filename().string(), run.FileReports(), total) + "\n"
      << std::flush;
  const bool merged_away = part && std::getenv(platform::kJobsParentVariable);
  if (auto overview = platform::FindNoCase(run.OutputPath(), "display.html"); overview && !merged_away)
    out << "Overview: " << overview->string() << std::endl;
  else if (!merged_away)
    out << "Reports: " << platform::WithTrailingSlash(run.OutputPath().string()) << std::endl;
  const int status = RunExitStatus(run.FileReports(), total);
  // Results that could not be written or a project that could not be saved fail the run.
  if (run.SaveFailed() || run.WriteFailures() > 0) return std::max(status, kRunInPart);
  return status;
}

}  // namespace tessaly::batch
