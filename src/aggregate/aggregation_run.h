#pragma once
// The aggregation after its answers: the parent GROUPT.ASC made (or taken, or skipped when
// its forecasts are supplied) and run, the children rewritten and run one after the other,
// the forecasts reconciled, and the children's files handed back. The desktop and tsly both
// run this; they differ only in the seams (rules wizard, generated series, replacements,
// the main window).
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "aggregate/agg_params.h"
#include "aggregate/child_selection.h"
#include "aggregate/parent_child_files.h"
#include "aggregate/reconcile.h"
#include "batch/batch_file.h"
#include "batch/report_tree.h"
#include "batch/run.h"

namespace tessaly::aggregate {

enum class RunStage { Parent, Children };

// The Model and Rules Wizard as the aggregation shows it before the parent's and before the
// children's run; false when the person cancelled. `qvx_rules` is the parent's choice of
// "Automatic With QVX Rules" (else "Automatic With Users Rules").
class AggregationRules {
 public:
  virtual ~AggregationRules() = default;
  [[nodiscard]] virtual bool Select(RunStage stage, bool qvx_rules, const fs::path& asc,
                      const std::string& project_stem) = 0;
  virtual std::optional<int16_t> ObjectiveOne() const { return std::nullopt; }
};

// "Add Series" on the parent: the generated-series wizard on GROUPT.ASC.
class ParentSeriesAdder {
 public:
  enum class Outcome { Added, Canceled };
  virtual ~ParentSeriesAdder() = default;
  virtual Outcome Add(const fs::path& parent_asc) = 0;
};

// The a priori replacements offered before the children's run: for each child the file that
// replaces it, kNoReplacement where none; nullopt when the flow is cancelled.
using ReplacementChooser = std::function<std::optional<std::vector<std::string>>(
    const std::vector<std::string>& children)>;

struct AggregationSeams {
  std::shared_ptr<AggregationRules> rules;            // required
  std::shared_ptr<ParentSeriesAdder> add_series;      // null: generated series unavailable
  ReplacementChooser replacements;                    // null: no replacement offered
  std::shared_ptr<batch::RunView> view;               // the main window; may be null
  std::shared_ptr<batch::RunReports> reports;         // graphs; may be null
  batch::EngineCallFunction engine_call;              // tests; default the real engine
  batch::EngineCreateFunction engine_create;
  batch::ReportTree* tree = nullptr;                  // the main window's tree; null: the run's own
};

struct AggregationSetup {
  fs::path program_folder;
  batch::cBatchFile* project = nullptr;
  fs::path project_file;  // where the project is saved
  SelectionResult selection;
  AggOptions options;
  // The boxes the later stages read.
  bool mixed_frequency = false;  // chktemYes
  bool add_series = false;       // chkAddGenSeriesYes
  bool causal = false;           // chkCausalYes
  bool qvx_rules = true;         // chkAutomatic1 not set: QVX rules
  bool bottom_up_box = true;     // chkPtoC, for the captions' suffix
  bool period_table = false;     // chkTempNo not set: REC<batch>.CSV is written
};

// Builds the setup from the answered dialog.
AggregationSetup SetupFromParams(const AggParams& params, const SelectionResult& selection,
                                 batch::cBatchFile& project, fs::path project_file,
                                 fs::path program_folder);

class AggregationRun {
 public:
  enum class Ending { Finished, Incomplete, Canceled };

  AggregationRun(AggregationSetup setup, AggregationSeams seams);
  Ending Run();

  const std::string& Status() const { return status_; }
  const fs::path& OutputPath() const { return output_path_; }
  const batch::ReportTree& Tree() const { return *tree_; }
  // The cancel ending for a flow given up before the run (at the parameters).
  static void CancelBeforeRun(const fs::path& program_folder,
                              const std::shared_ptr<batch::RunView>& view);

 private:
  class CaptionView;
  class ResidualRecorder;
  std::string Caption(const std::string& stage) const;
  void SetStatus(const std::string& text);
  [[nodiscard]] bool SelectRunOptionsConditions(RunStage stage, const fs::path& asc);
  [[nodiscard]] bool BuildParent();
  [[nodiscard]] bool RewriteChildren();
  [[nodiscard]] bool RunChildren();
  ReconcileInput ReconcileSetup();
  void HandBackChildren();
  Ending CancelEnding(const std::string& message);
  void ReportRunErrors();

  AggregationSetup s_;
  AggregationSeams seams_;
  fs::path in_directory_;
  fs::path output_path_;
  batch::ReportTree own_tree_;
  batch::ReportTree* tree_ = &own_tree_;
  std::unique_ptr<batch::BatchRun> run_;
  std::shared_ptr<ResidualRecorder> recorder_;
  ChildHistories histories_;
  std::vector<std::string> replacement_;
  bool replacements_chosen_ = false;
  bool any_good_ = false;
  bool last_run_good_ = false;
  bool add_series_canceled_ = false;
  std::string status_;
  std::string last_series_stem_;
  long forecast_bound_ = 0;  // DataProp(8) of the last dataset read
};

}  // namespace tessaly::aggregate
