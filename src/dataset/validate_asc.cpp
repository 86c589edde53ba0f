#include "dataset/validate_asc.h"

#include <cmath>
#include <memory>
#include <optional>
#include <system_error>

#include "dataset/asc_dataset.h"
#include "dataset/error_catalogue.h"
#include "platform/numfmt.h"
#include "platform/paths.h"
#include "platform/textfile.h"

namespace tessaly::dataset {

bool AscValid = false;

namespace {

// Reads the file line by line and can rewrite a line already read, then carry on from
// the same place in the rewritten file.
class RepairingReader {
 public:
  explicit RepairingReader(fs::path path) : path_(std::move(path)) { Open(); }

  // The next line; nullopt at the end of the file.
  std::optional<std::string> Next() {
    std::optional<std::string> line = reader_->Next();
    if (line) {
      ++line_;
      last_numeric_ = platform::IsNumeric(*line);
    }
    return line;
  }
  long Line() const { return line_; }
  bool LastNumeric() const { return last_numeric_; }

  // Rewrites the line just read and reopens the file after it.
  void RewriteCurrent(const std::string& text) {
    reader_.reset();
    // A line that cannot be rewritten stays as the file has it, and reading goes on.
    (void)ReplaceLine(path_, line_, text);
    Open();
    reader_->Skip(line_);
    last_numeric_ = platform::IsNumeric(text);
  }

 private:
  void Open() { reader_ = std::make_unique<platform::LineReader>(path_); }

