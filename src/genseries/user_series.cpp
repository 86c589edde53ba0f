// The series of the user step: one series per calendar method, a set of seasonal dummies
// for the effect methods, working days for Business Days, typed-in values for Manual.
#include <algorithm>

#include "dataset/asc_dataset.h"
#include "genseries/gen_failure.h"
#include "genseries/holidays.h"
#include "genseries/texts.h"
#include "genseries/working_dataset.h"
#include "platform/numfmt.h"

namespace tessaly::genseries {

namespace dates = platform::dates;

namespace {
constexpr const char* kProcedure = "AddUserSeries";

Date NextMonth(const Date& d) { return d.month == 12 ? Date{d.year + 1, 1, 1} : Date{d.year, d.month + 1, 1}; }

// The date of the first observation for the calendar walks of daily, five-day and weekly
// data; a missing or bad date fails as the date conversion does.
Date RequiredDate(const std::string& text) {
  std::optional<Date> d = VariableDate(text);
  if (!d) RaiseTypeMismatch(kProcedure);
  return *d;
}

// The first date of every period, observations then future values without a break. Monthly
// data walk by calendar months from the first day of the first month; 5, 7 and 52 walk from
// the date of the first observation.
std::vector<Date> PeriodDates(const WorkingDataset& ds, const std::string& date_text) {
  std::vector<Date> out;
  const int T = ds.T();
  if (ds.seasonality == 12) {
    Date d{ds.begin_year, ds.begin_period, 1};
    if (!dates::IsValid(d)) RaiseTypeMismatch(kProcedure);
    for (int t = 0; t < T; ++t, d = NextMonth(d)) out.push_back(d);
    return out;
  }
  Date d = RequiredDate(date_text);
  for (int t = 0; t < T; ++t, d = NextPeriodDate(d, ds.seasonality)) out.push_back(d);
  return out;
}

void SetValue(GenColumn& col, const WorkingDataset& ds, int t, double v) {
  if (t < ds.observations) col.obs[t] = v;
  else col.future[t - ds.observations] = v;
}

bool Is445Fifth(int month) { return month % 3 == 0; }

// A test on the day of the month or of the week: in a five-day series also made on the
// Saturday and Sunday after a Friday, a hit counting for the Friday.
template <typename Test>
bool DayTest(const Date& d, int s, Test test) {
  if (test(d)) return true;
  if (s == 5 && dates::Weekday(d) == 6) return test(AddDays(d, 1)) || test(AddDays(d, 2));
  return false;
}

int QuarterOf(int month) { return (month - 1) / 3 + 1; }

void OneSeriesMethod(GenContext& ctx, const std::string& method, int16_t type) {
  WorkingDataset& ds = ctx.ds;
  const GenerationVariables& v = ctx.vars;
  const int s = ds.seasonality;
  if (method == "Month" && s != 12) return;
  if (method == "Quarter" && s != 4) return;
  ds.EnsureFutureValues();
  GenColumn& col = ds.Append("G_" + dataset::TrimBlanks(v.UserDefName), type, type != 0);
  const int T = ds.T();
  if (method == "Quarter") {
    int q = FieldInt16(v.SelectedQuarter, kProcedure);
    for (int t = 0; t < T; ++t)
      if (ds.PeriodOf(t) == q) SetValue(col, ds, t, 1.0);
    return;
  }
  const bool day_method = method == "Day" || method == "1st of each Month" ||
                          method == "15th of each Month" || method == "1st and 15th of each Month";
  const bool has_row = (method == "Month") || (day_method && (s == 5 || s == 7)) ||
                       (method == "4-4-5" && (s == 5 || s == 7 || s == 12));
  if (!has_row) return;  // the series is added, its values stay 0
  const std::vector<Date> periods = PeriodDates(ds, v.DateOfFirstObservation);
  const int selected_month = method == "Month" ? FieldInt16(v.SelectedMonth, kProcedure) : 0;
  const int selected_day = method == "Day" ? FieldInt16(v.SelectedDay, kProcedure) : 0;
  for (int t = 0; t < T; ++t) {
    const Date& d = periods[t];
    double value = 0;
    if (method == "Month") value = d.month == selected_month ? 1.0 : 0.0;
    else if (method == "4-4-5") value = Is445Fifth(d.month) ? 5.0 : 4.0;
    else if (method == "Day")
      value = DayTest(d, s, [&](const Date& x) { return dates::Weekday(x) == selected_day; });
    else if (method == "1st of each Month") value = DayTest(d, s, [](const Date& x) { return x.day == 1; });
    else if (method == "15th of each Month") value = DayTest(d, s, [](const Date& x) { return x.day == 15; });
    else value = DayTest(d, s, [](const Date& x) { return x.day == 1 || x.day == 15; });
    if (value != 0) SetValue(col, ds, t, value);
  }
}

// The holidays a period of Business Days loses one day for, by the month of its date.
const std::vector<std::string>& BusinessHolidays(int month) {
  static const std::vector<std::string> by_month[13] = {
      {},
      {"M_NEWYEARS", "M_MARTINLKING"},
      {"M_STVALENTINES", "M_PRESIDENTSDAY"},
      {"M_STPATRICKS"},
      {},
      {"M_MOTHERSDAY", "M_MEMORIALDAY"},
      {"M_FATHERSDAY", "M_JULY4TH"},
      {"M_JULY4TH"},
      {},
      {"M_LABORDAY"},
      {},
      {"M_THANKSGIVING", "M_VETERANSDAY"},
      {"M_CHRISTMAS", "M_NEWYEARS"}};
  return by_month[month];
}

// The month's weekdays less a fixed allowance for its holidays, whatever their weekday.
double MonthBusinessDays(const Date& first) {
  static const int kLess[13] = {0, 2, 2, 1, 0, 2, 1, 1, 0, 1, 1, 2, 1};
  int count = 0;
  Date d = first;
  while (d.month == first.month) {
    int wd = dates::Weekday(d);
    if (wd == 7) d = AddDays(d, 2);
    else if (wd == 1) d = AddDays(d, 1);
    else {
      ++count;
      d = AddDays(d, wd == 6 ? 3 : 1);
    }
  }
  return count - kLess[first.month];
}

void BusinessDays(GenContext& ctx, int16_t type) {
  WorkingDataset& ds = ctx.ds;
  if (ds.SeriesCount() + 1 > dataset::MaxSeries) {
    ctx.log(texts::kBusDaysOverflow);
    ctx.import_ok = false;
    return;
  }
  ds.EnsureFutureValues();
  GenColumn& col = ds.Append("G_" + dataset::TrimBlanks(ctx.vars.UserDefName), type, type != 0);
  const int s = ds.seasonality;
  if (s != 12 && s != 5 && s != 7 && s != 52) return;
  const std::vector<Date> periods = PeriodDates(ds, ctx.vars.DateOfFirstObservation);
  for (int t = 0; t < ds.T(); ++t) {
    const Date& d = periods[t];
    double value = 0;
    if (s == 12) {
      value = MonthBusinessDays(d);
    } else {
      int wd = dates::Weekday(d);
      value = s == 5 ? (wd > 1 && wd <= 6 ? 1 : 0) : s == 7 ? 1 : 8 - wd;
      for (const std::string& h : BusinessHolidays(d.month)) {
        if (IsHoliday(d, h, s)) {
          value -= 1;
          break;
        }
      }
    }
    SetValue(col, ds, t, value);
  }
}

// A cell left blank counts as 0; any other text must be a number.
double ToValue(const std::string& text) {
  if (dataset::TrimBlanks(text).empty()) return 0.0;
  platform::NumberConversion c = platform::ToNumber(text);
  if (!c.ok()) RaiseTypeMismatch(kProcedure);
  return c.value;
}

void Manual(GenContext& ctx, int16_t type, const std::vector<std::string>& history,
            const std::vector<std::string>& future) {
  WorkingDataset& ds = ctx.ds;
  const std::string name = dataset::TrimBlanks(ctx.vars.UserDefName);
  if (ds.SeriesCount() + 1 > dataset::MaxSeries) {
    ctx.log(texts::ManualOverflow(name));
    ctx.import_ok = false;
    return;
  }
  if (type != 0) ds.EnsureFutureValues();
  // Convert first, so that a bad cell adds nothing.
  std::vector<double> obs(ds.observations, 0.0), fut(type != 0 ? ds.future : 0, 0.0);
  for (size_t t = 0; t < obs.size() && t < history.size(); ++t) obs[t] = ToValue(history[t]);
  for (size_t t = 0; t < fut.size() && t < future.size(); ++t) fut[t] = ToValue(future[t]);
  GenColumn& col = ds.Append("G_" + name, type, type != 0);
  col.obs = obs;
  if (type != 0) col.future = fut;
}

// ---- The effect sets ---------------------------------------------------------------------

struct EffectSet {
  std::string stem;    // "MONTHLYEFFECT", "QUARTERLYEFFECT", "WEEKLYEFFECT"
  size_t number_at;    // 0-based place of the number in the name (the 14th or 16th character)
  size_t limit;        // names gathered at most
};

void AppendSet(GenContext& ctx, const EffectSet& set, const std::vector<std::string>& names,
               int16_t type, const std::function<int(int)>& unit_of_period) {
  WorkingDataset& ds = ctx.ds;
  for (const std::string& name : names) {
    std::string number = name.size() > set.number_at ? name.substr(set.number_at) : "";
    int16_t wanted = FieldInt16(number, kProcedure);
    GenColumn& col = ds.Append("G_" + name, type, type != 0);
    for (int t = 0; t < ds.T(); ++t)
      if (unit_of_period(t) == wanted) SetValue(col, ds, t, 1.0);
  }
}

bool Overflows(GenContext& ctx, size_t names, const char* line) {
  if (ctx.ds.SeriesCount() + static_cast<int>(names) <= dataset::MaxSeries) return false;
  ctx.log(line);
  ctx.import_ok = false;
  return true;
}

// The calendar walk of an effect set with a date: weekly data by 7 days unless `single_days`,
// five-day data by 3 after a Friday, everything else by one day.
std::vector<Date> DayWalk(const Date& start, int s, int periods, bool single_days) {
  std::vector<Date> out;
  Date d = start;
  for (int t = 0; t < periods; ++t) {
    out.push_back(d);
    if (s == 52 && !single_days) d = AddDays(d, 7);
    else d = AddDays(d, s == 5 && dates::Weekday(d) == 6 ? 3 : 1);
  }
  return out;
}

void MonthlyEffect(GenContext& ctx, int16_t type) {
  WorkingDataset& ds = ctx.ds;
  const EffectSet set{"MONTHLYEFFECT", 13, 11};
  ds.EnsureFutureValues();
  const int T = ds.T(), s = ds.seasonality;
  std::vector<std::string> names;
  std::optional<Date> start = VariableDate(ctx.vars.DateOfFirstObservation);
  std::function<int(int)> unit;
  std::vector<Date> walk;
  if (start && s != 12) {
    walk = DayWalk(*start, s, T, false);
    unit = [&walk](int t) { return walk[t].month; };
  } else if (s == 12) {
    unit = [&ds](int t) { return (ds.begin_period - 1 + t) % 12 + 1; };
  } else {
    return;
  }
  if (start && s != 12) {
    int last = walk.empty() ? 0 : walk[0].month;
    if (!walk.empty()) names.push_back(set.stem + std::to_string(last));
    for (int t = 1; t < T && names.size() < set.limit; ++t) {
      int m = walk[t].month;
      if (m != 12 && m != last) {
        names.push_back(set.stem + std::to_string(m));
        last = m;
      }
    }
  } else {
    // The scan's counter is not wrapped at 12, so data that do not begin in January get
    // names past 12 (MONTHLYEFFECT13) whose columns stay zero.
    int last = ds.begin_period;
    names.push_back(set.stem + std::to_string(last));
    for (int t = 1; t < T && names.size() < set.limit; ++t) {
      int p = ds.begin_period + t;
      if (p != 12 && p != last) {
        names.push_back(set.stem + std::to_string(p));
        last = p;
      }
    }
  }
  if (Overflows(ctx, names.size(), start && s != 12 ? texts::kMonthlyOverflowDated
                                                    : texts::kMonthlyOverflowUndated))
    return;
  AppendSet(ctx, set, names, type, unit);
}

void QuarterlyEffect(GenContext& ctx, int16_t type) {
  WorkingDataset& ds = ctx.ds;
  const EffectSet set{"QUARTERLYEFFECT", 15, 3};
  ds.EnsureFutureValues();
  const int T = ds.T(), s = ds.seasonality;
  std::optional<Date> start = VariableDate(ctx.vars.DateOfFirstObservation);
  std::vector<Date> walk;
  std::function<int(int)> unit;
  if (start) {
    walk = DayWalk(*start, s, T, true);  // single days, weekly data included
    unit = [&walk](int t) { return QuarterOf(walk[t].month); };
  } else if (s == 12) {
    unit = [&ds](int t) { return QuarterOf((ds.begin_period - 1 + t) % 12 + 1); };
  } else if (s == 4) {
    unit = [&ds](int t) { return ds.PeriodOf(t); };
  } else {
    return;
  }
  std::vector<std::string> names;
  if (!start && s == 4) {
    // The last quarter is the base and gets no name.
    for (int t = 0; t < T && names.size() < set.limit; ++t) {
      std::string name = set.stem + std::to_string(unit(t));
      if (unit(t) != 4 && std::find(names.begin(), names.end(), name) == names.end())
        names.push_back(name);
    }
  } else {
    int last = unit(0);
    names.push_back(set.stem + std::to_string(last));
    for (int t = 1; t < T && names.size() < set.limit; ++t) {
      if (unit(t) != last) {
        last = unit(t);
        names.push_back(set.stem + std::to_string(last));
      }
    }
  }
  if (Overflows(ctx, names.size(), texts::kQuarterlyOverflow)) return;
  AppendSet(ctx, set, names, type, unit);
}

// Weekly dummies: names by week number, week 52 the base. The values are written by the
// monthly code (the number read from the 14th character, the month of a walk from the zero
// date), so a one-digit week fails to convert.
void WeeklyEffect(GenContext& ctx, int16_t type) {
  WorkingDataset& ds = ctx.ds;
  const EffectSet set{"WEEKLYEFFECT", 13, 51};
  ds.EnsureFutureValues();
  if (ds.seasonality != 52) return;
  std::vector<std::string> names;
  int week = ds.begin_period;
  for (int t = 0; t < ds.T() && names.size() < set.limit; ++t) {
    if (week != 52) names.push_back(set.stem + std::to_string(week));
    week = week % 52 + 1;
  }
  if (Overflows(ctx, names.size(), texts::kWeeklyOverflow)) return;
  std::vector<Date> walk = DayWalk(Date{}, 52, ds.T(), false);
  AppendSet(ctx, set, names, type, [&walk](int t) { return walk[t].month; });
}
}  // namespace

void AddUsersSeries(GenContext& ctx, const std::vector<std::string>& manual_history,
                    const std::vector<std::string>& manual_future) {
  const std::string method = dataset::TrimBlanks(ctx.vars.UserDefMethod);
  const int16_t type = FieldInt16(ctx.vars.UserDefType, kProcedure);
  if (method == "MonthlyEffect") MonthlyEffect(ctx, type);
  else if (method == "QuarterlyEffect") QuarterlyEffect(ctx, type);
  else if (method == "WeeklyEffect") WeeklyEffect(ctx, type);
  else if (method == "Business Days") BusinessDays(ctx, type);
  else if (method == "Manual") Manual(ctx, type, manual_history, manual_future);
  else OneSeriesMethod(ctx, method, type);
}

}  // namespace tessaly::genseries
