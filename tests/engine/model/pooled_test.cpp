// Pooled cross-sections: the groups of the rules, the likelihood over the groups against
// statsmodels' per-group likelihoods (reference/pooled_expected.csv, written by
// reference/make_reference_pooled.py), estimates on simulated groups, group boundaries,
// and the comparison the front-end's F-test makes.
#include "engine/model/pooled.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>

#include "engine/model/arma.h"
#include "engine/model/forecast.h"
#include "engine/model/structured.h"
#include "model_test_data.h"
#include "support/program_folder.h"

namespace quorvane {
namespace {

constexpr double kMissing = 99999999999.0;

// Groups of one AR(1) around `mean`, each simulated from its own start.
std::vector<double> StackedAr1(int groups, int size, double phi, double mean, uint32_t seed,
                               std::vector<double> level_of_group = {}) {
  std::vector<double> y;
  for (int g = 0; g < groups; ++g) {
    const auto x = testdata::SimulateArma11(size, phi, 0.0, 1.0, seed + 17u * g);
    const double level = g < static_cast<int>(level_of_group.size()) ? level_of_group[g] : mean;
    for (double v : x) y.push_back(level + v);
  }
  return y;
}

ModelingProblem PooledProblem(std::vector<double> y, int groups, int objective) {
  ModelingProblem p;
  p.output_name = "SALES";
  p.y = std::move(y);
  p.seasonality = 1;
  p.begin_year = 1950;
  p.begin_period = 1;
  p.horizon = 5;
  p.objective = objective;
  p.rules.groups = groups;
  return p;
}

const Coefficient* Find(const ModelResult& r, const std::string& term) { return testdata::FindTerm(r, term); }

TEST(PoolLayout, GroupsFromTheCountOrTheListMustFitTheObservations) {
  EngineRules rules;
  EXPECT_FALSE(PoolLayoutFor(rules, 120).pooled());

  rules.groups = 3;
  PoolLayout equal = PoolLayoutFor(rules, 120);
  EXPECT_EQ(equal.error_code, 0);
  EXPECT_EQ(equal.sizes, (std::vector<int>{40, 40, 40}));
  EXPECT_EQ(PoolDescription(equal.sizes), "3 groups of 40 observations each");

  // Groups that do not fit leave the dataset one series, with a warning: the pooling flow
  // runs each of its series alone under the stack's rules.
  PoolLayout uneven = PoolLayoutFor(rules, 121);
  EXPECT_EQ(uneven.error_code, 0);
  EXPECT_FALSE(uneven.pooled());
  EXPECT_EQ(uneven.message, "The 121 observations of the series cannot be divided evenly into 3 groups of a "
                            "pooled cross-section; it was modelled as one series.");

  // The list of GROUPLST.QVX wins over the count, and may hold groups of different sizes.
  rules.group_sizes = {40, 40, 38};
  PoolLayout listed = PoolLayoutFor(rules, 118);
  EXPECT_EQ(listed.error_code, 0);
  EXPECT_EQ(PoolDescription(listed.sizes), "3 groups of sizes 40, 40 and 38");
  // A list that does not add up is not replaced by the count: the dataset is one series.
  PoolLayout short_list = PoolLayoutFor(rules, 120);
  EXPECT_EQ(short_list.error_code, 0);
  EXPECT_FALSE(short_list.pooled());
  EXPECT_EQ(short_list.message, "The group sizes of the pooled cross-section (40 + 40 + 38 = 118) do not add up "
                                "to the 120 observations of the series; it was modelled as one series.");

  rules.group_sizes = {58, 2};
  EXPECT_EQ(PoolLayoutFor(rules, 60).error_code, kCodePoolGroups);
  rules.group_sizes = {60};  // a list of one group is one series
  rules.groups = 1;
  EXPECT_FALSE(PoolLayoutFor(rules, 60).pooled());
  EXPECT_EQ(PoolLayoutFor(rules, 60).error_code, 0);
}

// The pooled likelihood is the sum of the groups' exact likelihoods: statsmodels, group by
// group, at fixed parameters; and its maximum over common parameters.
struct PooledCase {
  std::string name, series, transform, kind;
  int groups = 0, p = 0, q = 0, P = 0, Q = 0, s = 1, d = 0, D = 0;
  bool constant = false;
  double loglik = 0.0;
  std::vector<double> params;
};

std::vector<PooledCase> LoadCases() {
  std::vector<PooledCase> cases;
  for (const auto& f : testdata::ReferenceRows("pooled_expected.csv", 15)) {
    PooledCase c;
    c.name = f[0];
    c.series = f[1];
    c.transform = f[2];
    c.groups = std::stoi(f[3]);
    c.p = std::stoi(f[4]);
    c.q = std::stoi(f[5]);
    c.P = std::stoi(f[6]);
    c.Q = std::stoi(f[7]);
    c.s = std::stoi(f[8]);
    c.d = std::stoi(f[9]);
    c.D = std::stoi(f[10]);
    c.constant = f[11] == "1";
    c.kind = f[12];
    c.loglik = std::stod(f[13]);
    for (const auto& v : testdata::Split(f[14], ';')) c.params.push_back(std::stod(v));
    cases.push_back(c);
  }
  return cases;
}

std::vector<std::vector<double>> CaseGroups(const PooledCase& c) {
  std::vector<double> y = testdata::LoadSeries(c.series);
  if (c.transform == "log")
    for (double& v : y) v = std::log(v);
  const int size = static_cast<int>(y.size()) / c.groups;
  y.resize(static_cast<size_t>(size) * c.groups);
  return SplitGroups(y, std::vector<int>(c.groups, size));
}

ArimaOrders CaseOrders(const PooledCase& c) {
  ArimaOrders s;
  s.p = c.p; s.q = c.q; s.P = c.P; s.Q = c.Q; s.d = c.d; s.D = c.D;
  s.period = c.s;
  s.constant = c.constant;
  return s;
}

TEST(PooledReference, LikelihoodIsTheSumOfTheGroupsExactLikelihoods) {
  const auto cases = LoadCases();
  ASSERT_GE(cases.size(), 10u);
  for (const auto& c : cases) {
    if (c.kind != "at") continue;
    SCOPED_TRACE(c.name);
    const ArimaOrders orders = CaseOrders(c);
    size_t at = 0;
    const double mean = c.constant ? c.params[at++] : 0.0;
    ArmaCoefficients coef;
    coef.period = c.s;
    for (int i = 0; i < c.p; ++i) coef.ar.push_back(c.params[at++]);
    for (int i = 0; i < c.q; ++i) coef.ma.push_back(c.params[at++]);
    for (int i = 0; i < c.P; ++i) coef.sar.push_back(c.params[at++]);
    for (int i = 0; i < c.Q; ++i) coef.sma.push_back(c.params[at++]);
    const double sigma2 = c.params[at];
    std::vector<std::vector<double>> w;
    for (const auto& g : CaseGroups(c)) {
      std::vector<double> seg = DifferenceSeries(g, orders);
      for (double& v : seg) v -= mean;
      w.push_back(seg);
    }
    std::vector<double> phi, theta;
    ExpandArma(coef, phi, theta);
    const PooledLikelihood L = PooledArmaLikelihood(w, phi, theta, false);
    ASSERT_TRUE(L.ok);
    EXPECT_NEAR(L.LogLikelihoodAt(sigma2), c.loglik, 1e-6 * std::fabs(c.loglik) + 1e-6);
    // Concentrated, the likelihood is its maximum over the variance.
    EXPECT_GE(L.loglik, L.LogLikelihoodAt(sigma2));
    EXPECT_NEAR(L.loglik, L.LogLikelihoodAt(L.sigma2), 1e-9 * std::fabs(L.loglik));
  }
}

TEST(PooledReference, EstimatesMatchTheMaximumOfTheSummedLikelihood) {
  for (const auto& c : LoadCases()) {
    if (c.kind != "mle") continue;
    SCOPED_TRACE(c.name);
    ConvergenceCriteria crit;
    crit.max_iterations = 100;
    const RegressionArimaFit f = FitPooledRegressionArima(CaseGroups(c), {}, CaseOrders(c), crit, true);
    ASSERT_TRUE(f.ok);
    EXPECT_NEAR(f.arima.loglik, c.loglik, 0.5);
    size_t at = 0;
    if (c.constant) {
      EXPECT_NEAR(f.arima.mean, c.params[0], 0.02 * std::max(1.0, std::fabs(c.params[0])));
      ++at;
    }
    auto near = [&](const std::vector<double>& ours) {
      for (double v : ours) EXPECT_NEAR(v, c.params[at++], 0.02);
    };
    near(f.arima.coef.ar);
    near(f.arima.coef.ma);
    near(f.arima.coef.sar);
    near(f.arima.coef.sma);
    EXPECT_NEAR(f.arima.sigma2, c.params[at], 0.03 * c.params[at]);
    // Standard errors come with every estimate.
    for (double se : f.arima.std_errors) EXPECT_GT(se, 0.0);
  }
}

TEST(PooledFit, OneAr1AcrossThreeGroupsIsRecoveredAndItsSseIsTheGroupsOneStepErrors) {
  const double phi = 0.6;
  ModelingProblem problem = PooledProblem(StackedAr1(3, 80, phi, 200.0, 11), 3, 2);  // AR(1) with constant
  const ModelResult r = FitPooled(problem, nullptr);
  ASSERT_EQ(r.error_code, 0) << (r.warnings.empty() ? "" : r.warnings[0]);
  const Coefficient* ar = Find(r, "AR(1)");
  const Coefficient* mean = Find(r, "CONSTANT");
  ASSERT_TRUE(ar && mean);
  EXPECT_NEAR(ar->value, phi, 2.0 * ar->std_error);
  EXPECT_NEAR(ar->value, phi, 0.1);
  EXPECT_NEAR(ar->std_error, std::sqrt((1 - phi * phi) / 240.0), 0.01);  // the groups' information together
  EXPECT_NEAR(mean->value, 200.0, 0.5);
  EXPECT_EQ(r.parameters, 2);
  EXPECT_EQ(r.observations, 240);

  // Each group filtered on its own with the reported model: its one-step errors are the
  // residuals, and their squares add up to the SSE.
  ArimaFit model;
  model.ok = true;
  model.orders.p = 1;
  model.orders.constant = true;
  model.coef.ar = {ar->value};
  model.mean = mean->value;
  double sse = 0.0;
  for (int g = 0; g < 3; ++g) {
    const std::vector<double> group(problem.y.begin() + 80 * g, problem.y.begin() + 80 * (g + 1));
    const std::vector<double> pred = OneStepPredictions(group, model);
    for (int t = 0; t < 80; ++t) {
      sse += (group[t] - pred[t]) * (group[t] - pred[t]);
      EXPECT_NEAR(r.residuals[80 * g + t], group[t] - pred[t], 1e-6) << g << " " << t;
    }
  }
  EXPECT_NEAR(r.sse, sse, 1e-6 * sse);

  // The forecasts continue the last group: the first is pulled from its last value toward
  // the mean by phi.
  ASSERT_EQ(r.forecasts.size(), 5u);
  EXPECT_NEAR(r.forecasts[0], mean->value + ar->value * (problem.y.back() - mean->value), 1e-6);
  EXPECT_LT(r.lower[0], r.forecasts[0]);
  EXPECT_GT(r.upper[4] - r.lower[4], r.upper[0] - r.lower[0]);
}

TEST(PooledFit, NoLagCrossesAGroupBoundary) {
  // Random walks, each group starting far from where the one before it ended.
  std::vector<double> y;
  for (int g = 0; g < 3; ++g) {
    auto steps = testdata::SimulateArma11(60, 0.0, 0.0, 1.0, 40u + g);
    double level = 1000.0 * (g + 1) * (g % 2 ? -1 : 1);
    for (double e : steps) y.push_back(level += e);
  }
  const ModelResult pooled = FitPooled(PooledProblem(y, 3, 6), nullptr);  // random walk
  ASSERT_EQ(pooled.error_code, 0);
  double largest = 0.0;
  for (int t = 0; t < 180; ++t) {
    if (t % 60 == 0) {
      // Each group's first value starts its differencing: it has no fit.
      EXPECT_EQ(pooled.fitted[t], kMissing) << t;
      EXPECT_EQ(pooled.residuals[t], kMissing) << t;
      continue;
    }
    largest = std::max(largest, std::fabs(pooled.residuals[t]));
  }
  EXPECT_LT(largest, 5.0);
  EXPECT_LT(pooled.sse / pooled.observations, 1.5);

  // Modelled automatically, the groups together ask for the difference that each one needs.
  const ModelResult automatic = FitPooled(PooledProblem(y, 3, 0), nullptr);
  ASSERT_EQ(automatic.error_code, 0);
  EXPECT_EQ(automatic.d, 1) << automatic.description;
  EXPECT_EQ(automatic.residuals[60], kMissing);

  // The same data as one series: the jumps are residuals of thousands.
  ModelingProblem single = PooledProblem(y, 1, 6);
  const ModelResult one = FitModel(single, nullptr);
  ASSERT_EQ(one.error_code, 0);
  EXPECT_GT(std::fabs(one.residuals[60]), 1000.0);
}

TEST(PooledFit, AutomaticAndUserModelsWorkPooled) {
  const std::vector<double> y = StackedAr1(4, 50, 0.7, 80.0, 5);
  ModelingProblem automatic = PooledProblem(y, 4, 0);
  const ModelResult a = FitPooled(automatic, nullptr);
  ASSERT_EQ(a.error_code, 0);
  EXPECT_NE(a.description.find("pooled over 4 groups"), std::string::npos) << a.description;
  const Coefficient* ar = Find(a, "AR(1)");
  ASSERT_TRUE(ar) << a.description;
  EXPECT_NEAR(ar->value, 0.7, 0.12);
  EXPECT_EQ(a.d, 0);
  EXPECT_EQ(a.notes.front().heading, "Pooled cross-section");
  EXPECT_NE(a.notes.front().text.find("4 groups of 50 observations each"), std::string::npos);

  // The pooling wizard's explicit model: an AR(1) with constant from STARTMOD.123.
  ModelingProblem user = PooledProblem(y, 4, 99);
  ModelBlock block;
  block.name = "SALES";
  block.has_constant = true;
  block.constant = 70.0;
  block.first = {Polynomial{{1}, {0.3}}};
  user.start_model = {block};
  const ModelResult u = FitPooled(user, nullptr);
  ASSERT_EQ(u.error_code, 0);
  ASSERT_TRUE(Find(u, "AR(1)"));
  EXPECT_NEAR(Find(u, "AR(1)")->value, ar->value, 0.02);
  EXPECT_EQ(u.parameters, 2);

  // A user model whose noise cannot be expressed is refused as malformed.
  block.differencing = {0};
  user.start_model = {block};
  EXPECT_EQ(FitPooled(user, nullptr).error_code, 2190);
}

TEST(PooledFit, AnInputHasOneCoefficientForAllGroupsAndItsFutureValuesCarryTheForecasts) {
  // SALES = 50 + 2 PRICE + AR(1) noise in each of three groups; PRICE's future values
  // continue the last group.
  const std::vector<double> noise = StackedAr1(3, 40, 0.5, 0.0, 61);
  const std::vector<double> price = testdata::SimulateArma11(120, 0.0, 0.0, 2.0, 62);
  std::vector<double> y(120);
  for (int t = 0; t < 120; ++t) y[t] = 50.0 + 2.0 * (10.0 + price[t]) + noise[t];
  ModelingProblem p = PooledProblem(y, 3, 0);
  p.horizon = 3;
  InputSeries in;
  in.name = "PRICE";
  in.type = 1;
  for (double v : price) in.history.push_back(10.0 + v);
  in.future = {8.0, 12.0, 10.0};
  p.inputs = {in};
  const ModelResult r = FitPooled(p, nullptr);
  ASSERT_EQ(r.error_code, 0);
  ASSERT_EQ(r.inputs_kept, (std::vector<std::string>{"PRICE"}));
  const Coefficient* beta = Find(r, "PRICE");
  ASSERT_TRUE(beta);
  EXPECT_NEAR(beta->value, 2.0, 3.0 * beta->std_error);
  EXPECT_LT(beta->std_error, 0.1);
  // A price of 12 against one of 8 moves the forecast by about 2 x 4.
  ASSERT_EQ(r.forecasts.size(), 3u);
  EXPECT_NEAR(r.forecasts[1] - r.forecasts[0], 8.0, 1.5);
  EXPECT_GT(r.forecasts[1], r.upper[0]);
}

TEST(PooledFit, AnInputConstantInEveryGroupIsLeftOutWithTheRedundancyWarning) {
  ModelingProblem p = PooledProblem(StackedAr1(3, 40, 0.5, 30.0, 71), 3, 0);
  InputSeries flat;
  flat.name = "FLAT";
  flat.type = 1;
  flat.history.assign(120, 10.0);
  flat.future.assign(5, 10.0);
  p.inputs = {flat};
  const ModelResult r = FitPooled(p, nullptr);
  ASSERT_EQ(r.error_code, 0);
  EXPECT_TRUE(r.inputs_kept.empty());
  EXPECT_FALSE(Find(r, "FLAT"));
  ASSERT_TRUE(Find(r, "AR(1)")) << r.description;
  EXPECT_NE(std::find(r.warnings.begin(), r.warnings.end(),
                      "TESSALY HAS IDENTIFIED A LINEAR REDUNDANCY. DELETE REDUNDANT VARIABLES. (2155) The input "
                      "series were left out of the pooled model."),
            r.warnings.end());
}

TEST(PooledFit, AllowedModificationsTuneTheUsersModel) {
  // The user's AR(2) on AR(1) groups: held fixed it keeps AR(2); with ALLOWMOD.QVX the
  // term that is not needed goes.
  ModelingProblem p = PooledProblem(StackedAr1(3, 80, 0.6, 50.0, 81), 3, 99);
  ModelBlock block;
  block.name = "SALES";
  block.has_constant = true;
  block.first = {Polynomial{{1, 2}, {0.5, 0.0}}};
  p.start_model = {block};
  const ModelResult held = FitPooled(p, nullptr);
  ASSERT_EQ(held.error_code, 0);
  EXPECT_TRUE(Find(held, "AR(2)"));
  p.rules.allow_modifications = true;
  const ModelResult tuned = FitPooled(p, nullptr);
  ASSERT_EQ(tuned.error_code, 0);
  EXPECT_FALSE(Find(tuned, "AR(2)")) << tuned.description;
  ASSERT_TRUE(Find(tuned, "AR(1)"));
  EXPECT_NEAR(Find(tuned, "AR(1)")->value, 0.6, 0.1);
}

TEST(PooledFit, ConstantGroupsRepeatTheLastGroupsValue) {
  std::vector<double> y(40, 7.0);
  y.insert(y.end(), 40, 9.0);
  const ModelResult r = FitPooled(PooledProblem(y, 2, 0), nullptr);
  ASSERT_EQ(r.error_code, 0);
  EXPECT_EQ(r.forecasts, std::vector<double>(5, 9.0));
  EXPECT_EQ(r.upper, r.forecasts);
  EXPECT_EQ(r.sse, 0.0);
  EXPECT_EQ(r.parameters, 1);
  ASSERT_FALSE(r.warnings.empty());
  EXPECT_EQ(r.warnings[0], "Every group of the pooled cross-section is constant; the forecasts repeat the last "
                           "group's value with no uncertainty.");
}

TEST(PooledFit, StagesAreReportedAndACancelStopsTheFit) {
  std::vector<Stage> seen;
  auto until_estimation = [&](Stage s) {
    seen.push_back(s);
    return s != Stage::Estimation;
  };
  const ModelResult r = FitPooled(PooledProblem(StackedAr1(3, 40, 0.5, 10.0, 91), 3, 0), until_estimation);
  EXPECT_TRUE(r.cancelled);
  EXPECT_TRUE(r.coefficients.empty());
  EXPECT_EQ(seen, (std::vector<Stage>{Stage::DataPreparation, Stage::Identification, Stage::Estimation}));
}

TEST(PooledFit, PooledSseIsAtLeastTheSumOfTheSeparateOnes) {
  // The front-end's F-test of poolability compares these two figures.
  auto separate_and_pooled = [](const std::vector<double>& y, int groups, int size, double& sosa, double& sosb,
                                int& numpar) {
    sosa = 0.0;
    for (int g = 0; g < groups; ++g) {
      ModelingProblem one = PooledProblem(std::vector<double>(y.begin() + size * g, y.begin() + size * (g + 1)), 1, 2);
      const ModelResult r = FitModel(one, nullptr);
      ASSERT_EQ(r.error_code, 0);
      sosa += r.sse;
    }
    const ModelResult pooled = FitPooled(PooledProblem(y, groups, 2), nullptr);
    ASSERT_EQ(pooled.error_code, 0);
    sosb = pooled.sse;
    numpar = pooled.parameters;
  };
  auto f_test = [](double sosa, double sosb, int k, int total, int numpar) {
    return ((sosb - sosa) / k) / (sosa / (total - k * numpar));
  };
  double sosa = 0, sosb = 0;
  int numpar = 0;
  // Like series: pooling costs little.
  separate_and_pooled(StackedAr1(3, 60, 0.5, 100.0, 21), 3, 60, sosa, sosb, numpar);
  EXPECT_GE(sosb, sosa);
  EXPECT_EQ(numpar, 2);
  EXPECT_LT(f_test(sosa, sosb, 3, 180, numpar), 2.65);  // F(3, 174) at 5 %
  // Series of different levels and memories: pooling costs a lot.
  std::vector<double> unlike = StackedAr1(1, 60, 0.1, 100.0, 31);
  for (double v : StackedAr1(1, 60, 0.9, 110.0, 32)) unlike.push_back(v);
  for (double v : StackedAr1(1, 60, 0.5, 95.0, 33)) unlike.push_back(v);
  separate_and_pooled(unlike, 3, 60, sosa, sosb, numpar);
  EXPECT_GT(sosb, sosa);
  EXPECT_GT(f_test(sosa, sosb, 3, 180, numpar), 10.0);
}

// Groups that do not fit the data: the layout's and the pooled run's tests.
TEST(PooledFit, RetainedValuesComeOffTheLastGroup) {
  ModelingProblem p = PooledProblem(StackedAr1(3, 40, 0.5, 10.0, 3), 3, 2);
  p.retained.assign(p.y.end() - 4, p.y.end());
  p.y.resize(p.y.size() - 4);
  const ModelResult r = FitPooled(p, nullptr);
  ASSERT_EQ(r.error_code, 0);
  EXPECT_EQ(r.observations, 116);
  EXPECT_EQ(r.residuals.size(), 116u);
}

}  // namespace
}  // namespace quorvane
