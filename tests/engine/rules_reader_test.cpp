#include "engine/rules_reader.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "engine_test_data.h"
#include "support/program_folder.h"

namespace quorvane {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

using testdata::ShippedRules;

std::string WithValue(const std::string& text, const std::string& key, const std::string& value) {
  return testdata::RulesWith(text, {{key, value}});
}

TEST(RulesReader, ShippedFileReadsEveryKeyWithItsDefault) {
  std::string text = ShippedRules();
  ASSERT_FALSE(text.empty());
  RulesReadResult read = ParseRulesText(text);
  ASSERT_EQ(read.error_code, 0);
  const EngineRules& r = read.rules;
  // Each field by its name, as read and as the shipped file holds it (switches 1 or 0).
#define F(field) #field, static_cast<double>(r.field)
  const struct {
    const char* field;
    double value, shipped;
  } values[] = {
      {F(robust_acf), 0}, {F(maximum_lead), 0}, {F(difference_inputs), 1}, {F(estimation_enabled), 1},
      {F(sse_change_pct), 0.1}, {F(parameter_change_pct), 0.1}, {F(max_iterations), 20}, {F(necessity), 1},
      {F(necessity_level), 90.0}, {F(constrain_causal), 0}, {F(sufficiency_stochastic), 1},
      {F(sufficiency_ss_level), 95.0}, {F(sufficiency_deterministic), 1}, {F(sufficiency_ds_level), 90.0},
      {F(max_outliers), 5}, {F(include_pulse), 1}, {F(include_step), 1}, {F(min_group_size), 8},
      {F(include_seasonal_pulse), 1}, {F(include_local_trend), 1}, {F(fixup_seasonal_dummies), 0},
      {F(variance_change), 0}, {F(variance_level), 95.0}, {F(min_residuals_to_pool), 5}, {F(constancy), 0},
      {F(constancy_level), 99.0}, {F(forecasting_enabled), 1}, {F(forecasts), 12}, {F(forecast_confidence), 95.0},
      {F(convert_positive), 0}, {F(convert_integers), 0}, {F(last_pulse_to_step), 0}, {F(pulse_to_seasonal), 0},
      {F(simulation), 0}, {F(noise_variance), 1.0}, {F(seed), 0}, {F(store_model), 0}, {F(exception_report), 0},
      {F(intermittent), 0}, {F(groups), 1},
  };
#undef F
  for (const auto& v : values) EXPECT_DOUBLE_EQ(v.value, v.shipped) << v.field;
  EXPECT_EQ(r.lambdas, (std::vector<double>{1.0, 0.5, 0.0}));
  EXPECT_EQ(r.display_options, std::vector<int>(7, 1));
  EXPECT_EQ(r.initial_model, "");
}

TEST(RulesReader, ShippedFileKeepsTheLayoutTheFrontEndSearches) {
  std::string text = ShippedRules();
  // Every line ends in CR LF; values are four wide except the lambda list and the model.
  size_t lines = 0;
  for (size_t pos = 0; (pos = text.find('\n', pos)) != std::string::npos; ++pos, ++lines)
    ASSERT_EQ(text[pos - 1], '\r') << "line " << lines + 1;
  EXPECT_EQ(lines, RuleLines().size() + 3);

  // Each key's first occurrence lies on its own line, and no label holds a bar early.
  auto line_of = [&](size_t offset) { return std::count(text.begin(), text.begin() + offset, '\n'); };
  long index = 0;
  for (const auto& line_rule : RuleLines()) {
    if (line_rule.key[0] != '\0') {
      size_t at = text.find(line_rule.key);
      ASSERT_NE(at, std::string::npos) << line_rule.key;
      EXPECT_EQ(line_of(at), index) << line_rule.key;
      size_t bar = text.find('|', at);
      size_t cr = text.find('\r', bar);
      std::string value = text.substr(bar + 1, cr - bar - 1);
      EXPECT_EQ(value.size(), line_rule.code == 2052 ? 40u : 4u) << line_rule.key;
    }
    ++index;
  }
  for (const char* key : {"INTERMITTENT", "# OF GROUPS", "INITIAL MODEL"}) {
    size_t at = text.find(key);
    ASSERT_NE(at, std::string::npos) << key;
    EXPECT_GE(line_of(at), index) << key;
  }
  size_t model_at = text.find("INITIAL MODEL");
  EXPECT_EQ(text.substr(text.find('|', model_at) + 1, 12), std::string(12, ' '));
}

TEST(RulesReader, BrokenLineGivesThatLinesCode) {
  const std::string text = ShippedRules();
  struct Case {
    const char* key;
    const char* value;
    int16_t code;
  } cases[] = {
      {"MAXIMUM LEAD", "   7", 2015},         // lead above 6
      {"DIFFERENCE", "   2", 2018},           // flag of 2
      {"SQUARES", "ab.c", 2024},              // not a number
      {"ITERATIONS", " 201", 2026},           // above 200
      {"LEVEL FOR NECESSITY", "    ", 2028},  // empty
      {"(DS)", "100.", 2037},                 // a confidence of 100 %
      {"EVALUATE IN EST", "  11", 2050},      // more than ten lambdas
      {"(4F4.0)", "1.00 2.0", 2052},          // second lambda above 1
      {"(4F4.0)", "1.00", 2052},              // three announced, one given
      {"FOR THE FORECASTS", "-5.0", 2061},
      {"SEED VALUE", "12.5", 2068},
      {"STORE", "   x", 2112},
  };
  for (const auto& c : cases) {
    RulesReadResult read = ParseRulesText(WithValue(text, c.key, c.value));
    EXPECT_EQ(read.error_code, c.code) << c.key << " = '" << c.value << "'";
  }
  // A template line with garbage, a line without its bar, and a file cut short.
  std::string robust = text;
  robust.replace(robust.find("|   0"), 5, "|   ?");
  EXPECT_EQ(ParseRulesText(robust).error_code, 2002);
  std::string no_bar = text;
  no_bar.erase(no_bar.find('|', no_bar.find("INCLUDE STEP")), 1);
  EXPECT_EQ(ParseRulesText(no_bar).error_code, 2041);
  std::string cut = text.substr(0, text.find("DISPLAY TABLE OF FORECAST VALUES"));
  EXPECT_EQ(ParseRulesText(cut).error_code, 2107);
  // A key missing from its line (lines out of order) is that line's failure too.
  std::string moved = text;
  moved.replace(moved.find("INCLUDE LOCAL TRENDS"), 20, "INCLUDE LOCAL CHANGE");
  EXPECT_EQ(ParseRulesText(moved).error_code, 2044);
  EXPECT_EQ(RulesErrorText(2044), " ERR READ ENGINE.QVX INCLUDE LOCAL TRENDS ADVISE QVX");
  EXPECT_EQ(RulesErrorText(2121), " ERR READ ENGINE.QVX PRINT EXCEPTION REPORT");
}

TEST(RulesReader, ValuesAsTheWizardWritesThem) {
  std::string text = ShippedRules();
  text = testdata::RulesWith(text, {{"EVALUATE IN EST", "   2"}, {"(4F4.0)", "0.00-0.5" + std::string(32, ' ')},
                               {"# OF GROUPS", "  100"}, {"INITIAL MODEL", "STARTMOD.123"},
                               {"INTERMITTENT", "   1"}, {"MAXIMUM LEAD", "   3"}, {"VALUES TO COMPUTE", " 600"}});
  RulesReadResult read = ParseRulesText(text);
  ASSERT_EQ(read.error_code, 0);
  EXPECT_EQ(read.rules.lambdas, (std::vector<double>{0.0, -0.5}));
  EXPECT_EQ(read.rules.groups, 100);
  EXPECT_EQ(read.rules.initial_model, "STARTMOD.123");
  EXPECT_TRUE(read.rules.intermittent);
  EXPECT_EQ(read.rules.maximum_lead, 3);
  EXPECT_EQ(read.rules.forecasts, 600);
  // Zero lambdas: no transform is tried. LF line ends read the same as CR LF.
  std::string lf = WithValue(ShippedRules(), "EVALUATE IN EST", "   0");
  lf.erase(std::remove(lf.begin(), lf.end(), '\r'), lf.end());
  read = ParseRulesText(lf);
  ASSERT_EQ(read.error_code, 0);
  EXPECT_EQ(read.rules.lambdas, std::vector<double>{1.0});
}

TEST(RulesReader, EmptyValuesOfASwitchedOffPageTakeTheDefaults) {
  // The editor writes only the flag of a page that is switched off.
  std::string text = ShippedRules();
  text = testdata::RulesWith(text, {{"MODEL ESTIMATION", "   0"}, {"SQUARES", "    "}, {"ITERATIONS", ""},
                               {"LEVEL FOR NECESSITY", "    "}, {"TO BE IDENTIFIED", " 7"},
                               {"CONSTANCY TEST", ""}, {"MODEL FORECASTING", "   0"},
                               {"VALUES TO COMPUTE", "    "}, {"FOR THE FORECASTS", ""},
                               {"SIMULATION ENABLED", "   0"}, {"NOISE SERIES", "    "}, {"SEED VALUE", ""}});
  RulesReadResult read = ParseRulesText(text);
  ASSERT_EQ(read.error_code, 0);
  const EngineRules& r = read.rules;
#define F(field) #field, static_cast<double>(r.field)
  const struct {
    const char* field;
    double value, expected;
  } values[] = {
      {F(estimation_enabled), 0}, {F(sse_change_pct), 0.1}, {F(max_iterations), 20}, {F(necessity_level), 90.0},
      {F(max_outliers), 7}, {F(constancy_level), 99.0}, {F(forecasting_enabled), 0}, {F(forecasts), 12},
      {F(forecast_confidence), 95.0}, {F(simulation), 0}, {F(noise_variance), 1.0}, {F(seed), 0},
  };
#undef F
  for (const auto& v : values) EXPECT_DOUBLE_EQ(v.value, v.expected) << v.field;

  // On a page that is switched on, an empty value is still refused with its line's code,
  // and so is an unreadable (not empty) value on a page that is off.
  EXPECT_EQ(ParseRulesText(WithValue(ShippedRules(), "SQUARES", "    ")).error_code, 2024);
  EXPECT_EQ(ParseRulesText(WithValue(ShippedRules(), "VALUES TO COMPUTE", "")).error_code, 2060);
  std::string off = WithValue(ShippedRules(), "SIMULATION ENABLED", "   0");
  EXPECT_EQ(ParseRulesText(WithValue(off, "SEED VALUE", " abc")).error_code, 2068);
  // Lines outside the pages (the lead, the lambda list) never take a default.
  std::string est_off = WithValue(ShippedRules(), "MODEL ESTIMATION", "   0");
  EXPECT_EQ(ParseRulesText(WithValue(est_off, "CONSTRAIN", "    ")).error_code, 2029);
}

TEST(RulesReader, EngineGoOrTheBuiltInRules) {
  TempDir dir;
  // No ENGINE.GO: the built-in rules, which are the shipped file byte for byte.
  EXPECT_EQ(BuiltinRulesText(), ShippedRules());
  RulesReadResult builtin = LoadRules(dir.path());
  EXPECT_EQ(builtin.error_code, 0);
  EXPECT_EQ(builtin.source, "built-in rules");
  EXPECT_EQ(builtin.rules.max_outliers, 5);

  WriteFile(dir / "engine.go", WithValue(ShippedRules(), "TO BE IDENTIFIED", "  12"));
  RulesReadResult go = LoadRules(dir.path());
  EXPECT_EQ(go.error_code, 0);
  EXPECT_EQ(go.source, "ENGINE.GO");
  EXPECT_EQ(go.rules.max_outliers, 12);

  WriteFile(dir / "engine.go", WithValue(ShippedRules(), "NOISE SERIES", "none"));
  EXPECT_EQ(LoadRules(dir.path()).error_code, 2067);
}

TEST(RulesReader, ControlFiles) {
  TempDir dir;
  EngineRules rules;
  EXPECT_TRUE(ApplyControlFiles(dir.path(), rules).empty());

  WriteFile(dir / "NOTREND.QVX", "1\r\n");
  WriteFile(dir / "AllowMod.qvx", "Modification Allowed\r\n");
  WriteFile(dir / "SAVEMOD.QVX", " Save Model\r\n");
  WriteFile(dir / "GROUPLST.QVX", " 3 \r\n40\r\n40\r\n38\r\n");
  auto notes = ApplyControlFiles(dir.path(), rules);
  EXPECT_EQ(notes.size(), 4u);
  EXPECT_TRUE(rules.no_trend);
  EXPECT_FALSE(rules.include_local_trend);
  EXPECT_TRUE(rules.allow_modifications);
  EXPECT_TRUE(rules.save_model_file);
  EXPECT_EQ(rules.groups, 3);
  EXPECT_EQ(rules.group_sizes, (std::vector<int>{40, 40, 38}));

  // A group list whose count disagrees with its sizes is reported and left alone.
  EngineRules other;
  WriteFile(dir / "GROUPLST.QVX", " 3 \r\n40\r\n40\r\n");
  notes = ApplyControlFiles(dir.path(), other);
  EXPECT_EQ(other.groups, 1);
  EXPECT_TRUE(other.group_sizes.empty());
  EXPECT_NE(notes.back().find("could not be read"), std::string::npos);
}

}  // namespace
}  // namespace quorvane
