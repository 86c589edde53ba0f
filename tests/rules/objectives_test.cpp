#include "rules/objectives.h"

#include "fixture.h"
#include "rules/modeling_objectives.h"
#include "rules/rule_keys.h"

namespace tessaly::rules::testing {
namespace {

std::vector<int> Types(int seasonality, int series) {
  std::vector<int> out;
  for (const auto& o : CreateOptionsCollection(seasonality, series)) out.push_back(o.ModelType);
  return out;
}

TEST(Presets, FilteredBySeasonalityAndSeries) {
  std::vector<int> monthly;
  for (int i = 1; i <= 15; ++i) monthly.push_back(i);
  EXPECT_EQ(Types(12, 1), monthly);
  EXPECT_EQ(Types(1, 1), (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 12}));
  EXPECT_EQ(Types(3, 1).size(), 10u);
  EXPECT_EQ(Types(4, 1).size(), 15u);
  EXPECT_EQ(Types(12, 2), (std::vector<int>{51, 52}));
  EXPECT_EQ(Types(1, 150), (std::vector<int>{51, 52}));
  EXPECT_EQ(LoadModelingOptions(12, 1)[14], "AIRLINE");
  EXPECT_EQ(ImplicitModelCaption(3), "Use Implicit Model From List(Nonseasonal Models)");
  EXPECT_EQ(ImplicitModelCaption(4), "Use Implicit Model From List");
  EXPECT_EQ(DescriptionOf(7, 12, 1), "RANDOM WALK WITH CONSTANT");
  EXPECT_EQ(DescriptionOf(15, 1, 1), "");
}

TEST(Presets, SetObjective1ByExactDescription) {
  Objectives o;
  o.value = {3, 0, 0};
  EXPECT_FALSE(SetObjective1("Select Model", o));
  EXPECT_FALSE(SetObjective1("airline", o));
  EXPECT_EQ(o.Objective1(), 3);
  EXPECT_TRUE(SetObjective1("REGRESSION WITH AR(1) CORRECTION", o));
  EXPECT_EQ(o.Objective1(), 52);
  EXPECT_EQ(o.copy1, 52);
  EXPECT_EQ(o.copy2, 52);
  for (int v : {0, 15, 51, 52, 97, 98, 99, 199, 200}) EXPECT_TRUE(IsValidObjective1(v)) << v;
  for (int v : {-1, 16, 50, 53, 96, 100, 201}) EXPECT_FALSE(IsValidObjective1(v)) << v;
}

class Objective1 : public RulesFixture {
 protected:
  void SetUp() override {
    WriteFile(File("ENGINE.USR"), "USER RULES|   1\r\nINITIAL MODEL|            \r\n");
    WriteFile(File("ENGINE.GO"), "stale");
    WriteFile(File("STARTMOD.123"), "model");
    session.rules.SetText(Read("ENGINE.USR"));
    session.models.Cell(0, 0) = "SALES";
  }
  std::string saved = "SALES.I01";
};

TEST_F(Objective1, AutomaticModellingClearsTheModelAndCopiesTheRules) {
  ObjectiveChoice c{ModelingType::WithUserRules, 2, 0, "", false};
  session.objectives.value = {7, 0, 0};
  EXPECT_TRUE(SetModelingObjectives(Folder(), c, session, saved).go_from_usr);
  EXPECT_EQ(session.objectives.Objective1(), 0);
  EXPECT_TRUE(session.models.Empty());
  EXPECT_EQ(saved, "");
  EXPECT_FALSE(Exists("STARTMOD.123"));
  EXPECT_EQ(Read("ENGINE.GO"), Read("ENGINE.USR"));
  c.condition_choice = 6;
  (void)SetModelingObjectives(Folder(), c, session, saved);
  EXPECT_EQ(Read("ENGINE.GO"), Cnd());
  c.type = ModelingType::WithQvxRules;
  c.condition_choice = 0;
  (void)SetModelingObjectives(Folder(), c, session, saved);
  EXPECT_FALSE(Exists("ENGINE.GO"));
}

TEST_F(Objective1, PresetsIdentificationAndUserModels) {
  ObjectiveChoice c{ModelingType::ImplicitCanned, 0, 0, "FOURIER", false};
  (void)SetModelingObjectives(Folder(), c, session, saved);
  EXPECT_EQ(session.objectives.Objective1(), 10);
  EXPECT_TRUE(Exists("STARTMOD.123"));
  EXPECT_FALSE(Exists("ENGINE.GO"));

  c = {ModelingType::IdentificationOnly, 0, 0, "", false};
  (void)SetModelingObjectives(Folder(), c, session, saved);
  EXPECT_EQ(session.objectives.Objective1(), 97);
  EXPECT_EQ(session.objectives.copy2, 97);

  c = {ModelingType::ExplicitModelUserRules, 2, 2, "", true};
  (void)SetModelingObjectives(Folder(), c, session, saved);
  EXPECT_EQ(session.objectives.Objective1(), 99);
  EXPECT_EQ(session.rules.GetRule(key::kInitialModel), "STARTMOD.123");
  EXPECT_EQ(Read("ENGINE.USR"), "USER RULES|   1\r\nINITIAL MODEL|STARTMOD.123\r\n");
  EXPECT_EQ(Read("ENGINE.GO"), Read("ENGINE.USR"));

  // Without the defaults file the restore choice leaves no rules for the run.
  fs::remove(File("ENGINE.CND"));
  c.condition_choice = 6;
  auto out = SetModelingObjectives(Folder(), c, session, saved);
  EXPECT_FALSE(Exists("ENGINE.GO"));
  EXPECT_EQ(out.missing_source, "");

  c.use_model = false;
  session.objectives.value[0] = 5;
  (void)SetModelingObjectives(Folder(), c, session, saved);
  EXPECT_EQ(session.objectives.Objective1(), 0);
}

TEST_F(Objective1, MissingPresentRulesAreReported) {
  fs::remove(File("ENGINE.USR"));
  ObjectiveChoice c{ModelingType::WithUserRules, 2, 0, "", false};
  EXPECT_EQ(SetModelingObjectives(Folder(), c, session, saved).missing_source, "ENGINE.USR");
  EXPECT_FALSE(Exists("ENGINE.GO"));
}

TEST_F(Objective1, AllowModificationsMarker) {
  SetAllowModifications(Folder(), true);
  EXPECT_EQ(Read("ALLOWMOD.QVX"), "Modification Allowed\r\n");
  SetAllowModifications(Folder(), false);
  EXPECT_FALSE(Exists("ALLOWMOD.QVX"));
}

}  // namespace
}  // namespace tessaly::rules::testing
