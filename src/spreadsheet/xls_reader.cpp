// Reading an .xls (BIFF) workbook through FreeXL: every sheet's cells, dates kept as
// running day numbers marked as dates. FreeXL reads in a child process (FreeXL 1.0.6 reads
// outside its buffers on some malformed workbooks): the child sends the cells back, and a
// child that crashes or hangs makes the workbook one that could not be read.
#include <freexl.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <system_error>

#include "platform/dates.h"
#include "spreadsheet/child_read.h"
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

WorkbookRead ReadXlsInThisProcess(const fs::path& path, Workbook& book) {
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

namespace {

// The child's answer: the read's status and detail, then each sheet's name and its
// non-empty cells (row, column, kind, date mark, number or text).
void Put(std::string& out, const void* bytes, size_t n) { out.append(static_cast<const char*>(bytes), n); }
void PutU32(std::string& out, uint32_t v) { Put(out, &v, sizeof v); }
void PutText(std::string& out, const std::string& s) {
  PutU32(out, static_cast<uint32_t>(s.size()));
  out += s;
}

std::string Encode(const WorkbookRead& read, const Workbook& book) {
  std::string out;
  PutU32(out, static_cast<uint32_t>(read.status));
  PutText(out, read.detail);
  PutU32(out, static_cast<uint32_t>(book.sheets.size()));
  for (const Sheet& sheet : book.sheets) {
    PutText(out, sheet.name);
    std::string cells;
    uint32_t count = 0;
    for (int r = 1; r <= sheet.grid.MaxRows(); ++r)
      for (int c = 1; c <= sheet.grid.MaxCols(); ++c) {
        const Cell& cell = sheet.grid.At(r, c);
        if (cell.kind == Cell::Kind::Empty) continue;
        ++count;
        PutU32(cells, static_cast<uint32_t>(r));
        PutU32(cells, static_cast<uint32_t>(c));
        PutU32(cells, (cell.kind == Cell::Kind::Number ? 1u : 2u) | (cell.is_date ? 4u : 0u));
        if (cell.kind == Cell::Kind::Number)
          Put(cells, &cell.number, sizeof cell.number);
        else
          PutText(cells, cell.text);
      }
    PutU32(out, count);
    out += cells;
  }
  return out;
}

class Decoder {
 public:
  explicit Decoder(const std::string& bytes) : bytes_(bytes) {}
  bool Take(void* to, size_t n) {
    if (n > bytes_.size() - at_) return ok_ = false;
    std::memcpy(to, bytes_.data() + at_, n);
    at_ += n;
    return true;
  }
  uint32_t U32() {
    uint32_t v = 0;
    Take(&v, sizeof v);
    return v;
  }
  std::string Text() {
    uint32_t n = U32();
    if (!ok_ || n > bytes_.size() - at_) {
      ok_ = false;
      return {};
    }
    std::string s = bytes_.substr(at_, n);
    at_ += n;
    return s;
  }
  bool Whole() const { return ok_ && at_ == bytes_.size(); }
  bool Ok() const { return ok_; }

 private:
  const std::string& bytes_;
  size_t at_ = 0;
  bool ok_ = true;
};

bool Decode(const std::string& bytes, WorkbookRead& read, Workbook& book) {
  Decoder in(bytes);
  uint32_t status = in.U32();
  if (status > static_cast<uint32_t>(WorkbookStatus::Malformed)) return false;
  read.status = static_cast<WorkbookStatus>(status);
  read.detail = in.Text();
  uint32_t sheets = in.U32();
  for (uint32_t s = 0; in.Ok() && s < sheets; ++s) {
    Sheet sheet;
    sheet.name = in.Text();
    uint32_t cells = in.U32();
    for (uint32_t k = 0; in.Ok() && k < cells; ++k) {
      int row = static_cast<int>(in.U32()), col = static_cast<int>(in.U32());
      uint32_t kind = in.U32();
      if (!in.Ok() || row < 1 || col < 1) return false;
      if (kind & 1u) {
        double v = 0;
        in.Take(&v, sizeof v);
        sheet.grid.SetNumber(row, col, v, (kind & 4u) != 0);
      } else {
        sheet.grid.SetText(row, col, in.Text());
      }
    }
    book.sheets.push_back(std::move(sheet));
  }
  return in.Whole();
}
}  // namespace

WorkbookRead ReadXls(const fs::path& path, Workbook& book) {
  std::error_code ec;
  if (!fs::exists(path, ec)) return {WorkbookStatus::Missing, "no such file"};
  if (fs::is_directory(path, ec) || !std::ifstream(path, std::ios::binary))
    return {WorkbookStatus::Unreadable, "cannot open"};
  ChildRead child = ReadInChild([&path] {
    Workbook read_book;
    WorkbookRead read = ReadXlsInThisProcess(path, read_book);
    return Encode(read, read_book);
  });
  WorkbookRead read;
  Workbook decoded;
  if (!child.ok) return {WorkbookStatus::Malformed, "could not be read: " + child.why};
  if (!Decode(child.bytes, read, decoded)) return {WorkbookStatus::Malformed, "could not be read: a garbled answer"};
  if (read.ok()) book.sheets = std::move(decoded.sheets);
  return read;
}

}  // namespace tessaly::spreadsheet
