#include "app/desktop_pool.h"

#include <QAction>
#include <QMenu>

#include "app/desktop_session.h"
#include "batch/engine/engine_client.h"
#include "report/run_reports_binding.h"
#include "aggregate/forms/frm_agg_select.h"
#include "pool/forms/frm_load_group_data.h"
#include "pool/pool_selection.h"
#include "pool/pool_rules.h"
#include "pool/pool_run.h"
#include "rules/forms/frm_wizard1.h"
#include "shell/preferences.h"
#include "shell/startup.h"

namespace tessaly::app {

namespace {

class PoolView : public batch::RunView {
 public:
  explicit PoolView(DesktopSession& session) : s_(session) {}
  void SetStatus(const std::string& text) override {
    s_.SetStatus(text);
    s_.SyncTree();
  }
  void ShowReportTree(bool visible) override { s_.ShowReportTree(visible); }
  void SetRunMenusEnabled(bool enabled, bool) override { s_.SetRunMenusEnabled(enabled); }

 private:
  DesktopSession& s_;
};

}  // namespace

void RunPoolFlow(DesktopSession& session, QWidget* window, const std::filesystem::path& program) {
  batch::cBatchFile* project = session.Session().ctrlBatch.get();
  if (!project) return;
  const bool no_trend = shell::Shell().NoTrendAtStart;
  pool::PoolRun run(pool::PoolOptions{program, shell::Prefs().NOGRAPHS != 0, no_trend}, session.Session().trvMenu);
  run.SetView(std::make_shared<PoolView>(session));
  run.SetReports(std::make_shared<batch::ProgramRunReports>(program));
  auto ask_groups = [window](long observations) -> std::optional<int> {
    pool::frmLoadGroupData dialog(window, observations);
    if (dialog.exec() != QDialog::Accepted) return std::nullopt;
    return dialog.Groups();
  };
  run.SetRulesWizard(std::make_shared<pool::PoolRulesWizard>(
      program, std::make_shared<rules::DesktopWizardUi>(window), no_trend, ask_groups));
  if (!run.Open(*project)) return;
  std::vector<std::string> files;
  for (int i = 0; i < static_cast<int>(project->Count()); ++i) files.push_back(project->List(i));
  // Finish's tests: a count out of range keeps the dialog open, a refused file closes it.
  std::vector<std::string> chosen;
  aggregate::frmAggSelect* dialog = nullptr;
  auto finish = [&](const std::vector<std::string>& names) {
    const pool::SelectionVerdict verdict = pool::ValidatePoolSelection(
        names, project->InDirectory(), [&session](const std::string& text) { session.SetStatus(text); });
    if (verdict == pool::SelectionVerdict::Refused) dialog->reject();
    if (verdict != pool::SelectionVerdict::Passed) return false;
    chosen = names;
    return true;
  };
  aggregate::frmAggSelect select(aggregate::SelectionFlow::Pooling, files, finish, window);
  dialog = &select;
  if (select.exec() != QDialog::Accepted) {
    if (!session.Session().trvMenu.Empty()) session.ShowReportTree(true);
    return;
  }
  (void)run.Run(*project, chosen);  // the run tells the person as it goes; the tree shows the rest
  session.Session().OutputPath = run.OutputPath();
  session.SyncTree();
  session.ShowReportTree(true);
}

}  // namespace tessaly::app
