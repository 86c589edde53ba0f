// bench_engine_causal: what transfer-function modelling finds and what it is worth.
//
// - Each preset on the airline series: the model it gives, its fit and time.
// - Synthetic series with a known transfer function (y driven by x three periods before,
//   with AR(1) noise, x itself an AR(1)): how often the engine keeps x with its lag 3 as
//   the strongest term, and how often it keeps an unrelated input.
// - Real data (statsmodels' macrodata, quarterly 1959-2009): unemployment on log real GDP
//   (Okun's law) and log real consumption on log real GDP. From rolling forecast origins,
//   the last 8 quarters of each window are held out and forecast by the transfer function
//   (GDP's values given, as a type-1 input; and forecast by its own model, as a type-0
//   input) and by the output series' own automatic model; mean absolute errors are printed.
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "engine/model/structured.h"

using namespace quorvane;

namespace {

std::vector<double> Series(const std::string& name) {
  std::ifstream in(std::string(TESSALY_SOURCE_DIR) + "/tests/engine/model/reference/series/" + name + ".csv");
  std::vector<double> v;
  for (double x; in >> x;) v.push_back(x);
  return v;
}

double Ms(std::chrono::steady_clock::duration d) {
  return std::chrono::duration<double, std::milli>(d).count();
}

void Synthetic() {
  std::printf("Synthetic: y(t) = 10 + 2 x(t-3) + N(t), N AR(1) 0.5, x AR(1) 0.7, plus an unrelated input z; 120 obs\n");
  const int reps = 40;
  int kept = 0, lag_right = 0, z_kept = 0;
  double ms = 0.0;
  for (int r = 0; r < reps; ++r) {
    std::mt19937 gen(1000 + r);
    std::normal_distribution<double> e(0.0, 1.0);
    const int n = 120;
    std::vector<double> x(n), z(n), y(n), noise(n);
    double xp = 0, np = 0;
    for (int t = 0; t < n; ++t) {
      xp = 0.7 * xp + e(gen);
      x[t] = 50 + xp;
      z[t] = 20 + e(gen);
      np = 0.5 * np + e(gen);
      noise[t] = np;
    }
    for (int t = 0; t < n; ++t) y[t] = 10 + 2 * (t >= 3 ? x[t - 3] : 50.0) + noise[t];
    ModelingProblem p;
    p.output_name = "Y";
    p.y = y;
    p.horizon = 4;
    InputSeries xi{"X", 1, x, {}, {}}, zi{"Z", 1, z, {}, {}};
    xi.future.assign(4, 50.0);
    zi.future.assign(4, 20.0);
    p.inputs = {zi, xi};
    const auto t0 = std::chrono::steady_clock::now();
    const ModelResult m = FitModel(p, nullptr);
    ms += Ms(std::chrono::steady_clock::now() - t0);
    bool has_x = false, has_z = false;
    const Coefficient* strongest = nullptr;
    for (const auto& c : m.coefficients) {
      if (c.kind != "input") continue;
      if (c.term.rfind("X ", 0) == 0) {
        has_x = true;
        if (!strongest || std::fabs(c.t_value) > std::fabs(strongest->t_value)) strongest = &c;
      }
      if (c.term.rfind("Z ", 0) == 0) has_z = true;
    }
    kept += has_x;
    z_kept += has_z;
    lag_right += strongest && strongest->lag == 3 && std::fabs(strongest->value - 2.0) < 0.3;
  }
  std::printf("  X kept %d/%d; strongest term X LAG 3 with coefficient 2 +- 0.3: %d/%d; unrelated Z kept %d/%d;"
              " mean time %.1f ms\n\n",
              kept, reps, lag_right, reps, z_kept, reps, ms / reps);
}

struct Case {
  const char* title;
  std::vector<double> y, x;
  bool log_y;
};

void RealData(const Case& c) {
  const int n = static_cast<int>(c.y.size());
  const int hold = 8;
  std::printf("%s\n", c.title);
  double mae_tf = 0, mae_tf0 = 0, mae_u = 0;
  int origins = 0, count = 0;
  std::string lags_seen;
  double ms_tf = 0, ms_u = 0;
  for (int end = n - hold; end >= n - hold - 4 * 9; end -= 4) {
    ModelingProblem p;
    p.output_name = "Y";
    p.seasonality = 4;
    p.begin_year = 1959;
    p.y.assign(c.y.begin(), c.y.begin() + end);
    p.horizon = hold;
    InputSeries in{"LNGDP", 1, {}, {}, {}};
    in.history.assign(c.x.begin(), c.x.begin() + end);
    in.retained.assign(c.x.begin() + end, c.x.begin() + end + hold);
    p.inputs = {in};
    auto t0 = std::chrono::steady_clock::now();
    const ModelResult tf = FitModel(p, nullptr);
    ms_tf += Ms(std::chrono::steady_clock::now() - t0);
    ModelingProblem p0 = p;
    p0.inputs[0].type = 0;
    p0.inputs[0].retained.clear();
    const ModelResult tf0 = FitModel(p0, nullptr);
    ModelingProblem pu = p;
    pu.inputs.clear();
    t0 = std::chrono::steady_clock::now();
    const ModelResult u = FitModel(pu, nullptr);
    ms_u += Ms(std::chrono::steady_clock::now() - t0);
    if (tf.forecasts.size() != static_cast<size_t>(hold) || u.forecasts.size() != static_cast<size_t>(hold) ||
        tf0.forecasts.size() != static_cast<size_t>(hold))
      continue;
    std::string lags;
    for (const auto& co : tf.coefficients)
      if (co.kind == "input") lags += (lags.empty() ? "" : ",") + std::to_string(co.lag);
    for (const auto& co : tf.coefficients)
      if (co.kind == "denominator") {
        char buf[32];
        std::snprintf(buf, sizeof buf, " /(1-%.2fB)", co.value);
        lags += buf;
        break;
      }
    lags_seen += "[" + (lags.empty() ? std::string("none") : lags) + "] ";
    for (int h = 0; h < hold; ++h) {
      const double a = c.y[end + h];
      mae_tf += std::fabs(a - tf.forecasts[h]);
      mae_tf0 += std::fabs(a - tf0.forecasts[h]);
      mae_u += std::fabs(a - u.forecasts[h]);
      ++count;
    }
    ++origins;
  }
  std::printf("  origins %d, %d quarters held out each; GDP lags kept per origin: %s\n", origins, hold, lags_seen.c_str());
  std::printf("  MAE over 1-%d quarters ahead: transfer function (GDP given) %.4f | transfer function (GDP forecast) %.4f"
              " | output's own automatic model %.4f\n",
              hold, mae_tf / count, mae_tf0 / count, mae_u / count);
  std::printf("  mean time per fit: transfer function %.1f ms, univariate %.1f ms\n\n", ms_tf / origins, ms_u / origins);
}

}  // namespace

