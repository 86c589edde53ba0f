// Intervention detection benchmark.
//
// Synthetic series of several noise structures (white noise, AR(1), IMA(1,1), a seasonal
// airline-type model), lengths 60, 120 and 240, two effect sizes, with pulses, level shifts,
// seasonal pulses and local trends planted at known places (seeded). Each series goes
// through identification and detection at the default rules; we count the planted effects
// found at the right observation, found within one observation, and the detections that
// match nothing planted (false alarms, per 100 observations), per type and overall. Series
// with nothing planted are run too, for the false alarms alone. Then the Nile flows
// (1871-1970), whose level fell from 1899 on.
//
// The "best place" column is the share of planted effects whose own observation is where
// the model of the true orders, with every planted effect known, fits best: no detector can
// place more of them exactly than that. The same fit gives each effect its "known-place t":
// effects are also counted by that, since one the data show at a t of 3 is found about as
// often as a test at the critical value passes it, whatever the detector.
//
// Usage: bench_engine_interventions [--engine | --known-orders] [replications per cell, default 20]
//   --engine: each series through automatic modelling (FitAndForecast) as the engine runs
//   it, instead of the identification and detection calls made here directly.
//   --known-orders: detection alone under the orders the noise was made with.
//   BENCH_VERBOSE=1 lists the effects missed; BENCH_VERBOSE=2 adds what was planted, the noise
//   coefficients, what was found and the detection's trail. BENCH_SEED=<seed> runs the one
//   series of that seed (as the missed lines name it).
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "engine/model.h"
#include "engine/model/estimate.h"
#include "engine/model/interventions.h"
#include "engine/model/search.h"
#include "engine/model/series_stats.h"
#include "engine/model/unit_root.h"

using namespace quorvane;

