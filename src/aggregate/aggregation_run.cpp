#include "aggregate/aggregation_run.h"

#include "aggregate/captions.h"
#include "aggregate/parent_child_files.h"
#include "aggregate/reconcile.h"
#include "aggregate/replacements.h"
#include "batch/batch_texts.h"
#include "batch/engine/engine_client.h"
#include "batch/run_outputs.h"
#include "dataset/asc_dataset.h"
#include "dataset/validation.h"
#include "platform/dialogs.h"
#include "platform/numfmt.h"
#include "platform/paths.h"
#include "platform/textfile.h"

#include <cmath>
#include <map>

namespace tessaly::aggregate {

namespace {

using platform::Dialogs;
namespace mb = platform::mb;

constexpr const char* kFyi = "FYI";
constexpr const char* kCanceledByUser = "The process has been cancelled by the user.";
constexpr const char* kCanceled = "The process has been cancelled.";

// What the parent's earlier run left in the output folder.
const char* const kParentOutputs[] = {
    "GROUPTactfitfore.jpg", "GROUPTINTRVENT.HTM", "GROUPTSTAT.HTM",    "GROUPTRHSIDE.TXT",
    "GROUPTEQUATION.TXT",   "GROUPTADJUSTED.TXT", "GROUPT.htm",        "GROUPT.PRO",
    "GROUPTOUTCAST.TXT",    "GROUPTVERBAL.TXT"};

void RemoveAll(const fs::path& folder, const std::string& name) {
  while (platform::RemoveNoCase(folder, name)) {
  }
}

std::string Stem(const std::string& name) {
  return name.size() >= 4 ? name.substr(0, name.size() - 4) : std::string();
}

bool WriteLines(const fs::path& path, const std::vector<std::string>& lines) {
  std::error_code ec;
  fs::remove(path, ec);
  return platform::WriteAllLines(path, lines);
}

// The objective #1 the aggregation's rules wizard chose, for every file the run reads.
class ObjectiveFromRules : public batch::ExistingRulesFiles {
 public:
  explicit ObjectiveFromRules(std::shared_ptr<AggregationRules> rules) : rules_(std::move(rules)) {}
  std::optional<int16_t> ObjectiveOne() const override { return rules_->ObjectiveOne(); }

 private:
  std::shared_ptr<AggregationRules> rules_;
};

}  // namespace

// Keeps each good series' in-sample errors (actual less fitted) for the MinT reconciliation,
// and hands the graphs on to the program's reports when there are any.
class AggregationRun::ResidualRecorder : public batch::RunReports {
 public:
  explicit ResidualRecorder(std::shared_ptr<batch::RunReports> inner) : inner_(std::move(inner)) {}
  std::array<bool, 9> DrawGraphs(const batch::SeriesResult& s) override {
    std::vector<double>& errors = errors_[platform::ToUpper(s.stem)];
    const int n = s.dataset.DataProp(5), output = s.dataset.NumberOfSeries();
    errors.assign(static_cast<std::size_t>(std::max(n, 0)), std::nan(""));
    for (int t = 0; t < n && t < static_cast<int>(s.arrays.doubles10000a.size()); ++t) {
      const double fitted = s.arrays.doubles10000a[static_cast<std::size_t>(t)];
      if (fitted != quorvane::kMissingValue) errors[static_cast<std::size_t>(t)] = s.dataset.Observation(output, t + 1) - fitted;
    }
    return inner_ ? inner_->DrawGraphs(s) : std::array<bool, 9>{};
  }
  void WriteInterventPage(const batch::SeriesResult& s, const fs::path& target) override {
    if (inner_) inner_->WriteInterventPage(s, target);
  }
  void WriteLinkTree(const batch::cBatchFile& project, const fs::path& output_path) override {
    if (inner_) inner_->WriteLinkTree(project, output_path);
  }
  const std::vector<double>* Of(const std::string& stem) const {
    auto it = errors_.find(platform::ToUpper(stem));
    return it == errors_.end() ? nullptr : &it->second;
  }

