#pragma once
// Additive Holt-Winters smoothing: a level, a trend and m seasonal states, each corrected by
// its own share of the one-step error. In error-correction form, with e(t) = y(t) - yhat(t),
//   yhat(t) = L(t-1) + T(t-1) + S(t-m)
//   L(t) = L(t-1) + T(t-1) + alpha e(t)
//   T(t) = T(t-1) + alpha beta e(t)
//   S(t) = S(t-m) + gamma e(t)
// which is the textbook recursion L(t) = alpha (y - S(t-m)) + (1 - alpha)(L + T),
// T(t) = beta (L(t) - L(t-1)) + (1 - beta) T, S(t) = gamma (y - L(t-1) - T(t-1)) + (1 - gamma) S(t-m).
#include <vector>

#include "engine/model.h"

namespace quorvane {

struct HoltWintersSmoothing {
  double alpha = 0.0;  // level
  double beta = 0.0;   // trend (as a share of the level's change)
  double gamma = 0.0;  // seasonal
};

// The states before an observation. seasonal[j] is the factor of the observations t with
// t % m == j (0-based from the first observation of the series).
struct HoltWintersStates {
  double level = 0.0;
  double trend = 0.0;
  std::vector<double> seasonal;
};

struct HoltWintersRun {
  std::vector<double> fitted;     // one-step predictions, one per observation
  std::vector<double> residuals;  // y - fitted
  double sse = 0.0;
  HoltWintersStates final_states; // after the last observation, seasonal indexed as above
};

// Initial states from a classical decomposition of the first seasons (two to five whole
// cycles): a centred moving average of one cycle gives the trend-cycle, the seasonal states
// are the average deviations from it by period of the cycle (summing to zero), and a line
// fitted to the seasonally adjusted values gives the level and trend before the first
// observation. Needs at least 2 m values and m >= 2; otherwise all states are 0.
HoltWintersStates HoltWintersInitialStates(const std::vector<double>& y, int m);

// Runs the smoother over y from `start` (seasonal of size m).
HoltWintersRun HoltWintersFilter(const std::vector<double>& y, int m, const HoltWintersSmoothing& s,
                                 const HoltWintersStates& start);

// The weights of the forecast error: y(n+h) - yhat(n+h) = e(n+h) + sum_{j=1}^{h-1} c_j e(n+h-j)
// with c_j = alpha (1 + j beta) + gamma [j mod m == 0]; returns c_1 .. c_{count}.
std::vector<double> HoltWintersErrorWeights(const HoltWintersSmoothing& s, int m, int count);

// The same model in ARIMA form: (1 - B)(1 - B**m) y(t) = (1 + theta_1 B + ... +
// theta_{m+1} B**(m+1)) e(t); returns theta_1 .. theta_{m+1}.
std::vector<double> HoltWintersMaForm(const HoltWintersSmoothing& s, int m);

// The initial states that minimise the squared one-step errors for given constants (the
// predictions are linear in them), the seasonal states summing to zero. `fallback` when
// the series is too short to determine them.
HoltWintersStates LeastSquaresInitialStates(const std::vector<double>& y, int m, const HoltWintersSmoothing& s,
                                            const HoltWintersStates& fallback);

struct HoltWintersEstimate {
  HoltWintersSmoothing smoothing;
  HoltWintersStates decomposition;  // the states of HoltWintersInitialStates
  HoltWintersStates initial;        // the states the smoother started from
  HoltWintersRun run;
  std::vector<double> std_errors;   // of alpha, beta, gamma (0 where not defined)
  int evaluations = 0;
};

// alpha and beta in [0, 1], gamma in [0, 1 - alpha], minimising the one-step squared
// errors: a coarse grid, then
// Nelder-Mead from its three best points, each restarted at its result. The initial states
// are those of the decomposition, or, with `fit_initial_states`, the least-squares states:
// up to a cycle of kProfiledPeriod solved for at each trial of the constants, beyond it
// improved in turn with the constants (from the decomposition's, which also stand in when
// the states cannot be determined). Standard errors from the derivatives of the errors.
inline constexpr int kProfiledPeriod = 24;
HoltWintersEstimate EstimateHoltWinters(const std::vector<double>& y, int m, bool fit_initial_states = true);

// The constants when the rules turn estimation off.
inline constexpr HoltWintersSmoothing kHoltWintersDefaults{0.2, 0.1, 0.1};

// The preset "HOLT LINEAR TREND PLUS ADDITIVE SEASONAL FACTORS" on y (missing values already
// filled, at least 2 m + 3 values, m >= 2): the estimate, in-sample figures, forecasts
// level + h trend + seasonal with limits from the variance
// sigma^2 (1 + sum_{j<h} c_j^2), and the model's texts.
ModelResult FitHoltWintersModel(const ModelingProblem& problem, const std::vector<double>& y, int m, int horizon);

}  // namespace quorvane
