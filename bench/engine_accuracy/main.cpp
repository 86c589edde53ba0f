// Holds out the last periods of each series (18 monthly, 8 quarterly, 6 otherwise), runs
// automatic modelling on the rest and measures the forecasts against the held-out actuals:
// MASE (scaled by the in-sample seasonal naive error), sMAPE, coverage of the 95 % limits,
// and the time per series. With Rscript and R's forecast package, auto.arima runs on the
// same series in the same run and is measured the same way.
//
// Coverage is also given by thirds of the horizon (near, middle, far) and as the mean
// scaled interval score (MSIS: width of the limits plus 40 times any miss, over the same
// scale as MASE), which rewards limits that cover without being needlessly wide.
//
//   bench_engine_accuracy [--data DIR] [--no-r] [--no-necessity] [--no-sufficiency] [--no-lambdas]
//                         [--no-detection] [--variance-change] [--reps N] [--r-cache FILE] [--calibration N] [--verbose]
//                         [--only PREFIX]
// --calibration N runs N series of each of a few known processes instead (see MakeCalibration).
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
  double mase = 0, smape = 0, coverage = 0, msis = 0, ms = 0;
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

int HorizonFor(int period) { return period == 12 ? 18 : period == 4 ? 8 : period > 1 ? 2 * period : 6; }

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
// shift of 4 standard deviations at a random place, and white noise with an occasional pulse.
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
  }
  return out;
}

Outcome Measure(const Series& s, const std::vector<double>& fc, const std::vector<double>& lo,
                const std::vector<double>& hi, double ms) {
  Outcome o;
  const int h = HorizonFor(s.period);
  const int n = static_cast<int>(s.values.size()) - h;
  if (static_cast<int>(fc.size()) < h) return o;
  const int m = n > s.period ? s.period : 1;
  double scale = 0.0;
  for (int t = m; t < n; ++t) scale += std::fabs(s.values[t] - s.values[t - m]);
  scale /= (n - m);
  double ae = 0, sm = 0, is = 0;
  int covered = 0, third_hits[3] = {0, 0, 0}, third_count[3] = {0, 0, 0};
  for (int i = 0; i < h; ++i) {
    const double a = s.values[n + i];
    ae += std::fabs(a - fc[i]);
    const double den = std::fabs(a) + std::fabs(fc[i]);
    sm += den > 0 ? 200.0 * std::fabs(a - fc[i]) / den : 0.0;
    const bool in = a >= lo[i] && a <= hi[i];
    if (in) ++covered;
    const int third = std::min(2, 3 * i / h);
    ++third_count[third];
    if (in) ++third_hits[third];
    // Interval score at 95 %: width, plus 2 / 0.05 times the distance outside.
    is += (hi[i] - lo[i]) + 40.0 * std::max(0.0, lo[i] - a) + 40.0 * std::max(0.0, a - hi[i]);
  }
  o.ok = scale > 0;
  o.mase = ae / h / scale;
  o.smape = sm / h;
  o.coverage = 100.0 * covered / h;
  o.msis = is / h / scale;
  for (int k = 0; k < 3; ++k) o.third_cover[k] = third_count[k] ? 100.0 * third_hits[k] / third_count[k] : 0.0;
  o.ms = ms;
  return o;
}

std::vector<double> Split(const std::string& text) {
  std::vector<double> v;
  std::stringstream ss(text);
  std::string cell;
  while (std::getline(ss, cell, ',')) v.push_back(std::atof(cell.c_str()));
  return v;
}

