// report.xml, the catalogue of the output folder that a user may have edited: each kind of
// code looked up in it, and the error page of a failed dataset written from it.
#include "dataset/error_catalogue.h"
#include "dataset/process_errors.h"
#include "fuzz_support.h"

using namespace tessaly;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const fuzz::fs::path& dir = fuzz::Scratch();
  const fuzz::fs::path output = dir / "OUTPUT";
  fuzz::fs::create_directories(output);
  fuzz::WriteInput(output / "report.xml", data, size);
  for (long code : {5000L, 5013L, 5025L, 2180L, 21L, 0L, -1L})
    (void)dataset::LookUpErrorCode(code, output);
  std::error_code ec;
  fuzz::fs::remove(dir / dataset::kProcessErrorsFileName, ec);
  dataset::WriteErrorReport(5004, "FUZZ.ASC", output, dataset::ProcessErrorsLog(dir));
  return 0;
}