namespace {

struct Planted {
  int type;
  int index;
};

struct Structure {
  const char* name;
  int period;
  double ar;      // AR(1)
  int d;          // regular differences
  double ma;      // MA(1), plus sign convention
  int D;          // seasonal differences
  double sma;     // seasonal MA(1)
};

// Gaussian noise of the structure with innovation sd 1, after a burn-in.
std::vector<double> Noise(const Structure& s, int n, std::mt19937& rng) {
  std::normal_distribution<double> N(0.0, 1.0);
  const int burn = 100;
  const int total = n + burn;
  const int P = std::max(1, s.period);
  std::vector<double> a(total), w(total, 0.0);
  for (double& v : a) v = N(rng);
  for (int t = 0; t < total; ++t) {
    double v = a[t];
    if (t >= 1) v += s.ma * a[t - 1];
    if (s.sma != 0.0 && t >= P) v += s.sma * a[t - P];
    if (s.sma != 0.0 && t >= P + 1) v += s.ma * s.sma * a[t - P - 1];
    if (t >= 1) v += s.ar * w[t - 1];
    w[t] = v;
  }
  std::vector<double> y = w;
  for (int k = 0; k < s.D; ++k)
    for (int t = P; t < total; ++t) y[t] += y[t - P];
  for (int k = 0; k < s.d; ++k)
    for (int t = 1; t < total; ++t) y[t] += y[t - 1];
  return std::vector<double>(y.begin() + burn, y.end());
}

// What the engine would do before detection: differencing from the unit-root tests and the
// stepwise order search, then the chosen model with standard errors.
double g_detect_ms = 0.0;  // time of the last call spent in detection alone

DetectionResult Detect(const std::vector<double>& y, int seasonality, const EngineRules& rules) {
  int period = seasonality > 1 ? seasonality : 1;
  const int n = static_cast<int>(y.size());
  if (period > 1 && n < 2 * period + 3) period = 1;
  ConvergenceCriteria crit;
  crit.sse_change_pct = rules.sse_change_pct;
  crit.parameter_change_pct = rules.parameter_change_pct;
  crit.max_iterations = rules.max_iterations;
  const int D = period > 1 ? SeasonalDifferences(y, period, nullptr) : 0;
  const int max_d = n - period * D > 10 ? 2 : 1;
  const int d = RegularDifferences(Difference(y, period, D), max_d, nullptr);
  SearchOptions so;
  so.criteria = crit;
  ArimaFit best = StepwiseSearch(y, d, D, period, so, nullptr);
  ArimaFit fit = FitArima(y, best.orders, crit, true);
  if (!fit.ok) fit = best;
  const DetectionOptions opt = DetectionOptionsFromRules(rules, period, crit);
  const auto t0 = std::chrono::steady_clock::now();
  DetectionResult r = DetectWithIdentification(y, fit, opt, so);
  g_detect_ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count();
  return r;
}

// The same through automatic modelling itself (transform, identification, necessity,
// detection), reading what it returns.
DetectionResult DetectByEngine(const std::vector<double>& y, int seasonality, const EngineRules& rules) {
  ModelingProblem p;
  p.output_name = "Y";
  p.y = y;
  p.seasonality = seasonality;
  p.begin_year = 2000;
  p.begin_period = 1;
  p.horizon = 12;
  p.rules = rules;
  const auto t0 = std::chrono::steady_clock::now();
  const ModelResult r = FitAndForecast(p, nullptr);
  g_detect_ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count();
  DetectionResult out;
  out.fit.ok = r.error_code == 0;
  for (const auto& iv : r.interventions) {
    DetectedIntervention d;
    d.type = iv.type;
    d.index = iv.observation - 1;
    d.impact = iv.impact;
    d.t_value = iv.t_value;
    out.found.push_back(d);
  }
  for (const auto& n : r.notes)
    if (n.heading == kHeadInterventions) out.trail.push_back(n.text);
  // The verbose lines print the regular AR and MA coefficients, in order of lag.
  for (const auto& c : r.coefficients) {
    if (c.kind != "ar" && c.kind != "ma") continue;
    std::vector<double>& v = c.kind == "ar" ? out.fit.arima.coef.ar : out.fit.arima.coef.ma;
    if (c.lag >= 1 && static_cast<int>(v.size()) < c.lag) v.resize(c.lag, 0.0);
    if (c.lag >= 1) v[c.lag - 1] = c.value;
  }
  out.fit.arima.orders.p = r.p;
  out.fit.arima.orders.d = r.d;
  out.fit.arima.orders.q = r.q;
  out.fit.arima.orders.P = r.P;
  out.fit.arima.orders.D = r.D;
  out.fit.arima.orders.Q = r.Q;
  out.fit.arima.orders.period = r.period;
  out.fit.arima.orders.constant = r.has_constant;
  return out;
}

bool g_engine = false;  // --engine: through FitAndForecast
bool g_known = false;   // --known-orders: detection with the orders the noise was made with
ArimaOrders g_true_orders;

// Detection alone, under the true orders (estimated coefficients): what identification
// costs, by comparison with the default mode.
DetectionResult DetectKnown(const std::vector<double>& y, int seasonality, const EngineRules& rules) {
  ConvergenceCriteria crit;
  crit.max_iterations = rules.max_iterations;
  const DetectionOptions opt = DetectionOptionsFromRules(rules, seasonality, crit);
  const ArimaFit fit = FitArima(y, g_true_orders, crit, true);
  const auto t0 = std::chrono::steady_clock::now();
  DetectionResult r = DetectInterventions(y, fit, opt);
  g_detect_ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count();
  return r;
}

DetectionResult Run(const std::vector<double>& y, int seasonality, const EngineRules& rules) {
  if (g_known) return DetectKnown(y, seasonality, rules);
  return g_engine ? DetectByEngine(y, seasonality, rules) : Detect(y, seasonality, rules);
}

// The default rules as ENGINE.CND ships them (the parts detection reads).
EngineRules DefaultRules() {
  EngineRules r;
  r.sufficiency_ds_level = 90.0;
  r.max_outliers = 5;
  r.include_pulse = r.include_step = r.include_seasonal_pulse = r.include_local_trend = true;
  r.necessity_level = 90.0;
  r.sufficiency_ss_level = 95.0;
  r.max_iterations = 20;
  return r;
}

struct Tally {
  int planted = 0, exact = 0, near = 0, near3 = 0, detected = 0, false_alarms = 0;
  int best_place = 0;  // the true place is where the true model fits the effect best
  int best_near = 0;   // ... or within one observation of it
  // Within reach: the true place fits best (or within one) and the known-place t passes the
  // critical value of the series' length; and of those, the ones found there (within one).
  int reach = 0, reach_exact = 0, reach_near = 0, reach_near_found = 0;
  long observations = 0;
};

const char* kTypeNames[] = {"", "pulse", "level shift", "seasonal pulse", "local trend"};

// For each planted effect: where, within three observations of its own place, does the noise
// model of the true orders with all the planted effects (the others at their places) fit it
// best? The share of effects whose best place is their own bounds what any detector can place
// exactly; the share within one observation bounds the "within 1" column: where the data
// themselves favour a neighbouring observation, no method finds the true one.
//
// `known_t` receives each effect's t-value in that same fit at its true place: how clearly
// the data show it when nothing has to be searched for.
std::vector<int> BestOffsets(const std::vector<double>& y, const std::vector<Planted>& planted, int period,
                             const ArimaOrders& orders, std::vector<double>* known_t) {
  const int n = static_cast<int>(y.size());
  ConvergenceCriteria crit;
  crit.polish = false;
  std::vector<std::vector<double>> X;
  for (const Planted& p : planted) X.push_back(InterventionRegressor(p.type, p.index, period, n));
  const RegressionArimaFit truth = FitRegressionArima(y, X, orders, crit, true);
  std::vector<int> out(planted.size(), 0);
  known_t->assign(planted.size(), 0.0);
  if (!truth.ok) return out;
  for (size_t j = 0; j < planted.size(); ++j)
    if (j < truth.beta_se.size() && truth.beta_se[j] > 0.0) (*known_t)[j] = truth.beta[j] / truth.beta_se[j];
  for (size_t j = 0; j < planted.size(); ++j) {
    double best = truth.arima.loglik + 1e-9;
    for (int T = planted[j].index - 3; T <= planted[j].index + 3; ++T) {
      if (T == planted[j].index || T < 1 || T >= n - 1) continue;
      std::vector<std::vector<double>> Xt = X;
      Xt[j] = InterventionRegressor(planted[j].type, T, period, n);
      const RegressionArimaFit other = FitRegressionArima(y, Xt, orders, crit, false, &truth.arima.coef);
      if (other.ok && other.arima.loglik > best) {
        best = other.arima.loglik;
        out[j] = T - planted[j].index;
      }
    }
  }
  return out;
}

}  // namespace

