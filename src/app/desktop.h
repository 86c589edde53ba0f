#pragma once
// `tessaly` with no file: the desktop.
#include <filesystem>

#include "shell/command_line.h"

namespace tessaly::app {

int RunDesktop(int& argc, char** argv, const shell::CommandLine& command_line,
               const std::filesystem::path& program_folder,
               const std::filesystem::path& current_folder);

}  // namespace tessaly::app
