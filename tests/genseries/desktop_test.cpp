// The main window's two generated-series commands: present in the Batch menu, enabled with a
// project, and leading through the wizard and the adjusting dialogs to the project's files.
#include <gtest/gtest.h>

#include <QAction>
#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QTimer>

#include "app/gui.h"
#include "batch/forms/frm_project_forms.h"
#include "genseries/forms/frm_adjust.h"
#include "genseries/forms/frm_wizard2.h"
#include "genseries/gen_fixture.h"
#include "genseries/texts.h"
#include "genseries/wizard_texts.h"

namespace tessaly::genseries::test {
namespace {

QAction* Command(app::DesktopSession& s, const char* name) {
  for (QAction* a : s.mnuBatch->actions())
    if (a->objectName() == name) return a;
  return nullptr;
}

TEST(DesktopMenu, AddGeneratedSeriesToTheOpenProject) {
  testing::DesktopFixture d;
  QAction* add = Command(*d.session, "mnu_Select_Generated_Series");
  QAction* adjust = Command(*d.session, "mnu_Adjust_ASCfiles");
  ASSERT_TRUE(add && adjust);
  EXPECT_FALSE(add->isEnabled());
  const fs::path project = d.program / "examples" / "sample.xml";
  ASSERT_TRUE(d.session->OpenProject(project));
  EXPECT_TRUE(add->isEnabled() && adjust->isEnabled());

  // A pulse at July 1955 of the airline series and two holidays, kept for AIRLINE.ASC only,
  // with the wizard's and the dialogs' checks met on the way.
  QTimer robot;
  std::vector<QString> seen;
  QObject::connect(&robot, &QTimer::timeout, [&] {
    QWidget* modal = QApplication::activeModalWidget();
    if (!modal || (!seen.empty() && seen.back() == modal->objectName())) return;
    seen.push_back(modal->objectName());
    if (auto* wiz = qobject_cast<frmWizard2*>(modal)) {
      QTimer::singleShot(0, [wiz] {
        wiz->cmdNext_Click();  // nothing ticked
        wiz->chkAddPulse->setChecked(true);
        wiz->chkAddHoliday->setChecked(true);
        wiz->cmdNext_Click();
        wiz->txtPulse[0]->setText("1955");
        wiz->txtPulse[1]->setText("13");
        wiz->cmdNext_Click();  // refused: a period above the seasonality
        wiz->txtPulse[1]->setText("7");
        wiz->cmdNext_Click();
        for (int i = 0; i < wiz->lstHolidays1->count(); ++i) {
          QString h = wiz->lstHolidays1->item(i)->text();
          wiz->lstHolidays1->item(i)->setSelected(h == "M_CHRISTMAS" || h == "M_JULY4TH");
        }
        wiz->cmdSelect->click();
        wiz->cmdNext_Click();
        wiz->cmdFinish_Click();
      });
    } else if (auto* sel = qobject_cast<frmSelAdjSeries*>(modal)) {
      QTimer::singleShot(0, [sel] {
        sel->cmdNext->click();  // nothing chosen
        sel->lists->chkAddAll->click();
        sel->lists->cmdAdd->click();
        sel->cmdNext->click();
      });
    } else if (auto* keep = qobject_cast<frmAdjSeries*>(modal)) {
      QTimer::singleShot(0, [keep] {
        keep->lists->lstRoster->item(0)->setSelected(true);
        keep->lists->cmdAdd->click();
        keep->cmdNext->click();
      });
    }
  });
  robot.start(20);
  add->trigger();
  robot.stop();
  EXPECT_EQ(seen, (std::vector<QString>{"frmWizard2", "frmSelAdjSeries", "frmAdjSeries"}));
  EXPECT_TRUE(fs::exists(d.program / "examples" / "rwf.his"));
  AscRead airline = ReadAsc(d.program / "examples" / "AIRLINE.ASC");
  EXPECT_EQ(airline.names, (std::vector<std::string>{"IIP00079PASSENGERS", "M_CHRISTMAS", "M_JULY4TH",
                                                     "PASSENGERS"}));
  EXPECT_EQ(airline.obs["IIP00079PASSENGERS"][78], 1.0);
  EXPECT_EQ(airline.obs["M_JULY4TH"][6], 1.0);
  EXPECT_EQ(airline.fut["M_CHRISTMAS"][11], 1.0);
  const std::vector<std::string> texts = d.host.Texts();
  ASSERT_GE(texts.size(), 4u) << d.Messages();
  EXPECT_EQ(texts[0], texts::kSelectASeries);
  EXPECT_EQ(texts[1], std::string(texts::kStartPeriodHigh) + "12");
  EXPECT_EQ(texts[2], texts::kNoFilesChosen);
  EXPECT_EQ(texts.back().rfind(std::string("FYI! ") + texts::kReportHeading, 0), 0u) << texts.back();
  // Every other file of the project is as it was: the annual file was refused (the saved
  // options are monthly), and the other monthly file was adjusted but not kept.
  EXPECT_EQ(ReadAsc(d.program / "examples" / "NILE.ASC").series, 1);
  EXPECT_EQ(ReadAsc(d.program / "examples" / "ELNINO.ASC").series, 1);  // adjusted, then put back
  EXPECT_FALSE(fs::exists(d.program / "examples" / "ASCBACKUP" / "ELNINO.ASC"));
  EXPECT_NE(d.Messages().find("The seasonality for this dataset does not agree"), std::string::npos)
      << d.Messages();
}

}  // namespace
}  // namespace tessaly::genseries::test
