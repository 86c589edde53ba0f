// Pooled cross-sections, the identification of a pooled model: the tests on the groups
// together (seasonality, unit root), the search of the ARMA orders on the pooled likelihood,
// and the structure of a preset or of the user's model over the groups.
#include "engine/model/pooled_parts.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <numeric>
#include <tuple>

#include <Eigen/Dense>
#include <boost/math/distributions/fisher_f.hpp>

#include "engine/model/arma.h"
#include "engine/model/equation_text.h"
#include "engine/model/estimate_parts.h"
#include "engine/model/forecast.h"
#include "engine/model/model_parts.h"
#include "engine/model/regression_noise.h"
#include "engine/model/search.h"
#include "engine/model/series_stats.h"
#include "engine/model/simulation.h"
#include "engine/model/structured.h"
#include "engine/model/texts.h"
#include "engine/model/transform.h"
#include "engine/model/unit_root.h"

namespace quorvane::pooled_parts {

namespace {

// The most common of the groups' choices (the larger on a tie).
int MostCommon(const std::vector<int>& v) {
  std::map<int, int> count;
  for (int x : v) ++count[x];
  int best = 0, best_count = -1;
  for (const auto& [value, c] : count)
    if (c >= best_count) {
      best = value;
      best_count = c;
    }
  return best;
}

// Whether the groups share a seasonal pattern: an F-test of period dummies on the first
// differences of all groups together, at 1 %. Short groups make the seasonal strength of
// one group an unreliable guide, the groups together do not.
bool PooledSeasonalityTest(const std::vector<std::vector<double>>& groups, int period, double& F, double& p_value) {
  F = 0.0;
  p_value = 1.0;
  if (period < 2) return false;
  std::vector<double> sum(period, 0.0);
  std::vector<int> count(period, 0);
  double total = 0.0;
  int n = 0;
  for (const auto& seg : groups)
    for (size_t t = 1; t < seg.size(); ++t) {
      const double v = seg[t] - seg[t - 1];
      sum[t % period] += v;
      ++count[t % period];
      total += v;
      ++n;
    }
  if (n <= 2 * period) return false;
  const double mean = total / n;
  double ssr0 = 0.0, ssr1 = 0.0;
  for (const auto& seg : groups)
    for (size_t t = 1; t < seg.size(); ++t) {
      const double v = seg[t] - seg[t - 1];
      const int k = static_cast<int>(t % period);
      ssr0 += (v - mean) * (v - mean);
      ssr1 += (v - sum[k] / count[k]) * (v - sum[k] / count[k]);
    }
  if (!(ssr1 > 0.0)) return ssr0 > 0.0;
  const double df1 = period - 1, df2 = n - period;
  F = ((ssr0 - ssr1) / df1) / (ssr1 / df2);
  p_value = F > 0.0 ? boost::math::cdf(boost::math::complement(boost::math::fisher_f(df1, df2), F)) : 1.0;
  return p_value < 0.01;
}

// The t statistic of rho in dw(t) = a + rho w(t-1) + sum c_k dw(t-k) + e(t), the
// coefficients common to the groups and each group's rows from its own values; `lags`
// receives the number of lagged differences (from the shortest group). NaN when the groups
// are too short or the regression is singular.
double PooledDickeyFuller(const std::vector<std::vector<double>>& groups, int& lags) {
  int shortest = std::numeric_limits<int>::max();
  for (const auto& seg : groups) shortest = std::min(shortest, static_cast<int>(seg.size()));
  lags = std::max(0, static_cast<int>(std::cbrt(std::max(0, shortest - 1))));
  lags = std::min(lags, std::max(0, shortest / 4 - 1));
  std::vector<std::vector<double>> rows;
  std::vector<double> target;
  for (const auto& seg : groups)
    for (int t = lags + 1; t < static_cast<int>(seg.size()); ++t) {
      std::vector<double> row{1.0, seg[t - 1]};
      for (int k = 1; k <= lags; ++k) row.push_back(seg[t - k] - seg[t - k - 1]);
      rows.push_back(std::move(row));
      target.push_back(seg[t] - seg[t - 1]);
    }
  const int m = static_cast<int>(rows.size());
  const int k = 2 + lags;
  if (m <= k + 2) return kNaN;
  Eigen::MatrixXd X(m, k);
  Eigen::VectorXd y(m);
  for (int i = 0; i < m; ++i) {
    for (int j = 0; j < k; ++j) X(i, j) = rows[i][j];
    y(i) = target[i];
  }
  Eigen::ColPivHouseholderQR<Eigen::MatrixXd> qr(X);
  if (qr.rank() < k) return kNaN;
  const Eigen::VectorXd b = qr.solve(y);
  const double s2 = (y - X * b).squaredNorm() / (m - k);
  const Eigen::MatrixXd cov = s2 * (X.transpose() * X).inverse();
  if (!(cov(1, 1) > 0.0)) return kNaN;
  return b(1) / std::sqrt(cov(1, 1));
}

// Stepwise search of the pooled ARMA orders by AICc for the given differencing and
// columns, as the single-series search does it.
ArimaOrders PooledSearch(const FitInput& in, int d, int D, int period, const SearchOptions& o, std::string& story) {
  const bool seasonal = period > 1;
  const bool constant_ok = o.allow_constant && d + D <= 1;
  int smallest = std::numeric_limits<int>::max();
  for (const auto& seg : in.z) smallest = std::min(smallest, static_cast<int>(seg.size()));
  SearchOptions limits = o;
  if (seasonal) {
    // Seasonal orders need cycles to estimate them, in every group.
    const int usable = smallest - d - D * period;
    const int cap = std::max(0, usable / (2 * period));
    limits.max_P = std::min(o.max_P, cap);
    limits.max_Q = std::min(o.max_Q, cap);
  }
  const ArimaFit best = StepwiseWalk(
      d, D, period, limits,
      [&](const ArimaOrders& s, const ConvergenceCriteria& quick, const ArmaCoefficients* start) {
        return FitPooledRegressionArima(in.z, in.X, s, quick, false, start).arima;
      },
      [&](const ArimaOrders& s, const ArimaFit& f, bool usable) {
        story += s.Name() + (usable ? ": AICc " + Format("%.3f", f.aicc) : std::string(": not usable")) + "; ";
      });
  if (!best.ok) {
    ArimaOrders s;
    s.d = d;
    s.D = D;
    s.period = seasonal ? period : 1;
    s.constant = constant_ok;
    story += "no model of the search could be estimated; ";
    return s;
  }
  return best.orders;
}

// A column over each group: `make(length)` for the group's own observations (and the
// forecast periods after the last group), each group counted from its own start.
PooledColumn GroupColumn(const PooledData& d, std::string term, std::string kind,
                         const std::function<std::vector<double>(int)>& make) {
  PooledColumn c;
  c.term = std::move(term);
  c.kind = std::move(kind);
  for (size_t g = 0; g < d.sizes.size(); ++g)
    c.values.push_back(make(d.sizes[g] + (g + 1 == d.sizes.size() ? d.horizon : 0)));
  return c;
}

// The paths of an input over each group (the last followed by its future values, or by
// its own model's forecasts for type 0), with `extra` periods for leads.
std::vector<std::vector<double>> InputPaths(const ModelingProblem& problem, const PooledData& d,
                                            const InputSeries& input, int extra, std::vector<std::string>* notes) {
  std::vector<std::vector<double>> paths;
  const auto history = SplitGroups(input.history, d.sizes);
  for (size_t g = 0; g < d.sizes.size(); ++g) {
    const bool last = g + 1 == d.sizes.size();
    InputSeries seg;
    seg.name = input.name;
    seg.type = input.type;
    seg.history = history[g];
    if (last) {
      seg.retained = input.retained;
      seg.future = input.future;
    }
    paths.push_back(InputPath(seg, d.sizes[g], last ? d.horizon : 0, extra, problem.rules, last ? notes : nullptr,
                              problem.seasonality));
  }
  return paths;
}

PooledColumn InputColumn(const PooledData& d, const std::vector<std::vector<double>>& paths, const std::string& name,
                         int lag, double delta) {
  PooledColumn c;
  c.input = name;
  c.kind = "input";
  c.lag = lag;
  c.denominator = delta;
  c.term = name + (lag > 0 ? " LAG " + std::to_string(lag) : lag < 0 ? " LEAD " + std::to_string(-lag) : "");
  for (size_t g = 0; g < d.sizes.size(); ++g)
    c.values.push_back(
        LagColumn(paths[g], lag, delta, d.sizes[g] + (g + 1 == d.sizes.size() ? d.horizon : 0)));
  return c;
}

}  // namespace

// The preset's structure in its ARIMA and regression form (trends and seasonal terms counted
// from each group's start). False, with the code in r, when it does not suit the groups.
bool PresetStructure(const ModelingProblem& problem, const PooledData& d, PooledModel& m, std::vector<Note>& notes,
                     ModelResult& r) {
  const int obj = problem.objective;
  const int smallest = *std::min_element(d.sizes.begin(), d.sizes.end());
  m.name = PresetName(obj);
  ArimaOrders& a = m.noise;
  const int s = problem.seasonality;
  PresetNoise(obj, s, a);
  auto minor_of = [&](int t) { return ((problem.begin_period - 1 + t) % s + s) % s; };
  switch (obj) {
    case 8:
    case 9: m.columns.push_back(GroupColumn(d, "TREND", "trend", TrendColumn)); break;
    case 10: {
      for (int k = 1; k <= std::min(s / 2, 6); ++k) {
        auto wave = [&, k](bool cosine) {
          return [&, k, cosine](int length) {
            std::vector<double> x(length);
            for (int t = 0; t < length; ++t) {
              const double w = 2.0 * M_PI * k * (problem.begin_period - 1 + t) / s;
              x[t] = cosine ? std::cos(w) : std::sin(w);
            }
            return x;
          };
        };
        m.columns.push_back(GroupColumn(d, "COS(" + std::to_string(k) + ")", "fourier", wave(true)));
        if (2 * k != s) m.columns.push_back(GroupColumn(d, "SIN(" + std::to_string(k) + ")", "fourier", wave(false)));
      }
      break;
    }
    case 11:
      a.d = 2;
      a.q = 2;
      for (int j = 0; j + 1 < s; ++j)
        m.columns.push_back(GroupColumn(d, "SEASON " + std::to_string(j + 1), "seasonal", [&, j](int length) {
          std::vector<double> x(length);
          for (int t = 0; t < length; ++t) x[t] = minor_of(t) == j ? 1.0 : (minor_of(t) == s - 1 ? -1.0 : 0.0);
          return x;
        }));
      break;
    case 51:
    case 52: {
      std::vector<std::string> found;
      for (const auto& input : problem.inputs)
        m.columns.push_back(InputColumn(d, InputPaths(problem, d, input, 0, &found), input.name, 0, 0.0));
      for (const auto& t : found) notes.push_back({"Inputs", t});
      break;
    }
    default: break;
  }
  if ((a.D > 0 || a.P > 0 || a.Q > 0) && smallest < 2 * a.period + 3) {
    r.error_code = kCodeEstimation;
    r.warnings.push_back("Too few observations in a group (" + std::to_string(smallest) +
                         ") for the seasonal preset " + m.name + ".");
    return false;
  }
  notes.push_back({"Model", "Preset model " + std::to_string(obj) + ", " + m.name + ", in its ARIMA form: " +
                                a.Name() +
                                (m.columns.empty() ? std::string()
                                                   : " with " + std::to_string(m.columns.size()) + " regressor(s)") +
                                ", no power transform."});
  return true;
}

// The user's model of STARTMOD.123: its noise and its input terms. False, with 2190 in r,
// when it cannot be used on the groups.
bool UserStructure(const ModelingProblem& problem, const PooledData& d, PooledModel& m, std::vector<Note>& notes,
                   ModelResult& r) {
  const int smallest = *std::min_element(d.sizes.begin(), d.sizes.end());
  m.name = "USER MODEL";
  const ModelBlock& noise = problem.start_model[0];
  std::string why;
  auto malformed = [&](const std::string& reason) {
    r.error_code = kCodeModelMalformed;
    r.warnings.push_back(" STARTMOD.123 MALFORMED");
    r.warnings.push_back("The starting model cannot be used: " + reason + ".");
    return false;
  };
  if (!NoiseOrdersFromBlock(noise, problem.seasonality, m.noise, m.start, why)) return malformed(why);
  m.has_start = true;
  m.lambda = noise.lambda;
  if (!(m.lambda >= -1.0 && m.lambda <= 1.0)) return malformed("a lambda of " + Format("%g", noise.lambda));
  std::vector<std::string> found;
  for (size_t k = 1; k < problem.start_model.size(); ++k) {
    const ModelBlock& b = problem.start_model[k];
    auto input = std::find_if(problem.inputs.begin(), problem.inputs.end(), [&](const InputSeries& s) {
      return s.name.size() == b.name.size() &&
             std::equal(s.name.begin(), s.name.end(), b.name.begin(), [](char x, char y) {
               return std::toupper(static_cast<unsigned char>(x)) == std::toupper(static_cast<unsigned char>(y));
             });
    });
    if (input == problem.inputs.end()) return malformed("the input " + b.name + " is not in the dataset");
    double delta = 0.0;
    const std::string bad = InputDenominator(b, delta);
    if (!bad.empty()) return malformed(bad);
    const int max_lead = MaxLead(b);
    const auto paths = InputPaths(problem, d, *input, max_lead, &found);
    for (const auto& poly : b.second)
      for (int pw : poly.powers) {
        PooledColumn c = InputColumn(d, paths, input->name, pw, delta);
        if (pw == 0) c.term = input->name + " LAG 0";
        m.columns.push_back(std::move(c));
        m.leading = std::max(m.leading, pw);
      }
  }
  for (const auto& t : found) notes.push_back({"Inputs", t});
  if (m.leading >= smallest - 2) return malformed("its lags reach beyond the observations of a group");
  notes.push_back({"Model", "The user's model from STARTMOD.123: " + m.noise.Name() +
                                (m.columns.empty() ? std::string()
                                                   : " with " + std::to_string(m.columns.size()) + " input term(s)") +
                                (problem.rules.allow_modifications ? "; ALLOWMOD.QVX: it may be tuned and extended."
                                                           : "; its structure is held fixed.")});
  return true;
}

// Automatic identification on the groups together: inputs at lag 0, the transform, the
// differencing and the ARMA orders.
void IdentifyStructure(const ModelingProblem& problem, const PooledData& d, int period, const ConvergenceCriteria& crit,
                       PooledModel& m, std::vector<Note>& notes, std::vector<std::string>& warnings) {
  const EngineRules& rules = problem.rules;
  int total = 0;
  for (int s : d.sizes) total += s;
  // Input series enter at lag 0; the necessity test keeps those that matter.
  std::vector<std::string> found;
  for (const auto& input : problem.inputs)
    m.columns.push_back(InputColumn(d, InputPaths(problem, d, input, 0, &found), input.name, 0, 0.0));
  for (const auto& t : found) notes.push_back({"Inputs", t});
  if (!problem.inputs.empty())
    notes.push_back({"Inputs", "In a pooled cross-section each input series enters at lag 0, with one "
                               "coefficient for all groups."});

  // The power transform from the rules' list by the pooled likelihood (with the
  // Jacobian of every group), under a fixed ARIMA(1,d,1)(0,D,1).
  std::vector<double> candidates;
  for (double l : rules.lambdas) {
    bool applies = std::isfinite(l) && l >= -1.0 && l <= 1.0;
    for (const auto& seg : d.y) applies = applies && PowerApplies(seg, l);
    if (applies) candidates.push_back(l);
  }
  const bool only_none = candidates.empty() || (candidates.size() == 1 && std::fabs(candidates[0] - 1.0) < 1e-12);
  auto differencing = [&](const std::vector<std::vector<double>>& groups, int& D, int& dd, std::string* story) {
    std::vector<int> Ds, ds;
    for (const auto& seg : groups) Ds.push_back(period > 1 ? SeasonalDifferences(seg, period, nullptr) : 0);
    double F = 0.0, p_value = 1.0;
    const bool seasonal = PooledSeasonalityTest(groups, period, F, p_value);
    D = seasonal ? MostCommon(Ds) : 0;
    for (const auto& seg : groups) {
      const std::vector<double> w = Difference(seg, period, D);
      ds.push_back(RegularDifferences(w, static_cast<int>(seg.size()) - period * D > 10 ? 2 : 1, nullptr));
    }
    // The regular differences from the groups together: an augmented Dickey-Fuller
    // regression pooled over the groups (common coefficients, no lag crossing a
    // boundary), its unit root rejected at 5 % (t below -2.86) or one more difference.
    int max_d = 2;
    for (const auto& seg : groups)
      if (static_cast<int>(seg.size()) - period * D <= 10) max_d = 1;
    std::string adf_story;
    dd = 0;
    for (; dd < max_d; ++dd) {
      std::vector<std::vector<double>> w;
      for (const auto& seg : groups) w.push_back(Difference(Difference(seg, period, D), 1, dd));
      int lags = 0;
      const double t = PooledDickeyFuller(w, lags);
      if (!std::isfinite(t)) break;
      adf_story += "after " + std::to_string(dd) + " difference(s) t " + Format("%.3f", t) + " with " +
                   std::to_string(lags) + " lag(s); ";
      if (t < -2.86) break;
    }
    if (story) {
      std::string per;
      for (size_t g = 0; g < ds.size(); ++g)
        per += (g ? ", " : "") + std::to_string(ds[g]) + (period > 1 ? "/" + std::to_string(Ds[g]) : "");
      *story = (period > 1 ? "Seasonal pattern of the groups together: F " + Format("%.3f", F) + ", p-value " +
                                 Format("%.4f", p_value) +
                                 (seasonal ? " (seasonal differencing as the groups ask)" : " (no seasonal differencing)") +
                                 ". "
                           : std::string()) +
               "Differences the groups ask for one by one (regular" + std::string(period > 1 ? "/seasonal" : "") +
               "): " + per + ". The groups together, pooled Dickey-Fuller (critical -2.86): " + adf_story + std::to_string(dd) +
               " regular and " + std::to_string(D) + " seasonal difference(s).";
    }
  };
  if (!only_none && total < kMinForTransform) {
    notes.push_back({texts::kHeadTransform, "Too few observations (" + std::to_string(total) +
                                                ") to choose a power transform; none is used."});
  } else if (!only_none) {
    int D0 = 0, d0 = 0;
    differencing(d.y, D0, d0, nullptr);
    ArimaOrders s;
    s.p = 1; s.q = 1; s.d = d0; s.D = D0; s.Q = period > 1 ? 1 : 0; s.period = period;
    s.constant = d0 + D0 <= 1;
    double best = -std::numeric_limits<double>::infinity(), ll_none = best;
    std::string story;
    for (double l : candidates) {
      PooledModel trial = m;
      trial.noise = s;
      trial.lambda = l;
      const FitInput in = MakeFitInput(d, trial);
      ConvergenceCriteria quick = crit;
      quick.max_iterations = std::min(std::max(crit.max_iterations, 5), 10);
      quick.polish = false;
      const RegressionArimaFit f = FitPooledRegressionArima(in.z, in.X, s, quick, false);
      if (!f.ok) continue;
      double ll = f.arima.loglik - f.arima.n * std::log(in.scale);
      for (const auto& seg : in.y) ll += BoxCoxLogJacobian(seg, l, s.d + s.D * std::max(1, s.period));
      story += "lambda " + Format("%.2f", l) + ": log-likelihood " + Format("%.3f", ll) + "; ";
      if (std::fabs(l - 1.0) < 1e-12) ll_none = ll;
      if (ll > best) {
        best = ll;
        m.lambda = l;
      }
    }
    if (std::isfinite(ll_none) && best - ll_none < kTransformGain) {
      if (std::fabs(m.lambda - 1.0) > 1e-12) story += "gain below " + Format("%.2f", kTransformGain) + "; ";
      m.lambda = 1.0;
    }
    notes.push_back({texts::kHeadTransform, story + "chosen lambda " + Format("%.2f", m.lambda) + "."});
  } else {
    notes.push_back({texts::kHeadTransform, "No power transform (lambda 1)."});
  }

  // Differencing from the groups together.
  FitInput in = MakeFitInput(d, m);
  int D = 0, dd = 0;
  std::string story;
  differencing(in.z, D, dd, &story);
  notes.push_back({texts::kHeadDifferencing, story});
  if (!m.columns.empty()) {
    // Inputs that make the regression singular (constant within the groups, or copies of
    // one another) are left out rather than losing the dataset.
    ArimaOrders white;
    white.d = dd;
    white.D = D;
    white.period = period;
    white.constant = dd + D <= 1;
    ConvergenceCriteria quick = crit;
    quick.polish = false;
    if (!FitPooledRegressionArima(in.z, in.X, white, quick, false).ok) {
      m.columns.clear();
      in = MakeFitInput(d, m);
      warnings.push_back(std::string(kRedundancyText).substr(1) +
                         " (2155) The input series were left out of the pooled model.");
    }
  }
  SearchOptions so;
  so.criteria = crit;
  if (period > 60) so.max_P = so.max_Q = 0;
  else if (period > 24) so.max_P = so.max_Q = 1;
  std::string trail;
  m.noise = PooledSearch(in, dd, D, period, so, trail);
  notes.push_back({texts::kHeadSearch, "On the pooled likelihood: " + trail + "chosen " + m.noise.Name() + "."});
}
}  // namespace quorvane::pooled_parts
