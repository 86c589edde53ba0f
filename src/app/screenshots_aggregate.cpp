#include "app/screenshots_aggregate.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <memory>

#include "aggregate/forms/frm_agg_params.h"
#include "aggregate/forms/frm_agg_select.h"
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

void TakeAggregationScreenshots(QWidget* parent, const QString& dir, const std::filesystem::path& program) {
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
    platform::WriteWholeFile(data / "GROUPT.PRO", pro);
    aggregate::frmAggParams params({program, data, {"NORTH.ASC", "SOUTH.ASC"}, false, "12", "12", nullptr}, parent);
    params.Box(aggregate::Box::ForecastsYes)->click();
    Save(params, dir + "/agg_params_5_parent_forecasts.png");
  }
  std::error_code ec;
  std::filesystem::remove_all(data, ec);
  platform::SetDialogHost(std::make_shared<platform::QtDialogHost>());
}

}  // namespace tessaly::app
