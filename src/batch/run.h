#pragma once
// Running a project: the preparation of Run Project (mnuBatchRun) and RunEngine, which
// takes the project's ASC files in list order, reads and checks each, calls the engine,
// files the outputs, writes each status back into the project and at the end shows what
// happened. A failed dataset never stops the others; only a cancel does.
//
// The run reaches the rest of the system through seams that the desktop, the unattended
// runner and tests fill: the rules wizard, the graphs and the intervention page, the
// link-tree site, the engine call, and the main form's view (status label, tree, menus).
#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "batch/batch_file.h"
#include "batch/engine/engine_call.h"
#include "batch/engine/engine_client.h"
#include "batch/report_tree.h"
#include "dataset/asc_dataset.h"
#include "engine/exchange.h"

namespace tessaly::batch {

namespace fs = std::filesystem;

// One run's flags, shared with the other flows (aggregation, pooling) that repeat the run's
// steps through the same BatchRun.
struct RunFlags {
  bool UnivariateRun = false;
  bool CausalRun = false;
  int16_t ErrorCount = 0;
  // The general cancel flag: a run that set it asks the main form to close.
  bool GeneralCancel = false;
  // SeriesProperties: the shape of the first file of a run.
  dataset::clSeriesProperties SeriesProperties;
};
// One run's state: its flags and its engine. Each BatchRun has its own, made with it, and
// hands it to what needs it (the engine calls, their waits and the cancel); two runs in one
// program never share one, so neither's cancel or end touches the other.
struct RunSession {
  RunFlags flags;
  EngineSession engine;
};

// A flow's run is measured by the file it runs first: its shape and kind (one series or
// causal) become the run's. Returns that file's header.
dataset::AscHeader TakeRunShapeFrom(const fs::path& asc, RunFlags& flags);

// What a good dataset left, for the graphs and the intervention page.
struct SeriesResult {
  const dataset::AscDataset& dataset;
  const quorvane::EngineArrays& arrays;  // returned arrays (Integers20, Doubles745, ...)
  const EngineReturn& returned;          // ReturnedDataProp and the returned series data
  fs::path output_path;
  std::string asc_name;
  std::string stem;
  std::string current_series_name;
};

// What became of one file of the project's list, told as soon as it is known.
enum class FileResult { Forecast, Rejected, Failed, Canceled };
struct FileReport {
  int number = 0, count = 0;  // its place in the list, from 1
  std::string name;           // the ASC file as the project names it
  FileResult result = FileResult::Forecast;
  // Why it was rejected or failed, as logged or as the error catalogue tells the engine's
  // code; may hold several lines.
  std::string reason;
  long error_code = 0;  // the engine's code of a failure
};

// The Model and Rules Wizard as the run asks it once the first file has set the run's kind,
// before any file is run.
struct WizardRequest {
  std::string project_stem;                      // the project's name less ".xml"
  fs::path first_asc;                            // the first file of the list
  const dataset::clSeriesProperties& first;      // its shape
  bool univariate = false;
};
class RunRulesWizard {
 public:
  virtual ~RunRulesWizard() = default;
  // Shows the wizard; it writes the rules and model files. False when the person cancelled.
  [[nodiscard]] virtual bool Show(const WizardRequest& request) = 0;
  // The objective 1 chosen in the wizard, when one was.
  virtual std::optional<int16_t> ObjectiveOne() const { return std::nullopt; }
  // After a good dataset: keeps its model when the person asked for models to be saved.
  // `model_name` is the output series' name as the engine returned it.
  virtual void Check4Model(const std::string& stem, const std::string& model_name) {}
};

// Until the wizard is there to ask, a run takes the rules (ENGINE.GO) and the model
// (STARTMOD.123) it finds in the program's folder; with none the engine's built-in rules hold.
class ExistingRulesFiles : public RunRulesWizard {
 public:
  bool Show(const WizardRequest&) override { return true; }
};

// Graphs and the page of interventions, drawn after each good dataset.
class RunReports {
 public:
  virtual ~RunReports() = default;
  // Draws the nine graphs into the output folder; returns which were drawn (G1-G9).
  virtual std::array<bool, 9> DrawGraphs(const SeriesResult& series) { return {}; }
  // Writes the page of interventions to `target` when the engine found any.
  virtual void WriteInterventPage(const SeriesResult& series, const fs::path& target) {}
  // What became of every file of the run, just before the site is written.
  virtual void FilesDone(const std::vector<FileReport>& reports) {}
  // The link-tree site, at the end of a run.
  virtual void WriteLinkTree(const cBatchFile& project, const fs::path& output_path) {}
};

// The main form as a run changes it. The unattended runner and tests see only the status.
class RunView {
 public:
  virtual ~RunView() = default;
  virtual void FileDone(const FileReport& report) {}
  virtual void SetStatus(const std::string& text) {}
  virtual void ShowReportTree(bool visible) {}
  // Disables (false) or enables (true) the File, Batch, Preferences, generated-series,
  // adjust and aggregation menus; `pool_too` enables the pooling menu as well.
  virtual void SetRunMenusEnabled(bool enabled, bool pool_too) {}
  virtual void HidePreviousReports() {}
  virtual void UnloadMainForm() {}
};

// One engine call, as engine_call.h performs it; tests put a fake engine here.
using EngineCallFunction = std::function<EngineCallResult(
    quorvane::EngineArrays& arrays, EngineReturn& returned, const EngineCallContext& context)>;

// Creates the engine object at the start of a run; false with a number and text when the
// engine cannot be started.
using EngineCreateFunction = std::function<bool(int& number, std::string& description)>;

struct RunOptions {
  fs::path program_folder;
  // The preference of no graphs.
  bool no_graphs = false;
  // Whether NOTREND.QVX existed when the program started: the run puts it back so.
  bool no_trend_at_start = false;
  // Where qvxengine lies when `program_folder` is a private working folder of this run
  // (parallel jobs, shards); empty: in `program_folder`.
  fs::path engine_folder{};
  // The run's outputs go here instead of OUTPUT under the project's OutDirectory (a shard's
  // own folder); empty: OUTPUT.
  fs::path output_path{};
  // The longest the engine may work on one series; zero: no limit.
  std::chrono::seconds series_timeout{0};
  // When no limit is given: the limit of a dataset of more than kLargeDatasetValues
  // observations, said before its engine starts; zero: none (the desktop, whose progress
  // window shows the time and offers Cancel).
  std::chrono::seconds large_dataset_timeout{0};
};

// A dataset this large (150 series of 10,000 observations at most) can keep the engine
// busy for minutes.
inline constexpr long kLargeDatasetValues = 100000;

class BatchRun {
 public:
  BatchRun(RunOptions options, ReportTree& tree);

