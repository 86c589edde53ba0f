#pragma once
// Helpers the report writers share: period labels of observations and forecasts, names of
// intervention types, summary figures of the data.
#include <cmath>
#include <string>
#include <vector>

#include "engine/exchange.h"
#include "engine/model/pooled.h"
#include "engine/periods.h"
#include "engine/reports.h"

namespace quorvane::report {

inline const ModelingProblem& Problem(const ReportInput& in) { return in.request->problem; }
inline const ModelResult& Result(const ReportInput& in) { return *in.result; }

// The groups of a pooled cross-section, as given (none for one series).
inline bool IsPooledRun(const ReportInput& in) { return Problem(in).rules.group_sizes.size() > 1; }

// A pooled cross-section stacks groups that each span the dataset's periods from its first
// one: an observation's period is that of its place within its group (the last group's
// places run on into the forecasts).
inline int IndexInGroup(const ReportInput& in, int index) {
  if (!IsPooledRun(in)) return index;
  const auto& sizes = Problem(in).rules.group_sizes;
  int start = 0;
  for (size_t g = 0; g + 1 < sizes.size(); ++g) {
    if (index < start + sizes[g]) return index - start;
    start += sizes[g];
  }
  return index - start;
}

// "The model is a pooled cross-section of 3 groups of 40 observations each ..." or "".
inline std::string PoolSentence(const ReportInput& in) {
  if (!IsPooledRun(in)) return "";
  return "The model is a pooled cross-section of " + PoolDescription(Problem(in).rules.group_sizes) +
         ", stacked end to end: one model for all groups, with no lag crossing a group boundary. "
         "The forecasts continue the last group, the most recent cross-section.";
}

// Label of observation `index` (0-based) of the series as given.
inline std::string ObservationLabel(const ReportInput& in, int index) {
  const auto& s = in.request->shape;
  return PeriodLabel(s.begin_year, s.begin_period, s.seasonality, IndexInGroup(in, index));
}

// Label of forecast `h` (0-based): the periods after the estimation sample.
inline std::string ForecastLabel(const ReportInput& in, int h) {
  return ObservationLabel(in, static_cast<int>(Problem(in).y.size()) + h);
}

// The engine's mark for "no value" (and anything that is not a number).
inline bool IsMissing(double v) { return std::isnan(v) || v == kMissingValue; }

inline const char* InterventionName(int type) {
  switch (type) {
    case 1: return "Pulse";
    case 2: return "Level Shift";
    case 3: return "Seasonal Pulse";
    case 4: return "Trend";
    case 5: return "Dynamic Pulse";
    default: return "Intervention";
  }
}

inline std::string FrequencyWord(int seasonality) {
  switch (seasonality) {
    case 1: return "annual";
    case 4: return "quarterly";
    case 5: return "business-day";
    case 7: return "daily";
    case 12: return "monthly";
    case 13: return "four-weekly";
    case 52: return "weekly";
    default: return "seasonal (" + std::to_string(seasonality) + " periods a cycle)";
  }
}

struct Summary {
  double mean = 0, sd = 0, min = 0, max = 0;
};

inline Summary Summarize(const std::vector<double>& y) {
  Summary s;
  if (y.empty()) return s;
  s.min = s.max = y[0];
  for (double v : y) {
    s.mean += v;
    s.min = std::min(s.min, v);
    s.max = std::max(s.max, v);
  }
  s.mean /= y.size();
  double ss = 0;
  for (double v : y) ss += (v - s.mean) * (v - s.mean);
  s.sd = y.size() > 1 ? std::sqrt(ss / (y.size() - 1)) : 0.0;
  return s;
}

// "ARIMA(p,d,q)(P,D,Q)s" when the core gave no description of its own.
inline std::string ModelName(const ModelResult& r) {
  if (!r.description.empty()) return r.description;
  std::string name = "ARIMA(" + std::to_string(r.p) + "," + std::to_string(r.d) + "," +
                     std::to_string(r.q) + ")";
  if (r.P + r.D + r.Q > 0)
    name += "(" + std::to_string(r.P) + "," + std::to_string(r.D) + "," + std::to_string(r.Q) +
            ")" + std::to_string(r.period);
  return name;
}

inline std::string TransformName(double lambda) {
  if (lambda == 1.0) return "none";
  if (lambda == 0.0) return "natural logarithm";
  if (lambda == 0.5) return "square root";
  char buf[64];
  std::snprintf(buf, sizeof buf, "Box-Cox power %.2f", lambda);
  return buf;
}

}  // namespace quorvane::report
