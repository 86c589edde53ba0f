// A workbook as the import wizard and the runner read it (built three times, once for each
// of .xlsx, .xls through FreeXL and .csv): every sheet read, every cell taken as text and
// as a number, the way the import walks a table.
#include "fuzz_support.h"
#include "spreadsheet/workbook.h"

using namespace tessaly;

#ifndef TESSALY_FUZZ_WORKBOOK_NAME
#error "TESSALY_FUZZ_WORKBOOK_NAME names the file, and so the format, of the input"
#endif

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const fuzz::fs::path& dir = fuzz::Scratch();
  const fuzz::fs::path file = fuzz::WriteInput(dir / TESSALY_FUZZ_WORKBOOK_NAME, data, size);
  spreadsheet::Workbook book;
  // The program reads .xls in a child process; the fuzzer reads in its own, to see faults.
  const bool xls = file.extension() == ".xls";
  if (!(xls ? spreadsheet::ReadXlsInThisProcess(file, book) : spreadsheet::ReadWorkbook(file, book)).ok()) return 0;
  for (const std::string& name : book.SheetNames()) {
    const spreadsheet::Sheet* sheet = book.Find(name);
    if (!sheet) __builtin_trap();
    for (int r = 1; r <= sheet->grid.MaxRows(); ++r)
      for (int c = 1; c <= sheet->grid.MaxCols(); ++c) {
        double value = 0;
        (void)sheet->grid.Text(r, c);
        (void)sheet->grid.NumericValue(r, c, value);
      }
  }
  return 0;
}
