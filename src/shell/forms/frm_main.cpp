#include "shell/forms/frm_main.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QMenuBar>
#include <QStatusBar>
#include <QVBoxLayout>

#include "platform/dialogs.h"
#include "shell/app_info.h"
#include "shell/error_context.h"
#include "shell/errors.h"
#include "shell/forms/frm_prefs.h"
#include "shell/mru.h"
#include "shell/preferences.h"
#include "shell/settings.h"
#include "shell/startup.h"

namespace tessaly::shell {

namespace {
QWidget* WelcomePane(QWidget* parent) {
  auto* pane = new QWidget(parent);
  pane->setObjectName("paneWelcome");
  auto* layout = new QVBoxLayout(pane);
  layout->addStretch(2);
  auto* name = new QLabel(kProductName, pane);
  QFont big = name->font();
  big.setPointSizeF(big.pointSizeF() * 2.6);
  big.setBold(true);
  name->setFont(big);
  name->setAlignment(Qt::AlignCenter);
  name->setStyleSheet("color: #2b4a6f;");
  auto* tagline = new QLabel("Batch forecasting for many time series", pane);
  tagline->setAlignment(Qt::AlignCenter);
  tagline->setStyleSheet("color: #555;");
  auto* folder = new QLabel(
      QString("Program folder: %1\nReports: %2")
          .arg(QString::fromStdString(Shell().program_folder.string()),
               QString::fromStdString(Shell().OutputPath)),
      pane);
  folder->setAlignment(Qt::AlignCenter);
  folder->setStyleSheet("color: #777;");
  folder->setTextInteractionFlags(Qt::TextSelectableByMouse);
  layout->addWidget(name);
  layout->addSpacing(6);
  layout->addWidget(tagline);
  layout->addSpacing(24);
  layout->addWidget(folder);
  layout->addStretch(3);
  return pane;
}
}  // namespace

std::vector<frmMain::MenuContributor>& frmMain::MenuContributors() {
  static std::vector<MenuContributor> contributors;
  return contributors;
}

std::function<void(const std::string&)>& frmMain::RecentFileOpener() {
  static std::function<void(const std::string&)> opener;
  return opener;
}

frmMain::frmMain(QWidget* parent) : QMainWindow(parent) {
  setObjectName("frmMain");
  setWindowTitle(kProductName);
  resize(1100, 720);

  mnuFile = menuBar()->addMenu("&File");
  mnuFile->setObjectName("mnuFile");
  for (int i = 0; i < kRecentFiles; ++i) {
    mnuFileMRU_[i] = mnuFile->addAction(QString());
    mnuFileMRU_[i]->setObjectName(QString("mnuFileMRU_%1").arg(i + 1));
    mnuFileMRU_[i]->setVisible(false);
    connect(mnuFileMRU_[i], &QAction::triggered, this, [this, i] { OpenRecent(i); });
  }
  mnuFileMRUSep_ = mnuFile->addSeparator();
  mnuFileMRUSep_->setVisible(false);
  QAction* exit = mnuFile->addAction("E&xit", this, &frmMain::mnuFileExit_Click);
  exit->setObjectName("mnuFileExit");
  exit->setShortcut(QKeySequence::Quit);

  mnuPrefs = menuBar()->addMenu("&Preferences");
  mnuPrefs->setObjectName("mnuPrefs");
  mnuPrefs->addAction("&Decimals...", this, &frmMain::mnuPrefsDecimals_Click)
      ->setObjectName("mnuPrefsDecimals");
  mnuPrefs->addAction("&Graphs and Decimals...", this, &frmMain::mnuPrefsGraphs_Click)
      ->setObjectName("mnuPrefsGraphs");

  for (const auto& contribute : MenuContributors()) contribute(*this);

  mnuTest = menuBar()->addMenu("&Test");
  mnuTest->setObjectName("mnuTest");
  mnuTest->addAction("Show Start-up State", this, &frmMain::mnuTestState_Click);
  mnuTest->menuAction()->setVisible(false);

  SetCentralPane(WelcomePane(this));
  lblStatus = new QLabel("Ready", this);
  lblStatus->setObjectName("lblStatus");
  statusBar()->addWidget(lblStatus, 1);
}

void frmMain::SetCentralPane(QWidget* pane) { setCentralWidget(pane); }

void frmMain::LoadRecentMenu() {
  auto captions = LoadMenu(MainSettings());
  bool any = false;
  for (int i = 0; i < kRecentFiles; ++i) {
    bool shown = !captions[i].empty();
    // "&1 path": the number is the item's access key.
    mnuFileMRU_[i]->setText(QString("&%1 %2").arg(i + 1).arg(QString::fromStdString(captions[i])));
    mnuFileMRU_[i]->setData(QString::fromStdString(captions[i]));
    mnuFileMRU_[i]->setVisible(shown);
    any = any || shown;
  }
  mnuFileMRUSep_->setVisible(any);
}

void frmMain::ShowTestMenu(bool visible) { mnuTest->menuAction()->setVisible(visible); }

void frmMain::OpenRecent(int index) {
  EnterMenuCommand("frmMain", "mnuFileMRU_Click");
  std::string path = mnuFileMRU_[index]->data().toString().toStdString();
  if (RecentFileOpener()) {
    RecentFileOpener()(path);
    return;
  }
  SharedMsgBox().Display("Opening projects is not available in this build.\r\n" + path,
                         platform::mb::OKOnly + platform::mb::Information, kApplicationTitle);
}

void frmMain::mnuFileExit_Click() {
  FileExit();
  // Unloads every form; the main form's unload runs the exit steps once more, and they
  // find nothing left to do.
  QApplication::closeAllWindows();
}

void frmMain::closeEvent(QCloseEvent* event) {
  if (!unloaded_) {
    unloaded_ = true;
    FormUnload(MainSettings());
  }
  event->accept();
}

void frmMain::mnuPrefsDecimals_Click() {
  EnterMenuCommand("frmMain", "mnuPrefsDecimals_Click");
  frmPrefsDecimals dialog(this);
  if (dialog.exec() == QDialog::Accepted)
    lblStatus->setText(QString("Decimal places in reported data: %1").arg(Prefs().Decimals));
}

void frmMain::mnuPrefsGraphs_Click() {
  EnterMenuCommand("frmMain", "mnuPrefsGraphs_Click");
  frmPrefsGraphs dialog(this);
  if (dialog.exec() == QDialog::Accepted) lblStatus->setText("User preferences saved.");
}

void frmMain::mnuTestState_Click() {
  EnterMenuCommand("frmMain", "mnuTest_Click");
  const ShellState& s = Shell();
  std::string text = "Program folder: " + s.program_folder.string() + "\r\nOutputPath: " +
                     s.OutputPath + "\r\nLogging: " + (s.LogOn ? "on" : "off") +
                     "\r\nDebugMode: " + (s.DebugMode ? "on" : "off") +
                     "\r\nDevMode: " + (s.DevMode ? "on" : "off") +
                     "\r\nInetMode: " + (s.InetMode ? "on" : "off") +
                     "\r\nNoTrendAtStart: " + (s.NoTrendAtStart ? "yes" : "no") +
                     "\r\nDecimals: " + std::to_string(Prefs().Decimals) +
                     "\r\nSettings: " + MainSettings().StorePath().string();
  SharedMsgBox().Display(text, platform::mb::OKOnly + platform::mb::Information, "Start-up State");
}

}  // namespace tessaly::shell
