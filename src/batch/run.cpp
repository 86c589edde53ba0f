#include "batch/run.h"

#include <algorithm>
#include <ctime>
#include <system_error>

#include "batch/batch_texts.h"
#include "batch/engine/engine_client.h"
#include "batch/run_outputs.h"
#include "dataset/asc_reader.h"
#include "dataset/error_catalogue.h"
#include "dataset/process_errors.h"
#include "dataset/validation.h"
#include "platform/dialogs.h"
#include "platform/paths.h"
#include "platform/progress_wait.h"
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

// A fault no step foresaw: told, and the run goes on with the next statement.
void ShowFault(int number, const std::string& text) {
  Dialogs().Message(std::string(texts::kErrorNo) + std::to_string(number) + ": " + text, mb::OKOnly,
                    texts::kAppTitle);
}

std::string TrimmedName(std::string name) {
  size_t b = name.find_first_not_of(' ');
  size_t e = name.find_last_not_of(' ');
  name = b == std::string::npos ? std::string() : name.substr(b, e - b + 1);
  if (!name.empty() && name.back() == '\0') name.pop_back();
  return name;
}

template <typename T>
void Reset(std::vector<T>& v) {
  std::fill(v.begin(), v.end(), T{});
}

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

}  // namespace

RunFlags& RunState() {
  static RunFlags flags;
  return flags;
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
  engine_call_ = [folder](quorvane::EngineArrays& arrays, EngineReturn& returned,
                          const EngineCallContext& context) {
    return CallEngine(arrays, returned, folder, context, platform::ProgressWaiter());
  };
  engine_create_ = [folder](int& number, std::string& description) {
    std::shared_ptr<EngineClient> engine;
    CreateObjectError error;
    if (fCreateObject(kEngineProgID, engine, folder, {}, &error)) {
      MyEngine() = engine;
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
    platform::WriteAllLines(folder / "NOTREND.QVX", {"1"});
  else if (!options_.no_trend_at_start && there)
    Remove(folder, "NOTREND.QVX");
}

void BatchRun::PrepareOutputPath(const cBatchFile& project) {
  fs::path out_dir = project.OutDirectory();
  std::error_code ec;
  fs::create_directories(out_dir, ec);
  output_path_ = platform::EnsureSubfolder(out_dir, "OUTPUT");
}

bool BatchRun::PrepareRunKind(const cBatchFile& project) {
  RunFlags& run = RunState();
  if (run.UnivariateRun || run.CausalRun) return true;
  dataset::AscHeader header;
  fs::path first = project.Count() ? fs::path(project.InDirectory()) / project.List(0) : fs::path();
  dataset::ReadAscHeader(platform::ResolveNoCase(first.parent_path(), first.filename().string()),
                         header);
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
  RunFlags& run = RunState();
  // 1. A project to run.
  if (!project && open_project_) open_project_();
  if (!project) return false;
  // 2. Errors of an earlier run.
  Remove(options_.program_folder, kProcessingErrors);
  Remove(options_.program_folder, kProcessErrors);
  // 3.-4. The tree goes while the run prepares; OUTPUT under the project's OutDirectory.
  view_->ShowReportTree(false);
  PrepareOutputPath(*project);
  // 5. Unsaved changes would be overwritten by the run's saves.
  if (project->Changed()) {
    std::string question = std::string(texts::kOverwriteRun1) + " \"" + project->BatchName() + "\"" +
                           texts::kOverwriteRun2;
    if (Dialogs().Message(question, mb::YesNo + mb::Question, texts::kAppTitle) != mb::Yes)
      return false;
    project->SetChanged(false);
  }
  // 6. The first file sets the run's measure; then the rules wizard.
  if (!run.UnivariateRun && !run.CausalRun) {
    PrepareRunKind(*project);
    fs::path first = project->Count() ? platform::ResolveNoCase(project->InDirectory(), project->List(0))
                                      : fs::path();
    WizardRequest request{ProjectStem(project->BatchName()), first, run.SeriesProperties, run.UnivariateRun};
    if (!wizard_->Show(request)) {
      run.UnivariateRun = run.CausalRun = false;
      return false;
    }
  }
  // 7.-8.
  RunCanceled() = false;
  view_->SetRunMenusEnabled(false, false);
  // 9. The engine must start before anything is prepared for it.
  int number = 0;
  std::string description;
  if (engine_create_ && !engine_create_(number, description)) {
    ShowFault(number, description);
    run.UnivariateRun = run.CausalRun = false;
    view_->SetRunMenusEnabled(true, true);
    return false;
  }
  // 10. An empty OUTPUT.
  CleanupReports();
  std::error_code ec;
  for (auto it = fs::directory_iterator(output_path_, ec); !ec && it != fs::directory_iterator();
       it.increment(ec))
    if (it->is_regular_file()) fs::remove(it->path(), ec);
  // 11.
  RunEngine(*project, save_to ? *save_to : fs::path(project->OutDirectory()) / project->BatchName());
  // 12.
  if (run.GeneralCancel) view_->UnloadMainForm();
  CleanupReports();
  return true;
}

void BatchRun::RunEngine(cBatchFile& project, const fs::path& xml_file) {
  RunFlags& run = RunState();
  // 1. The limit of files in a project.
  if (project.Count() > static_cast<size_t>(dataset::MaxAscFilesInProject)) {
    Dialogs().Message(project.BatchName() + texts::kLimit1 + std::to_string(project.Count()) +
                          texts::kLimit2 + std::to_string(dataset::MaxAscFilesInProject) +
                          texts::kLimit3Run,
                      mb::OKOnly, texts::kFyi);
    return;
  }
  // 2.-4.
  run.ErrorCount = 0;
  RunCanceled() = false;
  if (!dataset_) dataset_ = std::make_unique<dataset::AscDataset>();
  if (!arrays_) arrays_ = std::make_unique<quorvane::EngineArrays>();
  tree_.Clear();
  flags_.Clear();
  Remove(output_path_, CombinedForecastName(project.BatchName()));
  project.SetAllComplete(0);

  // 5. The files in list order. The run's one error handler becomes explicit outcomes:
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
  for (int i = 0; i < static_cast<int>(project.Count()); ++i) {
    FileOutcome outcome = FileOutcome::Next;
    try {
      outcome = RunOneFile(project, i, xml_file, any_report);
    } catch (const std::system_error& e) {
      ShowFault(e.code().value(), e.what());
    } catch (const std::exception& e) {
      ShowFault(0, e.what());
    }
    if (outcome == FileOutcome::Canceled) {
      canceled = true;
      break;
    }
  }

  const std::string project_stem = ProjectStem(project.BatchName());
  if (!canceled) {
    // 6. The nodes that join all series.
    if (project.Count() > 1 && !options_.no_graphs)
      AddAllNodes(tree_, flags_, output_path_, project_stem);
    // 7.
    run.UnivariateRun = run.CausalRun = false;
    reports_->WriteLinkTree(project, output_path_);
  }
  // 8. Where the forecasts are.
  fs::path combined = output_path_ / CombinedForecastName(project.BatchName());
  if (auto found = platform::FindNoCase(output_path_, CombinedForecastName(project.BatchName()))) {
    combined = *found;
    Dialogs().Message(std::string(texts::kForecasts1) + platform::WithTrailingSlash(output_path_.string()) +
                          texts::kForecasts2 + "\r\n\r\n" + texts::kForecasts3 + combined.string(),
                      mb::OKOnly, texts::kFyi);
  }
  // 9. Whether anything started and didn't finish.
  project.SetAllComplete(1);
  for (int i = 0; i < static_cast<int>(project.Count()); ++i)
    if (project.Completed(i) == kTrue) {
      project.SetAllComplete(kTrue);
      break;
    }
  // 10.-12.
  if (!project.Build(xml_file))
    ShowFault(0, "The project could not be saved to " + xml_file.string());
  Status(any_report ? texts::kFinished : texts::kIncomplete);
  MyEngine().reset();
  view_->SetRunMenusEnabled(true, true);
  // 13. The reasons for rejections.
  if (auto text = platform::ReadWholeFile(ProcessErrorsFile())) {
    Dialogs().Message(std::string(texts::kReasons1) + "\r\n\r\n" + *text + "\r\n" + texts::kReasons2,
                      mb::OKOnly, texts::kFyi);
  }
  // 14.
  RestoreNoTrend();
}

BatchRun::FileOutcome BatchRun::RunOneFile(cBatchFile& project, int i, const fs::path& xml_file,
                                           bool& any_report) {
  return RunSeries(project, project.List(i), i, i + 1, static_cast<int>(project.Count()), xml_file,
                   any_report) == SeriesOutcome::Canceled
             ? FileOutcome::Canceled
             : FileOutcome::Next;
}

bool BatchRun::CreateEngine() {
  int number = 0;
  std::string description;
  if (!engine_create_ || engine_create_(number, description)) return true;
  ShowFault(number, description);
  return false;
}

BatchRun::SeriesOutcome BatchRun::RunSeries(cBatchFile& project, const std::string& name, int i,
                                            int number, int count, const fs::path& xml_file,
                                            bool& any_report) {
  using FileOutcome = SeriesOutcome;
  RunFlags& run = RunState();
  const fs::path& program = options_.program_folder;
  const bool listed = i >= 0;
  if (!dataset_) dataset_ = std::make_unique<dataset::AscDataset>();
  if (!arrays_) arrays_ = std::make_unique<quorvane::EngineArrays>();
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

  // 5.1-5.7 The checks before the file is read whole; each rejection is logged by them.
  dataset::RunCheckContext check{run.SeriesProperties.Seasonality(),
                                 run.UnivariateRun ? dataset::RunKind::Univariate : dataset::RunKind::Causal,
                                 project.BatchName()};
  if (dataset::CheckAscBeforeReading(asc, name, check, log) != dataset::CheckOutcome::Accepted)
    return rejected();
  // 5.8-5.9 A file gone since it was counted.
  if (!fs::exists(asc)) {
    tree_.Remove(SeriesKey(name));
    if (listed) project.SetCompleted(i, kTrue);
    if (listed) project.SetRunDate(i, TodayMmDdYy());
    finish();
    return FileOutcome::Next;
  }
  // 5.10
  Status(texts::kProcessing + name);
  if (listed) project.SetCompleted(i, kTrue);
  Remove(output_path_, stem + "err.html");
  // 5.11
  if (dataset::ReadAndCheckAscFile(asc, name, d, log) != dataset::CheckOutcome::Accepted)
    return rejected();
  if (auto objective = wizard_->ObjectiveOne()) d.Objectives(1) = *objective;
  // 5.12-5.13
  quorvane::EngineArrays& a = *arrays_;
  FillRequest(d, a);
  EngineCallContext context{number, count, name};
  EngineCallResult result = engine_call_(a, returned_, context);
  if (result.outcome == EngineCallOutcome::Canceled || RunCanceled()) {
    run.UnivariateRun = run.CausalRun = false;
    return FileOutcome::Canceled;
  }
  // 5.14
  std::string current_series_name;
  if (returned_.returned_data_prop.size() >= 1) {
    int k = returned_.returned_data_prop[0];
    if (k >= 1 && k <= static_cast<int>(a.series_names.size()))
      current_series_name = TrimmedName(a.series_names[k - 1]);
  }
  dataset::EnsureReportXml(output_path_);
  // 5.15 A failure of this dataset.
  if (result.error_code > 0) {
    tree_.Remove(SeriesKey(name));
    dataset::WriteErrorReport(result.error_code, name, output_path_, log);
    if (listed) project.SetError(i, result.error_code);
    if (listed) project.SetCompleted(i, kTrue);
    if (listed) project.SetRunDate(i, TodayMmDdYy());
    finish();
    return FileOutcome::Next;
  }
  // 5.16 Success: the outputs.
  any_report = true;
  Status(texts::kPreparing);
  AddSeriesNode(tree_, name);
  if (listed) project.SetRunDate(i, TodayMmDdYy());
  SeriesResult series{d, a, returned_, output_path_, name, stem, current_series_name};
  FileSeriesReports(program, output_path_, name, tree_, flags_, [&](const fs::path& target) {
    if (a.integers20.size() >= 4 && a.integers20[3] > 0) reports_->WriteInterventPage(series, target);
  });
  CopyRunWideFiles(program, output_path_, ProjectStem(project.BatchName()));
  FileForecasts(program, output_path_, stem, project.BatchName());
  MyEngine().reset();
  if (!options_.no_graphs) {
    ClearEarlierGraphs(output_path_, stem);
    AddGraphNodes(name, reports_->DrawGraphs(series), tree_, flags_);
  }
  // 5.17
  wizard_->Check4Model(stem, current_series_name);
  // 5.18 Done: saved at once, so a crash later in the run loses nothing of it.
  if (listed) project.SetCompleted(i, 1);
  if (listed) project.SetError(i, 0);
  Remove(output_path_, stem + "err.html");
  view_->HidePreviousReports();
  if (listed) project.Build(xml_file);
  // 5.19
  MyEngine().reset();
  if (number == 1) view_->ShowReportTree(true);
  // 5.20
  finish();
  return FileOutcome::Next;
}

}  // namespace tessaly::batch
