#include "batch/run.h"

#include <algorithm>
#include <ctime>
#include <system_error>

#include "batch/batch_texts.h"
#include "batch/engine/engine_client.h"
#include "batch/output_owner.h"
#include "batch/run_outputs.h"
#include "dataset/asc_reader.h"
#include "dataset/error_catalogue.h"
#include "dataset/process_errors.h"
#include "dataset/validation.h"
#include "platform/dialogs.h"
#include "platform/paths.h"
#include "platform/progress_wait.h"
#include "platform/text.h"
#include "platform/textfile.h"

namespace tessaly::batch {

using platform::Dialogs;
namespace mb = platform::mb;

namespace {

constexpr int16_t kTrue = -1;
constexpr const char* kProcessErrors = "Process Errors.Err";
constexpr const char* kProcessingErrors = "Processing Errors.Err";

void Remove(const fs::path& folder, const std::string& name) {
  while (platform::RemoveNoCase(folder, name)) {
  }
}

// A fault the run has no outcome for: shown as "Error #<number>: <text>", and the run goes on.
void ShowFault(int number, const std::string& text) {
  Dialogs().Message(std::string(texts::kErrorNo) + std::to_string(number) + ": " + text, mb::OKOnly,
                    texts::kAppTitle);
}

std::string TrimmedName(std::string name) {
  name = platform::Trim(name);
  if (!name.empty() && name.back() == '\0') name.pop_back();
  return name;
}

// Deletes the files (not the folders) in `folder`, so a run's reports never mix with an
// earlier run's.
void RemoveFilesIn(const fs::path& folder) {
  std::error_code ec;
  for (auto it = fs::directory_iterator(folder, ec); !ec && it != fs::directory_iterator();
       it.increment(ec))
    if (it->is_regular_file()) fs::remove(it->path(), ec);
}

// The output series' name as the engine returned it: the first returned property is its
// 1-based place among the series; empty when that place is none of them.
std::string ReturnedSeriesName(const EngineReturn& returned, const quorvane::EngineArrays& a) {
  if (returned.returned_data_prop.size() >= 1) {
    int k = returned.returned_data_prop[0];
    if (k >= 1 && k <= static_cast<int>(a.series_names.size()))
      return TrimmedName(a.series_names[k - 1]);
  }
  return {};
}

// The project's AllComplete: true (-1) when a file was started and never finished (its
// Completed still true), else 1.
void SetAllCompleteFromFiles(cBatchFile& project) {
  project.SetAllComplete(1);
  for (int i = 0; i < static_cast<int>(project.Count()); ++i)
    if (project.Completed(i) == kTrue) {
      project.SetAllComplete(kTrue);
      break;
    }
}

uintmax_t LogSize(const fs::path& log) {
  std::error_code ec;
  uintmax_t size = fs::file_size(log, ec);
  return ec ? 0 : size;
}

// What the run's log gained after its first `from` bytes.
std::string LoggedSince(const fs::path& log, uintmax_t from) {
  auto text = platform::ReadWholeFile(log);
  if (!text || text->size() <= from) return {};
  return text->substr(from);
}

// "15 minutes", "90 seconds".
std::string LimitText(std::chrono::seconds limit) {
  const long n = static_cast<long>(limit.count());
  if (n >= 120 && n % 60 == 0) return std::to_string(n / 60) + " minutes";
  return std::to_string(n) + (n == 1 ? " second" : " seconds");
}

template <typename T>
void Reset(std::vector<T>& v) {
  std::fill(v.begin(), v.end(), T{});
}

}  // namespace

// The arrays of one file, filled anew in the storage of the last one: the arrays keep
// their full bounds, and reusing them spares the run a fresh 13 MB per file.
void FillRequest(const dataset::AscDataset& d, quorvane::EngineArrays& a) {
  a.run_mode = quorvane::kRunModeProject;
  a.array_input = true;
  a.work_folder.clear();
  a.objective_values = d.Objectives.Storage();
  a.property_values = d.DataProp.Storage();
  a.series_names = d.DataNames.Storage();
  a.series_types = d.DataTypes.Storage();
  a.series_data = d.DataValues.Storage();
  a.future_data = d.FutureValues.Storage();
  a.retained_data = d.RetainedValues.Storage();
  Reset(a.integers20);
  Reset(a.strings2250);
  Reset(a.strings400);
  Reset(a.forecast_values);
  Reset(a.doubles10000a);
  Reset(a.doubles10000b);
  Reset(a.doubles10000c);
  Reset(a.doubles745);
  Reset(a.doubles20);
  a.error_code = 0;
}

dataset::AscHeader TakeRunShapeFrom(const fs::path& asc, RunFlags& flags) {
  dataset::AscHeader header;
  dataset::ReadAscHeader(asc, header);
  flags.SeriesProperties = dataset::PropertiesFromHeader(header);
  flags.UnivariateRun = header.DataProp[1] == 1;
  flags.CausalRun = !flags.UnivariateRun;
  return header;
}

const std::array<const char*, 17>& ReportCleanList() {
  static const std::array<const char*, 17> names{
      "killquor.qvx", "engine.qvx",   "levelrpt.csv", "pulserpt.csv", "earlysig.csv",
      "earlysig.dpr", "fore-mon.csv", "fitted.csv",   "forecast.csv", "residualacf.csv",
      "equation.csv", "summape.txt",  "mapecomp.csv", "trendrpt.csv", "poolcoef.csv",
      "parchrpt.csv", "varchrpt.csv"};
  return names;
}

std::string TodayMmDdYy() {
  std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  char text[16];
  std::strftime(text, sizeof text, "%m/%d/%y", &local);
  return text;
}

BatchRun::BatchRun(RunOptions options, ReportTree& tree)
    : options_(std::move(options)),
      tree_(tree),
      wizard_(std::make_shared<ExistingRulesFiles>()),
      reports_(std::make_shared<RunReports>()),
      view_(std::make_shared<RunView>()) {
  if (options_.program_folder.empty()) options_.program_folder = platform::ProgramFolder();
  output_path_ = options_.program_folder / "OUTPUT";
  const fs::path folder = options_.program_folder;
  const fs::path engine_folder = options_.engine_folder.empty() ? folder : options_.engine_folder;
  EngineCallHooks hooks;
  hooks.engine_folder = engine_folder;
  hooks.series_timeout = options_.series_timeout;
  engine_call_ = [folder, hooks](quorvane::EngineArrays& arrays, EngineReturn& returned,
                                 const EngineCallContext& context) {
    return CallEngine(arrays, returned, folder, context, platform::ProgressWaiter(), hooks);
  };
  // The object proves that the engine can be started and is the run's engine until the first
  // call makes its own. The session lives as long as this run, which owns the function.
  engine_create_ = [engine_folder, session = session_.get()](int& number, std::string& description) {
    std::shared_ptr<EngineClient> engine;
    CreateObjectError error;
    if (fCreateObject(kEngineProgID, engine, engine_folder, {}, &error)) {
      session->engine.engine = engine;
      return true;
    }
    number = error.number;
    description = error.description;
    return false;
  };
}

fs::path BatchRun::ProcessErrorsFile() const { return options_.program_folder / kProcessErrors; }

void BatchRun::Status(const std::string& text) {
  status_ = text;
  view_->SetStatus(text);
}

void BatchRun::CleanupReports() {
  for (const char* name : ReportCleanList()) Remove(options_.program_folder, name);
}

void BatchRun::RestoreNoTrend() {
  const fs::path& folder = options_.program_folder;
  bool there = platform::ExistsNoCase(folder, "NOTREND.QVX");
  if (options_.no_trend_at_start && !there)
    // At the end of a run there is no one left to tell; the next start reads the marker as it
    // finds it.
    (void)platform::WriteAllLines(folder / "NOTREND.QVX", {"1"});
  else if (!options_.no_trend_at_start && there)
    Remove(folder, "NOTREND.QVX");
}

fs::path BatchRun::FirstDataset(const cBatchFile& project) const {
  for (size_t i = 0; i < project.Count(); ++i) {
    fs::path path = platform::ResolveNoCase(project.InDirectory(), project.List(static_cast<int>(i)));
    dataset::AscHeader header;
    if (platform::IsReadableFile(path) && dataset::ReadAscHeader(path, header).ok() &&
        header.DataProp[1] >= 1)
      return path;
  }
  return project.Count() ? platform::ResolveNoCase(project.InDirectory(), project.List(0)) : fs::path();
}

void BatchRun::PrepareOutputPath(const cBatchFile& project) {
  std::error_code ec;
  if (!options_.output_path.empty()) {
    fs::create_directories(options_.output_path, ec);
    output_path_ = options_.output_path;
    return;
  }
  fs::path out_dir = project.OutDirectory();
  fs::create_directories(out_dir, ec);
  output_path_ = platform::EnsureSubfolder(out_dir, "OUTPUT");
}

bool BatchRun::PrepareRunKind(const cBatchFile& project) {
  RunFlags& run = session_->flags;
  if (run.UnivariateRun || run.CausalRun) return true;
  dataset::AscHeader header;
  // The first entry that is a readable dataset sets the run's kind: a folder, a broken link
  // or a missing file first in the list is rejected on its own turn and must not make every
  // good file after it "of another seasonality".
  fs::path first = FirstDataset(project);
  if (!first.empty()) dataset::ReadAscHeader(first, header);
  dataset::clSeriesProperties& p = run.SeriesProperties;
  p.SetNumberOfSeries(header.DataProp[1]);
  p.SetSeasonality(header.DataProp[2]);
  p.SetBeginningYear(std::to_string(header.DataProp[3]));
  p.SetBeginningPeriod(header.DataProp[4]);
  p.SetNumberOfObservations(header.DataProp[5]);
  p.SetNumberOfFurtureValues(header.DataProp[6]);
  p.SetNumberOfRetainedValues(header.DataProp[7]);
  p.SetNumberOfForecasts(header.DataProp[8]);
  if (header.DataProp[1] == 1)
    run.UnivariateRun = true;
  else
    run.CausalRun = true;
  return true;
}

bool BatchRun::mnuBatchRun(std::unique_ptr<cBatchFile>& project, const std::optional<fs::path>& save_to) {
  RunFlags& run = session_->flags;
  // Without an open project the Open command is offered; still none, nothing runs.
  if (!project && open_project_) open_project_();
  if (!project) return false;
  // The error logs of an earlier run go, so the reasons shown at the end are this run's.
  Remove(options_.program_folder, kProcessingErrors);
  Remove(options_.program_folder, kProcessErrors);
  // The tree goes while the run prepares; OUTPUT under the project's OutDirectory.
  view_->ShowReportTree(false);
  PrepareOutputPath(*project);
  // Unsaved changes would be overwritten by the run's saves: the person decides first.
  if (project->Changed()) {
    std::string question = std::string(texts::kOverwriteRun1) + " \"" + project->BatchName() + "\"" +
                           texts::kOverwriteRun2;
    if (Dialogs().Message(question, mb::YesNo + mb::Question, texts::kAppTitle) != mb::Yes)
      return false;
    project->SetChanged(false);
  }
  // Another project's reports in this OUTPUT are deleted only if the person agrees.
  const fs::path xml_file = save_to ? *save_to : fs::path(project->OutDirectory()) / project->BatchName();
  if (!ConfirmOutputOwner(output_path_, xml_file)) return false;
  // The first file sets the run's measure; then the rules wizard.
  if (!run.UnivariateRun && !run.CausalRun) {
    PrepareRunKind(*project);
    fs::path first = FirstDataset(*project);
    WizardRequest request{ProjectStem(project->BatchName()), first, run.SeriesProperties, run.UnivariateRun};
    if (!wizard_->Show(request)) {
      run.UnivariateRun = run.CausalRun = false;
      return false;
    }
  }
  // No cancel of an earlier run counts, and the menus that would change the project or the
  // program's folder stay off until the run ends.
  session_->engine.canceled = false;
  view_->SetRunMenusEnabled(false, false);
  // The engine must start before anything is prepared for it.
  int number = 0;
  std::string description;
  if (engine_create_ && !engine_create_(number, description)) {
    ShowFault(number, description);
    run.UnivariateRun = run.CausalRun = false;
    view_->SetRunMenusEnabled(true, true);
    return false;
  }
  // The engine's report files of an earlier call go, and OUTPUT is emptied.
  CleanupReports();
  RemoveFilesIn(output_path_);
  // Without the owner file the folder is still known by the project's menu page.
  (void)WriteOutputOwner(output_path_, xml_file);
  RunEngine(*project, xml_file);
  // A cancel that asked for the program to close closes the main form; the engine's report
  // files in the program's folder go either way.
  if (run.GeneralCancel) view_->UnloadMainForm();
  CleanupReports();
  return true;
}

void BatchRun::RunEngine(cBatchFile& project, const fs::path& xml_file) {
  RunFlags& run = session_->flags;
  // A project over the limit of files is refused whole, before anything changes.
  if (project.Count() > static_cast<size_t>(dataset::MaxAscFilesInProject)) {
    Dialogs().Message(project.BatchName() + texts::kLimit1 + std::to_string(project.Count()) +
                          texts::kLimit2 + std::to_string(dataset::MaxAscFilesInProject) +
                          texts::kLimit3Run,
                      mb::OKOnly, texts::kFyi);
    return;
  }
  // A clean start: no rejections counted, no cancel pending, the arrays ready, the tree and
  // its flags empty, no combined forecasts of an earlier run, no file marked complete.
  run.ErrorCount = 0;
  save_failed_ = false;
  write_failures_ = 0;
  session_->engine.canceled = false;
  if (!dataset_) dataset_ = std::make_unique<dataset::AscDataset>();
  if (!arrays_) arrays_ = std::make_unique<quorvane::EngineArrays>();
  tree_.Clear();
  flags_.Clear();
  Remove(output_path_, CombinedForecastName(project.BatchName()));
  project.SetAllComplete(0);
  platform::RunProgress progress(static_cast<int>(project.Count()));

  // The files in list order. The run's one error handler becomes explicit outcomes:
  //  - input past the end while counting: the line count leaves out a last line that
  //    isn't numeric (CountAscLines);
  //  - a tree index out of bounds: adding a node whose key is taken, or removing one that
  //    isn't there, changes nothing and the run goes on;
  //  - a resource in use: moving an engine file over its target is tried again;
  //  - an overflow (a 16-bit value out of range): the file is malformed, logged as such by
  //    the checks, counted, and the next file follows;
  //  - any other fault of a file: "Error #", the number, ": " and the text are shown and the
  //    run goes on with the next file.
  bool any_report = false;
  bool canceled = false;
  file_reports_.clear();
  for (int i = 0; i < static_cast<int>(project.Count()); ++i) {
    platform::ProgressWaiter().DatasetBegins(i + 1, static_cast<int>(project.Count()), project.List(i));
    FileOutcome outcome = FileOutcome::Next;
    const int16_t errors_before = run.ErrorCount;
    const uintmax_t log_before = LogSize(ProcessErrorsFile());
    std::string fault;
    try {
      SeriesPass pass{project.List(i), i, i + 1, static_cast<int>(project.Count()), texts::kProcessing};
      outcome = RunOneFile(project, pass, xml_file, any_report);
    } catch (const std::system_error& e) {
      fault = e.what();
      ShowFault(e.code().value(), e.what());
    } catch (const std::exception& e) {
      fault = e.what();
      ShowFault(0, e.what());
    }
    file_reports_.push_back(
        DescribeFile(project, i, outcome == FileOutcome::Canceled, errors_before, log_before, fault));
    // A dataset that got no reports keeps its place in the tree, its outcome in the name;
    // its node opens the reason.
    if (const FileReport& r = file_reports_.back(); r.result == FileResult::Rejected || r.result == FileResult::Failed) {
      tree_.Remove(SeriesKey(r.name));
      tree_.Add({SeriesKey(r.name), r.name + (r.result == FileResult::Rejected ? " (rejected)" : " (failed)"), "",
                 NodeKind::Series, "", r.name});
    }
    view_->FileDone(file_reports_.back());
    if (outcome == FileOutcome::Canceled) {
      canceled = true;
      break;
    }
    platform::ProgressWaiter().DatasetEnds();
    // A cancel outside the engine's turn: the dataset in hand is done and filed, the rest
    // stay not run, and the run closes as usual.
    if (platform::ProgressWaiter().StopRequested() && i + 1 < static_cast<int>(project.Count())) {
      Dialogs().Message(kCanceledMessage, mb::OKOnly, kCanceledTitle);
      break;
    }
  }
  platform::ProgressWaiter().StageBegins(platform::RunStage::Filing);

  const std::string project_stem = ProjectStem(project.BatchName());
  if (!canceled) {
    // The nodes that join all series.
    if (project.Count() > 1 && !options_.no_graphs)
      AddAllNodes(tree_, flags_, output_path_, project_stem);
    // The run's kind is forgotten, so the next run takes it from its own first file; then
    // the link-tree site of everything this run made.
    run.UnivariateRun = run.CausalRun = false;
    reports_->FilesDone(file_reports_);
    reports_->WriteLinkTree(project, output_path_);
  }
  progress.End();
  // Where the forecasts are, when any file gave some.
  fs::path combined = output_path_ / CombinedForecastName(project.BatchName());
  if (auto found = platform::FindNoCase(output_path_, CombinedForecastName(project.BatchName()))) {
    combined = *found;
    Dialogs().Message(std::string(texts::kForecasts1) + platform::WithTrailingSlash(output_path_.string()) +
                          texts::kForecasts2 + "\r\n\r\n" + texts::kForecasts3 + combined.string(),
                      mb::OKOnly, texts::kFyi);
  }
  SetAllCompleteFromFiles(project);
  // The project saved with every file's status; the status line says whether any file
  // gave reports; the engine released and the menus back.
  SaveProject(project, xml_file);
  // A dataset whose results could not be written, or a project that could not be saved,
  // makes the run incomplete.
  Status(any_report && !save_failed_ && write_failures_ == 0 ? texts::kFinished : texts::kIncomplete);
  session_->engine.engine.reset();
  view_->SetRunMenusEnabled(true, true);
  // The reasons the checks logged for the files they rejected, shown once at the end.
  if (auto text = platform::ReadWholeFile(ProcessErrorsFile())) {
    Dialogs().Message(std::string(texts::kReasons1) + "\r\n\r\n" + *text + "\r\n" + texts::kReasons2,
                      mb::OKOnly, texts::kFyi);
  }
  // NOTREND.QVX back as the program found it at start.
  RestoreNoTrend();
}

bool BatchRun::SaveProject(const cBatchFile& project, const fs::path& xml_file) {
  std::string reason;
  if (project.Build(xml_file, &reason)) return true;
  // Shown once a run: the saves after each dataset would otherwise repeat it.
  if (!save_failed_)
    Dialogs().Message(std::string(texts::kSaveFailed1) + reason + "\r\n\r\n" + texts::kSaveFailed2,
                      mb::OKOnly + mb::Exclamation, texts::kAppTitle);
  save_failed_ = true;
  return false;
}

FileReport BatchRun::DescribeFile(const cBatchFile& project, int i, bool canceled, int16_t errors_before,
                                  uintmax_t log_before, const std::string& fault) const {
  FileReport report;
  report.number = i + 1;
  report.count = static_cast<int>(project.Count());
  report.name = project.List(i);
  // The checks and the error page log the file's name and then the reason: what this file
  // added to the run's log, less its name, is why it did not get through.
  std::string logged = LoggedSince(ProcessErrorsFile(), log_before);
  if (size_t end = logged.find('\n'); end != std::string::npos) logged.erase(0, end + 1);
  while (!logged.empty() && (logged.back() == '\n' || logged.back() == '\r')) logged.pop_back();
  if (canceled) {
    report.result = FileResult::Canceled;
  } else if (session_->flags.ErrorCount != errors_before) {
    report.result = FileResult::Rejected;
    report.reason = logged;
  } else if (project.Completed(i) == 1) {
    report.result = FileResult::Forecast;
  } else {
    report.result = FileResult::Failed;
    report.error_code = project.Error(i);
    report.reason = !fault.empty() ? fault
                    : !logged.empty() ? logged
                    : !fs::exists(platform::ResolveNoCase(project.InDirectory(), report.name))
                        ? std::string("The asc file disappeared during the run.")
                        : std::string("The engine gave no answer.");
  }
  return report;
}

bool BatchRun::StartEngine() {
  int number = 0;
  std::string description;
  if (!engine_create_ || engine_create_(number, description)) return true;
  ShowFault(number, description);
  return false;
}

void BatchRun::BeginFlowRun() {
  session_->flags.ErrorCount = 0;
  save_failed_ = false;
  write_failures_ = 0;
  session_->engine.canceled = false;
  if (!dataset_) dataset_ = std::make_unique<dataset::AscDataset>();
  if (!arrays_) arrays_ = std::make_unique<quorvane::EngineArrays>();
  tree_.Clear();
  flags_.Clear();
}

BatchRun::SeriesOutcome BatchRun::RunFlowSeries(cBatchFile& project, const SeriesPass& pass,
                                                const fs::path& xml_file) {
  if (!dataset_ || !arrays_) BeginFlowRun();
  bool any_report = false, clean = false;
  FileOutcome outcome = FileOutcome::Next;
  try {
    outcome = RunOneFile(project, pass, xml_file, any_report, &clean);
  } catch (const std::system_error& e) {
    ShowFault(e.code().value(), e.what());
  } catch (const std::exception& e) {
    ShowFault(0, e.what());
  }
  if (outcome == FileOutcome::Canceled) return SeriesOutcome::Canceled;
  return clean ? SeriesOutcome::Clean : SeriesOutcome::NotRun;
}

BatchRun::FileOutcome BatchRun::RunOneFile(cBatchFile& project, const SeriesPass& pass,
                                           const fs::path& xml_file, bool& any_report, bool* clean) {
  RunFlags& run = session_->flags;
  const fs::path& program = options_.program_folder;
  const int i = pass.project_index;
  const bool listed = i >= 0;
  const std::string& name = pass.name;
  const std::string stem = AscStem(name);
  const fs::path asc = platform::ResolveNoCase(project.InDirectory(), name);
  dataset::AscDataset& d = *dataset_;

  const dataset::ProcessErrorsLog log(program);
  auto finish = [&] { DeleteLeftovers(program, stem); };
  auto rejected = [&] {
    ++run.ErrorCount;
    finish();
    return FileOutcome::Next;
  };

  // The checks before the file is read whole; each rejection is logged by them.
  dataset::RunCheckContext check{run.SeriesProperties.Seasonality(),
                                 run.UnivariateRun ? dataset::RunKind::Univariate : dataset::RunKind::Causal,
                                 project.BatchName()};
  if (dataset::CheckAscBeforeReading(asc, name, check, log) != dataset::CheckOutcome::Accepted)
    return rejected();
  // A file gone since it was counted.
  if (!fs::exists(asc)) {
    tree_.Remove(SeriesKey(name));
    if (listed) project.SetCompleted(i, kTrue);
    if (listed) project.SetRunDate(i, TodayMmDdYy());
    finish();
    return FileOutcome::Next;
  }
  // The file is under way: the status line names it, the project marks it started (true
  // until it is done) and an error page of an earlier run goes.
  Status((pass.caption.empty() ? std::string(texts::kProcessing) : pass.caption) + name);
  if (listed) project.SetCompleted(i, kTrue);
  Remove(output_path_, stem + "err.html");
  // The whole file read and checked; an objective chosen in the wizard replaces the file's.
  if (dataset::ReadAndCheckAscFile(asc, name, d, log) != dataset::CheckOutcome::Accepted)
    return rejected();
  if (auto objective = wizard_->ObjectiveOne()) d.Objectives(1) = *objective;
  // The engine called with the file's arrays; a cancel ends the run.
  quorvane::EngineArrays& a = *arrays_;
  FillRequest(d, a);
  EngineCallContext context{pass.number, pass.count, name};
  context.session = &session_->engine;
  const long values = static_cast<long>(d.DataProp(1)) * d.DataProp(5);
  if (options_.series_timeout.count() == 0 && options_.large_dataset_timeout.count() > 0 &&
      values > kLargeDatasetValues) {
    context.series_timeout = options_.large_dataset_timeout;
    Dialogs().Message(name + " holds " + std::to_string(d.DataProp(1)) + " series of " +
                          std::to_string(d.DataProp(5)) + " observations: the engine may take minutes on it, and is "
                          "stopped after " + LimitText(context.series_timeout) +
                          " (--series-timeout SECONDS sets another limit).",
                      mb::OKOnly, texts::kFyi);
  }
  EngineCallResult result = engine_call_(a, returned_, context);
  if (result.outcome == EngineCallOutcome::Canceled || session_->engine.canceled) {
    run.UnivariateRun = run.CausalRun = false;
    return FileOutcome::Canceled;
  }
  const std::string current_series_name = ReturnedSeriesName(returned_, a);
  // report.xml, the catalogue the error pages take their texts from, into OUTPUT when missing.
  // Without it the error pages say that the code was not found.
  (void)dataset::EnsureReportXml(output_path_);
  // A failure of this dataset: its error page and code; the next file follows.
  if (result.error_code > 0) {
    tree_.Remove(SeriesKey(name));
    // An engine that gave no answer (crashed, stopped at the time limit) says why in the log.
    // The log is where failures are told: its own has nowhere further to go.
    if (!result.failure_reason.empty()) (void)log.Append(name, result.failure_reason);
    dataset::WriteErrorReport(result.error_code, name, output_path_, log);
    if (listed) project.SetError(i, result.error_code);
    if (listed) project.SetCompleted(i, kTrue);
    if (listed) project.SetRunDate(i, TodayMmDdYy());
    finish();
    return FileOutcome::Next;
  }
  // Success: the outputs.
  Status(texts::kPreparing);
  platform::ProgressWaiter().StageBegins(platform::RunStage::Reports);
  AddSeriesNode(tree_, name);
  if (listed) project.SetRunDate(i, TodayMmDdYy());
  SeriesResult series{d, a, returned_, output_path_, name, stem, current_series_name};
  std::vector<std::string> unwritten =
      FileSeriesReports(program, output_path_, name, tree_, flags_, [&](const fs::path& target) {
        if (a.integers20.size() >= 4 && a.integers20[3] > 0) reports_->WriteInterventPage(series, target);
      });
  for (auto part : {CopyRunWideFiles(program, output_path_, ProjectStem(project.BatchName())),
                    FileForecasts(program, output_path_, stem, project.BatchName())})
    unwritten.insert(unwritten.end(), part.begin(), part.end());
  session_->engine.engine.reset();
  // Results that could not be written make a failed dataset: logged with the files it
  // lost, its status an error, never counted as done.
  if (!unwritten.empty()) {
    std::string names;
    for (const auto& n : unwritten) names += (names.empty() ? "" : ", ") + n;
    (void)log.Append(name, kOutputsNotWrittenText + names);  // the file's status says it too
    tree_.Remove(SeriesKey(name));
    ++write_failures_;
    ++run.ErrorCount;
    if (listed) project.SetError(i, kOutputsNotWrittenError);
    if (listed) project.SetCompleted(i, kTrue);
    if (listed && !xml_file.empty()) SaveProject(project, xml_file);
    finish();
    return FileOutcome::Next;
  }
  any_report = true;
  if (!options_.no_graphs) {
    platform::ProgressWaiter().StageBegins(platform::RunStage::Graphs);
    ClearEarlierGraphs(output_path_, stem);
    AddGraphNodes(name, reports_->DrawGraphs(series), tree_, flags_);
  }
  platform::ProgressWaiter().StageBegins(platform::RunStage::Filing);
  // The file's model kept when the person asked the wizard to save models.
  wizard_->Check4Model(stem, current_series_name);
  // Done: saved at once, so a crash later in the run loses nothing of it.
  if (listed) project.SetCompleted(i, 1);
  if (listed) project.SetError(i, 0);
  Remove(output_path_, stem + "err.html");
  view_->HidePreviousReports();
  if (listed && !xml_file.empty()) SaveProject(project, xml_file);
  if (clean) *clean = true;
  // The engine released; the tree shows once the first file of the list has its reports.
  session_->engine.engine.reset();
  if (pass.number == 1) view_->ShowReportTree(true);
  finish();
  return FileOutcome::Next;
}

}  // namespace tessaly::batch
