// The generation variables file (rwf.his): read place by place into the Add Series
// wizard's choices, then, when it reads, the generator run from it on a monthly dataset,
// which is where the file's numbers and dates are taken as numbers and dates.
#include "fuzz_support.h"
#include "genseries/generate_series.h"
#include "genseries/variables.h"

using namespace tessaly;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const fuzz::fs::path& dir = fuzz::Scratch();
  static const fuzz::fs::path dataset = [&] {
    fuzz::fs::path copy = dir / "AIRLINE.ASC";
    fuzz::fs::copy_file(fuzz::fs::path(TESSALY_SOURCE_DIR) / "examples" / "AIRLINE.ASC", copy,
                        fuzz::fs::copy_options::overwrite_existing);
    return copy;
  }();
  const fuzz::fs::path file = fuzz::WriteInput(dir / "rwf.his", data, size);
  genseries::GenerationVariables vars;
  if (!genseries::LoadXmlFile(file, vars, false).ok) return 0;
  (void)vars.HolidayNames();
  (void)genseries::VariableDate(vars.Dateof1stHolidayObservation);
  (void)genseries::VariableDate(vars.DateOfFirstObservation);
  (void)genseries::GenerateSeries(file, dataset, dir / "GENERATED.ASC", {}, dir);
  return 0;
}
