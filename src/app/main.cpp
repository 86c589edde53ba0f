// tessaly: with no file on the command line the desktop opens; with a file the file is run
// with no window and the program exits with the run's status.
#include <filesystem>

#include "app/unattended.h"
#include "report/run_reports_binding.h"
#include "platform/paths.h"
#include "shell/command_line.h"
#include "spreadsheet/runner.h"

#ifdef TESSALY_WITH_DESKTOP
#include "app/desktop.h"
#endif

#include <iostream>
#include <optional>
#include <string>

#include "shell/app_info.h"

#include "platform/dialogs.h"
#include "shell/errors.h"

namespace {
// The runs that other parts of the program provide for a file on the command line.
class ProgramRunner : public tessaly::shell::CommandLineRunner {
 public:
  int RunProject(const std::filesystem::path& project) override {
    return tessaly::batch::RunProjectFromCommandLine(project);
  }
  int RunWorkbook(const std::filesystem::path& workbook, const std::string& sheet,
                  const std::vector<std::string>& options) override {
    auto graphs = tessaly::spreadsheet::RunnerSwitches::Parse(options).Preferences();
    return tessaly::spreadsheet::RunWorkbookFromCommandLine(
        workbook, sheet, options,
        std::make_shared<tessaly::batch::ProgramRunReports>(tessaly::platform::ProgramFolder(), graphs));
  }
};
}  // namespace

namespace {
constexpr const char* kUsage =
    "usage: tessaly [PROJECT.xml | WORKBOOK.xls[x] SHEET [OPTIONS...]] [/L] [/NS]\n"
    "\n"
    "With no file the desktop opens. With a project the project is run with no window: one\n"
    "line per dataset (forecast, rejected with its reason, failed) and a closing tally go to\n"
    "standard output, progress and messages to standard error, the reports and graphs to the\n"
    "project's OUTPUT folder (its overview is OUTPUT/display.html). With a workbook the\n"
    "spreadsheet runner runs it.\n"
    "\n"
    "  /L          keep a log of the session in the program's folder\n"
    "  /NS         no splash window\n"
    "  --help      this text\n"
    "  --version   the program's version\n"
    "\n"
    "Exit status: 0 every dataset forecast, 1 some rejected or failed, 2 nothing run or bad\n"
    "usage. 'tsly --help' lists the other flows without a window.\n";

// `--help` and `--version` are answered before anything starts; any other word that starts
// with "--" is a mistake, not a file.
std::optional<int> AnswerOptions(int argc, char** argv) {
  if (argc < 2) return std::nullopt;
  std::string word = argv[1];
  if (word == "--help" || word == "-h") return std::cout << kUsage, 0;
  if (word == "--version") return std::cout << "tessaly " << tessaly::shell::kVersion << "\n", 0;
  if (word.rfind("--", 0) == 0) {
    std::cerr << "tessaly: unknown option '" << word << "'\n\n" << kUsage;
    return 2;
  }
  return std::nullopt;
}
}  // namespace

int Main(int argc, char** argv) {
  namespace fs = std::filesystem;
  if (auto status = AnswerOptions(argc, argv)) return *status;
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

// Main's error exit: what escaped every handler ends the program with its text. The
// windows are gone by then, so the text goes to standard error.
int main(int argc, char** argv) {
  try {
    return Main(argc, argv);
  } catch (const std::exception& e) {
    tessaly::platform::SetDialogHost(nullptr);
    tessaly::platform::Dialogs().Message(
        "Error " + std::to_string(tessaly::shell::Err().number) + ": " + e.what() +
            "\r\nThe program will now exit.",
        tessaly::platform::mb::OKOnly + tessaly::platform::mb::Critical, "Tessaly Main Error");
  } catch (...) {
    tessaly::platform::SetDialogHost(nullptr);
    tessaly::platform::Dialogs().Message("An unknown error has occured. The program will now exit",
                                         tessaly::platform::mb::OKOnly +
                                             tessaly::platform::mb::Critical,
                                         "Tessaly Main Error");
  }
  return 5;
}
