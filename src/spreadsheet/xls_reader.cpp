// Reading an .xls (BIFF) workbook through FreeXL: every sheet's cells, dates kept as
// running day numbers marked as dates.
#include <freexl.h>

#include <cstdio>
#include <fstream>
#include <system_error>

#include "platform/dates.h"
#include "spreadsheet/workbook.h"

namespace tessaly::spreadsheet {

namespace {
// "YYYY-MM-DD" (with a time after it or not) as a running day number.
bool DateSerial(const char* text, double& serial) {
  int y = 0, m = 0, d = 0, hh = 0, mm = 0, ss = 0;
  int got = std::sscanf(text, "%d-%d-%d %d:%d:%d", &y, &m, &d, &hh, &mm, &ss);
  if (got < 3) return false;
  serial = static_cast<double>(platform::dates::DaySerial({y, m, d})) + (hh * 3600 + mm * 60 + ss) / 86400.0;
  return true;
}
}  // namespace

WorkbookRead ReadXls(const fs::path& path, Workbook& book) {
  std::error_code ec;
  if (!fs::exists(path, ec)) return {WorkbookStatus::Missing, "no such file"};
  if (fs::is_directory(path, ec) || !std::ifstream(path, std::ios::binary))
    return {WorkbookStatus::Unreadable, "cannot open"};
  const void* handle = nullptr;
  if (freexl_open(path.c_str(), &handle) != FREEXL_OK) {
    if (handle) freexl_close(handle);
    return {WorkbookStatus::Malformed, "not an xls workbook"};
  }
  unsigned int count = 0;
  std::vector<Sheet> sheets;
  bool broken = freexl_get_info(handle, FREEXL_BIFF_SHEET_COUNT, &count) != FREEXL_OK;
  for (unsigned int s = 0; !broken && s < count; ++s) {
    Sheet sheet;
    const char* name = nullptr;
    unsigned int rows = 0;
    unsigned short cols = 0;
    if (freexl_get_worksheet_name(handle, static_cast<unsigned short>(s), &name) != FREEXL_OK ||
        freexl_select_active_worksheet(handle, static_cast<unsigned short>(s)) != FREEXL_OK ||
        freexl_worksheet_dimensions(handle, &rows, &cols) != FREEXL_OK) {
      broken = true;
      break;
    }
    sheet.name = name ? name : "";
    for (unsigned int r = 0; r < rows; ++r)
      for (unsigned short c = 0; c < cols; ++c) {
        FreeXL_CellValue v;
        if (freexl_get_cell_value(handle, r, c, &v) != FREEXL_OK) continue;
        int row = static_cast<int>(r) + 1, col = c + 1;
        switch (v.type) {
          case FREEXL_CELL_INT:
            sheet.grid.SetNumber(row, col, v.value.int_value);
            break;
          case FREEXL_CELL_DOUBLE:
            sheet.grid.SetNumber(row, col, v.value.double_value);
            break;
          case FREEXL_CELL_TEXT:
          case FREEXL_CELL_SST_TEXT:
            if (v.value.text_value && *v.value.text_value) sheet.grid.SetText(row, col, v.value.text_value);
            break;
          case FREEXL_CELL_DATE:
          case FREEXL_CELL_DATETIME: {
            double serial;
            if (DateSerial(v.value.text_value, serial))
              sheet.grid.SetNumber(row, col, serial, true);
            else if (v.value.text_value)
              sheet.grid.SetText(row, col, v.value.text_value);
            break;
          }
          case FREEXL_CELL_TIME:
            if (v.value.text_value) sheet.grid.SetText(row, col, v.value.text_value);
            break;
          default:
            break;
        }
      }
    sheets.push_back(std::move(sheet));
  }
  freexl_close(handle);
  if (broken) return {WorkbookStatus::Malformed, "broken xls sheet"};
  book.sheets = std::move(sheets);
  return {};
}

}  // namespace tessaly::spreadsheet