 private:
  std::shared_ptr<batch::RunReports> inner_;
  std::map<std::string, std::vector<double>> errors_;
};

// The run's own status texts go through the caption family: "Processing <name>" of the
// per-series steps becomes the family's "Processing <name>".
class AggregationRun::CaptionView : public batch::RunView {
 public:
  CaptionView(AggregationRun& owner, std::shared_ptr<batch::RunView> inner)
      : owner_(owner), inner_(std::move(inner)) {}
  void SetStatus(const std::string& text) override {
    const std::string processing = batch::texts::kProcessing;
    if (text.rfind(processing, 0) == 0)
      owner_.SetStatus(owner_.Caption(stage::kProcessing + text.substr(processing.size())));
    else
      owner_.SetStatus(text);
  }
  void ShowReportTree(bool visible) override { inner_->ShowReportTree(visible); }
  void SetRunMenusEnabled(bool enabled, bool pool_too) override {
    inner_->SetRunMenusEnabled(enabled, pool_too);
  }
  void HidePreviousReports() override { inner_->HidePreviousReports(); }

 private:
  AggregationRun& owner_;
  std::shared_ptr<batch::RunView> inner_;
};

AggregationSetup SetupFromParams(const AggParams& params, const SelectionResult& selection,
                                 batch::cBatchFile& project, fs::path project_file,
                                 fs::path program_folder) {
  AggregationSetup s;
  s.program_folder = std::move(program_folder);
  s.project = &project;
  s.project_file = std::move(project_file);
  s.selection = selection;
  s.options = params.Options();
  s.mixed_frequency = params.Value(Box::MixedYes);
  s.add_series = params.Value(Box::AddSeriesYes);
  s.causal = params.Value(Box::CausalYes);
  s.qvx_rules = !params.Value(Box::Automatic1);
  s.bottom_up_box = params.Value(Box::PtoC);
  s.period_table = !params.Value(Box::MixedNo);
  return s;
}

AggregationRun::AggregationRun(AggregationSetup setup, AggregationSeams seams)
    : s_(std::move(setup)), seams_(std::move(seams)) {
  if (!seams_.view) seams_.view = std::make_shared<batch::RunView>();
  in_directory_ = s_.project->InDirectory();
  if (seams_.tree) tree_ = seams_.tree;
  replacement_.assign(s_.selection.chosen.size(), kNoReplacement);
}

std::string AggregationRun::Caption(const std::string& stage) const {
  return StageCaption(stage, s_.mixed_frequency, s_.bottom_up_box);
}

void AggregationRun::SetStatus(const std::string& text) {
  status_ = text;
  seams_.view->SetStatus(text);
}

void AggregationRun::CancelBeforeRun(const fs::path& program_folder,
                                     const std::shared_ptr<batch::RunView>& view) {
  Dialogs().Message(kCanceledByUser, mb::OKOnly, kFyi);
  DeleteParamsRecord(program_folder);
  if (view) view->SetStatus(status::kIncomplete);
}

bool AggregationRun::SelectRunOptionsConditions(RunStage stage, const fs::path& asc) {
  RemoveAll(s_.program_folder, "Processing Errors.Err");
  RemoveAll(s_.program_folder, "Process Errors.Err");
  seams_.view->ShowReportTree(false);
  output_path_ = platform::EnsureSubfolder(in_directory_, "OUTPUT");
  run_->SetOutputPath(output_path_);
  forecast_bound_ = batch::TakeRunShapeFrom(asc, run_->Session().flags).DataProp[8];
  return seams_.rules->Select(stage, s_.qvx_rules, asc, batch::ProjectStem(s_.project->BatchName()));
}

bool AggregationRun::BuildParent() {
  SetStatus(Caption(stage::kParentMaking));
  AscShape shape{s_.selection.keep_seasonality, s_.selection.keep_major_period,
                 s_.selection.keep_minor_period, s_.selection.keep_observations,
                 s_.options.NumberOfForecasts, s_.options.FixedEffectsChoice};
  const fs::path parent = platform::ResolveNoCase(in_directory_, kParentAsc);
  WriteLines(parent, ParentAscLines(shape, histories_, s_.options.FirstObservationDate));
  SetStatus(Caption(stage::kParentValidating));
  bool cancel = false;
  if (!dataset::ValidateAscSize_And_NSeries(parent, cancel, kParentAsc) || cancel) return false;
  if (s_.add_series) {
    SetStatus(Caption(stage::kParentAdding));
    const int seasonality = platform::ValInt(s_.selection.keep_seasonality);
    const bool allowed = seasonality == 1 || seasonality == 4 || seasonality == 5 ||
                         seasonality == 7 || seasonality == 12 || seasonality == 52;
    if (!allowed) {
      Dialogs().Message("Generated Series can only be added to a parent series with a seasonality "
                        "of 1, 4, 5, 7, 12, 52.", mb::OKOnly, kFyi);
    } else if (!seams_.add_series) {
      Dialogs().Message("Generated series cannot be added in this build of the program; the parent is "
                        "processed as it was created.", mb::OKOnly, kFyi);
    } else if (seams_.add_series->Add(parent) == ParentSeriesAdder::Outcome::Canceled) {
      add_series_canceled_ = true;
      return false;
    }
  }
  return true;
}

bool AggregationRun::RewriteChildren() {
  SetStatus(Caption(stage::kChildrenMaking));
  ParentProps parent{"0", s_.options.NumberOfForecasts};
  if (!s_.options.ParentForecastsProvided) {
    dataset::AscHeader header;
    if (dataset::ReadAscHeader(platform::ResolveNoCase(in_directory_, kParentAsc), header).ok()) {
      parent.future_count = std::to_string(header.DataProp[6]);
      parent.forecast_count = std::to_string(header.DataProp[8]);
    }
  }
  std::vector<double> parent_forecasts;
  if (s_.causal) {
    const fs::path folder = s_.options.ParentForecastsProvided ? in_directory_ : output_path_;
    parent_forecasts = ForecastColumn(platform::ResolveNoCase(folder, "GROUPT.PRO"),
                                      static_cast<long>(platform::Val(s_.options.NumberOfForecasts)));
  }
  AscShape shape{s_.selection.keep_seasonality, s_.selection.keep_major_period,
                 s_.selection.keep_minor_period, s_.selection.keep_observations,
                 s_.options.NumberOfForecasts, s_.options.FixedEffectsChoice};
  for (std::size_t c = 0; c < s_.selection.chosen.size(); ++c) {
    const std::string& name = s_.selection.chosen[c];
    SetStatus(Caption(stage::kCreating + name));
    const fs::path file = platform::ResolveNoCase(in_directory_, name);
    WriteLines(file, ChildAscLines(shape, parent, name, histories_.child[c], histories_, s_.causal,
                                   parent_forecasts));
    SetStatus(Caption(stage::kValidating + name));
    bool cancel = false;
    (void)dataset::ValidateAscSize_And_NSeries(file, cancel, name);  // a failure sets `cancel` too
    if (cancel) return false;
    if (s_.causal && !replacements_chosen_)
      // MODIFIEDASC is a copy for the person's review; the run does not read it.
      (void)platform::CopyFileOver(file, platform::EnsureSubfolder(in_directory_, "MODIFIEDASC") / file.filename());
  }
  return true;
}

bool AggregationRun::RunChildren() {
  const auto& chosen = s_.selection.chosen;
  if (seams_.replacements &&
      Dialogs().Message("Do you wish to replace any children asc files with an asc containing a priori data?",
                        mb::YesNo + mb::Question, kReplaceTitle) == mb::Yes) {
    auto chosen_replacements = seams_.replacements(chosen);
    if (!chosen_replacements) return false;
    if (chosen_replacements->size() == chosen.size()) {
      replacement_ = *chosen_replacements;
      for (const auto& r : replacement_) replacements_chosen_ |= r != kNoReplacement;
    }
  }
  const int count = static_cast<int>(chosen.size());
  for (int c = 0; c < count; ++c) {
    const bool replaced = replacements_chosen_ && replacement_[c] != kNoReplacement;
    const std::string file = replaced ? dataset::TrimBlanks(replacement_[c]) : chosen[c];
    RemoveAll(output_path_, Stem(file) + ".PRO");
    const auto outcome = run_->RunFlowSeries(*s_.project, {file, -1, c + 1, count, ""});
    if (outcome == batch::BatchRun::SeriesOutcome::Canceled) return false;
    const bool good = outcome == batch::BatchRun::SeriesOutcome::Clean;
    any_good_ |= good;
    last_run_good_ = good;
    last_series_stem_ = Stem(file);
  }
  return true;
}

ReconcileInput AggregationRun::ReconcileSetup() {
  ReconcileInput in;
  in.output_path = output_path_;
  in.chosen = s_.selection.chosen;
  in.replacement = replacement_;
  in.number_of_forecasts = s_.options.NumberOfForecasts;
  in.forecast_bound = forecast_bound_;
  in.batch_name = s_.project->BatchName();
  in.direction = s_.options.ReconcileDirection;
  in.mixed_frequency = s_.period_table;
  in.stage_caption = Caption(in.direction == 2   ? stage::kParentBoss
                             : in.direction == 3 ? stage::kEveryoneCounts
                                                 : stage::kChildrenBoss);
  if (in.direction == 3 && recorder_) {
    std::vector<std::vector<double>> errors;
    if (auto* parent = recorder_->Of(kParentName)) errors.push_back(*parent);
    for (std::size_t c = 0; c < in.chosen.size() && errors.size() == c + 1; ++c) {
      const std::string name = ChildForecastName(in, c);
      if (auto* child = recorder_->Of(name.substr(0, name.size() - 4))) errors.push_back(*child);
    }
    if (errors.size() == in.chosen.size() + 1) in.residuals = std::move(errors);
  }
  in.status = [this](const std::string& text) { SetStatus(text); };
  return in;
}

void AggregationRun::HandBackChildren() {
  for (const std::string& name : s_.selection.chosen) {
    RemoveAll(in_directory_, name);
    if (auto kept = platform::FindNoCase(s_.program_folder / "AGGBACKUP", name))
      (void)batch::MoveFileOver(*kept, in_directory_ / kept->filename());  // else kept in AGGBACKUP
  }
}

void AggregationRun::ReportRunErrors() {
  if (auto text = platform::ReadWholeFile(s_.program_folder / "Process Errors.Err"))
    Dialogs().Message(std::string(batch::texts::kReasons1) + "\r\n\r\n" + *text + "\r\n" +
                          batch::texts::kReasons2,
                      mb::OKOnly, kFyi);
}

AggregationRun::Ending AggregationRun::CancelEnding(const std::string& message) {
  Dialogs().Message(message, mb::OKOnly, kFyi);
  HandBackChildren();
  SetStatus(status::kIncomplete);
  seams_.view->SetRunMenusEnabled(true, true);
  SetStatus(status::Opened(s_.project->InDirectory(), s_.project->BatchName()));
  if (run_) run_->Session().flags.UnivariateRun = run_->Session().flags.CausalRun = false;
  DeleteParamsRecord(s_.program_folder);
  return Ending::Canceled;
}

AggregationRun::Ending AggregationRun::Run() {
  const bool no_trend = platform::ExistsNoCase(s_.program_folder, "NOTREND.QVX");
  // MinT needs every series' errors, which the run hands over with its graphs.
  const bool mint = s_.options.ReconcileDirection == 3;
  run_ = std::make_unique<batch::BatchRun>(
      batch::RunOptions{s_.program_folder, !seams_.reports && !mint, no_trend}, *tree_);
  if (mint) {
    recorder_ = std::make_shared<ResidualRecorder>(seams_.reports);
    run_->SetReports(recorder_);
  }
  run_->SetView(std::make_shared<CaptionView>(*this, seams_.view));
  run_->SetRulesWizard(std::make_shared<ObjectiveFromRules>(seams_.rules));
  if (seams_.reports && !mint) run_->SetReports(seams_.reports);
  if (seams_.engine_call) run_->SetEngineCall(seams_.engine_call);
  if (seams_.engine_create) run_->SetEngineCreate(seams_.engine_create);
  output_path_ = platform::EnsureSubfolder(in_directory_, "OUTPUT");
  run_->SetOutputPath(output_path_);
  seams_.view->SetRunMenusEnabled(false, false);
  run_->Session().engine.canceled = false;
  if (!run_->StartEngine()) return CancelEnding(kCanceledByUser);

  histories_ = LoadChildren(in_directory_, s_.selection.chosen);
  if (s_.options.ParentForecastsProvided) {
    Dialogs().Message("Since you have provided forecasts for the Parent, the Parent ASC file will not "
                      "be processed.\r\r", mb::OKOnly, kFyi);
    for (const char* name : kParentOutputs) RemoveAll(output_path_, name);
  } else {
    if (!s_.options.ParentAscProvided) {
      if (!BuildParent()) {
        if (add_series_canceled_) return CancelEnding(kCanceled);
        SetStatus(status::kIncomplete);
        seams_.view->SetRunMenusEnabled(true, true);
        DeleteParamsRecord(s_.program_folder);
        return Ending::Incomplete;
      }
      RemoveAll(output_path_, "GROUPT.PRO");
    }
    SetStatus(Caption(stage::kParentRunning));
    tree_->Clear();
    const fs::path parent = platform::ResolveNoCase(in_directory_, kParentAsc);
    if (!SelectRunOptionsConditions(RunStage::Parent, parent)) return CancelEnding(kCanceledByUser);
    RemoveAll(output_path_, "GROUPT.PRO");
    const auto outcome = run_->RunFlowSeries(*s_.project, {kParentAsc, -1, 1, 1, ""});
    if (outcome == batch::BatchRun::SeriesOutcome::Canceled) return CancelEnding(kCanceledByUser);
    const bool good = outcome == batch::BatchRun::SeriesOutcome::Clean;
    last_run_good_ = good;
    last_series_stem_ = kParentName;
  }
  if (!RewriteChildren()) return CancelEnding(kCanceledByUser);
  SetStatus(Caption(stage::kChildrenRunning));
  const fs::path first_child = platform::ResolveNoCase(in_directory_, s_.selection.chosen.front());
  if (!SelectRunOptionsConditions(RunStage::Children, first_child)) return CancelEnding(kCanceledByUser);
  if (!RunChildren()) return CancelEnding(kCanceledByUser);

  if (s_.options.ParentForecastsProvided) {
    s_.options.ReconcileDirection = 2;
    if (auto user = platform::FindNoCase(in_directory_, "GROUPT.PRO")) {
      RemoveAll(output_path_, "GROUPT.PRO");
      // One that cannot be moved stays in the input folder; the reconciliation goes on without it.
      (void)batch::MoveFileOver(*user, output_path_ / "GROUPT.PRO");
    }
  }
  const ReconcileInput input = ReconcileSetup();
  ReconcileForecasts(input);
  if (seams_.reports) seams_.reports->WriteLinkTree(*s_.project, output_path_);
  run_->Session().flags.UnivariateRun = run_->Session().flags.CausalRun = false;
  seams_.view->SetRunMenusEnabled(true, true);
  ShowClosingMessages(input, last_series_stem_);
  SetStatus(last_run_good_ ? status::kFinished : status::kIncomplete);
  ReportRunErrors();
  HandBackChildren();
  for (const char* name : batch::ReportCleanList()) RemoveAll(s_.program_folder, name);
  DeleteParamsRecord(s_.program_folder);
  return last_run_good_ ? Ending::Finished : Ending::Incomplete;
}

}  // namespace tessaly::aggregate
