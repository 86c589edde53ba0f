#pragma once
// Workbooks as the spreadsheet control read and saved them: the format told by the file's
// extension, the test that a file really is a workbook of that format, the list of its
// sheets and each sheet's cells, and the saving of a grid as a workbook of one sheet.
// .xlsx is read from its zip parts (shared strings, inline strings, numbers, dates by their
// number format, blank cells, several sheets), .xls through FreeXL, .csv by RFC 4180;
// .xlsx is written through libxlsxwriter.
#include <filesystem>
#include <string>
#include <vector>

#include "spreadsheet/grid.h"

namespace tessaly::spreadsheet {

namespace fs = std::filesystem;

enum class WorkbookFormat { Xlsx, Xls, Csv, Other };

// By the extension in capitals: ".XLSX", ".XLS", ".CSV", anything else Other.
WorkbookFormat FormatOfExtension(const fs::path& path);

// True when the file is a zip holding a workbook part (xl/workbook.xml): an Office Open
// XML workbook whatever its extension.
bool IsExcel2007File(const fs::path& path);

struct Sheet {
  std::string name;
  Grid grid;
};

struct Workbook {
  std::vector<Sheet> sheets;
  std::vector<std::string> SheetNames() const;
  // The sheet of that name, without regard to case; null when there is none.
  const Sheet* Find(const std::string& name) const;
  Sheet* Find(const std::string& name);
};

enum class WorkbookStatus {
  Ok,
  Missing,     // no such file
  Unreadable,  // the file exists but cannot be opened (permissions, a folder)
  Malformed,   // not a workbook of its format: not a zip, a truncated zip, broken parts
};

struct [[nodiscard]] WorkbookRead {
  WorkbookStatus status = WorkbookStatus::Ok;
  std::string detail;  // what was wrong, for logs
  bool ok() const { return status == WorkbookStatus::Ok; }
};

// Reads every sheet of the file by its extension (.xlsx, .xls, .csv: one sheet named
// after the file's stem). An unknown extension is Malformed.
WorkbookRead ReadWorkbook(const fs::path& path, Workbook& book);
WorkbookRead ReadXlsx(const fs::path& path, Workbook& book);
// .xls through FreeXL in a child process (see child_read.h): a fault inside the library
// gives Malformed with the detail "could not be read: ...". The in-process read is for the
// fuzz target, which must see the library's faults and coverage in its own process.
WorkbookRead ReadXls(const fs::path& path, Workbook& book);
WorkbookRead ReadXlsInThisProcess(const fs::path& path, Workbook& book);
WorkbookRead ReadCsv(const fs::path& path, Workbook& book);
// RFC 4180 fields of a whole text (quoted fields with "" for a quote, line ends CR LF or
// LF, line ends inside quotes kept): one row of texts per record.
std::vector<std::vector<std::string>> ParseCsv(const std::string& text);

// Saves the sheets as an .xlsx workbook. Written to a temporary file beside the target and
// renamed over it, so a failure leaves no half-written workbook and the target as it was.
// Numbers stay numbers, dates get a date format, text stays text. False on any fault.
[[nodiscard]] bool SaveXlsx(const fs::path& path, const std::vector<const Sheet*>& sheets);

}  // namespace tessaly::spreadsheet
