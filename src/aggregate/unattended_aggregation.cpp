#include "aggregate/unattended_aggregation.h"

#include "aggregate/captions.h"
#include "aggregate/rules_binding.h"
#include "platform/dialogs.h"
#include "platform/paths.h"

namespace tessaly::aggregate {

namespace {

// Answers the questions in the order the dialog reveals them; false when the dialog was
// given up on the way.
bool Answer(AggParams& params, const AggregationAnswers& a) {
  params.Click(a.parent_forecasts ? Box::ForecastsYes : Box::ForecastsNo, true);
  if (params.state() != AggParams::State::Open) return false;
  if (!params.Options().ParentForecastsProvided) {
    params.Click(a.parent_asc ? Box::AscYes : Box::AscNo, true);
    if (params.state() != AggParams::State::Open) return false;
  }
  const ParamsVisibility& v = params.Visible();
  if (v.mixed) params.Click(a.mixed_frequency ? Box::MixedYes : Box::MixedNo, true);
  if (v.add_series) params.Click(a.add_series ? Box::AddSeriesYes : Box::AddSeriesNo, true);
  if (v.causal) params.Click(a.causal ? Box::CausalYes : Box::CausalNo, true);
  if (v.rules) params.Click(a.user_rules ? Box::Automatic1 : Box::Automatic2, true);
  if (v.fixed_effects) params.Click(a.no_fixed_effects ? Box::FixedEffectsYes : Box::FixedEffectsNo, true);
  params.Click(a.top_down ? Box::CtoP : Box::PtoC, true);
  if (a.mint) params.ChooseMinT(true);
  if (a.forecasts && (v.number_enabled || params.Options().ParentForecastsProvided)) {
    params.SetNumberText(*a.forecasts);
    params.LeaveNumberField();
  }
  return params.Ok();
}

}  // namespace

void RestoreChildrenFromBackup(const fs::path& in_directory, const std::vector<std::string>& children) {
  auto backup = platform::FindNoCase(in_directory, "ASCBACKUP");
  if (!backup) return;
  for (const std::string& name : children)
    if (auto kept = platform::FindNoCase(*backup, name))
      // A child that cannot be restored keeps its backup in ASCBACKUP, where the person finds it.
      (void)platform::CopyFileOver(*kept, platform::ResolveNoCase(in_directory, kept->filename().string()));
}

int RunAggregationUnattended(const fs::path& project_file, const AggregationAnswers& answers,
                             AggregationSeams seams, const fs::path& program_folder) {
  batch::cBatchFile project(program_folder);
  if (!project.Load(project_file)) return 2;
  const fs::path in_directory = project.InDirectory();
  ShowAdvisory(program_folder, project.InDirectory());

  SelectionContext context{SelectionFlow::Aggregation, in_directory,
                           [&](const std::string& s) { if (seams.view) seams.view->SetStatus(s); }, ""};
  const SelectionResult selection = ValidateChildren(answers.children, context);
  if (selection.outcome != SelectionResult::Outcome::Passed) return 2;

  if (seams.view) seams.view->SetStatus(status::kSelectParameters);
  ParamsSetup setup{program_folder, in_directory, selection.chosen, selection.all_names_numeric,
                    selection.keep_seasonality, selection.first_forecast_count, nullptr};
  AggParams params(setup);
  if (!Answer(params, answers)) {
    if (params.RunCanceled()) AggregationRun::CancelBeforeRun(program_folder, seams.view);
    return 2;
  }
  if (!seams.rules) seams.rules = std::make_shared<AggregationRulesWizard>(program_folder, nullptr);
  AggregationRun run(SetupFromParams(params, selection, project, project_file, program_folder),
                     std::move(seams));
  const AggregationRun::Ending ending = run.Run();
  RestoreChildrenFromBackup(in_directory, selection.chosen);
  return ending == AggregationRun::Ending::Finished ? 0 : 1;
}

}  // namespace tessaly::aggregate
