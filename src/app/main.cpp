// tessaly: with no file on the command line the desktop opens; with a file the file is run
// with no window and the program exits with the run's status.
#include <filesystem>

#include "app/unattended.h"
#include "platform/paths.h"
#include "shell/command_line.h"

#ifdef TESSALY_WITH_DESKTOP
#include "app/desktop.h"
#endif

#include <iostream>

namespace {
// The runs that other parts of the program provide for a file on the command line.
class ProgramRunner : public tessaly::shell::CommandLineRunner {};
}  // namespace

int main(int argc, char** argv) {
  namespace fs = std::filesystem;
  auto command_line = tessaly::shell::CommandLine::FromArgs(argc, argv);
  fs::path program_folder = tessaly::platform::ProgramFolder();
  std::error_code ec;
  fs::path current_folder = fs::current_path(ec);

  if (command_line.File()) {
    ProgramRunner runner;
    return tessaly::app::RunUnattended(command_line, program_folder, current_folder, runner);
  }
#ifdef TESSALY_WITH_DESKTOP
  return tessaly::app::RunDesktop(argc, argv, command_line, program_folder, current_folder);
#else
  std::cerr << "Tessaly: this build has no desktop; name a project or workbook to run." << std::endl;
  return 2;
#endif
}
