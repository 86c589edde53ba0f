#include "rules/run_seam.h"

#include "fixture.h"
#include "rules/rule_keys.h"

namespace tessaly::rules::testing {
namespace {

class RunSeam : public WithShippedRules {
 protected:
  void SetUp() override {
    WithShippedRules::SetUp();
    Context();  // writes SALES.ASC
  }
};

TEST_F(RunSeam, SavedFinalModelsAreTakenUpAfterEachDataset) {
  auto ui = std::make_shared<ScriptUi>([](RulesWizard& w) {
    w.ClickModelingType(0);
    while (w.Step() != 5) w.Next();
    w.SetSaveModels(true);
    w.Finish();
  });
  RulesWizardForRun run(Folder(), ui, session);
  EXPECT_FALSE(run.ObjectiveOne());
  ASSERT_TRUE(run.Show("Retail", File("SALES.ASC")));
  EXPECT_EQ(run.ObjectiveOne(), 0);
  EXPECT_EQ(Read("SAVEMOD.QVX"), " Save Model\r\n");
  // The choice reaches the rules the run reads, not only the text in memory.
  EXPECT_EQ(Rule("ENGINE.USR", key::kStore), "   1");
  EXPECT_EQ(Read("ENGINE.GO"), Read("ENGINE.USR"));

  WriteFile(File("SALES.MOD"), "final model\r\n");
  run.Check4Model("SALES");
  EXPECT_EQ(Read("SALES.F01"), "final model\r\n");
  run.Check4Model("SALES");
  EXPECT_TRUE(WasShown("For Your Information", "The model was not saved."));

  // Stored models on the next visit: the save boxes start off.
  auto again = std::make_shared<ScriptUi>([](RulesWizard& w) {
    w.ClickModelingType(0);
    w.Next();
    w.finish.chkSaveModels.value = true;
    w.Next();
    EXPECT_FALSE(w.finish.chkSaveModels.value);
    EXPECT_FALSE(w.finish.chkFinalModel.enabled);
    w.Cancel();
  });
  RulesWizardForRun second(Folder(), again, session);
  EXPECT_FALSE(second.Show("Retail", File("SALES.ASC")));
  EXPECT_FALSE(second.ObjectiveOne());
}

TEST_F(RunSeam, WithoutAnyRulesTheUserRulesPathStops) {
  fs::remove(File("ENGINE.USR"));
  fs::remove(File("ENGINE.CND"));
  auto ui = std::make_shared<ScriptUi>([&](RulesWizard& w) {
    w.ClickModelingType(0);
    w.Next();
    EXPECT_EQ(w.Step(), 0);
    EXPECT_TRUE(w.Session().validation_failed);
    w.ClickModelingType(2);
    w.Next();
    w.Finish();
  });
  RulesWizardForRun run(Folder(), ui, session);
  EXPECT_TRUE(run.Show("Retail", File("SALES.ASC")));
  EXPECT_FALSE(Exists("ENGINE.USR"));
  const auto shown = Shown();
  EXPECT_EQ(std::count(shown.begin(), shown.end(),
                       "File does not exist|No Present Conditions or Default Conditions files "
                       "exist. Please contact QVX."),
            2);
}

TEST_F(RunSeam, AnUnreadableFirstFileEndsTheRun) {
  auto ui = std::make_shared<ScriptUi>([](RulesWizard&) { FAIL() << "no wizard expected"; });
  RulesWizardForRun run(Folder(), ui, session);
  EXPECT_FALSE(run.Show("Retail", File("MISSING.ASC")));
  EXPECT_EQ(Shown(), std::vector<std::string>{"FYI|The asc file MISSING.ASC could not be read."});
}

}  // namespace
}  // namespace tessaly::rules::testing
