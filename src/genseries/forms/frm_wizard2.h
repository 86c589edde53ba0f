#pragma once
// frmWizard2, the Add Series Wizard: binds the AddSeriesWizard of genseries/wizard.h. Each
// control stands for one field of the wizard; Back and Next read the controls into the
// wizard, let it check and move, and redraw. No check is decided here.
#include <QDialog>
#include <array>
#include <vector>

#include "genseries/wizard.h"

class QCheckBox;
class QComboBox;
class QDateEdit;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QRadioButton;
class QStackedWidget;

namespace tessaly::genseries {

class frmWizard2 : public QDialog {
  Q_OBJECT
 public:
  frmWizard2(AddSeriesWizard& wizard, QWidget* parent = nullptr);
  AddSeriesWizard& Wizard() { return w_; }

  // Back, Next, Cancel, Finish.
  std::array<QPushButton*, 4> cmdNav{};
  QLabel* lblInstruction = nullptr;
  QStackedWidget* fraStep = nullptr;
  QCheckBox *chkAddLevel = nullptr, *chkAddPulse = nullptr, *chkAddSP = nullptr,
            *chkAddTrend = nullptr, *chkAddHoliday = nullptr, *chkAddUserDef = nullptr;
  std::array<QLineEdit*, 4> txtLevel{}, txtPulse{}, txtSP{}, txtTrend{};
  QListWidget* lstHolidays1 = nullptr;
  QListWidget* lstHolidays2 = nullptr;
  QPushButton *cmdSelect = nullptr, *cmdRemove = nullptr, *cmdSelectAll = nullptr;
  QDateEdit* dtpHolidays = nullptr;
  QLineEdit* txtUserDef1 = nullptr;
  QComboBox* cboUserDef1 = nullptr;  // the type
  QComboBox* cboUserDef2 = nullptr;  // the method
  QDateEdit* dtpUserDef = nullptr;
  std::array<QRadioButton*, 4> optDataType{};
  QGroupBox *OptionQuarter = nullptr, *OptionMonth = nullptr, *OptionDay = nullptr;
  std::vector<QRadioButton*> optQuarter, optMonth, optDay;
  QLabel* lblMethodNote = nullptr;
  QLabel* lblSummary = nullptr;  // the Finished step: what Finish will save

  void cmdBack_Click();
  void cmdNext_Click();
  void cmdFinish_Click();
  // Asks "Are you sure ...?" and closes on Yes.
  void cmdCancel_Click();
  void reject() override;

 private:
  QWidget* BuildOptions();
  QWidget* BuildIntervention(const char* name, std::array<QLineEdit*, 4>& fields);
  QWidget* BuildHolidays();
  QWidget* BuildUserDef();
  void Pull();
  void Refresh();
  void MethodChosen();
  void TypeChosen(int type);
  [[nodiscard]] bool EnsureDate(bool holidays);
  QString Summary() const;
  AddSeriesWizard& w_;
  bool refreshing_ = false;
  bool manual_note_shown_ = false;
};

// A date picker's value in the variables file's form, empty while it shows no date.
std::string DateText(const QDateEdit* picker);
void SetDateText(QDateEdit* picker, const std::string& text);

}  // namespace tessaly::genseries
