// Saving grids as an .xlsx workbook through libxlsxwriter, by way of a temporary file
// renamed over the target so that a reader never meets half a workbook.
#include <unistd.h>
#include <xlsxwriter.h>

#include <system_error>

#include "spreadsheet/workbook.h"

namespace tessaly::spreadsheet {

bool SaveXlsx(const fs::path& path, const std::vector<const Sheet*>& sheets) {
  std::error_code ec;
  fs::path temp = path.parent_path() / ("." + path.filename().string() + "." + std::to_string(::getpid()) + ".tmp");
  fs::remove(temp, ec);
  lxw_workbook* wb = workbook_new(temp.c_str());
  if (!wb) return false;
  lxw_format* date = workbook_add_format(wb);
  format_set_num_format(date, "yyyy-mm-dd");
  bool ok = true;
  for (const Sheet* sheet : sheets) {
    lxw_worksheet* ws = workbook_add_worksheet(wb, sheet->name.c_str());
    if (!ws) {
      ok = false;
      break;
    }
    const Grid& g = sheet->grid;
    for (int r = 1; r <= g.MaxRows(); ++r)
      for (int c = 1; c <= g.MaxCols(); ++c) {
        const Cell& cell = g.At(r, c);
        lxw_error e = LXW_NO_ERROR;
        if (cell.kind == Cell::Kind::Number)
          e = worksheet_write_number(ws, r - 1, static_cast<lxw_col_t>(c - 1), cell.number, cell.is_date ? date : nullptr);
        else if (cell.kind == Cell::Kind::Text && !cell.text.empty())
          e = worksheet_write_string(ws, r - 1, static_cast<lxw_col_t>(c - 1), cell.text.c_str(), nullptr);
        if (e != LXW_NO_ERROR) ok = false;
      }
  }
  if (workbook_close(wb) != LXW_NO_ERROR) ok = false;
  if (ok) {
    fs::rename(temp, path, ec);
    ok = !ec;
  }
  if (!ok) fs::remove(temp, ec);
  return ok;
}

}  // namespace tessaly::spreadsheet
