#include "aggregate/agg_params.h"

#include "dataset/asc_dataset.h"
#include "platform/dialogs.h"
#include "platform/numfmt.h"
#include "platform/paths.h"
#include "platform/textfile.h"

namespace tessaly::aggregate {

namespace {

using platform::Dialogs;
namespace mb = platform::mb;

constexpr const char* kFyi = "FYI";
constexpr const char* kForYourInformation = "For Your Information";
constexpr const char* kRecordName = "AGGPARAMS.RWF";
constexpr const char* kAdvisoryName = "AGGADVISRY.NDR";

// The record's line order, with the control names the lines carry.
struct RecordRow {
  const char* control;
  std::optional<Box> box;  // none: the number field
};
const RecordRow kRecordRows[] = {
    {"chkForecastsYes", Box::ForecastsYes}, {"chkForecastsNo", Box::ForecastsNo},
    {"chkASCFileYes", Box::AscYes},         {"chkASCFileNo", Box::AscNo},
    {"chktemYes", Box::MixedYes},           {"chkTempNo", Box::MixedNo},
    {"txtNumberFore", std::nullopt},        {"chkAddGenSeriesYes", Box::AddSeriesYes},
    {"chkAddGenSeriesNo", Box::AddSeriesNo}, {"chkCausalYes", Box::CausalYes},
    {"chkCauslNo", Box::CausalNo},          {"chkAutomatic2", Box::Automatic2},
    {"chkFixedEffectsYes", Box::FixedEffectsYes}, {"chkFixedEffectsNo", Box::FixedEffectsNo},
    {"chkAutomatic1", Box::Automatic1},     {"chkPtoC", Box::PtoC},
    {"chCtoP", Box::CtoP},
};

Box Partner(Box box) {
  const int i = static_cast<int>(box);
  return static_cast<Box>(i % 2 == 0 ? i + 1 : i - 1);
}

std::string Trim(const std::string& text) { return dataset::TrimBlanks(text); }

// The trimmed line `n` (1-based) of a file; empty when it has fewer lines.
std::string LineOfFile(const fs::path& path, long n) {
  platform::LineReader reader(path);
  if (!reader.IsOpen() || !reader.Skip(n - 1)) return {};
  auto line = reader.Next();
  return line ? Trim(*line) : std::string();
}

std::string UsedForProcessing(const fs::path& path) {
  return "The number of forecasts in " + path.string() + " will be used for processing.";
}

}  // namespace

long CountForecastLines(const fs::path& path) { return dataset::CountAscLines(path); }

void DeleteParamsRecord(const fs::path& program_folder) {
  while (platform::RemoveNoCase(program_folder, kRecordName)) {
  }
}

void ShowAdvisory(const fs::path& program_folder, const std::string& in_directory) {
  if (platform::ExistsNoCase(program_folder, kAdvisoryName)) return;
  const std::string modified = platform::ToUpper(platform::WithTrailingSlash(in_directory) + "MODIFIEDASC");
  const std::string text =
      "PLEASE BE ADVISED THAT SOME OF THE AGGREGATION OPTIONS WILL CAUSE THE ORIGINAL ASC FILES TO "
      "BE OVERWRITTEN.  TO AVOID PROBLEMS, WE WILL BACKUP THE ORIGINALS AND RESTORE THEM WHEN "
      "PROCESSING IS COMPLETED.\r\n\r\nTHE MODIFIED FILES WILL BE SAVED IN " + modified +
      " FOR YOUR REVIEW.\r\n\r\nDO YOU WISH TO SEE THIS ADVISORY AGAIN?";
  if (Dialogs().Message(text, mb::YesNo + mb::Question, kFyi) == mb::No)
    // Without the note the advisory is only shown again next time.
    (void)platform::WriteAllLines(program_folder / kAdvisoryName, {"No aggregation advisory"});
}

AggParams::AggParams(ParamsSetup setup) : setup_(std::move(setup)) {
  if (!setup_.all_names_numeric) Set(Box::MixedNo, true);
  Set(Box::PtoC, true);
  options_.ReconcileDirection = 1;
  number_ = setup_.first_forecast_count;
}

fs::path AggParams::RecordPath() const { return setup_.program_folder / kRecordName; }

std::vector<std::string> AggParams::RecordLines() const {
  std::vector<std::string> lines;
  for (const RecordRow& row : kRecordRows)
    lines.push_back(std::string(row.control) + "  " + (row.box ? (Value(*row.box) ? "1" : "0") : number_));
  return lines;
}

void AggParams::Click(Box box, bool value) {
  if (state_ != State::Open) return;
  Set(box, value);
  // A set box clears its partner; the two directions also set each other when cleared.
  const bool radio = box == Box::PtoC || box == Box::CtoP;
  if (value || radio) Set(Partner(box), !value);
  if (radio) {
    mint_ = false;
    options_.ReconcileDirection = Value(Box::PtoC) ? 1 : 2;
  }
  if (!value) return;
  switch (box) {
    case Box::ForecastsYes: ForecastsYes(); break;
    case Box::ForecastsNo: ForecastsNo(); break;
    case Box::AscYes: AscYes(); break;
    case Box::AscNo: AscNo(); break;
    case Box::Automatic1:
      visible_.fixed_effects = false;
      Set(Box::FixedEffectsYes, false);
      Set(Box::FixedEffectsNo, false);
      break;
    case Box::Automatic2:
      visible_.fixed_effects = true;
      Set(Box::FixedEffectsNo, true);
      Set(Box::FixedEffectsYes, false);
      break;
    default: break;
  }
}

bool AggParams::FileMissingGoOn(const fs::path& path) {
  if (Dialogs().Message(path.string() + " does not exist as it should.  Do you wish to continue?\r\r",
                        mb::YesNo + mb::Question, kFyi) == mb::Yes)
    return true;
  state_ = State::GivenUp;
  return false;
}

void AggParams::ChooseMinT(bool on) {
  if (state_ != State::Open) return;
  mint_ = on;
  Set(Box::PtoC, !on);
  Set(Box::CtoP, false);
  options_.ReconcileDirection = on ? 3 : 1;
}

void AggParams::ForecastsYes() {
  const fs::path path = platform::ResolveNoCase(setup_.in_directory, "GROUPT.PRO");
  if (!fs::exists(path)) {
    if (FileMissingGoOn(path)) Click(Box::ForecastsNo, true);
    return;
  }
  options_.ParentForecastsProvided = true;
  visible_.mixed = visible_.asc = visible_.add_series = false;
  visible_.number_enabled = visible_.number_label = visible_.reconcile = true;
  const long count = CountForecastLines(path);
  Dialogs().Message(UsedForProcessing(path) + "\r\r", mb::OKOnly, kForYourInformation);
  number_ = std::to_string(count);
  visible_.number_enabled = false;
}

void AggParams::ForecastsNo() {
  options_.ParentForecastsProvided = false;
  visible_.asc = visible_.add_series = true;
}

void AggParams::ShowLaterQuestions() {
  visible_.mixed = setup_.all_names_numeric;
  visible_.rules = visible_.causal = visible_.reconcile = visible_.number_label = true;
}

void AggParams::AscYes() {
  const fs::path path = platform::ResolveNoCase(setup_.in_directory, "GROUPT.ASC");
  if (!fs::exists(path)) {
    if (FileMissingGoOn(path)) Click(Box::AscNo, true);
    return;
  }
  options_.ParentAscProvided = true;
  ShowLaterQuestions();
  visible_.number_enabled = false;
  if (LineOfFile(path, 5) != Trim(setup_.keep_seasonality)) {
    Dialogs().Message(
        "The GROUPT.ASC file does not relate to the children selected.  The Seasonality does not "
        "agree with the seasonality of children selected.  We will cancel processing.",
        mb::OKOnly, kFyi);
    options_.ParentAscProvided = false;
    DeleteParamsRecord(setup_.program_folder);
    state_ = State::GivenUp;
    return;
  }
  number_ = LineOfFile(path, 11);
  Dialogs().Message(UsedForProcessing(path), mb::OKOnly, kForYourInformation);
}

void AggParams::AscNo() {
  options_.ParentAscProvided = false;
  ShowLaterQuestions();
  Set(Box::MixedNo, true);
  Set(Box::MixedYes, false);
  visible_.number_enabled = true;
}

void AggParams::LeaveNumberField() {
  if (platform::IsNumeric(number_)) number_ = platform::FormatNumber(platform::Val(number_), "###");
  if (Trim(number_) == "0") number_.clear();
  if (!options_.ParentForecastsProvided) return;
  const fs::path path = platform::ResolveNoCase(setup_.in_directory, "GROUPT.PRO");
  const std::string count = std::to_string(CountForecastLines(path));
  if (count == Trim(number_)) return;
  Dialogs().Message("The number of forecasts in " + path.string() +
                        " does not agree with the number of forecasts you selected.  We will adjust "
                        "your selection to agree with the provided file.",
                    mb::OKOnly, kFyi);
  number_ = count;
}

bool AggParams::Ok() {
  if (state_ != State::Open) return false;
  auto refuse = [](const std::string& text) {
    Dialogs().Message(text, mb::OKOnly, kFyi);
    return false;
  };
  if (!Value(Box::ForecastsYes) && !Value(Box::ForecastsNo))
    return refuse("You must indicate whether or not you have forecasts for the Parent before we can continue.");
  if (!Value(Box::AscYes) && !Value(Box::AscNo) && !Value(Box::ForecastsYes))
    return refuse("You must indicate whether or not you have an ASC file for the Parent before we can continue.");
  options_.FixedEffectsChoice = Value(Box::FixedEffectsYes) ? 1 : 2;
  options_.ReconcileDirection = mint_ ? 3 : Value(Box::CtoP) ? 2 : 1;
  const std::string max = std::to_string(kMaxForecasts);
  if (Trim(number_).empty())
    return refuse("You must indicate the number of forecasts to be created. The maximum allowed is 0 to " + max + ".");
  if (platform::Val(number_) > kMaxForecasts)
    return refuse("The maximum of forecasts allowed is 0 to " + max + ".");
  options_.NumberOfForecasts = Trim(number_);
  const std::string unsaved = PrepareFolders();
  if (!unsaved.empty()) return refuse("The original of " + unsaved + " could not be backed up to ASCBACKUP.");
  if (Trim(setup_.keep_seasonality) == "7" && Value(Box::ForecastsNo) && Value(Box::AscNo) &&
      setup_.ask_first_observation) {
    // A cancelled date leaves it empty and the run goes on.
    options_.FirstObservationDate = setup_.ask_first_observation().value_or("");
  }
  DeleteParamsRecord(setup_.program_folder);
  // The record only remembers these choices for the next time the dialog opens.
  (void)platform::WriteAllLines(RecordPath(), RecordLines());
  state_ = State::Accepted;
  return true;
}

void AggParams::Cancel() {
  if (state_ == State::Open) state_ = State::Canceled;
}

std::string AggParams::PrepareFolders() {
  const fs::path backup = platform::EnsureSubfolder(setup_.in_directory, "ASCBACKUP");
  for (const std::string& name : setup_.chosen) {
    auto source = platform::FindNoCase(setup_.in_directory, name);
    if (source && !platform::CopyFileOver(*source, backup / source->filename())) return name;
  }
  auto modified = platform::FindNoCase(setup_.in_directory, "MODIFIEDASC");
  if (!modified || !fs::is_directory(*modified)) return {};
  std::error_code ec;
  for (auto it = fs::directory_iterator(*modified, ec); !ec && it != fs::directory_iterator();
       it.increment(ec)) {
    const std::string name = it->path().filename().string();
    const bool asc = name.size() >= 3 && (name.ends_with("ASC") || name.ends_with("asc"));
    if (asc && it->is_regular_file()) fs::remove(it->path(), ec);
  }
  return {};
}

}  // namespace tessaly::aggregate
