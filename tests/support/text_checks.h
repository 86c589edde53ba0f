#pragma once
// Checks of a text for the system's words: one failure names every piece that is missing
// (or present where it must not be) and shows the text.
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tessaly::testing {

inline ::testing::AssertionResult HoldsAll(const std::string& text, const std::vector<std::string>& pieces) {
  std::string missing;
  for (const auto& p : pieces)
    if (text.find(p) == std::string::npos) missing += "\n  missing: " + p;
  if (missing.empty()) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << missing << "\nin:\n" << text;
}

inline ::testing::AssertionResult HoldsNone(const std::string& text, const std::vector<std::string>& pieces) {
  std::string found;
  for (const auto& p : pieces)
    if (text.find(p) != std::string::npos) found += "\n  found: " + p;
  if (found.empty()) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << found << "\nin:\n" << text;
}

}  // namespace tessaly::testing
