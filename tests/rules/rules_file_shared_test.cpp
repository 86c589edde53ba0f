// The wizard's edits and the engine's reading share one reader of the rules file: the rule the
// wizard writes is the rule the engine reads, no other line changes, and the ranges stay the
// engine's to check.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "engine/rules_reader.h"
#include "formats/rules_file.h"
#include "platform/textfile.h"
#include "rules/rule_keys.h"

namespace tessaly::rules::testing {
namespace {

using formats::RulesFile;
using Rules = quorvane::EngineRules;

std::string Shipped() {
  return platform::ReadWholeFile(std::filesystem::path(TESSALY_SOURCE_DIR) / "resources/program/ENGINE.CND")
      .value_or("");
}
// An older file that lacks a newer rule's line; or the file with LF line ends.
std::string Without(std::string text, std::string_view key_text) {
  const size_t begin = text.rfind('\n', text.find(key_text)) + 1;
  return text.erase(begin, text.find('\n', begin) + 1 - begin);
}
std::string WithLf(std::string text) {
  std::erase(text, '\r');
  return text;
}

TEST(RulesFileShared, WhatTheWizardWritesIsWhatTheEngineReads) {
  const std::string cnd = Shipped();
  ASSERT_FALSE(cnd.empty());
  struct Case {
    std::string base;
    std::string_view key;
    std::string value;
    std::function<bool(const Rules&)> read;
    int16_t code = 0;
  };
  const Case cases[] = {
      {cnd, key::kIterations, " 150", [](const Rules& r) { return r.max_iterations == 150; }},
      {WithLf(cnd), key::kIterations, "  30", [](const Rules& r) { return r.max_iterations == 30; }},
      {cnd, key::kStore, "   1", [](const Rules& r) { return r.store_model; }},
      {cnd, key::kInitialModel, "STARTMOD.123", [](const Rules& r) { return r.initial_model == "STARTMOD.123"; }},
      {Without(cnd, "INTERMITTENT"), key::kIntermittent, "   1", [](const Rules& r) { return r.intermittent; }},
      {Without(cnd, "# OF GROUPS"), key::kNumberOfGroups, "   4", [](const Rules& r) { return r.groups == 4; }},
      {cnd, key::kIterations, " 201", nullptr, 2026},
      {cnd, key::kSquares, "-0.1", nullptr, 2024},
      {cnd, key::kLambdaList, "1.000.00", nullptr, 2052},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.key) + "=" + c.value);
    const RulesFile original{c.base};
    RulesFile file{c.base};
    file.PutRule(c.key, c.value);
    EXPECT_EQ(file.GetRule(c.key), c.value);
    const auto read = quorvane::ParseRulesText(file.Text());
    EXPECT_EQ(read.error_code, c.code);
    if (c.read) EXPECT_TRUE(c.read(read.rules));
    // One line changed, or one added at the end; every other stays as it was.
    const auto before = original.Lines(), after = file.Lines();
    ASSERT_GE(after.size(), before.size());
    size_t changed = after.size() - before.size();
    for (size_t i = 0; i < before.size(); ++i) changed += before[i].text != after[i].text;
    EXPECT_EQ(changed, 1u);
  }
}

}  // namespace
}  // namespace tessaly::rules::testing
