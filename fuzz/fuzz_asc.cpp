// An ASC dataset as the run takes it: the checks before reading, the whole read with its
// value checks, then the stricter pre-flight check that repairs small faults in place.
#include "dataset/asc_dataset.h"
#include "dataset/validate_asc.h"
#include "dataset/validation.h"
#include "fuzz_support.h"

using namespace tessaly;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const fuzz::fs::path& dir = fuzz::Scratch();
  static dataset::AscDataset* record = new dataset::AscDataset();
  const fuzz::fs::path file = fuzz::WriteInput(dir / "FUZZ.ASC", data, size);
  const fuzz::fs::path output = dir / "OUTPUT";
  fuzz::fs::create_directories(output);
  std::error_code ec;
  fuzz::fs::remove(dir / dataset::kProcessErrorsFileName, ec);

  const dataset::ProcessErrorsLog log(dir);
  // The file taken as the first of its run, so that its own seasonality and kind are the
  // run's and the whole read is reached.
  dataset::AscHeader header;
  dataset::ReadAscHeader(file, header);
  dataset::RunCheckContext run{header.DataProp[2],
                               header.N() == 1 ? dataset::RunKind::Univariate : dataset::RunKind::Causal,
                               "FUZZ"};
  if (dataset::CheckAscBeforeReading(file, "FUZZ.ASC", run, log) ==
      dataset::CheckOutcome::Accepted)
    dataset::ReadAndCheckAscFile(file, "FUZZ.ASC", *record, log);
  bool cancel = false;
  dataset::ValidateAscSize_And_NSeries(file, cancel, "FUZZ.ASC");
  dataset::ValidateASC("FUZZ.ASC", dir, output, log);
  return 0;
}
