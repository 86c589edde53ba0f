// tsly aggregate: the aggregation of a project's children into their parent with no window,
// the parameters dialog's questions answered by flags.
#include <filesystem>
#include <memory>
#include <ostream>

#include "aggregate/parent_series.h"
#include "aggregate/unattended_aggregation.h"
#include "app/tsly.h"
#include "batch/engine/unattended_wait.h"
#include "report/run_reports_binding.h"
#include "platform/paths.h"
#include "platform/progress_wait.h"

namespace tessaly::app::tsly {

int AggregateCommand(const Args& args, std::ostream& out, std::ostream& err) {
  constexpr std::string_view kName = "aggregate";
  aggregate::AggregationAnswers answers;
  std::filesystem::path project;
  std::filesystem::path variables;  // --add-series: the generation variables for the parent
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    // The word after a flag that takes one; null at the end of the words.
    auto value = [&]() -> const std::string* { return i + 1 < args.size() ? &args[++i] : nullptr; };
    if (a == "--forecasts") {
      const std::string* v = value();
      if (!v) return UsageError(kName, "--forecasts needs a number.", err);
      answers.forecasts = *v;
    } else if (a == "--parent-forecasts") {
      answers.parent_forecasts = true;
    } else if (a == "--parent-asc") {
      answers.parent_asc = true;
    } else if (a == "--mixed-frequency") {
      answers.mixed_frequency = true;
    } else if (a == "--add-series") {
      const std::string* v = value();
      if (!v) return UsageError(kName, "--add-series needs a VARIABLES.his file.", err);
      answers.add_series = true;
      variables = *v;
    } else if (a == "--causal") {
      answers.causal = true;
    } else if (a == "--no-fixed-effects") {
      answers.no_fixed_effects = true;
    } else if (a == "--rules") {
      const std::string* v = value();
      if (!v || (*v != "user" && *v != "qvx")) return UsageError(kName, "--rules takes user or qvx.", err);
      answers.user_rules = *v == "user";
    } else if (a == "--reconcile") {
      const std::string* v = value();
      if (!v || (*v != "bottom-up" && *v != "top-down" && *v != "mint"))
        return UsageError(kName, "--reconcile takes bottom-up, top-down or mint.", err);
      answers.top_down = *v == "top-down";
      answers.mint = *v == "mint";
    } else if (a.rfind("--", 0) == 0) {
      return UsageError(kName, "unknown option '" + a + "'.", err);
    } else if (project.empty()) {
      project = a;
    } else {
      answers.children.push_back(a);
    }
  }
  if (project.empty() || !platform::EndsWithNoCase(project.string(), ".xml"))
    return UsageError(kName, "name a project file (.xml) and then its children's ASC files.", err);
  if (!answers.forecasts) return UsageError(kName, "--forecasts N is required.", err);
  if (answers.no_fixed_effects && answers.user_rules)
    return UsageError(kName, "--no-fixed-effects goes with --rules qvx only.", err);
  std::error_code ec;
  if (answers.add_series && !std::filesystem::is_regular_file(variables, ec))
    return UsageError(kName, "the variables file '" + variables.string() + "' does not exist.", err);
  InstallUnattendedHost();
  platform::SetProgressWait(std::make_shared<batch::UnattendedProgressWait>());
  const std::filesystem::path program = platform::ProgramFolder();
  aggregate::AggregationSeams seams;
  seams.reports = std::make_shared<batch::ProgramRunReports>(program);
  if (answers.add_series)
    seams.add_series = std::make_shared<aggregate::VariablesFileSeriesAdder>(std::filesystem::absolute(variables, ec), program);
  const int status = aggregate::RunAggregationUnattended(std::filesystem::absolute(project, ec), answers,
                                                         std::move(seams), program);
  if (status == 0) out << "Aggregation finished.\n";
  return status;
}

}  // namespace tessaly::app::tsly
