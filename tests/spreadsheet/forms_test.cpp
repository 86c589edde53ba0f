// The Import Wizard and the Command Line Runner driven through their controls, off-screen,
// with every message recorded.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QStackedWidget>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QTextBrowser>
#include <QTreeWidget>

#include "batch/batch_file.h"
#include "platform/textfile.h"
#include "sheet_files.h"
#include "spreadsheet/forms/frm_cmd_line.h"
#include "spreadsheet/forms/frm_wizard_bp.h"
#include "support/messages.h"
#include "support/program_folder.h"
#include "support/qt_app.h"

namespace tessaly::spreadsheet {
namespace {

using namespace testing;
using tessaly::testing::TempDir;
using S = std::string;

class FormsTest : public ::testing::Test {
 protected:
  void SetUp() override { tessaly::testing::OffscreenApp(); }
  std::string Last() const { return host.Texts().empty() ? "" : host.Texts().back(); }
  std::string LastTitle() const { return host->shown.empty() ? "" : host->shown.back().title; }
  TempDir dir;
  tessaly::testing::RecordedMessages host;
};

fs::path WizardBook(const fs::path& folder) {
  std::vector<std::vector<CellSpec>> rows = {{S("Sales 2001!"), S("Region"), S("ABCDEFGHIJKLMNOPQ")}};
  for (int r = 0; r < 4; ++r) rows.push_back({100.0 + r, S(r % 2 ? "S" : "N"), 0.5 * r});
  fs::path book = folder / "wizard.xlsx";
  MakeXlsx(book, {{"Blank", {}},
                  {"NoName", {{std::monostate{}, 1.0}, {2.0, 3.0}}},
                  {"Monthly", rows},
                  {"PROPERTIES", {{S("PROPERTY"), S("VALUE")}, {S("MAJOR"), 2001.0}, {S("MINOR"), 1.0}}}});
  return book;
}

TEST_F(FormsTest, WizardWalksEveryStepWithItsChecksAndWritesABatchRun) {
  frmWizardBP w;
  w.show();
  ASSERT_TRUE(w.LoadFile(WizardBook(dir.path())));
  ASSERT_EQ(w.cboSheet->count(), 3);  // PROPERTIES is not offered
  w.cboSheet->setCurrentText("Blank");
  w.cmdNext->click();
  EXPECT_EQ(Last(), "The selected sheet appears to be blank.\nPlease Select a sheet with data to continue.");
  EXPECT_EQ(w.fraStep->currentIndex(), 0);

  w.cboSheet->setCurrentText("NoName");
  w.cmdNext->click();
  ASSERT_EQ(w.fraStep->currentIndex(), 1);
  EXPECT_EQ(w.chkNames->text().toStdString(), "First row contains Series Names.");
  w.chkNames->setChecked(false);
  w.cmdNext->click();
  EXPECT_EQ(LastTitle(), "First row/col Blank?");
  EXPECT_EQ(w.fraStep->currentIndex(), 1);
  w.Wizard().tabular = false;
  w.Refresh();
  EXPECT_EQ(w.chkNames->text().toStdString(), "First column contains Series Names.");
  w.Wizard().tabular = true;
  w.cmdBack->click();

  w.cboSheet->setCurrentText("Monthly");
  w.cmdNext->click();
  w.chkNames->setChecked(true);
  w.cmdNext->click();
  ASSERT_EQ(w.fraStep->currentIndex(), 2);
  EXPECT_EQ(LastTitle(), "Import Wizard - Header selection");
  EXPECT_NE(Last().find("illegal characters"), std::string::npos);
  EXPECT_NE(Last().find("have been truncated."), std::string::npos);
  EXPECT_EQ(w.TslySNSpread->verticalHeaderItem(0)->text().toStdString(), "Batch Import");
  EXPECT_EQ(w.TslySNSpread->verticalHeaderItem(1)->text().toStdString(), "Series Name");
  EXPECT_EQ(w.TslySNSpread->item(1, 0)->text().toStdString(), "Sales_2001_");
  EXPECT_EQ(w.TslySNSpread->item(1, 2)->text().toStdString(), "ABCDEFGHIJKLMN");
  w.optBatchRun->click();
  EXPECT_EQ(w.TslySNSpread->verticalHeaderItem(0)->text().toStdString(), "Batch Run");
  w.TslySNSpread->item(1, 0)->setText("Sales.East");  // an edit is tested again
  w.cmdNext->click();
  ASSERT_EQ(w.fraStep->currentIndex(), 3);
  EXPECT_EQ(w.Wizard().fields[0].NewName, "Sales_East");

  w.cboFieldSelect->setCurrentText("Region");
  ASSERT_EQ(w.cboValueSelect->count(), 2);
  w.cboValueSelect->setCurrentText("N");
  EXPECT_EQ(w.lblRecordCount->text().toStdString(), "Records: 2");
  w.cmdNext->click();
  ASSERT_EQ(w.fraStep->currentIndex(), 4);

  w.findChild<QPushButton*>("cmdDeselectAll")->click();
  w.cmdNext->click();
  EXPECT_EQ(Last(), "Please select at least one series to import.");
  w.findChild<QPushButton*>("cmdSelectAll")->click();
  w.lstSeries->item(1, 0)->setCheckState(Qt::Unchecked);  // the region codes
  w.cmdNext->click();
  ASSERT_EQ(w.fraStep->currentIndex(), 5);
  EXPECT_EQ(w.txtObservations->text().toStdString(), "2");
  EXPECT_EQ(w.txtSeasonality->text().toStdString(), "12");
  EXPECT_EQ(w.txtBegYear->text().toStdString(), "2001");

  // The figures' checks themselves are the logic's (import_test); here the window stays put.
  w.txtSeasonality->setText("0");
  w.cmdNext->click();
  EXPECT_EQ(LastTitle(), "Series Properties");
  EXPECT_EQ(w.fraStep->currentIndex(), 5);
  w.txtSeasonality->setText("7");
  EXPECT_FALSE(w.lbl5or7->isHidden());
  w.txtSeasonality->setText("12");
  EXPECT_TRUE(w.lbl5or7->isHidden());
  w.txtImpForecast->setText("12");
  w.txtDirectory->setText(QString::fromStdString((dir / "out").string()));
  w.cmdNext->click();
  ASSERT_EQ(w.fraStep->currentIndex(), 6);
  std::string summary = w.brwSummary->toPlainText().toStdString();
  EXPECT_NE(summary.find("Import Summary"), std::string::npos);
  EXPECT_NE(summary.find("Number of Series: 2"), std::string::npos) << summary;
  EXPECT_NE(summary.find("Observations: 2"), std::string::npos) << summary;

  w.cmdFinish->click();
  EXPECT_EQ(Last(), "Finished importing 2 series.");
  auto lines = *platform::ReadAllLines(dir / "out" / "Sales_East.asc");
  EXPECT_EQ(std::vector<std::string>(lines.begin() + 7, lines.end()),
            (std::vector<std::string>{"2", "0", "0", "12", "Sales_East", "0", "100", "102"}));
  EXPECT_TRUE(fs::exists(dir / "out" / "ABCDEFGHIJKLMN.asc"));
  EXPECT_FALSE(fs::exists(dir / "out" / "Region.asc"));
  batch::cBatchFile project(dir.path());
  ASSERT_TRUE(project.Load(dir / "out" / "Monthly.xml"));
  EXPECT_EQ(project.Count(), 2u);
}

TEST_F(FormsTest, OneDatasetAsksForItsFileAndAboutOverwriting) {
  frmWizardBP w;
  ASSERT_TRUE(w.LoadFile(WizardBook(dir.path())));
  w.cboSheet->setCurrentText("Monthly");
  w.cmdNext->click();
  w.cmdNext->click();
  w.optOneFile->click();
  w.cmdNext->click();
  w.cmdNext->click();
  w.lstSeries->item(1, 0)->setCheckState(Qt::Unchecked);
  w.cmdNext->click();
  w.cboOutputSeries->setCurrentText("Sales_2001_");
  w.cmdNext->click();
  ASSERT_EQ(w.fraStep->currentIndex(), 6);
  tessaly::testing::WriteFile(dir / "taken.asc", "old");
  host->files = {(dir / "taken.asc").string(), (dir / "new.asc").string()};
  host->answers = {platform::mb::No};
  w.cmdFinish->click();
  EXPECT_EQ(host->file_requests.size(), 2u);
  EXPECT_EQ(host->file_requests[0].filter, "Tessaly File (*.asc)|*.asc");
  EXPECT_EQ(host.Starting("The file you have selected already exists")->title, "Import Excel File");
  EXPECT_EQ(tessaly::testing::ReadFile(dir / "taken.asc"), "old");
  auto lines = *platform::ReadAllLines(dir / "new.asc");
  EXPECT_EQ(std::vector<std::string>(lines.begin() + 3, lines.begin() + 13),
            (std::vector<std::string>{"2", "12", "2001", "1", "4", "0", "0", "36", "ABCDEFGHIJKLMN", "Sales_2001_"}));
}

struct ScriptedForecasts {
  fs::path folder;
  batch::EngineCallResult operator()(quorvane::EngineArrays& a, batch::EngineReturn& r,
                                     const batch::EngineCallContext&) const {
    tessaly::testing::WriteFile(folder / "DETAILS.HTM", "<html/>");
    EXPECT_LE(a.property_values[3], a.property_values[1]);  // the period fits the seasonality
    r.returned_data_prop.assign(8, 0);
    r.returned_data_prop[7] = a.property_values[7];
    for (int k = 0; k < a.property_values[7]; ++k) a.forecast_values[k] = k;
    return {};
  }
};

TEST_F(FormsTest, RunnerReadsPropertiesTakesItsSwitchesAndRuns) {
  fs::create_directory(dir / "program");
  frmCmdLine f(dir / "program");
  f.show();
  EXPECT_EQ(f.windowTitle().toStdString(), "Command Line Runner");
  tessaly::testing::WriteFile(dir / "notes.txt", "x");
  tessaly::testing::WriteFile(dir / "fake.xlsx", "x");
  EXPECT_FALSE(f.LoadFile(dir / "notes.txt"));
  EXPECT_EQ(Last(), "Currently only files with an extention of XLS or XLSX are supported.");
  EXPECT_FALSE(f.LoadFile(dir / "fake.xlsx"));
  EXPECT_EQ(Last(), "The selected file does not appear to have the correct formatting for an Excel XLSX file.");

  std::vector<CellSpec> header = {S("Series"), S("2019Nov"), S("2019Dec"), S("2020Jan"), S("2020Feb")};
  MakeXlsx(dir / "run.xlsx", {{"Data", {header, {S("A"), 1.0, 2.0, 3.0, 4.0}, {S("B"), 5.0, 6.0, 7.0, 8.0}}},
                              {"PROPERTIES", {{S("PROPERTY"), S("VALUE")}, {S("SEASONALITY"), 4.0}, {S("FORECASTS"), 700.0}}}});
  ASSERT_TRUE(f.LoadFile(dir / "run.xlsx"));
  EXPECT_EQ(Last(), "The following issues were found:\nThe number of forecasts cannot exceed 600");
  EXPECT_EQ(LastTitle(), "Run Excel File Properties");
  EXPECT_EQ(f.txtSeasonality->text().toStdString(), "4");
  EXPECT_EQ(f.txtForecasts->text().toStdString(), "12");

  QTreeWidgetItem* charts = f.tvwSwitches->topLevelItem(0);
  EXPECT_EQ(charts->text(0).toStdString(), "Enable Charts");
  EXPECT_EQ(f.CMDLineOptions(), (std::vector<std::string>{"/ALL"}));
  charts->child(9)->setCheckState(0, Qt::Checked);
  EXPECT_EQ(f.CMDLineOptions(), (std::vector<std::string>{"/ALL", "/P"}));
  for (int i = 0; i < 9; ++i) charts->child(i)->setCheckState(0, i == 7 ? Qt::Checked : Qt::Unchecked);
  EXPECT_EQ(f.CMDLineOptions(), (std::vector<std::string>{"/FF", "/P"}));
  charts->child(7)->setCheckState(0, Qt::Unchecked);
  EXPECT_EQ(f.CMDLineOptions(), (std::vector<std::string>{"/NG"}));
  charts->setCheckState(0, Qt::Unchecked);
  EXPECT_EQ(f.CMDLineOptions(), (std::vector<std::string>{"/NG"}));

  f.txtForecasts->setText("700");
  f.cmdRun->click();
  EXPECT_EQ(Last(), "The number of forecasts cannot exceed 600");
  f.txtForecasts->setText("3");
  f.SetEngineCall(ScriptedForecasts{dir / "program"});
  f.cmdRun->click();
  ASSERT_TRUE(f.LastResult().finished) << f.LastResult().error;
  ASSERT_EQ(f.tvwProgress->topLevelItemCount(), 2);
  EXPECT_EQ(f.tvwProgress->topLevelItem(1)->text(0).toStdString(), "B");
  EXPECT_EQ(f.tvwProgress->topLevelItem(1)->text(2).toStdString(), "Forecasts written");
  QStringList log = f.txtLog->toPlainText().split('\n');
  EXPECT_TRUE(log.first().startsWith("Run started at : ")) << log.first().toStdString();
  EXPECT_EQ(log.last().toStdString(), "Finished Processing.");
  Workbook out;
  ASSERT_TRUE(ReadWorkbook(dir / "tslyb.xlsx", out).ok());
  // Seasonality 4 from the sheet's figures: the headings are quarters.
  // 2019Nov is the fourth quarter; four quarters later comes 2020/4.
  EXPECT_EQ(out.sheets[0].grid.Text(1, 6), "2020/4");
  EXPECT_EQ(out.sheets[0].grid.Text(1, 8), "2021/2");
  EXPECT_EQ(out.sheets[0].grid.At(3, 8).number, 2);

  f.cboWorksheet->clear();
  f.cmdRun->click();
  EXPECT_EQ(Last(), "You must select a worksheet name");
}

}  // namespace
}  // namespace tessaly::spreadsheet
