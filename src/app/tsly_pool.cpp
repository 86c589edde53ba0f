// tsly pool: like series of a project stacked, run alone and stacked, and the F-test of
// poolability, as the desktop's Pool menu does it with the model given on the command line.
#include <filesystem>
#include <ostream>

#include "app/tsly.h"
#include "batch/engine/unattended_wait.h"
#include "report/run_reports_binding.h"
#include "platform/numfmt.h"
#include "platform/paths.h"
#include "platform/progress_wait.h"
#include "pool/pool_command.h"

namespace tessaly::app::tsly {

int PoolCommand(const Args& args, std::ostream& out, std::ostream& err) {
  std::string project;
  std::vector<std::string> files;
  pool::ModelChoice choice;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a == "--model" || a == "--preset") {
      if (i + 1 >= args.size()) return UsageError("pool", a + " needs a value.", err);
      if (choice.model_file || choice.preset) return UsageError("pool", "give one of --model and --preset.", err);
      const std::string& value = args[++i];
      if (a == "--model") {
        choice.model_file = std::filesystem::path(value);
      } else {
        auto n = platform::ToDouble(value);
        if (!n || *n != static_cast<int>(*n)) return UsageError("pool", "--preset takes a number.", err);
        choice.preset = static_cast<int>(*n);
      }
    } else if (a.rfind("--", 0) == 0) {
      return UsageError("pool", "unknown option " + a + ".", err);
    } else if (project.empty()) {
      project = a;
    } else {
      files.push_back(a);
    }
  }
  if (project.empty() || platform::ToUpper(std::filesystem::path(project).extension().string()) != ".XML")
    return UsageError("pool", "name the project (.xml) first.", err);
  if (files.empty()) return UsageError("pool", "name the ASC files to pool.", err);
  if (!choice.model_file && !choice.preset) return UsageError("pool", "give --model MODELFILE or --preset N.", err);
  InstallUnattendedHost();
  platform::SetProgressWait(std::make_shared<batch::UnattendedProgressWait>());
  pool::PoolCommandOptions options;
  options.no_graphs = false;
  options.reports = std::make_shared<batch::ProgramRunReports>(platform::ProgramFolder());
  return pool::RunPoolCommand(project, files, choice, options, out, err);
}

}  // namespace tessaly::app::tsly
