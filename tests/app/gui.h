#pragma once
// What the desktop tests share: one QApplication for the process (off-screen), and a
// main window with its session over a fresh copy of the program folder, messages answered
// by a recording host.
#include <QString>
#include <functional>
#include <memory>
#include <string>

#include "app/desktop_session.h"
#include "shell/forms/frm_main.h"
#include "support/messages.h"
#include "support/program_folder.h"
#include "support/qt_app.h"

class QWidget;

namespace tessaly::testing {

class DesktopFixture {
 public:
  DesktopFixture();
  ~DesktopFixture();
  ProgramFolderCopy program;
  TempDir config;
  TempDir data;  // the sample ASC files copied here
  RecordedMessages host;
  std::unique_ptr<shell::frmMain> form;
  app::DesktopSession* session = nullptr;
  std::string Messages() const { return host.Joined(); }
};

// A queued click on the window's button named or captioned so.
bool Click(QWidget* window, const QString& name_or_text);

}  // namespace tessaly::testing
