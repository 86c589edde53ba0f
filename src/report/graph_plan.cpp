#include "report/graph_plan.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>

namespace tessaly::report {

namespace {

const std::array<GraphInfo, 9> kGraphs = {{
    {GraphKind::ActFit, "actfit.jpg"},
    {GraphKind::ActFore, "actfore.jpg"},
    {GraphKind::FitFore, "fitfore.jpg"},
    {GraphKind::ActFitFore, "actfitfore.jpg"},
    {GraphKind::ActCleanse, "actcleanse.jpg"},
    {GraphKind::Res, "res.jpg"},
    {GraphKind::ActRes, "actres.jpg"},
    {GraphKind::Fore, "fore.jpg"},
    {GraphKind::Act, "act.jpg"},
}};

// The text between the series name and the date, with and without limits.
struct TitleText {
  const char* with_limits;
  const char* without_limits;
};

TitleText TitleFor(GraphKind kind) {
  switch (kind) {
    case GraphKind::Act: return {": Actual Data (", ": Actual Data ("};
    case GraphKind::ActCleanse:
      return {": Actual and Cleansed Data (", ": Actual and Cleansed Data ("};
    case GraphKind::ActFit: return {": Actual & Fit Data (", ": Actual & Fit Data ("};
    case GraphKind::ActFore:
      return {": Actual and Forecast Data  (", ": Actual and Forecasts Data  ("};
    case GraphKind::ActFitFore:
      return {": Actual, Fitted, and Forecast Data (", ": Actual,Fitted, and Forecast Data ("};
    case GraphKind::ActRes: return {": Actual and Residual Data (", ": Actual and Residual Data ("};
    case GraphKind::FitFore: return {": Fitted and Forecast Data (", ": Fitted and Forecast Data ("};
    case GraphKind::Fore: return {": Forecast Data (", ": Forecast Data ("};
    case GraphKind::Res: return {": Residual Data (", ": Residual Data ("};
  }
  return {"", ""};
}

using Values = std::vector<std::optional<double>>;

// The series' values placed at `offset` within `points` points; values past the end of
// the source, undrawable values and the first `skip` of them are left empty.
Values Place(const std::vector<double>& source, size_t count, size_t offset, size_t points,
             size_t skip = 0) {
  Values out(points);
  for (size_t i = 0; i < count && i < source.size() && offset + i < points; ++i) {
    if (i >= skip && IsDrawable(source[i])) out[offset + i] = source[i];
  }
  return out;
}

bool HasValue(const Values& values) {
  return std::any_of(values.begin(), values.end(), [](const auto& v) { return v.has_value(); });
}

}  // namespace

bool IsDrawable(double value) {
  return std::isfinite(value) && value != kMissingValue && std::fabs(value) < 1e300;
}

const std::array<GraphInfo, 9>& AllGraphs() { return kGraphs; }

const GraphInfo& Info(GraphKind kind) { return kGraphs[static_cast<int>(kind) - 1]; }

bool WantsGraph(const GraphPreferences& prefs, GraphKind kind) {
  if (prefs.no_graphs) return false;
  if (!prefs.sel_graphs) return true;
  switch (kind) {
    case GraphKind::Act: return prefs.act;
    case GraphKind::ActCleanse: return prefs.act_cleanse;
    case GraphKind::ActFit: return prefs.act_fit;
    case GraphKind::ActFore: return prefs.act_fore;
    case GraphKind::ActFitFore: return prefs.act_fit_fore;
    case GraphKind::ActRes: return prefs.act_res;
    case GraphKind::Fore: return prefs.fore;
    case GraphKind::FitFore: return prefs.fit_fore;
    case GraphKind::Res: return prefs.res;
  }
  return false;
}

int LabelStep(int points) {
  if (points <= 10) return 1;
  if (points <= 20) return 2;
  if (points <= 30) return 3;
  // The integer conversion of the division rounds halves to even.
  return std::max(1, static_cast<int>(std::nearbyint(points / 16.0)));
}

std::vector<std::string> PeriodLabels(int begin_year, int begin_period, int seasonality,
                                      int count) {
  std::vector<std::string> labels;
  labels.reserve(std::max(count, 0));
  int year = begin_year;
  int period = begin_period;
  for (int i = 0; i < count; ++i) {
    if (seasonality <= 1) {
      labels.push_back(std::to_string(year));
      ++year;
    } else {
      labels.push_back(std::to_string(year) + "/" + std::to_string(period));
      if (++period > seasonality) {
        period = 1;
        ++year;
      }
    }
  }
  return labels;
}

std::string TodayText() {
  std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  std::tm local{};
  localtime_r(&now, &local);
  char text[40];
  std::snprintf(text, sizeof text, "%02d/%02d/%04d", local.tm_mon + 1, local.tm_mday,
                local.tm_year + 1900);
  return text;
}

std::optional<GraphPlan> PlanGraph(const GraphInput& in, GraphKind kind, bool no_limits) {
  const size_t obs = in.actuals.size();
  const size_t fc = in.forecasts.size();
  const size_t skip = static_cast<size_t>(std::max(in.leading_left_out, 0));
  const bool history = kind != GraphKind::Fore;
  const bool future = kind == GraphKind::ActFore || kind == GraphKind::FitFore ||
                      kind == GraphKind::ActFitFore || kind == GraphKind::Fore;
  const size_t points = (history ? obs : 0) + (future ? fc : 0);
  if (points == 0) return std::nullopt;
  if (future && fc == 0) return std::nullopt;
  const size_t fc_offset = history ? obs : 0;

  GraphPlan plan;
  plan.kind = kind;
  plan.file_name = in.series_name + Info(kind).file_suffix;

  auto add = [&](LineRole role, const char* legend, Values values) {
    plan.lines.push_back(GraphLine{role, legend, std::move(values)});
  };
  auto actual = [&] { return Place(in.actuals, obs, 0, points); };
  auto fitted = [&] { return Place(in.fitted, obs, 0, points, skip); };
  auto forecast = [&](const std::vector<double>& column) {
    return Place(column, fc, fc_offset, points);
  };

  switch (kind) {
    case GraphKind::Act:
      add(LineRole::Actual, "Actual Data", actual());
      break;
    case GraphKind::ActCleanse:
      add(LineRole::Actual, "Actual Data", actual());
      add(LineRole::Cleansed, "Cleansed    ", Place(in.cleansed, obs, 0, points, skip));
      break;
    case GraphKind::ActFit:
      add(LineRole::Actual, "Actual Data", actual());
      add(LineRole::Fitted, "Fit    ", fitted());
      break;
    case GraphKind::ActFore:
      add(LineRole::Actual, "Actuals ", actual());
      add(LineRole::Forecast, "Forecasts", forecast(in.forecasts));
      if (!no_limits) {
        add(LineRole::Lower, "Lower ", forecast(in.lower));
        add(LineRole::Upper, "Upper ", forecast(in.upper));
      }
      break;
    case GraphKind::ActFitFore:
      add(LineRole::Actual, "Actual", actual());
      add(LineRole::Fitted, "Fitted", fitted());
      add(LineRole::Forecast, "Forecast", forecast(in.forecasts));
      if (!no_limits) {
        add(LineRole::Lower, "Lower", forecast(in.lower));
        add(LineRole::Upper, "Upper", forecast(in.upper));
      }
      break;
    case GraphKind::ActRes:
      add(LineRole::Actual, "Actual Data", actual());
      add(LineRole::Residual, "Residuals   ", Place(in.residuals, obs, 0, points, skip));
      plan.secondary_line = 1;
      break;
    case GraphKind::FitFore:
      add(LineRole::Fitted, "Fitted", fitted());
      add(LineRole::Forecast, "Forecasts", forecast(in.forecasts));
      if (!no_limits) {
        add(LineRole::Lower, "Lower", forecast(in.lower));
        add(LineRole::Upper, "Upper", forecast(in.upper));
      }
      break;
    case GraphKind::Fore:
      add(LineRole::Forecast, "Forecasts", forecast(in.forecasts));
      if (!no_limits) {
        add(LineRole::Lower, "Lower ", forecast(in.lower));
        add(LineRole::Upper, "Upper ", forecast(in.upper));
      }
      break;
    case GraphKind::Res:
      add(LineRole::Residual, "Residuals", Place(in.residuals, obs, 0, points, skip));
      plan.zero_line = true;
      break;
  }
  for (const auto& line : plan.lines) {
    if (!HasValue(line.values)) return std::nullopt;
  }

  bool first = true, first2 = true;
  for (size_t k = 0; k < plan.lines.size(); ++k) {
    const bool secondary = static_cast<int>(k) == plan.secondary_line;
    double& low = secondary ? plan.y2_min : plan.y_min;
    double& high = secondary ? plan.y2_max : plan.y_max;
    bool& none_yet = secondary ? first2 : first;
    for (const auto& v : plan.lines[k].values) {
      if (!v) continue;
      if (none_yet || *v < low) low = *v;
      if (none_yet || *v > high) high = *v;
      none_yet = false;
    }
  }
  if (plan.zero_line) {
    plan.y_min = std::min(plan.y_min, 0.0);
    plan.y_max = std::max(plan.y_max, 0.0);
  }
  if (plan.secondary_line >= 0) {
    plan.y2_min = std::min(plan.y2_min, 0.0);
    plan.y2_max = std::max(plan.y2_max, 0.0);
  }

  // The forecast-only graph is labelled from the period after the last observation.
  std::vector<std::string> all = PeriodLabels(in.begin_year, in.begin_period, in.seasonality,
                                              static_cast<int>(obs + (future ? fc : 0)));
  plan.labels.assign(all.end() - static_cast<long>(points), all.end());
  plan.label_step = LabelStep(static_cast<int>(points));
  if (future && history) plan.forecast_origin = static_cast<int>(obs);

  const TitleText title = TitleFor(kind);
  const std::string date = in.date_text.empty() ? TodayText() : in.date_text;
  plan.title = in.series_name + (no_limits ? title.without_limits : title.with_limits) + date + ")";
  plan.x_title = "Periods From " + plan.labels.front() + " to " + plan.labels.back() +
                 "(Seasonality=" + std::to_string(in.seasonality) + ")";
  return plan;
}

}  // namespace tessaly::report
