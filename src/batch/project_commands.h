#pragma once
// The File and Batch commands that make, open, change and close a project. The small
// forms behind them (frmASCLoc, frmSelect, frmChooseOut, frmXMLName, frmEdit) are drawn by
// the desktop; the flows here take their answers through ProjectForms, so the same flow
// runs under the desktop and in tests. Messages go through platform::Dialogs().
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "batch/batch_file.h"
#include "batch/report_tree.h"

namespace tessaly::batch {

namespace fs = std::filesystem;

// What the main form holds of the open project.
struct ProjectSession {
  fs::path program_folder;
  std::unique_ptr<cBatchFile> ctrlBatch;  // the open project, or none
  fs::path project_path;                  // where it was opened from or saved to
  ReportTree trvMenu;
  std::string lblStatus;
  fs::path OutputPath;  // the project's OUTPUT folder
};

// A page's answer: go on with a value, go back a page, or cancel the command.
template <typename T>
struct PageAnswer {
  enum class Kind { Next, Back, Cancel } kind = Kind::Cancel;
  T value{};
  static PageAnswer Next(T v) { return {Kind::Next, std::move(v)}; }
  static PageAnswer Back() { return {Kind::Back, T{}}; }
  static PageAnswer Cancel() { return {Kind::Cancel, T{}}; }
};

// The forms of the project commands. Each call shows the page and returns when the person
// presses Next (or Finish, Save), Back or Cancel; a refused Next shows the message and the
// flow asks the same page again.
class ProjectForms {
 public:
  virtual ~ProjectForms() = default;
  // frmASCLoc: the folder of the ASC files ("Select the directory where the ASC files are
  // located:").
  virtual PageAnswer<std::string> AscFolder(const std::string& start_folder) = 0;
  // frmSelect: the files chosen from those available (lstRoster to lstChosen).
  virtual PageAnswer<std::vector<std::string>> SelectFiles(const std::vector<std::string>& available) = 0;
  // frmChooseOut: the output folder (cmdSave), or Back.
  virtual PageAnswer<std::string> OutputFolder(const std::string& start_folder) = 0;
  // frmXMLName: a name for the project file where no save dialog is used.
  virtual PageAnswer<std::string> XmlName(const std::string& folder) { return PageAnswer<std::string>::Cancel(); }
  // frmEdit: the project's files as they should be, from the roster of the ASC folder.
  virtual PageAnswer<std::vector<std::string>> EditSeries(const std::vector<std::string>& available,
                                                          const std::vector<std::string>& chosen,
                                                          const std::string& status) = 0;
};

struct ProjectHooks {
  // The recent-file list.
  std::function<void(const fs::path&)> add_recent;
  // Fills the tree from OUTPUT for an existing project.
  std::function<void(ProjectSession&)> populate_tree;
  // Shows or hides the splitter pane with the tree.
  std::function<void(bool)> show_tree;
  // The trace log.
  std::function<void(const std::string&)> log;
  // Use frmXMLName instead of the save dialog.
  bool name_form_instead_of_dialog = false;
};

class ProjectCommands {
 public:
  ProjectCommands(ProjectSession& session, ProjectForms& forms, ProjectHooks hooks = {});

  // New Project. True when a project was written and is now open.
  [[nodiscard]] bool mnuFileNew();
  // Open Project through the file dialog.
  [[nodiscard]] bool mnuFileOpen();
  // Opens a given project file.
  [[nodiscard]] bool OpenProject(const fs::path& path);
  // Close: asks to save changes, puts back the ASC files kept for a run.
  void mnuFileClose();
  // Edit Series in Project.
  [[nodiscard]] bool mnuBatchEdit();
  // Previous Reports: the tree of the open project without a run.
  void mnuBatchPrevReports();

  // The ASC files of a folder ("*.ASC", any case), sorted.
  static std::vector<std::string> AscFilesIn(const fs::path& folder);
  // Moves every file of `backup` (a subfolder of `folder`, any case) back over its
  // namesake in `folder`; logs "Org = " and "   Dest = " lines.
  void RestoreBackups(const fs::path& folder, const std::string& backup);

 private:
  [[nodiscard]] std::optional<fs::path> AskProjectPath(const std::string& folder);
  void Log(const std::string& line) const;

  ProjectSession& s_;
  ProjectForms& forms_;
  ProjectHooks hooks_;
};

// frmSelectSeries, the single-file choice of the generated-series and aggregation steps.
// Adding a second file is refused ("You may only select one ASC file..."); Next with none
// chosen is refused; for generated series a seasonality outside 1, 4, 5, 7, 12, 52 is
// refused. Each returns the message shown, or "" when the step may go on.
std::string SelectSeriesAdd(const std::vector<std::string>& chosen);
std::string SelectSeriesNext(const std::vector<std::string>& chosen, const fs::path& folder,
                             bool for_generated_series);

}  // namespace tessaly::batch
