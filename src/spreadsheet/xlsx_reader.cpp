// Reading an .xlsx workbook: the zip's parts through minizip, each part's XML through
// libxml2. Only what a sheet of series needs is read: the sheet list and order, the
// shared strings, each cell's value and whether its number format shows a date.
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <minizip/unzip.h>

#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <system_error>

#include "platform/numfmt.h"
#include "spreadsheet/workbook.h"

namespace tessaly::spreadsheet {

namespace {

struct ZipCloser {
  void operator()(void* z) const {
    if (z) unzClose(z);
  }
};
using Zip = std::unique_ptr<void, ZipCloser>;

// The whole of one part, or nullopt when the part is missing or its data is broken.
std::optional<std::string> ReadPart(unzFile zip, const std::string& name) {
  if (unzLocateFile(zip, name.c_str(), 2) != UNZ_OK) return std::nullopt;
  unz_file_info info{};
  if (unzGetCurrentFileInfo(zip, &info, nullptr, 0, nullptr, 0, nullptr, 0) != UNZ_OK)
    return std::nullopt;
  if (unzOpenCurrentFile(zip) != UNZ_OK) return std::nullopt;
  std::string data;
  data.reserve(info.uncompressed_size);
  char buffer[65536];
  int got;
  while ((got = unzReadCurrentFile(zip, buffer, sizeof buffer)) > 0) data.append(buffer, got);
  // A truncated or corrupt entry fails its read or its CRC check at the close.
  int closed = unzCloseCurrentFile(zip);
  if (got < 0 || closed != UNZ_OK) return std::nullopt;
  return data;
}

struct DocFree {
  void operator()(xmlDoc* d) const { xmlFreeDoc(d); }
};
using Doc = std::unique_ptr<xmlDoc, DocFree>;

Doc Parse(const std::string& text) {
  return Doc(xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                           XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE));
}

bool Is(const xmlNode* n, const char* local) {
  return n->type == XML_ELEMENT_NODE && std::strcmp(reinterpret_cast<const char*>(n->name), local) == 0;
}

std::string Attr(const xmlNode* n, const char* name) {
  for (const xmlAttr* a = n->properties; a; a = a->next) {
    if (std::strcmp(reinterpret_cast<const char*>(a->name), name) == 0 && a->children)
      return reinterpret_cast<const char*>(a->children->content);
  }
  return "";
}

std::string Content(const xmlNode* n) {
  xmlChar* c = xmlNodeGetContent(n);
  std::string s = c ? reinterpret_cast<const char*>(c) : "";
  xmlFree(c);
  return s;
}

// Elements named `local` anywhere below `n`, in document order.
template <class F>
void Each(const xmlNode* n, const char* local, F&& f) {
  for (const xmlNode* c = n ? n->children : nullptr; c; c = c->next) {
    if (c->type != XML_ELEMENT_NODE) continue;
    if (Is(c, local))
      f(c);
    else
      Each(c, local, f);
  }
}

const xmlNode* Child(const xmlNode* n, const char* local) {
  for (const xmlNode* c = n ? n->children : nullptr; c; c = c->next)
    if (Is(c, local)) return c;
  return nullptr;
}

// The text of a string item: its runs' texts, the phonetic guides (rPh) left out.
std::string ItemText(const xmlNode* si) {
  std::string s;
  for (const xmlNode* c = si->children; c; c = c->next) {
    if (Is(c, "t"))
      s += Content(c);
    else if (Is(c, "r"))
      if (const xmlNode* t = Child(c, "t")) s += Content(t);
  }
  return s;
}

// A number format shows a date when it is one of the built-in date formats or its code
// holds a day, month or year letter outside quotes and brackets.
bool DateFormatCode(const std::string& code) {
  bool quoted = false, bracket = false;
  for (size_t i = 0; i < code.size(); ++i) {
    char c = code[i];
    if (c == '"') quoted = !quoted;
    else if (quoted) continue;
    else if (c == '\\') ++i;
    else if (c == '[') bracket = true;
    else if (c == ']') bracket = false;
    else if (!bracket && (c == 'd' || c == 'D' || c == 'm' || c == 'M' || c == 'y' || c == 'Y'))
      return true;
  }
  return false;
}

bool BuiltInDate(int id) { return (id >= 14 && id <= 22) || (id >= 45 && id <= 47) || (id >= 27 && id <= 36) || (id >= 50 && id <= 58); }

// Whether each cell style (cellXfs index) shows a date.
std::vector<bool> DateStyles(const std::optional<std::string>& styles) {
  std::vector<bool> dates;
  if (!styles) return dates;
  Doc doc = Parse(*styles);
  if (!doc) return dates;
  const xmlNode* root = xmlDocGetRootElement(doc.get());
  std::map<int, bool> custom;
  if (const xmlNode* fmts = Child(root, "numFmts"))
    Each(fmts, "numFmt", [&](const xmlNode* f) {
      custom[std::atoi(Attr(f, "numFmtId").c_str())] = DateFormatCode(Attr(f, "formatCode"));
    });
  if (const xmlNode* xfs = Child(root, "cellXfs"))
    for (const xmlNode* xf = xfs->children; xf; xf = xf->next) {
      if (!Is(xf, "xf")) continue;
      int id = std::atoi(Attr(xf, "numFmtId").c_str());
      auto it = custom.find(id);
      dates.push_back(it != custom.end() ? it->second : BuiltInDate(id));
    }
  return dates;
}

// "BC12" to row 12, column 55; false when the reference is not of that form.
bool ParseRef(const std::string& ref, int& row, int& col) {
  size_t i = 0;
  col = 0;
  while (i < ref.size() && std::isalpha(static_cast<unsigned char>(ref[i]))) {
    col = col * 26 + (std::toupper(static_cast<unsigned char>(ref[i])) - 'A' + 1);
    ++i;
  }
  if (i == 0 || i == ref.size()) return false;
  row = std::atoi(ref.c_str() + i);
  return row > 0 && col > 0;
}

// The target of a relationship, as a path inside the zip.
std::string PartPath(const std::string& target) {
  if (!target.empty() && target[0] == '/') return target.substr(1);
  std::string t = target;
  std::string base = "xl/";
  while (t.rfind("../", 0) == 0) {
    t = t.substr(3);
    base.clear();
  }
  return base + t;
}

bool ReadSheet(const std::string& xml, const std::vector<std::string>& shared,
               const std::vector<bool>& date_styles, Grid& grid) {
  Doc doc = Parse(xml);
  if (!doc) return false;
  const xmlNode* data = Child(xmlDocGetRootElement(doc.get()), "sheetData");
  if (!data) return true;
  int next_row = 1;
  for (const xmlNode* r = data->children; r; r = r->next) {
    if (!Is(r, "row")) continue;
    std::string rr = Attr(r, "r");
    int row = rr.empty() ? next_row : std::atoi(rr.c_str());
    if (row < 1) row = next_row;
    next_row = row + 1;
    int next_col = 1;
    for (const xmlNode* c = r->children; c; c = c->next) {
      if (!Is(c, "c")) continue;
      int crow = row, col = next_col;
      std::string ref = Attr(c, "r");
      if (!ref.empty() && !ParseRef(ref, crow, col)) return false;
      next_col = col + 1;
      std::string type = Attr(c, "t");
      const xmlNode* v = Child(c, "v");
      if (type == "inlineStr") {
        if (const xmlNode* is = Child(c, "is")) {
          std::string s = ItemText(is);
          if (!s.empty()) grid.SetText(crow, col, s);
        }
        continue;
      }
      if (!v) continue;  // a styled blank cell
      std::string value = Content(v);
      if (type == "s") {
        size_t k = static_cast<size_t>(std::atol(value.c_str()));
        if (k >= shared.size()) return false;
        if (!shared[k].empty()) grid.SetText(crow, col, shared[k]);
      } else if (type == "str" || type == "e") {
        if (!value.empty()) grid.SetText(crow, col, value);
      } else if (type == "b") {
        grid.SetNumber(crow, col, value == "1" ? 1 : 0);
      } else {
        auto number = platform::ToDouble(value);
        if (!number) {
          if (!value.empty()) grid.SetText(crow, col, value);
          continue;
        }
        size_t style = static_cast<size_t>(std::atol(Attr(c, "s").c_str()));
        bool is_date = style < date_styles.size() && date_styles[style];
        grid.SetNumber(crow, col, *number, is_date);
      }
    }
  }
  return true;
}

}  // namespace

