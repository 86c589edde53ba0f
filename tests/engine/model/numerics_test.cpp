// The numeric building blocks: one harness runs every function over the edges of its
// domain (empty, one value, NaN, infinity, constant, huge values) and checks the answer
// each one states for them; then exact checks against closed forms and the kept
// reference statistics.
#include <cmath>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <Eigen/Dense>
#include <gtest/gtest.h>

#include "engine/model/arma.h"
#include "engine/model/estimate.h"
#include "engine/model/forecast.h"
#include "engine/model/series_stats.h"
#include "engine/model/transform.h"
#include "engine/model/unit_root.h"
#include "model_test_data.h"
#include "support/program_folder.h"

namespace quorvane {
namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

struct EdgeInput {
  const char* name;
  std::vector<double> x;
};

std::vector<EdgeInput> Edges() {
  std::vector<double> huge = testdata::SimulateArma11(60, 0.5, 0.3, 1.0, 5);
  for (double& v : huge) v *= 1e150;
  return {{"empty", {}},
          {"one value", {4.2}},
          {"two values", {1.0, 3.0}},
          {"constant", std::vector<double>(50, 3.0)},
          {"with NaN", {1, 2, kNaN, 4, 5, 6, 7, 8}},
          {"with infinity", {1, 2, kInf, 4, 5, 6, 7, 8}},
          {"huge", huge}};
}

// Each function, its verdict on an input: true when the answer is one the function states
// for such input (a defined value, never a crash, never an unannounced NaN).
struct Checked {
  const char* function;
  std::function<bool(const std::vector<double>&)> answer_is_stated;
};

bool AllFinite(const std::vector<double>& v) {
  for (double x : v)
    if (!std::isfinite(x)) return false;
  return true;
}

bool HasNonFinite(const std::vector<double>& x) { return !AllFinite(x); }

TEST(NumericsEdges, EveryFunctionGivesItsStatedAnswerAtTheEdges) {
  const std::vector<Checked> functions = {
      {"Mean", [](const auto& x) { return x.empty() ? Mean(x) == 0.0 : HasNonFinite(x) || std::isfinite(Mean(x)); }},
      {"Variance",
       [](const auto& x) {
         const double v = Variance(x);
         if (x.size() < 2) return v == 0.0;
         return HasNonFinite(x) || (v >= 0.0 && (x[0] != x.back() || v == 0.0 || x.size() > 2));
       }},
      {"Autocorrelations",
       [](const auto& x) {
         const auto r = Autocorrelations(x, 5);
         if (r.size() != 5) return false;
         if (HasNonFinite(x)) return true;  // domain: finite values
         for (double v : r)
           if (!std::isfinite(v) || std::fabs(v) > 1.0) return false;
         return true;
       }},
      {"PartialAutocorrelations",
       [](const auto& x) {
         const auto r = PartialAutocorrelations(x, 5);
         return r.size() == 5 && (HasNonFinite(x) || AllFinite(r));
       }},
      {"Difference",
       [](const auto& x) {
         const auto d = Difference(x, 1, 2);
         return x.size() <= 2 ? d.empty() : d.size() == x.size() - 2;
       }},
      {"LjungBox",
       [](const auto& x) {
         const TestResult t = LjungBox(x, 10, 2);
         if (x.size() < 12) return t.statistic == 0.0 && t.p_value == 1.0;
         return HasNonFinite(x) || (t.p_value >= 0.0 && t.p_value <= 1.0);
       }},
      {"JarqueBera",
       [](const auto& x) {
         const TestResult t = JarqueBera(x);
         if (x.size() < 3 || Variance(x) == 0.0) return t.statistic == 0.0 && t.p_value == 1.0;
         return HasNonFinite(x) || (t.p_value >= 0.0 && t.p_value <= 1.0);
       }},
      {"Kpss",
       [](const auto& x) {
         const KpssResult k = Kpss(x);
         if (x.size() < 4 || Variance(x) == 0.0) return k.statistic == 0.0 && k.p_value == 0.10;
         return HasNonFinite(x) || (k.statistic >= 0.0 && k.p_value >= 0.01 && k.p_value <= 0.10);
       }},
      {"SeasonalStrength",
       [](const auto& x) {
         const double f = SeasonalStrength(x, 4);
         if (x.size() < 10) return f == 0.0;
         return HasNonFinite(x) || (f >= 0.0 && f <= 1.0);
       }},
      {"BoxCox",
       [](const auto& x) {
         const bool ok = PowerApplies(x, 0.5);
         const auto z = BoxCox(x, 0.5);
         return z.size() == x.size() && (ok ? AllFinite(z) : true) && (HasNonFinite(x) || BoxCox(x, 1.0) == x);
       }},
      {"ArmaExactLikelihood",
       [](const auto& x) {
         const ArmaLikelihood l = ArmaExactLikelihood(x, {0.5}, {0.3}, true);
         if (x.empty() || HasNonFinite(x)) return !l.ok;
         if (Variance(x) == 0.0) return !l.ok;
         return l.ok && std::isfinite(l.loglik) && l.sigma2 > 0.0;
       }},
      {"CssResiduals",
       [](const auto& x) {
         const auto e = CssResiduals(x, 0.0, {0.5, 0.1}, {0.3});
         return x.size() <= 2 ? e.empty() : e.size() == x.size() - 2;
       }},
      {"FitArima",
       [](const auto& x) {
         ArimaOrders s;
         s.p = 1;
         s.q = 1;
         s.constant = true;
         const ArimaFit f = FitArima(x, s, ConvergenceCriteria{}, true);
         if (x.size() < 5 || HasNonFinite(x)) return !f.ok;
         if (Variance(x) == 0.0) return !f.ok;
         return f.ok && AllFinite(f.std_errors) && IsStationary(f.coef.ar) && IsInvertible(f.coef.ma);
       }},
      {"ForecastArima",
       [](const auto& x) {
         ArimaOrders s;
         s.d = 1;
         const ArimaFit f = FitArima(x, s, ConvergenceCriteria{}, false);
         const ArimaForecast fc = ForecastArima(x, f, 4, 95.0);
         if (!f.ok) return fc.mean.empty();
         return fc.mean.size() == 4 && AllFinite(fc.mean) && AllFinite(fc.lower) && AllFinite(fc.upper);
       }},
  };
  for (const EdgeInput& in : Edges())
    for (const Checked& f : functions) EXPECT_TRUE(f.answer_is_stated(in.x)) << f.function << " on " << in.name;
}

TEST(NumericsEdges, ScalarFunctionsAtTheirBounds) {
  // Each call with its answer (NaN where none is defined; switches 1 or 0) and tolerance:
  // no inverse where 0.5 x -3 + 1 < 0; the sunspot AR(2) has its complex roots inside.
#define V(call, answer, tolerance) {#call, static_cast<double>(call), answer, tolerance}
  const struct {
    const char* call;
    double value, answer, tolerance;
  } values[] = {
      V(BoxCox(-1.0, 0.5), kNaN, 0), V(BoxCox(0.0, 0.0), kNaN, 0), V(BoxCox(-3.0, 1.0), -3.0, 0),
      V(InverseBoxCox(-3.0, 0.5), 0.0, 0), V(InverseBoxCox(BoxCox(7.0, 0.5), 0.5), 7.0, 1e-12),
      V(InverseBoxCox(BoxCox(7.0, 0.0), 0.0), 7.0, 1e-12), V(InverseBoxCox(BoxCox(7.0, -0.5), -0.5), 7.0, 1e-12),
      V(PowerApplies({1.0, 0.0}, 0.0), 0, 0), V(PowerApplies({1.0, 0.0, -5.0}, 1.0), 1, 0),
      V(ChiSquareUpperTail(0.0, 3), 1.0, 0), V(ChiSquareUpperTail(kInf, 3), 0.0, 0),
      V(ChiSquareUpperTail(5.0, 0), 1.0, 0), V(TwoSidedTPValue(kNaN, 10), 1.0, 0),
      V(TwoSidedTPValue(kInf, 10), 0.0, 0), V(TwoSidedTPValue(1.959964, 0), 0.05, 1e-6),
      V(TwoSidedTPValue(2.228139, 10), 0.05, 1e-6), V(CentralNormalQuantile(95.0), 1.959964, 1e-6),
      V(CentralNormalQuantile(80.0), 1.281552, 1e-6), V(IsStationary({}), 1, 0), V(IsStationary({1.0}), 0, 0),
      V(IsStationary({kNaN}), 0, 0), V(IsStationary({1.39, -0.69}), 1, 0), V(IsStationary({0.5, 0.6}), 0, 0),
      V(IsInvertible({-0.9}), 1, 0), V(IsInvertible({-1.0}), 0, 0), V(SmallestRootModulus({}), kInf, 0),
      V(SmallestRootModulus({0.5}), 2.0, 1e-12),
  };
#undef V
  for (const auto& v : values) {
    if (std::isnan(v.answer)) EXPECT_TRUE(std::isnan(v.value)) << v.call;
    else EXPECT_TRUE(v.value == v.answer || std::fabs(v.value - v.answer) <= v.tolerance) << v.call << " = " << v.value;
  }
  EXPECT_TRUE(std::isfinite(CentralNormalQuantile(100.0)));
  EXPECT_TRUE(std::isfinite(CentralNormalQuantile(-5.0)));
  EXPECT_TRUE(std::isfinite(CentralNormalQuantile(kNaN)));
  EXPECT_TRUE(ArmaAutocovariances({1.2}, {}, 3).empty());
  EXPECT_TRUE(PsiWeights({0.5}, {}, 0).empty());
}

TEST(ArmaNumerics, PolynomialsAutocovariancesAndPsiWeightsMatchClosedForms) {
  std::vector<double> phi, theta;
  ArmaCoefficients c;
  c.ar = {0.5};
  c.sar = {0.4};
  c.ma = {0.3};
  c.sma = {-0.6};
  c.period = 4;
  ExpandArma(c, phi, theta);
  // (1 - 0.5B)(1 - 0.4B^4) = 1 - 0.5B - 0.4B^4 + 0.2B^5.
  EXPECT_EQ(phi, (std::vector<double>{0.5, 0, 0, 0.4, -0.2}));
  // (1 + 0.3B)(1 - 0.6B^4) = 1 + 0.3B - 0.6B^4 - 0.18B^5.
  ASSERT_EQ(theta.size(), 5u);
  EXPECT_NEAR(theta[4], -0.18, 1e-15);
  std::vector<double> g = ArmaAutocovariances({0.5}, {}, 2);
  EXPECT_NEAR(g[0], 1.0 / 0.75, 1e-12);
  EXPECT_NEAR(g[2], 0.25 / 0.75, 1e-12);
  g = ArmaAutocovariances({}, {0.5}, 2);
  EXPECT_NEAR(g[0], 1.25, 1e-12);
  EXPECT_NEAR(g[1], 0.5, 1e-12);
  EXPECT_EQ(g[2], 0.0);
  // ARMA(1,1): gamma0 = (1 + 2 phi theta + theta^2) / (1 - phi^2).
  g = ArmaAutocovariances({0.6}, {0.4}, 1);
  EXPECT_NEAR(g[0], (1 + 2 * 0.6 * 0.4 + 0.16) / (1 - 0.36), 1e-12);
  // psi of a random walk are all one; of (1 + 0.4B)/(1 - 0.6B): 1, 1.0, 0.6, 0.36.
  EXPECT_EQ(PsiWeights({1.0}, {}, 4), (std::vector<double>{1, 1, 1, 1}));
  const std::vector<double> psi = PsiWeights({0.6}, {0.4}, 4);
  EXPECT_NEAR(psi[3], 0.36, 1e-12);
  EXPECT_EQ(DifferencingPolynomial(1, 1, 4), (std::vector<double>{1, 0, 0, 1, -1}));
}

// The exact likelihood by brute force: the full covariance matrix of w, its Cholesky
// factor, GLS for the mean and sigma2 concentrated out.
double BruteForceLoglik(const std::vector<double>& w, const std::vector<double>& phi, const std::vector<double>& theta,
                        bool with_mean) {
  const int n = static_cast<int>(w.size());
  const std::vector<double> g = ArmaAutocovariances(phi, theta, n);
  Eigen::MatrixXd S(n, n);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) S(i, j) = g[std::abs(i - j)];
  Eigen::LLT<Eigen::MatrixXd> llt(S);
  Eigen::VectorXd y = Eigen::Map<const Eigen::VectorXd>(w.data(), n);
  Eigen::VectorXd one = Eigen::VectorXd::Ones(n);
  double mu = 0.0;
  if (with_mean) mu = one.dot(llt.solve(y)) / one.dot(llt.solve(one));
  const Eigen::VectorXd e = y - mu * one;
  const double ssq = e.dot(llt.solve(e));
  const double logdet = 2.0 * Eigen::VectorXd(Eigen::MatrixXd(llt.matrixL()).diagonal()).array().log().sum();
  return -0.5 * n * (std::log(2 * M_PI) + 1 + std::log(ssq / n)) - 0.5 * logdet;
}

