#pragma once
// The answers of "Aggregation Parameters" (frmAggParams) as plain logic: the boxes, which
// questions are shown, the corrections a file in the project's folder makes to an answer,
// the OK checks, the safety copies, the emptied MODIFIEDASC folder and the AGGPARAMS.RWF
// record. The dialog only binds its controls to this; tsly sets the same boxes in order.
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tessaly::aggregate {

namespace fs = std::filesystem;

inline constexpr int kMaxForecasts = 600;

enum class Box {
  ForecastsYes, ForecastsNo, AscYes, AscNo, MixedYes, MixedNo, AddSeriesYes, AddSeriesNo,
  CausalYes, CausalNo, Automatic1, Automatic2, FixedEffectsYes, FixedEffectsNo, PtoC, CtoP,
};

// Which questions the dialog shows, in their order of appearance.
struct ParamsVisibility {
  bool forecasts = true;
  bool asc = false;
  bool mixed = false;
  bool add_series = false;
  bool rules = false;  // "Parent Processing Options"
  bool causal = false;
  bool fixed_effects = false;
  bool reconcile = false;
  bool number_label = false;
  bool number_enabled = false;
};

// What the rest of the flow reads.
struct AggOptions {
  bool ParentForecastsProvided = false;
  bool ParentAscProvided = false;
  int FixedEffectsChoice = 2;   // 1: fixed effects disabled for the children
  int ReconcileDirection = 1;   // 1 Bottom Up, 2 Top Down, 3 MinT
  std::string NumberOfForecasts;
  std::string FirstObservationDate;  // m/d/yyyy, seasonality 7 only; may stay empty
};

struct ParamsSetup {
  fs::path program_folder;   // where AGGPARAMS.RWF is written
  fs::path in_directory;     // the project's input folder
  std::vector<std::string> chosen;  // the children, list order
  bool all_names_numeric = false;
  std::string keep_seasonality;     // the children's line 5
  std::string first_forecast_count; // prefills the field
  // Asks the date of the first observation (seasonality 7 with a parent to be built);
  // nullopt when cancelled.
  std::function<std::optional<std::string>()> ask_first_observation;
};

class AggParams {
 public:
  enum class State { Open, Accepted, Canceled, GivenUp };

  explicit AggParams(ParamsSetup setup);  // the starting state (Form_Load)

  bool Value(Box box) const { return boxes_[static_cast<int>(box)]; }
  // A person setting or clearing one box, with that box's handler.
  void Click(Box box, bool value);
  const std::string& NumberText() const { return number_; }
  void SetNumberText(std::string text) { number_ = std::move(text); }
  // The third reconciliation, beside Bottom Up and Top Down: both of their boxes clear.
  void ChooseMinT(bool on);
  bool MinT() const { return mint_; }
  // Leaving the field: the "###" mask, and the count of a supplied GROUPT.PRO.
  void LeaveNumberField();
  // OK: true when the answers were accepted and the dialog is to be hidden.
  [[nodiscard]] bool Ok();
  void Cancel();

  const ParamsVisibility& Visible() const { return visible_; }
  bool MixedPairAllowed() const { return setup_.all_names_numeric; }
  State state() const { return state_; }
  bool RunCanceled() const { return state_ == State::Canceled || state_ == State::GivenUp; }
  const AggOptions& Options() const { return options_; }
  AggOptions& Options() { return options_; }

  // The lines of AGGPARAMS.RWF for the current boxes.
  std::vector<std::string> RecordLines() const;
  fs::path RecordPath() const;

 private:
  void Set(Box box, bool value) { boxes_[static_cast<int>(box)] = value; }
  void ForecastsYes();
  void ForecastsNo();
  void AscYes();
  void AscNo();
  void ShowLaterQuestions();
  [[nodiscard]] bool FileMissingGoOn(const fs::path& path);
  // Backs the chosen files up to ASCBACKUP and empties MODIFIEDASC of ASC files; returns the
  // first file that could not be backed up (nothing is emptied then), empty when all were.
  [[nodiscard]] std::string PrepareFolders();

  ParamsSetup setup_;
  bool boxes_[16] = {};
  std::string number_;
  ParamsVisibility visible_;
  AggOptions options_;
  State state_ = State::Open;
  bool mint_ = false;
};

// The number of forecasts of a GROUPT.PRO: its lines, less a last line that isn't numeric.
long CountForecastLines(const fs::path& path);

// Deletes AGGPARAMS.RWF beside the program when it is there.
void DeleteParamsRecord(const fs::path& program_folder);

// The advisory of the start of an aggregation, unless AGGADVISRY.NDR silences it; "No"
// writes that file.
void ShowAdvisory(const fs::path& program_folder, const std::string& in_directory);

}  // namespace tessaly::aggregate
