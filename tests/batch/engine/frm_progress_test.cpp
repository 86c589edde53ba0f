#include "batch/forms/frm_progress.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "batch/engine/progress_logic.h"
#include "support/qt_app.h"

namespace tessaly::batch {
namespace {

// Engine work that finishes when told, with a fixed stage.
class ScriptedWork : public platform::WaitedWork {
 public:
  bool finished = false;
  int finish_after_polls = -1;
  int polls = 0;
  int cancels = 0;
  std::string stage = " Model Estimation ";
  void Poll() override {
    ++polls;
    if (finish_after_polls >= 0 && polls >= finish_after_polls) finished = true;
  }
  bool Finished() const override { return finished; }
  void Cancel() override { ++cancels; }
  bool CancelRequested() const override { return cancels > 0; }
  std::string StageText() const override { return stage; }
  int number = 1, count = 1;
  int SeriesNumber() const override { return number; }
  int SeriesCount() const override { return count; }
  std::string SeriesName() const override { return "SALES"; }
};

TEST(FrmProgressTest, ShowsTheRunAndClosesAfterTheEngineEnds) {
  tessaly::testing::OffscreenApp();
  ScriptedWork work;
  frmProgress form;
  form.SetEngine(&work);
  form.SetTimings(40, 300, 10);
  EXPECT_EQ(form.windowTitle(), "Tessaly Progress");
  form.show();
  EXPECT_EQ(form.lblProgress->text(), "Starting Engine Please wait...");
  EXPECT_TRUE(form.lblTime->text().startsWith("Start Time: "));
  EXPECT_EQ(form.lblTime->text().size(), QString("Start Time: hh:mm:ss").size());
  EXPECT_EQ(form.ProgressBar1->value(), 1);
  EXPECT_FALSE(form.btnOK->isVisible());
  EXPECT_FALSE(form.txtComplete->isVisible());
  EXPECT_TRUE(form.btnCancel->isVisible());

  QTest::qWait(150);
  EXPECT_EQ(form.lblProgress->text(), " Model Estimation ");
  EXPECT_GT(form.ProgressBar1->value(), 1);

  // Escape while the engine works is a cancel, not a close.
  QTest::keyClick(&form, Qt::Key_Escape);
  EXPECT_TRUE(form.isVisible());
  EXPECT_EQ(work.cancels, 1);
  EXPECT_FALSE(form.btnCancel->isEnabled());

  work.finished = true;
  QTest::qWait(100);
  EXPECT_TRUE(form.txtComplete->isVisible());
  EXPECT_EQ(form.txtComplete->toPlainText(), "EXECUTION\nCOMPLETED");
  EXPECT_FALSE(form.btnCancel->isVisible());
  EXPECT_FALSE(form.ProgressBar1->isVisible());
  EXPECT_TRUE(form.lblTime->text().startsWith("Elapsed Time: 00:00:0"));
  EXPECT_TRUE(form.isVisible());  // the pause before it unloads itself
  QTest::qWait(400);
  EXPECT_FALSE(form.isVisible());
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST(FrmProgressTest, TheProjectBarTellsHowManyDatasetsAreDone) {
  tessaly::testing::OffscreenApp();
  struct Case {
    int number, count;
    bool shown;
    int before, after;
  } cases[] = {{1, 1, false, 0, 0}, {3, 5, true, 2, 3}, {5, 5, true, 4, 5}};
  for (const Case& c : cases) {
    ScriptedWork work;
    work.number = c.number;
    work.count = c.count;
    frmProgress form;
    form.SetEngine(&work);
    form.SetTimings(20, 1000, 10);
    form.show();
    EXPECT_EQ(form.ProjectBar->isVisible(), c.shown) << c.number;
    if (!c.shown) continue;
    EXPECT_EQ(form.ProjectBar->value(), c.before);
    EXPECT_EQ(form.ProjectBar->maximum(), c.count);
    EXPECT_EQ(form.ProjectBar->text(), QString("Project: %1 of %2 datasets done").arg(c.before).arg(c.count));
    work.finished = true;
    QTest::qWait(80);
    EXPECT_EQ(form.ProjectBar->value(), c.after);
    EXPECT_TRUE(form.ProjectBar->isVisible());
    form.accept();
  }
}

TEST(FrmProgressTest, CancelButtonAsksTheWorkToStopOnce) {
  tessaly::testing::OffscreenApp();
  ScriptedWork work;
  frmProgress form;
  form.SetEngine(&work);
  form.SetTimings(40, 50, 10);
  form.show();
  QTest::mouseClick(form.btnCancel, Qt::LeftButton);
  QTest::mouseClick(form.btnCancel, Qt::LeftButton);
  EXPECT_EQ(work.cancels, 1);
  work.finished = true;
  QTest::qWait(200);
  EXPECT_FALSE(form.isVisible());
}

// The desktop's wait with the form's own timings: one tick a second, three seconds' pause.
TEST(DesktopProgressWaitTest, ModalWaitEndsThreeSecondsAfterTheEngine) {
  tessaly::testing::OffscreenApp();
  ScriptedWork work;
  work.finish_after_polls = 3;  // the engine is ready well within the first second
  DesktopProgressWait wait;
  QElapsedTimer clock;
  clock.start();
  wait.Wait(work);
  EXPECT_TRUE(work.finished);
  EXPECT_GE(clock.elapsed(), 3900);
  EXPECT_LT(clock.elapsed(), 8000);
}

}  // namespace
}  // namespace tessaly::batch
