#include "app/desktop.h"

#include <QApplication>
#include <QCheckBox>
#include <QRadioButton>
#include <QDialog>
#include <QFile>
#include <QMenuBar>
#include <QLabel>
#include <QScreen>
#include <QTextStream>
#include <QTimer>
#include <cstdlib>
#include <memory>

#include "app/desktop_session.h"
#include "app/screenshots.h"
#include "batch/forms/frm_progress.h"
#include "platform/forms/qt_dialog_host.h"
#include "platform/progress_wait.h"
#include "shell/forms/frm_main.h"
#include "shell/forms/frm_prefs.h"
#include "shell/forms/frm_splash.h"
#include "shell/settings.h"
#include "shell/startup.h"

namespace tessaly::app {

namespace {
// Hooks for tests and the screenshot script, read from the environment:
//   TESSALY_AUTOCLOSE_MS    close any open dialog, then choose File > Exit, after that long
//   TESSALY_READY_FILE      written once the window is up and start-up has finished
//   TESSALY_DESKTOP_REPORT  at exit, write the window's state (title, menus, items) there
//   TESSALY_SCREENSHOT_DIR  save main.png, prefs_decimals.png, prefs_graphs.png, then exit
void InstallAutoClose(shell::frmMain& form) {
  const char* ms = std::getenv("TESSALY_AUTOCLOSE_MS");
  if (!ms || !*ms) return;
  auto* timer = new QTimer(&form);
  QObject::connect(timer, &QTimer::timeout, &form, [&form] {
    if (QWidget* modal = QApplication::activeModalWidget()) {
      modal->close();
      return;
    }
    form.mnuFileExit_Click();
  });
  timer->start(std::atoi(ms));
}

void WriteDesktopReport(shell::frmMain& form) {
  const char* path = std::getenv("TESSALY_DESKTOP_REPORT");
  if (!path || !*path) return;
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) return;
  QTextStream out(&file);
  out << "title=" << form.windowTitle() << "\n";
  out << "maximized=" << (form.isMaximized() ? "yes" : "no") << "\n";
  out << "status=" << form.lblStatus->text() << "\n";
  for (QAction* menu : form.menuBar()->actions()) {
    if (!menu->isVisible()) continue;
    QString title = menu->text().remove('&');
    out << "menu=" << title << "\n";
    if (menu->menu())
      for (QAction* item : menu->menu()->actions())
        if (item->isVisible() && !item->isSeparator())
          out << "item=" << title << "|" << item->text().remove('&') << "\n";
  }
}

}  // namespace

int RunDesktop(int& argc, char** argv, const shell::CommandLine& command_line,
               const std::filesystem::path& program_folder,
               const std::filesystem::path& current_folder) {
  QApplication app(argc, argv);
  QApplication::setApplicationName("Tessaly");
  platform::SetDialogHost(std::make_shared<platform::QtDialogHost>());
  // Held until exit: a second program on this folder would clear this one's files.
  if (!shell::LockWorkingFolder(program_folder)) return 2;

  shell::MainPrepare(program_folder, command_line, current_folder);
  if (shell::SplashWanted(command_line)) {
    auto* splash = new shell::frmQuorvaneSplash();
    splash->setAttribute(Qt::WA_DeleteOnClose);
    splash->show();
    QApplication::processEvents();
    splash->repaint();
  }

  shell::CSetting& settings = shell::MainSettings();
  settings.Init();
  shell::frmMain form;
  // The engine's waits show the progress window over the main window.
  platform::SetProgressWait(std::make_shared<batch::DesktopProgressWait>(&form));
  auto* session = new DesktopSession(form, program_folder);
  shell::FormLoad(settings);
  form.LoadRecentMenu();
  form.ShowTestMenu(shell::Shell().DevMode);
  InstallAutoClose(form);
  // Without a window manager "maximised" means nothing, so the window is given the
  // screen's room first.
  if (!form.RestoreWindowGeometry()) {
    if (QScreen* screen = QGuiApplication::primaryScreen())
      form.setGeometry(screen->availableGeometry());
    form.showMaximized();
  } else {
    form.show();
  }
  std::error_code ec;
  std::filesystem::current_path(program_folder, ec);

  if (!shell::CheckForCriticalFiles()) {
    WriteDesktopReport(form);
    form.close();
    return 4;
  }
  shell::EnsureFTables();

  if (const char* ready = std::getenv("TESSALY_READY_FILE"); ready && *ready) {
    QFile file(ready);
    if (file.open(QIODevice::WriteOnly)) file.write("ready\n");
  }
  if (const char* dir = std::getenv("TESSALY_SCREENSHOT_DIR"); dir && *dir)
    TakeScreenshots(form, *session, QString::fromLocal8Bit(dir));

  QObject::connect(&app, &QApplication::aboutToQuit, &form, [&form] { WriteDesktopReport(form); });
  int rc = app.exec();
  return rc;
}

}  // namespace tessaly::app
