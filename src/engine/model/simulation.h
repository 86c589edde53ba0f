#pragma once
// Monte Carlo simulation of a fitted model over the forecast periods: many futures of the
// model drawn with a given innovation variance and seed, whose quantiles stand in for the
// analytic forecast limits ("SIMULATION ENABLED", "NOISE SERIES", "SEED VALUE").
#include <cstdint>
#include <string>
#include <vector>

#include "engine/model.h"
#include "engine/model/estimate.h"

namespace quorvane {

constexpr int kSimulationPaths = 1000;

// The model as the simulation runs it, on its (transformed) scale:
//   z(T+h) = center(h) + e(h),   e(t) = sum phi_k e(t-k) + a(t) + sum theta_k a(t-k),
// with e and a zero up to the end of the sample. `center` is the point forecast: the
// constant or drift, the inputs at their given future values and the interventions' effects
// are all known, so the paths differ only by the innovations run through the model's
// difference equation. `phi` holds the differencing (unit roots) as well as the AR factors.
struct SimulationModel {
  std::vector<double> center;   // per horizon, on the transformed scale
  double lambda = 1.0;          // Box-Cox power to go back to the series' scale
  std::vector<double> phi;      // regression sign, lags 1..
  std::vector<double> theta;    // plus sign, lags 1..
};

// The ARIMA of a fit as a simulation model around the given point forecasts (on z's scale).
SimulationModel SimulationModelOfFit(const ArimaFit& fit, const std::vector<double>& center, double lambda);

// The ARIMA form of a finished result (its AR, MA, seasonal coefficients, differencing and
// transform) around its forecasts. False, with the reason, when the result has no such form
// (Croston-type models) or its forecasts cannot be taken to the transformed scale.
bool SimulationModelOfResult(const ModelResult& r, SimulationModel& model, std::string& why_not);

// Draws `paths` futures with innovations N(0, variance) from a mt19937_64 seeded with
// `seed`, and summarises them by horizon on the series' scale: mean, median, standard
// deviation and the central `coverage_pct` interval from the empirical quantiles. The same
// seed gives the same numbers.
SimulationSummary Simulate(const SimulationModel& model, int paths, double variance, uint64_t seed,
                           double coverage_pct);

// The innovation variance of a result on its transformed scale, from its residuals.
double TransformedInnovationVariance(const ModelResult& r);

// What "SIMULATION ENABLED" does to a finished result: simulate it with the rules' noise
// variance and seed (0: a seed from the clock, reported), and make the forecasts the
// simulated medians and the limits the simulated quantiles. A result that cannot be
// simulated keeps its forecasts and gets a warning saying why.
void ApplySimulation(const ModelingProblem& problem, ModelResult& r);

}  // namespace quorvane
