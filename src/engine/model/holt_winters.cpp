// Additive Holt-Winters smoothing: the filter, its initial states, the estimation of its
// three smoothing constants and the preset model built on it.
#include "engine/model/holt_winters.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <string>

#include <Eigen/Dense>

#include "engine/model/equation_text.h"
#include "engine/model/model_parts.h"
#include "engine/model/series_stats.h"
#include "engine/model/structured.h"

namespace quorvane {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr const char* kPresetName = "HOLT LINEAR TREND PLUS ADDITIVE SEASONAL FACTORS";

using Point = std::array<double, 3>;

// The search's point is (alpha, beta, gamma / (1 - alpha)) in the unit cube: gamma above
// 1 - alpha lets the seasonal states absorb what the level should, and the fits that result
// follow the data closely and forecast wildly.
HoltWintersSmoothing FromPoint(const Point& p) {
  const double alpha = std::clamp(p[0], 0.0, 1.0);
  return {alpha, std::clamp(p[1], 0.0, 1.0), std::clamp(p[2], 0.0, 1.0) * (1.0 - alpha)};
}

// The sum of squared one-step errors for given smoothing constants (in the unit cube).
using SseOf = std::function<double(const HoltWintersSmoothing&)>;

// The search runs on the whole space; outside the unit cube the errors are those of the
// nearest point in it plus a penalty that grows with the distance, so the simplex walks back.
double Objective(const SseOf& sse_of, const Point& p, double scale) {
  double outside = 0.0;
  for (double v : p) {
    const double d = v - std::clamp(v, 0.0, 1.0);
    outside += d * d;
  }
  const double sse = sse_of(FromPoint(p));
  if (!std::isfinite(sse)) return std::numeric_limits<double>::max();
  return sse + outside * scale;
}

// Nelder-Mead over three parameters from `start` with initial steps `step`.
Point NelderMead(const SseOf& sse_of, const Point& start, double step, double penalty, int& evaluations) {
  std::array<Point, 4> x;
  std::array<double, 4> f;
  x[0] = start;
  for (int i = 0; i < 3; ++i) {
    x[i + 1] = start;
    // Step into the cube where the start is near its upper face.
    x[i + 1][i] += start[i] + step <= 1.0 ? step : -step;
  }
  auto eval = [&](const Point& p) {
    ++evaluations;
    return Objective(sse_of, p, penalty);
  };
  for (int i = 0; i < 4; ++i) f[i] = eval(x[i]);
  for (int iter = 0; iter < 3000; ++iter) {
    std::array<int, 4> order = {0, 1, 2, 3};
    std::sort(order.begin(), order.end(), [&](int a, int b) { return f[a] < f[b]; });
    std::array<Point, 4> xs;
    std::array<double, 4> fs;
    for (int i = 0; i < 4; ++i) {
      xs[i] = x[order[i]];
      fs[i] = f[order[i]];
    }
    x = xs;
    f = fs;
    double size = 0.0;
    for (int i = 1; i < 4; ++i)
      for (int k = 0; k < 3; ++k) size = std::max(size, std::fabs(x[i][k] - x[0][k]));
    if (size < 1e-7 || (f[3] - f[0]) <= 1e-11 * (std::fabs(f[0]) + 1e-300)) break;
    Point c{0.0, 0.0, 0.0};
    for (int i = 0; i < 3; ++i)
      for (int k = 0; k < 3; ++k) c[k] += x[i][k] / 3.0;
    auto along = [&](double t) {
      Point p;
      for (int k = 0; k < 3; ++k) p[k] = c[k] + t * (x[3][k] - c[k]);
      return p;
    };
    const Point xr = along(-1.0);
    const double fr = eval(xr);
    if (fr < f[0]) {
      const Point xe = along(-2.0);
      const double fe = eval(xe);
      if (fe < fr) {
        x[3] = xe;
        f[3] = fe;
      } else {
        x[3] = xr;
        f[3] = fr;
      }
    } else if (fr < f[2]) {
      x[3] = xr;
      f[3] = fr;
    } else {
      const Point xc = fr < f[3] ? along(-0.5) : along(0.5);
      const double fc = eval(xc);
      if (fc < std::min(fr, f[3])) {
        x[3] = xc;
        f[3] = fc;
      } else {
        for (int i = 1; i < 4; ++i) {
          for (int k = 0; k < 3; ++k) x[i][k] = x[0][k] + 0.5 * (x[i][k] - x[0][k]);
          f[i] = eval(x[i]);
        }
      }
    }
  }
  int best = 0;
  for (int i = 1; i < 4; ++i)
    if (f[i] < f[best]) best = i;
  Point out = x[best];
  for (double& v : out) v = std::clamp(v, 0.0, 1.0);
  return out;
}

std::string Num(double v, int digits = 6) {
  const std::string fmt = "%." + std::to_string(digits) + "g";
  return Format(fmt.c_str(), v);
}

std::string Fixed4(double v) { return Format("%.4f", v); }

}  // namespace

