#include "app/desktop_session.h"

#include "platform/dialogs.h"
#include "spreadsheet/forecast_export.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QSettings>
#include <QSplitter>
#include <QTimer>
#include <QSignalBlocker>
#include <QMenuBar>
#include <QLabel>
#include <QStackedWidget>
#include <QTextBrowser>
#include <QTreeWidget>

#include "app/desktop_pool.h"
#include "aggregate/forms/aggregation_desktop.h"
#include "app/report_pane.h"
#include "batch/engine/engine_client.h"
#include "batch/forms/frm_project_forms.h"
#include "batch/run.h"
#include "genseries/forms/frm_adjust.h"
#include "report/run_reports_binding.h"
#include "spreadsheet/forms/frm_cmd_line.h"
#include "spreadsheet/forms/frm_wizard_bp.h"
#include "batch/run_rules_binding.h"
#include "platform/paths.h"
#include "report/forms/frm_allgraphs_sel.h"
#include "report/forms/series_overview_table.h"
#include "report/series_overview.h"
#include "batch/run_outputs.h"
#include "report/report_tree_logic.h"
#include "rules/forms/frm_wizard1.h"
#include "shell/error_context.h"
#include "shell/forms/frm_main.h"
#include "shell/mru.h"
#include "shell/preferences.h"
#include "shell/settings.h"
#include "shell/startup.h"

namespace tessaly::app {

namespace {
// The main form as a run changes it.
class MainFormRunView : public batch::RunView {
 public:
  explicit MainFormRunView(DesktopSession& session) : s_(session) {}
  void SetStatus(const std::string& text) override {
    s_.SetStatus(text);
    // The tree grows as each dataset is filed.
    s_.SyncTree();
    // The window is drawn again where the wizard and the progress window stood, while the
    // run goes on without waiting for events; input waits for the end of the run.
    QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
  }
  void ShowReportTree(bool visible) override { s_.ShowReportTree(visible); }
  void SetRunMenusEnabled(bool enabled, bool) override { s_.SetRunMenusEnabled(enabled); }
  void HidePreviousReports() override { s_.mnuBatchPrevReports->setVisible(false); }
  // A run that raised the general cancel closes the program.
  void UnloadMainForm() override { s_.CloseMainForm(); }

 private:
  DesktopSession& s_;
};

// The viewer of a tree click. The step dialog of the "All" walks stands in the viewer's top
// right corner, clear of the picture, and where the person moved it stays for the next stop.
class PaneReportViewer : public report::ReportViewer {
 public:
  PaneReportViewer(QWidget* window, ReportPane* pane) : window_(window), pane_(pane) {}
  void navigate(const fs::path& file) override {
    pane_->navigate(file);
    // In a walk the file's name comes with its dataset and place: "ELNINO (2 of 4): ...".
    if (!walk_position_.isEmpty()) pane_->lblFile->setText(walk_position_ + ": " + pane_->lblFile->text());
    QApplication::processEvents();
  }
  void ShowWalkPosition(const std::string& dataset, int number, int count) override {
    walk_position_ = QString("%1 (%2 of %3)").arg(QString::fromStdString(dataset)).arg(number).arg(count);
  }
  report::StepChoice ShowStepDialog(const std::string& title, bool left, bool right) override {
    report::frmAllgraphsSel dialog(window_);
    dialog.adjustSize();
    if (!placed_) {
      QWidget* viewer = pane_->brsReport;
      QPoint corner = viewer->mapToGlobal(QPoint(viewer->width() - dialog.width() - 24, 12));
      position_ = corner;
      placed_ = true;
    }
    dialog.move(position_);
    report::StepChoice choice = dialog.Ask(QString::fromStdString(title), left, right);
    position_ = dialog.pos();
    return choice;
  }

