#pragma once
// Adjusting a project's files from the desktop: frmSelAdjSeries (which files the saved
// variables apply to), frmAdjSeries (which adjusted files replace the originals), and the
// two menu commands of the main window that lead through them and the Add Series wizard.
#include <QDialog>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "genseries/adjust.h"

class QLabel;
class QPushButton;
class QRadioButton;

namespace tessaly::batch {
class cBatchFile;
class TwoLists;
}  // namespace tessaly::batch

namespace tessaly::genseries {

namespace fs = std::filesystem;

class frmSelAdjSeries : public QDialog {
  Q_OBJECT
 public:
  frmSelAdjSeries(QWidget* parent, fs::path folder, fs::path variables_file, ManualData manual,
                  fs::path program_folder);
  batch::TwoLists* lists = nullptr;
  QPushButton* cmdNext = nullptr;
  QPushButton* cmdCancel = nullptr;
  // After Next: what was adjusted and reported.
  const AdjustRun& Result() const { return run_; }
  void cmdNext_Click();

 private:
  fs::path folder_, variables_, program_;
  ManualData manual_;
  AdjustRun run_;
};

class frmAdjSeries : public QDialog {
  Q_OBJECT
 public:
  frmAdjSeries(QWidget* parent, fs::path folder, std::vector<std::string> adjusted,
               std::vector<std::string> project_files);
  batch::TwoLists* lists = nullptr;
  QRadioButton* optDoNotSave = nullptr;
  QRadioButton* optSave = nullptr;
  QPushButton* cmdNext = nullptr;
  void cmdNext_Click();

 private:
  fs::path folder_;
  std::vector<std::string> adjusted_, project_files_;
};

// mnu_Adjust_ASCfiles: fills frmSelAdjSeries with the project's files that pass the file
// check, shows it, and then frmAdjSeries with the files it adjusted.
void mnu_Adjust_ASCfiles(QWidget* parent, const batch::cBatchFile& project,
                         const fs::path& variables_file, const ManualData& manual,
                         const fs::path& program_folder);

// What the Add Series wizard asked for: the variables file it wrote and the manual grids' values.
struct SeriesRequest {
  fs::path variables;
  ManualData manual;
};

// The Add Series wizard on one dataset (`asc`, shown as `name`), its manual grids, and the
// variables file written to `variables`; nullopt when the person cancelled or the wizard
// could not start on that file (it has said why).
[[nodiscard]] std::optional<SeriesRequest> AskForSeries(QWidget* parent, const fs::path& asc, const std::string& name,
                                          const fs::path& variables, const std::string& in_directory,
                                          const std::string& out_directory, const fs::path& program_folder);

// mnu_Select_Generated_Series: the Add Series wizard on the project's first file, the manual
// grids, rwf.his written into the project file's folder, then mnu_Adjust_ASCfiles. Returns
// the variables file written, empty when the user cancelled or the wizard could not start.
fs::path mnu_Select_Generated_Series(QWidget* parent, const batch::cBatchFile& project,
                                     const fs::path& project_file, const fs::path& program_folder);

// The variables file of a project: rwf.his in the folder of its project file (its output
// folder while it has never been saved).
fs::path VariablesFileOf(const batch::cBatchFile& project, const fs::path& project_file);

}  // namespace tessaly::genseries
