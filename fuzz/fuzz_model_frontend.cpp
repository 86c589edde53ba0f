// The front-end's model file (STARTMOD.123, a saved <series>.MOD): read into the wizard's
// table, then each row filled into its model page and checked, as the model pages do.
#include <algorithm>

#include "fuzz_support.h"
#include "rules/model_file.h"
#include "rules/validation.h"

using namespace tessaly;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const fuzz::fs::path& dir = fuzz::Scratch();
  const fuzz::fs::path file = fuzz::WriteInput(dir / "STARTMOD.123", data, size);
  static rules::ModelTable* table = new rules::ModelTable;
  table->Clear();
  std::optional<int> count = rules::ReadModelFile(file, *table);
  if (!count) return 0;
  const int series = std::clamp(*count, 1, 150);
  rules::StartmodPage noise;
  if (!table->Empty()) rules::FillNoisePage(table->Row(0), noise);
  else rules::SetNoiseDefaults(noise);
  rules::ValidateStartmod(noise);
  for (int i = 1; i < series; ++i) {
    std::vector<std::string> row = table->Row(i);
    rules::InputmodPage input;
    if (row.empty()) continue;
    rules::FillInputPage(row, input);
    rules::ValidateInputmod(input);
  }
  return 0;
}
