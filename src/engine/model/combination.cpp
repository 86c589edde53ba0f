// Forecast combination: the automatic model, exponential smoothing and the Theta method,
// averaged.
#include "engine/model/combination.h"

#include <algorithm>
#include <cmath>
#include <string>

#include <boost/math/distributions/normal.hpp>

#include "engine/model/equation_text.h"
#include "engine/model/model_parts.h"
#include "engine/model/structured.h"
#include "engine/model/transform.h"

namespace quorvane {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Seasonal indices of a classical additive decomposition: the deviations from a centred
// moving average of one cycle, averaged by place in the cycle and centred on zero. Index j
// belongs to the observations t with t % period == j.
std::vector<double> SeasonalIndices(const std::vector<double>& z, int period) {
  const int n = static_cast<int>(z.size());
  std::vector<double> sum(period, 0.0), count(period, 0.0);
  const int half = period / 2;
  for (int t = half; t + half < n; ++t) {
    double ma = 0.0;
    if (period % 2 == 0) {
      ma = 0.5 * (z[t - half] + z[t + half]);
      for (int k = t - half + 1; k < t + half; ++k) ma += z[k];
    } else {
      for (int k = t - half; k <= t + half; ++k) ma += z[k];
    }
    sum[t % period] += z[t] - ma / period;
    count[t % period] += 1.0;
  }
  std::vector<double> index(period, 0.0);
  double mean = 0.0;
  for (int j = 0; j < period; ++j) {
    index[j] = count[j] > 0.0 ? sum[j] / count[j] : 0.0;
    mean += index[j] / period;
  }
  for (double& v : index) v -= mean;
  return index;
}

// Sum of squared one-step errors of simple exponential smoothing from level x[0].
double SesErrors(const std::vector<double>& x, double alpha, std::vector<double>* levels) {
  double level = x[0], sse = 0.0;
  if (levels) levels->assign(1, level);
  for (size_t t = 1; t < x.size(); ++t) {
    const double e = x[t] - level;
    sse += e * e;
    level += alpha * e;
    if (levels) levels->push_back(level);
  }
  return sse;
}

// A member's figures on the scale of the data.
struct Member {
  std::string name;
  std::vector<double> fitted, mean, lower, upper;
};

Member FromTransformed(std::string name, const std::vector<double>& fitted, const std::vector<double>& mean,
                       const std::vector<double>& lower, const std::vector<double>& upper, double lambda) {
  Member m;
  m.name = std::move(name);
  auto back = [lambda](const std::vector<double>& v) {
    std::vector<double> out(v.size());
    for (size_t i = 0; i < v.size(); ++i) out[i] = std::isfinite(v[i]) ? InverseBoxCox(v[i], lambda) : kNaN;
    return out;
  };
  m.fitted = back(fitted);
  m.mean = back(mean);
  m.lower = back(lower);
  m.upper = back(upper);
  return m;
}

// The in-sample figures of the average: fitted values where every member has one (the
// automatic model's elsewhere), residuals, and the statistics over the observations fitted.
void AverageInSample(ModelResult& r, const std::vector<double>& y, const std::vector<Member>& members, int period) {
  const int n = static_cast<int>(y.size());
  std::vector<double> used_residuals;
  double sse = 0.0, ape = 0.0, mean = 0.0;
  int ape_n = 0;
  for (int t = 0; t < n; ++t) {
    double sum = 0.0;
    bool all = true;
    for (const Member& m : members) {
      if (t >= static_cast<int>(m.fitted.size()) || !std::isfinite(m.fitted[t])) all = false;
      else sum += m.fitted[t];
    }
    if (!all || r.residuals[t] == 0.0) continue;  // the automatic model's start-up stays as it is
    r.fitted[t] = sum / static_cast<double>(members.size());
    r.residuals[t] = y[t] - r.fitted[t];
    used_residuals.push_back(r.residuals[t]);
    sse += r.residuals[t] * r.residuals[t];
    mean += y[t];
    if (y[t] != 0.0) {
      ape += std::fabs(r.residuals[t] / y[t]);
      ++ape_n;
    }
  }
  const int used = static_cast<int>(used_residuals.size());
  if (used == 0) return;
  mean /= used;
  double sst = 0.0;
  for (int t = 0; t < n; ++t)
    if (r.residuals[t] != 0.0) sst += (y[t] - mean) * (y[t] - mean);
  r.observations = used;
  r.degrees_of_freedom = std::max(1, used - r.parameters);
  r.sse = sse;
  r.variance = sse / r.degrees_of_freedom;
  r.r_squared = sst > 0.0 ? 1.0 - sse / sst : 0.0;
  r.loglik = -0.5 * used * (std::log(2.0 * M_PI * std::max(sse, 1e-300) / used) + 1.0);
  r.aic = -2.0 * r.loglik + 2.0 * r.parameters;
  r.bic = -2.0 * r.loglik + std::log(static_cast<double>(used)) * r.parameters;
  r.mape = ape_n ? 100.0 * ape / ape_n : 0.0;
  FillResidualDiagnostics(r, used_residuals, period, 0, used);
}

}  // namespace

