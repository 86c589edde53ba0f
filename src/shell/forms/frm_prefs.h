#pragma once
// The two preference dialogs: frmPrefsDecimals ("Decimal Preference") and frmPrefsGraphs
// ("User Preferences"). They bind the process-wide preference values; the rules live in
// shell/preferences.h.
#include <QDialog>
#include <array>

class QCheckBox;
class QLineEdit;
class QRadioButton;

namespace tessaly::shell {

class frmPrefsDecimals : public QDialog {
  Q_OBJECT
 public:
  explicit frmPrefsDecimals(QWidget* parent = nullptr);
  QLineEdit* txtPref1;

 private slots:
  void cmdOK_Click();
};

class frmPrefsGraphs : public QDialog {
  Q_OBJECT
 public:
  explicit frmPrefsGraphs(QWidget* parent = nullptr);
  QLineEdit* txtPref1;
  std::array<QRadioButton*, 3> optSelect;
  // chkact, chkactclen, chkactfit, chkactfore, chkactfitfore, chkactres, chkfore, chkfitfore, chkres
  std::array<QCheckBox*, 9> chkGraphs;
  QCheckBox* chkNoLimits;

 private slots:
  void optSelect_Click();
  void cmdOK_Click();
};

}  // namespace tessaly::shell