HoltWintersStates HoltWintersInitialStates(const std::vector<double>& y, int m) {
  HoltWintersStates s;
  s.seasonal.assign(std::max(m, 0), 0.0);
  const int n = static_cast<int>(y.size());
  if (m < 2 || n < 2 * m) return s;
  const int cycles = std::clamp(n / m, 2, 5);
  const int n0 = cycles * m;
  // Centred moving average of one cycle (a 2 x m average for an even cycle).
  const int half = m / 2;
  std::vector<double> sum(m, 0.0);
  std::vector<int> count(m, 0);
  for (int t = half; t + half < n0; ++t) {
    double v;
    if (m % 2 == 0) {
      v = 0.5 * (y[t - half] + y[t + half]);
      for (int k = t - half + 1; k < t + half; ++k) v += y[k];
    } else {
      v = 0.0;
      for (int k = t - half; k <= t + half; ++k) v += y[k];
    }
    v /= m;
    sum[t % m] += y[t] - v;
    ++count[t % m];
  }
  double mean = 0.0;
  for (int j = 0; j < m; ++j) {
    s.seasonal[j] = count[j] > 0 ? sum[j] / count[j] : 0.0;
    mean += s.seasonal[j] / m;
  }
  for (double& v : s.seasonal) v -= mean;
  // A line through the seasonally adjusted values, at time 0 just before the first one.
  double st = 0.0, sa = 0.0, stt = 0.0, sta = 0.0;
  for (int t = 0; t < n0; ++t) {
    const double x = t + 1.0, a = y[t] - s.seasonal[t % m];
    st += x;
    sa += a;
    stt += x * x;
    sta += x * a;
  }
  const double den = n0 * stt - st * st;
  s.trend = den != 0.0 ? (n0 * sta - st * sa) / den : 0.0;
  s.level = (sa - s.trend * st) / n0;
  return s;
}

HoltWintersRun HoltWintersFilter(const std::vector<double>& y, int m, const HoltWintersSmoothing& s,
                                 const HoltWintersStates& start) {
  HoltWintersRun r;
  const int n = static_cast<int>(y.size());
  r.fitted.resize(n);
  r.residuals.resize(n);
  double level = start.level, trend = start.trend;
  std::vector<double> season = start.seasonal;
  season.resize(std::max(m, 1), 0.0);
  const int period = std::max(m, 1);
  for (int t = 0; t < n; ++t) {
    double& st = season[t % period];
    const double f = level + trend + st;
    const double e = y[t] - f;
    r.fitted[t] = f;
    r.residuals[t] = e;
    r.sse += e * e;
    level = level + trend + s.alpha * e;
    trend = trend + s.alpha * s.beta * e;
    st += s.gamma * e;
  }
  r.final_states.level = level;
  r.final_states.trend = trend;
  r.final_states.seasonal = std::move(season);
  return r;
}

std::vector<double> HoltWintersErrorWeights(const HoltWintersSmoothing& s, int m, int count) {
  std::vector<double> c(std::max(count, 0));
  for (int j = 1; j <= count; ++j)
    c[j - 1] = s.alpha * (1.0 + j * s.beta) + (m > 0 && j % m == 0 ? s.gamma : 0.0);
  return c;
}

