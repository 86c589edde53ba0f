#pragma once
// The words of the generated-series subsystem: the generation log's lines, the wizard's
// labels, checks and notes, and the adjusting dialogs' texts. Kept in one place so the
// logic, the dialogs and tsly say the same thing.
#include <string>

namespace tessaly::genseries::texts {

// ---- Generation log ---------------------------------------------------------------------
inline constexpr const char* kNothingSelected =
    "No series were selected to be added to your asc file. Therefore, we will exit the program.";
inline constexpr const char* kNoOtherSeries =
    "The number of series in your dataset equals the maximum number of series allowed. "
    "Therefore, no other series can be added to your dataset";
inline constexpr const char* kAlreadyMaximum =
    "The number of series in the dataset already equals the maximum number allowed. Therefore, "
    "no more series may be added.";
inline constexpr const char* kSeasonalityDisagrees =
    "The seasonality for this dataset does not agree with the seasonality used for the saved "
    "options. Therefore, no series may be added.";
inline constexpr const char* kRetainedData =
    "The dataset contains Retained Data. Therefore, no series may be added.";
// "... Therefore, " + what + " cannot be added to your dataset", what being
// "a Level intervention series", "a User Defined series", "a Holiday series", ...
inline std::string LimitReached(const std::string& what) {
  return "The number of series in your dataset equals the maximum number of series allowed. "
         "Therefore, " + what + " cannot be added to your dataset";
}
inline constexpr const char* kMonthlySetExists =
    "Monthly Effect variables already exist. Therefore, no monthly series may be added.";
inline constexpr const char* kQuarterlySetExists =
    "QuarterlyEffect variables already exist. Therefore, no QuarterlyEffect series may be added.";
inline constexpr const char* kWeeklySetExists =
    "WeeklyEffect variables already exist. Therefore, no WeeklyEffect series may be added.";
inline constexpr const char* kBusDaysExists =
    "Business Days variables already exist. Therefore, no Business Days series may be added.";
inline constexpr const char* kUserRangeDisagrees =
    "The range for your dataset does not agree with the selected range. Therefore, the user "
    "defined series cannot be added to your dataset";
inline constexpr const char* kHolidayRangeDisagrees =
    "The range for your dataset does not agree with the selected range. Therefore, a Holiday "
    "series cannot be added to your dataset";
inline std::string OutputRenamed(const std::string& name) {
  return "The name of the output series has been changed to incorporate the date of the first "
         "observation in your data: " + name;
}
inline std::string NotANumber(const std::string& name, long line) {
  return name + " holds a value that is not a number at line " + std::to_string(line) +
         ". Therefore, no series may be added.";
}
// A duplicate intervention; kind is "Level", "Pulse", "Seasonal" or "Trend".
std::string DuplicateIntervention(const std::string& kind, const std::string& name);
// The overflow lines of the sets and of the single series of a user method.
inline constexpr const char* kMonthlyOverflowDated =
    "Adding the \"Monthly Effect\" series would exceed the maximum Number of Series allowed.  "
    "Therefore, none of the \"Monthly\" series may be added.";
inline constexpr const char* kMonthlyOverflowUndated =
    "Adding the \"MonthlyEffect\" series would exceed the maximum Number of Series allowed.  "
    "Therefore, none of the \"Monthly\" series may be added.";
inline constexpr const char* kQuarterlyOverflow =
    "Adding the \"QuarterlyEffect\" series would exceed the maximum Number of Series allowed.  "
    "Therefore, none of the \"Monthly\" series may be added.";
inline constexpr const char* kWeeklyOverflow =
    "Adding the \"Weekly Effect\" series would exceed the maximum Number of Series allowed.  "
    "Therefore, none of the \"Monthly\" series may be added.";
inline constexpr const char* kBusDaysOverflow =
    "Adding the \"Business Days\" series would exceed the maximum Number of Series allowed.  "
    "Therefore, none of the \"Business Days\" series may be added.";
inline std::string ManualOverflow(const std::string& name) {
  return "Adding the G_" + name + " series would exceed the maximum Number of Series allowed.  "
         "Therefore, none of the \"Manual\" series may be added.";
}

// ---- Variables file ----------------------------------------------------------------------
inline constexpr const char* kVariablesComment = "batch variables required for batch processing";
inline std::string ParseErrorBox(const std::string& reason) { return "You have error " + reason + "\n"; }
inline std::string NotMade(const std::string& path) { return path + " was not made."; }

// ---- Adjusting -----------------------------------------------------------------------------
inline constexpr const char* kFyiTitle = "FYI";
inline constexpr const char* kNoFilesChosen =
    "FYI!  No files listed in the \"Chosen\" column!  Highlight file names listed under "
    "\"Available\" and click \"Add\" to add files before continuing.";
inline constexpr const char* kReportHeading =
    "\n\nThe following ASC file(s) were partially or totally unadjusted for the reason(s) "
    "indicated.";
inline constexpr const char* kAllAdjusted = "FYI!  All ASC file(s) were successfully adjusted.";
inline constexpr const char* kSelAdjText =
    "Select which files you'd like to adjust.  To select more than one, hold down Ctrl while "
    "clicking.";
inline constexpr const char* kAdjTitle = "ASC Files Have Been Adjusted";
inline constexpr const char* kAdjText =
    "The following asc files have been adjusted.  Select the asc file(s)  that you would like to "
    "save in place of the original asc file. Please note that the original asc would be deleted.";
inline constexpr const char* kDoNotSave = "Do Not Save Any files";
inline constexpr const char* kSaveFiles = "Save Files";
inline constexpr const char* kBackupFolder = "ASCBACKUP";

}  // namespace tessaly::genseries::texts
