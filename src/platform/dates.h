#pragma once
// Calendar dates as the system counts and writes them: day 0 is 30 December 1899,
// weekdays count from Sunday = 1, and the few fixed date texts the files use.
#include <optional>
#include <string>

namespace tessaly::platform::dates {

struct Date {
  int year = 1899;
  int month = 12;
  int day = 30;
  bool operator==(const Date&) const = default;
};

struct DateTime {
  Date date;
  int hour = 0;
  int minute = 0;
  int second = 0;
};

// Running day number: 30 December 1899 is 0, 31 December 1899 is 1, 1 January 1900 is 2.
long DaySerial(const Date& date);
Date FromDaySerial(long serial);
// Sunday = 1 ... Saturday = 7.
int Weekday(const Date& date);
bool IsValid(const Date& date);

// Local time of the machine.
Date Today();
DateTime Now();

std::string FormatIso(const Date& date);              // "YYYY-MM-DD"
std::string FormatIso(const DateTime& moment);        // "YYYY-MM-DD hh:nn:ss"
std::string FormatMmDdYy(const Date& date);           // "mm/dd/yy"
std::string FormatTime(const DateTime& moment);       // "hh:mm:ss"

// "mm/dd/yy" or "mm/dd/yyyy"; a two-digit year below 30 is 20yy, else 19yy (the
// two-digit year window). nullopt when the text is not a real date.
[[nodiscard]] std::optional<Date> ParseMmDdYy(const std::string& text);

}  // namespace tessaly::platform::dates
