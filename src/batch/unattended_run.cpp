#include "batch/unattended_run.h"

#include "batch/engine/engine_client.h"
#include "batch/engine/unattended_wait.h"
#include "platform/dialogs.h"
#include "platform/paths.h"
#include "platform/progress_wait.h"

namespace tessaly::batch {

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
  if (!project->Load(path)) return 1;

  // Nothing has touched NOTREND.QVX since start-up in a command-line run: its presence now
  // is its presence at start.
  bool no_trend_at_start = options.no_trend_at_start || platform::ExistsNoCase(program, "NOTREND.QVX");
  ReportTree tree;
  RunOptions run_options{program, options.no_graphs, no_trend_at_start};
  run_options.engine_folder = engine_folder;
  run_options.output_path = options.output_path;
  run_options.series_timeout = options.series_timeout;
  BatchRun run(run_options, tree);
  if (options.reports) run.SetReports(options.reports);
  if (options.rules) run.SetRulesWizard(options.rules);
  bool engine_started = true;
  run.SetEngineCreate([&](int& number, std::string& description) {
    std::shared_ptr<EngineClient> engine;
    CreateObjectError error;
    if (fCreateObject(kEngineProgID, engine, engine_folder, {}, &error)) {
      MyEngine() = engine;
      return true;
    }
    number = error.number;
    description = error.description;
    engine_started = false;
    return false;
  });
  RunState().UnivariateRun = RunState().CausalRun = false;
  if (!options.run_kind_from.empty()) {
    cBatchFile whole(program);
    if (!whole.Load(options.run_kind_from)) return 1;
    run.PrepareRunKind(whole);
  }
  bool ran = run.mnuBatchRun(project, path);
  if (!engine_started) return 2;
  // Results that could not be written or a project that could not be saved fail the run.
  if (ran && (run.SaveFailed() || run.WriteFailures() > 0)) return 1;
  return ran ? 0 : 1;
}

}  // namespace tessaly::batch
