#pragma once
// Reading the modelling rules: ENGINE.GO in the working folder, else the built-in copy of
// the shipped ENGINE.CND, and the small control files that lie beside it.
//
// The rules file is read line by line in a fixed order. Each line is a label in capitals
// that holds the line's key, a bar, and a value in fixed columns (four wide, the lambda
// list forty, the initial model twelve). A line that is missing, has no bar, does not
// hold its key, or has a value that cannot be read or lies out of range stops the reading
// with that line's code (2002 to 2121). The three lines without a code of their own
// ("INTERMITTENT", "# OF GROUPS", "INITIAL MODEL") are found by their key anywhere; when
// absent their defaults stand.
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "engine/rules.h"

namespace quorvane {

// How a line's value is read.
enum class RuleValue {
  Template,    // an integer the engine keeps but does not model by (2002, displays, 2121)
  Spacer,      // the line after the lambda count: skipped whole
  Flag,        // 0 or 1
  Integer,     // a whole number within [min, max]
  Real,        // a number within [min, max]
  LambdaList,  // ten fields of four characters
};

struct RuleLine {
  int code;             // error code when the line cannot be read
  const char* key;      // text the label must hold ("" for lines without a key)
  const char* label;    // the option's name as the engine's messages give it
  RuleValue kind;
  double min = 0.0, max = 0.0;
};

// The lines of the rules file in the engine's reading order.
const std::vector<RuleLine>& RuleLines();

// The message text of a rules-reading code: " ERR READ ENGINE.QVX <option> ADVISE QVX".
// Empty for a code that is not one of the rules lines.
std::string RulesErrorText(int code);

struct RulesReadResult {
  EngineRules rules;
  int16_t error_code = 0;   // 0, or the code of the first line that could not be read
  std::string source;       // "ENGINE.GO" or "built-in rules"
};

// Parses the whole text of a rules file (CR LF or LF line ends).
[[nodiscard]] RulesReadResult ParseRulesText(std::string_view text);

// The built-in rules: the bytes of ENGINE.CND as shipped, compiled in at build time.
std::string_view BuiltinRulesText();

// ENGINE.GO of the folder (any case) when present, else the built-in rules.
[[nodiscard]] RulesReadResult LoadRules(const std::filesystem::path& work_folder);

// The control files of the working folder, applied to the rules: NOTREND.QVX (local
// trends off), ALLOWMOD.QVX, SAVEMOD.QVX, GROUPLST.QVX (group count and sizes). Returns
// notes for the reports: one line per control file found, and what was not understood.
std::vector<std::string> ApplyControlFiles(const std::filesystem::path& work_folder,
                                           EngineRules& rules);

}  // namespace quorvane