 private:
  QWidget* window_;
  ReportPane* pane_;
  bool placed_ = false;
  QPoint position_;
  QString walk_position_;
};
}  // namespace

DesktopSession::DesktopSession(shell::frmMain& form, fs::path program_folder)
    : QObject(&form), form_(form), program_(std::move(program_folder)) {
  session_.program_folder = program_;
  forms_ = std::make_unique<batch::DesktopProjectForms>(&form_);
  batch::ProjectHooks hooks;
  hooks.add_recent = [this](const fs::path& p) { AddRecent(p); };
  hooks.populate_tree = [this](batch::ProjectSession&) { PopulateTree(); };
  hooks.show_tree = [this](bool visible) { ShowReportTree(visible); };
  // The output folder is chosen on the page before, so the project only needs a name.
  hooks.name_form_instead_of_dialog = true;
  commands_ = std::make_unique<batch::ProjectCommands>(session_, *forms_, std::move(hooks));

  // The central pane: the welcome page until a project shows its reports.
  auto* stack = new QStackedWidget(&form_);
  stack->setObjectName("stkCentral");
  welcome_ = form_.takeCentralWidget();
  if (!welcome_) welcome_ = new QLabel("Tessaly", stack);
  stack->addWidget(welcome_);
  // The overview of every series above the report tree and viewer.
  auto* reports = new QSplitter(Qt::Vertical, stack);
  reports->setObjectName("splOverview");
  reports->setChildrenCollapsible(false);
  overview_ = new report::SeriesOverviewTable(reports);
  pane_ = new ReportPane(reports);
  pane_->LoadIcons(program_ / "gifs");
  reports->setStretchFactor(0, 1);
  reports->setStretchFactor(1, 3);
  reports_ = reports;
  stack->addWidget(reports);
  connect(overview_, &report::SeriesOverviewTable::SeriesOpened, this,
          [this](const QString& asc) { OpenSeries(asc.toStdString()); });
  form_.setCentralWidget(stack);
  connect(pane_, &ReportPane::NodeActivated, this,
          [this](const QString& key) { trvMenu_NodeClick(key.toStdString()); });
  // Moving through the tree with the keys shows each single report or graph as it is
  // reached; the walks of the "All" rows wait for Enter.
  connect(pane_, &ReportPane::NodeCurrent, this, [this](const QString& key) {
    const batch::ReportNode* node = session_.trvMenu.Find(key.toStdString());
    if (!node || node->kind == batch::NodeKind::AllReports || node->kind == batch::NodeKind::AllGraphs) return;
    trvMenu_NodeClick(node->key);
  });

  QSettings settings(QSettings::IniFormat, QSettings::UserScope, "tessaly", "window");
  pane_->splitter->restoreState(settings.value("frmMain/splitter").toByteArray());

  BuildMenus();
  // Opening tells the person what went wrong itself.
  shell::frmMain::RecentFileOpener() = [this](const std::string& path) { (void)OpenProject(path); };
  UpdateCommands();
}

DesktopSession::~DesktopSession() {
  QSettings settings(QSettings::IniFormat, QSettings::UserScope, "tessaly", "window");
  settings.setValue("frmMain/splitter", pane_->splitter->saveState());
  shell::frmMain::RecentFileOpener() = nullptr;
}

void DesktopSession::BuildMenus() {
  QMenu* file = form_.mnuFile;
  QAction* first = file->actions().isEmpty() ? nullptr : file->actions().first();
  mnuFileNew = new QAction("&New Project...", file);
  mnuFileNew->setObjectName("mnuFileNew");
  mnuFileNew->setShortcut(QKeySequence::New);
  mnuFileOpen = new QAction("&Open Project...", file);
  mnuFileOpen->setObjectName("mnuFileOpen");
  mnuFileOpen->setShortcut(QKeySequence::Open);
  mnuFileClose = new QAction("&Close", file);
  mnuFileClose->setObjectName("mnuFileClose");
  mnuFileClose->setShortcut(QKeySequence("Ctrl+W"));
  file->insertAction(first, mnuFileNew);
  file->insertAction(first, mnuFileOpen);
  file->insertAction(first, mnuFileClose);
  file->insertSeparator(first);
  // Spreadsheets: the Import Wizard and the workbook runner's window.
  auto* mnu_file_import = new QAction("&Import...", file);
  mnu_file_import->setObjectName("mnu_file_import");
  auto* mnuFileRunExcel = new QAction("Run &Excel File...", file);
  mnuFileRunExcel->setObjectName("mnuFileRunExcel");
  file->insertAction(first, mnu_file_import);
  file->insertAction(first, mnuFileRunExcel);
  auto* mnuFileExportForecasts = new QAction("Export &Forecasts...", file);
  mnuFileExportForecasts->setObjectName("mnuFileExportForecasts");
  file->insertAction(first, mnuFileExportForecasts);
  connect(mnuFileExportForecasts, &QAction::triggered, this, &DesktopSession::mnuFileExportForecasts_Click);
  file->insertSeparator(first);
  connect(mnu_file_import, &QAction::triggered, this, [this] { spreadsheet::ShowImportWizard(&form_); });
  connect(mnuFileRunExcel, &QAction::triggered, this, [this] {
    spreadsheet::ShowCmdLineRunner(&form_, program_, [this](const report::GraphPreferences& graphs) {
      return std::make_shared<batch::ProgramRunReports>(program_, graphs);
    });
  });
  connect(mnuFileNew, &QAction::triggered, this, &DesktopSession::mnuFileNew_Click);
  connect(mnuFileOpen, &QAction::triggered, this, &DesktopSession::mnuFileOpen_Click);
  connect(mnuFileClose, &QAction::triggered, this, &DesktopSession::mnuFileClose_Click);

  mnuBatch = new QMenu("&Batch", &form_);
  mnuBatch->setObjectName("mnuBatch");
  form_.menuBar()->insertMenu(form_.mnuPrefs->menuAction(), mnuBatch);
  mnuBatchRun = mnuBatch->addAction("&Run Project", this, &DesktopSession::mnuBatchRun_Click);
  mnuBatchRun->setObjectName("mnuBatchRun");
  mnuBatchRun->setShortcut(QKeySequence("F5"));
  mnuBatchEdit = mnuBatch->addAction("&Edit Series in Project...", this, &DesktopSession::mnuBatchEdit_Click);
  mnuBatchEdit->setObjectName("mnuBatchEdit");
  mnuBatchPrevReports =
      mnuBatch->addAction("&Previous Reports", this, &DesktopSession::mnuBatchPrevReports_Click);
  mnuBatchPrevReports->setObjectName("mnuBatchPrevReports");
  Mnu_Pool = mnuBatch->addAction("&Pool Series...", this, &DesktopSession::Mnu_Pool_Click);
  Mnu_Pool->setObjectName("Mnu_Pool");
  mnu_Agg = mnuBatch->addAction("&Aggregation...", this, &DesktopSession::mnu_Agg_Click);
  mnu_Agg->setObjectName("mnu_Agg");
  mnuBatch->addSeparator();
  mnuBatch->addAction("Add &Generated Series...", this, [this] {
    shell::EnterMenuCommand("frmMain", "mnu_Select_Generated_Series");
    if (session_.ctrlBatch) genseries::mnu_Select_Generated_Series(&form_, *session_.ctrlBatch, session_.project_path, program_);
  })->setObjectName("mnu_Select_Generated_Series");
  mnuBatch->addAction("A&djust ASC Files...", this, [this] {
    shell::EnterMenuCommand("frmMain", "mnu_Adjust_ASCfiles");
    if (session_.ctrlBatch)
      genseries::mnu_Adjust_ASCfiles(&form_, *session_.ctrlBatch, genseries::VariablesFileOf(*session_.ctrlBatch, session_.project_path), {}, program_);
  })->setObjectName("mnu_Adjust_ASCfiles");
}

void DesktopSession::UpdateCommands() {
  bool open = session_.ctrlBatch != nullptr;
  mnuFileClose->setEnabled(open && !running_);
  mnuBatchEdit->setEnabled(open && !running_);
  mnuBatchPrevReports->setEnabled(open && !running_);
  for (QAction* a : mnuBatch->actions())
    if (a->objectName().startsWith("mnu_")) a->setEnabled(open && !running_);
  QString title = "Tessaly";
  if (open) title += " - " + QString::fromStdString(session_.ctrlBatch->BatchName());
  form_.setWindowTitle(title);
}

void DesktopSession::SetStatus(const std::string& text) {
  session_.lblStatus = text;
  form_.lblStatus->setText(QString::fromStdString(text));
  form_.lblStatus->repaint();
}

void DesktopSession::CloseMainForm() {
  QTimer::singleShot(0, &form_, [this] { form_.mnuFileExit_Click(); });
}

void DesktopSession::SyncTree() { pane_->SyncTree(session_.trvMenu); }

void DesktopSession::ShowReportTree(bool visible) {
  tree_shown_ = visible;
  auto* stack = static_cast<QStackedWidget*>(form_.centralWidget());
  if (visible) SyncTree();
  if (visible) RefreshOverview();
  stack->setCurrentWidget(visible ? reports_ : welcome_);
}

void DesktopSession::SetRunMenusEnabled(bool enabled) {
  running_ = !enabled;
  // Everything that could change the program's folder or the project waits for the run.
  for (QAction* menu : form_.menuBar()->actions()) {
    if (menu->menu() == form_.mnuTest) continue;
    QString name = menu->menu() ? menu->menu()->objectName() : QString();
    if (name == "mnuHelp") continue;
    menu->setEnabled(enabled);
  }
  UpdateCommands();
}

void DesktopSession::AddRecent(const fs::path& path) {
  shell::SaveRecent(shell::MainSettings(), path.string());
  form_.LoadRecentMenu();
}

void DesktopSession::PopulateTree() {
  if (!session_.ctrlBatch) return;
  std::vector<std::string> files;
  for (int i = 0; i < static_cast<int>(session_.ctrlBatch->Count()); ++i)
    files.push_back(session_.ctrlBatch->List(i));
  batch::RowFlags flags;
  report::PopulateTree(session_.trvMenu, flags, files, session_.OutputPath,
                       session_.ctrlBatch->BatchName(), shell::Prefs().NOGRAPHS != 0);
  pane_->ClearTree();
  SyncTree();
}

void DesktopSession::AfterProjectChange() {
  UpdateCommands();
  form_.lblStatus->setText(QString::fromStdString(session_.lblStatus));
  pane_->ClearTree();
  if (!session_.ctrlBatch) {
    ShowReportTree(false);
    return;
  }
  mnuBatchPrevReports->setVisible(true);
  SyncTree();
  ShowReportTree(!session_.trvMenu.Empty());
  form_.lblStatus->setText(QString("Project %1: %2 series. Batch > Run Project (F5) runs it.")
                               .arg(QString::fromStdString(session_.ctrlBatch->BatchName()))
                               .arg(session_.ctrlBatch->Count()));
  // The first series' overview, when an earlier run left one, so the pane is not empty.
  if (QTreeWidgetItem* first = pane_->trvMenu->topLevelItem(0)) {
    const batch::ReportNode* node = session_.trvMenu.Find(ReportPane::KeyOf(first));
    if (node && node->kind == batch::NodeKind::Series) {
      QSignalBlocker quiet(pane_->trvMenu);
      pane_->trvMenu->setCurrentItem(first);
      trvMenu_NodeClick(node->key);
    }
  }
}

void DesktopSession::mnuFileNew_Click() {
  shell::EnterMenuCommand("frmMain", "mnuFileNew_Click");
  // Unsaved changes are offered for saving first; otherwise the open project stays open
  // until the new one is written, so that a cancelled New loses nothing.
  if (session_.ctrlBatch && session_.ctrlBatch->Changed()) commands_->mnuFileClose();
  std::string previous_in = session_.ctrlBatch ? session_.ctrlBatch->InDirectory() : std::string();
  if (commands_->mnuFileNew()) {
    if (!previous_in.empty()) commands_->RestoreBackups(previous_in, "ASCBACKUP");
    AfterProjectChange();
  } else {
    // New clears the tree before it asks; the open project's reports come back.
    PopulateTree();
    AfterProjectChange();
  }
}

void DesktopSession::mnuFileOpen_Click() {
  shell::EnterMenuCommand("frmMain", "mnuFileOpen_Click");
  (void)commands_->mnuFileOpen();  // the command tells the person what went wrong
  AfterProjectChange();
}

bool DesktopSession::OpenProject(const fs::path& path) {
  shell::EnterMenuCommand("frmMain", "OpenProject");
  bool ok = commands_->OpenProject(path);
  AfterProjectChange();
  return ok;
}

void DesktopSession::mnuFileClose_Click() {
  shell::EnterMenuCommand("frmMain", "mnuFileClose_Click");
  commands_->mnuFileClose();
  AfterProjectChange();
  form_.lblStatus->clear();
}

void DesktopSession::mnuBatchEdit_Click() {
  shell::EnterMenuCommand("frmMain", "mnuBatchEdit_Click");
  (void)commands_->mnuBatchEdit();  // the command tells the person what went wrong
  UpdateCommands();
}

void DesktopSession::mnuBatchPrevReports_Click() {
  shell::EnterMenuCommand("frmMain", "mnuBatchPrevReports_Click");
  commands_->mnuBatchPrevReports();
  if (session_.trvMenu.Empty()) form_.lblStatus->setText("This project has no reports yet.");
}

void DesktopSession::Mnu_Pool_Click() {
  shell::EnterMenuCommand("frmMain", "Mnu_Pool_Click");
  if (running_) return;
  if (!session_.ctrlBatch) mnuFileOpen_Click();
  if (session_.ctrlBatch) RunPoolFlow(*this, &form_, program_);
  UpdateCommands();
}

void DesktopSession::mnuBatchRun_Click() {
  shell::EnterMenuCommand("frmMain", "mnuBatchRun_Click");
  if (running_) return;
  const shell::ShellState& shell_state = shell::Shell();
  batch::BatchRun run(batch::RunOptions{program_, shell::Prefs().NOGRAPHS != 0, shell_state.NoTrendAtStart},
                      session_.trvMenu);
  run.SetRulesWizard(std::make_shared<batch::RulesWizardBinding>(
      program_, std::make_shared<rules::DesktopWizardUi>(&form_), shell_state.NoTrendAtStart));
  run.SetReports(std::make_shared<batch::ProgramRunReports>(program_));
  run.SetView(std::make_shared<MainFormRunView>(*this));
  fs::path program = program_;
  run.SetEngineCreate([program, &run](int& number, std::string& description) {
    std::shared_ptr<batch::EngineClient> engine;
    batch::CreateObjectError error;
    // The run's engine until the first call makes its own.
    if (batch::fCreateObject(batch::kEngineProgID, engine, program, {}, &error)) {
      run.Session().engine.engine = engine;
      return true;
    }
    number = error.number;
    description = error.description;
    return false;
  });
  run.SetOpenProject([this] { (void)commands_->mnuFileOpen(); });  // the run looks for the project next
  // Each run asks the wizard again for its first file: a fresh run has no kind yet.
  std::optional<fs::path> save_to;
  if (!session_.project_path.empty()) save_to = session_.project_path;
  bool ran = run.mnuBatchRun(session_.ctrlBatch, save_to);
  running_ = false;
  if (!run.OutputPath().empty()) session_.OutputPath = run.OutputPath();
  if (session_.ctrlBatch && session_.project_path.empty())
    session_.project_path = fs::path(session_.ctrlBatch->OutDirectory()) / session_.ctrlBatch->BatchName();
  SetRunMenusEnabled(true);
  RefreshOverview();
  if (ran) {
    SyncTree();
    ShowReportTree(true);
    if (auto* top = pane_->trvMenu->topLevelItem(0)) {
      top->setExpanded(true);
      {
        QSignalBlocker quiet(pane_->trvMenu);
        pane_->trvMenu->setCurrentItem(top);
      }
      trvMenu_NodeClick(ReportPane::KeyOf(top));
    }
  } else if (!session_.trvMenu.Empty()) {
    ShowReportTree(true);
  }
  UpdateCommands();
}

void DesktopSession::mnu_Agg_Click() {
  shell::EnterMenuCommand("frmMain", "mnu_Agg_Click");
  if (running_) return;
  if (!session_.ctrlBatch) (void)commands_->mnuFileOpen();  // whether one is open is asked next
  if (!session_.ctrlBatch) return;
  aggregate::DesktopAggregation context{&form_, program_, session_.ctrlBatch.get(), session_.project_path,
                                        std::make_shared<MainFormRunView>(*this),
                                        std::make_shared<batch::ProgramRunReports>(program_),
                                        std::make_shared<rules::DesktopWizardUi>(&form_), &session_.trvMenu};
  const bool ran = aggregate::mnu_Agg(context);
  SetRunMenusEnabled(true);
  if (ran) session_.OutputPath = platform::EnsureSubfolder(session_.ctrlBatch->InDirectory(), "OUTPUT");
  SyncTree();
  ShowReportTree(!session_.trvMenu.Empty());
}

void DesktopSession::mnuFileExportForecasts_Click() {
  if (running_) return;
  if (!session_.ctrlBatch) (void)commands_->mnuFileOpen();  // whether one is open is asked next
  if (!session_.ctrlBatch) return;
  const batch::cBatchFile& project = *session_.ctrlBatch;
  spreadsheet::ForecastExport result;
  std::string error;
  const fs::path output = platform::ResolveNoCase(project.OutDirectory(), "OUTPUT");
  std::string text;
  if (spreadsheet::ExportForecasts(project, output, {}, result, error)) {
    text = std::to_string(result.exported.size()) + " series of " + std::to_string(project.Count()) +
           " exported to\r\n" + result.csv.string() + "\r\n" + result.xlsx.string();
  } else {
    text = error;
  }
  if (!result.missing.empty() && !result.exported.empty()) {
    text += "\r\n\r\nNo forecasts (not run, rejected or failed):";
    for (const std::string& name : result.missing) text += "\r\n" + name;
  }
  platform::Dialogs().Message(text, platform::mb::OKOnly + (error.empty() ? platform::mb::Information
                                                                          : platform::mb::Exclamation),
                              "Export Forecasts");
}

void DesktopSession::RefreshOverview() {
  if (!session_.ctrlBatch) {
    overview_->SetRows({});
    return;
  }
  std::vector<std::string> files;
  for (int i = 0; i < static_cast<int>(session_.ctrlBatch->Count()); ++i)
    files.push_back(session_.ctrlBatch->List(i));
  overview_->SetRows(report::ReadSeriesOverview(files, batch::ProjectStem(session_.ctrlBatch->BatchName()),
                                                session_.OutputPath));
}

void DesktopSession::OpenSeries(const std::string& asc_file) {
  const report::SeriesOverviewRow* row = nullptr;
  for (const auto& r : overview_->Rows())
    if (r.asc_file == asc_file) row = &r;
  if (!row) return;
  // The dataset's reports and graphs laid open in the tree, the dataset current.
  if (QTreeWidgetItem* item = pane_->ItemByKey(batch::SeriesKey(asc_file))) {
    QSignalBlocker quiet(pane_->trvMenu);
    item->setExpanded(true);
    for (int i = 0; i < item->childCount(); ++i) item->child(i)->setExpanded(true);
    pane_->trvMenu->setCurrentItem(item);
    pane_->trvMenu->scrollToItem(item);
  }
  pane_->navigate(row->report);
  if (platform::ToUpper(row->report.filename().string()) == "DISPLAY.HTML")
    pane_->brsReport->scrollToAnchor(QString::fromStdString(row->dataset));
}

void DesktopSession::trvMenu_NodeClick(const std::string& key) {
  const batch::ReportNode* node = session_.trvMenu.Find(key);
  if (!node || !session_.ctrlBatch) return;
  report::ClickContext context;
  context.output_path = session_.OutputPath;
  context.batch_name = session_.ctrlBatch->BatchName();
  for (int i = 0; i < static_cast<int>(session_.ctrlBatch->Count()); ++i)
    context.asc_files.push_back(session_.ctrlBatch->List(i));
  PaneReportViewer viewer(&form_, pane_);
  report::OnTreeClick(session_.trvMenu, *node, context, viewer);
  // A dataset's node that opens the overview shows that dataset's row, its reason in view.
  if (node->kind == batch::NodeKind::Series && platform::ToUpper(pane_->CurrentFile().filename().string()) == "DISPLAY.HTML")
    pane_->brsReport->scrollToAnchor(QString::fromStdString(batch::AscStem(node->series)));
}

}  // namespace tessaly::app
