#pragma once
// The holiday calendar: does this period of a series of a given seasonality hold this
// holiday? Eighteen United States holidays, each known by a fixed key that is also the name
// of its series. Only seasonalities 5 (five-day weeks), 7 (days), 12 (months) and 52 (weeks)
// have a calendar; a date is the first day of its period (the day itself, the week's first
// day, the month's first day).
#include <string>
#include <vector>

#include "platform/dates.h"

namespace tessaly::genseries {

using platform::dates::Date;

// The eighteen keys, in the order the wizard offers them to daily and five-day data.
const std::vector<std::string>& AllHolidayKeys();
// What the wizard offers for a seasonality: eleven for 12, all eighteen for 5 and 7, none
// for any other.
std::vector<std::string> HolidaysOffered(int seasonality);
bool IsHolidayKey(const std::string& name);

Date AddDays(const Date& date, long days);
// Easter Sunday of a year (the Gregorian computus in integer arithmetic).
Date EasterSunday(int year);
// The first Monday of a month.
Date FirstMonday(int year, int month);
// Good Friday: for 5, 7 and 52 the date itself is Good Friday; for 12 the date lies in the
// month of Easter Sunday (so an Easter on April 1 or 2 counts in April); otherwise false.
bool isGoodFriday(const Date& date, int seasonality);
// Does the period that begins at `date` hold the holiday? A key the calendar does not know,
// or a seasonality a holiday has no rule for, answers false. Memorial Day before 1971 on
// five-day or weekly data fails as the date look-ahead does (GenFailure, type mismatch).
bool IsHoliday(const Date& date, const std::string& holiday, int seasonality);

}  // namespace tessaly::genseries
