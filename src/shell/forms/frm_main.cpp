#include "shell/forms/frm_main.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QFile>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QStatusBar>
#include <QDesktopServices>
#include <QDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QTextBrowser>
#include <QUrl>
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

  mnuHelp = menuBar()->addMenu("&Help");
  mnuHelp->setObjectName("mnuHelp");
  QAction* contents = mnuHelp->addAction("&Contents", this, &frmMain::mnu_help_Contents_Click);
  contents->setObjectName("mnu_help_Contents");
  contents->setShortcut(QKeySequence::HelpContents);
  mnuHelp->addAction("&Users Guide", this, &frmMain::mnu_help_UsersGuide_Click)
      ->setObjectName("mnu_help_UsersGuide");
  mnuHelp->addSeparator();
  mnuHelp->addAction("&About Tessaly", this, &frmMain::mnu_help_About_Click)->setObjectName("mnu_help_ABout");

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

namespace {
QSettings WindowSettings() {
  return QSettings(QSettings::IniFormat, QSettings::UserScope, "tessaly", "window");
}
}  // namespace

bool frmMain::RestoreWindowGeometry() {
  QSettings settings = WindowSettings();
  QByteArray geometry = settings.value("frmMain/geometry").toByteArray();
  return !geometry.isEmpty() && restoreGeometry(geometry);
}

void frmMain::SaveWindowGeometry() {
  QSettings settings = WindowSettings();
  settings.setValue("frmMain/geometry", saveGeometry());
}

void frmMain::ShowHelpPage(const QString& file) {
  EnterMenuCommand("frmMain", "mnu_help_Click");
  QString path = QString::fromStdString((Shell().program_folder / "help").string()) + "/" + file;
  if (!QFile::exists(path)) {
    SharedMsgBox().Display("The help file " + path.toStdString() + " is missing.",
                           platform::mb::OKOnly + platform::mb::Exclamation, kApplicationTitle);
    return;
  }
  auto* window = qobject_cast<QDialog*>(help_window_);
  QTextBrowser* browser = nullptr;
  if (!window) {
    window = new QDialog(this);
    window->setObjectName("frmHelp");
    window->setWindowTitle("Tessaly Help");
    auto* layout = new QVBoxLayout(window);
    browser = new QTextBrowser(window);
    browser->setObjectName("brsHelp");
    browser->setOpenExternalLinks(true);
    layout->addWidget(browser);
    auto* row = new QHBoxLayout();
    auto* home = new QPushButton("&Contents", window);
    auto* out = new QPushButton("Open in &Browser", window);
    auto* close = new QPushButton("Close", window);
    row->addWidget(home);
    row->addWidget(out);
    row->addStretch(1);
    row->addWidget(close);
    layout->addLayout(row);
    connect(home, &QPushButton::clicked, browser, &QTextBrowser::home);
    connect(out, &QPushButton::clicked, window, [browser] { QDesktopServices::openUrl(browser->source()); });
    connect(close, &QPushButton::clicked, window, &QDialog::close);
    window->resize(760, 640);
    help_window_ = window;
  } else {
    browser = window->findChild<QTextBrowser*>("brsHelp");
  }
  browser->setSource(QUrl::fromLocalFile(path));
  window->show();
  window->raise();
  window->activateWindow();
}

void frmMain::mnu_help_Contents_Click() { ShowHelpPage("CONTENTS.htm"); }
void frmMain::mnu_help_UsersGuide_Click() { ShowHelpPage("UsersGuide.htm"); }

void frmMain::mnu_help_About_Click() {
  EnterMenuCommand("frmMain", "mnu_help_ABout_Click");
  QMessageBox about(this);
  about.setObjectName("frmAbout");
  about.setWindowTitle("About Tessaly");
  about.setIconPixmap(QPixmap());
  about.setText(QString("<h3>%1</h3><p>Batch forecasting for many time series.</p>"
                        "<p>Program folder:<br>%2</p>")
                    .arg(kProductName, QString::fromStdString(Shell().program_folder.string()).toHtmlEscaped()));
  about.exec();
}

void frmMain::closeEvent(QCloseEvent* event) {
  if (!unloaded_) {
    SaveWindowGeometry();
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
