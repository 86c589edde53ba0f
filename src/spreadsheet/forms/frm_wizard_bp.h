#pragma once
// frmWizardBP: the Import Wizard's window over the plain ImportWizard. Each page shows the
// wizard's state; the buttons forward to it and the window is redrawn after each step.
#include <QDialog>
#include <memory>

#include "spreadsheet/import_wizard.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QVBoxLayout;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QStackedWidget;
class QTableWidget;
class QTextBrowser;

namespace tessaly::spreadsheet {

class frmWizardBP : public QDialog {
  Q_OBJECT
 public:
  explicit frmWizardBP(QWidget* parent = nullptr);

  // Asks for a file (the Load step) and shows step 0; false when none was opened.
  [[nodiscard]] bool AskForFile();
  // Opens the file without asking (tests, a file dropped on the window).
  [[nodiscard]] bool LoadFile(const std::filesystem::path& file);
  ImportWizard& Wizard() { return w_; }
  void Refresh();

  QStackedWidget* fraStep = nullptr;
  QLabel* lblStep = nullptr;
  QComboBox* cboSheet = nullptr;
  QRadioButton* optColumns = nullptr;
  QRadioButton* optRows = nullptr;
  QCheckBox* chkNames = nullptr;
  QTableWidget* tblNamesPreview = nullptr;  // the sheet on the names step
  QRadioButton* optOneFile = nullptr;
  QRadioButton* optBatchImport = nullptr;
  QRadioButton* optBatchRun = nullptr;
  QTableWidget* TslySpread = nullptr;    // the sheet
  QTableWidget* TslySNSpread = nullptr;  // the series names with their ticks
  QComboBox* cboFieldSelect = nullptr;
  QComboBox* cboValueSelect = nullptr;
  QLabel* lblRecordCount = nullptr;
  QTableWidget* lstSeries = nullptr;
  QLineEdit* txtOutSeriesName = nullptr;
  QComboBox* cboOutputSeries = nullptr;
  QLineEdit* txtSeasonality = nullptr;
  QLineEdit* txtBegYear = nullptr;
  QLineEdit* txtBegPeriod = nullptr;
  QLineEdit* txtObservations = nullptr;
  QLineEdit* txtImpForecast = nullptr;
  QLineEdit* txtDirectory = nullptr;
  QLabel* lbl5or7 = nullptr;
  QTextBrowser* brwSummary = nullptr;
  QLabel* lblStatus = nullptr;
  QPushButton* cmdBack = nullptr;
  QPushButton* cmdNext = nullptr;
  QPushButton* cmdFinish = nullptr;
  QPushButton* cmdCancel = nullptr;

 public slots:
  void cmdNext_Click();
  void cmdBack_Click();
  void cmdFinish_Click();

 private:
  void BuildSheetPage();
  void BuildNamesPage();
  void BuildSeriesNamesPage();
  void BuildFilterPage();
  void BuildMarksPage();
  void BuildPropertiesPage();
  void BuildSummaryPage();
  void BuildButtons(QVBoxLayout* top);
  void Collect();  // the controls of the present step into the wizard
  void ShowNames();
  void ShowSeriesList();
  void ShowFilterValues();
  ImportWizard w_;
  bool refreshing_ = false;
};

// The menu command Import: the wizard over the main window.
void ShowImportWizard(QWidget* parent);

}  // namespace tessaly::spreadsheet
