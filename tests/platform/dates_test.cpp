#include "platform/dates.h"

#include <gtest/gtest.h>

namespace tessaly::platform::dates {
namespace {

TEST(Dates, DaySerialCountsFromThirtiethOfDecember1899) {
  EXPECT_EQ(DaySerial({1899, 12, 30}), 0);
  EXPECT_EQ(DaySerial({1900, 1, 1}), 2);
  EXPECT_EQ(DaySerial({2000, 1, 1}), 36526);
  EXPECT_EQ(DaySerial({1899, 12, 29}), -1);
  for (long n : {-700L, 0L, 59L, 60L, 36526L, 2958465L})
    EXPECT_EQ(DaySerial(FromDaySerial(n)), n);
  EXPECT_EQ(FromDaySerial(2958465), (Date{9999, 12, 31}));
}

TEST(Dates, WeekdaysCountFromSunday) {
  EXPECT_EQ(Weekday({2026, 11, 22}), 1);  // a Sunday
  EXPECT_EQ(Weekday({2026, 11, 28}), 7);
  EXPECT_EQ(Weekday({1899, 12, 30}), 7);
}

TEST(Dates, TextsAndParsing) {
  EXPECT_EQ(FormatIso(Date{2026, 3, 7}), "2026-03-07");
  EXPECT_EQ(FormatIso(DateTime{{2026, 3, 7}, 9, 5, 0}), "2026-03-07 09:05:00");
  EXPECT_EQ(FormatMmDdYy({2001, 1, 9}), "01/09/01");
  EXPECT_EQ(ParseMmDdYy("01/09/01"), (Date{2001, 1, 9}));
  EXPECT_EQ(ParseMmDdYy("12/31/1999"), (Date{1999, 12, 31}));
  EXPECT_EQ(ParseMmDdYy("12/31/45"), (Date{1945, 12, 31}));
  EXPECT_FALSE(ParseMmDdYy("00/00/01"));
  EXPECT_FALSE(ParseMmDdYy("02/30/20"));
  EXPECT_FALSE(ParseMmDdYy("1/2/3x"));
}

}  // namespace
}  // namespace tessaly::platform::dates
