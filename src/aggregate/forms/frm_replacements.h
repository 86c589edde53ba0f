#pragma once
// The a priori replacements offered before the children's run: frmSelChildren picks the
// children to replace, frmSelReplacements the file for each, checked by AcceptReplacement.
#include <QDialog>
#include <filesystem>
#include <string>

#include "aggregate/aggregation_run.h"

class QCheckBox;
class QListWidget;
class QPushButton;

namespace tessaly::aggregate {

class frmSelChildren : public QDialog {
  Q_OBJECT
 public:
  frmSelChildren(const std::vector<std::string>& children, QWidget* parent = nullptr);
  // The chosen children's places in list order, after OK.
  std::vector<int> Chosen() const;
  QListWidget* lstChildren = nullptr;
  QCheckBox* chkSelectAll = nullptr;
};

class frmSelReplacements : public QDialog {
  Q_OBJECT
 public:
  frmSelReplacements(std::filesystem::path in_directory, std::string child, std::string observations,
                     std::string forecasts, QWidget* parent = nullptr);
  std::string Choice() const;
  QListWidget* filFiles = nullptr;
  QListWidget* lstChoice = nullptr;
  QPushButton* cmdSelect = nullptr;
  QPushButton* cmdRemove = nullptr;
};

// The chooser the desktop's run asks: nullopt when a replacement dialog was cancelled.
ReplacementChooser DesktopReplacementChooser(QWidget* parent, std::filesystem::path in_directory,
                                             std::string observations, std::string forecasts);

}  // namespace tessaly::aggregate