ThetaForecast ThetaMethod(const std::vector<double>& z, int period, int horizon, double coverage) {
  ThetaForecast out;
  const int n = static_cast<int>(z.size());
  if (n < 3) return out;
  const bool seasonal = period > 1 && n >= 2 * period;
  const std::vector<double> index = seasonal ? SeasonalIndices(z, period) : std::vector<double>(1, 0.0);
  auto season = [&](int t) { return seasonal ? index[t % period] : 0.0; };
  std::vector<double> x(n);
  for (int t = 0; t < n; ++t) x[t] = z[t] - season(t);

  // The smoothing constant by least squares: a grid, then golden sections around its best.
  double best_alpha = 0.5, best_sse = SesErrors(x, 0.5, nullptr);
  for (double a = 0.02; a < 1.0; a += 0.04) {
    const double sse = SesErrors(x, a, nullptr);
    if (sse < best_sse) {
      best_sse = sse;
      best_alpha = a;
    }
  }
  double lo = std::max(0.01, best_alpha - 0.04), hi = std::min(0.99, best_alpha + 0.04);
  const double g = 0.5 * (std::sqrt(5.0) - 1.0);
  for (int it = 0; it < 30; ++it) {
    const double a1 = hi - g * (hi - lo), a2 = lo + g * (hi - lo);
    if (SesErrors(x, a1, nullptr) < SesErrors(x, a2, nullptr)) hi = a2;
    else lo = a1;
  }
  const double alpha = 0.5 * (lo + hi);
  std::vector<double> levels;
  const double sse = SesErrors(x, alpha, &levels);

  // Half the slope of the least-squares line through the adjusted series.
  double tm = 0.5 * (n - 1), xm = 0.0;
  for (double v : x) xm += v / n;
  double sxy = 0.0, sxx = 0.0;
  for (int t = 0; t < n; ++t) {
    sxy += (t - tm) * (x[t] - xm);
    sxx += (t - tm) * (t - tm);
  }
  const double drift = 0.5 * sxy / sxx;
  const double catch_up = (1.0 - std::pow(1.0 - alpha, n)) / alpha;

  out.alpha = alpha;
  out.drift = drift;
  out.sigma2 = sse / (n - 1);
  out.fitted.assign(n, kNaN);
  for (int t = 1; t < n; ++t)
    out.fitted[t] = levels[t - 1] + drift * (1.0 - std::pow(1.0 - alpha, t)) / alpha + season(t);
  const boost::math::normal normal;
  const double q = boost::math::quantile(normal, 0.5 + std::clamp(coverage, 1.0, 99.99) / 200.0);
  for (int h = 0; h < horizon; ++h) {
    const double f = levels.back() + drift * (h + catch_up) + season(n + h);
    const double se = std::sqrt(out.sigma2 * (1.0 + alpha * alpha * h));
    out.mean.push_back(f);
    out.lower.push_back(f - q * se);
    out.upper.push_back(f + q * se);
  }
  out.ok = std::isfinite(sse) && std::isfinite(drift);
  return out;
}

