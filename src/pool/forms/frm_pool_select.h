#pragma once
// frmPoolSelect ("Select ASC files for Pooling"): the two lists of the project's files, the
// move buttons and Finish, bound to the selection logic shared with aggregation; and
// frmLoadGroupData, the number of groups of the pooled cross-section.
#include <QDialog>
#include <functional>
#include <string>
#include <vector>

#include "aggregate/child_selection.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace tessaly::pool {

class frmPoolSelect : public QDialog {
  Q_OBJECT
 public:
  // `in_directory` is where the files are read for Finish's tests.
  frmPoolSelect(QWidget* parent, const std::vector<std::string>& project_files, std::string in_directory);

  // The chosen files in list order, once Finish has passed (the dialog then accepts).
  const std::vector<std::string>& Chosen() const { return chosen_; }
  // Where Finish's captions go: the main window's status line.
  void SetStatus(std::function<void(const std::string&)> status) { status_ = std::move(status); }

  void cmdAdd_Click();
  void cmdRemove_Click();
  void cmdFinish_Click();
  void cmdCancel_Click();

  QListWidget* lstRoster = nullptr;
  QListWidget* lstChosen = nullptr;
  QLineEdit* txtAvailable = nullptr;
  QLineEdit* txtSelected = nullptr;
  QCheckBox* chkAddAll = nullptr;
  QCheckBox* chkRemoveAll = nullptr;
  QPushButton* cmdAdd = nullptr;
  QPushButton* cmdRemove = nullptr;
  QPushButton* cmdFinish = nullptr;
  QPushButton* cmdCancel = nullptr;

 private:
  void Refresh();
  void TakeHighlights();

  aggregate::ChildLists lists_{aggregate::SelectionFlow::Pooling};
  std::string in_directory_;
  std::vector<std::string> chosen_;
  std::function<void(const std::string&)> status_ = [](const std::string&) {};
  bool refreshing_ = false;
};

class frmLoadGroupData : public QDialog {
  Q_OBJECT
 public:
  frmLoadGroupData(QWidget* parent, long observations);
  // The accepted number of groups (0 until Yes passed).
  int Groups() const { return groups_; }
  void cmdYes_Click();

  QLineEdit* txtGroupData = nullptr;
  QPushButton* cmdYes = nullptr;
  QPushButton* cmdNo = nullptr;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  long observations_;
  int groups_ = 0;
};

}  // namespace tessaly::pool
