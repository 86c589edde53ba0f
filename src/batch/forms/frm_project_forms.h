#pragma once
// The small forms behind the File and Batch commands: frmASCLoc (the ASC folder),
// frmSelect (which files), frmChooseOut (the output folder), frmXMLName (the project's
// name), frmEdit (the project's files) and frmSelectSeries (one file, for the steps that
// take a single dataset). Each only binds: the checks and messages are the batch flows'.
#include <QDialog>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "batch/project_commands.h"

class QCheckBox;
class QFileSystemModel;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QTreeView;

namespace tessaly::batch {

// What a page's buttons ended with.
enum class [[nodiscard]] PageResult { Next, Back, Cancel };

// A folder box: the path typed or picked in the folder tree.
class FolderBox : public QWidget {
  Q_OBJECT
 public:
  explicit FolderBox(QWidget* parent = nullptr);
  void SetFolder(const QString& folder);
  QString Folder() const;
  QLineEdit* txtFolder = nullptr;
  QTreeView* dirFolders = nullptr;
 signals:
  void FolderChanged(const QString& folder);

 private:
  QFileSystemModel* model_ = nullptr;
};

// The base of the pages: a heading, a body and the row of Cancel, Back and Next buttons.
class ProjectPage : public QDialog {
  Q_OBJECT
 public:
  ProjectPage(QWidget* parent, const QString& title, bool with_back, const QString& next_caption);
  PageResult Result() const { return result_; }
  PageResult Ask();
  QPushButton* cmdCancel = nullptr;
  QPushButton* cmdBack = nullptr;
  QPushButton* cmdNext = nullptr;

 protected:
  QWidget* body_ = nullptr;
  PageResult result_ = PageResult::Cancel;
};

class frmASCLoc : public ProjectPage {
  Q_OBJECT
 public:
  explicit frmASCLoc(QWidget* parent = nullptr);
  void SetFolder(const QString& folder);
  FolderBox* folder = nullptr;
  QListWidget* filFiles = nullptr;
  QLabel* lblCount = nullptr;

 private:
  void Refresh();
};

// The two lists of frmSelect, frmEdit and frmSelectSeries.
class TwoLists : public QWidget {
  Q_OBJECT
 public:
  explicit TwoLists(QWidget* parent = nullptr);
  void Fill(const std::vector<std::string>& available, const std::vector<std::string>& chosen);
  std::vector<std::string> Chosen() const;
  void Add();
  void Remove();
  QListWidget* lstRoster = nullptr;
  QListWidget* lstChosen = nullptr;
  QPushButton* cmdAdd = nullptr;
  QPushButton* cmdRemove = nullptr;
  QCheckBox* chkAddAll = nullptr;
  QCheckBox* chkRemoveAll = nullptr;
  // Asked before files are added; false refuses (frmSelectSeries' single file).
  std::function<bool(const std::vector<std::string>& chosen, int adding)> may_add;

 private:
  void UpdateButtons();
};

class frmSelect : public ProjectPage {
  Q_OBJECT
 public:
  explicit frmSelect(QWidget* parent = nullptr);
  TwoLists* lists = nullptr;
};

class frmChooseOut : public ProjectPage {
  Q_OBJECT
 public:
  explicit frmChooseOut(QWidget* parent = nullptr);
  FolderBox* folder = nullptr;
  QPushButton* cmdMake = nullptr;
};

class frmXMLName : public ProjectPage {
  Q_OBJECT
 public:
  explicit frmXMLName(QWidget* parent = nullptr);
  QLineEdit* txtName = nullptr;
  QLabel* lblFolder = nullptr;
};

class frmEdit : public ProjectPage {
  Q_OBJECT
 public:
  explicit frmEdit(QWidget* parent = nullptr);
  TwoLists* lists = nullptr;
  QLabel* lblStatus = nullptr;
};

class frmSelectSeries : public ProjectPage {
  Q_OBJECT
 public:
  frmSelectSeries(QWidget* parent, const QString& folder, bool for_generated_series);
  TwoLists* lists = nullptr;
  std::string folder_;
  bool for_generated_series_ = false;

 protected:
  void accept() override;
};

// frmSelectSeries as the generated-series and aggregation steps ask it: the one file
// chosen, or none when the person went back or cancelled.
[[nodiscard]] std::optional<std::string> SelectOneSeries(QWidget* parent, const std::string& folder,
                                           bool for_generated_series);

// The project commands' forms on the desktop.
class DesktopProjectForms : public ProjectForms {
 public:
  explicit DesktopProjectForms(QWidget* parent) : parent_(parent) {}
  PageAnswer<std::string> AscFolder(const std::string& start_folder) override;
  PageAnswer<std::vector<std::string>> SelectFiles(const std::vector<std::string>& available) override;
  PageAnswer<std::string> OutputFolder(const std::string& start_folder) override;
  PageAnswer<std::string> XmlName(const std::string& folder) override;
  PageAnswer<std::vector<std::string>> EditSeries(const std::vector<std::string>& available,
                                                  const std::vector<std::string>& chosen,
                                                  const std::string& status) override;

 private:
  QWidget* parent_;
  // Each page opens again where the person left it.
  std::string last_asc_folder_;
  std::vector<std::string> last_chosen_;
};

}  // namespace tessaly::batch