ModelResult FitCombination(const ModelingProblem& problem, const StageCallback& on_stage,
                           AutomaticModelling automatic) {
  ModelingProblem p = problem;
  p.objective = 0;
  ModelResult r = automatic(p, on_stage);
  if (r.error_code != 0 || r.cancelled || r.description == "CONSTANT") return r;
  std::vector<double> y = problem.y;
  FillMissing(y);
  const int n = static_cast<int>(y.size());
  const int horizon = static_cast<int>(r.forecasts.size());
  const int period = problem.seasonality;
  // Seasonal members where the automatic model found a season worth modelling.
  const bool seasonal = period >= 4 && n >= 2 * period + 3 && r.period == period && (r.D + r.P + r.Q > 0);
  const double lambda = PowerApplies(y, r.lambda) ? r.lambda : 1.0;
  const std::vector<double> z = BoxCox(y, lambda);

  std::vector<Member> members;
  members.push_back({r.description, r.fitted, r.forecasts, r.lower, r.upper});
  std::string why_not;

  ModelingProblem es = p;
  es.y = z;
  es.retained.clear();
  es.horizon = horizon;
  es.objective = seasonal ? 11 : 12;
  es.rules.allow_modifications = false;
  const ModelResult e = FitPreset(es, nullptr);
  if (e.error_code == 0 && static_cast<int>(e.forecasts.size()) == horizon) {
    members.push_back(FromTransformed(PresetName(es.objective), e.fitted, e.forecasts, e.lower, e.upper, lambda));
    for (const Coefficient& c : e.coefficients)
      if (c.kind == "smoothing" || c.kind == "ma") r.coefficients.push_back(c);
    r.parameters += e.parameters;
  } else {
    why_not += " Exponential smoothing could not be fitted.";
  }

  const ThetaForecast th = ThetaMethod(z, seasonal ? period : 1, horizon, problem.rules.forecast_confidence);
  if (th.ok) {
    members.push_back(FromTransformed("THETA", th.fitted, th.mean, th.lower, th.upper, lambda));
    Coefficient a;
    a.term = "THETA ALPHA (LEVEL)";
    a.kind = "smoothing";
    a.value = th.alpha;
    Coefficient b = a;
    b.term = "THETA DRIFT";
    b.value = th.drift;
    r.coefficients.push_back(a);
    r.coefficients.push_back(b);
    r.parameters += 2;
  } else {
    why_not += " The Theta method could not be applied.";
  }

  const double k = static_cast<double>(members.size());
  for (int h = 0; h < horizon; ++h) {
    double f = 0.0, lo = 0.0, hi = 0.0;
    for (const Member& m : members) {
      f += m.mean[h] / k;
      lo += m.lower[h] / k;
      hi += m.upper[h] / k;
    }
    r.forecasts[h] = f;
    r.lower[h] = lo;
    r.upper[h] = hi;
  }
  AverageInSample(r, y, members, period > 1 ? period : 1);

  std::string names, equations;
  for (size_t i = 0; i < members.size(); ++i) names += (i ? " + " : "") + members[i].name;
  const std::string lhs = problem.output_name.empty() ? "Y" : problem.output_name;
  r.equation = lhs + "(t) = [" + names + "] / " + std::to_string(members.size()) + "\n" + r.equation;
  if (th.ok)
    r.equation += "\nTHETA: simple exponential smoothing, alpha " + Format("%.4f", th.alpha) + ", drift " +
                  Format("%.6g", th.drift) + (lambda != 1.0 ? " on " + TransformName(lambda, lhs) : std::string());
  r.description = "COMBINATION OF " + std::to_string(members.size()) + ": " + names;
  r.notes.push_back({"Combination",
                     "The forecasts are the average of " + std::to_string(members.size()) + " methods (" + names +
                         "); the limits are the averages of theirs." + why_not});
  if (!why_not.empty()) r.warnings.push_back("Forecast combination:" + why_not);
  return r;
}

}  // namespace quorvane
