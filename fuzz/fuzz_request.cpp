// The engine's request file (QVXREQUEST.BIN): read with its bounds checked, then laid out
// for the modelling core under the built-in rules, as the engine does before a run.
#include "engine/exchange.h"
#include "engine/request.h"
#include "engine/rules_reader.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const tessaly::fuzz::fs::path& dir = tessaly::fuzz::Scratch();
  static const quorvane::RulesReadResult rules =
      quorvane::ParseRulesText(quorvane::BuiltinRulesText());
  const auto file = tessaly::fuzz::WriteInput(dir / quorvane::kRequestFile, data, size);
  std::optional<quorvane::EngineArrays> request =
      quorvane::ReadExchangeFile(file, quorvane::ExchangeKind::Request);
  if (request) (void)quorvane::PrepareRequest(*request, rules.rules);
  return 0;
}
