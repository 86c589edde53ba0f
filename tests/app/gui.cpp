#include "gui.h"

#include <QApplication>
#include <cstdlib>

#include "batch/forms/frm_progress.h"
#include "app/modal_robot.h"
#include "platform/progress_wait.h"
#include "shell/command_line.h"
#include "shell/settings.h"
#include "shell/startup.h"

namespace tessaly::testing {

DesktopFixture::DesktopFixture() {
  setenv("XDG_CONFIG_HOME", config.path().c_str(), 1);
  OffscreenApp();
  for (const auto& entry : fs::directory_iterator(program / "examples"))
    if (entry.path().extension() == ".ASC") fs::copy_file(entry.path(), data / entry.path().filename().string());
  char arg0[] = "tessaly";
  char* argv[] = {arg0, nullptr};
  shell::MainPrepare(program.path(), shell::CommandLine::FromArgs(1, argv), program.path());
  shell::MainSettings().Init();
  form = std::make_unique<shell::frmMain>();
  platform::SetProgressWait(std::make_shared<batch::DesktopProgressWait>(form.get()));
  session = new app::DesktopSession(*form, program.path());
  shell::FormLoad(shell::MainSettings());
  form->resize(1100, 700);
  form->show();
}

DesktopFixture::~DesktopFixture() {
  platform::SetProgressWait(nullptr);
  form.reset();
}

bool Click(QWidget* window, const QString& name_or_text) { return app::ModalRobot::ClickLater(window, name_or_text); }

}  // namespace tessaly::testing
