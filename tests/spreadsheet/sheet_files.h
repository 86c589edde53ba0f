#pragma once
// Workbooks made in the tests: through libxlsxwriter, as zip files written part by part
// (for hand-made .xlsx), and .xls through Debian's python3-xlwt; and a second reader of
// .xlsx files, python3's own zipfile and xml.etree, independent of ours.
#include <filesystem>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace tessaly::spreadsheet::testing {

namespace fs = std::filesystem;

// A cell of a sheet to write: empty (monostate), a number, or text.
using CellSpec = std::variant<std::monostate, double, std::string>;
struct SheetSpec {
  std::string name;
  std::vector<std::vector<CellSpec>> rows;
};

void MakeXlsx(const fs::path& path, const std::vector<SheetSpec>& sheets);
void MakeZip(const fs::path& path, const std::map<std::string, std::string>& parts);
// True when the .xls was made (python3-xlwt present).
bool MakeXls(const fs::path& path, const std::vector<SheetSpec>& sheets);

// The cells of one sheet by reference ("B3") as python3's zipfile + xml.etree read them:
// shared strings resolved, numbers as the file holds them.
std::map<std::string, std::string> PythonCells(const fs::path& xlsx, const std::string& sheet);

// A monthly series that looks real: trend, season and noise, seeded.
std::vector<double> MonthlySeries(int n, unsigned seed);

}  // namespace tessaly::spreadsheet::testing
