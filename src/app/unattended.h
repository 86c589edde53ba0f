#pragma once
// `tessaly FILE ...`: the start-up steps, the run of the file and the orderly exit, with
// no window and no display.
#include <filesystem>

#include "shell/command_line.h"

namespace tessaly::app {

[[nodiscard]] int RunUnattended(const shell::CommandLine& command_line, const std::filesystem::path& program_folder,
                  const std::filesystem::path& current_folder, shell::CommandLineRunner& runner);

}  // namespace tessaly::app
