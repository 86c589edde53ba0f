#include "genseries/generate_series.h"

#include <memory>

#include "dataset/asc_dataset.h"
#include "dataset/messages.h"
#include "genseries/gen_failure.h"
#include "genseries/holidays.h"
#include "genseries/texts.h"
#include "genseries/working_dataset.h"
#include "platform/dialogs.h"
#include "platform/numfmt.h"
#include "platform/paths.h"
#include "platform/textfile.h"
#include "shell/app_info.h"

namespace tessaly::genseries {

namespace {
constexpr const char* kModule = "clcGenerateSeries";

std::string Trim(const std::string& s) { return dataset::TrimBlanks(s); }

bool IsFutureType(int16_t type) { return type >= 1 && type <= 3; }

// What a new request replaces. A monthly set replaces a quarterly one and the
// other way round; a new holiday selection replaces the old holidays as a whole.
bool Replaced(const std::string& name, const GenerationVariables& v) {
  const std::string upper = platform::ToUpper(name);
  const std::string method = platform::ToUpper(Trim(v.UserDefMethod));
  if (method == "MONTHLYEFFECT" && upper.find("G_QUARTERLYEFFECT") != std::string::npos) return true;
  if (method == "QUARTERLYEFFECT" && upper.find("G_MONTHLY") != std::string::npos) return true;
  if (platform::Val(v.NumberofHolidaysSelected) > 0 && IsHolidayKey(Trim(upper))) return true;
  return false;
}

// The set of the chosen method that the file already holds, with its line.
const char* ExistingSetLine(const GenerationVariables& v, const std::vector<std::string>& names) {
  const std::string method = platform::ToUpper(Trim(v.UserDefMethod));
  const char* needle = nullptr;
  const char* line = nullptr;
  if (method == "MONTHLYEFFECT") needle = "G_MONTHLYEFFECT", line = texts::kMonthlySetExists;
  else if (method == "QUARTERLYEFFECT") needle = "G_QUARTERLYEFFECT", line = texts::kQuarterlySetExists;
  else if (method == "WEEKLYEFFECT") needle = "G_WEEKLYEFFECT", line = texts::kWeeklySetExists;
  else if (method == "BUSINESS DAYS") needle = "G_BUSDAYS", line = texts::kBusDaysExists;
  if (!needle) return nullptr;
  for (const std::string& n : names)
    if (platform::ToUpper(n).find(needle) != std::string::npos) return line;
  return nullptr;
}

bool RangeAgrees(const GenerationVariables& v, const WorkingDataset& ds) {
  const std::string major = Trim(v.MajorPeriod), minor = Trim(v.MinorPeriod);
  return !major.empty() && !minor.empty() && platform::IsNumeric(major) &&
         platform::IsNumeric(minor) && platform::Val(major) == ds.begin_year &&
         platform::Val(minor) == ds.begin_period;
}

std::string IntText(const std::string& text) {
  return std::to_string(static_cast<long long>(platform::Val(text)));
}

// Writes the file beside its target first and moves it in place, so a failed write never
// leaves a damaged dataset.
bool WriteDataset(const fs::path& path, const WorkingDataset& ds, const GenerationVariables& v) {
  fs::path temp = path;
  temp += ".tmp~";
  platform::TextWriter w(temp);
  if (!w.IsOpen()) return false;
  w.Line(IntText(v.FirstObjective));
  w.Line(IntText(v.SecondObjective));
  w.Line(IntText(v.ThirdObjective));
  std::vector<const GenColumn*> cols;
  for (const GenColumn& c : ds.kept) cols.push_back(&c);
  cols.push_back(&ds.dependent);
  for (int v : {static_cast<int>(cols.size()), ds.seasonality, ds.begin_year, ds.begin_period,
                ds.observations, ds.future, ds.retained, ds.forecasts})
    w.Line(std::to_string(v));
  for (const GenColumn* c : cols) w.Line(c->name);
  for (const GenColumn* c : cols) w.Line(platform::FormatNumber(c->type, "###0"));
  for (const GenColumn* c : cols)
    for (int t = 0; t < ds.observations; ++t)
      w.Line(platform::NumberToText(t < static_cast<int>(c->obs.size()) ? c->obs[t] : 0.0));
  if (ds.future >= 1) {
    for (const GenColumn* c : cols) {
      if (!c->has_future) continue;
      for (int t = 0; t < ds.future; ++t)
        w.Line(platform::NumberToText(t < static_cast<int>(c->future.size()) ? c->future[t] : 0.0));
    }
  }
  if (!w.Close()) {
    std::error_code ec;
    fs::remove(temp, ec);
    return false;
  }
  std::error_code ec;
  fs::rename(temp, path, ec);
  if (ec) fs::remove(temp, ec);
  return !ec;
}
}  // namespace

clsGenerateSeries::clsGenerateSeries(fs::path program_folder)
    : program_folder_(program_folder.empty() ? platform::ProgramFolder() : std::move(program_folder)) {}

fs::path clsGenerateSeries::LogFileOf(const fs::path& asc_path) {
  std::string name = asc_path.filename().string();
  if (name.find('.') == std::string::npos || name.size() <= 4) return {};
  return asc_path.parent_path() / platform::ToUpper(name.substr(0, name.size() - 4));
}

void clsGenerateSeries::Log(const std::string& line) {
  log_lines_.push_back(line);
  // The lines are kept in LogLines() too, which the callers show; the file is a copy.
  if (!log_path_.empty()) (void)platform::AppendLine(log_path_, line);
}

bool clsGenerateSeries::GenerateSeries(const fs::path& asc_path, const fs::path& variables_path,
                                       const std::optional<fs::path>& output_path) {
  import_ok_ = true;
  written_ = false;
  duplicate_found_ = false;
  log_lines_.clear();
  platform::RemoveNoCase(program_folder_, "BPRESULTS.ASC");
  LoadXmlFile(variables_path, vars);

  log_path_ = LogFileOf(asc_path);
  if (!log_path_.empty()) {
    std::error_code ec;
    if (fs::is_regular_file(log_path_, ec)) fs::remove(log_path_, ec);
    (void)platform::WriteAllLines(log_path_, {""});
  }
  const GenerationVariables& v = vars;
  if (Trim(v.LevelStartYear).empty() && Trim(v.PulseStartYear).empty() &&
      Trim(v.SPStartYear).empty() && Trim(v.TrendStartYear).empty() && Trim(v.UserDefName).empty() &&
      Trim(v.NumberofHolidaysSelected) == "0") {
    Log(texts::kNothingSelected);
    return import_ok_ = false;
  }
  if (previous_series_count_ + 1 > dataset::MaxSeries) {
    Log(texts::kNoOtherSeries);
    return import_ok_ = false;
  }
  try {
    try {
      if (!Run(asc_path, output_path)) import_ok_ = false;
    } catch (const std::exception& e) {
      throw GenFailure{5, e.what(), "GenerateSeries"};
    }
  } catch (const GenFailure& f) {
    // The procedure's error exit: the standard error line and box; the file is not written.
    const std::string text = "Error #" + std::to_string(f.number) + ": " + f.description + ", " +
                             kModule + ", " + f.procedure;
    // The box below is shown whether or not the error file could be written.
    (void)platform::AppendLine(program_folder_ / "tslyberr.txt",
                         platform::dates::FormatIso(platform::dates::Today()) + "  " + text);
    platform::Dialogs().Message(text, platform::mb::OKOnly | platform::mb::Critical,
                                shell::kApplicationTitle);
    Log(text);
    import_ok_ = false;
    written_ = false;
  }
  return import_ok_;
}

bool clsGenerateSeries::Run(const fs::path& asc_path, const std::optional<fs::path>& output_path) {
  const std::optional<int> n = CheckDataset(asc_path);
  if (!n) return false;
  WorkingDataset ds;
  std::vector<std::string> file_names;
  if (!ReadDataset(asc_path, *n, ds, file_names)) return false;

  GenContext ctx{ds, vars, [this](const std::string& line) { Log(line); }, import_ok_};
  bool stop = AddInterventions(ctx);
  if (!stop) stop = AddUserDefinedSeries(ctx, file_names);
  if (!stop) AddHolidays(ctx);

  // A duplicate intervention leaves the file as it was.
  if (duplicate_found_) return false;
  const fs::path target = output_path ? *output_path : asc_path;
  if (!WriteDataset(target, ds, vars)) {
    Log(target.string() + " could not be written.");
    return false;
  }
  written_ = true;
  previous_series_count_ = ds.SeriesCount();
  return import_ok_;
}

// The header, checked in its own order before anything is read or changed, and every value
// a number. Returns the number of series, or nothing when the file is refused (and logged).
std::optional<int> clsGenerateSeries::CheckDataset(const fs::path& asc_path) {
  const GenerationVariables& v = vars;
  const std::string shown = asc_path.filename().string();
  long lines = dataset::CountAscLines(asc_path);
  dataset::AscHeader header;
  dataset::AscReadResult read = dataset::ReadAscHeader(asc_path, header);
  if (lines == 0 || read.status == dataset::AscReadStatus::Missing) {
    Log(dataset::msg::SizeCheckEmpty(shown));
    return std::nullopt;
  }
  if (read.status == dataset::AscReadStatus::NonNumericDataProp) {
    Log(dataset::msg::DataPropNonNumeric(read.bad_data_prop));
    return std::nullopt;
  }
  if (!read.ok()) {
    Log(dataset::msg::Malformed(shown));
    return std::nullopt;
  }
  const int n = header.DataProp[1];
  if (n == dataset::MaxSeries) {
    Log(texts::kAlreadyMaximum);
    return std::nullopt;
  }
  if (!Trim(v.BPSeaonality).empty() && platform::Val(v.BPSeaonality) != header.DataProp[2]) {
    Log(texts::kSeasonalityDisagrees);
    return std::nullopt;
  }
  if (header.DataProp[7] > 0) {
    Log(texts::kRetainedData);
    return std::nullopt;
  }
  if (n > dataset::MaxSeries) {
    Log(dataset::msg::SizeCheckTooManySeries(shown));
    return std::nullopt;
  }
  if (n < 1 || header.DataProp[5] < 1 || lines != dataset::AnticipatedSize(header)) {
    Log(dataset::msg::SizeMismatch(shown));
    return std::nullopt;
  }
  // A value that is not a number would be read as 0 and written back as 0: the file is left
  // as it is, so the user can mend it.
  if (auto text = platform::ReadAllLines(asc_path)) {
    for (size_t k = 11 + 2 * static_cast<size_t>(n); k < text->size(); ++k) {
      if (!platform::IsNumeric((*text)[k])) {
        Log(texts::NotANumber(shown, static_cast<long>(k) + 1));
        return std::nullopt;
      }
    }
  }
  return n;
}

// The file's `n` series into `ds`, less what the new request replaces, the dependent series
// apart; `file_names` gets the names of the file's series before the dependent one.
bool clsGenerateSeries::ReadDataset(const fs::path& asc_path, int n, WorkingDataset& ds,
                                    std::vector<std::string>& file_names) {
  auto file = std::make_unique<dataset::AscDataset>();
  if (!dataset::ReadAscFile(asc_path, *file).ok()) {
    Log(dataset::msg::Malformed(asc_path.filename().string()));
    return false;
  }
  ds.seasonality = file->DataProp(2);
  ds.begin_year = file->DataProp(3);
  ds.begin_period = file->DataProp(4);
  ds.observations = file->DataProp(5);
  ds.future = file->DataProp(6);
  ds.retained = file->DataProp(7);
  ds.forecasts = file->DataProp(8);
  const int P = ds.observations, F = ds.future;
  int future_block = 0;
  std::vector<GenColumn> columns;
  for (int i = 1; i <= n; ++i) {
    GenColumn c;
    c.name = file->DataNames(i);
    c.type = file->DataTypes(i);
    c.has_future = IsFutureType(c.type);
    c.obs.resize(P);
    for (int j = 1; j <= P; ++j) c.obs[j - 1] = file->DataValues((i - 1) * P + j);
    if (c.has_future) {
      c.future.assign(F, 0.0);
      for (int j = 1; j <= F; ++j) c.future[j - 1] = file->FutureValues(future_block * F + j);
      ++future_block;
    }
    if (i < n) file_names.push_back(c.name);
    columns.push_back(std::move(c));
  }
  file.reset();
  ds.EnsureFutureValues();
  ds.dependent = std::move(columns.back());
  columns.pop_back();
  for (GenColumn& c : columns)
    if (!Replaced(c.name, vars)) ds.kept.push_back(std::move(c));
  if (ds.FutureCount() == 0) ds.future = 0;
  return true;
}

// Whether one more series would pass the limit of series in a dataset; says so when it would.
bool clsGenerateSeries::LimitReached(const WorkingDataset& ds, const std::string& what) {
  if (ds.SeriesCount() + 1 <= dataset::MaxSeries) return false;
  Log(texts::LimitReached(what));
  import_ok_ = false;
  return true;
}

// The level, pulse, seasonal pulse and trend interventions asked for, in that order.
// Returns true when the limit of series stopped them (and everything after them).
bool clsGenerateSeries::AddInterventions(GenContext& ctx) {
  const GenerationVariables& v = vars;
  const std::pair<const std::string*, const char*> interventions[] = {
      {&v.LevelStartYear, "Level"}, {&v.PulseStartYear, "Pulse"},
      {&v.SPStartYear, "Seasonal"}, {&v.TrendStartYear, "Trend"}};
  for (const auto& [start, kind] : interventions) {
    if (Trim(*start).empty()) continue;
    const std::string what = std::string(kind) == "Seasonal" ? "a Seasonal Pulse intervention series"
                                                              : "a " + std::string(kind) + " intervention series";
    if (LimitReached(ctx.ds, what)) return true;
    AddInterventionSeries(ctx, kind, duplicate_found_);
  }
  return false;
}

// The user's own series, when one is named: refused when its set or its name is already
// there or its range disagrees with the file's. Returns true when what follows must not run.
bool clsGenerateSeries::AddUserDefinedSeries(GenContext& ctx, const std::vector<std::string>& file_names) {
  const GenerationVariables& v = vars;
  WorkingDataset& ds = ctx.ds;
  if (Trim(v.UserDefName).empty()) return false;
  const std::string name = Trim(v.UserDefName);
  if (LimitReached(ds, "a User Defined series")) return true;
  if (const char* line = ExistingSetLine(v, file_names)) {
    Log(line);
    import_ok_ = false;
    return true;
  }
  std::string existing;
  for (const char* prefix : {"G_", "M_"}) {
    const std::string wanted = platform::ToUpper(prefix + name);
    for (const GenColumn& c : ds.kept)
      if (platform::ToUpper(Trim(c.name)) == wanted && existing.empty()) existing = prefix;
    if (platform::ToUpper(Trim(ds.dependent.name)) == wanted && existing.empty()) existing = prefix;
  }
  if (!existing.empty()) {
    Log(existing + name + " already exists.");
    import_ok_ = false;
  } else if (!RangeAgrees(v, ds)) {
    Log(texts::kUserRangeDisagrees);
    import_ok_ = false;
  } else {
    const int before = ds.SeriesCount();
    AddUsersSeries(ctx, manual.history, manual.future);
    if (ds.seasonality == 7 && ds.SeriesCount() > before) RenameDailyOutput(ctx, v.DateOfFirstObservation);
  }
  return false;
}

// The selected holidays, when there are any and the range agrees with the file's.
void clsGenerateSeries::AddHolidays(GenContext& ctx) {
  const GenerationVariables& v = vars;
  WorkingDataset& ds = ctx.ds;
  if (Trim(v.NumberofHolidaysSelected) == "0" || LimitReached(ds, "a Holiday series")) return;
  if (!RangeAgrees(v, ds)) {
    Log(texts::kHolidayRangeDisagrees);
    import_ok_ = false;
    return;
  }
  const int before = ds.SeriesCount();
  AddSelectedHolidays(ctx);
  if (ds.seasonality == 7 && ds.SeriesCount() > before) RenameDailyOutput(ctx, v.Dateof1stHolidayObservation);
}

GenerationResult GenerateSeries(const fs::path& variables_file, const fs::path& asc_file,
                                const std::optional<fs::path>& output_file, const ManualData& manual,
                                const fs::path& program_folder) {
  clsGenerateSeries gen(program_folder);
  gen.manual = manual;
  GenerationResult result;
  result.import_ok = gen.GenerateSeries(asc_file, variables_file, output_file);
  result.log_lines = gen.LogLines();
  if (!gen.LogPath().empty()) {
    std::error_code ec;
    fs::remove(gen.LogPath(), ec);
  }
  if (gen.Written()) result.written = output_file ? *output_file : asc_file;
  result.outcome = !gen.Written()    ? GenerationOutcome::Refused
                   : result.import_ok ? GenerationOutcome::Adjusted
                                      : GenerationOutcome::PartlyAdjusted;
  return result;
}

const char* OutcomeText(GenerationOutcome outcome) {
  switch (outcome) {
    case GenerationOutcome::Adjusted: return "adjusted";
    case GenerationOutcome::PartlyAdjusted: return "partly adjusted";
    default: return "refused";
  }
}

}  // namespace tessaly::genseries