bool IsExcel2007File(const fs::path& path) {
  Zip zip(unzOpen64(path.c_str()));
  if (!zip) return false;
  return unzLocateFile(zip.get(), "xl/workbook.xml", 2) == UNZ_OK;
}

WorkbookRead ReadXlsx(const fs::path& path, Workbook& book) {
  std::error_code ec;
  if (!fs::exists(path, ec)) return {WorkbookStatus::Missing, "no such file"};
  if (fs::is_directory(path, ec) || !std::ifstream(path, std::ios::binary))
    return {WorkbookStatus::Unreadable, "cannot open"};
  Zip zip(unzOpen64(path.c_str()));
  if (!zip) return {WorkbookStatus::Malformed, "not a zip file"};
  auto workbook = ReadPart(zip.get(), "xl/workbook.xml");
  auto rels = ReadPart(zip.get(), "xl/_rels/workbook.xml.rels");
  if (!workbook || !rels) return {WorkbookStatus::Malformed, "no workbook part"};
  Doc wb = Parse(*workbook), rel = Parse(*rels);
  if (!wb || !rel) return {WorkbookStatus::Malformed, "broken workbook part"};

  std::map<std::string, std::string> targets;
  Each(xmlDocGetRootElement(rel.get()), "Relationship",
       [&](const xmlNode* r) { targets[Attr(r, "Id")] = PartPath(Attr(r, "Target")); });

  std::vector<std::string> shared;
  if (zip && unzLocateFile(zip.get(), "xl/sharedStrings.xml", 2) == UNZ_OK) {
    auto sst = ReadPart(zip.get(), "xl/sharedStrings.xml");
    Doc doc = sst ? Parse(*sst) : nullptr;
    if (!doc) return {WorkbookStatus::Malformed, "broken shared strings"};
    Each(xmlDocGetRootElement(doc.get()), "si", [&](const xmlNode* si) { shared.push_back(ItemText(si)); });
  }
  std::optional<std::string> styles;
  if (unzLocateFile(zip.get(), "xl/styles.xml", 2) == UNZ_OK) styles = ReadPart(zip.get(), "xl/styles.xml");
  std::vector<bool> date_styles = DateStyles(styles);

  std::vector<Sheet> sheets;
  bool broken = false;
  Each(xmlDocGetRootElement(wb.get()), "sheet", [&](const xmlNode* s) {
    if (broken) return;
    Sheet sheet;
    sheet.name = Attr(s, "name");
    std::string id;
    for (const xmlAttr* a = s->properties; a; a = a->next)
      if (std::strcmp(reinterpret_cast<const char*>(a->name), "id") == 0 && a->children)
        id = reinterpret_cast<const char*>(a->children->content);
    auto it = targets.find(id);
    if (it == targets.end()) {
      broken = true;
      return;
    }
    auto xml = ReadPart(zip.get(), it->second);
    if (!xml || !ReadSheet(*xml, shared, date_styles, sheet.grid)) {
      broken = true;
      return;
    }
    sheets.push_back(std::move(sheet));
  });
  if (broken) return {WorkbookStatus::Malformed, "broken sheet part"};
  book.sheets = std::move(sheets);
  return {};
}

}  // namespace tessaly::spreadsheet