TEST(ArmaNumerics, KalmanLikelihoodEqualsTheBruteForceGaussianLikelihood) {
  const std::vector<double> w = testdata::SimulateArma11(40, 0.7, -0.4, 2.0, 17);
  struct Case {
    std::vector<double> phi, theta;
    bool mean;
  } cases[] = {{{0.7}, {-0.4}, true},  {{}, {0.5, -0.2}, false}, {{1.39, -0.69}, {}, true},
               {{0.3, 0, 0, 0.5, -0.15}, {0.2}, true}, {{}, {}, true}, {{0.2}, {-0.95}, false}};
  for (const Case& c : cases) {
    const ArmaLikelihood l = ArmaExactLikelihood(w, c.phi, c.theta, c.mean);
    ASSERT_TRUE(l.ok);
    EXPECT_NEAR(l.loglik, BruteForceLoglik(w, c.phi, c.theta, c.mean), 1e-6);
    // The scaled residuals' sum of squares gives the same likelihood.
    EXPECT_NEAR(-0.5 * 40 * (std::log(2 * M_PI) + 1 + std::log(l.scaled_ssq / 40)), l.loglik, 1e-8);
  }
  EXPECT_FALSE(ArmaExactLikelihood(w, {1.0}, {}, true).ok);
  // Seasonal models, whose state spans a cycle and more, over several cycles: an airline
  // noise, a seasonal AR with an MA(1), a weekly seasonal MA near its unit root.
  const std::vector<double> longer = testdata::SimulateArma11(160, 0.4, 0.3, 1.0, 23);
  std::vector<double> airline(13, 0.0), sar(12, 0.0), weekly(53, 0.0);
  airline[0] = -0.4, airline[11] = -0.6, airline[12] = 0.24;
  sar[11] = 0.5;
  weekly[0] = 0.3, weekly[51] = -0.9, weekly[52] = -0.27;
  const Case seasonal[] = {{{}, airline, true}, {sar, {0.3}, false}, {{0.4}, weekly, true}};
  for (const Case& c : seasonal) {
    const ArmaLikelihood l = ArmaExactLikelihood(longer, c.phi, c.theta, c.mean);
    ASSERT_TRUE(l.ok);
    EXPECT_NEAR(l.loglik, BruteForceLoglik(longer, c.phi, c.theta, c.mean), 1e-6);
  }
}

