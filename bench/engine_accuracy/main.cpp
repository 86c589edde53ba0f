// Holds out the last periods of each series (18 monthly, 8 quarterly, 6 otherwise) from
// several origins (--origins N, default 3, each half a horizon before the next), runs
// automatic modelling on the values before each origin and measures the forecasts against
// the held-out actuals: MASE (scaled by the in-sample seasonal naive error), sMAPE, coverage
// of the 80 % and 95 % limits, averaged over the origins of a series, and the time per
// series (at the last origin). With Rscript and R's forecast package, auto.arima and ets run
// on the same origins in the same run and are measured the same way. --long runs the long
// series of data_long/ (monthly of several hundred to a few thousand values, weekly) and
// prints each one's time.
//
// Coverage is also given by thirds of the horizon (near, middle, far) and as the mean
// scaled interval score (MSIS: width of the limits plus 40 times any miss, over the same
// scale as MASE), which rewards limits that cover without being needlessly wide.
//
//   bench_engine_accuracy [--data DIR] [--no-r] [--no-necessity] [--no-sufficiency] [--no-lambdas]
//                         [--no-detection] [--variance-change] [--reps N] [--r-cache FILE] [--calibration N] [--verbose]
//                         [--only PREFIX] [--origins N] [--long] [--plain] [--combination] [--effects]
//                         [--calibration-r] [--dev]
// --effects prints each origin's model and the effects found (kind, observation, t value).
// --plain adds automatic modelling without power transforms (auto.arima's default).
// --combination adds the forecast combination (objective 98) as a row of its own; with --verbose
// each series' line ends with the combination's MASE, sMAPE and coverages.
// --calibration N runs N series of each of a few known processes instead (see MakeCalibration);
// R is left out there unless --calibration-r asks for it (a fresh set of series from known
// processes, none of them ever looked at while the rules were chosen).
// --dev runs the development set of real series in data_dev/ instead (export_dev_series.R):
// rules are decided there and on --calibration, and only confirmed on data/.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <time.h>
#include <unistd.h>

#include "engine/model.h"

namespace fs = std::filesystem;
using quorvane::FitAndForecast;
using quorvane::ModelingProblem;
using quorvane::ModelResult;

