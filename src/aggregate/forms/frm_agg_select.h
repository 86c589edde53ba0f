#pragma once
// frmAggSelect: the two lists of the children, or of a pool's members in the pooling flow
// (where it is frmPoolSelect), bound to ChildLists.
// Finish hands the chosen names to the flow, which says whether the dialog closes.
#include <QDialog>
#include <functional>
#include <string>
#include <vector>

#include "aggregate/child_selection.h"

class QCheckBox;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace tessaly::aggregate {

class frmAggSelect : public QDialog {
  Q_OBJECT
 public:
  using FinishHandler = std::function<bool(const std::vector<std::string>& chosen)>;
  frmAggSelect(SelectionFlow flow, const std::vector<std::string>& project_files, FinishHandler finish,
               QWidget* parent = nullptr);

  ChildLists& Lists() { return lists_; }
  // Rebuilds the widgets from the lists.
  void Sync();

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
  void TakeHighlights();

  ChildLists lists_;
  FinishHandler finish_;
  bool syncing_ = false;
};

}  // namespace tessaly::aggregate
