// tsly run: a project through the engine with no window, as `tessaly PROJECT.xml` runs it.
#include <filesystem>
#include <ostream>

#include "app/tsly.h"
#include "app/unattended.h"
#include "batch/run_reports_binding.h"
#include "platform/paths.h"
#include "shell/command_line.h"

namespace tessaly::app::tsly {

namespace {
class ProjectRunner : public shell::CommandLineRunner {
 public:
  int RunProject(const std::filesystem::path& project) override {
    return batch::RunProjectFromCommandLine(project);
  }
};
}  // namespace

int RunCommand(const Args& args, std::ostream& out, std::ostream& err) {
  if (args.size() != 1) return UsageError("run", "name one project file.", err);
  std::filesystem::path project(args[0]);
  std::string ext = platform::ToUpper(project.extension().string());
  if (ext != ".XML") return UsageError("run", "'" + args[0] + "' is not a project (.xml).", err);
  std::error_code ec;
  std::filesystem::path current = std::filesystem::current_path(ec);
  shell::CommandLine line{{std::filesystem::absolute(project, ec).string()}};
  ProjectRunner runner;
  return RunUnattended(line, platform::ProgramFolder(), current, runner);
}

}  // namespace tessaly::app::tsly
