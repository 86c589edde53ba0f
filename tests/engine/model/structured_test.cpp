// Preset models, the user's model and transfer functions on real series: each preset gives
// the structure its name promises, the user's model keeps (or, allowed, tunes) its
// structure, and a transfer function finds the input that drives the output at its lag.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/model/structured.h"
#include "model_test_data.h"

namespace quorvane {
namespace {

ModelingProblem Airline(int objective) {
  ModelingProblem p = testdata::Problem("PASSENGERS", testdata::LoadSeries("airline"), 12, 12, 1949);
  p.objective = objective;
  return p;
}

int CountKind(const ModelResult& r, const std::string& kind) {
  return static_cast<int>(std::count_if(r.coefficients.begin(), r.coefficients.end(),
                                        [&](const Coefficient& c) { return c.kind == kind; }));
}

TEST(Presets, EachGivesTheModelItsNamePromises) {
  struct Expect {
    int objective;
    int p, d, q, P, D, Q;
    bool constant;
    const char* kind;  // the kind of its regressors ("" none)
    int regressors;
  };
  const Expect expect[] = {
      {1, 0, 0, 0, 0, 0, 0, true, "", 0},          {2, 1, 0, 0, 0, 0, 0, true, "", 0},
      {3, 2, 0, 0, 0, 0, 0, true, "", 0},          {4, 0, 1, 1, 0, 0, 0, false, "", 0},
      {5, 0, 2, 2, 0, 0, 0, false, "", 0},         {6, 0, 1, 0, 0, 0, 0, false, "", 0},
      {7, 0, 1, 0, 0, 0, 0, true, "", 0},          {8, 0, 0, 0, 0, 0, 0, true, "trend", 1},
      {9, 1, 0, 0, 0, 0, 0, true, "trend", 1},     {10, 0, 0, 0, 0, 0, 0, true, "fourier", 11},
      {11, 0, 1, 13, 0, 1, 0, false, "", 0}, {12, 1, 1, 2, 0, 0, 0, false, "", 0},
      {13, 0, 0, 0, 0, 1, 1, false, "", 0},        {14, 0, 1, 13, 0, 1, 0, false, "", 0},
      {15, 0, 1, 1, 0, 1, 1, false, "", 0},
  };
  for (const auto& e : expect) {
    SCOPED_TRACE(e.objective);
    const ModelResult r = FitModel(Airline(e.objective), nullptr);
    ASSERT_EQ(r.error_code, 0);
    EXPECT_EQ(r.description.rfind(PresetName(e.objective) + ":", 0), 0u) << r.description;
    EXPECT_EQ((std::vector<int>{r.p, r.d, r.q, r.P, r.D, r.Q}), (std::vector<int>{e.p, e.d, e.q, e.P, e.D, e.Q}));
    EXPECT_EQ(r.has_constant, e.constant);
    if (e.regressors > 0) EXPECT_EQ(CountKind(r, e.kind), e.regressors);
    EXPECT_EQ(CountKind(r, "trend") + CountKind(r, "fourier") + CountKind(r, "seasonal"), e.regressors);
    EXPECT_EQ(r.lambda, 1.0);
    ASSERT_EQ(r.forecasts.size(), 12u);
    for (int h = 0; h < 12; ++h) {
      EXPECT_TRUE(std::isfinite(r.forecasts[h]));
      EXPECT_LE(r.lower[h], r.forecasts[h]);
      EXPECT_GE(r.upper[h], r.forecasts[h]);
    }
    // No fitted value before the first point the model fits (the Holt-Winters smoother
    // fits every period from its initial states).
    const int burn = e.objective == 11 ? 0 : r.d + r.D * 12;
    for (int t = 0; t < burn; ++t) EXPECT_EQ(r.fitted[t], 99999999999.0) << t;
    EXPECT_LT(std::fabs(r.fitted[burn + 5] - 0.0), 1e6);
  }
  // What the structures imply for the forecasts: the mean is flat at the sample mean, the
  // random walk repeats the last value, the trend rises by its slope, and the airline model
  // keeps the season (July above November).
  const auto y = testdata::LoadSeries("airline");
  double mean = 0;
  for (double v : y) mean += v;
  mean /= y.size();
  const ModelResult m1 = FitModel(Airline(1), nullptr);
  EXPECT_NEAR(m1.forecasts[0], mean, 1e-6 * mean);
  EXPECT_NEAR(m1.forecasts[11], m1.forecasts[0], 1e-9);
  const ModelResult m6 = FitModel(Airline(6), nullptr);
  EXPECT_DOUBLE_EQ(m6.forecasts[5], y.back());
  const ModelResult m8 = FitModel(Airline(8), nullptr);
  double slope = 0;
  for (const auto& c : m8.coefficients)
    if (c.kind == "trend") slope = c.value;
  EXPECT_GT(slope, 2.0);
  EXPECT_NEAR(m8.forecasts[1] - m8.forecasts[0], slope, 1e-6);
  const ModelResult m15 = FitModel(Airline(15), nullptr);
  EXPECT_GT(m15.forecasts[6], m15.forecasts[10]);
}

TEST(Presets, TunedAndExtendedOnlyWhenAllowed) {
  // A time trend with AR(1) leaves the airline's season in the residuals; held as it is the
  // preset keeps its structure, allowed to modify it the engine extends the noise model.
  ModelingProblem p = Airline(9);
  const ModelResult held = FitModel(p, nullptr);
  ASSERT_EQ(held.error_code, 0);
  EXPECT_EQ(held.p + held.q, 1);
  EXPECT_LT(held.ljung_box_p, 0.05);
  p.rules.allow_modifications = true;
  const ModelResult tuned = FitModel(p, nullptr);
  ASSERT_EQ(tuned.error_code, 0);
  EXPECT_GT(tuned.p + tuned.q, 1);
  EXPECT_LT(tuned.aic, held.aic);
  EXPECT_EQ(CountKind(tuned, "trend"), 1);
}

TEST(Presets, RefusedWhereTheyDoNotApply) {
  // A regression preset needs inputs; a seasonal preset needs a seasonality of 4 or more.
  for (int objective : {51, 52}) {
    const ModelResult r = FitModel(Airline(objective), nullptr);
    EXPECT_EQ(r.error_code, 2164);
  }
  for (int objective : {10, 11, 13, 14, 15}) {
    ModelingProblem p = Airline(objective);
    p.seasonality = 1;
    EXPECT_EQ(FitModel(p, nullptr).error_code, 2163) << objective;
    p.seasonality = 4;
    EXPECT_EQ(FitModel(p, nullptr).error_code, 0) << objective;
  }
  // Non-seasonal presets run on an annual series.
  ModelingProblem p = Airline(9);
  p.seasonality = 1;
  EXPECT_EQ(FitModel(p, nullptr).error_code, 0);
  // A regression preset on inputs that repeat one another: the redundancy is reported.
  ModelingProblem q = Airline(51);
  InputSeries a{"A", 1, {}, std::vector<double>(12, 1.0), {}};
  for (size_t t = 0; t < q.y.size(); ++t) a.history.push_back(std::sin(0.3 * t));
  InputSeries b = a;
  b.name = "B";
  for (double& v : b.history) v = 2.0 * v + 1.0;
  for (double& v : b.future) v = 3.0;
  q.inputs = {a, b};
  const ModelResult r = FitModel(q, nullptr);
  EXPECT_EQ(r.error_code, 2155);
  ASSERT_FALSE(r.warnings.empty());
  EXPECT_EQ(r.warnings[0], " TESSALY HAS IDENTIFIED A LINEAR REDUNDANCY. DELETE REDUNDANT VARIABLES.");
}

// The user's model: an airline model given with its coefficients as start values, a
// lambda of 0 and a constant left out.
ModelBlock AirlineBlock() {
  ModelBlock b;
  b.name = "PASSENGERS";
  b.lambda = 0.0;
  b.differencing = {1, 12};
  b.second = {{{1}, {-0.4}}, {{12}, {-0.6}}};
  return b;
}

TEST(UserModel, HeldFixedOrTunedAndExtended) {
  ModelingProblem p = Airline(99);
  p.start_model = {AirlineBlock()};
  const ModelResult r = FitModel(p, nullptr);
  ASSERT_EQ(r.error_code, 0);
  EXPECT_EQ(r.lambda, 0.0);
  EXPECT_EQ(r.d, 1);
  EXPECT_EQ(r.D, 1);
  EXPECT_EQ(r.q, 1);
  EXPECT_EQ(r.Q, 1);
  EXPECT_EQ(r.period, 12);
  // The logged airline model's estimates (as the univariate reference has them).
  for (const auto& c : r.coefficients) {
    if (c.kind == "ma") EXPECT_NEAR(c.value, -0.4018, 0.02);
    if (c.kind == "sma") EXPECT_NEAR(c.value, -0.5569, 0.02);
  }

  // With estimation off, the model's own coefficients are kept.
  ModelingProblem fixed = p;
  fixed.rules.estimation_enabled = false;
  const ModelResult kept = FitModel(fixed, nullptr);
  ASSERT_EQ(kept.error_code, 0);
  for (const auto& c : kept.coefficients) {
    if (c.kind == "ma") EXPECT_NEAR(c.value, -0.4, 1e-9);
    if (c.kind == "sma") EXPECT_NEAR(c.value, -0.6, 1e-9);
  }

  // Held fixed: an AR(3) that is not needed stays; allowed to modify, it is tuned away.
  ModelBlock extra = AirlineBlock();
  extra.first = {{{3}, {0.01}}};
  p.start_model = {extra};
  const ModelResult held = FitModel(p, nullptr);
  ASSERT_EQ(held.error_code, 0);
  EXPECT_EQ(held.p, 3);
  p.rules.allow_modifications = true;
  const ModelResult tuned = FitModel(p, nullptr);
  ASSERT_EQ(tuned.error_code, 0);
  EXPECT_EQ(tuned.p, 0);
  EXPECT_EQ(tuned.q, 1);
  EXPECT_EQ(tuned.Q, 1);

  // Extended: a white-noise model of the differenced logs leaves autocorrelated residuals;
  // allowed to modify, the engine adds ARMA terms.
  ModelBlock bare = AirlineBlock();
  bare.second.clear();
  p.start_model = {bare};
  p.rules.allow_modifications = false;
  const ModelResult plain = FitModel(p, nullptr);
  EXPECT_EQ(plain.p + plain.q + plain.P + plain.Q, 0);
  p.rules.allow_modifications = true;
  const ModelResult extended = FitModel(p, nullptr);
  EXPECT_GT(extended.p + extended.q, 0);
  EXPECT_LT(extended.aic, plain.aic);

  // A model that names an input the dataset lacks is malformed.
  ModelBlock input;
  input.name = "NOSUCH";
  input.second = {{{0}, {1.0}}};
  p.start_model = {AirlineBlock(), input};
  EXPECT_EQ(FitModel(p, nullptr).error_code, 2190);
}

// Changes of unemployment follow output growth (Okun's law): the transfer function finds
// real GDP now and a quarter before, leaves out an input of noise, and its forecasts of
// held-out quarters, given the input's values, beat the output series' own model.
TEST(TransferFunction, FindsTheDrivingInputAndItsLags) {
  const auto unemp = testdata::LoadSeries("macro_unemp");
  const auto gdp = testdata::LoadSeries("macro_realgdp");
  const int n = static_cast<int>(unemp.size());
  const int hold = 12;
  const int used = n - hold;
  ModelingProblem p;
  p.output_name = "UNEMP";
  p.seasonality = 4;
  p.begin_year = 1959;
  p.y.assign(unemp.begin(), unemp.begin() + used);
  p.horizon = hold;
  InputSeries g;
  g.name = "LNGDP";
  g.type = 1;
  for (int t = 0; t < n; ++t) (t < used ? g.history : g.retained).push_back(100.0 * std::log(gdp[t]));
  InputSeries noise;
  noise.name = "NOISE";
  noise.type = 1;
  uint32_t s = 12345;
  for (int t = 0; t < n; ++t) {
    s = s * 1664525u + 1013904223u;
    (t < used ? noise.history : noise.retained).push_back((s >> 8) / 16777216.0);
  }
  p.inputs = {noise, g};
  const ModelResult r = FitModel(p, nullptr);
  ASSERT_EQ(r.error_code, 0);
  ASSERT_EQ(r.inputs_kept, std::vector<std::string>{"LNGDP"});
  auto input_terms = [](const ModelResult& m) {
    std::vector<Coefficient> out;
    for (const auto& c : m.coefficients)
      if (c.kind == "input") out.push_back(c);
    return out;
  };
  // Growth lowers unemployment now and, decaying, in the next quarters: the lags 0, 1, 2
  // that the cross-correlations show become omega / (1 - delta B).
  const auto terms = input_terms(r);
  ASSERT_GE(terms.size(), 1u);
  EXPECT_EQ(terms[0].lag, 0);
  EXPECT_LT(terms[0].value, -0.1);
  EXPECT_LT(terms[0].t_value, -5.0);
  double delta = 0.0;
  for (const auto& c : r.coefficients)
    if (c.kind == "denominator") delta = c.value;
  EXPECT_GT(delta, 0.3);
  EXPECT_LT(delta, 0.8);
  EXPECT_NE(r.equation.find("/ (1 - "), std::string::npos);
  EXPECT_EQ(r.d, 1);
  // The 1974-75 recession lifted unemployment beyond what output explains: a level shift,
  // estimated jointly with the transfer function and taken out of the cleansed series.
  const Intervention* shift = nullptr;
  for (const auto& iv : r.interventions)
    if (iv.type == 2 && iv.major == 1975) shift = &iv;
  ASSERT_NE(shift, nullptr);
  EXPECT_GT(shift->impact, 0.3);
  const int at = shift->observation - 1;
  EXPECT_NEAR(p.y[at] - r.cleansed[at], shift->impact, 1e-9);
  EXPECT_EQ(r.cleansed[at - 1], p.y[at - 1]);
  EXPECT_EQ(r.leading_left_out, terms.back().lag);
  // Constrained causal coefficients keep the sign of the strongest term (lag 0).
  ModelingProblem constrained = p;
  constrained.rules.constrain_causal = true;
  const ModelResult rc = FitModel(constrained, nullptr);
  ASSERT_EQ(rc.error_code, 0);
  ASSERT_FALSE(input_terms(rc).empty());
  for (const auto& c : input_terms(rc)) EXPECT_LT(c.value, 0.0) << c.term;

  ModelingProblem alone = p;
  alone.inputs.clear();
  const ModelResult u = FitModel(alone, nullptr);
  ASSERT_EQ(u.forecasts.size(), static_cast<size_t>(hold));
  ASSERT_EQ(r.forecasts.size(), static_cast<size_t>(hold));
  double e_tf = 0, e_u = 0;
  for (int h = 0; h < hold; ++h) {
    e_tf += std::fabs(unemp[used + h] - r.forecasts[h]);
    e_u += std::fabs(unemp[used + h] - u.forecasts[h]);
  }
  EXPECT_LT(e_tf, e_u);
}

// Leads for type-3 inputs up to the rules' maximum lead, and inputs that enter the
// differenced equation as they are when the rules say not to difference them.
TEST(TransferFunction, LeadsAndUndifferencedInputs) {
  const int n = 150, h = 6;
  std::vector<double> x(n + h + 2), e(n);
  uint32_t s = 7;
  auto uniform = [&] {
    s = s * 1664525u + 1013904223u;
    return (s >> 8) / 16777216.0 - 0.5;
  };
  double xp = 0;
  for (auto& v : x) v = (xp = 0.6 * xp + uniform()) + 5.0;
  for (auto& v : e) v = 0.2 * uniform();
  ModelingProblem p;
  p.output_name = "Y";
  p.horizon = h;
  // y(t) = 20 + 3 x(t+1) + e(t): the output anticipates its input by one period.
  for (int t = 0; t < n; ++t) p.y.push_back(20 + 3 * x[t + 1] + e[t]);
  InputSeries in{"X", 3, std::vector<double>(x.begin(), x.begin() + n),
                 std::vector<double>(x.begin() + n, x.end()), {}};
  p.inputs = {in};
  p.rules.maximum_lead = 2;
  ModelResult r = FitModel(p, nullptr);
  ASSERT_EQ(r.error_code, 0);
  const Coefficient* lead = nullptr;
  for (const auto& c : r.coefficients)
    if (c.kind == "input" && c.lag == -1) lead = &c;
  ASSERT_NE(lead, nullptr);
  EXPECT_EQ(lead->term, "X LEAD 1");
  EXPECT_NEAR(lead->value, 3.0, 0.1);
  // The forecasts use the future values one period ahead of each forecast period.
  ASSERT_EQ(r.forecasts.size(), static_cast<size_t>(h));
  EXPECT_NEAR(r.forecasts[2], 20 + 3 * x[n + 3], 0.5);
  // The same input as type 1 (or with no lead allowed) cannot lead.
  p.inputs[0].type = 1;
  r = FitModel(p, nullptr);
  for (const auto& c : r.coefficients) EXPECT_GE(c.lag, 0) << c.term;

  // dy(t) = 0.5 + 2 x(t) + e(t): y integrates its stationary input.
  ModelingProblem q;
  q.output_name = "LEVEL";
  q.horizon = 4;
  double level = 100;
  for (int t = 0; t < n; ++t) q.y.push_back(level += 0.5 + 2 * (x[t] - 5.0) + e[t]);
  InputSeries xi{"X", 1, std::vector<double>(x.begin(), x.begin() + n), std::vector<double>(x.begin() + n, x.end()), {}};
  q.inputs = {xi};
  q.rules.difference_inputs = false;
  r = FitModel(q, nullptr);
  ASSERT_EQ(r.error_code, 0);
  EXPECT_EQ(r.d, 1);
  bool found = false;
  for (const auto& c : r.coefficients)
    if (c.term == "X LAG 0") {
      found = true;
      EXPECT_NEAR(c.value, 2.0, 0.1);
    }
  EXPECT_TRUE(found);
}

}  // namespace
}  // namespace quorvane