// Each preset on the airline series: its model, fit and time.
void Presets() {
  const auto y = Series("airline");
  std::printf("Presets on the airline series (144 months, 12 forecasts)\n");
  for (int obj : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}) {
    ModelingProblem p;
    p.output_name = "PASSENGERS";
    p.y = y;
    p.seasonality = 12;
    p.begin_year = 1949;
    p.horizon = 12;
    p.objective = obj;
    const auto t0 = std::chrono::steady_clock::now();
    const ModelResult r = FitModel(p, nullptr);
    const double ms = Ms(std::chrono::steady_clock::now() - t0);
    std::printf("  %2d %-62s AIC %9.2f  MAPE %6.2f %%  %6.1f ms\n", obj, r.description.c_str(), r.aic, r.mape, ms);
  }
  std::printf("\n");
}

int main() {
  Presets();
  Synthetic();
  const auto unemp = Series("macro_unemp");
  const auto gdp = Series("macro_realgdp");
  const auto cons = Series("macro_realcons");
  std::vector<double> lgdp, lcons;
  for (double v : gdp) lgdp.push_back(100.0 * std::log(v));
  for (double v : cons) lcons.push_back(100.0 * std::log(v));
  RealData({"Macrodata: UNEMP on 100 ln(REALGDP)", unemp, lgdp, false});
  RealData({"Macrodata: 100 ln(REALCONS) on 100 ln(REALGDP)", lcons, lgdp, true});
  return 0;
}