std::vector<double> HoltWintersMaForm(const HoltWintersSmoothing& s, int m) {
  // (1 - B)(1 - B**m) times the error weights' series 1 + c_1 B + ... ends at B**(m+1).
  const int q = m + 1;
  std::vector<double> psi(q + 1, 1.0);
  const std::vector<double> c = HoltWintersErrorWeights(s, m, q);
  for (int j = 1; j <= q; ++j) psi[j] = c[j - 1];
  std::vector<double> u(q + 1);
  u[0] = 1.0;
  for (int j = 1; j <= q; ++j) u[j] = psi[j] - psi[j - 1];
  std::vector<double> theta(q);
  for (int j = 1; j <= q; ++j) theta[j - 1] = u[j] - (j >= m ? u[j - m] : 0.0);
  return theta;
}

HoltWintersStates LeastSquaresInitialStates(const std::vector<double>& y, int m, const HoltWintersSmoothing& s,
                                            const HoltWintersStates& fallback) {
  const int n = static_cast<int>(y.size());
  if (m < 2 || n < m + 2) return fallback;
  // For fixed constants the one-step predictions are linear in the initial states: those of
  // zero states plus D x0, where row t of D is how the prediction of t responds to each
  // initial state. M (k x k, k = m + 2) carries the response of every state to every initial
  // state; a step changes only the rows of the level, the trend and the season in use. The
  // last seasonal state is minus the sum of the others, since a constant added to the level
  // and taken from every seasonal state changes no prediction.
  const int k = m + 2, p = m + 1;
  std::vector<double> M(static_cast<size_t>(k) * k, 0.0);
  for (int i = 0; i < k; ++i) M[static_cast<size_t>(i) * k + i] = 1.0;
  std::vector<double> G(static_cast<size_t>(p) * p, 0.0), c(p, 0.0), d(p);
  std::vector<double> season(m, 0.0);
  double level = 0.0, trend = 0.0;
  const double ab = s.alpha * s.beta;
  for (int t = 0; t < n; ++t) {
    const int j = t % m;
    double* rl = &M[0];
    double* rb = &M[static_cast<size_t>(k)];
    double* rs = &M[static_cast<size_t>(2 + j) * k];
    const double last = rl[k - 1] + rb[k - 1] + rs[k - 1];
    d[0] = rl[0] + rb[0] + rs[0];
    d[1] = rl[1] + rb[1] + rs[1];
    for (int q = 2; q < p; ++q) d[q] = rl[q] + rb[q] + rs[q] - last;
    // The errors from zero states.
    const double f0 = level + trend + season[j];
    const double e0 = y[t] - f0;
    level += trend + s.alpha * e0;
    trend += ab * e0;
    season[j] += s.gamma * e0;
    for (int a = 0; a < p; ++a) {
      c[a] += d[a] * e0;
      double* row = &G[static_cast<size_t>(a) * p];
      for (int b2 = 0; b2 <= a; ++b2) row[b2] += d[a] * d[b2];
    }
    for (int col = 0; col < k; ++col) {
      const double L = rl[col], B = rb[col], S = rs[col], f = L + B + S;
      rl[col] = L + B - s.alpha * f;
      rb[col] = B - ab * f;
      rs[col] = S - s.gamma * f;
    }
  }
  Eigen::MatrixXd A(p, p);
  Eigen::VectorXd rhs(p);
  for (int a = 0; a < p; ++a) {
    rhs(a) = c[a];
    for (int b2 = 0; b2 <= a; ++b2) A(a, b2) = A(b2, a) = G[static_cast<size_t>(a) * p + b2];
  }
  Eigen::LDLT<Eigen::MatrixXd> ldlt(A);
  if (ldlt.info() != Eigen::Success || !ldlt.isPositive()) return fallback;
  const Eigen::VectorXd x = ldlt.solve(rhs);
  if (!x.allFinite()) return fallback;
  HoltWintersStates out;
  out.level = x(0);
  out.trend = x(1);
  out.seasonal.assign(m, 0.0);
  for (int q = 0; q + 1 < m; ++q) {
    out.seasonal[q] = x(q + 2);
    out.seasonal[m - 1] -= x(q + 2);
  }
  return out;
}

