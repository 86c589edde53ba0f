#include "dataset/error_catalogue.h"

#include <algorithm>

namespace tessaly::dataset {

namespace {

struct RawRow {
  int code;
  const char* text;
};

// Engine codes other than the option-reading failures, texts as the engine's messages
// give them (leading blanks included).
const RawRow kEngineRows[] = {
    {1, "A stop in BJUID; please report this error to QVX."},
    {3, "A stop in BJEST GM EST; please report this error to QVX"},
    {5, "A stop in BETAIN; please report this error to QVX."},
    {6, "Exceeding MAXNP in EXPM1; please report this error to QVX."},
    {9, "A stop in BJFOR; please report this error to QVX."},
    {12, "IDLOOP greater than 3; please report this error to QVX."},
    {15, "Exceeds MAXRWS in BJEST; please report this error to QVX."},
    {20, "In ESTNLS ( HUGE ERROR SOS ); please report this error to QVX."},
    {21, "User terminated the process."},
    {25, "RMMATI; please report this error to QVX."},
    {28, "Consider scaling your data."},
    {29, "Model is over-parameterized. Reduse number of input series."},
    {31, "IN ESTNLS; please report this error to QVX"},
    {32, "IN RMPDIV REPORT THIS ERROR TO QVX"},
    {36, "IN RMPDIV REPORT THIS ERROR TO QVX"},
    {37, "IN RMPDIV REPORT THIS ERROR TO QVX"},
    {52, "EXCEEDS MAXRWS IN BJMAIN (BJTFID) REPORT THIS ERROR TO QVX"},
    {53, "EXCEEDS MAXRWS IN BJMAIN (BJUID)  REPORT THIS ERROR TO QVX"},
    {54, "EXCEEDS MAXRWS IN BJMAIN (BJDC)   REPORT THIS ERROR TO QVX"},
    {55, "EXCEEDS MAXRWS IN BJMAIN (BJAID)  REPORT THIS ERROR TO QVX"},
    {57, "EXCEEDS MAXRWS IN BJMAIN (BJSIM)  REPORT THIS ERROR TO QVX"},
    {62, "EXCEEDS MAXIWS IN BJMAIN (BJTFID) REPORT THIS ERROR TO QVX"},
    {63, "EXCEEDS MAXIWS IN BJMAIN (BJUID)  REPORT THIS ERROR TO QVX"},
    {64, "EXCEEDS MAXIWS IN BJMAIN (BJDC)   REPORT THIS ERROR TO QVX"},
    {65, "EXCEEDS MAXIWS IN BJMAIN (BJAID)  REPORT THIS ERROR TO QVX"},
    {66, "TOTAL NUMBER OF PARAMETERS (MAXTNP) EXCEEDED REPORT THIS ERROR TO QVX"},
    {67, "IN MSFILT REPORT THIS ERROR TO QVX"},
    {81, "CANT TAKE INVERSE TRANSFORM REPORT THIS ERROR TO QVX"},
    {1005, "THE FILE FAST.DAT INDICATES 0 OBSERVATIONS."},
    {1006, "THE FILE FAST.DAT INDICATES 0 SERIES."},
    {1007, "THE FILE FAST.DAT INDICATES THAT THE PERIODICITY IS INVALID."},
    {1008, "THE FILE FAST.DAT INDICATES THAT THE FIRST YEAR IS NEGATIVE."},
    {1009, "THE FILE FAST.DAT INDICATES THAT THE FIRST PERIOD EXCEEDS LIMITS."},
    {1010, "THE FILE FAST.DAT INDICATES TOTAL # OF OBSERVATIONS EXCEEDS LIMITS."},
    {1014, " THE FILE FAST.DAT HAS TOO FEW SERIES NAMES."},
    {1015, "THE FILE FAST.DAT HAS TOO FEW OBSERVATIONS."},
    {1033, " DATAYOU IS REQUIRED IF FORECASTING WITH A SERIES TYPE OF 1 OR 2"},
    {1035, " A PROBLEM WAS ENCOUNTERED IN PREPARING FOR SIMULATION. RPT THIS TO QVX"},
    {1036, "FAST.DAT Not DOES"},
    {1054, " NON-NUL REF FOR FUTURE VALUES FOR CAUSE SERIES IS EXPCTED (A)ADVIS QVX"},
    {1055, " CAUSE SERIES FILE DOES NOT EXIST REPORT THIS ERROR TO QVX"},
    {1056, " NON-NUL REF FOR FUTURE VALUES FOR CAUSE SERIES IS EXPECTED (B) ADVISE QVX"},
    {1058, " FAILED CALLED TO DETCHK AT 1 REPORT THIS ERROR TO QVX"},
    {1061, " FAILED CALLED TO DETCHK AT 2 REPORT THIS ERROR TO QVX"},
    {1070, " THE FILE  FAST.DAT  IS MALFORMED.ISERCB.DEL FILE AND REBOOT SYS ADVISE QVX"},
    {1073, " FAST.DAT DOES NOT EXIST."},
    {1074, " QUICKF.MOD DOES NOT EXIST."},
    {1079, " DATAYOU.123 SEEMS INCORRECTLY FORMED"},
    {2127, " ERR READ DATAYOU.123 IN GETWU3 VALUES"},
    {2128, " ERROR OPENING FILES"},
    {2143, " LOGARITHMIC TRANSFORMATION DID NOT HELP IN TOURNAMENT"},
    {2147, " PROBLEM B"},
    {2148, " PROBLEM C"},
    {2149, " TEMP ERROR CODE TO ALLOW ME TO EXIT CLEANLY . I RESET THIS TO 0"},
    {2151, " WHEN SPECIFYING FUTURE VALUES DATA; YOU.123 MUST EXIST"},
    {2155, " TESSALY HAS IDENTIFIED A LINEAR REDUNDANCY. DELETE REDUNDANT VARIABLES."},
    {2157, " PROBLEM WITH FAST.DAT"},
    {2159, " PROBLEMS WITH TIME TREND MODEL. REQUIRES THAT USER PREPARE NONCAUSAL."},
    {2162, " SPARSE ANALYSIS PROBLEM."},
    {2163, " PROBLEMS WITH SEASONAL TIME TREND MODEL. NOT VALID FOR THIS SEASONALITY."},
    {2164, " PROBLEMS WITH OLS OR OLSP MODEL. REQUIRES CAUSAL VARIABLES."},
    {2174, " PROBLEMS IN MSBJS2 PLS ADVISE QVX"},
    {2177, " PROBLEMS WITH DATAYOU.123"},
    {2180, " ARRAY.API HAS INCORRECT # OF OBSERVATIONS."},
    {2181, " ARRAY.API HAS INCORRECT # OF FUTURE VALUES."},
    {2182, " ARRAY.API HAS INCORRECT # OF RETAINED VALUES OR FUTURE VALUES."},
    {2189, " CURIOUS VALUE"},
    {2190, " STARTMOD.123 MALFORMED"},
    {2191, " DATAPROP (6) IS NOT CORRECT. FUTURE VALUES FOR INPUT SERIES ARE NEEDED"},
    {2192, " DATAPROP(6)DOES NOT EQUAL (8)+(7)"},
    {2193, " THE NUMBER OF RETAINED VALUES CAN NOT EXCEED 52. PLEASE RESET"},
    {2195, " TESMOD NOT ALLOWED FOR CAUSAL."},
    {2196, " MAX # OF TRIAL MODELS EXCEEDED"},
    {2199, " MODEL REUSE IS NOT COMPATIBLE WITH RETAINED DATA."},
    {2201, " NUMBER OF OBSERVATIONS IN SERIES EXCEEDS PROPERTY"},
    {2208, " USEMOD.QVX REQUIRES A STARTING MODEL"},
    {2209, " USEMOD.QVX REQUIRES ENGINE.QVX"},
    {2210, " PROBLEM WITH DEGREES OF FREEDOM SIMPLIFY MODEL"},
    {2211, " CURIOUS"},
    {2214, " STARTING MODEL REQUIRES AN ENGINE.QVX FILE"},
    {2217, " PROBLEMS WITH A SERIES NAME."},
    {2218, " PROBLEMS WITH A DATAYOU.123 (B)."},
    {2219, " OUTPUT SERIES MUST BE TYPE 0"},
    {2220, " DATAPROP(6) EXCEEDS (7)=(8)"},
    {2221, " MAX DIFFERENCING HAS BEEN VIOLATED"},
    {2222, " SIZE OF FORECASTS IS QUESTIONABLE"},
    {2223, " OUTPUT SERIES NEEDS CODING DOWN"},
    {2224, " UNABLE TO PURGE AN UNNEEDED SERIES"},
    {2225, " ROSETTA.QVX"},
    {2226, " MODEL DOES NOT MATCH THE DATA "},
    {2228, " DATAPROP (6) IS NOT CORRECT. FUTURE VALUES FOR INPUT SERIES ARE NEEDED."},
};

// Codes 2002 to 2121: one option of the rules the engine reads could not be read. The
// option names stand with the blanks their rule lines give them.
const RawRow kOptionRows[] = {
    {2002, "USE ROBUST AUTOCORRELATION FUNCTION"},
    {2015, "MAXIMUM LEAD FOR SERIES NAMED MOVE+"},
    {2018, "USE DIFF FACTORS FROM ARIMA IN TF MODEL"},
    {2020, "ENABLE MODEL ESTIMATION"},
    {2024, "% CHANGE IN ERROR SUM OF SQUARES"},
    {2025, "% CHANGE IN THE PARAMETER VALUES"},
    {2026, "MAXIMUM # OF ITERATIONS"},
    {2027, "NECESSITY:"},
    {2028, "CONFIDENCE LEVEL FOR NECESSITY"},
    {2029, "CONSTRAIN  CAUSAL COEFFICIENTS  IN MODEL"},
    {2030, "SUFFICIENCY (STOCHASTIC STRUCTURE )"},
    {2031, "CONFIDENCE LEVEL FOR SUFFICIENCY (SS)"},
    {2035, "SUFFICIENCY (DETERMINISTIC STRUCTURE )"},
    {2037, "CONFIDENCE LEVEL FOR SUFFICIENCY (DS)"},
    {2038, "MAXIMUM NUM OF OUTLIERS TO BE IDENTIFIED"},
    {2039, "INCLUDE PULSE VARIABLES"},
    {2041, "INCLUDE STEP VARIABLES"},
    {2042, "MINIMUM NUMBER OF OBSERVATIONS IN GROUP"},
    {2043, "INCLUDE SEASONAL PULSE VARIABLES"},
    {2044, "INCLUDE LOCAL TRENDS"},
    {2047, "ENABLE AUTO FIXUP FOR SEASONAL DUMMIES"},
    {2050, "NUMBER OF LAMBDA VAL TO EVALUATE IN EST"},
    {2051, "spacer"},
    {2052, "LAMBDA VALUES TO EVALUATE (4F4.0)"},
    {2053, "DISCRETE CHANGE TEST FOR VARIANCE"},
    {2054, "CONFIDENCE LEVEL FOR VARIANCE TEST"},
    {2055, "MINIMUM NUMBER OF RESIDUALS TO POOL"},
    {2056, "CONSTANCY OF PARAMETERS:"},
    {2057, "CONFIDENCE LEVEL FOR CONSTANCY TEST"},
    {2058, "ENABLE MODEL FORECASTING"},
    {2060, "# OF FORECAST VALUES TO COMPUTE"},
    {2061, "CONFIDENCE LIMIT FOR THE FORECASTS (%)"},
    {2062, "CONVERT THE FORECAST VAL TO POSITIVE VAL"},
    {2063, "CONVERT THE FORECAST VALUES TO INTEGERS"},
    {2064, "CONVERT PULSE AT LAST OBSERVATION TO STEP"},
    {2065, "CONVERT PULSE TO SEASONAL PULSE (SAVE LAST OBS)"},
    {2066, "SIMULATION ENABLED (0=NO 1=YES)"},
    {2067, "VARIANCE OF THE NOISE SERIES"},
    {2068, "SEED VALUE TO START ( 0 FOR CLOCK )"},
    {2098, "DISPLAY OUTLIER TEST RESULTS"},
    {2099, "DISPLAY CONSTANCY TEST"},
    {2101, "DISPLAY FORECASTING INFORMATION"},
    {2103, "DISPLAY FORECAST MODEL PARAMETERS"},
    {2104, "DISPLAY FORECAST MODEL EQUATION"},
    {2106, "DISPLAY TABLE OF TRANSFORMED FORE VALUES"},
    {2107, "DISPLAY TABLE OF FORECAST VALUES"},
    {2112, "STORE  MODEL FORM (YES/NO)"},
    {2121, "PRINT EXCEPTION REPORT"},
};

// Codes of the dataset pre-flight check. 5024 is built apart: see Row5024Text.
const RawRow kAscRows[] = {
    {5000, "ASC file not found!"},
    {5001, "The total size of your .asc file does not agree with the anticipated size based on the individual DataProp()s;DataNames; Datatypes and the fixed number of objectives;3. You must determine if the problem lies in the values supplied or the DataProp()s and correct your .asc file accordingly."},
    {5002, "Invalid value given for model specification (objective #1; line 1 in ASC file).  Valid values are: 0-15;51-52;97-99;199;and 200.  Please correct this before running again."},
    {5003, "Invalid value given for conditions to be used (objective #2; line 2 in ASC file).  Valid values are 0.  Please correct this before running again."},
    {5004, "Invalid value given for level of verbosity (objective #3; line 3 in ASC file).  Valid values are 0 .  If this space contains a 9 or 13; it will automatically be changed to a 0.  Please correct this before running again."},
    {5005, "Non-numerical value given for the number of series in ASC file (line 4 in ASC file).  Please correct this before running again."},
    {5006, "Invalid value given for the number of series in ASC file (line 4 in ASC file).  The maximum number of series is 150; and the minimum is 1.  Please correct this before running again."},
    {5007, "Non-numerical value given for the seasonality (line 5 in ASC file).  Please correct this before running again."},
    {5008, "Invalid value given for the seasonality (line 5 in ASC file).  The maximum value is 200; and the minimum is 1.  Please correct this before running again."},
    {5009, "Invalid value given for \"beginning; Year\" (line 6 in ASC file).  Valid values are 1 to 9999.  Please correct this before running again."},
    {5010, "Non-numerical number given for \"beginning; period\" (line 7 in ASC file).  Please correct this before running again."},
    {5011, "Invalid value given for \"beginning; period\" (line 7 in ASC file).  The given number is below 0.  This number should be above (but not including) 0.  This number can also be 0; if the given seasonality (line 5) is 1.  Please correct this before running again."},
    {5012, "Invalid value given for \"beginning; period\" (line 7 in ASC file).  When seasonality >1; the range is from 1 to seasonality (line 5).  Please correct this before running again."},
    {5013, "Non-numerical value given for number of observations (line 8 in ASC file).  Please correct this before running again."},
    {5014, "Invalid value given for number of observations (line 8 in ASC file). The range is from 1 to 10000. Please change this to the correct value before running again."},
    {5015, "Non-numerical value given for number of future values (line 9 in ASC file).  Please correct this before running again."},
    {5016, "Invalid value given for number of future values (line 9 in ASC file).  The range is from 0 and 1500.  Please change this to the correct value before running again."},
    {5017, "Non-numerical value given for number of retained values (line 10 in ASC file).  Please correct this before running again."},
    {5018, "Invalid value given for number of retained values (line 10 in ASC file).  Your number of observations is greater than or equal to 52; so this value must be between (and including) 0 and 52.  Please change this to the correct value before running again."},
    {5019, "Invalid value given for number of retained values (line 10 in ASC file).  Your number of observations is less than 52; so this value must be between (and including) 0 and your number of observations - 1.  Please change this to the correct value before running again."},
    {5020, "Non-numerical value given for number of forecasts (line 11 in ASC file).  Please correct this before running again."},
    {5021, "Invalid value given for number of forecasts (line 11 in ASC file).  Please change this the correct value(the range is 0 and 1500) before running again."},
    {5022, "The given output series name (the last series name given in the file) contains too many letters/symbols.  The limit is 14.  Please shorten the name before running again."},
    {5023, "One or more of the given input series names contains too many letters/symbols.  The limit is 22.  Please shorten the name(s) before running again."},
    {5025, "Invalid value found in one of the data types in the ASC file.  Please correct this; so that all listed data types are between (and including) 0-3 before running again."},
};

bool ByCode(const CatalogueRow& a, const CatalogueRow& b) { return a.code < b.code; }

}  // namespace

const std::vector<CatalogueRow>& EngineCatalogue() {
  static const std::vector<CatalogueRow> rows = [] {
    std::vector<CatalogueRow> out;
    for (const RawRow& r : kEngineRows) out.push_back({r.code, r.text});
    for (const RawRow& r : kOptionRows) {
      std::string text = std::string(" ERR READ ENGINE.QVX ") + r.text;
      if (r.code != 2121) text += " ADVISE QVX";  // the last row of the family has no closing words
      out.push_back({r.code, std::move(text)});
    }
    std::stable_sort(out.begin(), out.end(), ByCode);
    return out;
  }();
  return rows;
}

const std::vector<CatalogueRow>& AscCatalogue() {
  static const std::vector<CatalogueRow> rows = [] {
    std::vector<CatalogueRow> out;
    for (const RawRow& r : kAscRows) out.push_back({r.code, r.text});
    out.push_back({5024, Row5024Text()});
    std::stable_sort(out.begin(), out.end(), ByCode);
    return out;
  }();
  return rows;
}

}  // namespace tessaly::dataset
