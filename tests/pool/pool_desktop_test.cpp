// The Pool menu driven as a person would, off-screen, with the real engine: frmPoolSelect
// refusing one file and taking two, the rules wizard narrowed for pooling on its explicit
// model path, frmLoadGroupData refusing a count that does not divide and taking the right
// one, and the pooling rows in the report tree.
#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeWidget>

#include "app/gui.h"
#include "app/modal_robot.h"
#include "app/report_pane.h"
#include "batch/batch_file.h"
#include "batch/forms/frm_progress.h"
#include "platform/numfmt.h"
#include "platform/textfile.h"
#include "aggregate/forms/frm_agg_select.h"
#include "pool/forms/frm_load_group_data.h"
#include "rules/forms/frm_wizard1.h"

namespace tessaly::testing {
namespace {

using app::ModalRobot;

void WriteSeries(const fs::path& file, int seed, const std::string& seasonality) {
  std::vector<std::string> lines{"0", "0", "0", "1", seasonality, "2014", "1", "24", "0", "0", "4",
                                 file.stem().string(), "0"};
  double level = 50;
  for (int t = 0; t < 24; ++t) {
    level = 50 + 0.5 * (level - 50) + ((t * 37 + seed * 11) % 13) - 6;
    lines.push_back(platform::NumberToText(level));
  }
  EXPECT_TRUE(platform::WriteAllLines(file, lines));
}

TEST(PoolDesktop, PoolMenuFromSelectionToTheAnalysis) {
  DesktopFixture d;
  WriteSeries(d.data / "EAST.ASC", 1, "12");
  WriteSeries(d.data / "WEST.ASC", 2, "12");
  WriteSeries(d.data / "YEARLY.ASC", 3, "1");
  batch::cBatchFile p(d.program.path());
  p.SetInDirectory(d.data.path().string());
  p.SetOutDirectory(d.data.path().string());
  for (const char* f : {"EAST.ASC", "YEARLY.ASC", "WEST.ASC"}) p.Add_File(f, 0, 0, "00/00/00");
  ASSERT_TRUE(p.Build(d.data / "STORES.xml"));
  ASSERT_TRUE(d.session->OpenProject(d.data / "STORES.xml"));

  int finish_clicks = 0;
  std::vector<std::string> group_counts{"7", "2"};
  bool shape_checked = false, groups_asked = false;
  ModalRobot robot(nullptr, [&](QWidget* modal) {
    if (auto* select = qobject_cast<aggregate::frmAggSelect*>(modal)) {
      EXPECT_EQ(select->windowTitle().toStdString(), "Select ASC files for Pooling");
      EXPECT_EQ(select->txtAvailable->text().toStdString(), finish_clicks == 0 ? "3" : "2");
      const char* take = finish_clicks == 0 ? "EAST.ASC" : "WEST.ASC";
      select->lstRoster->findItems(take, Qt::MatchExactly).front()->setSelected(true);
      select->cmdAdd->click();
      ++finish_clicks;
      return Click(select, "cmdFinish");
    }
    if (auto* groups = qobject_cast<pool::frmLoadGroupData*>(modal)) {
      if (group_counts.empty()) return false;
      groups->txtGroupData->setText(QString::fromStdString(group_counts.front()));
      group_counts.erase(group_counts.begin());
      return Click(groups, "cmdYes");
    }
    if (auto* wizard = qobject_cast<rules::frmWizard1*>(modal)) {
      rules::RulesWizard& w = wizard->Wizard();
      if (!shape_checked) {
        shape_checked = true;
        // Only the explicit and the canned model; the explicit one set.
        for (int hidden : {0, 2, 4, 5}) EXPECT_FALSE(wizard->optModelingType[hidden]->isVisible()) << hidden;
        EXPECT_TRUE(wizard->optModelingType[1]->isChecked());
        EXPECT_TRUE(wizard->optModelingType[3]->isVisible());
        EXPECT_FALSE(w.estimation.chkModelEst1.enabled);
      }
      if (w.Step() == 5) return Click(wizard, "cmdNav4");
      if (w.Current() == rules::SubPage::ModelEstimation1 && !groups_asked) {
        groups_asked = true;
        auto* yes = wizard->findChild<QRadioButton*>("optGroupsYes");
        EXPECT_TRUE(yes && yes->isVisible());
        if (yes) QMetaObject::invokeMethod(yes, &QRadioButton::click, Qt::QueuedConnection);
        return true;
      }
      return Click(wizard, "cmdNav3");
    }
    return false;
  });
  d.session->Mnu_Pool->trigger();
  robot.Stop();

  const std::string messages = d.Messages();
  EXPECT_EQ(finish_clicks, 2);
  EXPECT_NE(messages.find("FYI!  The range for selection is from 2 to 149."), std::string::npos) << messages;
  EXPECT_NE(messages.find("The number of observations in the series, 48, cannot be divided evenly by the number of "
                          "groups, 7."),
            std::string::npos)
      << messages;
  EXPECT_NE(messages.find("The number of groups you indicated have been validated"), std::string::npos);
  EXPECT_EQ(d.form->lblStatus->text().toStdString(), "Pooling - Finished processing.") << messages;
  // The stack was fitted as two groups of 24, and the rows stand in the tree.
  std::string coefficients = ReadFile(d.data / "OUTPUT" / "POOLCOEF.TXT");
  EXPECT_NE(coefficients.find(",2,24\r\n"), std::string::npos) << coefficients;
  EXPECT_TRUE(fs::exists(d.data / "OUTPUT" / "STORESANALYSIS.TXT"));
  QTreeWidget* tree = d.session->Pane()->trvMenu;
  std::vector<std::string> top;
  for (int i = 0; i < tree->topLevelItemCount(); ++i) top.push_back(tree->topLevelItem(i)->text(0).toStdString());
  EXPECT_EQ(std::vector<std::string>(top.begin(), top.begin() + 3),
            (std::vector<std::string>{"EAST.ASC", "WEST.ASC", "TOTALPOOL.ASC"}));
  EXPECT_NE(std::find(top.begin(), top.end(), "ANALYSIS"), top.end());
  EXPECT_EQ(top.back(), "FTABLE2");
  EXPECT_FALSE(fs::exists(d.program / "GROUPLST.QVX"));
}

}  // namespace
}  // namespace tessaly::testing