std::map<std::string, double> ReferenceStatistics() {
  std::map<std::string, double> m;
  for (const auto& f : testdata::ReferenceRows("statistics.csv", 3)) m[f[0] + "/" + f[1]] = std::stod(f[2]);
  return m;
}

TEST(TestStatistics, MatchTheReferenceOnRealSeries) {
  const std::map<std::string, double> ref = ReferenceStatistics();
  ASSERT_EQ(ref.size(), 28u);
  for (const char* series : {"nile", "sunspots", "macro_infl", "macro_unemp"}) {
    SCOPED_TRACE(series);
    const std::vector<double> y = testdata::LoadSeries(series);
    const std::string s = std::string("/") + series;
    EXPECT_NEAR(Kpss(y).statistic, ref.at("kpss" + s), 1e-6);
    const TestResult lb = LjungBox(y, 10, 0);
    EXPECT_NEAR(lb.statistic, ref.at("ljungbox10" + s), 1e-5);
    EXPECT_NEAR(lb.p_value / ref.at("ljungbox10_p" + s), 1.0, 1e-4);
    const TestResult jb = JarqueBera(y);
    EXPECT_NEAR(jb.statistic, ref.at("jarquebera" + s), 1e-6);
    EXPECT_NEAR(jb.p_value / ref.at("jarquebera_p" + s), 1.0, 1e-4);
  }
}

TEST(TestStatistics, DifferencingDecisions) {
  // The Nile is stationary around a level; the GDP level is not, its growth is.
  EXPECT_EQ(RegularDifferences(BoxCox(testdata::LoadSeries("macro_realgdp"), 0.0), 2, nullptr), 1);
  EXPECT_EQ(RegularDifferences(testdata::LoadSeries("macro_infl"), 2, nullptr), 1);
  EXPECT_EQ(RegularDifferences(testdata::SimulateArma11(200, 0.3, 0.0, 1.0, 2), 2, nullptr), 0);
  double strength = 0.0;
  EXPECT_EQ(SeasonalDifferences(testdata::LoadSeries("airline"), 12, &strength), 1);
  EXPECT_GT(strength, 0.75);
  EXPECT_EQ(SeasonalDifferences(BoxCox(testdata::LoadSeries("airline"), 0.0), 12, &strength), 1);
  EXPECT_GT(strength, 0.9);
  EXPECT_EQ(SeasonalDifferences(testdata::LoadSeries("macro_realgdp"), 4, &strength), 0);
  EXPECT_LT(strength, 0.3);
}

}  // namespace
}  // namespace quorvane
