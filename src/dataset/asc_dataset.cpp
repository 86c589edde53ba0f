#include "dataset/asc_dataset.h"

#include <algorithm>

#include "dataset/asc_reader.h"
#include "platform/numfmt.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/textfile.h"

namespace tessaly::dataset {

using platform::Int16Status;
using platform::NumberStatus;

void AscDataset::Clear() {
  Objectives.Clear();
  DataProp.Clear();
  DataNames.Clear();
  DataTypes.Clear();
  DataValues.Clear();
  FutureValues.Clear();
  RetainedValues.Clear();
  K = 0;
}

long CountAscLines(const fs::path& path) {
  platform::LineReader reader(path);
  if (!reader.IsOpen()) return 0;
  long count = 0;
  std::string last;
  while (auto line = reader.Next()) {
    ++count;
    last = std::move(*line);
  }
  if (count > 0 && !platform::IsNumeric(last)) --count;
  return count;
}

long long AnticipatedSize(const int16_t (&dp)[9], int k) {
  long long n = dp[1], p = dp[5], f = dp[6], r = dp[7];
  return 11 + n + n + n * p + static_cast<long long>(k) * f + n * r;
}

namespace {

bool IsFutureType(int16_t type) { return type >= 1 && type <= 3; }

// One property line: the 16-bit value, or why there is none.
AscReadResult ReadPropertyLine(const std::optional<std::string>& line, int index, int16_t& out) {
  AscReadResult result;
  if (!line) {
    result.status = AscReadStatus::NonNumericDataProp;
    result.bad_data_prop = index;
    return result;
  }
  platform::Int16Conversion c = platform::ToInt16(*line);
  if (c.status == Int16Status::NotNumeric) {
    result.status = AscReadStatus::NonNumericDataProp;
    result.bad_data_prop = index;
  } else if (c.status == Int16Status::Overflow) {
    result.status = AscReadStatus::Overflow;
    result.bad_data_prop = index;
  } else {
    out = c.value;
  }
  return result;
}

}  // namespace

AscReadResult ReadAscHeader(const fs::path& path, AscHeader& header) {
  header = AscHeader{};
  AscReadResult result;
  platform::LineReader reader(path);
  if (!reader.IsOpen()) {
    result.status = AscReadStatus::Missing;
    return result;
  }
  reader.Skip(3);
  for (int i = 1; i <= 8; ++i) {
    result = ReadPropertyLine(reader.Next(), i, header.DataProp[i]);
    if (!result.ok()) return result;
  }
  int n = header.DataProp[1];
  if (n < 1 || n > MaxSeries) return result;
  header.names.reserve(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) header.names.push_back(reader.Next().value_or(""));
  for (int i = 0; i < n; ++i) {
    std::string text = reader.Next().value_or("");
    platform::Int16Conversion c = platform::ToInt16(text);
    if (c.status == Int16Status::Overflow) {
      result.status = AscReadStatus::Overflow;
      result.bad_type = i + 1;
      result.bad_type_text = text;
      return result;
    }
    int16_t type = c.ok() ? c.value : int16_t{-1};
    header.type_texts.push_back(std::move(text));
    header.types.push_back(type);
    if (IsFutureType(type)) ++header.K;
  }
  return result;
}

// ---- stage reader ---------------------------------------------------------------------

std::string AscStageReader::NextLine() { return reader_.Next().value_or(std::string()); }

void AscStageReader::ReadObjectives(AscDataset& dataset) {
  for (int i = 1; i <= kObjectivesBound; ++i) {
    platform::Int16Conversion c = platform::ToInt16(NextLine());
    dataset.Objectives(i) = c.ok() ? c.value : int16_t{0};
  }
}

AscReadResult AscStageReader::ReadDataProp(AscDataset& dataset) {
  AscReadResult result;
  for (int i = 1; i <= kDataPropBound; ++i) {
    int16_t value = 0;
    result = ReadPropertyLine(reader_.Next(), i, value);
    if (!result.ok()) return result;
    dataset.DataProp(i) = value;
  }
  return result;
}

void AscStageReader::ReadNames(AscDataset& dataset) {
  int n = std::clamp<int>(dataset.DataProp(1), 0, MaxSeries);
  for (int i = 1; i <= n; ++i) dataset.DataNames(i) = NextLine();
}

AscReadResult AscStageReader::ReadTypes(AscDataset& dataset) {
  AscReadResult result;
  int n = std::clamp<int>(dataset.DataProp(1), 0, MaxSeries);
  dataset.K = 0;
  for (int i = 1; i <= n; ++i) {
    std::string text = NextLine();
    platform::Int16Conversion c = platform::ToInt16(text);
    if (!c.ok()) {
      result.status = c.status == Int16Status::Overflow ? AscReadStatus::Overflow
                                                         : AscReadStatus::NonNumericType;
      result.bad_type = i;
      result.bad_type_text = text;
      return result;
    }
    dataset.DataTypes(i) = c.value;
    if (IsFutureType(c.value)) ++dataset.K;
  }
  return result;
}

AscBlockSizes BlockSizes(const AscDataset& dataset) {
  AscBlockSizes sizes;
  long long n = dataset.DataProp(1), p = dataset.DataProp(5), f = dataset.DataProp(6),
            r = dataset.DataProp(7);
  sizes.observations = std::max(0LL, n * p);
  sizes.future = f > 0 ? std::max(0LL, dataset.K * f) : 0;
  sizes.retained = r > 0 ? std::max(0LL, n * r) : 0;
  return sizes;
}

AscReadResult AscStageReader::ReadValues(AscDataset& dataset) {
  AscReadResult result;
  AscBlockSizes sizes = BlockSizes(dataset);
  if (sizes.observations > kDataValuesBound || sizes.future > kFutureValuesBound ||
      sizes.retained > kRetainedValuesBound) {
    result.status = AscReadStatus::ExceedsBounds;
    return result;
  }
  // Observations and future values: a line that is not a number stores 0, silently.
  auto read_lenient = [this](FixedArray<double>& into, long long count) {
    for (long long k = 1; k <= count; ++k) {
      std::optional<double> v = platform::ToDouble(NextLine());
      into(static_cast<int>(k)) = v.value_or(0.0);
    }
  };
  read_lenient(dataset.DataValues, sizes.observations);
  read_lenient(dataset.FutureValues, sizes.future);
  // Retained values are converted without that test: a number beyond a double is the
  // malformed file, a line that is no number at all is noted.
  for (long long k = 1; k <= sizes.retained; ++k) {
    std::string line = NextLine();
    platform::NumberConversion c = platform::ToNumber(line);
    if (c.status == NumberStatus::Overflow) {
      result.status = AscReadStatus::Overflow;
      return result;
    }
    if (c.status == NumberStatus::NotNumeric && result.first_non_numeric_retained_line == 0)
      result.first_non_numeric_retained_line = reader_.LinesRead();
    dataset.RetainedValues(static_cast<int>(k)) = c.ok() ? c.value : 0.0;
  }
  return result;
}

AscReadResult ReadAscFile(const fs::path& path, AscDataset& dataset) {
  AscReadResult result;
  AscStageReader reader(path);
  if (!reader.IsOpen()) {
    result.status = AscReadStatus::Missing;
    return result;
  }
  reader.ReadObjectives(dataset);
  result = reader.ReadDataProp(dataset);
  if (!result.ok()) return result;
  if (dataset.DataProp(1) < 1 || dataset.DataProp(1) > MaxSeries) {
    result.status = AscReadStatus::ExceedsBounds;
    return result;
  }
  reader.ReadNames(dataset);
  result = reader.ReadTypes(dataset);
  if (!result.ok()) return result;
  return reader.ReadValues(dataset);
}

// ---- writing --------------------------------------------------------------------------

std::string TrimBlanks(const std::string& text) { return platform::Trim(text); }

namespace {

void WriteInt(platform::TextWriter& w, long long v) { w.Line(std::to_string(v)); }

void WriteValue(platform::TextWriter& w, double v) { w.Line(platform::NumberToText(v)); }

}  // namespace

bool WriteAscFile(const fs::path& path, const clSeriesProperties& properties,
                  const std::vector<AscColumn>& columns) {
  platform::TextWriter w(path);
  if (!w.IsOpen()) return false;
  for (int i = 0; i < 3; ++i) w.Line("0");
  WriteInt(w, properties.NumberOfSeries());
  WriteInt(w, properties.Seasonality());
  w.Line(TrimBlanks(properties.BeginningYear()));
  WriteInt(w, properties.BeginningPeriod());
  WriteInt(w, properties.NumberOfObservations());
  WriteInt(w, properties.NumberOfFurtureValues());
  WriteInt(w, properties.NumberOfRetainedValues());
  WriteInt(w, properties.NumberOfForecasts());
  for (const AscColumn& c : columns) w.Line(c.name);
  for (const AscColumn& c : columns) w.Line(platform::FormatNumber(c.type, "###0"));
  for (const AscColumn& c : columns) {
    for (const std::optional<double>& v : c.values) WriteValue(w, v.value_or(0.0));
  }
  return w.Close();
}

bool WriteAscFile(const fs::path& path, const AscDataset& dataset) {
  if (dataset.DataProp(1) < 1 || dataset.DataProp(1) > MaxSeries) return false;
  AscBlockSizes sizes = BlockSizes(dataset);
  if (sizes.observations > kDataValuesBound || sizes.future > kFutureValuesBound ||
      sizes.retained > kRetainedValuesBound)
    return false;
  platform::TextWriter w(path);
  if (!w.IsOpen()) return false;
  for (int i = 0; i < 3; ++i) w.Line("0");
  for (int i = 1; i <= kDataPropBound; ++i) WriteInt(w, dataset.DataProp(i));
  int n = dataset.DataProp(1);
  for (int i = 1; i <= n; ++i) w.Line(dataset.DataNames(i));
  for (int i = 1; i <= n; ++i) w.Line(platform::FormatNumber(dataset.DataTypes(i), "###0"));
  for (long long k = 1; k <= sizes.observations; ++k)
    WriteValue(w, dataset.DataValues(static_cast<int>(k)));
  for (long long k = 1; k <= sizes.future; ++k)
    WriteValue(w, dataset.FutureValues(static_cast<int>(k)));
  for (long long k = 1; k <= sizes.retained; ++k)
    WriteValue(w, dataset.RetainedValues(static_cast<int>(k)));
  return w.Close();
}

clSeriesProperties PropertiesFromHeader(const AscHeader& header) {
  clSeriesProperties p;
  p.SetNumberOfSeries(header.DataProp[1]);
  p.SetSeasonality(header.DataProp[2]);
  p.SetBeginningYear(std::to_string(header.DataProp[3]));
  p.SetBeginningPeriod(header.DataProp[4]);
  p.SetNumberOfObservations(header.DataProp[5]);
  p.SetNumberOfFurtureValues(header.DataProp[6]);
  p.SetNumberOfRetainedValues(header.DataProp[7]);
  p.SetNumberOfForecasts(header.DataProp[8]);
  p.SetCausal(header.DataProp[1] != 1);
  std::vector<int16_t> qualified;
  for (size_t i = 0; i < header.types.size(); ++i) {
    if (IsFutureType(header.types[i])) qualified.push_back(static_cast<int16_t>(i + 1));
  }
  p.SetQualfiedSeries(std::move(qualified));
  p.DecideLargeEngine();
  return p;
}

bool IsAscName(const std::string& file_name) {
  return platform::EndsWithNoCase(file_name, ".asc");
}

std::string AscStem(const std::string& file_name) {
  return IsAscName(file_name) ? file_name.substr(0, file_name.size() - 4) : file_name;
}

}  // namespace tessaly::dataset
