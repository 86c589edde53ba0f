// The project XML: read, checked against the schema (an older project is rewritten in the
// current form and read again), then walked as the run walks it.
#include "batch/batch_file.h"
#include "fuzz_support.h"

using namespace tessaly;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const fuzz::fs::path& dir = fuzz::Scratch();
  const fuzz::fs::path file = fuzz::WriteInput(dir / "fuzz.xml", data, size);
  batch::cBatchFile project(dir);
  if (project.Load(file)) {
    for (int i = 0; i < project.Size(); ++i) {
      (void)project.List(i);
      (void)project.Completed(i);
      (void)project.Error(i);
      (void)project.RunDate(i);
    }
    (void)batch::AscStem(project.BatchName());
  }
  return 0;
}