// Kept whole: the benchmark's options, runs and printed tables one after another, in the
// order its output shows them.
int main(int argc, char** argv) {
  int reps = 20;
  for (int i = 1; i < argc; ++i) {
    if (std::string(argv[i]) == "--engine") g_engine = true;
    else if (std::string(argv[i]) == "--known-orders") g_known = true;
    else reps = std::max(1, std::atoi(argv[i]));
  }
  const Structure structures[] = {
      {"white noise", 1, 0.0, 0, 0.0, 0, 0.0},
      {"AR(1) 0.6", 1, 0.6, 0, 0.0, 0, 0.0},
      {"IMA(1,1) -0.5", 1, 0.0, 1, -0.5, 0, 0.0},
      {"airline 12", 12, 0.0, 1, -0.4, 1, -0.6},
  };
  const int lengths[] = {60, 120, 240};
  // Effect sizes in innovation standard deviations: pulse, level shift, seasonal pulse,
  // and the trend's slope per period.
  struct Size {
    const char* name;
    double pulse, step, seasonal, slope;
  };
  const Size sizes[] = {{"large", 6.0, 5.0, 6.0, 0.8}, {"moderate", 4.5, 3.5, 4.5, 0.5}};
  const EngineRules rules = DefaultRules();
  const double detection_confidence = DetectionOptionsFromRules(rules, 1, ConvergenceCriteria{}).confidence;

  std::map<int, Tally> by_type;
  std::map<std::string, Tally> by_structure, by_size, by_length;
  Tally total, clean;
  Tally by_clarity[4];
  std::vector<double> times, detect_times;
  uint32_t seed = 20260;
  for (const Structure& s : structures) {
    g_true_orders = ArimaOrders{};
    g_true_orders.p = s.ar != 0.0 ? 1 : 0;
    g_true_orders.d = s.d;
    g_true_orders.q = s.ma != 0.0 ? 1 : 0;
    g_true_orders.D = s.D;
    g_true_orders.Q = s.sma != 0.0 ? 1 : 0;
    g_true_orders.period = s.period;
    g_true_orders.constant = s.d + s.D == 0;
    for (int n : lengths) {
      if (s.period > 1 && n < 5 * s.period) continue;
      for (const Size& size : sizes) {
        for (int rep = 0; rep < reps; ++rep) {
          std::mt19937 rng(++seed);
          if (std::getenv("BENCH_SEED") && std::atoi(std::getenv("BENCH_SEED")) != static_cast<int>(seed)) continue;
          std::vector<double> y = Noise(s, n, rng);
          for (double& v : y) v += 100.0;
          // One effect per 60 observations, at least 10 % in from either end and apart
          // from each other; the type at random among those that apply.
          const int count = n / 60;
          std::vector<Planted> planted;
          std::uniform_int_distribution<int> where(n / 10, n - n / 10 - 1);
          std::vector<int> types = {kPulse, kLevelShift, kLocalTrend};
          if (s.period > 1) types.push_back(kSeasonalPulse);
          std::uniform_int_distribution<int> which(0, static_cast<int>(types.size()) - 1);
          std::bernoulli_distribution sign(0.5);
          for (int k = 0, guard = 0; k < count && guard < 1000; ++guard) {
            Planted p{types[which(rng)], where(rng)};
            if (p.type == kSeasonalPulse && p.index > n - 2 * s.period) continue;
            if (p.type == kLocalTrend && p.index > n - 12) continue;
            bool clash = false;
            for (const Planted& q : planted) clash = clash || std::abs(q.index - p.index) < 8;
            if (clash) continue;
            planted.push_back(p);
            ++k;
            const double mag = (p.type == kPulse ? size.pulse
                                : p.type == kLevelShift ? size.step
                                : p.type == kSeasonalPulse ? size.seasonal
                                                           : size.slope) *
                               (sign(rng) ? 1.0 : -1.0);
            const std::vector<double> x = InterventionRegressor(p.type, p.index, s.period, n);
            for (int t = 0; t < n; ++t) y[t] += mag * x[t];
          }
          const auto t0 = std::chrono::steady_clock::now();
          const DetectionResult res = Run(y, s.period, rules);
          times.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count());
          detect_times.push_back(g_detect_ms);

          const double critical = InterventionCriticalValue(detection_confidence, n);
          std::vector<double> known_t;
          const std::vector<int> best_offset = BestOffsets(y, planted, s.period, g_true_orders, &known_t);
          Tally one;
          one.observations = n;
          one.detected = static_cast<int>(res.found.size());
          std::vector<bool> matched(res.found.size(), false);
          for (size_t k = 0; k < planted.size(); ++k) {
            const Planted& p = planted[k];
            Tally& tt = by_type[p.type];
            tt.best_place += best_offset[k] == 0;
            one.best_place += best_offset[k] == 0;
            tt.best_near += std::abs(best_offset[k]) <= 1;
            one.best_near += std::abs(best_offset[k]) <= 1;
            bool exact = false, near = false, near3 = false;
            for (size_t j = 0; j < res.found.size(); ++j) {
              const auto& f = res.found[j];
              if (std::abs(f.index - p.index) <= 1) matched[j] = true;
              if (f.type != p.type) continue;
              if (f.index == p.index) exact = true;
              if (std::abs(f.index - p.index) <= 1) near = true;
              if (std::abs(f.index - p.index) <= 3) near3 = true;
            }
            const bool shows = std::abs(known_t[k]) >= critical;
            if (!near && std::getenv("BENCH_VERBOSE")) {
              std::printf("missed %s at %d (%s, n %d, %s, known-place t %.1f, best %+d, seed %u%s):", kTypeNames[p.type],
                          p.index, s.name, n, size.name, known_t[k], best_offset[k], seed,
                          shows && std::abs(best_offset[k]) <= 1 ? ", within reach" : "");
              for (const auto& f : res.found) std::printf(" %s@%d", kTypeNames[f.type], f.index);
              std::printf("  [%s]\n", res.fit.arima.orders.Name().c_str());
              if (std::atoi(std::getenv("BENCH_VERBOSE")) > 1) {
                std::printf("    planted:");
                for (const Planted& q : planted) std::printf(" %s@%d", kTypeNames[q.type], q.index);
                std::printf("  ar:");
                for (double v : res.fit.arima.coef.ar) std::printf(" %.3f", v);
                std::printf("  ma:");
                for (double v : res.fit.arima.coef.ma) std::printf(" %.3f", v);
                std::printf("  found:");
                for (const auto& f : res.found)
                  std::printf(" %s@%d %.2f t %.2f", kTypeNames[f.type], f.index, f.impact, f.t_value);
                std::printf("\n");
                for (const auto& line : res.trail) std::printf("    (%s)\n", line.c_str());
              }
            }
            // By how clearly the effect shows at its known place.
            const double kt = std::abs(known_t[k]);
            const int band = kt < 3.0 ? 0 : kt < 4.0 ? 1 : kt < 5.0 ? 2 : 3;
            ++by_clarity[band].planted;
            by_clarity[band].exact += exact;
            by_clarity[band].near += near;
            by_clarity[band].best_near += std::abs(best_offset[k]) <= 1;
            for (Tally* r : {&tt, &one}) {
              if (shows && best_offset[k] == 0) {
                ++r->reach;
                r->reach_exact += exact;
              }
              if (shows && std::abs(best_offset[k]) <= 1) {
                ++r->reach_near;
                r->reach_near_found += near;
              }
            }
            ++tt.planted;
            ++one.planted;
            tt.exact += exact;
            tt.near += near;
            tt.near3 += near3;
            one.exact += exact;
            one.near += near;
            one.near3 += near3;
          }
          for (bool m : matched) one.false_alarms += !m;
          char length_name[16];
          std::snprintf(length_name, sizeof length_name, "n = %d", n);
          for (Tally* t : {&total, &by_structure[s.name], &by_size[size.name], &by_length[length_name]}) {
            t->planted += one.planted;
            t->exact += one.exact;
            t->near += one.near;
            t->near3 += one.near3;
            t->best_place += one.best_place;
            t->best_near += one.best_near;
            t->reach += one.reach;
            t->reach_exact += one.reach_exact;
            t->reach_near += one.reach_near;
            t->reach_near_found += one.reach_near_found;
            t->detected += one.detected;
            t->false_alarms += one.false_alarms;
            t->observations += one.observations;
          }

          // The same noise with nothing planted: every detection is a false alarm.
          if (&size == &sizes[0]) {
            std::mt19937 rng2(seed + 7777777u);
            std::vector<double> y0 = Noise(s, n, rng2);
            for (double& v : y0) v += 100.0;
            const DetectionResult r0 = Run(y0, s.period, rules);
            if (!r0.found.empty() && std::getenv("BENCH_VERBOSE")) {
              std::printf("false on clean %s n %d:", s.name, n);
              for (const auto& f : r0.found) std::printf(" %s@%d (t %.2f)", kTypeNames[f.type], f.index, f.t_value);
              std::printf("  [%s]\n", r0.fit.arima.orders.Name().c_str());
            }
            clean.false_alarms += static_cast<int>(r0.found.size());
            clean.detected += static_cast<int>(r0.found.size());
            clean.observations += n;
            by_structure[std::string(s.name) + " (clean)"].false_alarms += static_cast<int>(r0.found.size());
            by_structure[std::string(s.name) + " (clean)"].observations += n;
          }
        }
      }
    }
  }

  auto pct = [](int a, int b) { return b ? 100.0 * a / b : 0.0; };
  std::printf("Intervention detection at the default rules (confidence 90.0, at most 5), %d replications per cell, %s\n\n",
              reps, g_engine ? "through automatic modelling" : "identification and detection called directly");
  std::printf("%-26s %8s %10s %12s %12s %14s %12s\n", "planted type", "planted", "exact %", "within 1 %",
              "within 3 %", "best place %", "best near %");
  for (auto& [type, t] : by_type)
    std::printf("%-26s %8d %10.1f %12.1f %12.1f %14.1f %12.1f\n", kTypeNames[type], t.planted,
                pct(t.exact, t.planted), pct(t.near, t.planted), pct(t.near3, t.planted), pct(t.best_place, t.planted),
                pct(t.best_near, t.planted));
  std::printf("%-26s %8d %10.1f %12.1f %12.1f %14.1f %12.1f\n", "all", total.planted, pct(total.exact, total.planted),
              pct(total.near, total.planted), pct(total.near3, total.planted), pct(total.best_place, total.planted),
              pct(total.best_near, total.planted));
  std::printf("(best place %%: the true place fits best, within three observations, under the true orders with\n"
              " every planted effect known; best near %%: the best fit is within one observation of it. No\n"
              " detector can place more exactly, or more within one, than the data allow)\n\n");
  const char* kBands[] = {"|t| < 3", "3 <= |t| < 4", "4 <= |t| < 5", "|t| >= 5"};
  std::printf("%-26s %8s %10s %12s %12s\n", "known-place t", "planted", "exact %", "within 1 %", "best near %");
  for (int b = 0; b < 4; ++b)
    std::printf("%-26s %8d %10.1f %12.1f %12.1f\n", kBands[b], by_clarity[b].planted,
                pct(by_clarity[b].exact, by_clarity[b].planted), pct(by_clarity[b].near, by_clarity[b].planted),
                pct(by_clarity[b].best_near, by_clarity[b].planted));
  {
    Tally clear;
    for (int b = 1; b < 4; ++b) {
      clear.planted += by_clarity[b].planted;
      clear.near += by_clarity[b].near;
    }
    std::printf("%-26s %8d %10s %12.1f\n", "|t| >= 3", clear.planted, "", pct(clear.near, clear.planted));
  }
  std::printf("(known-place t: the effect's t-value under the true orders with every planted effect known;\n"
              " below about 3 the data do not tell it from the noise at the default critical value)\n\n");
  std::printf("%-26s %8s %10s %10s %12s %10s\n", "within reach", "exact", "found %", "within 1", "found %",
              "of all %");
  for (auto& [type, t] : by_type)
    std::printf("%-26s %8d %10.1f %10d %12.1f %10.1f\n", kTypeNames[type], t.reach, pct(t.reach_exact, t.reach),
                t.reach_near, pct(t.reach_near_found, t.reach_near), pct(t.reach, t.planted));
  std::printf("%-26s %8d %10.1f %10d %12.1f %10.1f\n", "all", total.reach, pct(total.reach_exact, total.reach),
              total.reach_near, pct(total.reach_near_found, total.reach_near), pct(total.reach, total.planted));
  std::printf("(within reach: the true place fits best (for \"within 1\": within one observation of it) and\n"
              " the known-place t passes the critical value for the series' length; \"found %%\" is the share of\n"
              " those the detector found there. \"of all %%\" is the share of planted effects within reach of\n"
              " exact placing: what a detector that found every such effect, and nothing else, would score)\n\n");
  std::printf("%-26s %8s %10s %12s %16s\n", "structure / size", "planted", "exact %", "within 1 %", "false per 100");
  for (auto* group : {&by_structure, &by_size, &by_length})
    for (auto& [name, t] : *group)
      std::printf("%-26s %8d %10.1f %12.1f %16.2f\n", name.c_str(), t.planted, pct(t.exact, t.planted),
                  pct(t.near, t.planted), t.observations ? 100.0 * t.false_alarms / t.observations : 0.0);
  std::printf("\nfalse alarms per 100 observations: with effects planted %.2f, clean series %.2f\n",
              100.0 * total.false_alarms / total.observations, 100.0 * clean.false_alarms / clean.observations);
  if (times.empty()) return 0;  // a seed that names no series
  std::sort(times.begin(), times.end());
  std::printf("time per series (identification and detection): median %.1f ms, 90th percentile %.1f ms\n",
              times[times.size() / 2], times[times.size() * 9 / 10]);
  std::sort(detect_times.begin(), detect_times.end());
  std::printf(g_engine ? "time per series in automatic modelling: median %.1f ms, 90th percentile %.1f ms\n\n" :
              "time per series in detection alone: median %.1f ms, 90th percentile %.1f ms\n\n",
              detect_times[detect_times.size() / 2], detect_times[detect_times.size() * 9 / 10]);

  // The Nile.
  std::vector<double> nile;
  {
    std::ifstream in(NILE_CSV);
    std::string line;
    while (std::getline(in, line))
      if (!line.empty() && (std::isdigit(static_cast<unsigned char>(line[0])))) nile.push_back(std::stod(line));
  }
  if (nile.size() == 100) {
    const DetectionResult r = Run(nile, 1, rules);
    std::printf("Nile 1871-1970: model %s\n", r.fit.arima.orders.Name().c_str());
    for (const auto& f : r.found)
      std::printf("  %-14s %d  impact %+.1f  t %.2f\n", kTypeNames[f.type], 1871 + f.index, f.impact, f.t_value);
    for (const auto& line : r.trail) std::printf("  (%s)\n", line.c_str());
  } else {
    std::printf("Nile series not found at %s\n", NILE_CSV);
  }
  return 0;
}
