#include "genseries/working_dataset.h"

#include "dataset/asc_dataset.h"
#include "genseries/gen_failure.h"
#include "genseries/holidays.h"
#include "genseries/texts.h"
#include "platform/numfmt.h"

namespace tessaly::genseries {

namespace dates = platform::dates;

int WorkingDataset::FutureCount() const {
  int count = dependent.has_future ? 1 : 0;
  for (const GenColumn& c : kept) count += c.has_future ? 1 : 0;
  return count;
}

GenColumn& WorkingDataset::Append(const std::string& name, int16_t type, bool with_future) {
  GenColumn c;
  c.name = name;
  c.type = type;
  c.has_future = with_future;
  c.obs.assign(observations, 0.0);
  if (with_future) c.future.assign(future, 0.0);
  kept.push_back(std::move(c));
  return kept.back();
}

int WorkingDataset::PeriodOf(int t) const {
  if (seasonality <= 1) return 0;
  return (begin_period - 1 + t) % seasonality + 1;
}

int16_t PeriodIndex(int begin_year, int begin_period, int year, int period, int seasonality) {
  long v = static_cast<long>(year - begin_year) * seasonality + (period - begin_period) + 1;
  if (v < -32768 || v > 32767) throw GenFailure{kOverflow, "Overflow", "PeriodIndex"};
  return static_cast<int16_t>(v);
}

int16_t FieldInt16(const std::string& text, const std::string& procedure) {
  platform::Int16Conversion c = platform::ToInt16(dataset::TrimBlanks(text));
  if (c.status == platform::Int16Status::NotNumeric) RaiseTypeMismatch(procedure);
  if (c.status == platform::Int16Status::Overflow) throw GenFailure{kOverflow, "Overflow", procedure};
  return c.value;
}

Date NextPeriodDate(const Date& date, int seasonality) {
  if (seasonality == 52) return AddDays(date, 7);
  return AddDays(date, seasonality == 5 && dates::Weekday(date) == 6 ? 3 : 1);
}

void AddSelectedHolidays(GenContext& ctx) {
  WorkingDataset& ds = ctx.ds;
  std::vector<std::string> names = ctx.vars.HolidayNames();
  const double counted = platform::Val(ctx.vars.NumberofHolidaysSelected);
  if (counted < static_cast<double>(names.size())) names.resize(counted > 0 ? static_cast<size_t>(counted) : 0);
  const int s = ds.seasonality;
  // Checked before any series is added, so a bad date adds nothing.
  std::optional<Date> start = VariableDate(ctx.vars.Dateof1stHolidayObservation);
  if ((s == 5 || s == 7 || s == 52) && !start && !names.empty()) RaiseTypeMismatch("AddSelectedHolidays");
  for (auto it = names.rbegin(); it != names.rend(); ++it) {
    if (ds.SeriesCount() + 1 > dataset::MaxSeries) {
      ctx.log(texts::LimitReached("a Holiday series"));
      ctx.import_ok = false;
      return;
    }
    ds.EnsureFutureValues();
    GenColumn& col = ds.Append(*it, s == 7 || s == 5 ? 3 : 1, true);
    if (s != 5 && s != 7 && s != 52 && s != 12) continue;
    Date d = s == 12 ? Date{ds.begin_year, ds.begin_period, 1} : *start;
    if (s == 12 && !dates::IsValid(d)) RaiseTypeMismatch("AddSelectedHolidays");
    for (int t = 0; t < ds.T(); ++t) {
      if (IsHoliday(d, *it, s)) {
        if (t < ds.observations) col.obs[t] = 1.0;
        else col.future[t - ds.observations] = 1.0;
      }
      if (s == 12) d = d.month == 12 ? Date{d.year + 1, 1, 1} : Date{d.year, d.month + 1, 1};
      else d = NextPeriodDate(d, s);
    }
  }
}

void RenameDailyOutput(GenContext& ctx, const std::string& date_text) {
  std::string& name = ctx.ds.dependent.name;
  if (name.rfind("__", 0) == 0) return;
  std::optional<Date> d = VariableDate(date_text);
  if (!d) RaiseTypeMismatch("GenerateSeries");
  char stamp[8];
  std::snprintf(stamp, sizeof stamp, "%02d%02d%02d", d->month, d->day, d->year % 100);
  name = name.substr(0, 6) + "__" + stamp;
  ctx.log(texts::OutputRenamed(name));
  ctx.import_ok = false;
}

}  // namespace tessaly::genseries
