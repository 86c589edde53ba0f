// The engine's model file (STARTMOD.123 as the engine takes a user's model): parsed, and
// when it parses, written back in the file's layout and parsed again.
#include "engine/model_file.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::vector<std::string> lines = tessaly::fuzz::Lines(tessaly::fuzz::AsText(data, size));
  std::optional<quorvane::ModelFile> model = quorvane::ParseModelFile(lines);
  if (model) static_cast<void>(quorvane::ParseModelFile(quorvane::FormatModelFile(*model)));
  return 0;
}
