// The wizard's edits and the engine's reading go through one reader of the rules file: a
// rule the wizard writes is the rule the engine reads, every other byte stays, and the range
// checks stay the engine's.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <optional>

#include "engine/rules_reader.h"
#include "formats/rules_file.h"
#include "platform/textfile.h"
#include "rules/rule_keys.h"

namespace tessaly::rules::testing {
namespace {

namespace key = rules::key;
using formats::RulesFile;
namespace fs = std::filesystem;

std::string ShippedRules() {
  auto text = platform::ReadWholeFile(fs::path(TESSALY_SOURCE_DIR) / "resources/program/ENGINE.CND");
  return text ? *text : std::string();
}

// The shipped rules less one line: an older file that lacks a newer rule.
std::string Without(std::string text, std::string_view key_text) {
  const size_t at = text.find(key_text);
  const size_t begin = text.rfind('\n', at) + 1;
  return text.erase(begin, text.find('\n', at) + 1 - begin);
}

TEST(RulesFileShared, WhatTheWizardWritesIsWhatTheEngineReads) {
  const std::string shipped = ShippedRules();
  ASSERT_FALSE(shipped.empty());
  struct Case {
    std::string base;
    std::string_view key;
    std::string value;
    std::function<bool(const quorvane::EngineRules&)> read;
    int16_t code;
  };
  const Case cases[] = {
      {shipped, key::kIterations, " 150", [](auto& r) { return r.max_iterations == 150; }, 0},
      {shipped, key::kStore, "   1", [](auto& r) { return r.store_model; }, 0},
      {shipped, key::kNumberOfGroups, "   3", [](auto& r) { return r.groups == 3; }, 0},
      {shipped, key::kInitialModel, std::string(key::kStartmodInitialModel),
       [](auto& r) { return r.initial_model == "STARTMOD.123"; }, 0},
      {shipped, key::kLambdaList, "1.000.00", [](auto& r) { return r.lambdas.size() == 3; }, 2052},
      // An older file without the rule: the line is added at the end and read from there.
      {Without(shipped, "INTERMITTENT"), key::kIntermittent, "   1", [](auto& r) { return r.intermittent; }, 0},
      {Without(shipped, "# OF GROUPS"), key::kNumberOfGroups, "   4", [](auto& r) { return r.groups == 4; }, 0},
      // The wizard writes what it is given; whether the engine accepts it is the engine's check.
      {shipped, key::kIterations, " 201", [](auto&) { return true; }, 2026},
      {shipped, key::kSquares, "-0.1", [](auto&) { return true; }, 2024},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.key) + "=" + c.value);
    const RulesFile original{c.base};
    RulesFile file{c.base};
    const size_t lines_before = original.Lines().size();
    file.PutRule(c.key, c.value);
    EXPECT_EQ(file.GetRule(c.key), c.value);
    const auto read = quorvane::ParseRulesText(file.Text());
    EXPECT_EQ(read.error_code, c.code);
    if (c.code == 0) EXPECT_TRUE(c.read(read.rules));
    // Only the one line changed, or one was added at the end: the rest is as it was.
    const auto before = original.Lines();
    const auto after = file.Lines();
    ASSERT_GE(after.size(), lines_before);
    int changed = static_cast<int>(after.size() - lines_before);
    for (size_t i = 0; i < lines_before; ++i) changed += before[i].text != after[i].text;
    EXPECT_EQ(changed, 1);
  }
}

TEST(RulesFileShared, LinesLabelsAndKeyedValuesOfEveryLineEnd) {
  struct Case {
    std::string text;
    std::vector<std::string> labels, values;
    std::optional<std::string> groups;
  };
  const Case cases[] = {
      {"ENABLE MODEL ESTIMATION |   1\r\n# OF GROUPS IN POOLED |   2\r\n",
       {"ENABLE MODEL ESTIMATION ", "# OF GROUPS IN POOLED "}, {"   1", "   2"}, "   2"},
      {"ENABLE MODEL ESTIMATION |   1\n# OF GROUPS |7", {"ENABLE MODEL ESTIMATION ", "# OF GROUPS "}, {"   1", "7"}, "7"},
      // A line without a bar is read whole as its label; its key gives no value.
      {"LAMBDA LIST BELOW\r\n# OF GROUPS WITHOUT BAR\r\n# OF GROUPS |   3\r\n",
       {"LAMBDA LIST BELOW", "# OF GROUPS WITHOUT BAR", "# OF GROUPS "}, {"", "", "   3"}, std::nullopt},
      {"", {}, {}, std::nullopt},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    RulesFile file{c.text};
    std::vector<std::string> labels, values;
    for (const auto& line : file.Lines()) {
      labels.emplace_back(line.Label());
      values.emplace_back(line.Value());
    }
    EXPECT_EQ(labels, c.labels);
    EXPECT_EQ(values, c.values);
    EXPECT_EQ(file.KeyedValue("# OF GROUPS"), c.groups);
  }
}

}  // namespace
}  // namespace tessaly::rules::testing
