#include "platform/dates.h"

#include <chrono>
#include <cstdio>
#include <ctime>

namespace tessaly::platform::dates {

namespace chr = std::chrono;

namespace {
// 30 December 1899 in days since 1970-01-01.
const long kEpochOffset =
    chr::sys_days{chr::year{1899} / chr::December / chr::day{30}}.time_since_epoch().count();

chr::year_month_day Ymd(const Date& d) {
  return chr::year{d.year} / chr::month{static_cast<unsigned>(d.month)} /
         chr::day{static_cast<unsigned>(d.day)};
}

std::string Two(int v) {
  char buf[8];
  std::snprintf(buf, sizeof buf, "%02d", v % 100 < 0 ? -(v % 100) : v % 100);
  return buf;
}
}  // namespace

bool IsValid(const Date& date) { return Ymd(date).ok(); }

long DaySerial(const Date& date) {
  return chr::sys_days{Ymd(date)}.time_since_epoch().count() - kEpochOffset;
}

Date FromDaySerial(long serial) {
  chr::year_month_day ymd{chr::sys_days{chr::days{serial + kEpochOffset}}};
  return {static_cast<int>(ymd.year()), static_cast<int>(static_cast<unsigned>(ymd.month())),
          static_cast<int>(static_cast<unsigned>(ymd.day()))};
}

int Weekday(const Date& date) {
  chr::weekday wd{chr::sys_days{Ymd(date)}};
  return static_cast<int>(wd.c_encoding()) + 1;  // c_encoding: Sunday = 0
}

DateTime Now() {
  std::time_t t = std::time(nullptr);
  std::tm local{};
  localtime_r(&t, &local);
  return {{local.tm_year + 1900, local.tm_mon + 1, local.tm_mday},
          local.tm_hour, local.tm_min, local.tm_sec};
}

Date Today() { return Now().date; }

std::string FormatIso(const Date& d) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%04d-%02d-%02d", d.year, d.month, d.day);
  return buf;
}

std::string FormatIso(const DateTime& m) { return FormatIso(m.date) + " " + FormatTime(m); }

std::string FormatMmDdYy(const Date& d) {
  return Two(d.month) + "/" + Two(d.day) + "/" + Two(d.year);
}

std::string FormatTime(const DateTime& m) {
  return Two(m.hour) + ":" + Two(m.minute) + ":" + Two(m.second);
}

std::optional<Date> ParseMmDdYy(const std::string& text) {
  int m = 0, d = 0, y = 0, consumed = 0;
  if (std::sscanf(text.c_str(), "%d/%d/%d%n", &m, &d, &y, &consumed) != 3 ||
      static_cast<size_t>(consumed) != text.size())
    return std::nullopt;
  size_t year_digits = text.size() - text.rfind('/') - 1;
  if (year_digits <= 2) y += y < 30 ? 2000 : 1900;
  Date date{y, m, d};
  if (!IsValid(date)) return std::nullopt;
  return date;
}

}  // namespace tessaly::platform::dates
