#include "app/unattended.h"

#include <memory>

#include "platform/dialogs.h"
#include "shell/error_context.h"
#include "shell/settings.h"
#include "shell/startup.h"

namespace tessaly::app {

int RunUnattended(const shell::CommandLine& command_line, const std::filesystem::path& program_folder,
                  const std::filesystem::path& current_folder, shell::CommandLineRunner& runner) {
  auto host = std::make_shared<platform::StderrDialogHost>();
  // With "/L" every message also lands in the dated log.
  host->SetEcho([](const std::string& line) {
    if (shell::Shell().LogOn) shell::TraceLog().WriteLine(line);
  });
  platform::SetDialogHost(host);
  // Held until exit: a second program on this folder would clear this one's files.
  // Unattended, it waits until the lock is free: false only comes from a person's choice.
  (void)shell::LockWorkingFolder(program_folder);

  shell::MainPrepare(program_folder, command_line, current_folder);
  shell::CSetting& settings = shell::MainSettings();
  settings.Init();
  shell::FormLoad(settings);
  // The engine library is needed before anything can run.
  if (!shell::CheckForCriticalFiles()) {
    shell::FormUnload(settings);
    return 4;
  }
  shell::EnsureFTables();
  int status = shell::RunCommandLine(command_line, runner).value_or(0);
  shell::FormUnload(settings);
  return status;
}

}  // namespace tessaly::app
