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
    {"aggregate", "aggregate children into their parent and reconcile the forecasts",
     "usage: tsly aggregate PROJECT.xml CHILD.ASC [CHILD.ASC ...] --forecasts N\n"
     "           [--parent-forecasts] [--parent-asc] [--mixed-frequency] [--add-series VARIABLES.his]\n"
     "           [--causal] [--rules user|qvx] [--no-fixed-effects] [--reconcile bottom-up|top-down|mint]\n"
     "\n"
     "The children (2 to 149 ASC files of the project, in the order the reconciliation numbers\n"
     "them) are summed into the parent GROUPT.ASC; the parent and then each child go through\n"
     "the engine and the forecasts are reconciled. One flag per question of the Aggregation\n"
     "Parameters dialog, with its defaults:\n"
     "  --forecasts N         the number of forecasts to be created (0 to 600)\n"
     "  --parent-forecasts    the parent's forecasts are in GROUPT.PRO in the input folder\n"
     "                        (the reconciliation is then top down)\n"
     "  --parent-asc          the parent is GROUPT.ASC in the input folder (else it is built)\n"
     "  --mixed-frequency     the children are the periods of a parent period (numbered names)\n"
     "  --add-series FILE     generated series for the parent (not available in this build)\n"
     "  --causal              the parent's history and forecasts as a causal in the children\n"
     "  --rules user|qvx      the parent's rules: Automatic With Users or QVX Rules (qvx)\n"
     "  --no-fixed-effects    disable the children's seasonal dummies (with --rules qvx)\n"
     "  --reconcile D         bottom-up (the parent is made the children's sum) or top-down\n"
     "                        (the parent's forecasts shared out by first-period shares) or\n"
     "                        mint (all forecasts combined by their in-sample errors, MinT)\n"
     "\n"
     "Messages go to standard error as 'TITLE: text'. The children's originals are kept in\n"
     "ASCBACKUP and put back at the end.\n"
     "\n"
     "Exit status: 0 when the run finished, 1 when it was incomplete, 2 when the selection or\n"
     "the answers were refused or the usage is wrong.\n",
     &AggregateCommand},
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
