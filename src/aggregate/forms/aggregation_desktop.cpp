#include "aggregate/forms/aggregation_desktop.h"

#include "aggregate/captions.h"
#include "aggregate/forms/frm_agg_params.h"
#include "aggregate/forms/frm_agg_select.h"
#include "aggregate/forms/frm_replacements.h"
#include "aggregate/parent_series.h"
#include "aggregate/rules_binding.h"
#include "genseries/forms/frm_adjust.h"
#include "genseries/forms/frm_dialogs.h"
#include "genseries/variables.h"

namespace tessaly::aggregate {

namespace {
// The captions before the parameters are answered follow the dialog's last showing.
struct LastAnswers {
  bool mixed = false;
  bool bottom_up = true;
};
LastAnswers& Last() {
  static LastAnswers last;
  return last;
}

// The Add Series wizard on the parent, its choices saved as the project's rwf.his, then the
// generator on GROUPT.ASC; a cancel of the wizard ends the aggregation.
class WizardSeriesAdder : public ParentSeriesAdder {
 public:
  explicit WizardSeriesAdder(const DesktopAggregation& c) : c_(c) {}
  Outcome Add(const fs::path& parent_asc) override {
    auto request = genseries::AskForSeries(c_.parent, parent_asc, parent_asc.filename().string(),
                                           genseries::VariablesFileOf(*c_.project, c_.project_file),
                                           c_.project->InDirectory(), c_.project->OutDirectory(),
                                           c_.program_folder);
    if (!request) return Outcome::Canceled;
    AddGeneratedSeriesToParent(request->variables, parent_asc, request->manual, c_.program_folder);
    return Outcome::Added;
  }

 private:
  const DesktopAggregation& c_;
};
}  // namespace

bool mnu_Agg(const DesktopAggregation& c) {
  if (!c.project) return false;
  auto view = c.view ? c.view : std::make_shared<batch::RunView>();
  view->ShowReportTree(false);
  ShowAdvisory(c.program_folder, c.project->InDirectory());
  std::vector<std::string> files;
  for (int i = 0; i < static_cast<int>(c.project->Count()); ++i) files.push_back(c.project->List(i));

  bool ran = false;
  frmAggSelect* select = nullptr;
  auto finish = [&](const std::vector<std::string>& chosen) {
    SelectionContext context{SelectionFlow::Aggregation, c.project->InDirectory(),
                             [&](const std::string& s) { view->SetStatus(s); },
                             StageCaption(stage::kValidatingChildren, Last().mixed, Last().bottom_up)};
    const SelectionResult selection = ValidateChildren(chosen, context);
    if (selection.outcome == SelectionResult::Outcome::CountRefused) return false;
    if (selection.outcome == SelectionResult::Outcome::FileRefused) return true;
    select->hide();
    view->SetStatus(status::kSelectParameters);
    frmAggParams params({c.program_folder, c.project->InDirectory(), selection.chosen,
                         selection.all_names_numeric, selection.keep_seasonality,
                         selection.first_forecast_count,
                         [&]() -> std::optional<std::string> {
                           auto date = genseries::AskFirstObservation(c.parent);
                           if (!date) return std::nullopt;
                           return genseries::FormatVariableDate(*date);
                         }},
                        c.parent);
    const bool answered = params.exec() == QDialog::Accepted;
    Last() = {params.Params().Value(Box::MixedYes), params.Params().Value(Box::PtoC)};
    if (!answered) {
      AggregationRun::CancelBeforeRun(c.program_folder, view);
      return true;
    }
    AggregationSeams seams;
    seams.rules = std::make_shared<AggregationRulesWizard>(c.program_folder, c.wizard_window);
    seams.view = view;
    seams.reports = c.reports;
    seams.tree = c.tree;
    seams.add_series = std::make_shared<WizardSeriesAdder>(c);
    seams.replacements = DesktopReplacementChooser(c.parent, c.project->InDirectory(), selection.keep_observations,
                                                   params.Params().Options().NumberOfForecasts);
    AggregationRun run(SetupFromParams(params.Params(), selection, *c.project, c.project_file, c.program_folder),
                       std::move(seams));
    run.Run();
    ran = true;
    return true;
  };
  frmAggSelect dialog(SelectionFlow::Aggregation, files, finish, c.parent);
  select = &dialog;
  if (dialog.exec() != QDialog::Accepted) DeleteParamsRecord(c.program_folder);
  return ran;
}

}  // namespace tessaly::aggregate
