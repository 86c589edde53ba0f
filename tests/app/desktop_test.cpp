// The desktop's main flows as a person uses them: a new project from the sample series,
// a run through the wizard's automatic path with the real engine, reading a report and a
// graph, the "All" walk, a cancelled run and a cancelled wizard.
#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QTextBrowser>
#include <QTreeWidget>

#include "app/modal_robot.h"
#include "app/report_pane.h"
#include "batch/forms/frm_progress.h"
#include "batch/forms/frm_project_forms.h"
#include "gui.h"
#include "report/forms/frm_allgraphs_sel.h"
#include "rules/forms/frm_wizard1.h"

namespace tessaly::testing {
namespace {

using app::ModalRobot;

// The wizard's automatic path: "1. With QVX Rules", Next (straight to the last page), Finish.
bool AutomaticWizard(QWidget* modal) {
  auto* wizard = qobject_cast<rules::frmWizard1*>(modal);
  if (!wizard) return false;
  if (wizard->Wizard().Step() == 0) {
    wizard->optModelingType[2]->click();
    return Click(wizard, "cmdNav3");
  }
  return Click(wizard, "cmdNav4");
}

class Desktop : public ::testing::Test {
 protected:
  DesktopFixture d;
  QWidget* Central() { return d.form->centralWidget(); }
};

TEST_F(Desktop, NewProjectFromTheSamplesRunsAndShowsReportsAndGraphs) {
  fs::path out = d.data / "out";
  fs::create_directory(out);
  // New Project: folder, files, output folder, name.
  std::vector<std::string> pages;
  ModalRobot robot(nullptr, [&](QWidget* modal) {
    if (auto* loc = qobject_cast<batch::frmASCLoc*>(modal)) {
      pages.push_back("frmASCLoc");
      // The first time, the page opens at the samples beside the program.
      EXPECT_EQ(loc->folder->Folder().toStdString(), (d.program / "examples").string());
      loc->SetFolder(QString::fromStdString(d.data.path().string()));
      EXPECT_EQ(loc->filFiles->count(), 6);
      return Click(loc, "cmdNext");
    }
    if (auto* select = qobject_cast<batch::frmSelect*>(modal)) {
      pages.push_back("frmSelect");
      for (const char* name : {"AIRLINE.ASC", "ELNINO.ASC"})
        select->lists->lstRoster->findItems(name, Qt::MatchExactly).front()->setSelected(true);
      select->lists->cmdAdd->click();
      EXPECT_EQ(select->lists->lstChosen->count(), 2);
      return Click(select, "cmdNext");
    }
    if (auto* choose = qobject_cast<batch::frmChooseOut*>(modal)) {
      pages.push_back("frmChooseOut");
      choose->folder->SetFolder(QString::fromStdString(out.string()));
      return Click(choose, "cmdSave");
    }
    if (auto* name = qobject_cast<batch::frmXMLName*>(modal)) {
      pages.push_back("frmXMLName");
      name->txtName->setText("monthly");
      return Click(name, "cmdSave");
    }
    return false;
  });
  d.session->mnuFileNew->trigger();
  robot.Stop();
  ASSERT_EQ(pages, (std::vector<std::string>{"frmASCLoc", "frmSelect", "frmChooseOut", "frmXMLName"}));
  ASSERT_TRUE(fs::exists(out / "monthly.xml")) << d.Messages();
  EXPECT_NE(d.Messages().find("File successfully created."), std::string::npos);
  EXPECT_EQ(d.form->windowTitle(), "Tessaly - monthly.xml");
  EXPECT_TRUE(d.session->mnuBatchEdit->isEnabled());

  // Run: the wizard's automatic path; while the engine works the menus wait.
  bool progress_seen = false, menus_disabled_during_run = false;
  std::vector<std::string> series_shown;
  ModalRobot run_robot(nullptr, [&](QWidget* modal) {
    if (auto* progress = qobject_cast<batch::frmProgress*>(modal)) {
      progress_seen = true;
      std::string shown = progress->lblSeries->text().toStdString();
      if (series_shown.empty() || series_shown.back() != shown) series_shown.push_back(shown);
      menus_disabled_during_run = !d.form->mnuFile->menuAction()->isEnabled() &&
                                  !d.session->mnuBatch->menuAction()->isEnabled() &&
                                  !d.form->mnuPrefs->menuAction()->isEnabled();
      return false;
    }
    return AutomaticWizard(modal);
  });
  d.session->mnuBatchRun->trigger();
  run_robot.Stop();
  EXPECT_TRUE(progress_seen);
  ASSERT_EQ(series_shown.size(), 2u);
  EXPECT_EQ(series_shown[0].substr(0, 12), "Series 1 of ");
  EXPECT_NE(series_shown[0].find("AIRLINE"), std::string::npos);
  EXPECT_NE(series_shown[1].find("ELNINO"), std::string::npos);
  EXPECT_TRUE(menus_disabled_during_run);
  EXPECT_TRUE(d.form->mnuFile->menuAction()->isEnabled());
  EXPECT_TRUE(d.session->mnuBatch->menuAction()->isEnabled());
  EXPECT_EQ(d.form->lblStatus->text(), "Finished processing.") << d.Messages();

  // The tree: both series with their reports and graphs, and the "All" rows.
  app::ReportPane* pane = d.session->Pane();
  ASSERT_TRUE(pane->isVisible());
  QTreeWidget* tree = pane->trvMenu;
  ASSERT_GE(tree->topLevelItemCount(), 3);
  EXPECT_EQ(tree->topLevelItem(0)->text(0), "AIRLINE.ASC");
  EXPECT_EQ(tree->topLevelItem(1)->text(0), "ELNINO.ASC");
  ASSERT_NE(pane->ItemByKey("AIRLINE.ASCG4"), nullptr);
  ASSERT_NE(pane->ItemByKey("AG2"), nullptr);

  // A graph: the picture, as a picture.
  tree->setCurrentItem(pane->ItemByKey("AIRLINE.ASCG4"));
  emit tree->itemClicked(pane->ItemByKey("AIRLINE.ASCG4"), 0);
  fs::path output = out / "monthly" / "OUTPUT";  // a folder of its own, named after the project
  EXPECT_EQ(pane->CurrentFile(), output / "AIRLINEactfitfore.jpg");
  EXPECT_NE(pane->brsReport->toHtml().indexOf("<img"), -1);
  EXPECT_TRUE(pane->actOpenInBrowser->isEnabled());
  // A text report: the file's own text.
  emit tree->itemClicked(pane->ItemByKey("AIRLINE.ASCR3"), 0);
  EXPECT_EQ(pane->CurrentFile(), output / "AIRLINEEQUATION.TXT");
  std::string equation = ReadFile(output / "AIRLINEEQUATION.TXT");
  ASSERT_FALSE(equation.empty());
  EXPECT_EQ(pane->brsReport->toPlainText().simplified().toStdString(),
            QString::fromStdString(equation).simplified().toStdString());
  // An HTML report, read as HTML.
  emit tree->itemClicked(pane->ItemByKey("AIRLINE.ASCR1"), 0);
  EXPECT_EQ(pane->CurrentFile(), output / "AIRLINE.htm");
  EXPECT_TRUE(pane->brsReport->source().isLocalFile());
  // A heading changes nothing on the right.
  emit tree->itemClicked(pane->ItemByKey("AIRLINE.ASCRpts"), 0);
  EXPECT_EQ(pane->CurrentFile(), output / "AIRLINE.htm");

  // "All Actuals/Forecasts": a stop per series with the step dialog.
  std::vector<std::string> stops;
  std::vector<std::pair<bool, bool>> buttons;
  ModalRobot walk(nullptr, [&](QWidget* modal) {
    auto* step = qobject_cast<report::frmAllgraphsSel*>(modal);
    if (!step) return false;
    stops.push_back(pane->CurrentFile().filename().string());
    buttons.emplace_back(step->cmdLeft()->isEnabled(), step->cmdRight()->isEnabled());
    EXPECT_EQ(step->windowTitle(), "Select Graph");
    return Click(step, stops.size() == 1 ? "cmdRight" : "cmdCancel");
  });
  emit tree->itemClicked(pane->ItemByKey("AG2"), 0);
  walk.Stop();
  EXPECT_EQ(stops, (std::vector<std::string>{"AIRLINEactfore.jpg", "ELNINOactfore.jpg"}));
  EXPECT_EQ(buttons, (std::vector<std::pair<bool, bool>>{{false, true}, {true, false}}));

  // Close, then Open Recent brings the project back with its reports.
  d.session->mnuFileClose->trigger();
  EXPECT_EQ(d.form->windowTitle(), "Tessaly");
  EXPECT_EQ(tree->topLevelItemCount(), 0);
  EXPECT_FALSE(d.session->mnuBatchEdit->isEnabled());
  QAction* recent = d.form->findChild<QAction*>("mnuFileMRU_1");
  ASSERT_NE(recent, nullptr);
  EXPECT_TRUE(recent->isVisible());
  EXPECT_TRUE(recent->text().endsWith("monthly.xml"));
  recent->trigger();
  EXPECT_EQ(d.form->windowTitle(), "Tessaly - monthly.xml");
  EXPECT_NE(pane->ItemByKey("ELNINO.ASCG9"), nullptr);
}

TEST_F(Desktop, RejectedDatasetsStayInTheTreeAndTheirNodeShowsTheReason) {
  fs::copy(d.program / "examples", d.data.path(), fs::copy_options::recursive | fs::copy_options::skip_existing);
  ASSERT_TRUE(d.session->OpenProject(d.data / "sample.xml")) << d.Messages();
  ModalRobot robot(nullptr, [&](QWidget* modal) { return AutomaticWizard(modal); });
  d.session->mnuBatchRun->trigger();
  robot.Stop();
  app::ReportPane* pane = d.session->Pane();
  QTreeWidget* tree = pane->trvMenu;
  ASSERT_GE(tree->topLevelItemCount(), 4);
  std::vector<std::string> names;
  for (int i = 0; i < 4; ++i) names.push_back(tree->topLevelItem(i)->text(0).toStdString());
  EXPECT_EQ(names, (std::vector<std::string>{"AIRLINE.ASC", "ELNINO.ASC", "BROKEN.ASC (rejected)",
                                             "NILE.ASC (rejected)"}));
  EXPECT_EQ(tree->topLevelItem(2)->childCount(), 0);
  emit tree->itemClicked(tree->topLevelItem(3), 0);
  EXPECT_EQ(pane->CurrentFile(), d.data / "sample" / "OUTPUT" / "display.html");
  EXPECT_GT(pane->brsReport->verticalScrollBar()->value(), 0);  // the dataset's row in view
  EXPECT_NE(pane->brsReport->toPlainText().indexOf("Since the initial series seasonality is 12 and NILE.ASC"), -1)
      << pane->brsReport->toPlainText().toStdString();

  // File > Export Forecasts: the two forecast series in one table, the other two named.
  auto* exporter = d.form->findChild<QAction*>("mnuFileExportForecasts");
  ASSERT_NE(exporter, nullptr);
  exporter->trigger();
  const fs::path out = d.data / "sample" / "OUTPUT";
  EXPECT_NE(d.Messages().find("2 series of 4 exported to\r\n" + (out / "sampleFORECASTS.csv").string() + "\r\n" +
                              (out / "sampleFORECASTS.xlsx").string() +
                              "\r\n\r\nNo forecasts (not run, rejected or failed):\r\nBROKEN.ASC\r\nNILE.ASC"),
            std::string::npos)
      << d.Messages();
  EXPECT_TRUE(fs::exists(out / "sampleFORECASTS.xlsx"));
}

TEST_F(Desktop, CancelInTheProgressWindowEndsTheRunAndGivesTheMenusBack) {
  fs::copy_file(d.program / "examples" / "sample.xml", d.data / "sample.xml");
  ASSERT_TRUE(d.session->OpenProject(d.data / "sample.xml")) << d.Messages();
  bool cancelled = false;
  ModalRobot robot(nullptr, [&](QWidget* modal) {
    if (auto* progress = qobject_cast<batch::frmProgress*>(modal)) {
      if (cancelled) return false;
      cancelled = true;
      return Click(progress, "btnCancel");
    }
    return AutomaticWizard(modal);
  });
  d.session->mnuBatchRun->trigger();
  robot.Stop();
  EXPECT_TRUE(cancelled);
  EXPECT_NE(d.Messages().find("Operation Canceled by user"), std::string::npos) << d.Messages();
  EXPECT_NE(d.form->lblStatus->text(), "Finished processing.");
  EXPECT_TRUE(d.form->mnuFile->menuAction()->isEnabled());
  EXPECT_TRUE(d.session->mnuBatchRun->isEnabled());
  // The project stays open; ELNINO, after the cancel, was not run.
  EXPECT_EQ(d.form->windowTitle(), "Tessaly - sample.xml");
  EXPECT_FALSE(fs::exists(d.data / "sample" / "OUTPUT" / "ELNINOactfore.jpg"));
}

TEST_F(Desktop, CancelInTheWizardRunsNothing) {
  fs::copy_file(d.program / "examples" / "sample.xml", d.data / "sample.xml");
  ASSERT_TRUE(d.session->OpenProject(d.data / "sample.xml"));
  d.host->answers.push_back(platform::mb::Yes);  // "Are you sure that you want to cancel?..."
  bool progress_seen = false;
  ModalRobot robot(nullptr, [&](QWidget* modal) {
    if (qobject_cast<batch::frmProgress*>(modal)) progress_seen = true;
    if (auto* wizard = qobject_cast<rules::frmWizard1*>(modal)) return Click(wizard, "cmdNav1");
    return false;
  });
  d.session->mnuBatchRun->trigger();
  robot.Stop();
  EXPECT_FALSE(progress_seen);
  EXPECT_NE(d.Messages().find("Cancellation Notice: Are you sure that you want to cancel?"), std::string::npos);
  EXPECT_FALSE(fs::exists(d.program / "STARTMOD.123"));
  EXPECT_FALSE(fs::exists(d.data / "sample" / "OUTPUT" / "AIRLINEactfore.jpg"));
  EXPECT_TRUE(d.session->mnuBatchRun->isEnabled());
}

TEST_F(Desktop, ACancelledNewProjectKeepsTheOpenOne) {
  fs::copy_file(d.program / "examples" / "sample.xml", d.data / "sample.xml");
  ASSERT_TRUE(d.session->OpenProject(d.data / "sample.xml"));
  std::vector<std::string> refusals;
  ModalRobot robot(nullptr, [&](QWidget* modal) {
    auto* loc = qobject_cast<batch::frmASCLoc*>(modal);
    if (!loc) return false;
    // An empty folder first: refused with the message, and the page is asked again.
    if (refusals.empty()) {
      refusals.push_back("empty");
      loc->SetFolder(QString::fromStdString((d.data / "none").string()));
      return Click(loc, "cmdNext");
    }
    return Click(loc, "cmdCancel");
  });
  fs::create_directory(d.data / "none");
  d.session->mnuFileNew->trigger();
  robot.Stop();
  EXPECT_NE(d.Messages().find("There are no .asc files in the directory you selected!"), std::string::npos);
  EXPECT_EQ(d.form->windowTitle(), "Tessaly - sample.xml");
  EXPECT_NE(d.session->Pane()->ItemByKey("AIRLINE.ASC"), nullptr);
}

TEST_F(Desktop, PreviousReportsShowsTheTreeWithoutARunAndTheWindowKeepsItsPlace) {
  // A project whose OUTPUT holds one series' files from an earlier run.
  fs::copy_file(d.program / "examples" / "sample.xml", d.data / "sample.xml");
  fs::create_directories(d.data / "sample" / "OUTPUT");
  WriteFile(d.data / "sample" / "OUTPUT" / "AIRLINEEQUATION.TXT", "Y(T) = 12.5 + A(T)\r\n");
  ASSERT_TRUE(d.session->OpenProject(d.data / "sample.xml"));
  d.session->mnuBatchPrevReports->trigger();
  app::ReportPane* pane = d.session->Pane();
  EXPECT_TRUE(pane->isVisible());
  ASSERT_NE(pane->ItemByKey("AIRLINE.ASCR3"), nullptr);
  EXPECT_EQ(pane->ItemByKey("AIRLINE.ASCR7"), nullptr);
  // Reached with the keys, a report shows at once.
  pane->trvMenu->setCurrentItem(pane->ItemByKey("AIRLINE.ASCR3"));
  EXPECT_EQ(pane->brsReport->toPlainText().trimmed(), "Y(T) = 12.5 + A(T)");

  d.form->setGeometry(40, 50, 900, 640);
  d.form->SaveWindowGeometry();
  shell::frmMain again;
  ASSERT_TRUE(again.RestoreWindowGeometry());
  EXPECT_EQ(again.size(), QSize(900, 640));
}

}  // namespace
}  // namespace tessaly::testing
