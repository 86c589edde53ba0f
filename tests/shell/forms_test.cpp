// The shell's Qt forms bound to the preference rules, driven off-screen.
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QTimer>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>

#include "platform/dialogs.h"
#include "platform/forms/qt_dialog_host.h"
#include "shell/forms/frm_main.h"
#include "shell/forms/frm_prefs.h"
#include "shell/preferences.h"
#include "shell/settings.h"
#include "shell/startup.h"
#include "support/messages.h"
#include "support/program_folder.h"
#include "support/qt_app.h"

namespace tessaly::shell {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;

struct Forms : ::testing::Test {
  static void SetUpTestSuite() { tessaly::testing::OffscreenApp(); }
  TempDir program, user;
  tessaly::testing::RecordedMessages messages;
  void SetUp() override {
    Shell().program_folder = program.path();
    std::filesystem::create_directory(program / "DEFAULTXSD");
    Prefs() = PreferenceValues();
    MainSettings().user_folder = user.path();
    MainSettings().SaveMode = 0;
  }

  static void Press(QDialog& dialog, QDialogButtonBox::StandardButton which) {
    dialog.findChild<QDialogButtonBox*>()->button(which)->click();
  }
  std::string SavedFile() { return ReadFile(PreferencesFile(program.path())); }
};

TEST_F(Forms, DecimalsDialogTakesTheTextRuleAndWritesTheFile) {
  Prefs().Decimals = 4;
  frmPrefsDecimals dialog;
  EXPECT_EQ(dialog.windowTitle(), "Decimal Preference");
  EXPECT_EQ(dialog.txtPref1->text(), "4");
  ASSERT_NE(dialog.findChild<QLabel*>(), nullptr);
  EXPECT_EQ(dialog.findChild<QLabel*>()->text(), "Number Of Decimal Places In Data(2 to 9)");

  dialog.txtPref1->setText("7");
  Press(dialog, QDialogButtonBox::Cancel);
  EXPECT_EQ(Prefs().Decimals, 4);
  EXPECT_FALSE(std::filesystem::exists(PreferencesFile(program.path())));

  dialog.txtPref1->setText("10");
  Press(dialog, QDialogButtonBox::Ok);
  EXPECT_EQ(Prefs().Decimals, 2);
  EXPECT_NE(SavedFile().find("<Decimals>2</Decimals>"), std::string::npos);

  frmPrefsDecimals again;
  again.txtPref1->setText("9");
  Press(again, QDialogButtonBox::Ok);
  EXPECT_EQ(Prefs().Decimals, 9);
  EXPECT_NE(SavedFile().find("<Decimals>9</Decimals>"), std::string::npos);
}

TEST_F(Forms, GraphDialogEnablesBoxesOnlyForSelectedGraphs) {
  Prefs().Act = kTrue;
  frmPrefsGraphs dialog;
  EXPECT_EQ(dialog.windowTitle(), "User Preferences");
  EXPECT_TRUE(dialog.optSelect[0]->isChecked());
  for (QCheckBox* box : dialog.chkGraphs) {
    EXPECT_FALSE(box->isEnabled());
    EXPECT_FALSE(box->isChecked());
  }
  EXPECT_EQ(dialog.chkNoLimits->text(), "Forecasts Only, No Lower or Upper Limits");
  EXPECT_EQ(dialog.chkGraphs[0]->objectName(), "chkact");
  EXPECT_EQ(dialog.chkGraphs[8]->objectName(), "chkres");

  dialog.optSelect[1]->click();
  for (QCheckBox* box : dialog.chkGraphs) EXPECT_TRUE(box->isEnabled());
  dialog.chkGraphs[2]->setChecked(true);  // actuals and fit
  dialog.chkGraphs[6]->setChecked(true);  // forecasts
  dialog.chkNoLimits->setChecked(true);
  dialog.txtPref1->setText("3");
  Press(dialog, QDialogButtonBox::Ok);

  EXPECT_EQ(Prefs().Decimals, 3);
  EXPECT_EQ(Prefs().AllGraphs, kFalse);
  EXPECT_EQ(Prefs().SelGraphs, kTrue);
  EXPECT_EQ(Prefs().Act, kFalse);  // cleared when "all graphs" was shown, not ticked again
  EXPECT_EQ(Prefs().ActFit, kTrue);
  EXPECT_EQ(Prefs().Fore, kTrue);
  EXPECT_EQ(Prefs().NoLimits, kTrue);
  std::string saved = SavedFile();
  EXPECT_NE(saved.find("<SelGraphs>true</SelGraphs>"), std::string::npos);
  EXPECT_NE(saved.find("<ActFit>true</ActFit>"), std::string::npos);

  // Reopened, it shows what was chosen; "no graphs" clears and disables the boxes.
  frmPrefsGraphs again;
  EXPECT_TRUE(again.optSelect[1]->isChecked());
  EXPECT_TRUE(again.chkGraphs[2]->isChecked());
  again.optSelect[2]->click();
  EXPECT_FALSE(again.chkGraphs[2]->isChecked());
  EXPECT_FALSE(again.chkGraphs[2]->isEnabled());
  Press(again, QDialogButtonBox::Ok);
  EXPECT_EQ(Prefs().NOGRAPHS, kTrue);
  EXPECT_EQ(Prefs().SelGraphs, kFalse);
}

TEST_F(Forms, MainWindowMenusAndRecentFiles) {
  MainSettings().SaveSettingStr("Recent Files", "File1", "/data/a.xml");
  MainSettings().SaveSettingStr("Recent Files", "File3", "/data/c.xml");
  frmMain form;
  EXPECT_EQ(form.windowTitle(), "Tessaly");
  ASSERT_NE(form.lblStatus, nullptr);
  EXPECT_EQ(form.lblStatus->objectName(), "lblStatus");
  EXPECT_FALSE(form.mnuTest->menuAction()->isVisible());
  form.ShowTestMenu(true);
  EXPECT_TRUE(form.mnuTest->menuAction()->isVisible());

  form.LoadRecentMenu();
  QStringList shown;
  for (QAction* a : form.mnuFile->actions())
    if (a->isVisible() && !a->isSeparator()) shown << a->text();
  EXPECT_EQ(shown, (QStringList{"&1 /data/a.xml", "&3 /data/c.xml", "E&xit"}));

  // A recent project cannot be opened until projects exist: the user is told.
  tessaly::testing::RecordedMessages host;
  form.findChild<QAction*>("mnuFileMRU_1")->trigger();
  ASSERT_EQ(host->shown.size(), 1u);
  EXPECT_NE(host->shown[0].text.find("/data/a.xml"), std::string::npos);
  std::string opened;
  frmMain::RecentFileOpener() = [&](const std::string& p) { opened = p; };
  form.findChild<QAction*>("mnuFileMRU_3")->trigger();
  frmMain::RecentFileOpener() = nullptr;
  EXPECT_EQ(opened, "/data/c.xml");
}

TEST_F(Forms, QtDialogHostMapsButtonsAndAnswers) {
  EXPECT_EQ(platform::QtFilterFromPattern("XML files (*.xml)|*.xml"), "XML files (*.xml)");
  EXPECT_EQ(platform::QtFilterFromPattern("HIS files (*.his)|*.his|All files|*.*"),
            "HIS files (*.his);;All files (*.*)");

  platform::QtDialogHost host;
  QString seen_text, seen_title;
  int buttons = 0;
  // Answers the box as a person would: reads it, then presses "No".
  QTimer::singleShot(50, [&] {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    ASSERT_NE(box, nullptr);
    seen_text = box->text();
    seen_title = box->windowTitle();
    buttons = box->buttons().size();
    box->button(QMessageBox::No)->click();
  });
  EXPECT_EQ(host.Message("File exists.\r\nOverwrite?", platform::mb::YesNo + platform::mb::Question,
                         "Save Project"),
            platform::mb::No);
  EXPECT_EQ(seen_text, "File exists.\nOverwrite?");
  EXPECT_EQ(seen_title, "Save Project");
  EXPECT_EQ(buttons, 2);

  // Closed without a choice: Cancel where the box offers it.
  QTimer::singleShot(50, [] { QApplication::activeModalWidget()->close(); });
  EXPECT_EQ(host.Message("Continue?", platform::mb::YesNoCancel, "T"), platform::mb::Cancel);
}

}  // namespace
}  // namespace tessaly::shell
