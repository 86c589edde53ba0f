// The holiday calendar against dates anyone can check: Easter by an independent computus,
// the Monday holidays of known years, weekends carried to Fridays in five-day data, weeks
// that hold a holiday, and whole series over decades.
#include <gtest/gtest.h>

#include <chrono>

#include "genseries/gen_failure.h"
#include "genseries/gen_fixture.h"
#include "genseries/holidays.h"

namespace tessaly::genseries::test {
namespace {

// The anonymous Gregorian algorithm (Meeus), a different computation from the calendar's.
Date MeeusEaster(int y) {
  int a = y % 19, b = y / 100, c = y % 100, d = b / 4, e = b % 4, f = (b + 8) / 25;
  int g = (b - f + 1) / 3, h = (19 * a + b - d - g + 15) % 30, i = c / 4, k = c % 4;
  int l = (32 + 2 * e + 2 * i - h - k) % 7, m = (a + 11 * h + 22 * l) / 451;
  int month = (h + l - 7 * m + 114) / 31, day = (h + l - 7 * m + 114) % 31 + 1;
  return {y, month, day};
}

TEST(HolidayCalendar, EasterAgreesWithAnIndependentComputusAndKnownDates) {
  for (int y = 1900; y <= 2099; ++y) EXPECT_EQ(EasterSunday(y), MeeusEaster(y)) << y;
  EXPECT_EQ(EasterSunday(2000), (Date{2000, 4, 23}));
  EXPECT_EQ(EasterSunday(2024), (Date{2024, 3, 31}));
  EXPECT_EQ(EasterSunday(2018), (Date{2018, 4, 1}));
  EXPECT_EQ(EasterSunday(2011), (Date{2011, 4, 24}));
}

struct Case {
  Date date;
  const char* holiday;
  int seasonality;
  bool expected;
};

TEST(HolidayCalendar, EveryRuleOnDatesOfKnownYears) {
  const Case cases[] = {
      // Monday and Sunday holidays of 2024 on daily data, and the day after each.
      {{2024, 1, 15}, "M_MARTINLKING", 7, true},   {{2024, 1, 16}, "M_MARTINLKING", 7, false},
      {{2024, 2, 19}, "M_PRESIDENTSDAY", 7, true}, {{2024, 5, 27}, "M_MEMORIALDAY", 7, true},
      {{2024, 5, 20}, "M_MEMORIALDAY", 7, false},  {{2024, 9, 2}, "M_LABORDAY", 7, true},
      {{2024, 10, 14}, "M_COLUMBUSDAY", 7, true},  {{2024, 5, 12}, "M_MOTHERSDAY", 7, true},
      {{2024, 6, 16}, "M_FATHERSDAY", 7, true},    {{2024, 11, 28}, "M_THANKSGIVING", 7, true},
      {{2024, 3, 29}, "M_GOODFRIDAY", 7, true},    {{2024, 2, 13}, "M_MARDIGRAS", 7, true},
      {{2021, 5, 31}, "M_MEMORIALDAY", 7, true},   {{2021, 5, 9}, "M_MOTHERSDAY", 7, true},
      {{2021, 6, 20}, "M_FATHERSDAY", 7, true},    {{2015, 9, 7}, "M_LABORDAY", 7, true},
      // The years the Monday rules begin.
      {{1970, 2, 16}, "M_PRESIDENTSDAY", 7, false}, {{1971, 2, 15}, "M_PRESIDENTSDAY", 7, true},
      {{1985, 1, 21}, "M_MARTINLKING", 7, false},   {{1986, 1, 20}, "M_MARTINLKING", 7, true},
      // Memorial Day before 1971 is the 30th, in any month on daily data.
      {{1970, 5, 30}, "M_MEMORIALDAY", 7, true},    {{1970, 8, 30}, "M_MEMORIALDAY", 7, true},
      {{1970, 5, 25}, "M_MEMORIALDAY", 7, false},   {{1969, 5, 1}, "M_MEMORIALDAY", 12, true},
      // Thanksgiving 2018 (November 1 a Thursday): the 22nd daily, the week of the 29th weekly.
      {{2018, 11, 22}, "M_THANKSGIVING", 7, true},  {{2018, 11, 22}, "M_THANKSGIVING", 52, false},
      {{2018, 11, 25}, "M_THANKSGIVING", 52, true}, {{2018, 11, 18}, "M_THANKSGIVING", 52, false},
      {{2018, 11, 22}, "M_THANKSGIVING", 5, true},
      // Five-day data: weekend holidays on the Friday before, in the holiday's month only.
      {{2010, 12, 24}, "M_CHRISTMAS", 5, true},     {{2010, 12, 23}, "M_CHRISTMAS", 5, false},
      {{2010, 7, 2}, "M_JULY4TH", 5, true},          {{2010, 12, 31}, "M_NEWYEARS", 5, false},
      {{2011, 12, 23}, "M_CHRISTMAS", 5, true},      {{2012, 12, 25}, "M_CHRISTMAS", 5, true},
      {{2021, 5, 7}, "M_MOTHERSDAY", 5, true},       {{2021, 5, 10}, "M_MOTHERSDAY", 5, false},
      {{2024, 2, 16}, "M_PRESIDENTSDAY", 5, false},  {{2024, 2, 9}, "M_MARDIGRAS", 5, false},
      {{2024, 2, 13}, "M_MARDIGRAS", 5, true},       {{2024, 3, 29}, "M_GOODFRIDAY", 5, true},
      // Weekly data, weeks from Sunday.
      {{2014, 6, 29}, "M_JULY4TH", 52, true},        {{2017, 4, 30}, "M_CINCODEMAYO", 52, false},
      {{2017, 5, 7}, "M_CINCODEMAYO", 52, false},    {{2017, 4, 30}, "M_STPATRICKS", 52, false},
      {{2017, 3, 12}, "M_STPATRICKS", 52, true},     {{2017, 12, 31}, "M_NEWYEARS", 52, true},
      {{2016, 12, 25}, "M_NEWYEARS", 52, false}, {{2017, 1, 1}, "M_NEWYEARS", 52, true},    {{2016, 12, 25}, "M_CHRISTMAS", 52, true},
      {{2024, 3, 24}, "M_GOODFRIDAY", 52, true},     {{2024, 3, 31}, "M_GOODFRIDAY", 52, false},
      {{2024, 1, 14}, "M_MARTINLKING", 52, true},    {{2024, 10, 13}, "M_COLUMBUSDAY", 52, false},
      {{2024, 2, 11}, "M_MARDIGRAS", 52, false},     {{2024, 5, 26}, "M_MEMORIALDAY", 52, true},
      // Monthly data: Good Friday in the month of Easter; months of the fixed holidays.
      {{2024, 3, 1}, "M_GOODFRIDAY", 12, true},      {{2024, 4, 1}, "M_GOODFRIDAY", 12, false},
      {{2018, 4, 1}, "M_GOODFRIDAY", 12, true},      {{2018, 3, 1}, "M_GOODFRIDAY", 12, false},
      {{2000, 4, 1}, "M_GOODFRIDAY", 12, true},      {{2019, 12, 1}, "M_CHRISTMAS", 12, true},
      {{2019, 11, 1}, "M_THANKSGIVING", 12, true},   {{2019, 10, 1}, "M_COLUMBUSDAY", 12, false},
      // Quarterly and annual data have no calendar.
      {{2019, 12, 1}, "M_CHRISTMAS", 4, false},      {{2019, 1, 1}, "M_NEWYEARS", 1, false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(IsHoliday(c.date, c.holiday, c.seasonality), c.expected)
        << c.holiday << " " << c.date.month << "/" << c.date.day << "/" << c.date.year << " s=" << c.seasonality;
  }
}

TEST(HolidayCalendar, MemorialDayBefore1971FailsOnFiveDayAndWeeklyData) {
  EXPECT_TRUE(IsHoliday({1970, 6, 30}, "M_MEMORIALDAY", 5));
  EXPECT_THROW(IsHoliday({1970, 6, 29}, "M_MEMORIALDAY", 5), GenFailure);
  EXPECT_THROW(IsHoliday({1970, 5, 24}, "M_MEMORIALDAY", 52), GenFailure);
}

// Whole series through GenerateSeries: every mark of a holiday over decades, checked against
// the calendar of the standard library.
class HolidaySeries : public GenTest {};

namespace chr = std::chrono;
unsigned WeekdayOf(int y, int m, int d) {
  return chr::weekday{chr::sys_days{chr::year{y} / m / d}}.c_encoding();  // Sunday 0
}

TEST_F(HolidaySeries, DailyAndFiveDayDataOverDecades) {
  // Daily from January 1, 1995: 9,500 days to 2021.
  AscLayout daily{{"VISITS"}, {0}, 7, 1995, 1, 9000, 0, 0, 500};
  fs::path asc = Asc("VISITS.ASC", daily);
  GenerationVariables v = VarsFor(daily);
  v.SelectedHolidays = {{1, "M_CHRISTMAS"}, {2, "M_THANKSGIVING"}, {3, "M_GOODFRIDAY"}};
  v.NumberofHolidaysSelected = "3";
  v.Dateof1stHolidayObservation = "01/01/1995";
  GenerationResult r = Generate(v, asc);
  EXPECT_EQ(r.outcome, GenerationOutcome::PartlyAdjusted);  // the daily output series is renamed
  AscRead out = ReadAsc(asc);
  ASSERT_EQ(out.names, (std::vector<std::string>{"M_GOODFRIDAY", "M_THANKSGIVING", "M_CHRISTMAS",
                                                 "VISITS__010195"}));
  EXPECT_EQ(out.types, (std::vector<int>{3, 3, 3, 0}));
  EXPECT_EQ(out.future, 500);
  int christmas = 0, thanks = 0, goodfriday = 0;
  for (int t = 0; t < 9500; ++t) {
    Date d = AddDays({1995, 1, 1}, t);
    double xmas = t < 9000 ? out.obs["M_CHRISTMAS"][t] : out.fut["M_CHRISTMAS"][t - 9000];
    double tg = t < 9000 ? out.obs["M_THANKSGIVING"][t] : out.fut["M_THANKSGIVING"][t - 9000];
    double gf = t < 9000 ? out.obs["M_GOODFRIDAY"][t] : out.fut["M_GOODFRIDAY"][t - 9000];
    EXPECT_EQ(xmas, d.month == 12 && d.day == 25 ? 1.0 : 0.0) << t;
    EXPECT_EQ(tg, d.month == 11 && d.day >= 22 && d.day <= 28 && WeekdayOf(d.year, 11, d.day) == 4 ? 1.0 : 0.0);
    EXPECT_EQ(gf, d == AddDays(MeeusEaster(d.year), -2) ? 1.0 : 0.0);
    christmas += xmas, thanks += tg, goodfriday += gf;
  }
  EXPECT_EQ(christmas, 26);  // 1995 to 2020
  EXPECT_EQ(thanks, 26);
  EXPECT_EQ(goodfriday, 26);
}

TEST_F(HolidaySeries, FiveDayDataMarkWeekendHolidaysOnTheFriday) {
  // Weekdays from Monday January 2, 1989, 31 years.
  AscLayout five{{"SALES"}, {0}, 5, 1989, 1, 8000, 0, 0, 100};
  fs::path asc = Asc("SALES.ASC", five);
  GenerationVariables v = VarsFor(five);
  v.SelectedHolidays = {{1, "M_JULY4TH"}, {2, "M_NEWYEARS"}};
  v.NumberofHolidaysSelected = "2";
  v.Dateof1stHolidayObservation = "01/02/1989";
  EXPECT_EQ(Generate(v, asc).outcome, GenerationOutcome::Adjusted);  // five-day data keep their name
  AscRead out = ReadAsc(asc);
  ASSERT_EQ(out.names, (std::vector<std::string>{"M_NEWYEARS", "M_JULY4TH", "SALES"}));
  Date d{1989, 1, 2};
  int years = 0;
  for (int t = 0; t < 8100; ++t, d = AddDays(d, WeekdayOf(d.year, d.month, d.day) == 5 ? 3 : 1)) {
    ASSERT_NE(WeekdayOf(d.year, d.month, d.day) % 6, 0u) << "a weekend in five-day data";
    const bool friday = WeekdayOf(d.year, d.month, d.day) == 5;
    bool july4 = (d.month == 7 && d.day == 4) || (friday && d.month == 7 && (d.day == 2 || d.day == 3));
    bool newyear = d.month == 1 && d.day == 1;
    double j = t < 8000 ? out.obs["M_JULY4TH"][t] : out.fut["M_JULY4TH"][t - 8000];
    double n = t < 8000 ? out.obs["M_NEWYEARS"][t] : out.fut["M_NEWYEARS"][t - 8000];
    EXPECT_EQ(j, july4 ? 1.0 : 0.0) << d.month << "/" << d.day << "/" << d.year;
    EXPECT_EQ(n, newyear ? 1.0 : 0.0) << d.month << "/" << d.day << "/" << d.year;
    years += j;
  }
  EXPECT_EQ(years, 31);  // every July 4th lands on a weekday or its Friday
}

TEST_F(HolidaySeries, MonthlyAndWeeklyDataOverDecades) {
  AscLayout monthly{{"RETAIL"}, {0}, 12, 1980, 1, 480, 0, 0, 24};
  fs::path asc = Asc("RETAIL.ASC", monthly);
  GenerationVariables v = VarsFor(monthly);
  v.SelectedHolidays = {{1, "M_GOODFRIDAY"}, {2, "M_THANKSGIVING"}};
  v.NumberofHolidaysSelected = "2";
  EXPECT_EQ(Generate(v, asc).outcome, GenerationOutcome::Adjusted);
  AscRead out = ReadAsc(asc);
  EXPECT_EQ(out.types, (std::vector<int>{1, 1, 0}));
  for (int t = 0; t < 480; ++t) {
    int year = 1980 + t / 12, month = t % 12 + 1;
    EXPECT_EQ(out.obs["M_GOODFRIDAY"][t], month == MeeusEaster(year).month ? 1.0 : 0.0) << year << "/" << month;
    EXPECT_EQ(out.obs["M_THANKSGIVING"][t], month == 11 ? 1.0 : 0.0);
  }
  EXPECT_EQ(out.fut["M_GOODFRIDAY"][3], 1.0);  // April 2020 (Easter April 12)

  // Weekly data from the week of Sunday January 1, 1995, with holidays named in a hand-made
  // variables file (the wizard offers weekly data none).
  AscLayout weekly{{"UNITS"}, {0}, 52, 1995, 1, 1300, 0, 0, 52};
  fs::path wasc = Asc("UNITS.ASC", weekly);
  GenerationVariables w = VarsFor(weekly);
  w.SelectedHolidays = {{1, "M_JULY4TH"}, {2, "M_COLUMBUSDAY"}};
  w.NumberofHolidaysSelected = "2";
  w.Dateof1stHolidayObservation = "01/01/1995";
  EXPECT_EQ(Generate(w, wasc).outcome, GenerationOutcome::Adjusted);
  AscRead wout = ReadAsc(wasc);
  int marked = 0;
  for (int t = 0; t < 1300; ++t) {
    Date start = AddDays({1995, 1, 1}, 7L * t);
    bool holds = false;
    for (int k = 0; k < 7; ++k) holds |= AddDays(start, k) == Date{AddDays(start, k).year, 7, 4};
    EXPECT_EQ(wout.obs["M_JULY4TH"][t], holds ? 1.0 : 0.0) << start.month << "/" << start.day << "/" << start.year;
    EXPECT_EQ(wout.obs["M_COLUMBUSDAY"][t], 0.0);
    marked += holds;
  }
  EXPECT_EQ(marked, 25);
}

}  // namespace
}  // namespace tessaly::genseries::test
