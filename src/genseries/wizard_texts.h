#pragma once
// The Add Series wizard's words: labels, instructions, checks and notes.
#include <string>

namespace tessaly::genseries::texts {

inline constexpr const char* kWizardTitle = "Add Series Wizard";
inline constexpr const char* kWizardIntro =
    "The Wizard will help you through the steps necessary to add generated, holidays, and/or "
    "user defined series to your dataset.";
inline constexpr const char* kChkLevel = "Add A Level Intervention Series";
inline constexpr const char* kChkPulse = "Add A Pulse Intervention Series";
inline constexpr const char* kChkSP = "Add A Seasonal Pulse Intervention Series";
inline constexpr const char* kChkTrend = "Add A Trend Series";
inline constexpr const char* kChkHoliday = "Add A Holiday Series";
inline constexpr const char* kChkUserDef = "Add A User Defined Series ";
inline constexpr const char* kProcessErrorTitle = "Process Error";
inline constexpr const char* kSelectASeries = "You must select a series before processing can continue.";
inline constexpr const char* kLevelInstruction =
    "LEVEL INTERVENTION - Modify the following as desired in order to generate a series.";
inline constexpr const char* kPulseInstruction =
    "PULSE INTERVENTION - Modify the following as desired in order to generate a series.";
inline constexpr const char* kSPInstruction =
    "SEASONAL PULSE INTERVENTION - Modify the following as desired to generate a series";
inline constexpr const char* kTrendInstruction =
    "TREND INTERVENTION - Modify the following as desired in order to generate a series.";
inline constexpr const char* kUserInstruction = "Complete the following in order to create a series.";
inline constexpr const char* kCancelQuestion =
    "Are you sure that you want to cancel?  You will lose any changes that you have made.";
inline constexpr const char* kCancelTitle = "Cancellation Notice";
inline constexpr const char* kSeasonalityRefused =
    "Generated series can only be created for datasets that have a seasonality of 1, 4, 5, 7, "
    "12, or 52(holidays only).";
inline std::string SeasonalityRefusal(int seasonality) {
  return "Seasonality = " + std::to_string(seasonality) + "\nPlease cancel process.\n" + kSeasonalityRefused;
}
inline constexpr const char* kFyi = "FYI";
inline constexpr const char* kForYourInformation = "For Your Information";

inline constexpr const char* kAvailable = "Available";
inline constexpr const char* kSelected = "Selected";
inline constexpr const char* kHolidayDateLabel = "Enter date of first observation (mm/dd/yyyy)";
inline constexpr const char* kHolidayNote = "You may select individual holdays or select all of them.";
inline constexpr const char* kNameLabel = "Name";
inline constexpr const char* kTypeLabel = "Type(0, 1, 2, or 3)";
inline constexpr const char* kTypeHeading = "Select Type";
inline constexpr const char* kMethodLabel = "Input Method";
inline constexpr const char* kMethodHeading = "Select Method";
inline constexpr const char* kUserDateLabel = "Enter date of 1st observation(mm/dd/yyyy)";
inline constexpr const char* kSelectDay = "Select the desired day";
inline constexpr const char* kSelectMonth = "Select the desired month";
inline constexpr const char* kSelectQuarter = "Select the desired quarter";
inline constexpr const char* kManualNote =
    "THE SERIES WILL BE PLACED IN THE APPLICABLE SPREAD SHEETS BASED ON THE DATATYPE SELECTED; "
    "AND ALL THE DATA POINTS WILL BE FILLED WITH ZEROS(0). YOU WILL HAVE TO FILL IN THE DESIRED "
    "DATA IN EACH OF THE SPREAD SHEETS.";
inline constexpr const char* kDontShowAgain = "DON'T SHOW ME THIS AGAIN";
inline constexpr const char* kFirstObservationTitle = "Enter Date of First Observation";

inline constexpr const char* kTypeTexts[4] = {
    "0- Future Values are self-projected;  contemporaneous and lag effects allowed",
    "1 - Future Values are user-specified; contemporaneous effect allowed",
    "2 - Future Values are user-specified; contemporaneous and  lag effects allowed",
    "3- Future Values are user-specified; contemporaneous, lag and lead effects allowed"};

inline constexpr const char* kBusinessDaysNote[] = {
    "This option determines the number of weekdays in each period less the number of any of the "
    "programs standard holidays that occur in that period .",
    "The standard holidays are as follows:",
    "New Years", "Martin Luther King Day", "St. Valentine Day", "St. Patricks Day", "Memorial Day",
    "Mothers Day", "Fathers Day", "July 4th", "Labor Day", "Halloween", "Veterans Day",
    "Thanksgiving Day", "Christmas Day",
    "If this is not sufficient to your purpose, you may wish to select a Manual method and enter "
    "the days yourself"};

// Checks of the intervention fields.
inline constexpr const char* kCompleteEachSection = "You must complete each section before you can proceed.";
inline std::string YearShort(const std::string& value) {
  return "'Ending Year', " + value +
         ", is in error. For series with a seasonality annual(1), quarterly(4) or monthly(12), you "
         "must indicate all the digits of the 'Ending Year' (i.e. 1995 not 95).";
}
inline constexpr const char* kStartYearLow = "'Starting Year' cannot be less than the original starting year, ";
inline constexpr const char* kStartYearHigh = "'Starting Year' cannot be more than the original ending year, ";
inline constexpr const char* kStartPeriodHigh = "'Starting Period' cannot be more than the original Seasonality, ";
inline constexpr const char* kStartPeriodLow =
    "Since you have not changed the original 'Starting Year', The 'Starting Period' cannot be less "
    "than the original 'Starting Period' , ";
inline constexpr const char* kEndYearLow = "'Ending Year' cannot be less than the original starting year, ";
inline constexpr const char* kEndYearHigh = "'Ending Year' cannot be more than the original ending year, ";
inline constexpr const char* kEndPeriodHigh = "'Ending Period' cannot be more than the original Seasonality, ";
inline constexpr const char* kEndPeriodHighLast =
    "Since you have not changed the original 'Ending Year', The 'Ending Period' cannot be more "
    "than the original 'Ending Period' , ";

// Checks of the user step.
inline constexpr const char* kNeedName = "You must enter a name for the series before processing can continue.";
inline constexpr const char* kNameTooLong =
    "The series name is limited to 20 characters. Please adjust the name accordingly";
inline constexpr const char* kNeedType = "You must enter a datatype for the series before processing can continue.";
inline constexpr const char* kNeedMethod =
    "You must enter an input method for the series before processing can continue.";
inline constexpr const char* kNeedDate = "You must enter the calendar date of the first observation in your data.";
inline std::string TooManySeries(int count, int excess) {
  return "By adding the " + std::to_string(count) +
         " selected series you would exceed the maximum number of series in a model, 150. You must "
         "reduce your selection by " + std::to_string(excess) + " series.";
}

// The manual grids.
inline constexpr const char* kPeriodTime = "Period/Time";
inline constexpr const char* kManualFVTitle = "Manual Future Values";
inline constexpr const char* kEnterYourData = "You must enter your data.";

}  // namespace tessaly::genseries::texts
