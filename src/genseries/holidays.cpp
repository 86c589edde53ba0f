#include "genseries/holidays.h"

#include <algorithm>

#include "genseries/gen_failure.h"

namespace tessaly::genseries {

namespace dates = platform::dates;

namespace {
struct FixedHoliday {
  const char* key;
  int month;
  int day;
};
const FixedHoliday kFixed[] = {
    {"M_NEWYEARS", 1, 1},     {"M_STVALENTINES", 2, 14}, {"M_STPATRICKS", 3, 17},
    {"M_CINCODEMAYO", 5, 5},  {"M_JULY4TH", 7, 4},       {"M_HALLOWEEN", 10, 31},
    {"M_VETERANSDAY", 11, 11}, {"M_CHRISTMAS", 12, 25},
};

bool IsFriday(const Date& d) { return dates::Weekday(d) == 6; }
bool SameMonthDay(const Date& d, int month, int day) { return d.month == month && d.day == day; }

// One of date+1 .. date+days satisfies the test.
template <typename Test>
bool AheadWithin(const Date& date, int days, Test test) {
  for (int k = 1; k <= days; ++k)
    if (test(AddDays(date, k))) return true;
  return false;
}

bool FixedRule(const Date& date, const FixedHoliday& h, int s) {
  auto is_it = [&](const Date& d) { return SameMonthDay(d, h.month, h.day); };
  const std::string key = h.key;
  switch (s) {
    case 7:
      return is_it(date);
    case 5:
      // A holiday on a weekend counts for the Friday before, when that Friday is in the
      // holiday's month (so New Year's Day on a weekend is not carried into December).
      return is_it(date) || (IsFriday(date) && date.month == h.month && AheadWithin(date, 2, is_it));
    case 12:
      return date.month == h.month;
    case 52: {
      if (is_it(date)) return true;
      bool look = date.month == h.month;
      if (key == "M_NEWYEARS") look = date.month == 12;  // the week that starts in December
      if (key == "M_JULY4TH") {
        Date end = AddDays(date, 6);
        look = look || (end.month == 7 && end.day >= 4);  // a week from June into July
      }
      return look && AheadWithin(date, 6, is_it);
    }
    default:
      return false;
  }
}

// The candidate date of a Monday or Sunday holiday in the year of `date`.
Date Candidate(const std::string& key, int year, int s) {
  auto in_month = [](const Date& d, int month) { return d.month == month; };
  if (key == "M_LABORDAY") return FirstMonday(year, 9);
  if (key == "M_COLUMBUSDAY") return AddDays(FirstMonday(year, 10), 7);
  if (key == "M_MOTHERSDAY") {
    Date c = AddDays(FirstMonday(year, 5), -1);
    return AddDays(c, in_month(c, 5) ? 7 : 14);
  }
  if (key == "M_FATHERSDAY") {
    Date c = AddDays(FirstMonday(year, 6), -1);
    return AddDays(c, in_month(c, 6) ? 14 : 21);
  }
  auto last_or_third = [&](int month, int plus) {
    Date c = AddDays(FirstMonday(year, month), plus);
    return in_month(c, month) ? c : AddDays(c, -7);
  };
  if (key == "M_MEMORIALDAY") return last_or_third(5, 28);
  if (key == "M_PRESIDENTSDAY") return last_or_third(2, 14);
  if (key == "M_MARTINLKING") return last_or_third(1, 14);
  // M_THANKSGIVING. The weekly form is the simpler one: in a November that begins on a
  // Wednesday or Thursday it names the fifth Thursday, and that week is the one marked.
  if (s == 52) return last_or_third(11, 3 + 21);
  Date t = AddDays(FirstMonday(year, 11), 3);
  return AddDays(t, t.day > 7 ? 14 : 21);
}

enum class Look { None, Exact, Next2, Next6 };

bool CandidateRule(const Date& date, const std::string& key, int s, Look look) {
  if (look == Look::None) return false;
  Date c = Candidate(key, date.year, s);
  if (date == c) return true;
  if (look == Look::Exact) return false;
  return AheadWithin(date, look == Look::Next2 ? 2 : 6, [&](const Date& d) { return d == c; });
}

// Memorial Day before 1971: the 30th of any month. The look-ahead of five-day and weekly
// data compares a date with a number there and fails.
bool EarlyMemorialDay(const Date& date, int s) {
  switch (s) {
    case 7:
      return date.day == 30;
    case 5:
    case 52:
      if (date.day == 30) return true;
      RaiseTypeMismatch("IsHoliday");
    case 12:
      return date.month == 5;
    default:
      return false;
  }
}
}  // namespace

const std::vector<std::string>& AllHolidayKeys() {
  static const std::vector<std::string> keys = {
      "M_GOODFRIDAY", "M_NEWYEARS",    "M_STVALENTINES", "M_STPATRICKS",    "M_CINCODEMAYO",
      "M_MOTHERSDAY", "M_MEMORIALDAY", "M_FATHERSDAY",   "M_JULY4TH",       "M_LABORDAY",
      "M_HALLOWEEN",  "M_VETERANSDAY", "M_THANKSGIVING", "M_CHRISTMAS",     "M_PRESIDENTSDAY",
      "M_MARTINLKING", "M_COLUMBUSDAY", "M_MARDIGRAS"};
  return keys;
}

std::vector<std::string> HolidaysOffered(int seasonality) {
  if (seasonality == 5 || seasonality == 7) return AllHolidayKeys();
  if (seasonality == 12)
    return {"M_GOODFRIDAY", "M_NEWYEARS",   "M_STVALENTINES", "M_STPATRICKS",
            "M_MEMORIALDAY", "M_FATHERSDAY", "M_JULY4TH",      "M_LABORDAY",
            "M_HALLOWEEN",  "M_THANKSGIVING", "M_CHRISTMAS"};
  return {};
}

bool IsHolidayKey(const std::string& name) {
  const auto& keys = AllHolidayKeys();
  return std::find(keys.begin(), keys.end(), name) != keys.end();
}

Date AddDays(const Date& date, long days) {
  return dates::FromDaySerial(dates::DaySerial(date) + days);
}

Date EasterSunday(int y) {
  int c = y / 100, n = y % 19, k = (c - 17) / 25;
  int i = (c - c / 4 - (c - k) / 3 + 19 * n + 15) % 30;
  i = i - (i / 28) * (1 - (i / 28) * (29 / (i + 1)) * ((21 - n) / 11));
  int j = (y + y / 4 + i + 2 - c + c / 4) % 7;
  int l = i - j;
  int m = 3 + (l + 40) / 44;
  int d = l + 28 - 31 * (m / 4);
  return {y, m, d};
}

Date FirstMonday(int year, int month) {
  Date d{year, month, 1};
  while (dates::Weekday(d) != 2) d = AddDays(d, 1);
  return d;
}

bool isGoodFriday(const Date& date, int s) {
  Date easter = EasterSunday(date.year);
  if (s == 5 || s == 7 || s == 52) return date == AddDays(easter, -2);
  if (s == 12) return date.month == easter.month;
  return false;
}

bool IsHoliday(const Date& date, const std::string& h, int s) {
  for (const FixedHoliday& f : kFixed)
    if (h == f.key) return FixedRule(date, f, s);

  if (h == "M_MOTHERSDAY" || h == "M_FATHERSDAY" || h == "M_LABORDAY" || h == "M_MEMORIALDAY") {
    if (h == "M_MEMORIALDAY" && date.year < 1971) return EarlyMemorialDay(date, s);
    if (s == 12) {
      int month = h == "M_MOTHERSDAY" || h == "M_MEMORIALDAY" ? 5 : h == "M_FATHERSDAY" ? 6 : 9;
      return date.month == month;
    }
    Look look = s == 7 ? Look::Exact : s == 5 ? Look::Next2 : s == 52 ? Look::Next6 : Look::None;
    return CandidateRule(date, h, s, look);
  }
  if (h == "M_COLUMBUSDAY") {
    Look look = s == 7 ? Look::Exact : s == 5 ? Look::Next2 : Look::None;
    return CandidateRule(date, h, s, look);
  }
  if (h == "M_MARTINLKING") {
    if (date.year < 1986) return false;
    Look look = s == 7 ? Look::Exact : s == 5 ? Look::Next2 : s == 52 ? Look::Next6 : Look::None;
    return CandidateRule(date, h, s, look);
  }
  if (h == "M_PRESIDENTSDAY" || h == "M_THANKSGIVING") {
    if (h == "M_PRESIDENTSDAY" && date.year < 1971) return false;
    if (h == "M_THANKSGIVING" && s == 12) return date.month == 11;
    Look look = (s == 7 || s == 5) ? Look::Exact : s == 52 ? Look::Next6 : Look::None;
    return CandidateRule(date, h, s, look);
  }
  if (h == "M_GOODFRIDAY") {
    if (s == 7 || s == 5) return isGoodFriday(date, s);
    if (s == 12) return (date.month == 3 || date.month == 4) && isGoodFriday(date, s);
    if (s == 52)
      return isGoodFriday(date, s) ||
             AheadWithin(date, 6, [&](const Date& d) { return isGoodFriday(d, s); });
    return false;
  }
  if (h == "M_MARDIGRAS") {
    if (s == 7) return isGoodFriday(AddDays(date, 45), s);
    if (s == 5)
      return isGoodFriday(AddDays(date, 45), s) ||
             (IsFriday(date) &&
              (isGoodFriday(AddDays(date, 46), s) || isGoodFriday(AddDays(date, 47), s)));
    return false;
  }
  return false;
}

}  // namespace tessaly::genseries