  void SetRulesWizard(std::shared_ptr<RunRulesWizard> wizard) { wizard_ = std::move(wizard); }
  void SetReports(std::shared_ptr<RunReports> reports) { reports_ = std::move(reports); }
  void SetView(std::shared_ptr<RunView> view) { view_ = std::move(view); }
  // Default: engine_call.h's CallEngine with the installed progress wait.
  void SetEngineCall(EngineCallFunction call) { engine_call_ = std::move(call); }
  // Default: fCreateObject with the engine's ProgID.
  void SetEngineCreate(EngineCreateFunction create) { engine_create_ = std::move(create); }
  // Asked first when Run Project finds no project open: the Open command.
  void SetOpenProject(std::function<void()> open) { open_project_ = std::move(open); }
  // This run's state: its kind and shape, its rejections, its engine and its cancel.
  RunSession& Session() { return *session_; }
  const RunSession& Session() const { return *session_; }

  // Run Project. `project` may be null (none open); the open command may fill it.
  // The project is saved to its OutDirectory under its BatchName, or to `save_to` when
  // given (a project run from the command line is saved where it was read).
  // Returns true when RunEngine ran.
  [[nodiscard]] bool mnuBatchRun(std::unique_ptr<cBatchFile>& project,
                   const std::optional<fs::path>& save_to = std::nullopt);
  // The run loop over the project's files; `xml_file` is where the project is saved.
  void RunEngine(cBatchFile& project, const fs::path& xml_file);