HoltWintersEstimate EstimateHoltWinters(const std::vector<double>& y, int m, bool fit_initial_states) {
  HoltWintersEstimate est;
  est.initial = HoltWintersInitialStates(y, m);
  est.decomposition = est.initial;
  const int n = static_cast<int>(y.size());
  double sst = 0.0;
  const double ybar = Mean(y);
  for (double v : y) sst += (v - ybar) * (v - ybar);
  const double penalty = 1e3 * std::max(sst, 1.0);
  // Up to kProfiledPeriod the initial states are solved for at every trial of the
  // constants; beyond it that costs too much (the states grow with the cycle), and the
  // constants and the states are improved in turn instead, each step lowering the errors.
  const bool profiled = fit_initial_states && m <= kProfiledPeriod;
  HoltWintersStates held = est.decomposition;
  auto states_for = [&](const HoltWintersSmoothing& s) {
    return profiled ? LeastSquaresInitialStates(y, m, s, est.decomposition) : held;
  };
  const SseOf sse_of = [&](const HoltWintersSmoothing& s) { return HoltWintersFilter(y, m, s, states_for(s)).sse; };

  // A coarse grid finds the basins; the best three grid points start the simplex.
  const double grid[] = {0.02, 0.1, 0.25, 0.5, 0.8, 0.98};
  std::vector<std::pair<double, Point>> tried;
  for (double a : grid)
    for (double b : grid)
      for (double g : grid) {
        const Point p{a, b, g};
        tried.push_back({Objective(sse_of, p, penalty), p});
        ++est.evaluations;
      }
  std::partial_sort(tried.begin(), tried.begin() + 3, tried.end(),
                    [](const auto& l, const auto& r) { return l.first < r.first; });
  Point best = tried[0].second;
  double best_f = tried[0].first;
  for (int i = 0; i < 3; ++i) {
    Point p = NelderMead(sse_of, tried[i].second, 0.1, penalty, est.evaluations);
    // A restart at the result guards against a collapsed simplex.
    p = NelderMead(sse_of, p, 0.02, penalty, est.evaluations);
    const double f = Objective(sse_of, p, penalty);
    if (f < best_f) {
      best_f = f;
      best = p;
    }
  }
  if (fit_initial_states && !profiled) {
    for (int round = 0; round < 10; ++round) {
      const HoltWintersStates next = LeastSquaresInitialStates(y, m, FromPoint(best), held);
      const double f_next = HoltWintersFilter(y, m, FromPoint(best), next).sse;
      if (!(f_next < best_f * (1.0 - 1e-9))) break;
      held = next;
      best = NelderMead(sse_of, best, 0.05, penalty, est.evaluations);
      best_f = Objective(sse_of, best, penalty);
    }
  }
  est.smoothing = FromPoint(best);
  est.initial = states_for(est.smoothing);
  est.run = HoltWintersFilter(y, m, est.smoothing, est.initial);

  // Standard errors: sigma^2 (J'J)^-1 with J the derivatives of the errors by alpha, beta
  // and gamma (central differences, one-sided at 0 and 1; the initial states follow the
  // constants as they did in the last search).
  const int k = 3 + m + 1;
  const double sigma2 = est.run.sse / std::max(1, n - k);
  Eigen::MatrixXd J(n, 3);
  for (int i = 0; i < 3; ++i) {
    const double h = 1e-6;
    HoltWintersSmoothing sl = est.smoothing, sh = est.smoothing;
    double* lo = i == 0 ? &sl.alpha : i == 1 ? &sl.beta : &sl.gamma;
    double* hi = i == 0 ? &sh.alpha : i == 1 ? &sh.beta : &sh.gamma;
    *lo = std::max(0.0, *lo - h);
    *hi = std::min(1.0, *hi + h);
    const HoltWintersRun rl = HoltWintersFilter(y, m, sl, states_for(sl));
    const HoltWintersRun rh = HoltWintersFilter(y, m, sh, states_for(sh));
    for (int t = 0; t < n; ++t) J(t, i) = (rh.residuals[t] - rl.residuals[t]) / (*hi - *lo);
  }
  const Eigen::MatrixXd info = J.transpose() * J;
  est.std_errors.assign(3, 0.0);
  Eigen::FullPivLU<Eigen::MatrixXd> lu(info);
  if (lu.isInvertible()) {
    const Eigen::MatrixXd cov = sigma2 * lu.inverse();
    for (int i = 0; i < 3; ++i)
      if (cov(i, i) > 0.0 && std::isfinite(cov(i, i))) est.std_errors[i] = std::sqrt(cov(i, i));
  }
  return est;
}

