#pragma once
// Reading an ASC file stage by stage, so that the run's checks can stand between the
// stages (after the properties, after the names, after the types) as the run requires.
// ReadAscFile is these stages without checks between them.
#include <optional>
#include <string>

#include "dataset/asc_dataset.h"
#include "platform/textfile.h"

namespace tessaly::dataset {

class AscStageReader {
 public:
  explicit AscStageReader(const fs::path& path) : reader_(path) {}
  bool IsOpen() const { return reader_.IsOpen(); }

  // Lines 1-3: an empty, non-numeric or out-of-range line gives 0. Never fails.
  void ReadObjectives(AscDataset& dataset);
  // Lines 4-11 into DataProp; stops at the first empty or non-numeric line, or one that
  // overflows 16 bits.
  AscReadResult ReadDataProp(AscDataset& dataset);
  // N name lines as they stand (N = DataProp(1), which must be 1..150).
  void ReadNames(AscDataset& dataset);
  // N type lines; counts K. A non-numeric type stops with NonNumericType, an overflowing
  // one with Overflow.
  AscReadResult ReadTypes(AscDataset& dataset);
  // Observations, future values, retained values, after checking that they fit the
  // record's bounds (ExceedsBounds when not).
  AscReadResult ReadValues(AscDataset& dataset);

  // The next line; an empty line once the file has ended.
  std::string NextLine();
  long LinesRead() const { return reader_.LinesRead(); }

 private:
  platform::LineReader reader_;
};

// The values a header asks for, in 64 bits so that no product can overflow.
struct AscBlockSizes {
  long long observations = 0;  // N x P
  long long future = 0;        // K x F (0 unless F > 0)
  long long retained = 0;      // N x R (0 unless R > 0)
};
AscBlockSizes BlockSizes(const AscDataset& dataset);

}  // namespace tessaly::dataset
