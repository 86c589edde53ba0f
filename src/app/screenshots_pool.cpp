// The pooling dialogs for the screenshot session: the selection in its pooling flow with files moved across,
// frmLoadGroupData with a group count typed, and the main window after a pooling run of
// three like series with the F-test report shown.
#include <QApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QTreeWidget>
#include <cmath>
#include <filesystem>

#include "app/desktop_session.h"
#include "app/modal_robot.h"
#include "app/report_pane.h"
#include "app/screenshots.h"
#include "platform/numfmt.h"
#include "platform/textfile.h"
#include "aggregate/forms/frm_agg_select.h"
#include "pool/forms/frm_load_group_data.h"
#include "pool/pool_headless.h"
#include "pool/pool_texts.h"

namespace tessaly::app {

namespace {

// A monthly AR(1) series around 100, its own for each store.
void WriteStore(const std::filesystem::path& file, int k) {
  std::vector<std::string> lines{"0", "0", "0", "1", "12", "2016", "1", "36", "0", "0", "6",
                                 file.stem().string(), "0"};
  double level = 100;
  for (int t = 0; t < 36; ++t) {
    level = 100 + 0.5 * (level - 100) + 6 * std::sin(t * 1.7 + k * 2.3) + 3 * std::cos(t * 0.9 * k);
    lines.push_back(platform::NumberToText(std::round(level * 100) / 100));
  }
  // A sample that cannot be written shows in the picture, which is looked at.
  (void)platform::WriteAllLines(file, lines);
}

}  // namespace

void PoolScreenshots(QWidget* parent, DesktopSession& session, const QString& dir,
                     const std::filesystem::path& program) {
  auto grab = [](QWidget& w, const QString& file) {
    w.show();
    QApplication::processEvents();
    w.grab().save(file);
    w.hide();
  };
  std::vector<std::string> files{"STORE01.ASC", "STORE02.ASC", "STORE03.ASC", "STORE04.ASC", "STORE05.ASC",
                                 "STORE06.ASC", "STORE07.ASC"};
  aggregate::frmAggSelect select(aggregate::SelectionFlow::Pooling, files, nullptr, parent);
  grab(select, dir + "/pool_select.png");
  for (int row : {0, 1, 2}) select.lstRoster->item(row)->setSelected(true);
  select.cmdAdd->click();
  grab(select, dir + "/pool_select_chosen.png");
  pool::frmLoadGroupData groups(parent, 144);
  groups.txtGroupData->setText("3");
  grab(groups, dir + "/pool_groups.png");

  // A pooling run of three stores, its messages answered, and the analysis in the pane.
  std::filesystem::path data = program / "pooldemo";
  std::filesystem::create_directories(data);
  batch::cBatchFile project(program);
  project.SetInDirectory(data.string());
  project.SetOutDirectory(data.string());
  project.SetBatchName("STORES.xml");
  std::vector<std::string> chosen{"STORE01.ASC", "STORE02.ASC", "STORE03.ASC"};
  for (int k = 0; k < 3; ++k) {
    WriteStore(data / chosen[k], k + 1);
    project.Add_File(chosen[k], 0, 0, "00/00/00");
  }
  ModalRobot robot(nullptr, [](QWidget* modal) {
    auto* box = qobject_cast<QMessageBox*>(modal);
    if (!box) return false;
    QTimer::singleShot(0, box, [box] { box->defaultButton() ? box->defaultButton()->click() : box->accept(); });
    return true;
  });
  pool::ModelChoice choice;
  choice.preset = 2;
  session.Session().trvMenu.Clear();
  pool::HeadlessPool run = pool::RunPoolHeadless(project, chosen, choice, pool::PoolOptions{program, true, false},
                                                 nullptr, &session.Session().trvMenu);
  robot.Stop();
  session.SetStatus(run.outcome.end == pool::PoolEnd::Finished ? pool::texts::kFinished : pool::texts::kIncomplete);
  session.Session().OutputPath = data / "OUTPUT";
  session.SyncTree();
  session.ShowReportTree(true);
  ReportPane* pane = session.Pane();
  if (QTreeWidgetItem* item = pane->ItemByKey("S11")) {
    pane->trvMenu->setCurrentItem(item);
    pane->trvMenu->scrollToItem(item);
    session.trvMenu_NodeClick("S11");
    QApplication::processEvents();
    parent->grab().save(dir + "/main_pool_analysis.png");
  }
}

}  // namespace tessaly::app
