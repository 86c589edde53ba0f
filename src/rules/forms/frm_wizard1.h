#pragma once
// frmWizard1: the Model and Rules Wizard's window. Every control is bound one to one to a
// field of the RulesWizard's plain pages; clicks and focus changes are forwarded to the
// wizard, and after each the window is redrawn from the wizard's state. No rule is decided
// here.
#include <QDialog>
#include <array>
#include <functional>
#include <string>
#include <vector>

#include "rules/wizard.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QFormLayout;
class QTabWidget;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QStackedWidget;
class QTreeWidget;

namespace tessaly::rules {

class frmWizard1 : public QDialog {
  Q_OBJECT
 public:
  frmWizard1(RulesWizard& wizard, QWidget* parent = nullptr);

  // Redraws every control from the wizard.
  void Refresh();
  RulesWizard& Wizard() { return w_; }

  // The buttons by the wizard's index: 0 Help, 1 Cancel, 2 Back, 3 Next, 4 Finish.
  std::array<QPushButton*, 5> cmdNav{};
  QStackedWidget* fraStep = nullptr;
  QStackedWidget* fraStep3 = nullptr;
  QStackedWidget* fraStep4 = nullptr;
  QStackedWidget* fraModelEstimationPanes = nullptr;
  QTreeWidget* TreeView5 = nullptr;
  QTreeWidget* Treeview4 = nullptr;
  QLabel* lblStepTitle = nullptr;
  QLabel* lblInstruction = nullptr;
  QLabel* lblPageTitle = nullptr;
  std::array<QRadioButton*, 6> optModelingType{};
  std::array<QRadioButton*, 7> optConditions{};
  std::array<QRadioButton*, 3> optModels{};

  // A bound control by its field name ("txtModelEst1", "chkSaveModels", ...).
  QWidget* Control(const std::string& name) const;

 public:
  // Escape and the window's close button ask as Cancel does.
  void reject() override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  struct TextBind {
    QLineEdit* edit;
    TextField* field;
    QLabel* label;
    std::string name;
  };
  struct CheckBind {
    QCheckBox* box;
    CheckField* field;
    std::string name;
  };
  struct ComboBind {
    QComboBox* box;
    ComboField* field;
  };

  // Runs a step of the wizard, then redraws; closes the window when the wizard closed.
  void Act(const std::function<void()>& step);
  QLineEdit* Text(QWidget* page, QFormLayout* form, const QString& caption, const std::string& name,
                  TextField& field, int width = 80);
  QCheckBox* Check(QWidget* page, const QString& caption, const std::string& name, CheckField& field,
                   std::function<void(bool)> then = {});
  QComboBox* Combo(QWidget* page, ComboField& field, std::function<void(const std::string&)> then);
  QWidget* UpDown(QWidget* page, QLineEdit* edit, int low, int high);

  QWidget* BuildStep0();
  QWidget* BuildStep1();
  QWidget* BuildStep2();
  QWidget* BuildStep3();
  QWidget* BuildStep4();
  QWidget* BuildStep5();
  QWidget* BuildModelEstimationTree();
  QWidget* BuildGroups();
  void RefreshStep();
  void RefreshOptions();
  void RefreshFields();
  void RefreshModelPages();
  void RefreshFocus();

  RulesWizard& w_;
  std::vector<TextBind> texts_;
  std::vector<CheckBind> checks_;
  std::vector<ComboBind> combos_;
  std::array<QRadioButton*, 2> optGroups_{};
  std::array<QRadioButton*, 2> optLambdas_{};
  QLabel* lblConditionsFrame_ = nullptr;
  QLabel* txtConditions1_ = nullptr;
  QLabel* txtModels_ = nullptr;
  QLabel* lblStartmodTitle_ = nullptr;
  QLabel* lblInputmodTitle_ = nullptr;
  QTabWidget* tabGroups_ = nullptr;
  bool refreshing_ = false;
  bool acting_ = false;
};

// The wizard as the run shows it: frmWizard1, modal over the main window.
class DesktopWizardUi : public WizardUi {
 public:
  explicit DesktopWizardUi(QWidget* parent) : parent_(parent) {}
  void Run(RulesWizard& wizard) override;

 private:
  QWidget* parent_;
};

}  // namespace tessaly::rules
