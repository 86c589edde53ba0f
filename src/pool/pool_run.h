#pragma once
// The pooling run: after the chosen files passed the selection's tests, their values are
// stacked into TOTALPOOL.ASC, the rules wizard (narrowed for pooling) chooses the model,
// every series is run alone and then the stack, and the F-test of poolability compares
// the separate fits with the pooled one. The desktop's frmPoolSelect and `tsly pool` both
// call this; the rules, graphs, engine and main window come in through the run's seams.
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "batch/batch_file.h"
#include "batch/report_tree.h"
#include "batch/run.h"
#include "pool/ftest.h"

namespace tessaly::pool {

namespace fs = std::filesystem;

struct PoolOptions {
  fs::path program_folder;  // empty: the running program's folder
  bool no_graphs = false;
  bool no_trend_at_start = false;
};

enum class PoolEnd {
  Finished,    // every series and the stack ran
  Incomplete,  // a series or the stack failed, or the stack was refused by its size check
  Cancelled,   // the rules wizard or the progress window was cancelled
};

struct [[nodiscard]] PoolOutcome {
  PoolEnd end = PoolEnd::Incomplete;
  PoolabilityInputs inputs;               // what the passes kept
  std::optional<Poolability> poolability; // when the F-test was written
  fs::path analysis;                      // <batch>ANALYSIS.TXT
};

class PoolRun {
 public:
  PoolRun(PoolOptions options, batch::ReportTree& tree);

  void SetRulesWizard(std::shared_ptr<batch::RunRulesWizard> wizard) { wizard_ = std::move(wizard); }
  void SetReports(std::shared_ptr<batch::RunReports> reports) { run_.SetReports(std::move(reports)); }
  void SetView(std::shared_ptr<batch::RunView> view);
  void SetEngineCall(batch::EngineCallFunction call) { run_.SetEngineCall(std::move(call)); }
  void SetEngineCreate(batch::EngineCreateFunction create) { run_.SetEngineCreate(std::move(create)); }

  // Opening the flow (Mnu_Pool): errors of an earlier run deleted, the tree hidden, OUTPUT
  // made, and the unsaved-changes question. False when the person stopped here.
  [[nodiscard]] bool Open(batch::cBatchFile& project);

  // Everything after the selection's tests: `chosen` are file names of the project's
  // InDirectory, in list order.
  PoolOutcome Run(batch::cBatchFile& project, const std::vector<std::string>& chosen);

  const std::string& lblStatus() const { return status_; }
  const fs::path& OutputPath() const { return output_path_; }

 private:
  void Status(const std::string& text);
  [[nodiscard]] bool SelectRunOptionsConditions(batch::cBatchFile& project, const fs::path& stack);
  PoolEnd RunParentChild(batch::cBatchFile& project, const std::vector<std::string>& chosen,
                         PoolOutcome& outcome);
  void FileStackReports(batch::cBatchFile& project, PoolOutcome& outcome);

  PoolOptions options_;
  batch::ReportTree& tree_;
  batch::BatchRun run_;
  std::shared_ptr<batch::RunRulesWizard> wizard_;
  std::shared_ptr<batch::RunView> view_;
  std::string status_;
  fs::path output_path_;
};

// The pooling rows of the report tree, in order: file in the output folder, label, key.
struct PoolNodeRow {
  const char* file;
  const char* label;
  const char* key;
};
inline constexpr PoolNodeRow kPoolNodeRows[] = {
    {"POOLCOEF.TXT", "POOL COEFFICIENCIES", "S8"}, {"PARAMETER.TXT", "PARAMETERS", "S9"},
    {"VARIANCE.TXT", "VARIANCES", "S10"},          {"ANALYSIS.TXT", "ANALYSIS", "S11"},
    {"FTable1.html", "FTABLE1", "S12"},            {"FTable2.html", "FTABLE2", "S13"}};

}  // namespace tessaly::pool
