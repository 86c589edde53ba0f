#pragma once
// The ASC file: one problem set (an output series and its input series), one value a line,
// the meaning of a line given by its place. This header holds the record that keeps a file
// in memory and the plain reader and writer; the checks with their messages are in
// dataset/validation.h.
//
// Layout, with N series, P observations, F future values, R retained values and K the
// number of series of type 1, 2 or 3:
//   lines 1-3     objectives
//   lines 4-11    DataProp(1..8): N, seasonality, beginning year, beginning period, P, F, R,
//                 number of forecasts
//   N lines       names (the last is the output series)
//   N lines       types 0..3
//   N x P lines   observations, series after series
//   K x F lines   future values of the input series of type 1, 2, 3
//   N x R lines   retained values
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "dataset/series_properties.h"

namespace tessaly::dataset {

namespace fs = std::filesystem;

// The fixed limits of the whole system.
constexpr int MaxObservations = 10000;
constexpr int MaxSeries = 150;
constexpr int MaxForecasts = 600;
constexpr int MaxSeasonality = 200;
constexpr int MaxYear = 9999;
constexpr int MaxRetained = 52;
constexpr int MaxAscFilesInProject = 2500;
constexpr int MaxInputNameLength = 22;
constexpr int MaxOutputNameLength = 14;

// Bounds of the record's arrays.
constexpr int kObjectivesBound = 3;
constexpr int kDataPropBound = 8;
constexpr int kDataValuesBound = MaxSeries * (MaxObservations + MaxForecasts);  // 1,590,000
constexpr int kFutureValuesBound = MaxForecasts * (MaxSeries - 1);                // 89,400
constexpr int kRetainedValuesBound = MaxSeries * MaxRetained;                     // 7800

// A 1-based array of fixed bound: element k of 1..Bound() is a(k). The storage is made
// once, at the full bound, and reused for every file; an index outside the bound is a
// programming error and throws std::out_of_range.
template <typename T>
class FixedArray {
 public:
  explicit FixedArray(int bound) : data_(static_cast<size_t>(bound)) {}
  T& operator()(int k) { return data_.at(static_cast<size_t>(k - 1)); }
  const T& operator()(int k) const { return data_.at(static_cast<size_t>(k - 1)); }
  int Bound() const { return static_cast<int>(data_.size()); }
  // Sets every element back to T{} (0 or empty).
  void Clear() { std::fill(data_.begin(), data_.end(), T{}); }
  // 0-based storage, element k at index k-1: what the engine's arrays take.
  const std::vector<T>& Storage() const { return data_; }
  std::vector<T>& Storage() { return data_; }

 private:
  std::vector<T> data_;
};

// The record of one ASC file. Sized once at the full bounds (about 13 MB) and reused for
// each file of a run; reading a file overwrites what it uses and leaves the rest.
struct AscDataset {
  FixedArray<int16_t> Objectives{kObjectivesBound};
  FixedArray<int16_t> DataProp{kDataPropBound};
  FixedArray<std::string> DataNames{MaxSeries};
  FixedArray<int16_t> DataTypes{MaxSeries};
  FixedArray<double> DataValues{kDataValuesBound};
  FixedArray<double> FutureValues{kFutureValuesBound};
  FixedArray<double> RetainedValues{kRetainedValuesBound};

  // Series of type 1, 2 or 3 among DataTypes(1..N): the number of future-value blocks.
  int K = 0;

  int NumberOfSeries() const { return DataProp(1); }
  bool Univariate() const { return DataProp(1) == 1; }
  // Observation j (1..P) of series i (1..N).
  double Observation(int series, int j) const { return DataValues((series - 1) * DataProp(5) + j); }
  // Puts every array back to zero / empty.
  void Clear();
};

// The shape of a file: lines 4-11, the names and the types, and K.
struct AscHeader {
  int16_t DataProp[9] = {};  // DataProp[1..8]; [0] unused
  std::vector<std::string> names;       // N names, as they stand (1 <= N <= 150 only)
  std::vector<std::string> type_texts;  // the N type lines as they stand
  std::vector<int16_t> types;           // the N types; a non-numeric type line gives -1
  int K = 0;

