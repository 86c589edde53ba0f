// The spreadsheet windows for the screenshot session: each page of the Import Wizard over
// a workbook of monthly series with a PROPERTIES sheet, and the Command Line Runner before
// and after a run of that workbook through the engine.
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QTimer>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QTreeWidget>
#include <cmath>

#include "app/modal_robot.h"
#include "app/screenshots.h"
#include "spreadsheet/forms/frm_cmd_line.h"
#include "spreadsheet/forms/frm_wizard_bp.h"
#include "spreadsheet/workbook.h"

namespace tessaly::app {

namespace {
namespace fs = std::filesystem;

void Shot(QWidget& w, const QString& file) {
  w.show();
  QApplication::processEvents();
  w.grab().save(file);
}

// Five monthly series of four years, a region code column, and PROPERTIES.
fs::path SampleBook(const fs::path& folder) {
  using spreadsheet::Sheet;
  const char* months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const char* names[] = {"North Sales", "South Sales", "East-Units", "West (Units)", "Online!"};
  Sheet data{"Monthly", {}}, props{"PROPERTIES", {}};
  data.grid.SetText(1, 1, "Series");
  for (int k = 0; k < 48; ++k) data.grid.SetText(1, k + 2, std::to_string(2020 + k / 12) + months[k % 12]);
  for (int i = 0; i < 5; ++i) {
    data.grid.SetText(i + 2, 1, names[i]);
    for (int t = 0; t < 48; ++t)
      data.grid.SetNumber(i + 2, t + 2,
                          std::round(100 * (150 + 20 * i + 0.8 * t + (10 + 3 * i) * std::sin(2 * M_PI * t / 12) +
                                            4 * std::sin(1.7 * t + i))) / 100);
  }
  props.grid.SetText(1, 1, "PROPERTY");
  props.grid.SetText(1, 2, "VALUE");
  props.grid.SetText(2, 1, "SEASONALITY");
  props.grid.SetNumber(2, 2, 12);
  props.grid.SetText(3, 1, "FORECASTS");
  props.grid.SetNumber(3, 2, 12);
  fs::create_directories(folder);
  fs::path book = folder / "regional sales.xlsx";
  (void)spreadsheet::SaveXlsx(book, {&data, &props});  // a workbook not written shows in the picture
  return book;
}
}  // namespace

void SpreadsheetScreenshots(QWidget* parent, const QString& dir, const fs::path& program) {
  fs::path book = SampleBook(program / "sheets");
  // The messages met on the way are taken as pictures and answered.
  auto boxes = std::make_shared<int>(0);
  auto* robot = new ModalRobot(parent, [dir, boxes](QWidget* modal) {
    auto* box = qobject_cast<QMessageBox*>(modal);
    if (!box) return false;
    box->grab().save(dir + QString("/sheet_message_%1.png").arg(++*boxes));
    QTimer::singleShot(0, box, [box] { box->defaultButton() ? box->defaultButton()->click() : box->accept(); });
    return true;
  });
  {
    spreadsheet::frmWizardBP w(parent);
    if (!w.LoadFile(book)) return;
    w.optRows->setChecked(true);
    w.Wizard().tabular = false;
    w.Refresh();
    Shot(w, dir + "/import_0_sheet.png");
    w.cmdNext->click();
    Shot(w, dir + "/import_1_names.png");
    w.cmdNext->click();  // the repair message goes to the host
    w.optBatchRun->click();
    Shot(w, dir + "/import_2_name_grid.png");
    w.cmdNext->click();
    w.cboFieldSelect->setCurrentIndex(0);
    Shot(w, dir + "/import_3_filter.png");
    w.cmdNext->click();
    Shot(w, dir + "/import_4_marks.png");
    w.cmdNext->click();
    w.txtBegYear->setText("2020");
    w.txtBegPeriod->setText("1");
    Shot(w, dir + "/import_5_properties.png");
    w.cmdNext->click();
    Shot(w, dir + "/import_6_summary.png");
  }
  {
    spreadsheet::frmCmdLine runner(program, parent);
    (void)runner.LoadFile(book);  // shows in the picture
    Shot(runner, dir + "/cmdline_loaded.png");
    runner.tvwSwitches->topLevelItem(0)->setCheckState(0, Qt::Unchecked);
    runner.cmdRun->click();
    Shot(runner, dir + "/cmdline_after_run.png");
  }
  robot->Stop();
  robot->deleteLater();
}

}  // namespace tessaly::app
