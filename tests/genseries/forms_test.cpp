// The Add Series wizard and the adjusting dialogs driven as a user drives them: ticks, fields,
// list buttons, Next and Finish, the modal grids and dialogs answered as they open, and the
// project's files checked afterwards.
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QComboBox>
#include <QDateEdit>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QTimer>
#include <functional>
#include <set>

#include "batch/batch_file.h"
#include "batch/forms/frm_project_forms.h"
#include "genseries/forms/frm_adjust.h"
#include "genseries/forms/frm_dialogs.h"
#include "genseries/forms/frm_wizard2.h"
#include "genseries/gen_fixture.h"
#include "genseries/texts.h"
#include "genseries/wizard_texts.h"
#include "platform/textfile.h"
#include "support/messages.h"
#include "support/qt_app.h"

namespace tessaly::genseries::test {
namespace {

// Answers each modal window as it opens: the script gets the window's object name and the
// window, and acts through queued calls.
class Robot {
 public:
  explicit Robot(std::function<bool(const QString&, QWidget*)> script) : script_(std::move(script)) {
    QObject::connect(&timer_, &QTimer::timeout, [this] {
      QWidget* modal = QApplication::activeModalWidget();
      if (!modal || handled_.count({modal, modal->objectName()})) return;
      if (script_(modal->objectName(), modal)) {
        handled_.insert({modal, modal->objectName()});
        seen.push_back(modal->objectName());
      }
    });
    timer_.start(20);
  }
  std::vector<QString> seen;

