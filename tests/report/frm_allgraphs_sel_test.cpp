#include "report/forms/frm_allgraphs_sel.h"

#include <gtest/gtest.h>

#include <QPushButton>
#include <QTimer>

#include "support/qt_app.h"

namespace tessaly::report {
namespace {

// Presses a button (or closes the window) once the modal dialog is up.
StepChoice Answer(frmAllgraphsSel& dialog, QPushButton* button, bool left, bool right) {
  QTimer::singleShot(0, &dialog, [&] {
    if (button) button->click();
    else dialog.close();
  });
  return dialog.Ask(QStringLiteral("Select Report"), left, right);
}

TEST(FrmAllgraphsSel, ButtonsAnswerAndCloseTheDialog) {
  tessaly::testing::OffscreenApp();
  frmAllgraphsSel dialog;
  EXPECT_EQ(dialog.cmdLeft()->text(), "<===");
  EXPECT_EQ(dialog.cmdRight()->text(), "===>");
  EXPECT_EQ(Answer(dialog, dialog.cmdRight(), true, true), StepChoice::Right);
  EXPECT_EQ(dialog.windowTitle(), "Select Report");
  EXPECT_FALSE(dialog.GraphStepLeft);
  EXPECT_EQ(Answer(dialog, dialog.cmdLeft(), true, true), StepChoice::Left);
  EXPECT_FALSE(dialog.GraphStepRight);  // each direction clears the other
  EXPECT_EQ(Answer(dialog, dialog.cmdCancel(), true, true), StepChoice::Cancel);
  EXPECT_EQ(Answer(dialog, nullptr, true, true), StepChoice::Closed);
  // At the first stop "<===" is disabled, at the last "===>".
  QTimer::singleShot(0, &dialog, [&] {
    EXPECT_FALSE(dialog.cmdLeft()->isEnabled());
    EXPECT_TRUE(dialog.cmdRight()->isEnabled());
    dialog.cmdLeft()->click();  // a disabled button does nothing
    dialog.cmdCancel()->click();
  });
  EXPECT_EQ(dialog.Ask(QStringLiteral("Select Graph"), false, true), StepChoice::Cancel);
}

}  // namespace
}  // namespace tessaly::report
