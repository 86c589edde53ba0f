#pragma once
// The optional "PROPERTIES" sheet of a workbook: a header row, then key/value rows (key
// in column 1 in capitals, value in column 2) that give a sheet's default figures:
// SEASONALITY, MAJOR, MINOR and FORECASTS. The header is "PROPERTY" (or "KEY") and "VALUE".
#include <string>
#include <vector>

#include "spreadsheet/workbook.h"

namespace tessaly::spreadsheet {

struct SheetFigures {
  int seasonality = 12;
  int major = 0;  // the beginning year
  int minor = 0;  // the beginning period
  int forecasts = 36;
};

struct PropertiesRead {
  bool found = false;       // the workbook has the sheet
  bool header_ok = true;    // false: defaults used, kBadPropertiesHeader + kDefaultsUsed
  std::vector<std::string> issues;  // one message per refused value; the default kept
  SheetFigures figures;
  // The text of the box: the header message, or kIssuesFound and the issues; "" when none.
  std::string MessageText() const;
};

// Reads the sheet over `defaults` (whose forecasts follow a changed seasonality as 3 x
// seasonality unless the sheet names FORECASTS).
PropertiesRead ReadPropertiesSheet(const Workbook& book, const SheetFigures& defaults);

}  // namespace tessaly::spreadsheet
