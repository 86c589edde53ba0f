#include "dataset/validation.h"

#include "dataset/asc_reader.h"
#include "dataset/messages.h"
#include "platform/dialogs.h"

namespace tessaly::dataset {

namespace {

// The run shows a value that could not be taken as a number the way its error handler did.
constexpr const char* kTypeMismatchMessage = "Error #13: Type mismatch";
constexpr const char* kProgramTitle = "Tessaly";

bool KeptInName(unsigned char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
         c == '(' || c == ')' || c == '+' || c == '-' || c == '_';
}

std::string DisplayName(const fs::path& file, const std::string& name) {
  return name.empty() ? file.filename().string() : name;
}

// The range checks of the eight properties, in the order the file holds them: the text of
// the first that fails, or an empty text when all pass.
std::string RangeProblem(const AscDataset& ds) {
  const int n = ds.DataProp(1), s = ds.DataProp(2), year = ds.DataProp(3), period = ds.DataProp(4),
            p = ds.DataProp(5), f = ds.DataProp(6), r = ds.DataProp(7), forecasts = ds.DataProp(8);
  if (n <= 0 || n > MaxSeries) return msg::NumberOfSeriesRange(MaxSeries);
  if (s <= 0 || s > MaxSeasonality) return msg::SeasonalityRange(MaxSeasonality);
  if (year <= 0 || year > MaxYear) return msg::BeginningYearRange();
  if (period < 0 || period > s || (period == 0 && s > 1)) return msg::BeginningPeriodRange(s);
  if (p <= 0 || p > MaxObservations) return msg::HistoricalValuesRange(p, MaxObservations);
  if (f < 0 || f > MaxForecasts) return msg::FutureValuesRange(f, MaxForecasts);
  if (p > 52 && r != forecasts && (r < 0 || r > MaxRetained))
    return msg::RetainedDataRange(r, MaxRetained);
  if (p < 52 && r != forecasts && (r < 0 || r > p - 1)) return msg::RetainedDataRange(r, p - 1);
  if (r < 0 || r > MaxForecasts) return msg::RetainedValuesRange(r, MaxForecasts);
  if (forecasts < 0 || forecasts > MaxForecasts) return msg::ForecastsRange(MaxForecasts);
  return {};
}

// The log is where failures are told: a log that cannot be written has nowhere further to
// tell its own failure, and the outcome still says what became of the file.
CheckOutcome Reject(const ProcessErrorsLog& log, const std::string& name, const std::string& text) {
  (void)log.Append(name, text);
  return CheckOutcome::Rejected;
}

CheckOutcome Malformed(const ProcessErrorsLog& log, const std::string& name) {
  (void)log.AppendLine(msg::Malformed(name));
  return CheckOutcome::Malformed;
}

}  // namespace

std::string RepairSeriesName(const std::string& name, int* replaced) {
  std::string out = TrimBlanks(name);
  int count = 0;
  for (char& c : out) {
    if (!KeptInName(static_cast<unsigned char>(c))) {
      c = '_';
      ++count;
    }
  }
  if (replaced) *replaced = count;
  return out;
}

bool ValidateAscSize_And_NSeries(const fs::path& file, bool& cancel, const std::string& name,
                                 AscHeader* header_out) {
  cancel = false;
  const std::string shown = DisplayName(file, name);
  auto fail = [&](const std::string& text) {
    platform::Dialogs().Message(text, platform::mb::OKOnly | platform::mb::Information,
                                msg::kFyiTitle);
    cancel = true;
    return false;
  };
  long count = CountAscLines(file);
  if (count == 0) return fail(msg::SizeCheckEmpty(shown));
  AscHeader header;
  AscReadResult read = ReadAscHeader(file, header);
  if (header_out) *header_out = header;
  if (read.status == AscReadStatus::NonNumericDataProp)
    return fail(msg::DataPropNonNumeric(read.bad_data_prop));
  if (read.status == AscReadStatus::Overflow) return fail(msg::Malformed(shown));
  if (read.status == AscReadStatus::Missing) return fail(msg::SizeCheckEmpty(shown));
  if (header.DataProp[7] > 0) return fail(msg::SizeCheckRetained(shown));
  if (header.DataProp[1] >= MaxSeries + 1) return fail(msg::SizeCheckTooManySeries(shown));
  if (count != AnticipatedSize(header)) return fail(msg::SizeMismatch(shown));
  return true;
}

CheckOutcome CheckAscBeforeReading(const fs::path& file, const std::string& name,
                                   const RunCheckContext& run, const ProcessErrorsLog& log,
                                   AscHeader* header_out) {
  // A missing file or one that is not a data file is said as such, never "empty".
  std::error_code ec;
  fs::file_status st = fs::status(file, ec);
  if (!fs::exists(st)) return Reject(log, name, msg::FileNotFound(file.parent_path().string()));
  if (!fs::is_regular_file(st)) return Reject(log, name, msg::kNotAFile);
  long count = CountAscLines(file);
  if (count == 0) return Reject(log, name, msg::kEmptyFile);
  AscHeader header;
  AscReadResult read = ReadAscHeader(file, header);
  if (header_out) *header_out = header;
  switch (read.status) {
    case AscReadStatus::Ok:
      break;
    case AscReadStatus::Missing:
      return Reject(log, name, msg::kEmptyFile);
    case AscReadStatus::NonNumericDataProp:
      return Reject(log, name, msg::DataPropNonNumeric(read.bad_data_prop));
    default:
      return Malformed(log, name);
  }
  const int n = header.DataProp[1];
  if (n > MaxSeries) return Reject(log, name, msg::kTooManySeries);
  if (count != AnticipatedSize(header)) return Reject(log, name, msg::SizeMismatch(name));
  if (header.DataProp[2] != run.seasonality)
    return Reject(log, name, msg::DifferentSeasonality(run.seasonality, name, header.DataProp[2]));
  if (run.kind == RunKind::Univariate && n != 1)
    return Reject(log, name, msg::CausalInUnivariateRun(run.project_name, name));
  if (run.kind == RunKind::Causal && n == 1)
    return Reject(log, name, msg::UnivariateInCausalRun(run.project_name, name));
  return CheckOutcome::Accepted;
}

CheckOutcome ReadAndCheckAscFile(const fs::path& file, const std::string& name,
                                 AscDataset& ds, const ProcessErrorsLog& log) {
  AscStageReader reader(file);
  if (!reader.IsOpen()) return Reject(log, name, msg::kEmptyFile);

  reader.ReadObjectives(ds);
  AscReadResult read = reader.ReadDataProp(ds);
  if (read.status == AscReadStatus::NonNumericDataProp)
    return Reject(log, name, msg::DataPropNonNumeric(read.bad_data_prop));
  if (!read.ok()) return Malformed(log, name);
  if (std::string problem = RangeProblem(ds); !problem.empty()) return Reject(log, name, problem);

  // Names: length first, then the repair, warned once per character replaced.
  const int n = ds.DataProp(1);
  reader.ReadNames(ds);
  for (int i = 1; i <= n; ++i) {
    std::string trimmed = TrimBlanks(ds.DataNames(i));
    if (i < n && trimmed.size() > static_cast<size_t>(MaxInputNameLength))
      return Reject(log, name, msg::InputNameTooLong(trimmed));
    if (i == n && trimmed.size() > static_cast<size_t>(MaxOutputNameLength))
      return Reject(log, name, msg::OutputNameTooLong(trimmed));
    int replaced = 0;
    ds.DataNames(i) = RepairSeriesName(trimmed, &replaced);
    for (int r = 0; r < replaced; ++r) (void)log.Append(name, msg::NameRepaired(trimmed));
  }

  // Types, in file order: the first one out of range or not a number rejects the file.
  read = reader.ReadTypes(ds);
  const int typed = read.ok() ? n : read.bad_type - 1;
  for (int i = 1; i <= typed; ++i) {
    int16_t t = ds.DataTypes(i);
    if (t < 0 || t > 3) return Reject(log, name, msg::DataTypeInvalid(i, std::to_string(t)));
  }
  if (read.status == AscReadStatus::NonNumericType)
    return Reject(log, name, msg::DataTypeInvalid(read.bad_type, read.bad_type_text));
  if (!read.ok()) return Malformed(log, name);

  if (ds.K >= 1 && ds.DataProp(8) > 0 && ds.DataProp(7) < ds.DataProp(8) &&
      ds.DataProp(6) != ds.DataProp(8))
    return Reject(log, name, msg::FutureValuesMustEqualForecasts());

  // The record's arrays have fixed bounds the checks above do not all imply: every input
  // series typed for future values, or retained values admitted beyond 52 per series.
  AscBlockSizes sizes = BlockSizes(ds);
  if (sizes.future > kFutureValuesBound)
    return Reject(log, name, msg::ExceedsRecordBounds("future values", sizes.future, kFutureValuesBound));
  if (sizes.retained > kRetainedValuesBound)
    return Reject(log, name,
                  msg::ExceedsRecordBounds("retained values", sizes.retained, kRetainedValuesBound));

  read = reader.ReadValues(ds);
  if (read.status == AscReadStatus::Overflow) return Malformed(log, name);
  if (!read.ok()) return Reject(log, name, msg::kEmptyFile);
  if (read.first_non_numeric_retained_line > 0) {
    platform::Dialogs().Message(kTypeMismatchMessage, platform::mb::OKOnly | platform::mb::Critical,
                                kProgramTitle);
  }
  return CheckOutcome::Accepted;
}

}  // namespace tessaly::dataset
