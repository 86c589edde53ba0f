#pragma once
// The spreadsheet subsystem's own texts, exactly as the system shows and logs them.
namespace tessaly::spreadsheet::texts {

// Data access.
inline constexpr const char* kUnableToConnect = "Unable to connect";
inline constexpr const char* kUnableToConnectTo = "Unable to connect to ";
inline constexpr const char* kDatabaseSuffix = " database";
inline constexpr const char* kNoRecords = "No records retrieved";
inline constexpr const char* kUnableToRetrieve = "Unable to retrieve data";
inline constexpr const char* kNoSchemaInfo = "Unable to retrieve database schema information";
inline constexpr const char* kNoSchemaData = "No schema data retrieved";
inline constexpr const char* kExecuteFailed = "Error executing SQL statement";
inline constexpr const char* kBeginFailed = "Cannot begin a transaction";
inline constexpr const char* kCommitFailed = "Cannot commit database changes";

// The import wizard.
inline constexpr const char* kWizardTitle = "Import Wizard";
inline constexpr const char* kOpenFilter = "Excel Files (*.csv;*.xls;*.xlsx)|*.csv;*.xls;*.xlsx";
inline constexpr const char* kOnlyXls = "Currently only files with an extention of XLS or XLSX are supported.";
inline constexpr const char* kCausalNote =
    "You can import as many problem sets as you want, but if you want to create a problem with causal variables, then the maximum is 150";
inline constexpr const char* kBlankSheet = "The selected sheet appears to be blank.";
inline constexpr const char* kSelectSheet = "Please Select a sheet with data to continue.";
inline constexpr const char* kFirstRowNames = "First row contains Series Names.";
inline constexpr const char* kFirstColumnNames = "First column contains Series Names.";
inline constexpr const char* kFirstBlank = "It appears that the first row or column is blank.";
inline constexpr const char* kFirstBlankTitle = "First row/col Blank?";
inline constexpr const char* kFirstBlankNeedName =
    "If you have selected that the first row/column doesn't contain header information this cell must contain a series name to continue.";
inline constexpr const char* kColumnOriented = "Series are Column Oriented";
inline constexpr const char* kRowOriented = "Series are Row Oriented";
inline constexpr const char* kBatchRun = "Batch Run";
inline constexpr const char* kBatchImport = "Batch Import";
inline constexpr const char* kSeriesNameRow = "Series Name";
inline constexpr const char* kHeaderTitle = "Import Wizard - Header selection";
inline constexpr const char* kIllegalNames =
    "One or more series names have illegal characters. The series name cannot include spaces, period(.), exclamation (!), backquote('), Brackets([]), wild card characters such as * or ?, and ASCII character 0 through 31. All unacceptable characters will be replaced by an Underscore(_). You may wish to correct the .asc file later.";
inline constexpr const char* kLongNamesHead = "One or more series names exceed the maximum length of ";
inline constexpr const char* kLongNamesTail = " have been truncated.";
inline constexpr const char* kPropertiesTitle = "Series Properties";
inline constexpr const char* kSeasonalityAboveZero = "The value input for seasonality must be greater than 0. ";
inline constexpr const char* kSeasonalityExceeds = "The value input for seasonality exceeds the maximum value of ";
inline constexpr const char* kMinorExceeds = "The value input for Minor Period cannot exceed the selected seasonality.";
inline constexpr const char* kForecastsExceed = "The number of forecasts cannot exceed ";
inline constexpr const char* kForecastsTitle = "Quorvane Series Properties";
inline constexpr const char* kOpenError = " There was an error opening the input file";
inline constexpr const char* kBadXlsx = "The selected file does not appear to have the correct formatting for an Excel XLSX file.";
inline constexpr const char* kBadXls = "The selected file does not appear to have the correct formatting for an Excel XLS file.";
inline constexpr const char* kAscFilter = "Tessaly File (*.asc)|*.asc";
inline constexpr const char* kOverwrite = "The file you have selected already exists would you like to over write it?";
inline constexpr const char* kImportTitle = "Import Excel File";
inline constexpr const char* kWriting = "Writing ";
inline constexpr const char* kWritingHistorical = "Writing to Historical Data";
inline constexpr const char* kOpenFile = "Open File";
inline constexpr const char* kGatherData = "Gather Data";
inline constexpr const char* kWriteFile = "Write File";
inline constexpr const char* kFinishedImporting = "Finished importing ";
inline constexpr const char* kSeriesDot = " series.";

// The PROPERTIES sheet.
inline constexpr const char* kPropertiesSheet = "PROPERTIES";
inline constexpr const char* kBadPropertiesHeader = "Error reading properties sheet, the header was not correct.";
inline constexpr const char* kDefaultsUsed = "Default values will be used.";
inline constexpr const char* kIssuesFound = "The following issues were found:";
inline constexpr const char* kRunPropertiesTitle = "Run Excel File Properties";
inline constexpr const char* kSeasonalityMax = "Seasonality may not exceed the Maximum Value of ";
inline constexpr const char* kDefaultUsed = ", Default value was used.";
inline constexpr const char* kMajorMax = "Major may not exceed the Maximum value of ";
inline constexpr const char* kMajorDefaultUsed = ", the default value was used.";
inline constexpr const char* kMinorAboveSeasonality = "Minor value is greater than the Seasonality, default value was used";

// The workbook runner.
inline constexpr const char* kDateBlank = " Row1, Col2 appears to be blank, ";
inline constexpr const char* kDateMalformed = " Date in Row1, Col1 is missing or malformed ,";
inline constexpr const char* kNotSpreadsheet = " Input file is either missing, not a spreadsheet or malformed";
inline constexpr const char* kOpenSheetError = " There was an error opening the input file or worksheet";
inline constexpr const char* kFileName = "File Name: ";
inline constexpr const char* kWorksheet = "Worksheet: ";
inline constexpr const char* kSeries = "Series: ";
inline constexpr const char* kRow = " row: ";
inline constexpr const char* kEngineError = "Engine Error: ";
inline constexpr const char* kDetailsMissing = " DETAILS.HTM file was not found.";
inline constexpr const char* kEngineRunError = "There was an error running the Tessaly Engine";
inline constexpr const char* kGeneratingGraphs = "Generating Graphs ";
inline constexpr const char* kWritingForecasts = "Writing Forecasts to Spreadsheet.";
inline constexpr const char* kFinished = "Finished";
inline constexpr const char* kFinishedProcessing = "Finished Processing.";
inline constexpr const char* kUserCancel = "User clicked Cancel.";
inline constexpr const char* kOutahere = " Outahere";
inline constexpr const char* kBadExtension = "The input file does not have a supported file extenstion";
inline constexpr const char* kRunnerFilter = "Excel files (*.xls,*.xlsx)|*.xls;*.xlsx";
inline constexpr const char* kNeedWorksheet = "You must select a worksheet name";
inline constexpr const char* kRunStarted = "Run started at : ";
inline constexpr const char* kRunnerTitle = "Command Line Runner";
inline constexpr const char* kResultBook = "tslyb.xlsx";
inline constexpr const char* kResultSheet = "tessaly";

}  // namespace tessaly::spreadsheet::texts
