// Monte Carlo simulation of a fitted model: reproducible from its seed, and, given the
// model's own innovation variance, limits that agree with the analytic ones.
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "engine/model.h"
#include "engine/model/estimate.h"
#include "engine/model/forecast.h"
#include "engine/model/simulation.h"
#include "model_test_data.h"

namespace quorvane {
namespace {

ArimaFit Fit(const std::vector<double>& z, ArimaOrders orders) {
  ArimaFit f = FitArima(z, orders, ConvergenceCriteria{}, false);
  EXPECT_TRUE(f.ok);
  return f;
}

// The standard errors of a 1000-path quantile and median of a normal are about 0.085 and
// 0.04 of its standard deviation; the bounds below are four of them.
void ExpectAgreesWithAnalytic(const SimulationSummary& s, const ArimaForecast& fc, double lambda) {
  ASSERT_TRUE(s.done);
  ASSERT_EQ(s.median.size(), fc.mean.size());
  auto z = [&](double v) { return lambda == 0.0 ? std::log(v) : v; };
  for (size_t h = 0; h < fc.mean.size(); ++h) {
    const double se = fc.se[h];
    EXPECT_NEAR(z(s.lower[h]), fc.lower[h], 0.35 * se) << h;
    EXPECT_NEAR(z(s.upper[h]), fc.upper[h], 0.35 * se) << h;
    EXPECT_NEAR(z(s.median[h]), fc.mean[h], 0.16 * se) << h;
    EXPECT_LT(s.lower[h], s.median[h]);
    EXPECT_LT(s.median[h], s.upper[h]);
    if (lambda == 1.0) EXPECT_NEAR(s.sd[h] / se, 1.0, 0.1) << h;
  }
}

TEST(Simulation, LimitsAgreeWithTheAnalyticOnesAtTheEstimatedVariance) {
  // AR(1) with a mean: the error variance grows to sigma2 / (1 - phi^2).
  std::vector<double> y = testdata::SimulateArma11(300, 0.6, 0.0, 2.0, 11);
  for (double& v : y) v += 50.0;
  ArimaOrders ar;
  ar.p = 1;
  ar.constant = true;
  const ArimaFit f1 = Fit(y, ar);
  const ArimaForecast fc1 = ForecastArima(y, f1, 12, 95.0);
  const SimulationSummary s1 = Simulate(SimulationModelOfFit(f1, fc1.mean, 1.0), kSimulationPaths, f1.sigma2, 42, 95.0);
  ExpectAgreesWithAnalytic(s1, fc1, 1.0);
  EXPECT_EQ(s1.sample_path.size(), 12u);

  // The airline model on the logs: two unit roots, so the paths spread without bound and
  // back on the series' scale they are skewed (the mean above the median).
  const std::vector<double> air = testdata::LoadSeries("airline");
  ASSERT_EQ(air.size(), 144u);
  std::vector<double> logs;
  for (double v : air) logs.push_back(std::log(v));
  ArimaOrders airline;
  airline.d = airline.D = 1;
  airline.q = airline.Q = 1;
  airline.period = 12;
  const ArimaFit f2 = Fit(logs, airline);
  const ArimaForecast fc2 = ForecastArima(logs, f2, 24, 80.0);
  const SimulationSummary s2 = Simulate(SimulationModelOfFit(f2, fc2.mean, 0.0), kSimulationPaths, f2.sigma2, 7, 80.0);
  ExpectAgreesWithAnalytic(s2, fc2, 0.0);
  EXPECT_GT(s2.sd[23], 2.0 * s2.sd[0]);
  EXPECT_GT(s2.mean[23], s2.median[23]);
}

TEST(Simulation, TheSameSeedGivesTheSameNumbers) {
  ArimaFit f;
  f.ok = true;
  f.orders.p = 1;
  f.orders.d = 1;
  f.orders.q = 1;
  f.coef.ar = {0.5};
  f.coef.ma = {-0.3};
  const SimulationModel m = SimulationModelOfFit(f, std::vector<double>(10, 100.0), 1.0);
  // (1 - 0.5B)(1 - B): the differencing is in the model's AR side.
  ASSERT_EQ(m.phi.size(), 2u);
  EXPECT_DOUBLE_EQ(m.phi[0], 1.5);
  EXPECT_DOUBLE_EQ(m.phi[1], -0.5);
  const SimulationSummary a = Simulate(m, 500, 2.5, 1234, 95.0);
  const SimulationSummary b = Simulate(m, 500, 2.5, 1234, 95.0);
  const SimulationSummary c = Simulate(m, 500, 2.5, 1235, 95.0);
  EXPECT_EQ(a.median, b.median);
  EXPECT_EQ(a.lower, b.lower);
  EXPECT_EQ(a.upper, b.upper);
  EXPECT_EQ(a.sample_path, b.sample_path);
  EXPECT_NE(a.sample_path, c.sample_path);
  EXPECT_NE(a.upper, c.upper);
}

ModelingProblem Airline(bool simulate, double variance, int seed) {
  ModelingProblem p = testdata::Problem("PASSENGERS", testdata::LoadSeries("airline"), 12, 12);
  p.rules.simulation = simulate;
  p.rules.noise_variance = variance;
  p.rules.seed = seed;
  return p;
}

TEST(Simulation, FitAndForecastTakesTheRulesVarianceAndSeed) {
  const ModelResult plain = FitAndForecast(Airline(false, 0.0, 0), {});
  ASSERT_EQ(plain.error_code, 0);
  EXPECT_FALSE(plain.simulation.done);

  // The rules' variance is the innovation variance itself, not a multiple of the fit's:
  // one period ahead the paths spread by exactly its square root.
  const ModelResult sim = FitAndForecast(Airline(true, 99.9, 321), {});
  ASSERT_EQ(sim.error_code, 0);
  ASSERT_TRUE(sim.simulation.done);
  EXPECT_EQ(sim.simulation.seed, 321u);
  EXPECT_FALSE(sim.simulation.seed_from_clock);
  EXPECT_EQ(sim.simulation.paths, kSimulationPaths);
  EXPECT_NEAR(sim.simulation.sd[0], std::sqrt(99.9), 0.1 * std::sqrt(99.9));
  EXPECT_EQ(sim.forecasts, sim.simulation.median);
  EXPECT_EQ(sim.lower, sim.simulation.lower);
  EXPECT_EQ(sim.upper, sim.simulation.upper);
  ASSERT_EQ(sim.forecasts.size(), plain.forecasts.size());
  for (size_t h = 0; h < plain.forecasts.size(); ++h) {
    // The same model: the medians sit on the point forecasts, the limits have moved.
    EXPECT_NEAR(sim.forecasts[h], plain.forecasts[h], 0.2 * sim.simulation.sd[h]) << h;
    EXPECT_NE(sim.upper[h], plain.upper[h]);
  }
  EXPECT_EQ(FitAndForecast(Airline(true, 99.9, 321), {}).upper, sim.upper);

  // Seed 0 takes one from the clock that the rules could hold; no variance: the fit's.
  const ModelResult clock = FitAndForecast(Airline(true, 0.0, 0), {});
  ASSERT_TRUE(clock.simulation.done);
  EXPECT_TRUE(clock.simulation.seed_from_clock);
  EXPECT_GE(clock.simulation.seed, 1u);
  EXPECT_LE(clock.simulation.seed, 9999u);
  EXPECT_TRUE(clock.simulation.variance_estimated);
  EXPECT_NEAR(clock.simulation.noise_variance, TransformedInnovationVariance(plain), 1e-9);
}

// Presets go through the same hook with their own structure: a random walk's paths spread
// as the square root of the horizon; Holt-Winters is simulated in its ARIMA form.
TEST(Simulation, PresetsAreSimulatedWithTheirOwnStructure) {
  ModelingProblem walk = Airline(true, 16.0, 99);
  walk.objective = 6;
  const ModelResult rw = FitAndForecast(walk, {});
  ASSERT_EQ(rw.error_code, 0);
  ASSERT_TRUE(rw.simulation.done);
  for (int h : {1, 4, 12}) EXPECT_NEAR(rw.simulation.sd[h - 1], 4.0 * std::sqrt(h), 0.1 * 4.0 * std::sqrt(h)) << h;

  ModelingProblem hw = Airline(true, 16.0, 99);
  hw.objective = 11;
  const ModelResult smoothing = FitAndForecast(hw, {});
  ASSERT_EQ(smoothing.error_code, 0);
  ASSERT_TRUE(smoothing.simulation.done);
  EXPECT_NEAR(smoothing.simulation.sd[0], 4.0, 0.4);
  EXPECT_GT(smoothing.simulation.sd[11], smoothing.simulation.sd[0]);
}

// Where there is nothing to simulate, the forecasts stay the model's own and a warning says why.
TEST(Simulation, RefusedWithAReasonWhenThereIsNothingToSimulate) {
  ModelingProblem spares = Airline(true, 1.0, 5);
  spares.output_name = "SPARES";
  spares.seasonality = 1;
  spares.y = {0, 6, 5, 0, 0, 6, 0, 0, 0, 6, 0, 0, 4, 0, 3, 0, 0, 0, 0, 0, 0, 0, 4, 0, 7, 0, 0, 0, 0, 0,
              7, 0, 0, 4, 0, 4, 9, 0, 6, 0, 0, 0, 6, 4, 3, 0, 0, 0, 6, 0, 0, 0, 0, 0, 4, 0, 3, 0, 0, 0};
  spares.rules.intermittent = true;
  const ModelResult croston = FitAndForecast(spares, {});
  ASSERT_EQ(croston.error_code, 0);
  ASSERT_EQ(croston.description.rfind("CROSTON", 0), 0u) << croston.description;
  EXPECT_FALSE(croston.simulation.done);
  ASSERT_FALSE(croston.warnings.empty());
  EXPECT_EQ(croston.warnings.back().rfind("No simulation: the model (CROSTON", 0), 0u) << croston.warnings.back();
  EXPECT_EQ(croston.forecasts.size(), 12u);

  ModelingProblem off = Airline(true, 1.0, 5);
  off.rules.forecasting_enabled = false;
  const ModelResult none = FitAndForecast(off, {});
  EXPECT_FALSE(none.simulation.done);
  EXPECT_TRUE(none.forecasts.empty());
  EXPECT_EQ(none.warnings.back(),
            "Simulation was asked for, but no forecast periods were computed: nothing was simulated.");
}

}  // namespace
}  // namespace quorvane
