#include "pool/pool_run.h"

#include <system_error>

#include "batch/batch_texts.h"
#include "batch/engine/engine_client.h"
#include "batch/run_outputs.h"
#include "dataset/asc_dataset.h"
#include "dataset/validation.h"
#include "platform/dialogs.h"
#include "platform/numfmt.h"
#include "platform/paths.h"
#include "platform/textfile.h"
#include "pool/pool_stack.h"
#include "pool/pool_texts.h"
#include "shell/ftables.h"

namespace tessaly::pool {

using platform::Dialogs;
namespace mb = platform::mb;

namespace {

void Remove(const fs::path& folder, const std::string& name) {
  while (platform::RemoveNoCase(folder, name)) {
  }
}

// Objectives 1 to 3 of a dataset (lines 1 to 3); what cannot be read counts 0.
std::array<int16_t, 3> ReadObjectives(const fs::path& asc) {
  std::array<int16_t, 3> objectives{};
  platform::LineReader in(asc);
  for (int16_t& o : objectives) {
    auto line = in.Next();
    if (!line) break;
    auto value = platform::ToInt16(platform::Val(*line));
    o = value.ok() ? value.value : 0;
  }
  return objectives;
}

void CopyIfThere(const fs::path& from_folder, const std::string& from, const fs::path& to) {
  // Not reported yet: a copy that fails leaves the target as it was.
  if (auto found = platform::FindNoCase(from_folder, from)) (void)platform::CopyFileOver(*found, to);
}

}  // namespace

PoolRun::PoolRun(PoolOptions options, batch::ReportTree& tree)
    : options_(std::move(options)),
      tree_(tree),
      run_(batch::RunOptions{options_.program_folder.empty() ? platform::ProgramFolder() : options_.program_folder,
                             options_.no_graphs, options_.no_trend_at_start},
           tree),
      wizard_(std::make_shared<batch::ExistingRulesFiles>()),
      view_(std::make_shared<batch::RunView>()) {
  if (options_.program_folder.empty()) options_.program_folder = platform::ProgramFolder();
}

void PoolRun::SetView(std::shared_ptr<batch::RunView> view) {
  view_ = view;
  run_.SetView(std::move(view));
}

void PoolRun::Status(const std::string& text) {
  status_ = text;
  view_->SetStatus(text);
}

bool PoolRun::Open(batch::cBatchFile& project) {
  Remove(options_.program_folder, "Processing Errors.Err");
  Remove(options_.program_folder, "Process Errors.Err");
  view_->ShowReportTree(false);
  output_path_ = platform::EnsureSubfolder(project.InDirectory(), "OUTPUT");
  if (project.Changed()) {
    std::string question = std::string(texts::kOverwrite1) + "\"" + project.BatchName() + "\"" + texts::kOverwrite2;
    if (Dialogs().Message(question, mb::YesNo + mb::Question, batch::texts::kAppTitle) != mb::Yes) return false;
  }
  return true;
}

PoolOutcome PoolRun::Run(batch::cBatchFile& project, const std::vector<std::string>& chosen) {
  PoolOutcome outcome;
  const fs::path in_dir = project.InDirectory();
  output_path_ = platform::EnsureSubfolder(in_dir, "OUTPUT");
  run_.SetOutputPath(output_path_);
  auto incomplete = [&](PoolEnd end) {
    Status(texts::kIncomplete);
    outcome.end = end;
    return outcome;
  };
  if (chosen.size() < 2) return incomplete(PoolEnd::Incomplete);

  // The stack: the first file's shape, every file's values, the old stack gone.
  std::vector<fs::path> files;
  for (const std::string& name : chosen) files.push_back(platform::ResolveNoCase(in_dir, name));
  auto shape = ReadStackShape(files.front());
  if (!shape) return incomplete(PoolEnd::Incomplete);
  auto pooled = ReadPooledData(files, *shape);
  RemoveOldStack(in_dir, output_path_);
  std::array<int16_t, 3> objectives{};
  if (project.Count()) objectives = ReadObjectives(platform::ResolveNoCase(in_dir, project.List(0)));
  const fs::path stack = in_dir / texts::kStackFile;
  // A stack that cannot be written fails the check that follows, which says why.
  (void)platform::WriteAllLines(stack, TotalPoolLines(objectives, *shape, pooled));

  // The stack must fit the system's limits like any dataset.
  Status(texts::kValidatingStack);
  bool cancel = false;
  if (!dataset::ValidateAscSize_And_NSeries(stack, cancel, texts::kStackFile))
    return incomplete(PoolEnd::Incomplete);
  Status(texts::kValidated);
  Remove(output_path_, std::string(texts::kStackName) + ".PRO");

  if (!SelectRunOptionsConditions(project, stack)) {
    Dialogs().Message(texts::kCancelled, mb::OKOnly, texts::kFyi);
    Status(texts::kIncomplete);
    view_->SetRunMenusEnabled(true, true);
    Status(std::string(texts::kOpened1) + platform::WithTrailingSlash(project.InDirectory()) +
           project.BatchName() + texts::kOpened2);
    run_.Session().flags.UnivariateRun = run_.Session().flags.CausalRun = false;
    outcome.end = PoolEnd::Cancelled;
    return outcome;
  }
  outcome.end = RunParentChild(project, chosen, outcome);
  Remove(options_.program_folder, texts::kParamsFile);
  Remove(options_.program_folder, texts::kPoolMarker);
  // The stack's groups must not pool the datasets of a later run.
  Remove(options_.program_folder, texts::kGroupList);
  run_.Session().flags.UnivariateRun = run_.Session().flags.CausalRun = false;
  Status(outcome.end == PoolEnd::Finished ? texts::kFinished : texts::kIncomplete);
  if (auto errors = platform::ReadWholeFile(options_.program_folder / "Process Errors.Err"))
    Dialogs().Message(std::string(batch::texts::kReasons1) + "\r\n\r\n" + *errors + "\r\n" +
                          batch::texts::kReasons2,
                      mb::OKOnly, texts::kFyi);
  return outcome;
}

bool PoolRun::SelectRunOptionsConditions(batch::cBatchFile& project, const fs::path& stack) {
  Remove(options_.program_folder, "Processing Errors.Err");
  Remove(options_.program_folder, "Process Errors.Err");
  view_->ShowReportTree(false);
  // The stack is the measure of the run: its seasonality and kind.
  batch::TakeRunShapeFrom(stack, run_.Session().flags);
  Remove(options_.program_folder, texts::kParamsFile);
  // Not reported yet: without the marker the engine works as if it were not there.
  (void)platform::WriteAllLines(options_.program_folder / texts::kParamsFile, {"1"});
  Status(texts::kSelectRules);
  const batch::RunFlags& flags = run_.Session().flags;
  batch::WizardRequest request{batch::ProjectStem(project.BatchName()), stack, flags.SeriesProperties,
                               flags.UnivariateRun};
  return wizard_->Show(request);
}

PoolEnd PoolRun::RunParentChild(batch::cBatchFile& project, const std::vector<std::string>& chosen,
                                PoolOutcome& outcome) {
  const fs::path& program = options_.program_folder;
  run_.SetRulesWizard(wizard_);
  view_->SetRunMenusEnabled(false, false);
  if (!run_.StartEngine()) {
    view_->SetRunMenusEnabled(true, true);
    return PoolEnd::Incomplete;
  }
  run_.BeginFlowRun();
  for (const char* name : batch::ReportCleanList()) Remove(program, name);

  const int k = static_cast<int>(chosen.size());
  PoolabilityInputs& kept = outcome.inputs;
  kept.series_name.assign(k + 1, "");
  kept.series_error.assign(k + 1, 0.0);
  bool all_clean = true;
  // The series one by one, then the stack: the F-test needs the stack last.
  for (int i = 0; i <= k; ++i) {
    const std::string name = i < k ? chosen[i] : std::string(texts::kStackFile);
    const std::string stem = dataset::AscStem(name);
    for (const char* ext : {".PRO", ".EQU"}) {
      Remove(program, stem + ext);
      Remove(output_path_, stem + ext);
    }
    // Every pass is given the same rules.
    // Not reported yet: a copy that fails leaves the pass the ENGINE.GO it finds.
    if (auto usr = platform::FindNoCase(program, "ENGINE.USR")) (void)platform::CopyFileOver(*usr, program / "ENGINE.GO");
    batch::BatchRun::SeriesPass pass{name, -1, i + 1, k + 1, texts::kProcessing};
    auto result = run_.RunFlowSeries(project, pass);
    if (result == batch::BatchRun::SeriesOutcome::Canceled) {
      run_.Session().engine.engine.reset();
      view_->SetRunMenusEnabled(true, true);
      return PoolEnd::Cancelled;
    }
    if (result != batch::BatchRun::SeriesOutcome::Clean) {
      all_clean = false;
      continue;
    }
    const auto& arrays = run_.LastArrays();
    kept.series_name[i] = dataset::TrimBlanks(name);
    kept.series_error[i] = arrays.doubles20.size() > 8 ? arrays.doubles20[8] : 0.0;
    if (i == k) {
      kept.numpar = arrays.doubles20.size() > 10 ? arrays.doubles20[10] : 0.0;
      kept.total_observations = run_.LastDataset().DataProp(5);
    }
  }
  FileStackReports(project, outcome);
  if (auto coefficients = platform::FindNoCase(program, "POOLCOEF.CSV"))
    Dialogs().Message(std::string(texts::kReviewCoefficients) + coefficients->string() + "\r\n\r\n", mb::OKOnly,
                      texts::kFyi);
  run_.Session().engine.engine.reset();
  view_->SetRunMenusEnabled(true, true);
  return all_clean ? PoolEnd::Finished : PoolEnd::Incomplete;
}

void PoolRun::FileStackReports(batch::cBatchFile& project, PoolOutcome& outcome) {
  const fs::path& program = options_.program_folder;
  CopyIfThere(program, "POOLCOEF.CSV", output_path_ / "POOLCOEF.TXT");
  CopyIfThere(program, "PARCHRPT.CSV", output_path_ / "PARAMETER.TXT");
  CopyIfThere(program, "VARCHRPT.CSV", output_path_ / "VARIANCE.TXT");
  // The F-test, written over an earlier one, under the project's name and as the tree's row.
  Poolability result = ComputePoolability(outcome.inputs);
  auto lines = AnalysisLines(outcome.inputs, result);
  outcome.analysis = output_path_ / AnalysisFileName(project.BatchName());
  Remove(output_path_, outcome.analysis.filename().string());
  Remove(output_path_, "ANALYSIS.TXT");
  // The pooling run's finish goes on past a failed write without a message, as its steps do.
  (void)platform::WriteAllLines(outcome.analysis, lines);
  (void)platform::WriteAllLines(output_path_ / "ANALYSIS.TXT", lines);
  outcome.poolability = result;
  if (!platform::ExistsNoCase(program, "FTable1.html")) shell::LoadFTable1Link(program);
  if (!platform::ExistsNoCase(program, "FTable2.html")) shell::LoadFTable2link(program);
  CopyIfThere(program, "FTable1.html", output_path_ / "FTable1.html");
  CopyIfThere(program, "FTable2.html", output_path_ / "FTable2.html");
  for (const PoolNodeRow& row : kPoolNodeRows)
    if (platform::ExistsNoCase(output_path_, row.file))
      tree_.Add({row.key, row.label, "", batch::NodeKind::Other, row.key, ""});
}

}  // namespace tessaly::pool
