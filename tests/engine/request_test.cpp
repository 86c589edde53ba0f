#include "engine/request.h"

#include <gtest/gtest.h>

#include "engine_test_data.h"

namespace quorvane {
namespace {

using testdata::AirlinePassengers;
using testdata::KnownResult;
using testdata::MonthlyRequest;

TEST(Request, MonthlySeriesWithRetainedValues) {
  EngineArrays a = MonthlyRequest(AirlinePassengers(), 12, 6);
  PreparedRequest req = PrepareRequest(a, EngineRules{});
  ASSERT_EQ(req.error_code, 0) << req.error_detail;
  EXPECT_EQ(req.problem.output_name, "PASSENGERS");
  EXPECT_EQ(req.problem.y.size(), 138u);
  EXPECT_EQ(req.problem.y.back(), 535);  // 1960/6
  ASSERT_EQ(req.problem.retained.size(), 6u);
  EXPECT_EQ(req.problem.retained.front(), 622);
  EXPECT_EQ(req.problem.retained.back(), 432);
  EXPECT_EQ(req.problem.horizon, 12);
  EXPECT_EQ(req.problem.seasonality, 12);
  EXPECT_EQ(req.problem.begin_year, 1949);

  EngineRules no_forecasts;
  no_forecasts.forecasting_enabled = false;
  EXPECT_EQ(PrepareRequest(a, no_forecasts).problem.horizon, 0);
}

TEST(Request, CausalLayoutAndInputFutureValues) {
  EngineArrays a = testdata::CausalRequest(40, 8, 12);
  PreparedRequest req = PrepareRequest(a, EngineRules{});
  ASSERT_EQ(req.error_code, 0) << req.error_detail;
  ASSERT_EQ(req.problem.inputs.size(), 2u);
  EXPECT_EQ(req.problem.inputs[0].name, "ADVERT");
  EXPECT_EQ(req.problem.inputs[0].future, (std::vector<double>{20, 21, 22, 23, 24, 25, 26, 27}));
  EXPECT_TRUE(req.problem.inputs[1].future.empty());  // type 0: forecast by its own model
  EXPECT_EQ(req.problem.inputs[1].history[39], 5 + 0.1 * 39);
  EXPECT_EQ(req.problem.y.size(), 40u);
  // Twelve forecasts asked for, eight future values given: the horizon stops at eight.
  EXPECT_EQ(req.problem.horizon, 8);
  ASSERT_EQ(req.warnings.size(), 1u);
}

TEST(Request, ArrayChecksGiveTheirCodes) {
  // Each case changes one property (index, value) of a monthly or a causal request.
  const struct {
    bool causal;
    int index;
    int value;
    int code;
  } cases[] = {
      {false, 4, 0, 2180},   {false, 6, 144, 2182},  // every observation retained
      {false, 7, 601, 2222}, {false, 0, 151, 2201},  {true, 5, 601, 2181},
      {false, 1, 0, 2189},   {false, 1, 201, 2189},  {false, 1, 200, 0},
      {false, 7, 600, 0},
  };
  for (const auto& c : cases) {
    EngineArrays a = c.causal ? testdata::CausalRequest(40, 8, 12) : MonthlyRequest(AirlinePassengers(), 12);
    a.property_values[c.index] = static_cast<int16_t>(c.value);
    EXPECT_EQ(PrepareRequest(a, EngineRules{}).error_code, c.code) << c.index << " = " << c.value;
  }
  EngineArrays typed = MonthlyRequest(AirlinePassengers(), 12);
  typed.series_types[0] = 1;
  EXPECT_EQ(PrepareRequest(typed, EngineRules{}).error_code, 2219);
}

TEST(Response, ArraysFilledFromAKnownModel) {
  EngineArrays a = MonthlyRequest(AirlinePassengers(), 12, 4);
  PreparedRequest req = PrepareRequest(a, EngineRules{});
  ModelResult r = KnownResult(140, 12, 5);
  EngineArrays out = a;
  FillResponse(req, r, out);

  EXPECT_EQ(out.error_code, 0);
  EXPECT_EQ(out.series_names[0], "PASSENGERS");
  // Each returned value by its array and place: the properties (the rest as given), the
  // forecasts and their limits at 0, 600 and 1200; fitted values and residuals missing
  // before the first fitted point and over the retained values; the cleansed series going on
  // with the actuals; the interventions counted from the first modelled observation; the
  // statistics.
#define AT(array, i) #array "[" #i "]", static_cast<double>(out.array[i])
  const struct {
    const char* where;
    double value, expected;
  } values[] = {
      {AT(property_values, 0), 1}, {AT(property_values, 4), 144}, {AT(property_values, 7), 12},
      {AT(property_values, 1), 12}, {AT(series_data, 143), 432},
      {AT(forecast_values, 0), 500}, {AT(forecast_values, 11), 511}, {AT(forecast_values, 12), 0},
      {AT(forecast_values, 600), 450}, {AT(forecast_values, 1200), 550}, {AT(forecast_values, 1211), 561},
      {AT(doubles10000a, 5), kMissingValue}, {AT(doubles10000a, 6), 106}, {AT(doubles10000a, 139), 239},
      {AT(doubles10000a, 140), kMissingValue}, {AT(doubles10000a, 144), 0}, {AT(doubles10000b, 6), -1.5},
      {AT(doubles10000b, 140), kMissingValue}, {AT(doubles10000c, 29), 104}, {AT(doubles10000c, 143), 432},
      {AT(integers20, i20::kLeadingLeftOut - 1), 5}, {AT(integers20, i20::kInterventions - 1), 2},
      {AT(doubles745, 0), 2}, {AT(doubles745, 1), 25}, {AT(doubles745, 2), 1951}, {AT(doubles745, 3), 6},
      {AT(doubles745, 4), 25}, {AT(doubles745, 5), 1}, {AT(doubles745, 9), -40}, {AT(doubles745, 10), 0},
      {AT(doubles20, d20::kSse - 1), 1234.5}, {AT(doubles20, d20::kParameters - 1), 4},
      {AT(doubles20, d20::kVariance - 1), 9.5}, {AT(doubles20, d20::kLambda - 1), 0.0},
      {AT(doubles20, d20::kMape - 1), 2.75}, {AT(doubles20, d20::kLogLikelihood - 1), -246.625},
      {AT(integers20, i20::kSeasonalQ - 1), 1}, {AT(integers20, i20::kConstant - 1), 1},
  };
#undef AT
  for (const auto& v : values) EXPECT_EQ(v.value, v.expected) << v.where;
  EXPECT_EQ(out.strings400[0], "log PASSENGERS(t) = 12.5 + 25 LS(1951/6) + N(t)");
  EXPECT_EQ(out.strings400[1], "(1 - 0.6123B) N(t) = (1 + 0.4B**12) a(t)");
  EXPECT_EQ(out.strings2250[0], "A test warning.");
}

TEST(Response, NoFitWhereTheDifferencingStarts) {
  // A core that hands back the actuals (and zero residuals) for the observations that start
  // a (1 - B)(1 - B**12) differencing: those become the missing value, the rest stand.
  EngineArrays a = MonthlyRequest(AirlinePassengers(), 12);
  PreparedRequest req = PrepareRequest(a, EngineRules{});
  ModelResult r = KnownResult(144, 12);
  r.d = 1;
  r.D = 1;
  r.period = 12;
  for (int t = 0; t < 144; ++t) {
    r.fitted[t] = t < 13 ? AirlinePassengers()[t] : AirlinePassengers()[t] - 2.0;
    r.residuals[t] = t < 13 ? 0.0 : 2.0;
  }
  r.residuals[20] = 0.0;  // an exact fit later on is a fit
  FillResponse(req, r, a);
  for (int t = 0; t < 13; ++t) {
    EXPECT_EQ(a.doubles10000a[t], kMissingValue) << t;
    EXPECT_EQ(a.doubles10000b[t], kMissingValue) << t;
  }
  EXPECT_EQ(a.doubles10000a[13], AirlinePassengers()[13] - 2.0);
  EXPECT_EQ(a.doubles10000b[13], 2.0);
  EXPECT_EQ(a.doubles10000b[20], 0.0);
}

TEST(Response, DroppedInputsLeaveTheOutputLast) {
  EngineArrays a = testdata::CausalRequest(40, 12, 12);
  PreparedRequest req = PrepareRequest(a, EngineRules{});
  ModelResult r = KnownResult(40, 12);
  r.interventions.clear();
  r.inputs_kept = {"PRICE"};
  EngineArrays out = a;
  FillResponse(req, r, out);
  EXPECT_EQ(out.property_values[0], 2);
  EXPECT_EQ(out.series_names[0], "PRICE");
  EXPECT_EQ(out.series_names[1], "SALES");
  EXPECT_EQ(out.series_names[2], "");
  EXPECT_EQ(out.series_data[0], a.series_data[40]);      // PRICE moved to the first block
  EXPECT_EQ(out.series_data[40], a.series_data[80]);     // SALES second
  EXPECT_EQ(out.series_data[80], 0);
  EXPECT_EQ(out.integers20[i20::kInputsKept - 1], 1);
}

}  // namespace
}  // namespace quorvane
