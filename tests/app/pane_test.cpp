// The report pane on its own (what each kind of file looks like in the viewer, links
// inside a page, the tree following the model), Edit Series with the save question at
// Close, and the Help menu.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTextBrowser>
#include <QTreeWidget>

#include "app/modal_robot.h"
#include "app/report_pane.h"
#include "batch/batch_file.h"
#include "batch/forms/frm_project_forms.h"
#include "gui.h"

namespace tessaly::testing {
namespace {

TEST(ReportPane, EachKindOfFileIsShownAsWhatItIs) {
  OffscreenApp();
  TempDir dir;
  app::ReportPane pane;
  pane.resize(900, 600);
  pane.show();

  WriteFile(dir / "SALESMAPE.TXT", "SERIES      MAPE\r\nSALES       4.21\r\n");
  pane.navigate(dir / "SALESMAPE.TXT");
  EXPECT_EQ(pane.brsReport->toPlainText().toStdString(), "SERIES      MAPE\nSALES       4.21\n");
  EXPECT_TRUE(pane.brsReport->document()->defaultFont().fixedPitch() ||
              pane.brsReport->document()->defaultFont().styleHint() == QFont::TypeWriter ||
              pane.brsReport->document()->defaultFont().family() != pane.font().family());
  EXPECT_EQ(pane.lblFile->text(), "SALESMAPE.TXT");

  // A page that links to another report: following the link stays in the pane.
  WriteFile(dir / "SALES.htm", "<html><body><h1>Details</h1><a href=\"SALESEQUATION.TXT\">model</a></body></html>");
  WriteFile(dir / "SALESEQUATION.TXT", "Y(T) = 3.0 + A(T)\r\n");
  pane.navigate(dir / "SALES.htm");
  EXPECT_EQ(pane.brsReport->documentTitle().toStdString() + pane.brsReport->toPlainText().toStdString().substr(0, 7),
            "Details");
  emit pane.brsReport->anchorClicked(QUrl("SALESEQUATION.TXT"));
  EXPECT_EQ(pane.CurrentFile(), dir / "SALESEQUATION.TXT");
  EXPECT_EQ(pane.brsReport->toPlainText().trimmed(), "Y(T) = 3.0 + A(T)");

  // A picture wider than the pane is drawn to the pane's width.
  QImage wide(3000, 400, QImage::Format_RGB32);
  wide.fill(Qt::white);
  ASSERT_TRUE(wide.save(QString::fromStdString((dir / "SALESact.jpg").string()), "JPG"));
  pane.navigate(dir / "SALESact.jpg");
  QVariant shown = pane.brsReport->document()->resource(QTextDocument::ImageResource,
                                                         QUrl("tessaly-picture:SALESact.jpg"));
  ASSERT_TRUE(shown.canConvert<QImage>());
  EXPECT_LT(shown.value<QImage>().width(), 900);
  EXPECT_TRUE(pane.actOpenInBrowser->isEnabled());

  // A file not made yet: said in the pane, nothing to open.
  pane.navigate(dir / "SALESSTAT.HTM");
  EXPECT_TRUE(pane.brsReport->toPlainText().startsWith("There is no SALESSTAT.HTM yet"));
  EXPECT_FALSE(pane.actOpenInBrowser->isEnabled());
}

TEST(ReportPane, TheTreeFollowsTheModel) {
  OffscreenApp();
  app::ReportPane pane;
  batch::ReportTree model;
  batch::AddSeriesNode(model, "A.ASC");
  batch::AddGraphsNode(model, "A.ASC");
  pane.SyncTree(model);
  ASSERT_EQ(pane.trvMenu->topLevelItemCount(), 1);
  // Nodes a run adds later join their parents; nothing is added twice.
  batch::AddGraphRow(model, "A.ASC", batch::kGraphRows[8]);
  batch::AddSeriesNode(model, "B.ASC");
  pane.SyncTree(model);
  pane.SyncTree(model);
  ASSERT_EQ(pane.trvMenu->topLevelItemCount(), 2);
  QTreeWidgetItem* graphs = pane.ItemByKey("A.ASCGphs");
  ASSERT_NE(graphs, nullptr);
  ASSERT_EQ(graphs->childCount(), 1);
  EXPECT_EQ(graphs->child(0)->text(0), "Actuals");
  EXPECT_EQ(app::ReportPane::KeyOf(graphs->child(0)), "A.ASCG9");
  // A node the model drops goes with its children.
  model.Remove("A.ASC");
  pane.SyncTree(model);
  EXPECT_EQ(pane.trvMenu->topLevelItemCount(), 1);
  EXPECT_EQ(pane.ItemByKey("A.ASCG9"), nullptr);
  model.Clear();
  pane.SyncTree(model);
  EXPECT_EQ(pane.trvMenu->topLevelItemCount(), 0);
}

TEST(DesktopCommands, EditSeriesChangesTheListAndCloseOffersToSaveIt) {
  DesktopFixture d;
  fs::copy_file(d.program / "examples" / "sample.xml", d.data / "sample.xml");
  ASSERT_TRUE(d.session->OpenProject(d.data / "sample.xml"));
  app::ModalRobot robot(nullptr, [&](QWidget* modal) {
    auto* edit = qobject_cast<batch::frmEdit*>(modal);
    if (!edit) return false;
    EXPECT_EQ(edit->lblStatus->text().toStdString(), "Now looking in directory: " + d.data.path().string() + "/");
    EXPECT_EQ(edit->lists->lstChosen->count(), 4);
    for (const char* name : {"BROKEN.ASC", "NILE.ASC"})
      edit->lists->lstChosen->findItems(name, Qt::MatchExactly).front()->setSelected(true);
    edit->lists->cmdRemove->click();
    return app::ModalRobot::ClickLater(edit, "cmdFinish");
  });
  d.session->mnuBatchEdit->trigger();
  robot.Stop();
  ASSERT_TRUE(d.session->Session().ctrlBatch);
  EXPECT_EQ(d.session->Session().ctrlBatch->Count(), 2u);
  EXPECT_TRUE(fs::exists(d.data / "ASCBACKUP" / "AIRLINE.ASC"));

  d.host->answers.push_back(platform::mb::Yes);  // "Would you like to save "sample.xml"?"
  d.session->mnuFileClose->trigger();
  EXPECT_NE(d.Messages().find("Would you like to save \"sample.xml\"?"), std::string::npos) << d.Messages();
  batch::cBatchFile saved(d.program.path());
  ASSERT_TRUE(saved.Load(d.data / "sample.xml"));
  ASSERT_EQ(saved.Count(), 2u);
  EXPECT_EQ(saved.List(0), "AIRLINE.ASC");
  EXPECT_EQ(saved.List(1), "ELNINO.ASC");
  EXPECT_EQ(d.form->lblStatus->text(), "");
}

TEST(DesktopCommands, HelpOpensTheGuideAndAboutNamesTheProgram) {
  DesktopFixture d;
  d.form->findChild<QAction*>("mnu_help_UsersGuide")->trigger();
  auto* help = d.form->findChild<QWidget*>("frmHelp");
  ASSERT_NE(help, nullptr);
  EXPECT_TRUE(help->isVisible());
  auto* browser = help->findChild<QTextBrowser*>("brsHelp");
  EXPECT_TRUE(browser->source().toLocalFile().endsWith("help/UsersGuide.htm"));
  EXPECT_NE(browser->toPlainText().indexOf("A first run, step by step"), -1);
  // Contents comes up in the same window.
  d.form->findChild<QAction*>("mnu_help_Contents")->trigger();
  EXPECT_EQ(d.form->findChildren<QWidget*>("frmHelp").size(), 1);
  EXPECT_TRUE(browser->source().toLocalFile().endsWith("help/CONTENTS.htm"));
  // Without the pages, the person is told which file is missing.
  fs::remove_all(d.program / "help");
  d.form->findChild<QAction*>("mnu_help_Contents")->trigger();
  EXPECT_NE(d.Messages().find("help/CONTENTS.htm is missing."), std::string::npos) << d.Messages();
}

}  // namespace
}  // namespace tessaly::testing
