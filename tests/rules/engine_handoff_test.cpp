// The files the wizard leaves are the ones the engine reads: a model entered in the wizard is
// the model the engine fits, and rules changed in the wizard change what the engine does.
#include <gtest/gtest.h>

#include "fixture.h"
#include "platform/textfile.h"

namespace tessaly::rules::testing {
namespace {

using tessaly::testing::RunCommand;

class EngineHandoff : public WithShippedRules {
 protected:
  // Runs the engine on a dataset in the program folder, as the run hands it over: objective #1
  // from the wizard on line 1, the rules and model files where the wizard left them.
  std::string Engine(const std::string& asc, int objective1, const std::string& out_dir) {
    auto lines = platform::ReadAllLines(File(asc)).value();
    lines[0] = std::to_string(objective1);
    EXPECT_TRUE(platform::WriteAllLines(File("RUN.ASC"), lines));
    std::string out;
    int status = RunCommand("cd '" + Folder().string() + "' && ./qvxengine --asc RUN.ASC --out '" +
                                out_dir + "'",
                            &out);
    EXPECT_EQ(status, 0) << out;
    return out;
  }
};

TEST_F(EngineHandoff, ExplicitModelFromTheWizardIsTheModelTheEngineFits) {
  // The airline passengers under the name the wizard's dataset has.
  WizardContext context = Context();
  auto airline = platform::ReadAllLines(File("examples/AIRLINE.ASC")).value();
  ASSERT_GT(airline.size(), 150u);
  airline[11] = "SALES";
  ASSERT_TRUE(platform::WriteAllLines(context.dataset_path, airline));

  auto out = Run(context, [&](RulesWizard& w) {
    w.ClickModelingType(1);
    w.Next();
    w.Next();
    ASSERT_EQ(w.Current(), SubPage::Startmod);
    // AR(1) with a seasonal difference at lag 12 and a constant.
    w.startmod.txtStartmod5.text = "1";
    w.startmod.txtStartmod7.text = "1";
    w.startmod.txtStartmod8.text = "1";
    w.startmod.txtStartmod9.text = "0.6";
    w.startmod.txtStartmod3.text = "1";
    w.startmod.txtStartmod4.text = "12";
    for (int guard = 0; guard < 20 && w.Step() != 5; ++guard) w.Next();
    ASSERT_EQ(w.Step(), 5);
    w.Finish();
  });
  ASSERT_EQ(out.objective1, 99);
  ASSERT_TRUE(Exists("STARTMOD.123"));

  std::string summary = Engine("SALES.ASC", out.objective1, "user");
  EXPECT_NE(summary.find("USER MODEL: ARIMA(1,0,0)(0,1,0)12"), std::string::npos) << summary;
  std::string equation = ReadFile(program / "user" / "EQUATION.TXT");
  EXPECT_NE(equation.find("(1 - B**12)"), std::string::npos) << equation;
  EXPECT_NE(equation.find("(1 - 0."), std::string::npos) << equation;
}

TEST_F(EngineHandoff, OutlierDetectionSwitchedOffInTheWizardFindsNoBreakInTheNile) {
  // With the shipped rules the engine finds the Nile's drop of 1899 ...
  std::string summary = Engine("examples/NILE.ASC", 0, "shipped");
  EXPECT_TRUE(fs::exists(program / "shipped" / "LEVELRPT.CSV")) << summary;
  EXPECT_NE(ReadFile(program / "shipped" / "VERBAL.TXT").find("a level shift of -"),
            std::string::npos);

  // ... and with the deterministic sufficiency switched off in the wizard it finds nothing.
  auto out = Run(Context(0, 1, 1, 100, 10), [&](RulesWizard& w) {
    w.ClickModelingType(0);
    w.Next();
    w.Next();
    w.Next();
    ASSERT_EQ(w.Current(), SubPage::ModelEstimation1);
    w.estimation.chkModelEst3.value = false;
    for (int guard = 0; guard < 20 && w.Step() != 5; ++guard) w.Next();
    ASSERT_EQ(w.Step(), 5);
    w.Finish();
  });
  ASSERT_EQ(out.objective1, 0);
  ASSERT_TRUE(Exists("ENGINE.GO"));
  summary = Engine("examples/NILE.ASC", 0, "off");
  EXPECT_FALSE(fs::exists(program / "off" / "LEVELRPT.CSV")) << summary;
  EXPECT_NE(ReadFile(program / "off" / "VERBAL.TXT").find("No unusual events"), std::string::npos)
      << ReadFile(program / "off" / "VERBAL.TXT");
}

}  // namespace
}  // namespace tessaly::rules::testing