  int N() const { return DataProp[1]; }
};

// What can stop the reading of a file. The reader itself reports nothing else: whatever
// else is wrong with a file is found by the checks around the reading.
enum class AscReadStatus {
  Ok,
  Missing,             // the file does not exist or cannot be opened
  NonNumericDataProp,  // a line 4-11 is empty or not numeric; see bad_data_prop
  Overflow,            // a 16-bit value (lines 4-11, a type) or a retained value overflows:
                       // the malformed file
  NonNumericType,      // a type line is not numeric; see bad_type (only from ReadAscFile)
  ExceedsBounds,       // the header asks for more than the record's fixed bounds hold
};

struct AscReadResult {
  AscReadStatus status = AscReadStatus::Ok;
  int bad_data_prop = 0;      // 1..8 with NonNumericDataProp
  int bad_type = 0;           // 1..N with NonNumericType
  std::string bad_type_text;  // the type line as it stands
  // Retained values are taken without the numeric test of the observations; a line that
  // is not numeric stores 0 and is noted here (1-based file line of the first one).
  long first_non_numeric_retained_line = 0;
  bool ok() const { return status == AscReadStatus::Ok; }
};

// The number of lines of the file, a last line that isn't numeric (an end-of-file mark,
// a blank line) not counted. 0 when the file does not exist.
long CountAscLines(const fs::path& path);

// 11 + N + N + N x P + K x F + N x R: the size a file with this header must have.
long long AnticipatedSize(const int16_t (&data_prop)[9], int k);
inline long long AnticipatedSize(const AscHeader& header) {
  return AnticipatedSize(header.DataProp, header.K);
}

// Reads lines 4-11, the names and the types, counting K. Lines 1-3 are skipped. Names
// and types are read only when 1 <= N <= 150. A missing file gives status Missing.
AscReadResult ReadAscHeader(const fs::path& path, AscHeader& header);

// Fills the whole record in file order: objectives (an empty or non-numeric line gives 0),
// DataProp, names as they stand, types, N x P observations (a non-numeric line stores 0
// without any message), K x F future values in the same way, N x R retained values.
// Lines missing at the end of the file read as empty lines.
AscReadResult ReadAscFile(const fs::path& path, AscDataset& dataset);

// One series for the writer: its name, its type (written "###0") and its values, written
// one a line as the default number text; a value without content (a null cell) writes 0.
struct AscColumn {
  std::string name;
  int16_t type = 0;
  std::vector<std::optional<double>> values;
};

// Writes a file: three objectives of 0 (a written file never sets an objective of its
// own), the eight properties in DataProp order (BeginningYear trimmed), the names in
// column order (the output series is the last column), the types, then the values column
// after column. Lines end in CR LF. False when the file cannot be written whole.
bool WriteAscFile(const fs::path& path, const clSeriesProperties& properties,
                  const std::vector<AscColumn>& columns);

// Writes a whole record in the same layout, future and retained values included; the
// objectives are written as 0.
bool WriteAscFile(const fs::path& path, const AscDataset& dataset);

// The series properties of a header: the eight figures, the beginning year as text,
// Causal where N differs from 1, QualfiedSeries the series of type 1, 2 or 3, and the
// LargeEngine flag decided.
clSeriesProperties PropertiesFromHeader(const AscHeader& header);

// The stem of an ASC file name: the name less a closing ".asc" (any case).
std::string AscStem(const std::string& file_name);
// Trims blanks at both ends, and only blanks (a tab stays part of a name), as the
// system's name and length tests do.
std::string TrimBlanks(const std::string& text);
// True when the name ends in ".asc" without regard to case.
bool IsAscName(const std::string& file_name);

}  // namespace tessaly::dataset