ModelResult FitHoltWintersModel(const ModelingProblem& problem, const std::vector<double>& y, int m, int horizon) {
  ModelResult r;
  const int n = static_cast<int>(y.size());
  HoltWintersEstimate est;
  if (problem.rules.estimation_enabled) {
    est = EstimateHoltWinters(y, m);
  } else {
    est.smoothing = kHoltWintersDefaults;
    est.decomposition = est.initial = HoltWintersInitialStates(y, m);
    est.run = HoltWintersFilter(y, m, est.smoothing, est.initial);
    est.std_errors.assign(3, 0.0);
    r.warnings.push_back("Model estimation is disabled in the rules; the smoothing constants were held at alpha " +
                         Fixed4(est.smoothing.alpha) + ", beta " + Fixed4(est.smoothing.beta) + ", gamma " +
                         Fixed4(est.smoothing.gamma) + " from the decomposition's initial states.");
  }
  const HoltWintersSmoothing& s = est.smoothing;
  const HoltWintersStates& last = est.run.final_states;
  const std::string name = problem.output_name.empty() ? "Y" : problem.output_name;

  // The ARIMA form describes the model to the rest of the engine (its differencing and MA
  // terms go to PASS2MOD.123); the smoothing constants and states are the coefficients.
  r.lambda = 1.0;
  r.d = 1;
  r.D = 1;
  r.q = m + 1;
  r.period = m;
  r.has_constant = false;
  r.parameters = 3 + m + 1;  // alpha, beta, gamma, level, trend and m - 1 free seasonal states
  r.observations = n;
  r.degrees_of_freedom = std::max(0, n - r.parameters);
  const int df = std::max(1, r.degrees_of_freedom);
  const char* smoothing_terms[] = {"ALPHA (LEVEL)", "BETA (TREND)", "GAMMA (SEASONAL)"};
  const double smoothing_values[] = {s.alpha, s.beta, s.gamma};
  for (int i = 0; i < 3; ++i) {
    Coefficient c;
    c.term = smoothing_terms[i];
    c.kind = "smoothing";
    c.value = smoothing_values[i];
    c.std_error = est.std_errors[i];
    c.t_value = c.std_error > 0.0 ? c.value / c.std_error : 0.0;
    c.p_value = c.std_error > 0.0 ? TwoSidedTPValue(c.t_value, df) : 0.0;
    r.coefficients.push_back(c);
  }
  auto add_state = [&](const std::string& term, double value, int lag) {
    Coefficient c;
    c.term = term;
    c.kind = "state";
    c.lag = lag;
    c.value = value;
    r.coefficients.push_back(c);
  };
  add_state("LEVEL", last.level, 0);
  add_state("TREND", last.trend, 0);
  // The seasonal states by the period of the cycle they belong to.
  std::vector<double> by_period(m, 0.0);
  for (int t = n; t < n + m; ++t) {
    const int period = ((problem.begin_period - 1 + t) % m + m) % m;
    by_period[period] = last.seasonal[t % m];
  }
  for (int j = 0; j < m; ++j) add_state("SEASON " + std::to_string(j + 1), by_period[j], j + 1);
  const std::vector<double> theta = HoltWintersMaForm(s, m);
  for (int j = 0; j <= m; ++j) {
    Coefficient c;
    c.lag = j + 1;
    c.term = "MA(" + std::to_string(c.lag) + ")";
    c.kind = "ma";
    c.value = theta[j];
    r.coefficients.push_back(c);
  }

  r.description = std::string(kPresetName) + ": ALPHA " + Fixed4(s.alpha) + " BETA " + Fixed4(s.beta) + " GAMMA " +
                  Fixed4(s.gamma);
  const std::string ms = std::to_string(m);
  r.equation = name + "(t) = L(t-1) + T(t-1) + S(t-" + ms + ") + a(t)\n" +
               "L(t) = L(t-1) + T(t-1) + " + Fixed4(s.alpha) + " a(t)\n" +
               "T(t) = T(t-1) + " + Fixed4(s.alpha * s.beta) + " a(t)\n" +
               "S(t) = S(t-" + ms + ") + " + Fixed4(s.gamma) + " a(t)\n";
  {
    std::vector<double> ma(theta.begin(), theta.end());
    r.equation += "ARIMA form: (1 - B)(1 - B**" + ms + ") " + name + "(t) = " + Factor(ma, 1, 1.0) + " a(t)";
  }

  // In-sample figures.
  r.fitted = est.run.fitted;
  r.residuals = est.run.residuals;
  r.cleansed = y;
  r.sse = est.run.sse;
  const int k_lik = r.parameters + 1;
  r.variance = r.sse / df;
  double sst = 0.0, ape = 0.0;
  int ape_n = 0;
  const double ybar = Mean(y);
  for (int t = 0; t < n; ++t) {
    sst += (y[t] - ybar) * (y[t] - ybar);
    if (y[t] != 0.0) {
      ape += std::fabs(r.residuals[t] / y[t]);
      ++ape_n;
    }
  }
  r.r_squared = sst > 0.0 ? 1.0 - r.sse / sst : 0.0;
  r.loglik = r.sse > 0.0 ? -0.5 * n * (std::log(2.0 * kPi * r.sse / n) + 1.0) : 0.0;
  r.aic = -2.0 * r.loglik + 2.0 * k_lik;
  r.bic = -2.0 * r.loglik + std::log(std::max(1, n)) * k_lik;
  r.mape = ape_n ? 100.0 * ape / ape_n : 0.0;
  FillResidualDiagnostics(r, r.residuals, m, 3, n);

  // Forecasts: level + h trend + the seasonal state of the period; the error of h steps
  // ahead has variance sigma^2 (1 + sum_{j<h} c_j^2).
  if (horizon > 0) {
    const double z = CentralNormalQuantile(problem.rules.forecast_confidence);
    const std::vector<double> c = HoltWintersErrorWeights(s, m, horizon);
    r.forecasts.resize(horizon);
    r.lower.resize(horizon);
    r.upper.resize(horizon);
    double sum = 1.0;
    for (int h = 1; h <= horizon; ++h) {
      if (h > 1) sum += c[h - 2] * c[h - 2];
      const double f = last.level + h * last.trend + last.seasonal[(n + h - 1) % m];
      const double half = z * std::sqrt(r.variance * sum);
      r.forecasts[h - 1] = f;
      r.lower[h - 1] = f - half;
      r.upper[h - 1] = f + half;
    }
  }

  r.notes.push_back({"Holt-Winters", "A decomposition of the first " + std::to_string(std::clamp(n / m, 2, 5)) +
                                         " cycles gives level " + Num(est.decomposition.level) + " and trend " +
                                         Num(est.decomposition.trend) + " to start from; the initial states " +
                                         "(level " + Num(est.initial.level) + ", trend " + Num(est.initial.trend) +
                                         ") and the smoothing constants by least squares of the one-step errors (" +
                                         std::to_string(est.evaluations) + " evaluations): alpha " +
                                         Fixed4(s.alpha) + ", beta " + Fixed4(s.beta) + ", gamma " + Fixed4(s.gamma) +
                                         ", SSE " + Num(r.sse) + "."});
  r.notes.push_back({"Final model", r.description + ", " + std::to_string(r.parameters) +
                                        " parameter(s) with the initial states, sigma^2 " + Num(r.variance) +
                                        ", log-likelihood " + Format("%.3f", r.loglik) + ", AIC " +
                                        Format("%.3f", r.aic) + ", BIC " + Format("%.3f", r.bic) + "."});
  r.notes.push_back(DiagnosisNote(r));
  return r;
}

}  // namespace quorvane
