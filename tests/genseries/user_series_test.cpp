// The user step's methods on realistic datasets: calendar dummies, 4-4-5, business days,
// the effect sets and typed-in values.
#include <gtest/gtest.h>

#include "genseries/gen_fixture.h"
#include "genseries/holidays.h"

namespace tessaly::genseries::test {
namespace {

class UserSeries : public GenTest {
 protected:
  AscRead Run(const AscLayout& layout, const std::string& method, const std::string& name, int type,
              const std::string& date = kNoDate, GenerationOutcome expected = GenerationOutcome::Adjusted,
              GenerationVariables* extra = nullptr, const ManualData& manual = {}) {
    fs::path asc = Asc("DATA.ASC", layout);
    GenerationVariables v = extra ? *extra : VarsFor(layout);
    v.UserDefMethod = method;
    v.UserDefName = name;
    v.UserDefType = std::to_string(type);
    v.DateOfFirstObservation = date;
    GenerationResult r = Generate(v, asc, manual);
    EXPECT_EQ(r.outcome, expected) << (r.log_lines.empty() ? "" : r.log_lines.back());
    return ReadAsc(asc);
  }
  static std::vector<double> All(AscRead& r, const std::string& name) {
    std::vector<double> v = r.obs[name];
    v.insert(v.end(), r.fut[name].begin(), r.fut[name].end());
    return v;
  }
};

TEST_F(UserSeries, CalendarDummiesAnd445) {
  AscLayout monthly{{"SHIPMENTS"}, {0}, 12, 2010, 1, 36, 0, 0, 12};
  GenerationVariables m = VarsFor(monthly);
  m.SelectedMonth = "7";
  AscRead r = Run(monthly, "Month", "JULY", 2, kNoDate, GenerationOutcome::Adjusted, &m);
  EXPECT_EQ(r.names, (std::vector<std::string>{"G_JULY", "SHIPMENTS"}));
  EXPECT_EQ(r.types, (std::vector<int>{2, 0}));
  std::vector<double> july = All(r, "G_JULY");
  for (int t = 0; t < 48; ++t) EXPECT_EQ(july[t], t % 12 == 6 ? 1.0 : 0.0) << t;

  r = Run(monthly, "4-4-5", "4-4-5", 1);
  std::vector<double> f = All(r, "G_4-4-5");
  for (int t = 0; t < 48; ++t) EXPECT_EQ(f[t], t % 3 == 2 ? 5.0 : 4.0) << t;

  AscLayout quarterly{{"GDP"}, {0}, 4, 1990, 3, 20, 0, 0, 8};
  GenerationVariables q = VarsFor(quarterly);
  q.SelectedQuarter = "2";
  r = Run(quarterly, "Quarter", "Q2", 1, kNoDate, GenerationOutcome::Adjusted, &q);
  std::vector<double> q2 = All(r, "G_Q2");
  for (int t = 0; t < 28; ++t) EXPECT_EQ(q2[t], (t + 2) % 4 == 1 ? 1.0 : 0.0) << t;

  // "Month" on quarterly data adds nothing; the file is written as it was read.
  r = Run(quarterly, "Month", "M", 1);
  EXPECT_EQ(r.names, (std::vector<std::string>{"GDP"}));
}

TEST_F(UserSeries, DayAndDayOfMonthOnFiveDayDataCountSaturdayAndSundayForTheFriday) {
  // Weekdays from Monday March 2, 2015.
  AscLayout five{{"CALLS"}, {0}, 5, 2015, 1, 260, 0, 0, 20};
  GenerationVariables v = VarsFor(five);
  v.SelectedDay = "7";  // Saturday
  AscRead r = Run(five, "Day", "SAT", 3, "03/02/2015", GenerationOutcome::Adjusted, &v);
  std::vector<double> sat = All(r, "G_SAT");
  Date d{2015, 3, 2};
  for (int t = 0; t < 280; ++t, d = AddDays(d, platform::dates::Weekday(d) == 6 ? 3 : 1))
    EXPECT_EQ(sat[t], platform::dates::Weekday(d) == 6 ? 1.0 : 0.0) << t;

  r = Run(five, "1st of each Month", "FIRST", 3, "03/02/2015");
  std::vector<double> first = All(r, "G_FIRST");
  d = {2015, 3, 2};
  std::vector<std::string> marked;
  for (int t = 0; t < 24 * 5; ++t, d = AddDays(d, platform::dates::Weekday(d) == 6 ? 3 : 1))
    if (first[t] == 1.0) marked.push_back(std::to_string(d.month) + "/" + std::to_string(d.day));
  // April 1 is a Wednesday, May 1 a Friday, June 1 a Monday, August 1 a Saturday (Friday 7/31).
  EXPECT_EQ(marked, (std::vector<std::string>{"4/1", "5/1", "6/1", "7/1", "7/31"}));
}

TEST_F(UserSeries, BusinessDaysByMonthWeekAndDay) {
  AscLayout monthly{{"HOURS"}, {0}, 12, 2001, 1, 12, 0, 0, 12};
  AscRead r = Run(monthly, "Business Days", "BUSDAYS", 1);
  // 2001: weekdays less the month's allowance for its holidays.
  EXPECT_EQ(All(r, "G_BUSDAYS"), (std::vector<double>{21, 18, 21, 21, 21, 20, 21, 23, 19, 22, 20, 20,
                                                      21, 18, 20, 22, 21, 19, 22, 22, 20, 22, 19, 21}));

  // Daily December 2001: Christmas (a Tuesday) gives 0, the 26th 1, every weekend day 1.
  AscLayout daily{{"ORDERS"}, {0}, 7, 2001, 1, 31, 0, 0, 7};
  r = Run(daily, "Business Days", "BUSDAYS", 1, "12/01/2001", GenerationOutcome::PartlyAdjusted);
  std::vector<double> b = All(r, "G_BUSDAYS");
  EXPECT_EQ(b[24], 0.0);
  EXPECT_EQ(b[25], 1.0);
  EXPECT_EQ(b[0], 1.0);  // a Saturday
  EXPECT_EQ(b[31], 0.0);  // New Year's Day 2002, in the future block
  EXPECT_EQ(std::count(b.begin(), b.end(), 0.0), 2);
  EXPECT_EQ(r.names.back(), "ORDERS__120101");

  // Weekly from Sunday November 4, 2001: 7 days a week, one less for Veterans Day, for the
  // weekly Thanksgiving (the fifth Thursday, November 29, in a November that begins on a
  // Thursday), Christmas, New Year's Day in the December week before it, and Martin Luther
  // King Day.
  AscLayout weekly{{"LOADS"}, {0}, 52, 2001, 45, 10, 0, 0, 4};
  r = Run(weekly, "Business Days", "BUSDAYS", 1, "11/04/2001");
  EXPECT_EQ(All(r, "G_BUSDAYS"), (std::vector<double>{7, 6, 7, 6, 7, 7, 7, 6, 6, 7, 7, 6, 7, 7}));

  // Five-day data from Monday December 17, 2001.
  AscLayout five{{"TRADES"}, {0}, 5, 2001, 1, 10, 0, 0, 5};
  r = Run(five, "Business Days", "BUSDAYS", 1, "12/17/2001");
  EXPECT_EQ(All(r, "G_BUSDAYS"), (std::vector<double>{1, 1, 1, 1, 1, 1, 0, 1, 1, 1, 1, 0, 1, 1, 1}));
}

TEST_F(UserSeries, MonthlyAndQuarterlyEffectSets) {
  AscLayout jan{{"SALES"}, {0}, 12, 2000, 1, 24, 0, 0, 12};
  AscRead r = Run(jan, "MonthlyEffect", "MONTHLYEFFECT", 1);
  ASSERT_EQ(r.names.size(), 12u);
  for (int m = 1; m <= 11; ++m) {
    std::vector<double> s = All(r, "G_MONTHLYEFFECT" + std::to_string(m));
    ASSERT_EQ(s.size(), 36u);
    for (int t = 0; t < 36; ++t) EXPECT_EQ(s[t], t % 12 + 1 == m ? 1.0 : 0.0);
  }

  // A series that begins in March: the unwrapped scan names 13 and 14, whose columns stay 0.
  AscLayout march{{"SALES"}, {0}, 12, 2000, 3, 24, 0, 0, 12};
  r = Run(march, "MonthlyEffect", "MONTHLYEFFECT", 1);
  EXPECT_EQ(r.names, (std::vector<std::string>{
                         "G_MONTHLYEFFECT3", "G_MONTHLYEFFECT4", "G_MONTHLYEFFECT5", "G_MONTHLYEFFECT6",
                         "G_MONTHLYEFFECT7", "G_MONTHLYEFFECT8", "G_MONTHLYEFFECT9", "G_MONTHLYEFFECT10",
                         "G_MONTHLYEFFECT11", "G_MONTHLYEFFECT13", "G_MONTHLYEFFECT14", "SALES"}));
  EXPECT_EQ(All(r, "G_MONTHLYEFFECT13"), std::vector<double>(36, 0.0));
  EXPECT_EQ(All(r, "G_MONTHLYEFFECT3")[12], 1.0);

  r = Run(march, "QuarterlyEffect", "QUARTERLYEFFECT", 1);
  EXPECT_EQ(r.names, (std::vector<std::string>{"G_QUARTERLYEFFECT1", "G_QUARTERLYEFFECT2",
                                               "G_QUARTERLYEFFECT3", "SALES"}));
  std::vector<double> q2 = All(r, "G_QUARTERLYEFFECT2");
  for (int t = 0; t < 36; ++t) EXPECT_EQ(q2[t], ((t + 2) % 12) / 3 == 1 ? 1.0 : 0.0) << t;

  // Quarterly data from the second quarter: the fourth quarter is the base.
  AscLayout quarterly{{"GDP"}, {0}, 4, 1995, 2, 40, 0, 0, 8};
  r = Run(quarterly, "QuarterlyEffect", "QUARTERLYEFFECT", 1);
  EXPECT_EQ(r.names, (std::vector<std::string>{"G_QUARTERLYEFFECT2", "G_QUARTERLYEFFECT3",
                                               "G_QUARTERLYEFFECT1", "GDP"}));
  EXPECT_EQ(All(r, "G_QUARTERLYEFFECT1")[3], 1.0);

  // Daily data by the calendar: the month of each day, the base December.
  AscLayout daily{{"USERS"}, {0}, 7, 2019, 1, 365, 0, 0, 30};
  r = Run(daily, "MonthlyEffect", "MONTHLYEFFECT", 1, "01/01/2019", GenerationOutcome::PartlyAdjusted);
  ASSERT_EQ(r.names.size(), 12u);
  std::vector<double> feb = All(r, "G_MONTHLYEFFECT2");
  EXPECT_EQ(std::count(feb.begin(), feb.end(), 1.0), 28);
  EXPECT_EQ(feb[31], 1.0);
}

TEST_F(UserSeries, ManualValuesFromTheGrids) {
  // Type 0: observations only; a file without future values keeps none.
  AscLayout annual{{"OUTPUT"}, {0}, 4, 1990, 1, 5, 0, 0, 3};
  ManualData grid{{"1.5", "2", "-3", "0", "1e3"}, {}};
  AscRead r = Run(annual, "Manual", "STRIKE", 0, kNoDate, GenerationOutcome::Adjusted, nullptr, grid);
  EXPECT_EQ(r.future, 0);
  EXPECT_EQ(r.types, (std::vector<int>{0, 0}));
  EXPECT_EQ(r.obs["G_STRIKE"], (std::vector<double>{1.5, 2, -3, 0, 1000}));

  ManualData both{{"1", "2", "3", "4", "5"}, {"6", "7", "8"}};
  r = Run(annual, "Manual", "PRICE", 2, kNoDate, GenerationOutcome::Adjusted, nullptr, both);
  EXPECT_EQ(r.future, 3);
  EXPECT_EQ(r.fut["G_PRICE"], (std::vector<double>{6, 7, 8}));
}

}  // namespace
}  // namespace tessaly::genseries::test
