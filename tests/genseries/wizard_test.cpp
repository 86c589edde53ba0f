// The Add Series wizard's logic: its defaults, steps, checks with their messages, lists, and
// the variables it writes.
#include <gtest/gtest.h>

#include "genseries/holidays.h"
#include "genseries/wizard.h"
#include "genseries/wizard_texts.h"
#include "platform/dialogs.h"

namespace tessaly::genseries {
namespace {

class Wizard : public ::testing::Test {
 protected:
  void SetUp() override { platform::SetDialogHost(host); }
  void TearDown() override { platform::SetDialogHost(std::make_shared<platform::StderrDialogHost>()); }
  static WizardDataset Monthly() {
    WizardDataset d;
    d.series = 3, d.seasonality = 12, d.begin_year = 1995, d.begin_period = 4, d.observations = 60;
    d.future = 12, d.forecasts = 12, d.objectives = {2, 1, 0};
    auto [y, p] = EndDate(1995, 4, 72, 12);
    d.last_year = y, d.last_period = p;
    return d;
  }
  std::string Last() const { return host->shown.empty() ? "" : host->shown.back().text; }
  std::shared_ptr<platform::RecordingDialogHost> host = std::make_shared<platform::RecordingDialogHost>();
};

TEST_F(Wizard, WeeklyDataStartOnTheSundayOfTheFirstWeek) {
  using D = platform::dates::Date;
  EXPECT_EQ(WeeklyFirstDate(2003, 1), (D{2002, 12, 29}));  // January 1 a Wednesday
  EXPECT_EQ(WeeklyFirstDate(2002, 1), (D{2001, 12, 30}));  // a Tuesday
  EXPECT_EQ(WeeklyFirstDate(2001, 1), (D{2000, 12, 31}));  // a Monday
  EXPECT_EQ(WeeklyFirstDate(2006, 1), (D{2006, 1, 1}));    // a Sunday
  EXPECT_EQ(WeeklyFirstDate(2004, 1), (D{2004, 1, 4}));    // a Thursday: the Sunday after
  EXPECT_EQ(WeeklyFirstDate(2003, 10), (D{2003, 3, 2}));
  WizardDataset w = Monthly();
  w.seasonality = 52, w.begin_year = 2003, w.begin_period = 1;
  AddSeriesWizard wiz(w);
  EXPECT_EQ(wiz.holiday_date, "12/29/2002");
  EXPECT_EQ(wiz.user_date, "12/29/2002");
  EXPECT_FALSE(wiz.HolidayAllowed());
  EXPECT_EQ(EndDate(1995, 4, 72, 12), (std::pair<int, int>{2001, 3}));
  EXPECT_EQ(EndDate(1990, 0, 10, 1), (std::pair<int, int>{1999, 0}));
}

TEST_F(Wizard, StepsFollowTheTicksAndEachCheckKeepsTheWizardWhereItIs) {
  AddSeriesWizard wiz(Monthly());
  EXPECT_TRUE(wiz.CheckSeasonality());
  EXPECT_EQ(wiz.lstHolidays1, HolidaysOffered(12));
  EXPECT_EQ(wiz.lstHolidays1.size(), 11u);
  EXPECT_TRUE(HolidaysOffered(52).empty());
  EXPECT_FALSE(wiz.Next());
  EXPECT_EQ(host->shown.back().title, "Process Error");
  EXPECT_EQ(Last(), texts::kSelectASeries);

  wiz.chkAddLevel = wiz.chkAddTrend = wiz.chkAddUserDef = true;
  ASSERT_TRUE(wiz.Next());
  EXPECT_EQ(wiz.Step(), WizardStep::Level);
  EXPECT_EQ(wiz.level, (InterventionFields{"1995", "4", "2001", "3"}));

  struct Check {
    InterventionFields fields;
    std::string message;
  };
  const Check checks[] = {
      {{"1996", "", "1997", "1"}, texts::kCompleteEachSection},
      {{"96", "1", "1997", "1"}, texts::YearShort("96")},
      {{"1994", "1", "1997", "1"}, std::string(texts::kStartYearLow) + "1995"},
      {{"2002", "1", "1997", "1"}, std::string(texts::kStartYearHigh) + "2001"},
      {{"1996", "13", "1997", "1"}, std::string(texts::kStartPeriodHigh) + "12"},
      {{"1995", "3", "1997", "1"}, std::string(texts::kStartPeriodLow) + "4"},
      {{"1996", "1", "1993", "1"}, std::string(texts::kEndYearLow) + "1995"},
      {{"1996", "1", "2003", "1"}, std::string(texts::kEndYearHigh) + "2001"},
      {{"1996", "1", "1997", "14"}, std::string(texts::kEndPeriodHigh) + "12"},
      {{"1996", "1", "2001", "4"}, std::string(texts::kEndPeriodHighLast) + "3"},
  };
  for (const Check& c : checks) {
    wiz.level = c.fields;
    EXPECT_FALSE(wiz.Next());
    EXPECT_EQ(Last(), c.message);
    EXPECT_EQ(wiz.Step(), WizardStep::Level);
  }
  wiz.level = {"1996", "1", "2001", "3"};
  ASSERT_TRUE(wiz.Next());
  EXPECT_EQ(wiz.Step(), WizardStep::Trend);
  ASSERT_TRUE(wiz.Next());
  EXPECT_EQ(wiz.Step(), WizardStep::UserDef);
  EXPECT_EQ(wiz.Instruction(), texts::kUserInstruction);

  EXPECT_FALSE(wiz.Next());
  EXPECT_EQ(Last(), texts::kNeedName);
  wiz.user_name = "ABCDEFGHIJKLMNOPQRSTU";
  EXPECT_FALSE(wiz.Next());
  EXPECT_EQ(Last(), texts::kNameTooLong);
  wiz.user_name = "ABCDEFGHIJKLMNOPQRST";
  EXPECT_FALSE(wiz.Next());
  EXPECT_EQ(Last(), texts::kNeedType);
  wiz.user_type = 2;
  EXPECT_FALSE(wiz.Next());
  EXPECT_EQ(Last(), texts::kNeedMethod);
  EXPECT_EQ(MethodsOffered(wiz.Dataset()),
            (std::vector<std::string>{"Manual", "Month", "4-4-5", "Business Days", "MonthlyEffect", "QuarterlyEffect"}));
  wiz.ChooseMethod("MonthlyEffect");
  EXPECT_TRUE(wiz.NameAndTypeLocked());
  EXPECT_EQ(wiz.user_name, "MONTHLYEFFECT");
  EXPECT_EQ(wiz.user_type, 1);
  ASSERT_TRUE(wiz.Next());
  EXPECT_TRUE(wiz.AtFinish());
  wiz.Back();
  EXPECT_EQ(wiz.Step(), WizardStep::UserDef);

  GenerationVariables v = wiz.Variables();
  EXPECT_EQ((std::vector<std::string>{v.FirstObjective, v.NumberOfNewSeries, v.BPSeaonality, v.MajorPeriod,
                                      v.MinorPeriod, v.LevelStartYear, v.PulseStartYear, v.TrendEndPeriod,
                                      v.UserDefMethod, v.DateOfFirstObservation, v.NumberofHolidaysSelected}),
            (std::vector<std::string>{"2", "13", "12", "1995", "4", "1996", "", "3", "MonthlyEffect", kNoDate, "0"}));
}

TEST_F(Wizard, TheLimitOfNewSeriesAndTheOtherSeasonalities) {
  WizardDataset big = Monthly();
  big.series = 140;
  AddSeriesWizard wiz(big);
  wiz.chkAddHoliday = true;
  ASSERT_TRUE(wiz.Next());
  EXPECT_EQ(wiz.Step(), WizardStep::Holidays);
  EXPECT_FALSE(wiz.Next());
  EXPECT_EQ(Last(), texts::kCompleteEachSection);
  wiz.SelectAllHolidays();
  EXPECT_TRUE(wiz.lstHolidays1.empty());
  EXPECT_FALSE(wiz.Next());
  EXPECT_EQ(Last(), texts::TooManySeries(11, 1));
  wiz.RemoveHolidays({"M_CHRISTMAS"});
  EXPECT_EQ(wiz.lstHolidays1, std::vector<std::string>{"M_CHRISTMAS"});
  EXPECT_TRUE(wiz.Next());
  GenerationVariables v = wiz.Variables();
  EXPECT_EQ(v.NumberofHolidaysSelected, "10");
  EXPECT_EQ(v.SelectedHolidays.at(1), "M_GOODFRIDAY");
  EXPECT_EQ(v.Dateof1stHolidayObservation, kNoDate);  // monthly data need no date

  WizardDataset daily = Monthly();
  daily.seasonality = 7, daily.observations = 300, daily.forecasts = 30;
  AddSeriesWizard d(daily);
  EXPECT_EQ(d.lstHolidays1, AllHolidayKeys());
  EXPECT_EQ(d.lstHolidays1.size(), 18u);
  EXPECT_EQ(MethodsOffered(daily).back(), "4-4-5");  // 330 days: no MonthlyEffect
  d.chkAddUserDef = true;
  ASSERT_TRUE(d.Next());
  d.user_name = "DAY", d.user_type = 3;
  d.ChooseMethod("Day");
  EXPECT_FALSE(d.Next());
  EXPECT_EQ(Last(), texts::kNeedDate);
  EXPECT_EQ(host->shown.back().title, "For Your Information");
  d.user_date = "03/01/2010";
  EXPECT_TRUE(d.Next());

  WizardDataset odd = Monthly();
  odd.seasonality = 24;
  EXPECT_FALSE(AddSeriesWizard(odd).CheckSeasonality());
  EXPECT_EQ(Last(), texts::SeasonalityRefusal(24));
  EXPECT_EQ(host->shown.back().title, "FYI");
  WizardDataset annual = Monthly();
  annual.seasonality = 1;
  AddSeriesWizard a(annual);
  EXPECT_FALSE(a.SPAllowed() || a.UserDefAllowed() || a.HolidayAllowed());
  EXPECT_EQ(a.PeriodLabels(false).front(), "1995/0");
  EXPECT_EQ(AddSeriesWizard(Monthly()).PeriodLabels(true).front(), "2000/4");
  EXPECT_FALSE(CheckManualData({"", " "}));
  EXPECT_EQ(Last(), texts::kEnterYourData);
  EXPECT_TRUE(CheckManualData({"", "0"}));
}

}  // namespace
}  // namespace tessaly::genseries
