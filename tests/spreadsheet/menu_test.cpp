// The main window's File menu: Import opens the wizard over the chosen workbook, Run Excel
// File opens the runner's window, which runs a sheet through the real engine with the
// desktop's progress window and writes tslyb.xlsx.
#include <gtest/gtest.h>

#include <QAction>
#include <QComboBox>
#include <QMenu>
#include <QPushButton>
#include <QTreeWidget>

#include "app/modal_robot.h"
#include "batch/forms/frm_progress.h"
#include "gui.h"
#include "sheet_files.h"
#include "spreadsheet/forms/frm_cmd_line.h"
#include "spreadsheet/forms/frm_wizard_bp.h"

namespace tessaly::spreadsheet {
namespace {

using namespace testing;
using S = std::string;

QAction* MenuAction(QMenu* menu, const char* name) {
  for (QAction* a : menu->actions())
    if (a->objectName() == name) return a;
  return nullptr;
}

TEST(MenuTest, ImportAndRunExcelFileOpenTheirWindowsAndTheRunnerRunsASheet) {
  tessaly::testing::DesktopFixture f;
  fs::path book = f.data.path() / "shop.xlsx";
  SheetSpec sheet{"Monthly", {{S("Series")}}};
  const char* m[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  for (int k = 0; k < 36; ++k) sheet.rows[0].push_back(std::to_string(2018 + k / 12) + m[k % 12]);
  for (int i = 0; i < 2; ++i) {
    sheet.rows.push_back({S("ITEM") + std::to_string(i)});
    for (double v : MonthlySeries(36, 40 + i)) sheet.rows.back().push_back(v);
  }
  MakeXlsx(book, {sheet});

  QAction* import = MenuAction(f.form->mnuFile, "mnu_file_import");
  QAction* run_excel = MenuAction(f.form->mnuFile, "mnuFileRunExcel");
  ASSERT_TRUE(import && run_excel);
  EXPECT_EQ(import->text().toStdString(), "&Import...");
  EXPECT_EQ(run_excel->text().toStdString(), "Run &Excel File...");

  int wizard_sheets = -1, runner_rows = -1;
  bool ran = false;
  app::ModalRobot robot(f.form.get(), [&](QWidget* modal) {
    if (auto* w = qobject_cast<frmWizardBP*>(modal)) {
      wizard_sheets = w->cboSheet->count();
      return app::ModalRobot::ClickLater(w, "cmdCancel");
    }
    if (auto* r = qobject_cast<frmCmdLine*>(modal)) {
      if (!ran) {
        ran = true;
        EXPECT_TRUE(r->LoadFile(book));
        r->tvwSwitches->topLevelItem(0)->setCheckState(0, Qt::Unchecked);
        return app::ModalRobot::ClickLater(r, "cmdRun");
      }
      if (!r->LastResult().finished && r->LastResult().error.empty()) return false;  // still running
      runner_rows = r->tvwProgress->topLevelItemCount();
      return app::ModalRobot::ClickLater(r, "cmdCancel");
    }
    return false;
  });
  f.host->files = {book.string()};
  import->trigger();
  EXPECT_EQ(wizard_sheets, 1);
  EXPECT_EQ(f.host->file_requests.back().filter, "Excel Files (*.csv;*.xls;*.xlsx)|*.csv;*.xls;*.xlsx");
  run_excel->trigger();
  robot.Stop();
  EXPECT_EQ(runner_rows, 2) << f.Messages();
  auto cells = PythonCells(f.data.path() / "tslyb.xlsx", "tessaly");
  EXPECT_EQ(cells["AL1"], "2021Jan");
  EXPECT_TRUE(cells.count("AL3")) << f.Messages();
}

}  // namespace
}  // namespace tessaly::spreadsheet
