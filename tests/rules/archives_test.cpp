#include "fixture.h"
#include "rules/rule_keys.h"
#include "rules/rules_files.h"
#include "rules/saved_models.h"

namespace tessaly::rules::testing {
namespace {

class Archives : public RulesFixture {};

TEST_F(Archives, ListsDigitEndedArchivesAndFindsTheNextFreeName) {
  for (int j = 1; j <= 9; ++j) WriteFile(File("Retail.U0" + std::to_string(j)), "x");
  WriteFile(File("OTHER.U1A"), "x");   // ends in a letter: not an archive
  WriteFile(File("OTHER.U12"), "x");
  WriteFile(File("notes.txt"), "x");
  ConditionsList list = Check4ExistingConditions(Folder(), " Retail ");
  ASSERT_EQ(list.items.size(), 11u);
  EXPECT_EQ(list.items[0], "Present Rules");
  EXPECT_EQ(EntryFileName(list.items[1]), "OTHER.U12");
  EXPECT_EQ(list.items[1].substr(0, 10), "OTHER.U12(");
  EXPECT_EQ(list.items[1].back(), ')');
  EXPECT_EQ(EntryFileName(list.items[2]), "Retail.U01");
  EXPECT_TRUE(list.archive_in_use);
  EXPECT_EQ(list.next_archive, "RETAIL.U10");
}

TEST_F(Archives, NamesCountFromU01ThroughU99) {
  EXPECT_EQ(NextArchiveName(Folder(), "P", 'U'), "P.U01");
  for (int i = 0; i <= 9; ++i)
    for (int j = (i == 0 ? 1 : 0); j <= 9; ++j)
      WriteFile(File("P.I" + std::to_string(i) + std::to_string(j)), "");
  EXPECT_EQ(NextArchiveName(Folder(), "P", 'I'), "");
  EXPECT_FALSE(Check4ExistingConditions(Folder(), "P").archive_in_use);
}

TEST_F(Archives, SavingTheRulesArchivesThePresentRules) {
  WriteFile(File("ENGINE.USR"), Cnd());
  session.rules.SetText(Cnd());
  SaveFilesInput in;
  in.save_conditions = true;
  in.condition_choice = 2;
  in.project_stem = "Retail";
  EXPECT_FALSE(SetSaveFiles(Folder(), in, session.rules));
  EXPECT_EQ(Read("Retail.U01"), Cnd());
  // An archive exists now, so the next is named in capitals.
  SetSaveFiles(Folder(), in, session.rules);
  EXPECT_EQ(Read("RETAIL.U02"), Cnd());
  EXPECT_EQ(Shown(), (std::vector<std::string>{
                         "Save Rules|The changed rules made to ENGINE.USR were saved to Retail.U01 "
                         "for archival purposes.",
                         "Save Rules|The changed rules made to ENGINE.USR were saved to RETAIL.U02 "
                         "for archival purposes."}));
  // Not saving removes the save-model marker and stores no model.
  EXPECT_EQ(session.rules.GetRule(key::kStore), "   0");
}

TEST_F(Archives, ObjectiveTwoWithoutSavingTellsWhereTheRulesAre) {
  session.rules.SetText(Cnd());
  SaveFilesInput in;
  for (int o : {0, 11, 24, 25}) {
    in.objective2 = o;
    SetSaveFiles(Folder(), in, session.rules);
  }
  EXPECT_EQ(Shown(), std::vector<std::string>(
                         2, "Save Rules|The changed rules were saved to ENGINE.USR for processing "
                            "purposes."));
}

TEST_F(Archives, SavingTheFinalModelWritesTheMarkerAndStore) {
  session.rules.SetText(Cnd());
  SaveFilesInput in;
  in.save_models = true;
  in.final_model = true;
  EXPECT_TRUE(SetSaveFiles(Folder(), in, session.rules));
  EXPECT_EQ(Read("SAVEMOD.QVX"), " Save Model\r\n");
  EXPECT_EQ(session.rules.GetRule(key::kStore), "   1");
  // An initial model only: the marker and the rule stay as they were.
  in.final_model = false;
  EXPECT_FALSE(SetSaveFiles(Folder(), in, session.rules));
  EXPECT_TRUE(Exists("SAVEMOD.QVX"));
  EXPECT_EQ(session.rules.GetRule(key::kStore), "   1");
  in.save_models = false;
  SetSaveFiles(Folder(), in, session.rules);
  EXPECT_FALSE(Exists("SAVEMOD.QVX"));
  EXPECT_EQ(session.rules.GetRule(key::kStore), "   0");
}

TEST_F(Archives, PooledGroupSizesGoToTheGroupList) {
  session.rules.SetText(Cnd());
  GroupPage g;
  g.txtGroup_PC[0].text = "24";
  g.txtGroup_PC[1].text = "36";
  g.group_count = 2;
  PostGroupPC(Folder(), g, true, session.rules);
  EXPECT_EQ(Read("GROUPLST.QVX"), " 2 \r\n24\r\n36\r\n");
  EXPECT_EQ(session.rules.GetRule(key::kNumberOfGroups), "   2");
  PostGroupPC(Folder(), g, false, session.rules);
  EXPECT_FALSE(Exists("GROUPLST.QVX"));
  g.group_count = 0;
  PostGroupPC(Folder(), g, true, session.rules);
  EXPECT_FALSE(Exists("GROUPLST.QVX"));
  EXPECT_EQ(session.rules.GetRule(key::kNumberOfGroups), "   1");
}

TEST_F(Archives, InitialAndFinalModelsAreSavedUnderTheDatasetStem) {
  EXPECT_EQ(Check4InitialModels(Folder(), "SALES"), "");
  WriteFile(File("STARTMOD.123"), "model\r\n");
  EXPECT_EQ(Check4InitialModels(Folder(), "SALES"), "SALES.I01");
  EXPECT_EQ(Check4InitialModels(Folder(), "SALES"), "SALES.I02");
  EXPECT_EQ(Read("SALES.I02"), "model\r\n");
  auto list = Check4ExistingInitialModels(Folder(), "SALES");
  ASSERT_EQ(list.size(), 3u);
  EXPECT_EQ(list[0], "New");
  EXPECT_EQ(EntryFileName(list[2]), "SALES.I02");

  WriteFile(File("SALES.MOD"), "final\r\n");
  EXPECT_EQ(Check4Model(Folder(), "SALES", "SALES.MOD"), "SALES.F01");
  EXPECT_EQ(Read("SALES.F01"), "final\r\n");
  EXPECT_FALSE(Exists("SALES.MOD"));
  EXPECT_EQ(Check4Model(Folder(), "SALES", "SALES.MOD"), "");
  EXPECT_EQ(Check4ExistingModel(Folder(), "SALES").size(), 2u);
  EXPECT_EQ(Shown(), (std::vector<std::string>{
                         "For Your Information|The model was not saved.",
                         "For Your Information|The initial model was saved to SALES.I01.",
                         "For Your Information|The initial model was saved to SALES.I02.",
                         "For Your Information|The model was not saved."}));
}

}  // namespace
}  // namespace tessaly::rules::testing
