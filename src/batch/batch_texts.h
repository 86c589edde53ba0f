#pragma once
// The texts that the project file, the run and the project commands show or write.
namespace tessaly::batch::texts {

inline constexpr const char* kAppTitle = "Tessaly";

// cBatchFile.
inline constexpr const char* kEmptyGet = "Error: entry attempted to be retrieved from an empty list.";
inline constexpr const char* kEmptyLet = "Error: entry attempted to be changed in an empty list.";
inline constexpr const char* kEmptyRemove = "Error: entry attempted to be removed from an empty list";
inline constexpr const char* kListGetBounds = "Error: out-of-bounds index in \"List(get)\" method.";
inline constexpr const char* kListLetBounds = "Error: out-of-bounds index given in \"List (let)\" method.";
inline constexpr const char* kCompletedGetBounds = "Error: out-of-bounds index in \"Completed (get)\" method.";
inline constexpr const char* kCompletedLetBounds = "Error: out-of-bounds index in \"Completed (let)\" method.";
inline constexpr const char* kErrorGetBounds = "Error: out-of-bounds index in \"Error (get)\" method.";
inline constexpr const char* kErrorLetBounds = "Error: out-of-bounds index in \"Error (let)\" method.";
inline constexpr const char* kRunDateGetBounds = "Error: out-of-bounds index in \"RunDate (get)\" method.";
inline constexpr const char* kRunDateLetBounds = "Error: out-of-bounds index in \"RunDate (let)\" method.";
inline constexpr const char* kXmlFailed = "The xml document failed, because ";

// The run.
inline constexpr const char* kFyi = "FYI";
inline constexpr const char* kEmptyAsc = "The asc file is empty.";
inline constexpr const char* kTooManySeries = "The number of series in the dataset exceeds the maximum allowed.";
inline constexpr const char* kSeasonality1 =
    "You cannot process datasets with different seasonalities in the same xml. Since the initial series seasonality is ";
inline constexpr const char* kSeasonality2 = " and ";
inline constexpr const char* kSeasonality3 = " seasonality is ";
inline constexpr const char* kSeasonality4 = ",it will not be processed.";
inline constexpr const char* kUnivariateRun1 =
    "You cannot process univariate and causal series in the same xml. Since the initial series is a univariate and ";
inline constexpr const char* kUnivariateRun2 = " is a causal, it will not be processed.";
inline constexpr const char* kCausalRun1 =
    "You cannot process univariate and causal series in the same xml. Since the initial series is a causal and ";
inline constexpr const char* kCausalRun2 = " is a univariate, it will not be processed.";
inline constexpr const char* kMalformed = " is malformed. Please review and correct your file and try again.";
inline constexpr const char* kLimit1 = " contains ";
inline constexpr const char* kLimit2 = " asc files. The allowable limit of asc files in a xml is ";
inline constexpr const char* kLimit3Run = ". Use \"Batch\\Edit\" to delete the excess asc files; or make a new xml file.";
inline constexpr const char* kLimit3Open = ". Use \"Bstch\\Edit\" to delete the excess asc files; or make a new xml file.";
inline constexpr const char* kProcessing = "Processing: ";
inline constexpr const char* kPreparing = "Preparing Reports & Graphs .";
inline constexpr const char* kFinished = "Finished processing.";
inline constexpr const char* kIncomplete = "Processing was incomplete.";
// A project file that cannot be saved: the path and the system's reason follow.
inline constexpr const char* kSaveFailed1 = "The project could not be saved to ";
inline constexpr const char* kSaveFailed2 =
    "The file keeps its last saved state; the statuses of this run since then are not in it.";
inline constexpr const char* kForecasts1 = "The forecasts for individual series are shown in ";
inline constexpr const char* kForecasts2 = "Seriesname.Pro.";
inline constexpr const char* kForecasts3 = "The forecast values for all the series processed are shown in ";
inline constexpr const char* kReasons1 = "Please see the following for reasons the indicated series could not be processed";
inline constexpr const char* kReasons2 = "You should delete \".err\" files periodically";
inline constexpr const char* kOverwriteRun1 = "Running will automatically overwrite changes made to";
inline constexpr const char* kOverwriteRun2 = ".  Continue?";
inline constexpr const char* kCanceled = "Operation Canceled by user";
inline constexpr const char* kCanceledTitle = "Tessaly RunEngine Call";
inline constexpr const char* kErrorNo = "Error #";
inline constexpr const char* kExitProgram = "We will now exit program.";

// The project commands.
inline constexpr const char* kNoAscInFolder = "There are no .asc files in the directory you selected!";
inline constexpr const char* kNoneChosen =
    "FYI!  No files listed in the \"Chosen\" column!  Highlight file names listed under \"Available\" and click \"Add\" to add files before continuing.";
inline constexpr const char* kFileExists = "Warning: the file you have chosen already exists. ";
inline constexpr const char* kFileExistsTitle = "File Exists";
inline constexpr const char* kOverwrite = "Overwrite?";
inline constexpr const char* kFileCreated = "File successfully created.";
inline constexpr const char* kCreatedEnd = " created.";
inline constexpr const char* kNeedXmlName = "You must enter the name for the xml file.";
inline constexpr const char* kNotExist = "does not exist. We will discontinue processing. ";
inline constexpr const char* kFyiBang = "FYI! ";
inline constexpr const char* kOpenAnother = "You may select to open another file.";
inline constexpr const char* kSomeMissing1 = "Warning!  The following file(s) weren't found: ";
inline constexpr const char* kSomeMissing2 = "You may exit the program and place these files in ";
inline constexpr const char* kSomeMissing3 = "; or you may use Batch\\Edit to delete/replace the missing files";
inline constexpr const char* kNoneFound1 = "Warning! None of following file(s) were found: ";
inline constexpr const char* kNoneFound2 = "; or you may select to open another file.";
inline constexpr const char* kSaveQuestion = "Would you like to save";
inline constexpr const char* kLookingIn = "Now looking in directory: ";
inline constexpr const char* kSelectOne = "FYI!  You must select at least one series!";
inline constexpr const char* kSelected1 = "You have selected ";
inline constexpr const char* kSelected2 =
    ". You must delete the excess asc files; or make a new xml file.";
inline constexpr const char* kOnlyOne =
    "FYI!  You may only select one ASC file. If you want to change the selected file, you must first delete it from the chosen list.";
inline constexpr const char* kNoneChosenOne =
    "FYI!  No files listed in the \"Chosen\" column!  Highlight a file name listed under \"Available\" and click \"Add\" to add file before continuing.";
inline constexpr const char* kGeneratedSeasonality =
    "Generated series can only be created for datasets that have a seasonality of 1, 4, 5, 7, 12, or 52.";
inline constexpr const char* kAscLocLabel = "Select the directory where the ASC files are located:";

}  // namespace tessaly::batch::texts
