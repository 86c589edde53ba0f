#include "pool/pool_command.h"

#include <ostream>

#include "batch/batch_file.h"
#include "platform/numfmt.h"
#include "platform/paths.h"
#include "pool/pool_headless.h"
#include "pool/pool_run.h"
#include "pool/pool_selection.h"
#include "pool/pool_texts.h"

namespace tessaly::pool {

int RunPoolCommand(const fs::path& project_path, const std::vector<std::string>& files, const ModelChoice& choice,
                   const PoolCommandOptions& options, std::ostream& out, std::ostream& err) {
  const fs::path program = options.program_folder.empty() ? platform::ProgramFolder() : options.program_folder;
  std::error_code ec;
  batch::cBatchFile project(program);
  if (!project.Load(fs::absolute(project_path, ec))) {
    err << "tsly pool: the project " << project_path.string() << " could not be read.\n";
    return 2;
  }
  // The files are named as the project lists them.
  std::vector<std::string> chosen;
  for (const std::string& file : files) {
    std::string name = fs::path(file).filename().string(), listed;
    for (size_t i = 0; i < project.Count(); ++i)
      if (platform::EqualsNoCase(project.List(static_cast<int>(i)), name)) listed = project.List(static_cast<int>(i));
    if (listed.empty()) {
      err << "tsly pool: " << name << " is not a file of the project " << project.BatchName() << ".\n";
      return 2;
    }
    chosen.push_back(listed);
  }
  if (choice.model_file && !fs::is_regular_file(*choice.model_file)) {
    err << "tsly pool: the model file " << choice.model_file->string() << " does not exist.\n";
    return 2;
  }
  if (ValidatePoolSelection(chosen, project.InDirectory(), [](const std::string&) {}) != SelectionVerdict::Passed)
    return 2;

  const bool no_trend = platform::ExistsNoCase(program, "NOTREND.QVX");
  HeadlessPool run = RunPoolHeadless(project, chosen, choice, PoolOptions{program, options.no_graphs, no_trend},
                                     options.reports);
  if (!run.opened) return 2;
  if (!run.problem.empty()) err << "tsly pool: " << run.problem << "\n";
  const PoolOutcome& outcome = run.outcome;
  if (outcome.poolability) {
    const Poolability& p = *outcome.poolability;
    out << "F = " << platform::NumberToText(p.f) << " on (" << p.k << ", "
        << platform::NumberToText(p.denominator_df) << ") degrees of freedom";
    if (p.p_value) out << ", p = " << platform::NumberToText(*p.p_value);
    out << "\n" << outcome.analysis.string() << "\n";
  }
  out << (outcome.end == PoolEnd::Finished ? texts::kFinished : texts::kIncomplete) << "\n";
  return outcome.end == PoolEnd::Finished ? 0 : 1;
}

}  // namespace tessaly::pool
