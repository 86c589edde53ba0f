#pragma once
// The texts of the pooling flow, as the person reads them.
namespace tessaly::pool::texts {

inline constexpr const char* kSelectCaption = "Select ASC files for Pooling";
inline constexpr int kSeriesCountLimit = 149;
// The selection's count messages (the limit is put between the halves).
inline constexpr const char* kReachedLimit1 = "You have reached the allowable limit of Series in an Pooling is ";
inline constexpr const char* kReachedLimit2 = " .";
inline constexpr const char* kTooMany1 = "You have selected ";
inline constexpr const char* kTooMany2 = " asc files. The allowable limit of Series in an Pooling is ";
inline constexpr const char* kTooMany3 = ". You must delete the excess asc files.";
inline constexpr const char* kRange = "FYI!  The range for selection is from 2 to ";
// The file tests of pooling that differ from aggregation's.
inline constexpr const char* kNotSameSeries =
    " does not have the same number of series as the other series.  Please review all selected asc files for accuracy.";
inline constexpr const char* kEmptyFile =
    " is an empty or malformed file.  Please review all selected asc files for accuracy.";

// Status captions.
inline constexpr const char* kValidating = "Pooling - Validating Selected ASC files ";
inline constexpr const char* kValidatingStack = "Pooling - Validating TOTALPOOL.ASC file";
inline constexpr const char* kValidated = "Pooling - Validation completed";
inline constexpr const char* kSelectRules = "Pooling - Select Model/Rules";
inline constexpr const char* kProcessing = "Pooling - Processing ";
inline constexpr const char* kFinished = "Pooling - Finished processing.";
inline constexpr const char* kIncomplete = "Pooling - Processing was incomplete.";
inline constexpr const char* kOpened1 = "Pooling - File ";
inline constexpr const char* kOpened2 = " opened.";

inline constexpr const char* kCancelled = "The process has been cancelled by the user.";
inline constexpr const char* kOverwrite1 = "Running will automatically overwrite changes made to ";
inline constexpr const char* kOverwrite2 = ".  Continue?";
inline constexpr const char* kReviewCoefficients =
    "If you would like to review the \"POOL COEFFICIENCIES\" in Excel for expediency, use ";
inline constexpr const char* kFyi = "FYI";

// Files.
inline constexpr const char* kStackName = "TOTALPOOL";
inline constexpr const char* kStackFile = "TOTALPOOL.ASC";
inline constexpr const char* kParamsFile = "POOLPARAMS.RWF";
inline constexpr const char* kPoolMarker = "POOL.QVX";
inline constexpr const char* kGroupList = "GROUPLST.QVX";

// The number of groups (frmLoadGroupData).
inline constexpr const char* kGroupCaption = " Groups in Pooled Cross-Section Time Series";
inline constexpr const char* kGroupLabel = "Total Number of Groups";
inline constexpr const char* kGroupNote1 =
    "The Sample Size of each group must be the same. Just specify the number of ";
inline constexpr const char* kGroupNote2 =
    "groups (must be a minimum of 2 and a maximum of 2000) and select Yes below.";
inline constexpr const char* kGroupRange = "The range for number of groups is from 2 to 2000";
inline constexpr const char* kGroupDivide1 = "The number of observations in the series, ";
inline constexpr const char* kGroupDivide2 = ", cannot be divided evenly by the number of groups, ";
inline constexpr const char* kGroupDivide3 = "Either enter a valid number of Groups or select \"Cancel\". ";
inline constexpr const char* kGroupAccepted1 =
    "The number of groups you indicated have been validated and will be used in processing.";
inline constexpr const char* kGroupAccepted2 =
    "The program will now return you to the Rules Wizard so you may edit/review the other options";

}  // namespace tessaly::pool::texts
