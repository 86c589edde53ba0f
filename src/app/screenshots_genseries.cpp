#include "app/screenshots_genseries.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QComboBox>
#include <QDate>
#include <QDateEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>

#include "batch/forms/frm_project_forms.h"
#include "genseries/adjust.h"
#include "genseries/forms/frm_adjust.h"
#include "genseries/forms/frm_dialogs.h"
#include "genseries/forms/frm_wizard2.h"
#include "genseries/wizard.h"
#include "genseries/wizard_texts.h"

namespace tessaly::app {

namespace fs = std::filesystem;
using namespace tessaly::genseries;

namespace {
void Shot(QWidget& w, const QString& file) {
  w.show();
  QApplication::processEvents();
  w.grab().save(file);
}

void SelectItems(QListWidget* list, const std::vector<QString>& names) {
  for (int i = 0; i < list->count(); ++i)
    list->item(i)->setSelected(std::find(names.begin(), names.end(), list->item(i)->text()) != names.end());
}
}  // namespace

void GenSeriesScreenshots(QWidget* parent, const QString& dir, const fs::path& program) {
  const fs::path airline = program / "examples" / "AIRLINE.ASC";
  std::optional<WizardDataset> monthly = WizardDataset::FromFile(airline);
  if (!monthly) return;
  {
    // The monthly sample through every step.
    AddSeriesWizard wizard(*monthly);
    frmWizard2 form(wizard, parent);
    Shot(form, dir + "/addseries_0_options.png");
    for (QCheckBox* box : {form.chkAddLevel, form.chkAddPulse, form.chkAddSP, form.chkAddTrend,
                           form.chkAddHoliday, form.chkAddUserDef})
      box->setChecked(true);
    Shot(form, dir + "/addseries_1_options_ticked.png");
    form.cmdNext_Click();
    form.txtLevel[0]->setText("1955");
    form.txtLevel[1]->setText("7");
    Shot(form, dir + "/addseries_2_level.png");
    form.cmdNext_Click();
    form.txtPulse[0]->setText("1957");
    form.txtPulse[1]->setText("3");
    Shot(form, dir + "/addseries_3_pulse.png");
    form.cmdNext_Click();
    form.txtSP[0]->setText("1950");
    form.txtSP[1]->setText("12");
    Shot(form, dir + "/addseries_4_seasonal_pulse.png");
    form.cmdNext_Click();
    form.txtTrend[0]->setText("1958");
    form.txtTrend[1]->setText("1");
    form.txtTrend[2]->setText("1959");
    form.txtTrend[3]->setText("6");
    Shot(form, dir + "/addseries_5_trend.png");
    form.cmdNext_Click();
    SelectItems(form.lstHolidays1, {"M_GOODFRIDAY", "M_JULY4TH", "M_THANKSGIVING", "M_CHRISTMAS"});
    form.cmdSelect->click();
    SelectItems(form.lstHolidays1, {"M_HALLOWEEN"});
    Shot(form, dir + "/addseries_6_holidays.png");
    form.cmdNext_Click();
    form.cboUserDef2->setCurrentText("Business Days");
    Shot(form, dir + "/addseries_7_user_business_days.png");
    form.cboUserDef2->setCurrentText("Month");
    form.txtUserDef1->setText("MARCH");
    form.cboUserDef1->setCurrentIndex(2);
    form.optMonth[2]->setChecked(true);
    Shot(form, dir + "/addseries_8_user_month.png");
    form.cmdNext_Click();
    Shot(form, dir + "/addseries_9_finished.png");
  }
  {
    // A daily dataset: all eighteen holidays, the date of the first observation, a day.
    WizardDataset daily = *monthly;
    daily.seasonality = 7, daily.begin_year = 2015, daily.begin_period = 1, daily.observations = 400;
    daily.forecasts = daily.future = 30;
    AddSeriesWizard wizard(daily);
    frmWizard2 form(wizard, parent);
    form.chkAddHoliday->setChecked(true);
    form.chkAddUserDef->setChecked(true);
    form.cmdNext_Click();
    form.cmdSelectAll->click();
    form.dtpHolidays->setDate(QDate(2015, 3, 2));
    Shot(form, dir + "/addseries_daily_holidays.png");
    form.cmdNext_Click();
    form.cboUserDef2->setCurrentText("Day");
    form.txtUserDef1->setText("MONDAY");
    form.optDataType[3]->setChecked(true);
    form.optDay[1]->setChecked(true);
    form.dtpUserDef->setDate(QDate(2015, 3, 2));
    Shot(form, dir + "/addseries_daily_user_day.png");
  }
  {
    WizardDataset weekly = *monthly;
    weekly.seasonality = 52, weekly.begin_year = 2003, weekly.begin_period = 1;
    AddSeriesWizard wizard(weekly);
    frmWizard2 form(wizard, parent);
    form.chkAddUserDef->setChecked(true);
    form.cmdNext_Click();
    form.cboUserDef2->setCurrentText("QuarterlyEffect");
    Shot(form, dir + "/addseries_weekly_user_first_date.png");
  }
  {
    AddSeriesWizard wizard(*monthly);
    frmManualGrid grid(parent, "frmUserDefManualFV", texts::kManualFVTitle, wizard.PeriodLabels(true));
    Shot(grid, dir + "/frmUserDefManualFV.png");
    frmFirstobservation first(parent);
    Shot(first, dir + "/frmFirstobservation.png");
    frmMethod manual(parent, "Manual");
    Shot(manual, dir + "/frmMethod_manual.png");
    frmMethod quarter(parent, "Quarter");
    Shot(quarter, dir + "/frmMethod_quarter.png");
  }
  {
    const fs::path examples = program / "examples";
    frmSelAdjSeries select(parent, examples, examples / "rwf.his", {}, program);
    select.lists->Fill({"AIRLINE.ASC", "ELNINO.ASC", "NILE.ASC", "REALGDP.ASC"}, {"AIRLINE.ASC"});
    Shot(select, dir + "/frmSelAdjSeries.png");
    frmAdjSeries keep(parent, examples, {"AIRLINE.ASC", "NILE.ASC"}, {});
    Shot(keep, dir + "/frmAdjSeries.png");
  }
}

}  // namespace tessaly::app
