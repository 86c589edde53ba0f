#pragma once
// frmCmdLine ("Command Line Runner"): the workbook runner with a window: the workbook and
// its sheet, the figures (from the PROPERTIES sheet when there is one), the tree of chart
// switches, Run and Cancel, the progress tree of the rows and the log of the run.
#include <QDialog>
#include <filesystem>
#include <string>
#include <vector>

#include "spreadsheet/runner.h"

class QComboBox;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace tessaly::spreadsheet {

class frmCmdLine : public QDialog {
  Q_OBJECT
 public:
  explicit frmCmdLine(std::filesystem::path program_folder, QWidget* parent = nullptr);

  // The Browse step without the file dialog: reads the workbook, lists its sheets and the
  // figures of its PROPERTIES sheet. False (message shown) when the file is refused.
  [[nodiscard]] bool LoadFile(const std::filesystem::path& file);
  // The switches as the tree holds them (CMDLineOptions).
  std::vector<std::string> CMDLineOptions() const;
  // What the graphs are drawn with; tests put a recorder here.
  void SetReports(std::shared_ptr<batch::RunReports> reports) { reports_ = std::move(reports); }
  void SetEngineCall(batch::EngineCallFunction call) { engine_call_ = std::move(call); }
  const RunnerResult& LastResult() const { return last_; }

  QLineEdit* txtFile = nullptr;
  QComboBox* cboWorksheet = nullptr;
  QLineEdit* txtSeasonality = nullptr;
  QLineEdit* txtMajor = nullptr;
  QLineEdit* txtMinor = nullptr;
  QLineEdit* txtForecasts = nullptr;
  QTreeWidget* tvwSwitches = nullptr;
  QTreeWidget* tvwProgress = nullptr;
  QPlainTextEdit* txtLog = nullptr;
  QPushButton* cmdBrowse = nullptr;
  QPushButton* cmdRun = nullptr;
  QPushButton* cmdCancel = nullptr;

 public slots:
  void cmdBrowse_Click();
  void cmdRun_Click();
  void cmdCancel_Click();

 private:
  void Log(const std::string& line);
  std::filesystem::path program_folder_;
  std::filesystem::path file_;
  std::shared_ptr<batch::RunReports> reports_;
  batch::EngineCallFunction engine_call_;
  // The running sheet's engine state: Cancel sets it while the sheet runs.
  std::shared_ptr<batch::EngineSession> session_ = std::make_shared<batch::EngineSession>();
  RunnerResult last_;
  bool running_ = false;
  QTreeWidgetItem* current_row_ = nullptr;
};

// The menu command Run Excel File: the runner's dialog over the main window. `reports`
// draws the graphs with the switches' choice.
using RunnerReportsFactory = std::function<std::shared_ptr<batch::RunReports>(const batch::GraphPreferences&)>;
void ShowCmdLineRunner(QWidget* parent, const std::filesystem::path& program_folder,
                       RunnerReportsFactory reports = {});

}  // namespace tessaly::spreadsheet
