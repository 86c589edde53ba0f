#include <algorithm>
#include <memory>
#include <ostream>

#include "app/tsly.h"
#include "platform/dialogs.h"

namespace tessaly::app::tsly {

namespace {
constexpr Command kCommands[] = {
    {"run", "run a project through the engine, as the desktop's Run Project does",
     "usage: tsly run PROJECT.xml\n"
     "\n"
     "Runs every dataset of the project through the engine with the rules and model files\n"
     "of the program's folder, files the reports and graphs in the project's OUTPUT folder\n"
     "and saves each dataset's status in the project. Progress and messages go to standard\n"
     "error.\n"
     "\n"
     "Exit status: 0 when the run ended, 1 when the project could not be read, 2 when the\n"
     "engine could not be started or the usage is wrong.\n",
     &RunCommand},
    {"add-series", "add the generated series of a variables file (rwf.his) to ASC files",
     "usage: tsly add-series VARIABLES.his FILE.ASC [FILE.ASC ...] [--out DIR]\n"
     "\n"
     "Adds the series the Add Series wizard saved in VARIABLES.his (interventions, holidays,\n"
     "calendar effects, business days, a user series) to each ASC file, as the desktop's\n"
     "adjusting step does. Each file is rewritten in place, or written under the same name\n"
     "into DIR with --out (the original is then left as it was). For each file the command\n"
     "prints whether it was adjusted, partly adjusted or refused, and the lines of its\n"
     "generation log. A file that is refused is never changed.\n"
     "\n"
     "Exit status: 0 when every file was adjusted, 1 when any was partly adjusted or refused,\n"
     "2 when the variables file cannot be read or the usage is wrong.\n",
     &AddSeriesCommand},
};
}  // namespace

std::span<const Command> Commands() { return kCommands; }

bool WantsHelp(const Args& args) {
  return std::any_of(args.begin(), args.end(),
                     [](const std::string& a) { return a == "--help" || a == "-h"; });
}

void InstallUnattendedHost() {
  platform::SetDialogHost(std::make_shared<platform::StderrDialogHost>());
}

int UsageError(std::string_view command, std::string_view text, std::ostream& err) {
  err << "tsly " << command << ": " << text << "\n"
      << "Try 'tsly " << command << " --help'.\n";
  return kExitNothing;
}

}  // namespace tessaly::app::tsly
