#pragma once
// The rules file as the wizard holds it: the text exactly as read, changed one rule at a time
// through the rules file's one reader and writer, which the engine reads with too.
#include "formats/rules_file.h"

namespace tessaly::rules {

namespace fs = std::filesystem;

using RulesText = formats::RulesFile;

}  // namespace tessaly::rules