// auto.arima through Rscript; empty when R or its forecast package is missing. With a cache
// file, R's answers are read from it when it exists and saved into it when it does not (R's
// own run takes minutes, and its answers do not change while our engine does).
std::map<std::string, Outcome> RunAutoArima(const std::vector<Series>& all, const fs::path& cache) {
  std::map<std::string, Outcome> out;
  const bool cached = !cache.empty() && fs::exists(cache);
  if (!cached && std::system("Rscript -e 'suppressPackageStartupMessages(library(forecast))' >/dev/null 2>&1") != 0)
    return out;
  const fs::path dir = fs::temp_directory_path() / ("engine_accuracy_" + std::to_string(::getpid()));
  fs::create_directories(dir);
  if (!cached) {
    std::ofstream in(dir / "in.txt");
    in.precision(17);
    for (const Series& s : all) {
      const int h = HorizonFor(s.period);
      in << s.name << ";" << s.period << ";" << h << ";";
      for (size_t t = 0; t + h < s.values.size(); ++t) in << (t ? "," : "") << s.values[t];
      in << "\n";
    }
  }
  const std::string cmd = std::string("Rscript '") + ENGINE_ACCURACY_DIR + "/auto_arima.R' '" +
                          (dir / "in.txt").string() + "' '" + (dir / "out.txt").string() + "' >/dev/null 2>&1";
  const fs::path answers = cached ? cache : dir / "out.txt";
  if (cached || std::system(cmd.c_str()) == 0) {
    if (!cached && !cache.empty()) fs::copy_file(answers, cache, fs::copy_options::overwrite_existing);
    std::map<std::string, const Series*> by_name;
    for (const Series& s : all) by_name[s.name] = &s;
    std::ifstream res(answers);
    std::string line;
    while (std::getline(res, line)) {
      std::vector<std::string> f;
      std::stringstream ss(line);
      std::string cell;
      while (std::getline(ss, cell, ';')) f.push_back(cell);
      if (f.size() != 5 || !by_name.count(f[0])) continue;
      out[f[0]] = Measure(*by_name[f[0]], Split(f[2]), Split(f[3]), Split(f[4]), std::atof(f[1].c_str()));
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
  double mase = 0, smape = 0, coverage = 0, msis = 0, third[3] = {0, 0, 0};
  std::vector<double> ms;
  void Add(const Outcome& o) {
    ++count;
    mase += o.mase;
    smape += o.smape;
    coverage += o.coverage;
    msis += o.msis;
    for (int k = 0; k < 3; ++k) third[k] += o.third_cover[k];
    ms.push_back(o.ms);
  }
};

void PrintRow(const char* who, const std::string& group, const Summary& s) {
  if (!s.count) return;
  const double c = s.count;
  std::printf("  %-14s %-16s %4d  %8.3f  %8.2f  %8.1f  %6.1f %6.1f %6.1f  %8.2f  %10.2f\n", who, group.c_str(),
              s.count, s.mase / c, s.smape / c, s.coverage / c, s.third[0] / c, s.third[1] / c, s.third[2] / c,
              s.msis / c, Median(s.ms));
}

}  // namespace

int main(int argc, char** argv) {
  fs::path data = fs::path(ENGINE_ACCURACY_DIR) / "data";
  bool with_r = true, verbose = false;
  int reps = 3;
  int calibration = 0;  // series per known process; 0: the benchmark set
  fs::path r_cache;
  std::string only;  // run only the series whose name starts with this
  // The shipped rules: lambdas 1, 0.5 and 0 evaluated, necessity at 90 %.
  quorvane::EngineRules rules;
  rules.lambdas = {1.0, 0.5, 0.0};
  rules.necessity_level = 90.0;
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    if (a == "--data" && i + 1 < argc) data = argv[++i];
    else if (a == "--no-r") with_r = false;
    else if (a == "--no-necessity") rules.necessity = false;
    else if (a == "--no-lambdas") rules.lambdas = {1.0};
    else if (a == "--no-sufficiency") rules.sufficiency_stochastic = false;
    else if (a == "--no-detection") rules.sufficiency_deterministic = false;
    else if (a == "--variance-change") rules.variance_change = true;
    else if (a == "--r-cache" && i + 1 < argc) r_cache = argv[++i];
    else if (a == "--calibration" && i + 1 < argc) calibration = std::max(1, std::atoi(argv[++i]));
    else if (a == "--reps" && i + 1 < argc) reps = std::max(1, std::atoi(argv[++i]));
    else if (a == "--verbose") verbose = true;
    else if (a == "--only" && i + 1 < argc) only = argv[++i];
  }
  std::vector<Series> all;
  if (calibration > 0) {
    all = MakeCalibration(calibration);
    with_r = false;
  } else {
    all = LoadReal(data);
    for (Series& s : MakeSynthetic()) all.push_back(std::move(s));
  }
  if (!only.empty())
    all.erase(std::remove_if(all.begin(), all.end(), [&](const Series& s) { return s.name.rfind(only, 0) != 0; }),
              all.end());

  // Ours under the chosen rules, and without power transforms (auto.arima's default).
  auto run_ours = [&](const quorvane::EngineRules& rr, std::vector<double>* monthly_ms) {
    std::map<std::string, Outcome> out;
    for (const Series& s : all) {
      const int h = HorizonFor(s.period);
      ModelingProblem p;
      p.output_name = s.name;
      p.y.assign(s.values.begin(), s.values.end() - h);
      p.seasonality = s.period;
      p.horizon = h;
      p.rules = rr;
      // Best of several runs for a steady time.
      double best_ms = 1e300;
      ModelResult r;
      for (int rep = 0; rep < reps; ++rep) {
        const double t0 = CpuMs();
        r = FitAndForecast(p, nullptr);
        best_ms = std::min(best_ms, CpuMs() - t0);
      }
      Outcome o = Measure(s, r.forecasts, r.lower, r.upper, best_ms);
      o.model = r.description + (r.lambda != 1.0 ? (r.lambda == 0.0 ? " log" : " sqrt") : "");
      out[s.name] = o;
      if (monthly_ms && s.period == 12 && p.y.size() >= 120 && p.y.size() <= 180) monthly_ms->push_back(best_ms);
    }
    return out;
  };
  std::vector<double> monthly150_ms;
  std::map<std::string, Outcome> ours = run_ours(rules, &monthly150_ms);
  std::map<std::string, Outcome> plain;
  const bool with_plain = rules.lambdas.size() > 1;
  if (with_plain) {
    quorvane::EngineRules rr = rules;
    rr.lambdas = {1.0};
    plain = run_ours(rr, nullptr);
  }
  std::map<std::string, Outcome> theirs;
  if (with_r) theirs = RunAutoArima(all, r_cache);

  if (verbose) {
    std::printf("%-22s %4s %5s  %-36s %8s %8s %6s %7s %8s | %8s %8s %6s %7s %8s\n", "series", "per", "n", "our model",
                "MASE", "sMAPE", "cover", "MSIS", "ms", "R MASE", "R sMAPE", "cover", "MSIS", "R ms");
    for (const Series& s : all) {
      const Outcome& o = ours[s.name];
      std::printf("%-22s %4d %5zu  %-36s %8.3f %8.2f %6.1f %7.2f %8.2f", s.name.c_str(), s.period, s.values.size(),
                  o.model.c_str(), o.mase, o.smape, o.coverage, o.msis, o.ms);
      if (theirs.count(s.name)) {
        const Outcome& t = theirs[s.name];
        std::printf(" | %8.3f %8.2f %6.1f %7.2f %8.2f", t.mase, t.smape, t.coverage, t.msis, t.ms);
      }
      std::printf("\n");
    }
    std::printf("\n");
  }

  // Summaries over the series both could forecast.
  std::map<std::string, Summary> sum_ours, sum_theirs, sum_plain;
  Summary all_ours, all_theirs, all_plain;
  for (const Series& s : all) {
    const Outcome& o = ours[s.name];
    if (!o.ok) continue;
    if (!theirs.empty() && (!theirs.count(s.name) || !theirs[s.name].ok)) continue;
    sum_ours[s.group].Add(o);
    all_ours.Add(o);
    if (with_plain) {
      sum_plain[s.group].Add(plain[s.name]);
      all_plain.Add(plain[s.name]);
    }
    if (!theirs.empty()) {
      sum_theirs[s.group].Add(theirs[s.name]);
      all_theirs.Add(theirs[s.name]);
    }
  }
  std::printf("Automatic modelling, last periods held out (18 monthly, 8 quarterly, 6 other)%s%s\n",
              std::string(rules.necessity ? ", necessity test on" : ", necessity test off")
                  .append(rules.sufficiency_stochastic ? ", sufficiency on" : ", sufficiency off")
                  .append(rules.sufficiency_deterministic ? ", interventions on" : ", interventions off")
                  .append(rules.variance_change ? ", change of variance on" : "")
                  .c_str(),
              rules.lambdas.size() > 1 ? ", lambdas 1/0.5/0 (shipped rules)" : ", no transform");
  std::printf("  %-14s %-16s %4s  %8s  %8s  %8s  %6s %6s %6s  %8s  %10s\n", "method", "group", "n", "MASE", "sMAPE%",
              "cover95%", "near", "middle", "far", "MSIS", "median CPU ms");
  for (const auto& [group, s] : sum_ours) {
    PrintRow("ours", group, s);
    if (sum_plain.count(group)) PrintRow("ours lambda 1", group, sum_plain[group]);
    if (sum_theirs.count(group)) PrintRow("auto.arima", group, sum_theirs[group]);
  }
  PrintRow("ours", "all", all_ours);
  PrintRow("ours lambda 1", "all", all_plain);
  PrintRow("auto.arima", "all", all_theirs);
  if (theirs.empty() && with_r) std::printf("  (auto.arima not run: Rscript or R's forecast package is missing)\n");
  std::printf("Median time per monthly series of 120-180 observations: %.2f ms over %zu series\n",
              Median(monthly150_ms), monthly150_ms.size());
  return 0;
}
