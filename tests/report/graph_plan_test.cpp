#include "report/graph_plan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <regex>

namespace tessaly::report {
namespace {

GraphInput Short(int obs, int forecasts, int seasonality = 12) {
  GraphInput in;
  in.series_name = "SALES";
  in.begin_year = 2001;
  in.begin_period = 11;
  in.seasonality = seasonality;
  in.date_text = "03/04/2026";
  for (int i = 0; i < obs; ++i) {
    in.actuals.push_back(100 + i);
    in.fitted.push_back(i < 2 ? kMissingValue : 99 + i);
    in.residuals.push_back(i < 2 ? kMissingValue : 1);
    in.cleansed.push_back(100 + i);
  }
  for (int i = 0; i < forecasts; ++i) {
    in.forecasts.push_back(200 + i);
    in.lower.push_back(190 + i);
    in.upper.push_back(210 + i);
  }
  return in;
}

std::vector<std::string> Legends(const GraphPlan& plan) {
  std::vector<std::string> out;
  for (const auto& line : plan.lines) out.push_back(line.legend);
  return out;
}

TEST(GraphPlan, LabelStepFollowsThePointCount) {
  // 40, 56 and 168 points give steps of 2.5, 3.5 and 10.5: rounded to even.
  const std::pair<int, int> cases[] = {{1, 1},  {10, 1}, {11, 2},   {20, 2},  {21, 3}, {30, 3},
                                       {31, 2}, {32, 2}, {160, 10}, {40, 2},  {56, 4}, {168, 10}};
  for (const auto& [points, step] : cases) EXPECT_EQ(LabelStep(points), step) << points;
}

TEST(GraphPlan, PeriodLabelsWrapAtTheSeasonality) {
  EXPECT_EQ(PeriodLabels(2001, 11, 12, 4),
            (std::vector<std::string>{"2001/11", "2001/12", "2002/1", "2002/2"}));
  EXPECT_EQ(PeriodLabels(1990, 0, 1, 3), (std::vector<std::string>{"1990", "1991", "1992"}));
  EXPECT_EQ(PeriodLabels(2020, 4, 4, 2), (std::vector<std::string>{"2020/4", "2021/1"}));
  EXPECT_TRUE(PeriodLabels(2020, 1, 12, 0).empty());
}

TEST(GraphPlan, PointsAndLabelStepPerGraph) {
  const GraphInput in = Short(21, 11);
  auto act = PlanGraph(in, GraphKind::Act, false);
  ASSERT_TRUE(act);
  EXPECT_EQ(act->labels.size(), 21u);
  EXPECT_EQ(act->label_step, 3);
  EXPECT_EQ(act->file_name, "SALESact.jpg");
  EXPECT_EQ(act->x_title, "Periods From 2001/11 to 2003/7(Seasonality=12)");
  EXPECT_EQ(act->forecast_origin, -1);

  auto both = PlanGraph(in, GraphKind::ActFitFore, false);
  ASSERT_TRUE(both);
  EXPECT_EQ(both->labels.size(), 32u);
  EXPECT_EQ(both->label_step, 2);
  EXPECT_EQ(both->forecast_origin, 21);
  // Forecast columns start after the history; actuals stop there.
  EXPECT_FALSE(both->lines[0].values[21].has_value());
  EXPECT_EQ(*both->lines[2].values[21], 200);
  EXPECT_FALSE(both->lines[2].values[20].has_value());
  // The fit starts later: the engine's missing values are left out.
  EXPECT_FALSE(both->lines[1].values[1].has_value());
  EXPECT_EQ(*both->lines[1].values[2], 101);

  // Forecasts alone: labels start after the last observation.
  auto fore = PlanGraph(in, GraphKind::Fore, false);
  ASSERT_TRUE(fore);
  EXPECT_EQ(fore->labels.size(), 11u);
  EXPECT_EQ(fore->labels.front(), "2003/8");
  EXPECT_EQ(fore->label_step, 2);
  EXPECT_EQ(fore->x_title, "Periods From 2003/8 to 2004/6(Seasonality=12)");
}

TEST(GraphPlan, YearlyDataIsLabelledByYear) {
  auto plan = PlanGraph(Short(12, 3, 1), GraphKind::ActFore, false);
  ASSERT_TRUE(plan);
  EXPECT_EQ(plan->labels.front(), "2001");
  EXPECT_EQ(plan->labels.back(), "2015");
  EXPECT_EQ(plan->x_title, "Periods From 2001 to 2015(Seasonality=1)");
}

TEST(GraphPlan, TitlesAndLegendsWithLimits) {
  const GraphInput in = Short(30, 6);
  struct Case {
    GraphKind kind;
    std::string title;
    std::vector<std::string> legends;
  };
  const std::vector<Case> cases = {
      {GraphKind::Act, "SALES: Actual Data (03/04/2026)", {"Actual Data"}},
      {GraphKind::ActCleanse, "SALES: Actual and Cleansed Data (03/04/2026)",
       {"Actual Data", "Cleansed    "}},
      {GraphKind::ActFit, "SALES: Actual & Fit Data (03/04/2026)", {"Actual Data", "Fit    "}},
      {GraphKind::ActFore, "SALES: Actual and Forecast Data  (03/04/2026)",
       {"Actuals ", "Forecasts", "Lower ", "Upper "}},
      {GraphKind::ActFitFore, "SALES: Actual, Fitted, and Forecast Data (03/04/2026)",
       {"Actual", "Fitted", "Forecast", "Lower", "Upper"}},
      {GraphKind::ActRes, "SALES: Actual and Residual Data (03/04/2026)",
       {"Actual Data", "Residuals   "}},
      {GraphKind::FitFore, "SALES: Fitted and Forecast Data (03/04/2026)",
       {"Fitted", "Forecasts", "Lower", "Upper"}},
      {GraphKind::Fore, "SALES: Forecast Data (03/04/2026)", {"Forecasts", "Lower ", "Upper "}},
      {GraphKind::Res, "SALES: Residual Data (03/04/2026)", {"Residuals"}},
  };
  for (const auto& c : cases) {
    auto plan = PlanGraph(in, c.kind, false);
    ASSERT_TRUE(plan) << Info(c.kind).file_suffix;
    EXPECT_EQ(plan->title, c.title);
    EXPECT_EQ(Legends(*plan), c.legends) << c.title;
  }
  EXPECT_TRUE(std::regex_match(TodayText(), std::regex(R"(\d\d/\d\d/\d{4})")));
}

TEST(GraphPlan, LimitsSwitchDropsLowerAndUpper) {
  const GraphInput in = Short(30, 6);
  auto fore = PlanGraph(in, GraphKind::Fore, true);
  ASSERT_TRUE(fore);
  EXPECT_EQ(Legends(*fore), std::vector<std::string>{"Forecasts"});
  auto act_fore = PlanGraph(in, GraphKind::ActFore, true);
  EXPECT_EQ(act_fore->title, "SALES: Actual and Forecasts Data  (03/04/2026)");
  EXPECT_EQ(Legends(*act_fore).size(), 2u);
  auto all = PlanGraph(in, GraphKind::ActFitFore, true);
  EXPECT_EQ(all->title, "SALES: Actual,Fitted, and Forecast Data (03/04/2026)");
  EXPECT_EQ(Legends(*all).size(), 3u);
  EXPECT_EQ(Legends(*PlanGraph(in, GraphKind::FitFore, true)).size(), 2u);
  // Graphs without limits are the same either way.
  EXPECT_EQ(PlanGraph(in, GraphKind::ActFit, true)->title,
            PlanGraph(in, GraphKind::ActFit, false)->title);
}

TEST(GraphPlan, NothingToDrawGivesNoPlan) {
  EXPECT_FALSE(PlanGraph(Short(0, 0), GraphKind::Act, false));
  // No forecasts (an identification-only run): no forecast graphs, the rest stand.
  const GraphInput history = Short(24, 0);
  EXPECT_FALSE(PlanGraph(history, GraphKind::Fore, false));
  EXPECT_FALSE(PlanGraph(history, GraphKind::ActFore, false));
  EXPECT_TRUE(PlanGraph(history, GraphKind::ActFit, false));
  // A line with no drawable value at all.
  GraphInput broken = Short(24, 6);
  broken.residuals.assign(24, kMissingValue);
  broken.cleansed.assign(24, std::nan(""));
  EXPECT_FALSE(PlanGraph(broken, GraphKind::Res, false));
  EXPECT_FALSE(PlanGraph(broken, GraphKind::ActRes, false));
  EXPECT_FALSE(PlanGraph(broken, GraphKind::ActCleanse, false));
  EXPECT_TRUE(PlanGraph(broken, GraphKind::Act, false));
  // Arrays shorter than the observations leave the rest empty, never read past.
  GraphInput short_fit = Short(24, 6);
  short_fit.fitted.resize(5);
  auto plan = PlanGraph(short_fit, GraphKind::ActFit, false);
  ASSERT_TRUE(plan);
  EXPECT_FALSE(plan->lines[1].values[10].has_value());
}

TEST(GraphPlan, LeadingObservationsLeftOutAreNotDrawnAsFit) {
  GraphInput in = Short(24, 6);
  in.leading_left_out = 6;
  auto plan = PlanGraph(in, GraphKind::ActFit, false);
  ASSERT_TRUE(plan);
  EXPECT_FALSE(plan->lines[1].values[5].has_value());
  EXPECT_TRUE(plan->lines[1].values[6].has_value());
  EXPECT_TRUE(plan->lines[0].values[0].has_value());
}

TEST(GraphPlan, RangeCoversEveryDrawnValueAndZeroForResiduals) {
  auto plan = PlanGraph(Short(24, 6), GraphKind::ActFitFore, false);
  EXPECT_EQ(plan->y_min, 100);
  EXPECT_EQ(plan->y_max, 215);
  auto res = PlanGraph(Short(24, 6), GraphKind::Res, false);
  EXPECT_EQ(res->y_min, 0);
  EXPECT_EQ(res->y_max, 1);
}

TEST(GraphPlan, SelectedGraphsPreference) {
  GraphPreferences prefs;
  prefs.all_graphs = false;
  prefs.sel_graphs = true;
  prefs.act = true;
  for (const auto& g : AllGraphs()) EXPECT_EQ(WantsGraph(prefs, g.kind), g.kind == GraphKind::Act);
  prefs.res = prefs.fit_fore = true;
  EXPECT_TRUE(WantsGraph(prefs, GraphKind::Res));
  EXPECT_TRUE(WantsGraph(prefs, GraphKind::FitFore));
  EXPECT_FALSE(WantsGraph(prefs, GraphKind::Fore));
  // From the process-wide values, where true is stored as -1.
  struct Stored {
    int16_t AllGraphs = 0, NOGRAPHS = 0, SelGraphs = -1, Act = 0, ActClen = -1, ActFit = 0,
            ActFore = 0, ActFitFore = 0, ActRes = 0, Fore = 0, FitFore = 0, Res = 0, NoLimits = -1;
  } stored;
  const GraphPreferences from = GraphPreferencesFrom(stored);
  EXPECT_TRUE(from.sel_graphs && from.act_cleanse && from.no_limits);
  EXPECT_FALSE(from.all_graphs || from.act || from.no_graphs);
  EXPECT_TRUE(WantsGraph(from, GraphKind::ActCleanse));
  EXPECT_FALSE(WantsGraph(from, GraphKind::Act));
  GraphPreferences none;
  none.no_graphs = true;
  none.all_graphs = false;
  for (const auto& g : AllGraphs()) EXPECT_FALSE(WantsGraph(none, g.kind));
}

}  // namespace
}  // namespace tessaly::report
