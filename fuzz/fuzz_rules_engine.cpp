// The engine's rules file (ENGINE.GO, a copy of ENGINE.USR or ENGINE.CND): every line
// read and range-checked as the engine reads it before a run.
#include "engine/rules_reader.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  quorvane::RulesReadResult read = quorvane::ParseRulesText(tessaly::fuzz::AsText(data, size));
  if (read.error_code != 0) (void)quorvane::RulesErrorText(read.error_code);
  return 0;
}
