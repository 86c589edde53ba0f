// The aggregation's dialogs driven as a person would: the lists of frmAggSelect, the
// questions of frmAggParams appearing in order, and the menu entry running a project's
// children through the engine, a child replaced by a priori data, with the progress window and
// the report tree afterwards.
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTreeWidget>

#include "aggregate/forms/frm_agg_params.h"
#include "aggregate/forms/frm_agg_select.h"
#include "aggregate/forms/frm_replacements.h"
#include "aggregation_fixture.h"
#include "app/modal_robot.h"
#include "app/report_pane.h"
#include "batch/forms/frm_progress.h"
#include "gui.h"
#include "rules/forms/frm_wizard1.h"
#include "support/qt_app.h"

namespace tessaly::aggregate::testing {
namespace {

using tessaly::testing::Click;
using tessaly::testing::TempDir;

TEST(AggregationForms, TheListsMoveWhatIsHighlightedAndFinishHandsOverTheChoice) {
  tessaly::testing::OffscreenApp();
  std::vector<std::string> handed;
  frmAggSelect dialog(SelectionFlow::Aggregation, {"A.ASC", "B.ASC", "C.ASC"},
                      [&](const std::vector<std::string>& chosen) { handed = chosen; return chosen.size() > 1; });
  dialog.show();
  EXPECT_EQ(dialog.windowTitle(), "Select ASC files for Aggregation");
  EXPECT_EQ(dialog.txtAvailable->text(), "3");
  EXPECT_FALSE(dialog.cmdRemove->isEnabled());
  EXPECT_FALSE(dialog.chkRemoveAll->isVisible());
  dialog.lstRoster->item(2)->setSelected(true);
  dialog.cmdAdd->click();
  emit dialog.lstRoster->itemDoubleClicked(dialog.lstRoster->item(0));
  EXPECT_EQ(dialog.lstChosen->item(0)->text(), "C.ASC");
  EXPECT_EQ(dialog.lstChosen->item(1)->text(), "A.ASC");
  EXPECT_EQ(dialog.txtSelected->text(), "2");
  EXPECT_TRUE(dialog.chkRemoveAll->isVisible());
  dialog.cmdFinish->click();
  EXPECT_EQ(handed, (std::vector<std::string>{"C.ASC", "A.ASC"}));
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

TEST(AggregationForms, ParametersRevealTheirQuestionsInOrder) {
  tessaly::testing::OffscreenApp();
  tessaly::testing::RecordedMessages host;
  TempDir program, data;
  frmAggParams dialog({program.path(), data.path(), {"1.asc", "2.asc"}, true, "12", "12", nullptr});
  dialog.show();
  auto shown = [&](Box b) { return dialog.Box(b)->isVisibleTo(&dialog); };
  EXPECT_TRUE(shown(Box::ForecastsYes));
  EXPECT_FALSE(shown(Box::AscYes) || shown(Box::MixedYes) || shown(Box::CausalYes) || shown(Box::PtoC));
  dialog.Box(Box::ForecastsNo)->click();
  EXPECT_TRUE(shown(Box::AscYes) && shown(Box::AddSeriesYes));
  EXPECT_FALSE(shown(Box::CausalYes));
  dialog.Box(Box::AscNo)->click();
  EXPECT_TRUE(shown(Box::MixedYes) && shown(Box::CausalYes) && shown(Box::Automatic1) && shown(Box::PtoC));
  EXPECT_TRUE(dialog.Box(Box::MixedNo)->isChecked() && dialog.Box(Box::PtoC)->isChecked());
  EXPECT_FALSE(shown(Box::FixedEffectsYes));
  dialog.Box(Box::Automatic2)->click();
  EXPECT_TRUE(shown(Box::FixedEffectsYes) && dialog.Box(Box::FixedEffectsNo)->isChecked());
  dialog.Box(Box::ForecastsYes)->click();  // no GROUPT.PRO: "Yes" to going on moves back to "No"
  EXPECT_TRUE(dialog.Box(Box::ForecastsNo)->isChecked());
  dialog.txtNumberFore->setText("601");
  emit dialog.txtNumberFore->textEdited("601");
  Click(&dialog, "Command1");
  QApplication::processEvents();
  EXPECT_EQ(host.Texts().back(), "The maximum of forecasts allowed is 0 to 600.");
  EXPECT_TRUE(dialog.isVisible());
  dialog.txtNumberFore->setText("8");
  emit dialog.txtNumberFore->textEdited("8");
  Click(&dialog, "Command1");
  QApplication::processEvents();
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  EXPECT_EQ(dialog.Params().Options().NumberOfForecasts, "8");
}

TEST(AggregationDesktop, TheMenuRunsTheParentAndTheChildrenAndTheTreeShowsThem) {
  tessaly::testing::DesktopFixture d;
  const std::vector<std::string> regions{"NORTH.ASC", "SOUTH.ASC", "WEST.ASC"};
  batch::cBatchFile p(d.program.path());
  p.SetInDirectory(d.data.path().string());
  p.SetOutDirectory(d.data.path().string());
  for (std::size_t k = 0; k < regions.size(); ++k) {
    WriteFile(d.data / regions[k], ChildAsc(regions[k].substr(0, regions[k].size() - 4), 0.3, static_cast<int>(k)));
    p.Add_File(regions[k], 0, 0, "00/00/00");
  }
  ASSERT_TRUE(p.Build(d.data / "regions.xml"));
  WriteFile(d.data / "PRIORI.ASC", ChildAsc("PRIORI", 0.35, 7));
  ASSERT_TRUE(d.session->OpenProject(d.data / "regions.xml"));

  std::vector<std::string> seen;
  bool params_first_question_only = false;
  app::ModalRobot robot(nullptr, [&](QWidget* modal) {
    if (auto* select = qobject_cast<frmAggSelect*>(modal)) {
      seen.push_back("frmAggSelect");
      select->chkAddAll->click();
      select->cmdAdd->click();
      return Click(select, "cmdFinish");
    }
    if (auto* params = qobject_cast<frmAggParams*>(modal)) {
      seen.push_back("frmAggParams");
      params_first_question_only = !params->Box(Box::AscYes)->isVisibleTo(params);
      params->Box(Box::ForecastsNo)->click();
      params->Box(Box::AscNo)->click();
      return Click(params, "Command1");
    }
    if (auto* pick = qobject_cast<frmSelChildren*>(modal)) {
      seen.push_back("frmSelChildren");
      pick->lstChildren->item(1)->setSelected(true);
      return Click(pick, "cmdOK");
    }
    if (auto* file = qobject_cast<frmSelReplacements*>(modal)) {
      seen.push_back("frmSelReplacements");
      EXPECT_EQ(file->windowTitle(), "Select Replacement file for SOUTH.ASC");
      file->filFiles->setCurrentItem(file->filFiles->findItems("PRIORI.ASC", Qt::MatchExactly).front());
      file->cmdSelect->click();
      return Click(file, "cmdOK");
    }
    if (auto* wizard = qobject_cast<rules::frmWizard1*>(modal)) {
      seen.push_back("frmWizard1");
      return Click(wizard, wizard->Wizard().Step() == 0 ? "cmdNav3" : "cmdNav4");
    }
    if (qobject_cast<batch::frmProgress*>(modal)) {
      if (seen.back() != "frmProgress") seen.push_back("frmProgress");
      return false;
    }
    return false;
  });
  d.session->mnu_Agg->trigger();
  robot.Stop();
  ASSERT_GE(seen.size(), 4u) << d.Messages();
  EXPECT_EQ(std::vector<std::string>(seen.begin(), seen.begin() + 2),
            (std::vector<std::string>{"frmAggSelect", "frmAggParams"}));
  EXPECT_TRUE(params_first_question_only);
  EXPECT_NE(std::find(seen.begin(), seen.end(), "frmProgress"), seen.end());
  EXPECT_NE(std::find(seen.begin(), seen.end(), "frmSelReplacements"), seen.end());
  EXPECT_EQ(d.form->lblStatus->text(), "AGGREGATION - Finished processing.") << d.Messages();
  QTreeWidget* tree = d.session->Pane()->trvMenu;
  std::vector<std::string> top;
  for (int i = 0; i < tree->topLevelItemCount(); ++i) top.push_back(tree->topLevelItem(i)->text(0).toStdString());
  for (const char* name : {"GROUPT", "NORTH", "PRIORI", "WEST"})
    EXPECT_NE(std::find_if(top.begin(), top.end(), [&](const std::string& t) { return t.find(name) != std::string::npos; }),
              top.end()) << name;
  EXPECT_TRUE(fs::exists(d.data / "OUTPUT" / "CONregions.PRO"));
  EXPECT_TRUE(fs::exists(d.data / "OUTPUT" / "PRIORI.PRO"));
  EXPECT_FALSE(fs::exists(d.data / "OUTPUT" / "SOUTH.PRO"));
  EXPECT_TRUE(d.session->mnu_Agg->isEnabled());
}

}  // namespace
}  // namespace tessaly::aggregate::testing