namespace {

struct Series {
  std::string name, group;
  int period = 1;
  std::vector<double> values;
};

struct Outcome {
  bool ok = false;
  double mase = 0, smape = 0, cover80 = 0, coverage = 0, msis = 0, ms = 0;
  double third_cover[3] = {0, 0, 0};  // coverage over the near, middle and far third of the horizon
  std::string model;
};

// Processor time of this thread: the machine may be shared, and wall time would measure
// the neighbours too. R's times are its user + system time likewise.
double CpuMs() {
  timespec ts;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
  return ts.tv_sec * 1e3 + ts.tv_nsec / 1e6;
}

// Weekly and longer cycles: half a cycle (two years of weeks would be a plan, not a forecast).
int HorizonFor(int period) {
  return period == 12 ? 18 : period == 4 ? 8 : period > 24 ? period / 2 : period > 1 ? 2 * period : 6;
}

std::vector<Series> LoadReal(const fs::path& dir) {
  std::vector<Series> out;
  std::vector<fs::path> files;
  for (const auto& e : fs::directory_iterator(dir))
    if (e.path().extension() == ".csv") files.push_back(e.path());
  std::sort(files.begin(), files.end());
  for (const fs::path& f : files) {
    Series s;
    s.name = f.stem().string();
    std::ifstream in(f);
    std::string line;
    while (std::getline(in, line)) {
      if (line.rfind("# period=", 0) == 0) s.period = std::atoi(line.c_str() + 9);
      else if (!line.empty() && line[0] != '#') s.values.push_back(std::atof(line.c_str()));
    }
    s.group = s.period == 12 ? "real monthly" : s.period == 4 ? "real quarterly" : "real other";
    out.push_back(s);
  }
  return out;
}

// Synthetic series from known processes, reproducible from their seeds.
std::vector<Series> MakeSynthetic() {
  std::vector<Series> out;
  std::mt19937 gen(20240601);
  std::normal_distribution<double> nd(0.0, 1.0);
  auto add = [&](const std::string& name, int period, std::vector<double> v) {
    out.push_back({name, "synthetic", period, std::move(v)});
  };
  for (int k = 0; k < 6; ++k) {
    // Airline-type: (0,1,1)(0,1,1)12 on a level of 100, 150 observations.
    const int n = 150, s = 12;
    std::vector<double> e(n + 13), y(n + 13, 0.0);
    for (double& v : e) v = nd(gen);
    const double th = -0.3 - 0.1 * k, Th = -0.5 + 0.05 * k;
    for (int t = 0; t < n + 13; ++t) {
      double w = e[t] + (t >= 1 ? th * e[t - 1] : 0) + (t >= s ? Th * e[t - s] : 0) +
                 (t >= s + 1 ? th * Th * e[t - s - 1] : 0);
      y[t] = w + (t >= 1 ? y[t - 1] : 0) + (t >= s ? y[t - s] : 0) - (t >= s + 1 ? y[t - s - 1] : 0);
    }
    std::vector<double> v(y.begin() + 13, y.end());
    for (double& x : v) x += 100.0;
    add("syn_airline_" + std::to_string(k), 12, v);
  }
  for (int k = 0; k < 6; ++k) {
    // Stationary ARMA(1,1) around 50, 150 monthly-length observations without season.
    const double phi = 0.2 + 0.12 * k, th = 0.4 - 0.15 * k;
    std::vector<double> v(150);
    double prev = 0, pe = 0;
    for (int t = -50; t < 150; ++t) {
      const double e = nd(gen);
      const double x = phi * prev + e + th * pe;
      prev = x;
      pe = e;
      if (t >= 0) v[t] = 50.0 + x;
    }
    add("syn_arma11_" + std::to_string(k), 1, v);
  }
  for (int k = 0; k < 6; ++k) {
    // Trend and fixed monthly pattern with AR(1) noise, 150 observations.
    std::vector<double> v(150);
    double prev = 0;
    for (int t = 0; t < 150; ++t) {
      prev = 0.5 * prev + nd(gen);
      v[t] = 200.0 + 0.3 * (k + 1) * t + 8.0 * std::sin(2 * M_PI * t / 12.0) + 2.0 * prev;
    }
    add("syn_trend_season_" + std::to_string(k), 12, v);
  }
  for (int k = 0; k < 6; ++k) {
    // Random walk with drift, quarterly.
    std::vector<double> v(100);
    double level = 1000.0;
    for (int t = 0; t < 100; ++t) v[t] = (level += 2.0 + 5.0 * nd(gen));
    add("syn_rw_drift_" + std::to_string(k), 4, v);
  }
  return out;
}

// Calibration: many series from each of a few known processes (with the held-out periods
// simulated too), so that the coverage of the limits is measured where the model family is
// right and only estimation and identification can make it miss. The processes: airline
// (0,1,1)(0,1,1)12, ARMA(1,1), random walk with drift (quarterly), AR(1) with one level
// shift of 4 standard deviations at a random place, white noise with an occasional pulse,
// and AR(1) with innovations of Student's t with 4 degrees of freedom.
std::vector<Series> MakeCalibration(int per_process) {
  std::vector<Series> out;
  std::mt19937 gen(777);
  std::normal_distribution<double> nd(0.0, 1.0);
  std::uniform_real_distribution<double> unif(0.0, 1.0);
  for (int k = 0; k < per_process; ++k) {
    {
      const int n = 150 + 18, s = 12;
      std::vector<double> e(n + 13), y(n + 13, 0.0);
      for (double& v : e) v = nd(gen);
      for (int t = 0; t < n + 13; ++t) {
        const double w = e[t] - 0.4 * (t >= 1 ? e[t - 1] : 0) - 0.6 * (t >= s ? e[t - s] : 0) +
                         0.24 * (t >= s + 1 ? e[t - s - 1] : 0);
        y[t] = w + (t >= 1 ? y[t - 1] : 0) + (t >= s ? y[t - s] : 0) - (t >= s + 1 ? y[t - s - 1] : 0);
      }
      std::vector<double> v(y.begin() + 13, y.end());
      for (double& x : v) x += 100.0;
      out.push_back({"cal_airline_" + std::to_string(k), "cal airline", 12, v});
    }
    {
      std::vector<double> v(156);
      double prev = 0, pe = 0;
      for (int t = -50; t < 156; ++t) {
        const double e = nd(gen), x = 0.6 * prev + e + 0.3 * pe;
        prev = x;
        pe = e;
        if (t >= 0) v[t] = 50.0 + x;
      }
      out.push_back({"cal_arma11_" + std::to_string(k), "cal arma11", 1, v});
    }
    {
      std::vector<double> v(108);
      double level = 1000.0;
      for (double& x : v) x = (level += 2.0 + 5.0 * nd(gen));
      out.push_back({"cal_rw_drift_" + std::to_string(k), "cal rw drift", 4, v});
    }
    {
      std::vector<double> v(156);
      const int at = 20 + static_cast<int>(unif(gen) * 130);
      double prev = 0;
      for (int t = 0; t < 156; ++t) {
        prev = 0.5 * prev + nd(gen);
        v[t] = 20.0 + prev + (t >= at ? 4.0 / std::sqrt(0.75) : 0.0);
      }
      out.push_back({"cal_ar1_shift_" + std::to_string(k), "cal ar1 shift", 1, v});
    }
    {
      std::vector<double> v(156);
      for (double& x : v) x = 10.0 + nd(gen) + (unif(gen) < 0.02 ? 6.0 * (unif(gen) < 0.5 ? -1 : 1) : 0.0);
      out.push_back({"cal_pulses_" + std::to_string(k), "cal wn pulses", 1, v});
    }
    {
      // Heavy tails throughout, not a few pulses: Student's t innovations of unit variance,
      // drawn on a generator of their own so that the other processes keep their series.
      std::mt19937 own(991 + k);
      std::student_t_distribution<double> td(4.0);
      std::vector<double> v(156);
      double prev = 0;
      for (int t = -50; t < 156; ++t) {
        prev = 0.5 * prev + td(own) * std::sqrt(0.5);
        if (t >= 0) v[t] = 30.0 + prev;
      }
      out.push_back({"cal_ar1_t4_" + std::to_string(k), "cal ar1 t4", 1, v});
    }
  }
  return out;
}

// One forecast from one origin: the first n values are the training part, the next h the
// held-out actuals. lo/hi hold the 80 % limits (index 0) and the 95 % limits (index 1).
Outcome Measure(const Series& s, int n, int h, const std::vector<double>& fc, const std::vector<double> lo[2],
                const std::vector<double> hi[2], double ms) {
  Outcome o;
  if (static_cast<int>(fc.size()) < h || static_cast<int>(lo[0].size()) < h || static_cast<int>(lo[1].size()) < h)
    return o;
  const int m = n > s.period ? s.period : 1;
  double scale = 0.0;
  for (int t = m; t < n; ++t) scale += std::fabs(s.values[t] - s.values[t - m]);
  scale /= (n - m);
  double ae = 0, sm = 0, is = 0;
  int covered[2] = {0, 0}, third_hits[3] = {0, 0, 0}, third_count[3] = {0, 0, 0};
  for (int i = 0; i < h; ++i) {
    const double a = s.values[n + i];
    ae += std::fabs(a - fc[i]);
    const double den = std::fabs(a) + std::fabs(fc[i]);
    sm += den > 0 ? 200.0 * std::fabs(a - fc[i]) / den : 0.0;
    for (int k = 0; k < 2; ++k)
      if (a >= lo[k][i] && a <= hi[k][i]) ++covered[k];
    const bool in = a >= lo[1][i] && a <= hi[1][i];
    const int third = std::min(2, 3 * i / h);
    ++third_count[third];
    if (in) ++third_hits[third];
    // Interval score at 95 %: width, plus 2 / 0.05 times the distance outside.
    is += (hi[1][i] - lo[1][i]) + 40.0 * std::max(0.0, lo[1][i] - a) + 40.0 * std::max(0.0, a - hi[1][i]);
  }
  o.ok = scale > 0 && std::isfinite(ae) && std::isfinite(is);
  o.mase = ae / h / scale;
  o.smape = sm / h;
  o.cover80 = 100.0 * covered[0] / h;
  o.coverage = 100.0 * covered[1] / h;
  o.msis = is / h / scale;
  for (int k = 0; k < 3; ++k) o.third_cover[k] = third_count[k] ? 100.0 * third_hits[k] / third_count[k] : 0.0;
  o.ms = ms;
  return o;
}

// The mean over the origins of one series (each series weighs the same whatever the number
// of its origins); the time is that of the last origin.
Outcome Average(const std::vector<Outcome>& v) {
  Outcome o;
  int count = 0;
  for (const Outcome& x : v) {
    if (!x.ok) continue;
    ++count;
    o.mase += x.mase;
    o.smape += x.smape;
    o.cover80 += x.cover80;
    o.coverage += x.coverage;
    o.msis += x.msis;
    for (int k = 0; k < 3; ++k) o.third_cover[k] += x.third_cover[k];
  }
  if (!count || !v[0].ok) return o;
  o.ok = true;
  o.mase /= count;
  o.smape /= count;
  o.cover80 /= count;
  o.coverage /= count;
  o.msis /= count;
  for (int k = 0; k < 3; ++k) o.third_cover[k] /= count;
  o.ms = v[0].ms;
  o.model = v[0].model;
  return o;
}

std::vector<double> Split(const std::string& text) {
  std::vector<double> v;
  std::stringstream ss(text);
  std::string cell;
  while (std::getline(ss, cell, ',')) v.push_back(std::atof(cell.c_str()));
  return v;
}

// The forecast origins of a series: the first leaves the last h values out, each further one
// `step` values earlier (half a horizon). Training parts below 10 values are not used.
struct Origin {
  const Series* series;
  int k, n, h;
  std::string Key() const { return series->name + "@" + std::to_string(k); }
};

std::vector<Origin> Origins(const std::vector<Series>& all, int origins) {
  std::vector<Origin> out;
  for (const Series& s : all) {
    const int h = HorizonFor(s.period);
    const int step = std::max(1, h / 2);
    for (int k = 0; k < origins; ++k) {
      const int n = static_cast<int>(s.values.size()) - h - k * step;
      if (n < 10) break;
      out.push_back({&s, k, n, h});
    }
  }
  return out;
}

// auto.arima and ets through Rscript, by method and origin key; empty when R or its forecast
// package is missing. With a cache file, R's answers are read from it when it exists and
// saved into it when it does not (R's own run takes minutes, and its answers do not change
// while our engine does).
std::map<std::string, std::map<std::string, Outcome>> RunR(const std::vector<Origin>& origins, const fs::path& cache) {
  std::map<std::string, std::map<std::string, Outcome>> out;
  const bool cached = !cache.empty() && fs::exists(cache);
  if (!cached && std::system("Rscript -e 'suppressPackageStartupMessages(library(forecast))' >/dev/null 2>&1") != 0)
    return out;
  const fs::path dir = fs::temp_directory_path() / ("engine_accuracy_" + std::to_string(::getpid()));
  fs::create_directories(dir);
  if (!cached) {
    std::ofstream in(dir / "in.txt");
    in.precision(17);
    for (const Origin& o : origins) {
      in << o.Key() << ";" << o.series->period << ";" << o.h << ";";
      for (int t = 0; t < o.n; ++t) in << (t ? "," : "") << o.series->values[t];
      in << "\n";
    }
  }
  const std::string cmd = std::string("Rscript '") + ENGINE_ACCURACY_DIR + "/auto_arima.R' '" +
                          (dir / "in.txt").string() + "' '" + (dir / "out.txt").string() + "' >/dev/null 2>&1";
  const fs::path answers = cached ? cache : dir / "out.txt";
  if (cached || std::system(cmd.c_str()) == 0) {
    if (!cached && !cache.empty()) fs::copy_file(answers, cache, fs::copy_options::overwrite_existing);
    std::map<std::string, const Origin*> by_key;
    for (const Origin& o : origins) by_key[o.Key()] = &o;
    std::ifstream res(answers);
    std::string line;
    while (std::getline(res, line)) {
      std::vector<std::string> f;
      std::stringstream ss(line);
      std::string cell;
      while (std::getline(ss, cell, ';')) f.push_back(cell);
      if (f.size() != 8 || !by_key.count(f[0])) continue;
      const Origin& o = *by_key[f[0]];
      const std::vector<double> lo[2] = {Split(f[4]), Split(f[6])}, hi[2] = {Split(f[5]), Split(f[7])};
      out[f[1]][f[0]] = Measure(*o.series, o.n, o.h, Split(f[3]), lo, hi, std::atof(f[2].c_str()));
    }
  }
  fs::remove_all(dir);
  return out;
}

double Median(std::vector<double> v) {
  if (v.empty()) return 0.0;
  std::sort(v.begin(), v.end());
  const size_t k = v.size() / 2;
  return v.size() % 2 ? v[k] : 0.5 * (v[k - 1] + v[k]);
}

struct Summary {
  int count = 0;
  double mase = 0, smape = 0, cover80 = 0, coverage = 0, msis = 0, third[3] = {0, 0, 0};
  std::vector<double> ms, mases;
  void Add(const Outcome& o) {
    ++count;
    mase += o.mase;
    smape += o.smape;
    cover80 += o.cover80;
    coverage += o.coverage;
    msis += o.msis;
    for (int k = 0; k < 3; ++k) third[k] += o.third_cover[k];
    ms.push_back(o.ms);
    mases.push_back(o.mase);
  }
};

void PrintRow(const char* who, const std::string& group, const Summary& s) {
  if (!s.count) return;
  const double c = s.count;
  std::printf("  %-14s %-16s %4d  %7.3f %7.3f  %7.2f  %6.1f %6.1f  %6.1f %6.1f %6.1f  %7.2f  %8.2f %8.2f\n", who,
              group.c_str(), s.count, s.mase / c, Median(s.mases), s.smape / c, s.cover80 / c, s.coverage / c,
              s.third[0] / c, s.third[1] / c, s.third[2] / c, s.msis / c, Median(s.ms),
              *std::max_element(s.ms.begin(), s.ms.end()));
}

}  // namespace

