// Intervention series: a step in level, a single pulse, a pulse that repeats every year,
// a ramp; named after the period where they start and after the dependent series.
#include <algorithm>

#include "dataset/asc_dataset.h"
#include "genseries/gen_failure.h"
#include "genseries/texts.h"
#include "genseries/working_dataset.h"
#include "platform/numfmt.h"
#include "platform/paths.h"

namespace tessaly::genseries {

namespace {
constexpr const char* kProcedure = "AddInterventionSeries";

struct KindFields {
  const std::string* start_year;
  const std::string* start_period;
  const std::string* end_year;  // nullptr: the end is the start
  const std::string* end_period;
  const char* prefix;
};

KindFields FieldsOf(const GenerationVariables& v, const std::string& kind) {
  if (kind == "Level")
    return {&v.LevelStartYear, &v.LevelStartPeriod, &v.LevelEndYear, &v.LevelEndPeriod, "IIL"};
  if (kind == "Pulse") return {&v.PulseStartYear, &v.PulseStartPeriod, nullptr, nullptr, "IIP"};
  if (kind == "Seasonal") return {&v.SPStartYear, &v.SPStartPeriod, nullptr, nullptr, "IIS"};
  return {&v.TrendStartYear, &v.TrendStartPeriod, &v.TrendEndYear, &v.TrendEndPeriod, "IIT"};
}

// The zero padding in front of the period number; the bands 100-200 and 1000-2000 are the
// generator's own and stay as they are (observation 201 gives "0201").
std::string NamePrefix(const std::string& p, long n) {
  if (n >= 0 && n <= 9) return p + "0000";
  if (n >= 10 && n <= 99) return p + "000";
  if (n >= 100 && n <= 200) return p + "00";
  if (n >= 1000 && n <= 2000) return p;
  return p + "0";
}
}  // namespace

std::string texts::DuplicateIntervention(const std::string& kind, const std::string& name) {
  std::string what = kind == "Seasonal" ? "Seasonal Pulse" : kind;
  std::string line = "The indicated " + what + " series name " + name +
                     " is a duplicate of an existing series. The file was not adjusted.";
  if (kind == "Seasonal" || kind == "Trend") line += " ";
  return line;
}

void AddInterventionSeries(GenContext& ctx, const std::string& kind, bool& duplicate_found) {
  WorkingDataset& ds = ctx.ds;
  const KindFields f = FieldsOf(ctx.vars, kind);
  const int s = ds.seasonality;
  ds.EnsureFutureValues();
  const int N = ds.observations, T = ds.T();

  int16_t sy = FieldInt16(*f.start_year, kProcedure), sp = FieldInt16(*f.start_period, kProcedure);
  int first = PeriodIndex(ds.begin_year, ds.begin_period, sy, sp, s) - 1;
  int len = 1;
  if (f.end_year) {
    int16_t ey = FieldInt16(*f.end_year, kProcedure), ep = FieldInt16(*f.end_period, kProcedure);
    len = PeriodIndex(sy, sp, ey, ep, s);
  }

  const long n = first + 1;
  std::string name = NamePrefix(f.prefix, n) + std::to_string(n) +
                     platform::ToUpper(dataset::TrimBlanks(ds.dependent.name));
  const std::string upper = platform::ToUpper(dataset::TrimBlanks(name));
  for (const GenColumn& c : ds.kept) {
    if (platform::ToUpper(dataset::TrimBlanks(c.name)) == upper) {
      ctx.log(texts::DuplicateIntervention(kind, name));
      duplicate_found = true;
      ctx.import_ok = false;
      return;
    }
  }
  if (first < 0) throw GenFailure{kSubscriptOutOfRange, "Subscript out of range", kProcedure};

  GenColumn& col = ds.Append(dataset::TrimBlanks(name), 1, true);
  const int last = first + len - 1;
  int counter = 0;
  int k = 0;  // single steps taken in the last cycle of a seasonal pulse
  if (kind == "Seasonal") {
    for (int t = first; t <= N - 1;) {
      col.obs[t] = 1.0;
      k = 0;
      while (k < s && t < N - 1) {
        ++t;
        ++k;
      }
      if (k < s) break;  // the walk reached the last observation before a whole cycle
    }
  } else {
    for (int t = first; t <= last && t <= N - 1; ++t) col.obs[t] = kind == "Trend" ? ++counter : 1.0;
  }

  const int t0 = first <= N - 1 ? N : first;
  if (kind == "Seasonal") {
    // The pulses keep s apart across the boundary; a start beyond the observations has k = 0,
    // so its first pulse falls s - 1 places after the start.
    for (int t = t0 + s - 1 - k; t > N - 1 && t <= T - 1; t += s) col.future[t - N] = 1.0;
  } else {
    for (int t = t0; t <= last && t <= T - 1; ++t)
      col.future[t - N] = kind == "Trend" ? ++counter : 1.0;
  }
}

}  // namespace tessaly::genseries
