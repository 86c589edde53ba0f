#include <algorithm>
#include <memory>
#include <ostream>

#include "app/tsly.h"
#include "platform/dialogs.h"

namespace tessaly::app::tsly {

namespace {
constexpr Command kCommands[] = {
    {"run", "run a project through the engine, as the desktop's Run Project does",
     "usage: tsly run PROJECT.xml [--no-graphs] [--series-timeout SECONDS]\n"
     "                            [--jobs K [--part-size N] | --shard I/N | --shard auto [--shards N]]\n"
     "\n"
     "Runs every dataset of the project through the engine with the rules and model files\n"
     "of the program's folder, files the reports and graphs in the project's OUTPUT folder\n"
     "and saves each dataset's status in the project. One line per dataset (forecast,\n"
     "rejected with its reason, failed), the tally and the overview page go to standard\n"
     "output; progress and messages to standard error.\n"
     "\n"
     "  --no-graphs           no pictures (reports and forecasts only)\n"
     "  --series-timeout S    an engine still working on a dataset after S seconds is ended;\n"
     "                        that dataset fails, with the reason in the error log\n"
     "  --jobs K              K engines at once, each in a private working folder (K parts\n"
     "                        of the list, joined at the end): the same outputs as one at a time\n"
     "  --part-size N         with --jobs: parts of at most N datasets (default 100), K at a time\n"
     "                        (--jobs 1 too: one engine at a time, a large project filed faster)\n"
     "  --shard I/N           only the I-th of N parts of the list, written under\n"
     "                        OUTPUT/shards/I; join the parts with tsly merge\n"
     "  --shard auto          I and N from a Slurm job array (SLURM_ARRAY_TASK_ID, _COUNT) or\n"
     "                        a Kubernetes Indexed Job (JOB_COMPLETION_INDEX, with --shards N)\n"
     "\n"
     "Ctrl-C or a KILLQUOR.QVX put in the program's folder cancels the run's own engines.\n"
     "See docs/scale-out.md.\n"
     "\n"
     "Exit status: 0 every dataset forecast, 1 some rejected, failed or not reached (or the\n"
     "parts could not be merged), 2 none forecast (an unreadable project, no engine, every\n"
     "dataset rejected) or bad usage.\n",
     &RunCommand},
    {"merge", "join the shards of a project run (tsly run --shard) into its OUTPUT folder",
     "usage: tsly merge PROJECT.xml [--shards N]\n"
     "\n"
     "Joins what the shards wrote under OUTPUT/shards/: every dataset's outputs into OUTPUT,\n"
     "CON<project>.PRO and the run-wide summaries in the project's order, each dataset's\n"
     "status into the project file, the error logs into the program's Process Errors.Err,\n"
     "and the link-tree site: the same as one run of the whole project. When a shard never\n"
     "ran or did not finish it says which and merges nothing. --shards N names the count\n"
     "(else the count the shards recorded).\n"
     "\n"
     "Exit status: 0 when merged, 1 when a shard is missing or unfinished, 2 when the\n"
     "project cannot be read or the usage is wrong.\n",
     &MergeCommand},
    {"pool", "pool like series: run each alone and stacked, and test whether one model serves all",
     "usage: tsly pool PROJECT.xml FILE.ASC FILE.ASC [FILE.ASC ...] (--model MODELFILE | --preset N)\n"
     "\n"
     "Stacks 2 to 149 like ASC files of the project (same number of series, seasonality,\n"
     "periods and observations) into TOTALPOOL.ASC in the project's folder, runs every file\n"
     "and then the stack through the engine as a pooled cross-section of one group per file,\n"
     "and writes the F-test of poolability to OUTPUT\\<project>ANALYSIS.TXT beside the\n"
     "pooled coefficients (POOLCOEF.TXT) and the F-table pages. The source files are not\n"
     "changed. The model is an explicit one, MODELFILE in the layout of STARTMOD.123 as the\n"
     "rules wizard writes it, or the canned model N of the pooling wizard's list (for\n"
     "example 2, AUTOREGRESSIVE(1) WITH CONSTANT; 51, REGRESSION, for files with inputs).\n"
     "The F value, its degrees of freedom and its p-value are printed; messages go to\n"
     "standard error.\n"
     "\n"
     "Exit status: 0 when the run finished, 1 when it was incomplete, 2 when the selection\n"
     "was refused or the usage is wrong.\n",
     &PoolCommand},
    {"import", "turn a sheet of a workbook (.xlsx, .xls, .csv) into ASC files",
     "usage: tsly import BOOK.(xlsx|xls|csv) [--sheet NAME] [--rows] [--no-names]\n"
     "            [--seasonality S] [--start YEAR/PERIOD] [--forecasts N] [--out DIR]\n"
     "            [--project NAME.xml | --single FILE.asc [--output SERIES]]\n"
     "\n"
     "Reads one sheet (the first other than PROPERTIES unless --sheet names one) and writes\n"
     "one ASC file per series, <name>.asc, into DIR (default: the workbook's folder), as the\n"
     "Import Wizard's Batch Import does. Series run down the columns, or along the rows with\n"
     "--rows; the first row (column) holds the names unless --no-names, when they are S-1,\n"
     "S-2, ... Names are repaired: at most 14 characters, only letters, digits, ( ) + - _.\n"
     "A blank cell is written as 0; a text among the numbers refuses that series.\n"
     "\n"
     "The figures come from the workbook's PROPERTIES sheet (SEASONALITY, MAJOR, MINOR,\n"
     "FORECASTS), else seasonality 12 and 3 x seasonality forecasts; the options win.\n"
     "--start is needed when no PROPERTIES sheet gives MAJOR and MINOR.\n"
     "\n"
     "--project NAME.xml  also writes a project of the files, ready for 'tsly run'.\n"
     "--single FILE.asc   writes one dataset of all series instead, the dependent series\n"
     "                    (--output SERIES, default the last) last.\n"
     "\n"
     "Exit status: 0 all written, 1 some series refused, 2 nothing written or bad usage.\n",
     &ImportCommand},
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
     "  --add-series FILE     the generated series that FILE (rwf.his) asks for added to the parent\n"
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
    {"export", "all forecasts of a run project in one wide CSV and one workbook",
     "usage: tsly export PROJECT.xml [--out DIR]\n"
     "\n"
     "Puts the forecasts the last run left in the project's OUTPUT folder (one <name>.PRO\n"
     "per dataset) side by side: one row per period, and for each dataset its forecast and\n"
     "the lower and upper limits. Written as <project>FORECASTS.csv and\n"
     "<project>FORECASTS.xlsx into OUTPUT, or into DIR with --out. Datasets with no\n"
     "forecasts (not run, rejected, failed) are named on standard output.\n"
     "\n"
     "Exit status: 0 every dataset exported, 1 some had no forecasts, 2 none had any, the\n"
     "project cannot be read or the usage is wrong.\n",
     &ExportCommand},
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
