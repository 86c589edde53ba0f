// The forms on their own: frmWizard1 bound to the wizard (pages, option tree, field
// formats, up-down controls, validation keeping the page), and the project forms' lists.
#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QToolButton>
#include <QTreeWidget>

#include "batch/forms/frm_project_forms.h"
#include "gui.h"
#include "rules/forms/frm_wizard1.h"

namespace tessaly::testing {
namespace {

class WizardForm : public ::testing::Test {
 protected:
  void SetUp() override {
    OffscreenApp();
    context.app_folder = program.path();
    context.project_stem = "sample";
    context.dataset_path = program / "examples" / "AIRLINE.ASC";
    context.dataset = *rules::ReadDatasetShape(context.dataset_path);
    wizard = std::make_unique<rules::RulesWizard>(context, session);
    wizard->Load();
    form = std::make_unique<rules::frmWizard1>(*wizard);
    form->show();
    QApplication::processEvents();
  }
  QLineEdit* Edit(const char* name) { return qobject_cast<QLineEdit*>(form->Control(name)); }
  void Press(int index) {
    form->cmdNav[index]->click();
    QApplication::processEvents();
  }
  std::string Messages() const { return host.Joined(); }

  ProgramFolderCopy program;
  RecordedMessages host;
  rules::RulesSession session;
  rules::WizardContext context;
  std::unique_ptr<rules::RulesWizard> wizard;
  std::unique_ptr<rules::frmWizard1> form;
};

TEST_F(WizardForm, UserRulesPathShowsEachPageAndTheOptionTree) {
  EXPECT_EQ(form->windowTitle(), "Model and Rules Wizard - Intro");
  EXPECT_FALSE(form->cmdNav[2]->isEnabled());  // Back on step 0
  EXPECT_FALSE(form->cmdNav[4]->isEnabled());
  EXPECT_FALSE(form->cmdNav[0]->isVisible());  // Help is not offered
  EXPECT_TRUE(form->optModelingType[2]->isChecked());

  form->optModelingType[0]->click();
  EXPECT_EQ(wizard->modeling_type, 0);
  Press(3);
  EXPECT_EQ(wizard->Step(), 1);
  EXPECT_EQ(form->fraStep->currentIndex(), 1);
  EXPECT_EQ(form->windowTitle(), "Model and Rules Wizard - Rules");
  EXPECT_TRUE(form->optConditions[2]->isChecked());
  Press(3);
  ASSERT_EQ(wizard->Step(), 4) << Messages();
  EXPECT_EQ(form->fraStep->currentIndex(), 4);
  EXPECT_EQ(wizard->Current(), rules::SubPage::AutoModelID);
  EXPECT_EQ(form->lblPageTitle->text(), "Enter Initial Model Identification parameters");
  Press(3);
  ASSERT_EQ(wizard->Current(), rules::SubPage::ModelEstimation1) << Messages();

  // The option tree: a node shows its pane.
  EXPECT_EQ(form->fraModelEstimationPanes->currentIndex(), 0);
  form->TreeView5->setCurrentItem(form->TreeView5->topLevelItem(1));
  EXPECT_EQ(wizard->TreeNode(), 1);
  EXPECT_EQ(form->fraModelEstimationPanes->currentIndex(), 1);
  EXPECT_TRUE(form->TreeView5->topLevelItem(1)->font(0).bold());
  EXPECT_FALSE(form->TreeView5->topLevelItem(0)->font(0).bold());

  // An iteration count out of range: the message, and the page stays.
  QLineEdit* iterations = Edit("txtModelEst3");
  ASSERT_NE(iterations, nullptr);
  iterations->setFocus();
  iterations->setText("500");
  emit iterations->textEdited("500");
  EXPECT_EQ(wizard->estimation.txtModelEst3.text, "500");
  Edit("txtModelEst1")->setFocus();
  QApplication::processEvents();
  ASSERT_NE(QApplication::focusWidget(), iterations);
  Press(3);
  EXPECT_EQ(wizard->Current(), rules::SubPage::ModelEstimation1);
  EXPECT_NE(Messages().find("The Range for the 'Maximum Number of Iterations' is 0 to 200."), std::string::npos)
      << Messages();
  // The field in error takes the focus back.
  EXPECT_EQ(wizard->FocusField(), "txtModelEst3");
  EXPECT_EQ(QApplication::focusWidget(), iterations);
  iterations->setText("30");
  emit iterations->textEdited("30");
  Press(3);
  EXPECT_EQ(wizard->Current(), rules::SubPage::ModelForecasting) << Messages();
  Press(3);
  EXPECT_EQ(wizard->Step(), 5);
  EXPECT_TRUE(form->cmdNav[4]->isEnabled());
  EXPECT_FALSE(form->cmdNav[3]->isEnabled());
  Press(4);
  EXPECT_TRUE(wizard->Finished());
  EXPECT_FALSE(form->isVisible());
  EXPECT_TRUE(fs::exists(program / "ENGINE.GO"));
}

TEST_F(WizardForm, ModelPageUpDownControlsStayInRangeAndFieldsFormatOnLeaving) {
  form->optModelingType[1]->click();  // "4. Explicit Model With User Rules"
  Press(3);
  ASSERT_EQ(wizard->Step(), 2);
  EXPECT_TRUE(form->optModels[2]->isChecked());
  wizard->SelectEditModel("New");
  form->Refresh();
  Press(3);
  ASSERT_EQ(wizard->Current(), rules::SubPage::Startmod) << Messages();
  EXPECT_EQ(form->fraStep3->currentIndex(), 1);

  auto* up = form->findChild<QToolButton*>("txtStartmod5Up");
  auto* down = form->findChild<QToolButton*>("txtStartmod5Down");
  ASSERT_TRUE(up && down);
  for (int i = 0; i < 6; ++i) up->click();
  EXPECT_EQ(wizard->startmod.txtStartmod5.text, "4");
  EXPECT_EQ(Edit("txtStartmod5")->text(), "4");
  for (int i = 0; i < 6; ++i) down->click();
  EXPECT_EQ(wizard->startmod.txtStartmod5.text, "0");

  // Leaving a field gives it its format.
  QLineEdit* lambda = Edit("txtStartmod2");
  lambda->setFocus();
  QApplication::processEvents();
  lambda->setText(".5");
  emit lambda->textEdited(".5");
  Edit("txtStartmod1")->setFocus();
  QApplication::processEvents();
  EXPECT_NE(wizard->startmod.txtStartmod2.text, ".5");
  EXPECT_EQ(lambda->text().toStdString(), wizard->startmod.txtStartmod2.text);

  // Back returns to the model choice.
  Press(2);
  EXPECT_EQ(wizard->Step(), 2);
}

TEST_F(WizardForm, LambdaQuestionOpensTheLambdaPage) {
  form->optModelingType[0]->click();
  Press(3);
  Press(3);
  Press(3);
  ASSERT_EQ(wizard->Current(), rules::SubPage::ModelEstimation1) << Messages();
  form->TreeView5->setCurrentItem(form->TreeView5->topLevelItem(3));
  auto* yes = form->findChild<QRadioButton*>("optLambdasYes");
  ASSERT_NE(yes, nullptr);
  yes->click();
  EXPECT_EQ(wizard->Current(), rules::SubPage::LambdaEst);
  EXPECT_EQ(form->fraStep4->currentIndex(), 4);
  EXPECT_EQ(form->lblPageTitle->text(), "Enter Lambda Values for Estimation");
  QLineEdit* first = Edit("txtLambda_Est(1)");
  ASSERT_NE(first, nullptr);
  first->setText("2.5");
  emit first->textEdited("2.5");
  Press(3);
  EXPECT_EQ(wizard->Current(), rules::SubPage::LambdaEst);
  EXPECT_NE(Messages().find("The Range for Lambda Values is -1.0 to 1.00."), std::string::npos) << Messages();
}

TEST_F(WizardForm, EscapeAsksAndNoKeepsTheWizardOpen) {
  host->answers.push_back(platform::mb::No);
  form->reject();
  EXPECT_TRUE(form->isVisible());
  EXPECT_FALSE(wizard->Closed());
  host->answers.push_back(platform::mb::Yes);
  form->reject();
  EXPECT_TRUE(wizard->Cancelled());
  EXPECT_FALSE(form->isVisible());
}

TEST(ProjectForms, ListsMoveFilesAndSelectSeriesTakesOnlyOne) {
  OffscreenApp();
  tessaly::testing::RecordedMessages host;
  batch::frmSelect select;
  select.lists->Fill({"A.ASC", "B.ASC", "C.ASC"}, {"b.asc"});
  EXPECT_EQ(select.lists->lstRoster->count(), 2);  // "B.ASC" is already chosen
  select.lists->chkAddAll->setChecked(true);
  select.lists->cmdAdd->click();
  EXPECT_EQ(select.lists->Chosen(), (std::vector<std::string>{"b.asc", "A.ASC", "C.ASC"}));
  select.lists->lstChosen->item(0)->setSelected(true);
  select.lists->cmdRemove->click();
  EXPECT_EQ(select.lists->Chosen(), (std::vector<std::string>{"A.ASC", "C.ASC"}));
  EXPECT_EQ(select.lists->lstRoster->item(0)->text(), "b.asc");

  TempDir folder;
  WriteFile(folder / "ONE.ASC", "x");
  WriteFile(folder / "TWO.ASC", "x");
  batch::frmSelectSeries single(nullptr, QString::fromStdString(folder.path().string()), true);
  ASSERT_EQ(single.lists->lstRoster->count(), 2);
  single.lists->lstRoster->item(0)->setSelected(true);
  single.lists->cmdAdd->click();
  single.lists->lstRoster->item(0)->setSelected(true);
  single.lists->cmdAdd->click();
  EXPECT_EQ(single.lists->Chosen().size(), 1u);
  ASSERT_EQ(host->shown.size(), 1u);
  EXPECT_EQ(host->shown[0].text,
            "FYI!  You may only select one ASC file. If you want to change the selected file, you "
            "must first delete it from the chosen list.");
}

}  // namespace
}  // namespace tessaly::testing
