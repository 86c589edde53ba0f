#include "rules/rule_values.h"

#include "platform/numfmt.h"
#include "platform/text.h"

namespace tessaly::rules {

std::string Trim(std::string_view text) { return platform::Trim(text, platform::kBlanksAndTabs); }

std::string LeftChars(std::string_view text, size_t n) {
  return std::string(text.substr(0, std::min(n, text.size())));
}

std::string RightChars(std::string_view text, size_t n) {
  return n >= text.size() ? std::string(text) : std::string(text.substr(text.size() - n));
}

bool IsBlank(std::string_view text) { return Trim(text).empty(); }

bool FlagOn(std::string_view value) {
  std::string t = Trim(value);
  return !t.empty() && t.back() == '1';
}

int IntegerValue(std::string_view value) {
  std::string t = Trim(value);
  if (t.empty()) return 0;
  return platform::ValInt(t);
}

std::string LastDigit(std::string_view value) {
  std::string t = Trim(value);
  return t.empty() ? std::string("0") : RightChars(t, 1);
}

std::string FlagValue(bool on) { return on ? "   1" : "   0"; }

std::string ByBands(std::string_view text, std::initializer_list<Band> bands) {
  if (IsBlank(text)) return std::string(text);
  double v = platform::Val(text);
  for (const Band& b : bands) {
    if (v >= b.low && v <= b.high) return std::string(b.blanks, ' ') + RightChars(text, b.keep);
  }
  return std::string(text);
}

std::string IterationsValue(std::string_view text) {
  return ByBands(text, {{1, 9, 3, 1}, {10, 99, 2, 2}, {100, 200, 1, 3}});
}

std::string HundredsValue(std::string_view text) {
  return ByBands(text, {{1, 9, 3, 1}, {10, 99, 2, 2}, {100, 999, 1, 3}});
}

std::string ResidualsToPoolValue(std::string_view text) {
  return ByBands(text, {{5, 9, 3, 1}, {10, 99, 2, 2}, {100, 999, 1, 3}});
}

std::string SmallLevelValue(std::string_view text) {
  return ByBands(text, {{0.0, 0.99, 1, 3}});
}

std::string NoiseSeriesValue(std::string_view text) {
  return ByBands(text, {{0.0, 9.9, 1, 3}});
}

std::string SeedValue(std::string_view text) {
  return ByBands(text, {{0, 9, 3, 1}, {10, 99, 2, 2}, {100, 999, 1, 3}});
}

std::string ValuesToComputeValue(int forecasts) {
  std::string digits = std::to_string(forecasts);
  if (forecasts >= 0 && forecasts <= 9) return "   " + digits;
  if (forecasts >= 10 && forecasts <= 99) return "  " + digits;
  return " " + RightChars(digits, 3);
}

std::string MaximumLeadValue(std::string_view text) { return "   " + RightChars(text, 1); }

std::string NumberOfGroupsValue(int groups) {
  if (groups == 0) return "   1";
  std::string digits = std::to_string(groups);
  if (groups >= 1 && groups <= 9) return "   " + digits;
  if (groups >= 10 && groups <= 99) return "  " + digits;
  // Wider counts keep two blanks in front, so 100 makes a five-character value.
  return "  " + RightChars(digits, 3);
}

std::string CountValue(int count) {
  std::string digits = std::to_string(count);
  return count >= 10 ? "  " + digits : "   " + digits;
}

}  // namespace tessaly::rules