 private:
  QTimer timer_;
  std::set<std::pair<QWidget*, QString>> handled_;
  std::function<bool(const QString&, QWidget*)> script_;
};

void Later(std::function<void()> act) { QTimer::singleShot(0, act); }

void Select(QListWidget* list, const std::vector<QString>& names) {
  for (int i = 0; i < list->count(); ++i)
    list->item(i)->setSelected(std::find(names.begin(), names.end(), list->item(i)->text()) != names.end());
}

class FormsTest : public GenTest {
 protected:
  void SetUp() override {
    testing::OffscreenApp();
    fs::create_directories(dir / "program");
    Asc("SALES.ASC", AscLayout{{"PRICE", "SALES"}, {1, 0}, 12, 2000, 1, 48, 12, 0, 12});
    Asc("COSTS.ASC", AscLayout{{"COSTS"}, {0}, 12, 2000, 1, 48, 0, 0, 12});
    Asc("OLD.ASC", AscLayout{{"OLD"}, {0}, 12, 2000, 1, 48, 0, 6, 12});
    project.SetInDirectory(dir.path().string());
    project.SetOutDirectory(dir.path().string());
    for (const char* f : {"SALES.ASC", "COSTS.ASC", "OLD.ASC"}) project.Add_File(f, 0, 0, "00/00/00");
  }
  testing::RecordedMessages host;
  batch::cBatchFile project{dir.path()};
};

TEST_F(FormsTest, ManualSeriesTypedIntoBothGridsAndNothingSaved) {
  const std::string sales_before = *platform::ReadWholeFile(dir / "SALES.ASC");
  Robot robot([&](const QString& name, QWidget* w) {
    if (auto* wiz = qobject_cast<frmWizard2*>(w)) {
      Later([wiz] {
        wiz->chkAddUserDef->setChecked(true);
        wiz->cmdNext_Click();
        wiz->txtUserDef1->setText("STRIKE");
        wiz->cboUserDef1->setCurrentIndex(3);  // type 2
        wiz->cboUserDef2->setCurrentText("Manual");  // the note opens as a dialog
      });
      return true;
    }
    if (name == "frmMethod") {
      auto* note = static_cast<frmMethod*>(w);
      Later([note] {
        note->chkDontShow->setChecked(true);
        note->accept();
        auto* wiz = qobject_cast<frmWizard2*>(note->parentWidget());
        QTimer::singleShot(0, [wiz] {
          wiz->cmdNext_Click();
          wiz->cmdFinish_Click();
        });
      });
      return true;
    }
    if (name == "frmUserDefManualData" || name == "frmUserDefManualFV") {
      auto* grid = static_cast<frmManualGrid*>(w);
      Later([grid, name] {
        for (int r = 0; r < grid->grdData->rowCount(); ++r) grid->grdData->item(r, 1)->setText("");
        grid->accept();  // refused: all empty
        grid->grdData->item(name == "frmUserDefManualData" ? 29 : 0, 1)->setText("1");
        grid->accept();
      });
      return true;
    }
    if (name == "frmSelAdjSeries") {
      auto* form = static_cast<frmSelAdjSeries*>(w);
      Later([form] {
        Select(form->lists->lstRoster, {"SALES.ASC"});
        form->lists->cmdAdd->click();
        form->cmdNext->click();
      });
      return true;
    }
    if (name == "frmAdjSeries") {
      auto* form = static_cast<frmAdjSeries*>(w);
      Later([this, form] {
        // Before nothing is saved: the adjusted file holds the typed values, blanks as 0.
        AscRead adjusted = ReadAsc(dir / "SALES.ASC");
        EXPECT_EQ(adjusted.names, (std::vector<std::string>{"PRICE", "G_STRIKE", "SALES"}));
        EXPECT_EQ(adjusted.types, (std::vector<int>{1, 2, 0}));
        EXPECT_EQ(adjusted.obs["G_STRIKE"][29], 1.0);
        EXPECT_EQ(adjusted.obs["G_STRIKE"][28], 0.0);
        EXPECT_EQ(adjusted.fut["G_STRIKE"][0], 1.0);
        form->optDoNotSave->setChecked(true);
        form->cmdNext->click();
      });
      return true;
    }
    return false;
  });
  mnu_Select_Generated_Series(nullptr, project, {}, dir / "program");
  EXPECT_EQ(robot.seen, (std::vector<QString>{"frmWizard2", "frmMethod", "frmUserDefManualData",
                                              "frmUserDefManualFV", "frmSelAdjSeries", "frmAdjSeries"}));
  EXPECT_EQ(host.Texts().front(), texts::kEnterYourData);
  EXPECT_EQ(host.Texts().back(), texts::kAllAdjusted);
  EXPECT_EQ(*platform::ReadWholeFile(dir / "SALES.ASC"), sales_before);
  EXPECT_FALSE(fs::exists(dir / "ASCBACKUP" / "SALES.ASC"));
}

TEST_F(FormsTest, DailyDataAskForTheDateOfTheFirstObservationAndCancelAsks) {
  WizardDataset daily;
  daily.series = 1, daily.seasonality = 7, daily.begin_year = 2001, daily.begin_period = 1;
  daily.observations = 100, daily.future = daily.forecasts = 10;
  daily.last_year = 2001, daily.last_period = 5;
  AddSeriesWizard wizard(daily);
  frmWizard2 form(wizard);
  EXPECT_EQ(form.lstHolidays1->count(), 18);
  EXPECT_TRUE(form.chkAddHoliday->isEnabled() && form.chkAddSP->isEnabled());

  // A level's fields are checked as each is left.
  form.chkAddLevel->setChecked(true);
  form.cmdNext_Click();
  form.show();
  form.txtLevel[1]->setText("8");
  emit form.txtLevel[1]->editingFinished();
  EXPECT_EQ(host->shown.back().text, std::string(texts::kStartPeriodHigh) + "7");
  form.txtLevel[1]->setText("1");
  form.cmdBack_Click();
  form.chkAddLevel->setChecked(false);
  form.chkAddHoliday->setChecked(true);
  form.cmdNext_Click();
  EXPECT_EQ(form.lblInstruction->text().toStdString(), texts::kHolidayNote);
  form.cmdSelectAll->click();
  EXPECT_EQ(form.lstHolidays2->count(), 18);
  Select(form.lstHolidays2, {"M_MARDIGRAS"});
  form.cmdRemove->click();
  Robot robot([&](const QString& name, QWidget* w) {
    if (name != "frmFirstobservation") return false;
    auto* first = static_cast<frmFirstobservation*>(w);
    Later([first] {
      EXPECT_EQ(first->dtpFirst->date(), QDate(2001, 1, 1));
      first->dtpFirst->setDate(QDate(2001, 3, 5));
      first->accept();
    });
    return true;
  });
  form.cmdNext_Click();
  EXPECT_EQ(robot.seen, std::vector<QString>{"frmFirstobservation"});
  EXPECT_TRUE(wizard.AtFinish());
  EXPECT_EQ(wizard.Variables().Dateof1stHolidayObservation, "03/05/2001");
  EXPECT_EQ(wizard.Variables().NumberofHolidaysSelected, "17");

  host->answers = {platform::mb::No, platform::mb::Yes};
  form.show();
  form.cmdNav[2]->click();
  EXPECT_TRUE(form.isVisible());
  form.cmdNav[2]->click();
  EXPECT_FALSE(form.isVisible());
  EXPECT_EQ(host->shown.back().title, texts::kCancelTitle);
  EXPECT_EQ(host->shown.back().text, texts::kCancelQuestion);
}

}  // namespace
}  // namespace tessaly::genseries::test
