#pragma once
// The desktop's side of the open project: the File and Batch commands wired to the batch
// flows, the run with the rules wizard and the progress window, and the report pane whose
// tree clicks go through the report subsystem's routing. It binds; the flows decide.
#include <QObject>
#include <filesystem>
#include <memory>
#include <string>

#include "batch/project_commands.h"

class QAction;
class QMenu;

namespace tessaly::shell {
class frmMain;
}
namespace tessaly::report {
class SeriesOverviewTable;
}

namespace tessaly::app {

namespace fs = std::filesystem;
class ReportPane;

class DesktopSession : public QObject {
  Q_OBJECT
 public:
  DesktopSession(shell::frmMain& form, fs::path program_folder);
  ~DesktopSession() override;

  // ---- Commands ----------------------------------------------------------------------
  void mnuFileNew_Click();
  void mnuFileOpen_Click();
  [[nodiscard]] bool OpenProject(const fs::path& path);
  void mnuFileClose_Click();
  void mnuBatchRun_Click();
  void mnuFileExportForecasts_Click();
  void mnuBatchEdit_Click();
  void mnuBatchPrevReports_Click();
  void Mnu_Pool_Click();
  void mnu_Agg_Click();
  // A click (or Enter) on a tree node, by its key.
  void trvMenu_NodeClick(const std::string& key);

  batch::ProjectSession& Session() { return session_; }
  ReportPane* Pane() const { return pane_; }
  report::SeriesOverviewTable* Overview() const { return overview_; }
  // The overview table read again from the project's outputs.
  void RefreshOverview();
  // A dataset chosen in the overview: its node opened in the tree, its report in the viewer.
  void OpenSeries(const std::string& asc_file);
  bool Running() const { return running_; }

  QMenu* mnuBatch = nullptr;
  QAction* mnuFileNew = nullptr;
  QAction* mnuFileOpen = nullptr;
  QAction* mnuFileClose = nullptr;
  QAction* mnuBatchRun = nullptr;
  QAction* mnuBatchEdit = nullptr;
  QAction* mnuBatchPrevReports = nullptr;
  QAction* Mnu_Pool = nullptr;
  QAction* mnu_Agg = nullptr;

  // Keeps the run's menus, status and tree in step (used by the run's view).
  void SetRunMenusEnabled(bool enabled);
  void ShowReportTree(bool visible);
  void SetStatus(const std::string& text);
  void SyncTree();
  void CloseMainForm();

 private:
  void BuildMenus();
  void UpdateCommands();
  void AfterProjectChange();
  void PopulateTree();
  void AddRecent(const fs::path& path);

  shell::frmMain& form_;
  fs::path program_;
  batch::ProjectSession session_;
  std::unique_ptr<batch::ProjectForms> forms_;
  std::unique_ptr<batch::ProjectCommands> commands_;
  ReportPane* pane_ = nullptr;
  report::SeriesOverviewTable* overview_ = nullptr;
  QWidget* reports_ = nullptr;  // the overview above the tree and viewer
  QWidget* welcome_ = nullptr;
  bool running_ = false;
  bool tree_shown_ = false;
};

}  // namespace tessaly::app