// Kept whole: the benchmark's options, runs and printed tables one after another, in the
// order its output shows them.
int main(int argc, char** argv) {
  fs::path data = fs::path(ENGINE_ACCURACY_DIR) / "data";
  bool with_r = true, calibration_r = false, verbose = false, with_plain = false, with_combination = false;
  bool show_effects = false;
  int reps = 3;
  int calibration = 0;  // series per known process; 0: the benchmark set
  int origin_count = 3;
  fs::path r_cache;
  std::string only;  // run only the series whose name starts with this
  // The shipped rules: lambdas 1, 0.5 and 0 evaluated, necessity at 90 %.
  quorvane::EngineRules rules;
  rules.lambdas = {1.0, 0.5, 0.0};
  rules.necessity_level = 90.0;
  bool long_set = false, dev_set = false;
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    if (a == "--data" && i + 1 < argc) data = argv[++i];
    else if (a == "--long") long_set = true;
    else if (a == "--dev") dev_set = true;
    else if (a == "--no-r") with_r = false;
    else if (a == "--no-necessity") rules.necessity = false;
    else if (a == "--no-lambdas") rules.lambdas = {1.0};
    else if (a == "--no-sufficiency") rules.sufficiency_stochastic = false;
    else if (a == "--no-detection") rules.sufficiency_deterministic = false;
    else if (a == "--variance-change") rules.variance_change = true;
    else if (a == "--plain") with_plain = true;
    else if (a == "--combination") with_combination = true;
    else if (a == "--r-cache" && i + 1 < argc) r_cache = argv[++i];
    else if (a == "--calibration" && i + 1 < argc) calibration = std::max(1, std::atoi(argv[++i]));
    else if (a == "--calibration-r") calibration_r = true;
    else if (a == "--reps" && i + 1 < argc) reps = std::max(1, std::atoi(argv[++i]));
    else if (a == "--origins" && i + 1 < argc) origin_count = std::max(1, std::atoi(argv[++i]));
    else if (a == "--verbose") verbose = true;
    else if (a == "--effects") show_effects = true;
    else if (a == "--only" && i + 1 < argc) only = argv[++i];
  }
  std::vector<Series> all;
  if (calibration > 0) {
    all = MakeCalibration(calibration);
    with_r = with_r && calibration_r;
  } else if (long_set) {
    all = LoadReal(fs::path(ENGINE_ACCURACY_DIR) / "data_long");
    for (Series& s : all) s.group = s.period == 52 ? "long weekly" : "long monthly";
    verbose = true;
  } else if (dev_set) {
    all = LoadReal(fs::path(ENGINE_ACCURACY_DIR) / "data_dev");
  } else {
    all = LoadReal(data);
    for (Series& s : MakeSynthetic()) all.push_back(std::move(s));
  }
  if (!only.empty())
    all.erase(std::remove_if(all.begin(), all.end(), [&](const Series& s) { return s.name.rfind(only, 0) != 0; }),
              all.end());
  const std::vector<Origin> origins = Origins(all, origin_count);

  // Ours under the chosen rules at both coverages (the same model: the rules differ only in
  // the limits' coverage), timed at the last origin as the best of several runs.
  auto run_ours = [&](const quorvane::EngineRules& rr, std::vector<double>* monthly_ms, int objective = 0) {
    std::map<std::string, std::vector<Outcome>> per_series;
    for (const Origin& o : origins) {
      const Series& s = *o.series;
      ModelingProblem p;
      p.output_name = s.name;
      p.y.assign(s.values.begin(), s.values.begin() + o.n);
      p.seasonality = s.period;
      p.horizon = o.h;
      p.objective = objective;
      p.rules = rr;
      p.rules.forecast_confidence = 95.0;
      double best_ms = 1e300;
      ModelResult r;
      for (int rep = 0; rep < (o.k == 0 ? reps : 1); ++rep) {
        const double t0 = CpuMs();
        r = FitAndForecast(p, nullptr);
        best_ms = std::min(best_ms, CpuMs() - t0);
      }
      p.rules.forecast_confidence = 80.0;
      const ModelResult r80 = FitAndForecast(p, nullptr);
      const std::vector<double> lo[2] = {r80.lower, r.lower}, hi[2] = {r80.upper, r.upper};
      Outcome out = Measure(s, o.n, o.h, r.forecasts, lo, hi, best_ms);
      out.model = r.description + (r.lambda != 1.0 ? (r.lambda == 0.0 ? " log" : " sqrt") : "");
      if (show_effects) {
        static const char* kKinds[] = {"", "pulse", "level shift", "seasonal pulse", "local trend", "dynamic pulse"};
        std::printf("%-22s origin %d of %zu: %s, %zu effects", s.name.c_str(), o.n,
                    s.values.size(), out.model.c_str(), r.interventions.size());
        for (const auto& e : r.interventions)
          std::printf("; %s at %d (t %.1f)", e.type >= 1 && e.type <= 5 ? kKinds[e.type] : "?",
                      e.observation, e.t_value);
        std::printf("\n");
      }
      per_series[s.name].push_back(out);
      if (monthly_ms && o.k == 0 && s.period == 12 && o.n >= 120 && o.n <= 180) monthly_ms->push_back(best_ms);
    }
    std::map<std::string, Outcome> out;
    for (const auto& [name, v] : per_series) out[name] = Average(v);
    return out;
  };
  std::vector<double> monthly150_ms;
  std::map<std::string, Outcome> ours = run_ours(rules, &monthly150_ms);
  std::map<std::string, Outcome> plain;
  with_plain = with_plain && rules.lambdas.size() > 1;
  if (with_plain) {
    quorvane::EngineRules rr = rules;
    rr.lambdas = {1.0};
    plain = run_ours(rr, nullptr);
  }
  std::map<std::string, Outcome> combined;
  if (with_combination) combined = run_ours(rules, nullptr, 98);
  // R's answers by method and series, averaged over the origins alike.
  std::map<std::string, std::map<std::string, Outcome>> theirs;
  const char* kMethods[] = {"auto.arima", "ets"};
  if (with_r) {
    const auto by_origin = RunR(origins, r_cache);
    for (const char* method : kMethods) {
      if (!by_origin.count(method)) continue;
      std::map<std::string, std::vector<Outcome>> per_series;
      for (const Origin& o : origins) {
        const auto it = by_origin.at(method).find(o.Key());
        per_series[o.series->name].push_back(it == by_origin.at(method).end() ? Outcome{} : it->second);
      }
      for (const auto& [name, v] : per_series) theirs[method][name] = Average(v);
    }
  }
  const bool have_r = theirs.count("auto.arima") > 0;

  if (verbose) {
    std::printf("%-22s %4s %5s  %-36s %7s %7s %5s %5s %7s %8s | %7s %7s %5s %5s %7s %8s | %7s %8s\n", "series", "per",
                "n", "our model (last origin)", "MASE", "sMAPE", "c80", "c95", "MSIS", "ms", "R MASE", "sMAPE", "c80",
                "c95", "MSIS", "R ms", "ets MASE", "ets ms");
    for (const Series& s : all) {
      const Outcome& o = ours[s.name];
      std::printf("%-22s %4d %5zu  %-36s %7.3f %7.2f %5.1f %5.1f %7.2f %8.2f", s.name.c_str(), s.period,
                  s.values.size(), o.model.c_str(), o.mase, o.smape, o.cover80, o.coverage, o.msis, o.ms);
      if (have_r && theirs["auto.arima"].count(s.name)) {
        const Outcome& t = theirs["auto.arima"][s.name];
        std::printf(" | %7.3f %7.2f %5.1f %5.1f %7.2f %8.2f", t.mase, t.smape, t.cover80, t.coverage, t.msis, t.ms);
        if (theirs["ets"].count(s.name)) std::printf(" | %7.3f %8.2f", theirs["ets"][s.name].mase, theirs["ets"][s.name].ms);
      }
      if (with_combination)
        std::printf(" | comb %7.3f %7.2f %5.1f %5.1f", combined[s.name].mase, combined[s.name].smape,
                    combined[s.name].cover80, combined[s.name].coverage);
      std::printf("\n");
    }
    std::printf("\n");
  }

  // Summaries over the series that every method could forecast.
  std::map<std::string, Summary> sum_ours, sum_plain, sum_combined;
  std::map<std::string, std::map<std::string, Summary>> sum_theirs;
  Summary all_ours, all_plain, all_combined;
  std::map<std::string, Summary> all_theirs;
  for (const Series& s : all) {
    const Outcome& o = ours[s.name];
    if (!o.ok) continue;
    bool every = true;
    for (const auto& [method, m] : theirs)
      if (!m.count(s.name) || !m.at(s.name).ok) every = false;
    if (with_combination && !combined[s.name].ok) every = false;
    if (!every) continue;
    sum_ours[s.group].Add(o);
    all_ours.Add(o);
    if (with_plain) {
      sum_plain[s.group].Add(plain[s.name]);
      all_plain.Add(plain[s.name]);
    }
    if (with_combination) {
      sum_combined[s.group].Add(combined[s.name]);
      all_combined.Add(combined[s.name]);
    }
    for (auto& [method, m] : theirs) {
      sum_theirs[method][s.group].Add(m[s.name]);
      all_theirs[method].Add(m[s.name]);
    }
  }
  std::printf("Automatic modelling, %d origin(s) per series half a horizon apart, horizon 18 monthly, 8 quarterly, "
              "2 cycles other seasonal, 6 other%s%s\n",
              origin_count,
              std::string(rules.necessity ? ", necessity test on" : ", necessity test off")
                  .append(rules.sufficiency_stochastic ? ", sufficiency on" : ", sufficiency off")
                  .append(rules.sufficiency_deterministic ? ", interventions on" : ", interventions off")
                  .append(rules.variance_change ? ", change of variance on" : "")
                  .c_str(),
              rules.lambdas.size() > 1 ? ", lambdas 1/0.5/0 (shipped rules)" : ", no transform");
  std::printf("  %-14s %-16s %4s  %7s %7s  %7s  %6s %6s  %6s %6s %6s  %7s  %8s %8s\n", "method", "group", "n",
              "MASE", "median", "sMAPE%", "cov80", "cov95", "near", "middle", "far", "MSIS", "med ms", "max ms");
  for (const auto& [group, s] : sum_ours) {
    PrintRow("ours", group, s);
    if (sum_plain.count(group)) PrintRow("ours lambda 1", group, sum_plain[group]);
    if (sum_combined.count(group)) PrintRow("combination", group, sum_combined[group]);
    for (auto& [method, m] : sum_theirs)
      if (m.count(group)) PrintRow(method.c_str(), group, m[group]);
  }
  PrintRow("ours", "all", all_ours);
  if (with_plain) PrintRow("ours lambda 1", "all", all_plain);
  if (with_combination) PrintRow("combination", "all", all_combined);
  for (auto& [method, m] : all_theirs) PrintRow(method.c_str(), "all", m);
  if (!have_r && with_r) std::printf("  (auto.arima not run: Rscript or R's forecast package is missing)\n");
  if (have_r && all_theirs["auto.arima"].mase > 0)
    std::printf("Mean MASE ours / auto.arima: %.3f; median time ours / auto.arima: %.3f\n",
                all_ours.mase / all_theirs["auto.arima"].mase,
                Median(all_ours.ms) / std::max(1e-9, Median(all_theirs["auto.arima"].ms)));
  std::printf("Median time per monthly series of 120-180 observations: %.2f ms over %zu series\n",
              Median(monthly150_ms), monthly150_ms.size());
  return 0;
}
