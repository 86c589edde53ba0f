#pragma once
// The run's reports as the program draws them: the nine graphs of each good dataset
// (the report subsystem's off-screen chart drawer) and, at the end of a run, the link-tree
// site with display.html. Used by the desktop and by the command-line run.
#include <map>
#include <memory>

#include "batch/run.h"
#include "batch/unattended_run.h"
#include "report/graph_plan.h"

namespace tessaly::batch {

class ProgramRunReports : public RunReports {
 public:
  // `graphs`: which of the nine are drawn (the spreadsheet runner's switches choose).
  explicit ProgramRunReports(fs::path program_folder, report::GraphPreferences graphs = {});
  std::array<bool, 9> DrawGraphs(const SeriesResult& series) override;
  void WriteInterventPage(const SeriesResult& series, const fs::path& target) override;
  void FilesDone(const std::vector<FileReport>& reports) override;
  void WriteLinkTree(const cBatchFile& project, const fs::path& output_path) override;

 private:
  // The files the run's checks turned down, by name in capitals, with their reasons.
  std::map<std::string, std::string> rejected_;
  fs::path program_folder_;
  report::GraphPreferences graphs_;
};

// `tessaly PROJECT.xml`: the project run with no window, graphs and site included.
// The exit status of RunProjectUnattended.
int RunProjectFromCommandLine(const fs::path& project);

}  // namespace tessaly::batch
