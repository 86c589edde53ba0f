#include "rules/wizard.h"

#include "fixture.h"
#include "rules/rule_keys.h"
#include "platform/textfile.h"
#include "rules/rules_files.h"

namespace tessaly::rules::testing {
namespace {

class Wizard : public WithShippedRules {};

TEST_F(Wizard, QvxRulesLeaveNoRulesAndNoModel) {
  WriteFile(File("ENGINE.GO"), "old");
  WriteFile(File("STARTMOD.123"), "old");
  WriteFile(File("TREND.QVX"), "1\r\n");
  WriteFile(File("AUDITTRAIL.RWF"), "");
  auto out = Run(Context(), [&](RulesWizard& w) {
    EXPECT_EQ(w.Step(), 0);
    EXPECT_EQ(w.modeling_type, 2);
    EXPECT_EQ(w.WindowTitle(), "Model and Rules Wizard - Intro");
    EXPECT_FALSE(w.Buttons().back);
    EXPECT_FALSE(w.Buttons().finish);
    w.cmdNav_Click(3);
    EXPECT_EQ(w.Step(), 5);
    EXPECT_EQ(w.WindowTitle(), "Model and Rules Wizard - Finished!");
    EXPECT_FALSE(w.Buttons().next);
    EXPECT_TRUE(w.Buttons().finish);
    EXPECT_FALSE(w.finish.chkSaveConditions.enabled);
    w.cmdNav_Click(4);
  });
  EXPECT_TRUE(out.finished);
  EXPECT_EQ(out.objective1, 0);
  EXPECT_FALSE(Exists("ENGINE.GO"));
  EXPECT_FALSE(Exists("STARTMOD.123"));
  EXPECT_FALSE(Exists("NOTREND.QVX"));
  EXPECT_FALSE(Exists("TREND.QVX"));
  EXPECT_EQ(Read("ENGINE.USR"), Cnd());
  EXPECT_EQ(Shown(), std::vector<std::string>{
                         "AUDITTRAIL#2|you have reached mnu_forecast_Click\\wizard finished"});

  // Local time trends turned off leave the marker for the engine.
  (void)Run(Context(), [&](RulesWizard& w) {
    w.cboLocalTimeTrend.value = false;
    w.Next();
    w.Finish();
  });
  EXPECT_EQ(Read("NOTREND.QVX"), "1\r\n");
}

TEST_F(Wizard, UserRulesWalkEveryRulesPageAndArchive) {
  auto out = Run(Context(), [&](RulesWizard& w) {
    w.ClickModelingType(0);
    w.Next();
    EXPECT_EQ(w.Step(), 1);
    EXPECT_EQ(w.conditions, 2);
    EXPECT_EQ(w.cboEditConditions.text, "Present Rules");
    EXPECT_FALSE(w.optConditions[0].visible);
    EXPECT_TRUE(w.optConditions[6].visible);
    EXPECT_EQ(w.conditions_frame_title, "Automatic Modeling Rules");
    w.Next();
    EXPECT_EQ(w.Step(), 4);
    EXPECT_EQ(w.Current(), SubPage::AutoModelID);
    EXPECT_EQ(w.WindowTitle(), "Model and Rules Wizard - Rules - Noncausal");
    EXPECT_EQ(w.PageTitle(), "Enter Initial Model Identification parameters");
    EXPECT_TRUE(w.auto_model_id.chkAutoModelID1.visible);
    EXPECT_FALSE(w.auto_model_id.chkAutoModelID2.visible);
    w.auto_model_id.chkAutoModelID1.value = true;
    w.Next();
    EXPECT_EQ(w.Current(), SubPage::ModelEstimation1);
    EXPECT_EQ(w.TreeNode(), 0);
    EXPECT_EQ(w.estimation.txtModelEst3.text, "20");
    w.estimation.txtModelEst3.text = "150";
    w.estimation.txtModelEst6.text = "12";
    w.AnswerGroups(YesNo::Yes);
    EXPECT_EQ(w.Current(), SubPage::GroupPC);
    w.groups.txtGroup_PC[0].text = "30";
    w.groups.txtGroup_PC[1].text = "30";
    w.Next();
    EXPECT_EQ(w.Current(), SubPage::ModelEstimation1);
    w.AnswerLambdas(YesNo::Yes);
    w.lambdas.txtLambda_Est[1].text = "0.25";
    for (int i = 2; i < 10; ++i) w.lambdas.txtLambda_Est[i].text = "";
    w.Next();
    w.Next();
    EXPECT_EQ(w.Current(), SubPage::ModelForecasting);
    EXPECT_EQ(w.PageTitle(), "Enter Model Forecasting parameters");
    w.forecasting.chkModelForecasting4.value = true;
    w.Next();
    EXPECT_EQ(w.Step(), 5);
    EXPECT_TRUE(w.finish.chkSaveConditions.enabled);
    w.finish.chkSaveConditions.value = true;
    w.Finish();
  });
  EXPECT_EQ(out.objective1, 0);
  EXPECT_EQ(Rule("ENGINE.USR", key::kIntermittent), "   1");
  EXPECT_EQ(Rule("ENGINE.USR", key::kIterations), " 150");
  EXPECT_EQ(Rule("ENGINE.USR", key::kToBeIdentified), "  12");
  EXPECT_EQ(Rule("ENGINE.USR", key::kIntegers), "   1");
  EXPECT_EQ(Rule("ENGINE.USR", key::kValuesToCompute), "  12");
  EXPECT_EQ(Rule("ENGINE.USR", key::kNumberOfGroups), "   2");
  EXPECT_EQ(Rule("ENGINE.USR", key::kEvaluateInEst), "   2");
  EXPECT_EQ(Rule("ENGINE.USR", key::kLambdaList), "1.000.25");
  EXPECT_EQ(Read("GROUPLST.QVX"), " 2 \r\n30\r\n30\r\n");
  EXPECT_EQ(Read("ENGINE.GO"), Read("ENGINE.USR"));
  EXPECT_EQ(Read("Retail.U01"), Read("ENGINE.USR"));
  EXPECT_TRUE(WasShown("Save Rules", "The changed rules made to ENGINE.USR were saved to Retail.U01 "
                                     "for archival purposes."));
  EXPECT_FALSE(Exists("STARTMOD.123"));
}

TEST_F(Wizard, RestoredDefaultsReachTheRunUnchanged) {
  std::string changed = Cnd();
  changed.replace(changed.find("|  20"), 5, "| 199");
  WriteFile(File("ENGINE.USR"), changed);
  (void)Run(Context(), [&](RulesWizard& w) {
    w.ClickModelingType(0);
    w.Next();
    w.ClickConditions(6);
    EXPECT_EQ(w.txtConditions1, "We will copy default rules from ENGINE.CND to ENGINE.USR. ");
    w.Next();
    EXPECT_EQ(w.Step(), 4);
    EXPECT_EQ(w.conditions, 2);
    EXPECT_EQ(w.estimation.txtModelEst3.text, "20");
    while (w.Step() == 4) w.Next();
    w.Finish();
  });
  EXPECT_EQ(Read("ENGINE.GO"), Cnd());
  EXPECT_EQ(Read("ENGINE.USR"), Cnd());
}

TEST_F(Wizard, MissingPresentRulesStopTheStepOnce) {
  (void)Run(Context(), [&](RulesWizard& w) {
    w.ClickModelingType(0);
    w.Next();
    fs::remove(File("ENGINE.USR"));
    dialogs->shown.clear();
    w.Next();
    EXPECT_EQ(w.Step(), 1);
    EXPECT_EQ(Shown(), std::vector<std::string>{"File does not exist|No Present Rules file exists. "
                                                "Defaults conditions have been restored."});
    EXPECT_EQ(Read("ENGINE.USR"), Cnd());
    w.Next();
    EXPECT_EQ(w.Step(), 4);
    w.Cancel();
  });
}

TEST_F(Wizard, ImplicitModelNeedsAChoice) {
  auto out = Run(Context(), [&](RulesWizard& w) {
    w.ClickModelingType(3);
    EXPECT_EQ(w.optModels0_caption, "Use Implicit Model From List");
    w.Next();
    EXPECT_EQ(w.Step(), 2);
    EXPECT_EQ(w.cboModelsinMemory.items.size(), 15u);
    w.Next();
    EXPECT_EQ(w.Step(), 2);
    EXPECT_EQ(Shown(), std::vector<std::string>{
                           "For Your Information|You must select a model before continuing."});
    w.SelectPreset("AIRLINE");
    w.chkAllowModifications.value = true;
    w.Next();
    EXPECT_EQ(w.Step(), 5);
    w.SetSaveModels(true);
    EXPECT_TRUE(w.finish.chkFinalModel.value);
    EXPECT_FALSE(w.finish.chkInitialModel.enabled);
    w.Finish();
  });
  EXPECT_EQ(out.objective1, 15);
  EXPECT_EQ(out.objectives.copy1, 15);
  EXPECT_TRUE(out.save_model);
  EXPECT_EQ(Read("ALLOWMOD.QVX"), "Modification Allowed\r\n");
  EXPECT_EQ(Read("SAVEMOD.QVX"), " Save Model\r\n");
  EXPECT_FALSE(Exists("ENGINE.GO"));
  EXPECT_EQ(Read("ENGINE.USR"), Cnd());
}

TEST_F(Wizard, AnObjectiveInTheDatasetPreselectsItsPreset) {
  (void)Run(Context(7), [&](RulesWizard& w) {
    EXPECT_EQ(w.modeling_type, 1);
    EXPECT_EQ(w.cboModelsinMemory.text, "RANDOM WALK WITH CONSTANT");
    EXPECT_TRUE(w.finish.chkSaveConditions.enabled);
    w.Cancel();
  });
}

TEST_F(Wizard, IdentificationOnlyGoesStraightToTheEnd) {
  auto out = Run(Context(), [&](RulesWizard& w) {
    w.ClickModelingType(4);
    w.Next();
    EXPECT_EQ(w.Step(), 5);
    w.Back();
    EXPECT_EQ(w.Step(), 0);
    w.Next();
    w.Finish();
  });
  EXPECT_EQ(out.objective1, 97);
  EXPECT_EQ(out.objectives.copy1, 97);
}

TEST_F(Wizard, NewExplicitModelIsUsedInTheRun) {
  auto out = Run(Context(), [&](RulesWizard& w) {
    w.ClickModelingType(1);
    w.Next();
    EXPECT_EQ(w.Step(), 2);
    EXPECT_EQ(w.models, 2);
    EXPECT_FALSE(w.optModels[0].visible);
    EXPECT_EQ(w.cboEditModel.text, "New");
    w.Next();
    EXPECT_EQ(w.Step(), 3);
    EXPECT_EQ(w.Current(), SubPage::Startmod);
    EXPECT_EQ(w.PageTitle(), "Enter/Edit Noncausal Model for series SALES");
    EXPECT_EQ(w.WindowTitle(), "Model and Rules Wizard - Model Parameters - Noncausal");
    EXPECT_EQ(w.startmod.txtStartmod1.text, "10.0");
    w.startmod.txtStartmod5.text = "1";
    w.startmod.txtStartmod7.text = "1";
    w.startmod.txtStartmod8.text = "1";
    w.startmod.txtStartmod9.text = "0.6";
    w.startmod.txtStartmod3.text = "1";
    w.startmod.txtStartmod4.text = "12";
    w.Next();
    EXPECT_EQ(w.Step(), 1);
    EXPECT_TRUE(w.UseModel());
    EXPECT_EQ(w.conditions_frame_title, "Nonautomatic Modeling Rules");
    w.Next();
    EXPECT_EQ(w.Step(), 4);
    EXPECT_EQ(w.Current(), SubPage::ModelEstimation0);
    w.Next();
    EXPECT_EQ(w.Current(), SubPage::ModelEstimation1);
    w.Back();
    EXPECT_EQ(w.Current(), SubPage::ModelEstimation0);
    w.Next();
    w.Next();
    w.Next();
    EXPECT_EQ(w.Step(), 5);
    w.SetSaveModels(true);
    EXPECT_TRUE(w.finish.chkInitialModel.enabled);
    EXPECT_TRUE(w.finish.chkFinalModel.enabled);
    w.Finish();
    EXPECT_EQ(Shown().back(), "For Your Information| Since you have enabled the Save Models "
                              "Option, you must select at least one of the models to be saved.");
    EXPECT_FALSE(w.Closed());
    w.finish.chkInitialModel.value = true;
    w.Finish();
  });
  EXPECT_EQ(out.objective1, 99);
  EXPECT_FALSE(out.save_model);
  EXPECT_EQ(Read("STARTMOD.123"),
            "SALES                                   1\r\n"
            "     1\r\n"
            "        10.0\r\n"
            "        1.00         0.0\r\n"
            "     1     1     0\r\n"
            "    12\r\n"
            "     1\r\n"
            "     1\r\n"
            "         0.6\r\n");
  EXPECT_EQ(Rule("ENGINE.USR", key::kInitialModel), "STARTMOD.123");
  EXPECT_EQ(Read("ENGINE.GO"), Read("ENGINE.USR"));
  EXPECT_EQ(Read("SALES.I01"), Read("STARTMOD.123"));
  EXPECT_TRUE(WasShown("For Your Information", "The initial model was saved to SALES.I01."));
}

TEST_F(Wizard, CausalModelWalksEachInputOnce) {
  auto out = Run(Context(0, 3, 12, 40, 6), [&](RulesWizard& w) {
    w.ClickModelingType(1);
    w.Next();
    w.Next();
    EXPECT_EQ(w.PageTitle(), "Enter/Edit Noise Model for series SALES");
    EXPECT_EQ(w.SeriesInModel(), 3);
    EXPECT_TRUE(w.Buttons().next);
    w.Next();
    EXPECT_EQ(w.Current(), SubPage::Inputmod);
    EXPECT_EQ(w.PageTitle(), "Enter/Edit Model for Input Series PRICE1");
    w.inputmod.txtInputmod12.text = "2.5";
    w.Back();
    EXPECT_EQ(w.Current(), SubPage::Startmod);
    w.Next();
    EXPECT_EQ(w.CurrentInput(), 1);
    w.inputmod.txtInputmod12.text = "2.5";
    ASSERT_EQ(w.inputmod.copy_to.size(), 2u);
    EXPECT_EQ(w.inputmod.copy_to[1].first, "PRICE2");
    w.inputmod.copy_to[1].second = true;
    w.Next();
    EXPECT_EQ(w.PageTitle(), "Enter/Edit Model for Input Series PRICE2");
    EXPECT_EQ(w.inputmod.txtInputmod12.text, "2.5");
    w.inputmod.txtInputmod11.text = "-1";
    w.Next();
    EXPECT_EQ(w.CurrentInput(), 2);
    EXPECT_EQ(w.FocusField(), "txtInputmod11");
    w.inputmod.txtInputmod11.text = "2";
    w.Next();
    EXPECT_EQ(w.Step(), 1);
    w.Next();
    EXPECT_EQ(w.Step(), 4);
    EXPECT_EQ(w.Current(), SubPage::AutoModelID);
    EXPECT_EQ(w.WindowTitle(), "Model and Rules Wizard - Rule - Causal");
    EXPECT_FALSE(w.auto_model_id.chkAutoModelID2.enabled);
    EXPECT_TRUE(w.auto_model_id.chkAutoModelID3.value);
    EXPECT_FALSE(w.auto_model_id.txtAutoModelID1.visible);
    while (w.Step() == 4) w.Next();
    w.Finish();
  });
  EXPECT_EQ(out.objective1, 99);
  auto lines = platform::ReadAllLines(File("STARTMOD.123"));
  ASSERT_TRUE(lines);
  EXPECT_EQ((*lines)[0], "SALES                                   3");
  EXPECT_EQ((*lines)[5], "PRICE1");
  EXPECT_EQ((*lines)[10], "         2.5");
  EXPECT_EQ((*lines)[11], "PRICE2");
  EXPECT_EQ((*lines)[15], "     2");
  EXPECT_EQ((*lines)[16], "         2.5");
  EXPECT_EQ(lines->size(), 17u);
  EXPECT_EQ(Rule("ENGINE.USR", key::kDifference), "   0");
  EXPECT_EQ(Rule("ENGINE.USR", key::kMaximumLead), "   0");
  EXPECT_EQ(Rule("ENGINE.USR", key::kConstrain), "   1");
}

TEST_F(Wizard, SavedModelReviewedOnlyIsWrittenBackUnderItsName) {
  WriteFile(File("SALES.I01"),
            "SALES                                   1\r\n     1\r\n        10.0\r\n"
            "        1.00         0.0\r\n     0     0     0\r\n");
  auto out = Run(Context(), [&](RulesWizard& w) {
    w.ClickModelingType(1);
    w.Next();
    ASSERT_EQ(w.cboEditModel.items.size(), 2u);
    w.SelectEditModel(w.cboEditModel.items[1]);
    w.Next();
    EXPECT_EQ(w.Current(), SubPage::ReviewEditUse);
    EXPECT_TRUE(w.review.chkModeOptions2.value);
    w.review.chkModeOptions2.value = false;
    w.Next();
    EXPECT_EQ(Shown().back(), "For Your Information| You must select at least one of the options "
                              "or there will not be anything to be done.");
    w.review.chkModelOptions1.value = true;
    w.Next();
    EXPECT_EQ(w.Current(), SubPage::Startmod);
    EXPECT_EQ(w.startmod.txtStartmod1.text, "10");
    w.startmod.txtStartmod1.text = "42";
    w.Back();
    EXPECT_EQ(w.Current(), SubPage::ReviewEditUse);
    w.Next();
    w.startmod.txtStartmod1.text = "42";
    w.Next();
    EXPECT_EQ(w.Step(), 5);
    w.Finish();
  });
  EXPECT_EQ(out.objective1, 0);
  EXPECT_FALSE(Exists("STARTMOD.123"));
  EXPECT_FALSE(Exists("ENGINE.GO"));
  EXPECT_EQ(Read("SALES.I01").substr(43, 22), "     1\r\n        42.0\r\n");
  EXPECT_TRUE(WasShown("For Your Information", "The initial model was saved to SALES.I01."));
}

TEST_F(Wizard, CancelAtEachStepKeepsTheRulesAndDropsTheModel) {
  const std::vector<std::function<void(RulesWizard&)>> to_step = {
      [](RulesWizard&) {},
      [](RulesWizard& w) { w.ClickModelingType(0); w.Next(); },
      [](RulesWizard& w) { w.ClickModelingType(3); w.Next(); },
      [](RulesWizard& w) { w.ClickModelingType(1); w.Next(); w.Next(); },
      [](RulesWizard& w) { w.ClickModelingType(0); w.Next(); w.Next(); w.Next(); },
      [](RulesWizard& w) { w.Next(); },
  };
  for (size_t step = 0; step < to_step.size(); ++step) {
    WriteFile(File("ENGINE.GO"), "previous run");
    WriteFile(File("STARTMOD.123"), "model");
    WriteFile(File("NOTREND.QVX"), "1\r\n");
    std::string usr;
    auto out = Run(Context(), [&](RulesWizard& w) {
      to_step[step](w);
      EXPECT_EQ(w.Step(), static_cast<int16_t>(step));
      usr = Read("ENGINE.USR");
      dialogs->answers.push_back(platform::mb::No);
      w.cmdNav_Click(1);
      EXPECT_FALSE(w.Closed());
      dialogs->answers.push_back(platform::mb::Yes);
      w.cmdNav_Click(1);
      EXPECT_TRUE(w.Closed());
    });
    EXPECT_TRUE(out.cancelled) << step;
    EXPECT_FALSE(out.finished);
    EXPECT_TRUE(session.wizard_cancelled);
    EXPECT_TRUE(session.rules.Empty());
    EXPECT_EQ(Read("ENGINE.USR"), usr);
    EXPECT_EQ(Read("ENGINE.GO"), "previous run");
    EXPECT_FALSE(Exists("STARTMOD.123")) << step;
    EXPECT_FALSE(Exists("NOTREND.QVX")) << step;
    EXPECT_EQ(dialogs->shown.back().title, "Cancellation Notice");
    EXPECT_EQ(dialogs->shown.back().text,
              "Are you sure that you want to cancel?  You will lose any changes that you have made.");
  }
  // A marker that was there at start-up belongs to the user: Cancel leaves it.
  WizardContext c = Context();
  c.notrend_at_startup = true;
  WriteFile(File("NOTREND.QVX"), "1\r\n");
  (void)Run(c, [&](RulesWizard& w) { w.Cancel(); });
  EXPECT_TRUE(Exists("NOTREND.QVX"));
}

TEST_F(Wizard, ZeroForecastsDisableForecasting) {
  (void)Run(Context(0, 1, 12, 40, 0), [&](RulesWizard& w) {
    w.ClickModelingType(0);
    w.Next();
    w.Next();
    EXPECT_TRUE(WasShown("Option Information",
                         "Since the number of forecasts equals zero(0), \"Enable Model "
                         "Forecasting\" And \"Display Model Forecasting\"  will be disabled."));
    EXPECT_FALSE(w.forecasting.chkModelForecasting1.value);
    EXPECT_FALSE(w.forecasting.chkModelForecasting1.enabled);
    while (w.Step() == 4) w.Next();
    w.Finish();
  });
  EXPECT_EQ(Rule("ENGINE.USR", key::kModelForecasting), "   0");
  EXPECT_EQ(Rule("ENGINE.USR", key::kValuesToCompute), "   0");
  EXPECT_FALSE(session.forecasting_enabled);
}

TEST_F(Wizard, EstimationOffSkipsTheTreeAndKeepsItsValues) {
  (void)Run(Context(), [&](RulesWizard& w) {
    w.ClickModelingType(0);
    w.Next();
    w.Next();
    w.Next();
    w.Back();
    EXPECT_EQ(w.Current(), SubPage::ModelEstimation0);
    w.SetEstimationEnabled(false);
    EXPECT_FALSE(w.estimation.txtModelEst1.enabled);
    EXPECT_EQ(w.estimation.txtModelEst1.text, "");
    w.Next();
    EXPECT_EQ(w.Current(), SubPage::ModelForecasting);
    w.Back();
    EXPECT_EQ(w.Current(), SubPage::ModelEstimation0);
    w.SetEstimationEnabled(true);
    EXPECT_EQ(w.estimation.txtModelEst1.text, "00.1");
    EXPECT_EQ(w.estimation.txtModelEst12.text, "99.0");
    w.SetEstimationEnabled(false);
    w.Next();
    w.Next();
    w.Finish();
  });
  EXPECT_EQ(Rule("ENGINE.USR", key::kModelEstimation), "   0");
  EXPECT_EQ(Rule("ENGINE.USR", key::kIterations), "  20");
}

TEST_F(Wizard, PoolingAndAggregationShapes) {
  WizardContext pool = Context();
  pool.pooling_run = true;
  (void)Run(pool, [&](RulesWizard& w) {
    EXPECT_TRUE(w.estimation.chkModelEst1.value);
    EXPECT_FALSE(w.estimation.chkModelEst1.enabled);
    EXPECT_FALSE(w.estimation.chkModelEst2.enabled);
    EXPECT_FALSE(w.optConditions[6].enabled);
    EXPECT_FALSE(w.chkAllowModifications.enabled);
    EXPECT_EQ(w.groups.answer, YesNo::No);
    EXPECT_EQ(w.lambdas.answer, YesNo::Yes);
    w.Cancel();
  });
  WizardContext agg = Context();
  agg.aggregation_run = true;
  (void)Run(agg, [&](RulesWizard& w) {
    EXPECT_FALSE(w.finish.chkSaveConditions.enabled);
    EXPECT_FALSE(w.finish.chkSaveModels.enabled);
    EXPECT_FALSE(w.finish.chkFinalModel.enabled);
    EXPECT_TRUE(w.optConditions[6].enabled);
    w.Next();
    EXPECT_FALSE(w.finish.chkSaveModels.enabled);
    w.Cancel();
  });
}

TEST_F(Wizard, FieldsFormatOnLeavingAndShowTheirNotes) {
  (void)Run(Context(), [&](RulesWizard& w) {
    w.estimation.txtModelEst1.text = "5";
    w.FieldLostFocus("txtModelEst1");
    EXPECT_EQ(w.estimation.txtModelEst1.text, "05.0");
    w.lambdas.txtLambda_Est[2].text = "-.5";
    w.FieldLostFocus("txtLambda_Est(2)");
    EXPECT_EQ(w.lambdas.txtLambda_Est[2].text, "-0.5");
    w.lambdas.txtLambda_Est[3].text = "";
    w.FieldLostFocus("txtLambda_Est(3)");
    EXPECT_EQ(w.lambdas.txtLambda_Est[3].text, "");
    w.estimation.txtModelEst2.enabled = false;
    w.FieldGotFocus("txtModelEst2");
    EXPECT_EQ(w.estimation.txtModelEst2.text, "");
    w.FieldGotFocus("txtModelEst6");
    EXPECT_EQ(w.FocusField(), "txtModelEst6");
    w.estimation.chkModelEst13.value = false;
    w.FieldLostFocus("txtModelEst10");
    EXPECT_EQ(RulesWizard::FieldKeyPress(13), 7);
    EXPECT_EQ(RulesWizard::FieldKeyPress(65), 65);
    w.Cancel();
  });
  EXPECT_TRUE(WasShown("For Your Information",
                       "You should be aware that using a large number input can significantly "
                       "affect the runtime of the program.  See Help for a more detailed explanation.."));
  EXPECT_TRUE(WasShown("Option Input Error",
                       "Since you have disabled the 'Enable The Automatic Fixup For Variance "
                       "Stability' option, the 'Confidence Level For Variance Stability Test' option "
                       "is not available."));
}

// Monte Carlo simulation is hidden at start-up; the state machine still carries its path.
TEST_F(Wizard, SimulationPathOfTheHiddenType) {
  auto out = Run(Context(), [&](RulesWizard& w) {
    EXPECT_FALSE(w.optModelingType[5].visible);
    EXPECT_FALSE(w.optModelingType[5].enabled);
    w.ClickModelingType(5);
    w.Next();
    EXPECT_EQ(w.Step(), 2);
    w.Next();
    w.Next();
    EXPECT_EQ(w.Step(), 4);
    EXPECT_EQ(w.Current(), SubPage::Simulation);
    EXPECT_EQ(w.PageTitle(), "Enter Simulation parameters, if so desired");
    EXPECT_TRUE(w.simulation.chkSimulation1.value);
    EXPECT_FALSE(w.simulation.chkSimulation1.enabled);
    w.simulation.txtSimulation1.text = "2.5";
    w.simulation.txtSimulation2.text = "42";
    w.Next();
    EXPECT_EQ(w.Step(), 5);
    w.Back();
    EXPECT_EQ(w.Current(), SubPage::Simulation);
    w.Back();
    EXPECT_EQ(w.Step(), 3);
    EXPECT_EQ(w.Current(), SubPage::Startmod);
    w.Next();
    EXPECT_EQ(w.Current(), SubPage::Simulation);
    w.simulation.txtSimulation1.text = "2.5";
    w.simulation.txtSimulation2.text = "42";
    w.Next();
    w.Finish();
  });
  EXPECT_EQ(out.objective1, 99);
  EXPECT_EQ(Rule("ENGINE.USR", key::kSimulationEnabled), "   1");
  EXPECT_EQ(Rule("ENGINE.USR", key::kNoiseSeries), " 2.5");
  EXPECT_EQ(Rule("ENGINE.USR", key::kSeedValue), "  42");
}

TEST_F(Wizard, LeftOpenCountsAsCancelled) {
  WriteFile(File("STARTMOD.123"), "model");
  auto out = Run(Context(), [](RulesWizard& w) { w.ClickModelingType(0); });
  EXPECT_TRUE(out.cancelled);
  EXPECT_FALSE(Exists("STARTMOD.123"));
  EXPECT_TRUE(dialogs->shown.empty());
}

}  // namespace
}  // namespace tessaly::rules::testing
