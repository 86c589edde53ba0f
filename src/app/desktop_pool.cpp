#include "app/desktop_pool.h"

#include <QAction>
#include <QMenu>

#include "app/desktop_session.h"
#include "batch/engine/engine_client.h"
#include "batch/run_reports_binding.h"
#include "pool/forms/frm_pool_select.h"
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
  pool::frmPoolSelect select(window, files, project->InDirectory());
  select.SetStatus([&session](const std::string& text) { session.SetStatus(text); });
  if (select.exec() != QDialog::Accepted) {
    if (!session.Session().trvMenu.Empty()) session.ShowReportTree(true);
    return;
  }
  run.Run(*project, select.Chosen());
  session.Session().OutputPath = run.OutputPath();
  session.SyncTree();
  session.ShowReportTree(true);
}

}  // namespace tessaly::app