  const std::string& lblStatus() const { return status_; }
  // What became of each file of the last RunEngine, in list order.
  const std::vector<FileReport>& FileReports() const { return file_reports_; }
  const fs::path& OutputPath() const { return output_path_; }
  // After a run: whether a save of the project failed, and how many datasets the engine
  // forecast whose results could not be written. Either makes the run a failed one.
  bool SaveFailed() const { return save_failed_; }
  int WriteFailures() const { return write_failures_; }
  fs::path ProcessErrorsFile() const;
  // The run's shape and kind (univariate or causal) from the first file's header, which Run
  // Project sets before it asks the wizard; nothing changes when a kind is already set.
  bool PrepareRunKind(const cBatchFile& project);
  // Makes OUTPUT under the project's OutDirectory when missing and sets OutputPath.
  void PrepareOutputPath(const cBatchFile& project);

  // ---- The per-series steps for a flow with a list of its own (aggregation, pooling) ----
  struct SeriesPass {
    std::string name;           // the ASC file, in the project's InDirectory
    int project_index = -1;     // its entry in the project; -1 for a file the flow made
    int number = 1, count = 1;  // for the progress window
    std::string caption;        // the status before the name ("Processing: " when empty)
  };
  enum class [[nodiscard]] SeriesOutcome { Clean, NotRun, Canceled };
  // The flow's own output folder (pooling and aggregation keep theirs under InDirectory).
  void SetOutputPath(const fs::path& path) { output_path_ = path; }
  // Starts the engine object once for the flow; tells the fault and returns false when it
  // cannot be started.
  [[nodiscard]] bool StartEngine();
  // Errors counted afresh, the tree and its row flags emptied, the arrays ready.
  void BeginFlowRun();
  // One file through the run's steps: checks, engine, outputs, graphs, tree. A project entry
  // keeps its status in the project, saved to `xml_file` unless that is empty. After Clean,
  // LastArrays() and LastDataset() hold the engine's answer and the dataset as sent.
  SeriesOutcome RunFlowSeries(cBatchFile& project, const SeriesPass& pass, const fs::path& xml_file = {});
  const quorvane::EngineArrays& LastArrays() const { return *arrays_; }
  const dataset::AscDataset& LastDataset() const { return *dataset_; }

 private:
  enum class [[nodiscard]] FileOutcome { Next, Canceled };
  FileOutcome RunOneFile(cBatchFile& project, const SeriesPass& pass, const fs::path& xml_file,
                         bool& any_report, bool* clean = nullptr);
  void Status(const std::string& text);
  void RestoreNoTrend();
  void CleanupReports();

  RunOptions options_;
  ReportTree& tree_;
  // Held by pointer so that the engine calls' context may point at it whatever the run does.
  std::unique_ptr<RunSession> session_ = std::make_unique<RunSession>();
  std::shared_ptr<RunRulesWizard> wizard_;
  std::shared_ptr<RunReports> reports_;
  std::shared_ptr<RunView> view_;
  EngineCallFunction engine_call_;
  EngineCreateFunction engine_create_;
  std::function<void()> open_project_;

  FileReport DescribeFile(const cBatchFile& project, int index, bool canceled, int16_t errors_before,
                          uintmax_t log_before, const std::string& fault) const;

  std::string status_;
  std::vector<FileReport> file_reports_;
  fs::path output_path_;
  bool save_failed_ = false;
  int write_failures_ = 0;
  // Saves the project; the first failure of a run is shown with its reason.
  bool SaveProject(const cBatchFile& project, const fs::path& xml_file);
  // The first entry of the project that is a readable dataset (else the first entry).
  fs::path FirstDataset(const cBatchFile& project) const;
  RowFlags flags_;
  // Sized once for a run at the contract's full bounds, reused for every file.
  std::unique_ptr<dataset::AscDataset> dataset_;
  std::unique_ptr<quorvane::EngineArrays> arrays_;
  EngineReturn returned_;
};

// The engine's arrays of one dataset (RunMode 4), filled in the storage of the last call.
// Also the spreadsheet runner's, which then sets its own RunMode.
void FillRequest(const dataset::AscDataset& dataset, quorvane::EngineArrays& arrays);

// The names of the engine's leftovers that CleanupReports deletes at start and around a run.
const std::array<const char*, 17>& ReportCleanList();

// Today as "mm/dd/yy".
std::string TodayMmDdYy();

}  // namespace tessaly::batch
