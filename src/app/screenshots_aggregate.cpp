#include "app/screenshots_aggregate.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QTreeWidget>
#include <QListWidget>
#include <QPushButton>
#include <QTimer>
#include <memory>

#include "aggregate/forms/frm_agg_params.h"
#include "aggregate/forms/frm_agg_select.h"
#include "app/desktop_session.h"
#include "app/modal_robot.h"
#include "app/report_pane.h"
#include "batch/forms/frm_progress.h"
#include "rules/forms/frm_wizard1.h"
#include "shell/forms/frm_main.h"
#include "platform/dialogs.h"
#include "platform/forms/qt_dialog_host.h"
#include "platform/textfile.h"

namespace tessaly::app {

namespace {
void Save(QWidget& w, const QString& file) {
  w.show();
  QApplication::processEvents();
  w.grab().save(file);
}
}  // namespace

namespace {
// The quarterly sample's two series as the children, answered as a person would.
void RunFromTheMenu(shell::frmMain& form, DesktopSession& session, const QString& dir,
                    const std::filesystem::path& program) {
  bool progress_taken = false;
  ModalRobot robot(&form, [&](QWidget* modal) {
    if (auto* select = qobject_cast<aggregate::frmAggSelect*>(modal)) {
      select->chkAddAll->click();
      select->cmdAdd->click();
      return ModalRobot::ClickLater(select, "cmdFinish");
    }
    if (auto* params = qobject_cast<aggregate::frmAggParams*>(modal)) {
      params->Box(aggregate::Box::ForecastsNo)->click();
      params->Box(aggregate::Box::AscNo)->click();
      params->Box(aggregate::Box::Automatic2)->click();
      return ModalRobot::ClickLater(params, "Command1");
    }
    if (auto* wizard = qobject_cast<rules::frmWizard1*>(modal))
      return ModalRobot::ClickLater(wizard, wizard->Wizard().Step() == 0 ? "cmdNav3" : "cmdNav4");
    if (auto* progress = qobject_cast<batch::frmProgress*>(modal)) {
      if (!progress_taken) progress->grab().save(dir + "/agg_progress.png");
      progress_taken = true;
      return false;
    }
    if (auto* box = qobject_cast<QMessageBox*>(modal)) {
      // No a priori replacements; every other message as its default button answers it.
      QAbstractButton* answer = box->text().contains("replace any children") ? box->button(QMessageBox::No)
                                                                             : box->defaultButton();
      QTimer::singleShot(0, box, [box, answer] { answer ? answer->click() : box->accept(); });
      return true;
    }
    return false;
  });
  (void)session.OpenProject(program / "examples" / "quarterly.xml");  // shows in the picture
  session.mnu_Agg_Click();
  robot.Stop();
  ReportPane* pane = session.Pane();
  pane->trvMenu->expandAll();
  const std::string details = batch::RowKey("GROUPT.ASC", "R1");
  if (QTreeWidgetItem* parent = pane->ItemByKey(details)) {
    pane->trvMenu->setCurrentItem(parent);
    session.trvMenu_NodeClick(details);
  }
  QApplication::processEvents();
  form.grab().save(dir + "/agg_main_after_run.png");
}
}  // namespace

void TakeAggregationScreenshots(shell::frmMain& form, DesktopSession& session, const QString& dir,
                                const std::filesystem::path& program) {
  QWidget* parent = &form;
  // The messages the answers raise are recorded, not shown: the pictures are of the dialogs.
  platform::SetDialogHost(std::make_shared<platform::RecordingDialogHost>());
  {
    aggregate::frmAggSelect select(aggregate::SelectionFlow::Aggregation,
                                   {"NORTH.ASC", "SOUTH.ASC", "EAST.ASC", "WEST.ASC", "CENTRAL.ASC"},
                                   [](const std::vector<std::string>&) { return false; }, parent);
    Save(select, dir + "/agg_select.png");
    select.lstRoster->item(0)->setSelected(true);
    select.lstRoster->item(1)->setSelected(true);
    select.lstRoster->item(3)->setSelected(true);
    select.cmdAdd->click();
    Save(select, dir + "/agg_select_chosen.png");
  }
  const std::filesystem::path data = program / "aggregation_screens";
  std::filesystem::create_directories(data);
  {
    aggregate::frmAggParams params({program, data, {"1.asc", "2.asc"}, true, "12", "12", nullptr}, parent);
    Save(params, dir + "/agg_params_1_forecasts.png");
    params.Box(aggregate::Box::ForecastsNo)->click();
    Save(params, dir + "/agg_params_2_asc.png");
    params.Box(aggregate::Box::AscNo)->click();
    Save(params, dir + "/agg_params_3_questions.png");
    params.Box(aggregate::Box::Automatic2)->click();
    params.Box(aggregate::Box::CtoP)->click();
    params.Box(aggregate::Box::CausalYes)->click();
    Save(params, dir + "/agg_params_4_qvx_rules.png");
  }
  {
    std::string pro = "PERIOD GROUPT\r\n";
    for (int i = 0; i < 8; ++i) pro += "1\r\n";
    // A sample that cannot be written shows in the picture, which is looked at.
    (void)platform::WriteWholeFile(data / "GROUPT.PRO", pro);
    aggregate::frmAggParams params({program, data, {"NORTH.ASC", "SOUTH.ASC"}, false, "12", "12", nullptr}, parent);
    params.Box(aggregate::Box::ForecastsYes)->click();
    Save(params, dir + "/agg_params_5_parent_forecasts.png");
  }
  std::error_code ec;
  std::filesystem::remove_all(data, ec);
  platform::SetDialogHost(std::make_shared<platform::QtDialogHost>());
  RunFromTheMenu(form, session, dir, program);
}

}  // namespace tessaly::app
