#pragma once
// The Add Series wizard's logic (frmWizard2 binds it): the dataset it starts from, the steps,
// the defaults, every check with its message, the holiday and method lists, and the
// variables it writes at Finish. Messages go through the dialog host; a failed check keeps
// the wizard on its step.
#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "genseries/generate_series.h"
#include "genseries/variables.h"
#include "platform/dates.h"

namespace tessaly::genseries {

// The header of the project's first ASC file, as the wizard measures everything by it.
struct WizardDataset {
  int series = 0;
  int seasonality = 0;
  int begin_year = 0;
  int begin_period = 0;
  int observations = 0;
  int future = 0;  // the future values, or the number of forecasts when there are none
  int forecasts = 0;
  std::array<int, 3> objectives{};
  // The last year and period of observations and future values (the end-date walk).
  int last_year = 0;
  int last_period = 0;
  [[nodiscard]] static std::optional<WizardDataset> FromFile(const std::filesystem::path& asc_file);
};

// The end-date walk: from a beginning year and period, n - 1 steps of one period, wrapping
// at the seasonality; seasonality 1 ends in year begin + n - 1, period 0.
std::pair<int, int> EndDate(int year, int period, int n, int seasonality);

// The first day of weekly data: the Sunday that starts week 1 of the beginning year (January
// 1 to 7, or December 29 to 31 before it), moved on by the weeks before the beginning period.
platform::dates::Date WeeklyFirstDate(int year, int period);

enum class WizardStep { Options, Level, Pulse, SP, Trend, Holidays, UserDef, Finished };

// The four fields of an intervention: start year, start period, end year, end period.
using InterventionFields = std::array<std::string, 4>;

// The methods of the user step for a dataset, as offered.
std::vector<std::string> MethodsOffered(const WizardDataset& ds);

class AddSeriesWizard {
 public:
  explicit AddSeriesWizard(WizardDataset ds);

  const WizardDataset& Dataset() const { return ds_; }
  // At load: the refusal of a seasonality other than 1, 4, 5, 7, 12, 52 (shown under "FYI");
  // true when the wizard may go on.
  [[nodiscard]] bool CheckSeasonality() const;
  bool HolidayAllowed() const;
  bool SPAllowed() const;
  bool UserDefAllowed() const;

  // The choices (bound to the form's fields).
  bool chkAddLevel = false, chkAddPulse = false, chkAddSP = false, chkAddTrend = false;
  bool chkAddHoliday = false, chkAddUserDef = false;
  InterventionFields level, pulse, sp, trend;
  std::vector<std::string> lstHolidays1;  // Available
  std::vector<std::string> lstHolidays2;  // Selected
  std::string holiday_date;               // mm/dd/yyyy, empty when not given
  std::string user_name;
  int user_type = -1;  // 0..3, -1 none chosen
  std::string user_method;
  std::string user_date;
  int selected_day = 0, selected_month = 0, selected_quarter = 0;

  // The holiday list buttons.
  void SelectHolidays(const std::vector<std::string>& marked);
  void RemoveHolidays(const std::vector<std::string>& marked);
  void SelectAllHolidays();

  // Choosing a method: the four automatic ones fill the name and type 1 and lock them.
  void ChooseMethod(const std::string& method);
  bool NameAndTypeLocked() const;
  // Whether the user step needs a calendar date for this dataset.
  bool UserDateNeeded() const;
  bool HolidayDateNeeded() const;

  WizardStep Step() const { return step_; }
  // Next: checks the step, shows the first failure and stays; else moves on. Returns true
  // when it moved.
  [[nodiscard]] bool Next();
  void Back();
  bool AtFinish() const { return step_ == WizardStep::Finished; }
  std::string Instruction() const;

  // The number of series the choices add.
  int NewSeriesCount() const;
  // What Finish writes to rwf.his.
  GenerationVariables Variables() const;
  // Period labels of the manual grids: year + "/" + period, for the observations or the
  // future values.
  std::vector<std::string> PeriodLabels(bool future) const;

  // The checks, each showing its message and returning false on failure.
  [[nodiscard]] bool CheckIntervention(const InterventionFields& f) const;
  // The checks of one field (0 start year, 1 start period, 2 end year, 3 end period), as the
  // field is left; an empty field waits for Next.
  [[nodiscard]] bool CheckInterventionField(const InterventionFields& f, int index) const;
  [[nodiscard]] bool CheckUserStep() const;
  [[nodiscard]] bool CheckSeriesLimit() const;

 private:
  std::vector<WizardStep> Path() const;
  WizardDataset ds_;
  WizardStep step_ = WizardStep::Options;
};

// The manual grids' OK: the data are not all empty ("You must enter your data." otherwise).
[[nodiscard]] bool CheckManualData(const std::vector<std::string>& values);

}  // namespace tessaly::genseries
