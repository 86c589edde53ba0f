// The preferences file (DEFAULTXSD/UserPreferences.xml): read by position into the values
// the program runs with, a file that does not parse leaving them as they were.
#include "fuzz_support.h"
#include "shell/preferences.h"

using namespace tessaly;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const fuzz::fs::path& dir = fuzz::Scratch();
  fuzz::fs::create_directories(dir / "DEFAULTXSD");
  fuzz::WriteInput(dir / "DEFAULTXSD" / "UserPreferences.xml", data, size);
  shell::PreferenceValues values;
  shell::LoadPrefXmlFile(dir, values);
  (void)shell::GraphOptionFor(values);
  return 0;
}
