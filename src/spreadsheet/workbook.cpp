#include "spreadsheet/workbook.h"

#include <fstream>
#include <sstream>
#include <system_error>

#include "platform/paths.h"

namespace tessaly::spreadsheet {

WorkbookFormat FormatOfExtension(const fs::path& path) {
  std::string ext = platform::ToUpper(path.extension().string());
  if (ext == ".XLSX") return WorkbookFormat::Xlsx;
  if (ext == ".XLS") return WorkbookFormat::Xls;
  if (ext == ".CSV") return WorkbookFormat::Csv;
  return WorkbookFormat::Other;
}

std::vector<std::string> Workbook::SheetNames() const {
  std::vector<std::string> names;
  for (const auto& s : sheets) names.push_back(s.name);
  return names;
}

const Sheet* Workbook::Find(const std::string& name) const {
  for (const auto& s : sheets)
    if (platform::EqualsNoCase(s.name, name)) return &s;
  return nullptr;
}

Sheet* Workbook::Find(const std::string& name) {
  for (auto& s : sheets)
    if (platform::EqualsNoCase(s.name, name)) return &s;
  return nullptr;
}

WorkbookRead ReadWorkbook(const fs::path& path, Workbook& book) {
  switch (FormatOfExtension(path)) {
    case WorkbookFormat::Xlsx:
      return ReadXlsx(path, book);
    case WorkbookFormat::Xls:
      return ReadXls(path, book);
    case WorkbookFormat::Csv:
      return ReadCsv(path, book);
    case WorkbookFormat::Other:
      break;
  }
  return {WorkbookStatus::Malformed, "not a workbook extension"};
}

std::vector<std::vector<std::string>> ParseCsv(const std::string& text) {
  std::vector<std::vector<std::string>> rows;
  std::vector<std::string> row;
  std::string field;
  bool quoted = false, any = false;
  size_t i = 0, n = text.size();
  // A byte-order mark is not part of the first field.
  if (n >= 3 && text.compare(0, 3, "\xEF\xBB\xBF") == 0) i = 3;
  auto end_field = [&] {
    row.push_back(std::move(field));
    field.clear();
  };
  for (; i < n; ++i) {
    char c = text[i];
    any = true;
    if (quoted) {
      if (c == '"') {
        if (i + 1 < n && text[i + 1] == '"') {
          field += '"';
          ++i;
        } else {
          quoted = false;
        }
      } else {
        field += c;
      }
    } else if (c == '"') {
      quoted = true;
    } else if (c == ',') {
      end_field();
    } else if (c == '\r' || c == '\n') {
      if (c == '\r' && i + 1 < n && text[i + 1] == '\n') ++i;
      end_field();
      rows.push_back(std::move(row));
      row.clear();
      any = false;
    } else {
      field += c;
    }
  }
  if (any) {
    end_field();
    rows.push_back(std::move(row));
  }
  return rows;
}

WorkbookRead ReadCsv(const fs::path& path, Workbook& book) {
  std::error_code ec;
  if (!fs::exists(path, ec)) return {WorkbookStatus::Missing, "no such file"};
  std::ifstream in(path, std::ios::binary);
  if (!in || fs::is_directory(path, ec)) return {WorkbookStatus::Unreadable, "cannot open"};
  std::ostringstream all;
  all << in.rdbuf();
  Sheet sheet;
  sheet.name = path.stem().string();
  auto rows = ParseCsv(all.str());
  for (size_t r = 0; r < rows.size(); ++r)
    for (size_t c = 0; c < rows[r].size(); ++c)
      if (!rows[r][c].empty()) sheet.grid.SetText(static_cast<int>(r + 1), static_cast<int>(c + 1), rows[r][c]);
  book.sheets.clear();
  book.sheets.push_back(std::move(sheet));
  return {};
}

}  // namespace tessaly::spreadsheet