  fs::path path_;
  std::unique_ptr<platform::LineReader> reader_;
  long line_ = 0;
  bool last_numeric_ = true;
};

// Every character a digit or a blank: the test of the counting lines.
bool DigitsAndBlanks(const std::string& line) {
  for (char c : line) {
    if (!(c == ' ' || (c >= '0' && c <= '9'))) return false;
  }
  return true;
}

double WholePart(const std::string& line) { return std::trunc(platform::Val(line)); }

bool InRange(double v, double low, double high) { return v >= low && v <= high; }

bool LegalObjective(double v) {
  return InRange(v, 0, 15) || InRange(v, 51, 52) || InRange(v, 97, 99) || v == 199 || v == 200;
}

// Characters a name may not hold: controls, blank and "!", "*", ".", "?", "[", "]", "`".
bool IllegalNameCharacter(unsigned char c) {
  return c <= 33 || c == 42 || c == 46 || c == 63 || c == 91 || c == 93 || c == 96;
}

}  // namespace

bool ReplaceLine(const fs::path& file, long line_number, const std::string& text) {
  // Written beside the file under a name no dataset has and renamed over it: the user's
  // file is whole until the repaired copy replaces it, and a real "123<name>" is never
  // touched.
  std::vector<std::string> lines;
  {
    platform::LineReader in(file);
    if (!in.IsOpen()) return false;
    while (auto line = in.Next()) lines.push_back(std::move(*line));
    if (in.TooLarge()) return false;
  }
  if (line_number >= 1 && line_number <= static_cast<long>(lines.size())) lines[line_number - 1] = text;
  return platform::WriteAllLines(file, lines);
}

ValidateAscResult ValidateASC(const std::string& asc_name, const fs::path& in_directory,
                              const fs::path& output_path, const ProcessErrorsLog& log) {
  AscValid = false;
  ValidateAscResult result;
  auto fail = [&](int code) {
    WriteErrorReport(code, asc_name, output_path, log);
    result.code = code;
    return result;
  };

  // Without a catalogue the error pages say that the code was not found.
  (void)EnsureReportXml(output_path);
  std::optional<fs::path> found =
      platform::FindNoCase(in_directory, fs::path(asc_name).filename().string());
  std::error_code ec;
  if (!found || !fs::is_regular_file(*found, ec)) return fail(5000);
  RepairingReader reader(*found);

  // A file that ends before its own header is complete disagrees with its size.
  constexpr int kShort = 5001;
  auto next = [&]() { return reader.Next(); };

  auto line = next();
  if (!line) return fail(kShort);
  if (!LegalObjective(WholePart(*line))) return fail(5002);
  for (int objective = 2; objective <= 3; ++objective) {
    line = next();
    if (!line) return fail(kShort);
    if (WholePart(*line) != 0) reader.RewriteCurrent("0");
  }

  // Line 4: number of series.
  if (!(line = next())) return fail(kShort);
  if (!DigitsAndBlanks(*line)) return fail(5005);
  double n = WholePart(*line);
  if (!InRange(n, 0, MaxSeries)) return fail(5006);
  // Line 5: seasonality.
  if (!(line = next())) return fail(kShort);
  if (!DigitsAndBlanks(*line)) return fail(5007);
  double seasonality = WholePart(*line);
  if (!InRange(seasonality, 1, MaxSeasonality)) return fail(5008);
  // Line 6: beginning year.
  if (!(line = next())) return fail(kShort);
  if (!InRange(WholePart(*line), 0, MaxYear)) return fail(5009);
  // Line 7: beginning period; 0 for a non-seasonal series.
  if (!(line = next())) return fail(kShort);
  if (!DigitsAndBlanks(*line)) return fail(5010);
  double period = WholePart(*line);
  if (seasonality != 1) {
    if (!InRange(period, 1, seasonality)) return fail(5012);
  } else if (period != 0) {
    reader.RewriteCurrent("0");
  }
  // Line 8: observations.
  if (!(line = next())) return fail(kShort);
  if (!DigitsAndBlanks(*line)) return fail(5013);
  double observations = WholePart(*line);
  if (!InRange(observations, 1, MaxObservations)) return fail(5014);
  // Line 9: future values; a lone series has none.
  if (!(line = next())) return fail(kShort);
  double future = 0;
  std::optional<double> future_value = platform::ToDouble(TrimBlanks(*line));
  if (n == 1 && future_value && *future_value > 0) {
    reader.RewriteCurrent("0");
  } else {
    if (!DigitsAndBlanks(*line)) return fail(5015);
    future = WholePart(*line);
    if (!InRange(future, 0, MaxForecasts)) return fail(5016);
  }
  // Line 10: retained values.
  if (!(line = next())) return fail(kShort);
  if (!DigitsAndBlanks(*line)) return fail(5017);
  double retained = WholePart(*line);
  if (observations < 53) {
    if (!InRange(retained, 0, observations - 1)) return fail(5019);
  } else if (!InRange(retained, 0, MaxRetained)) {
    return fail(5018);
  }
  // Line 11: forecasts.
  if (!(line = next())) return fail(kShort);
  if (!DigitsAndBlanks(*line)) return fail(5020);
  if (!InRange(WholePart(*line), 0, MaxForecasts)) return fail(5021);

  // Names: the output series (the last, when there are several) has 14 characters, any
  // other name 22; no name may hold a character the engine cannot take.
  const int series = static_cast<int>(n);
  for (int i = 1; i <= series; ++i) {
    if (!(line = next())) return fail(kShort);
    std::string name = TrimBlanks(*line);
    if (i == series && i >= 2) {
      if (name.size() > static_cast<size_t>(MaxOutputNameLength)) return fail(5022);
    } else if (name.size() > static_cast<size_t>(MaxInputNameLength)) {
      return fail(5023);
    }
    for (char c : name) {
      if (IllegalNameCharacter(static_cast<unsigned char>(c))) return fail(5024);
    }
  }

  // Types: the output series is type 0, set so when it is not; input series 0 to 3.
  long long k = 0;
  for (int i = 1; i <= series; ++i) {
    if (!(line = next())) return fail(kShort);
    double type = WholePart(*line);
    if (i == series) {
      if (type != 0) reader.RewriteCurrent("0");
    } else {
      if (!InRange(type, 0, 3)) return fail(5025);
      if (type >= 1) ++k;
    }
  }

  // The size: the rest of the file counted to its end, a last line that isn't a number
  // left out.
  long long count = reader.Line();
  while (next()) ++count;
  if (!reader.LastNumeric()) --count;
  long long nn = series, p = static_cast<long long>(observations),
            f = static_cast<long long>(future), r = static_cast<long long>(retained);
  long long anticipated = 11 + nn + nn + nn * p + k * f + nn * r;
  if (count != anticipated) return fail(5001);

  AscValid = true;
  result.valid = true;
  return result;
}

}  // namespace tessaly::dataset
