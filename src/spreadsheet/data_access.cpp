#include "spreadsheet/data_access.h"

#include <sqlite3.h>

#include <map>
#include <set>

#include "platform/numfmt.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "spreadsheet/texts.h"
#include "spreadsheet/workbook.h"

namespace tessaly::spreadsheet {

namespace {

std::string Quote(const std::string& name) {
  std::string q = "\"";
  for (char c : name) q += c == '"' ? std::string("\"\"") : std::string(1, c);
  return q + "\"";
}

std::string Trim(const std::string& s) { return platform::Trim(s, platform::kBlanksAndTabs); }

// Splits at ";" outside double quotes.
std::vector<std::string> SplitParts(const std::string& s) {
  std::vector<std::string> parts;
  std::string cur;
  bool quoted = false;
  for (char c : s) {
    if (c == '"') quoted = !quoted;
    if (c == ';' && !quoted) {
      parts.push_back(cur);
      cur.clear();
    } else {
      cur += c;
    }
  }
  parts.push_back(cur);
  return parts;
}

// The field names of a sheet's table: the header row's texts (a blank or repeated one
// gets F and its column number), or F1, F2, ... without a header.
std::vector<std::string> FieldNames(const Grid& g, bool header) {
  std::vector<std::string> names;
  std::set<std::string> seen;
  for (int c = 1; c <= g.MaxCols(); ++c) {
    std::string name = header ? Trim(g.Text(1, c)) : "";
    std::string upper = platform::ToUpper(name);
    if (name.empty() || seen.count(upper)) name = "F" + std::to_string(c);
    seen.insert(platform::ToUpper(name));
    names.push_back(name);
  }
  return names;
}

}  // namespace

std::optional<double> FieldValue::AsDouble() const {
  switch (kind) {
    case Kind::Null:
      return 0.0;
    case Kind::Integer:
    case Kind::Real:
      return number;
    case Kind::Text:
      return platform::ToDouble(text);
  }
  return std::nullopt;
}

const FieldValue& Recordset::Value(const std::string& field) const {
  for (size_t i = 0; i < Fields.size(); ++i)
    if (platform::EqualsNoCase(Fields[i], field)) return Value(i);
  throw std::out_of_range("no field " + field);
}

std::optional<std::string> ConnectStringPart(const std::string& connect, const std::string& key) {
  for (const auto& part : SplitParts(connect)) {
    size_t eq = part.find('=');
    if (eq == std::string::npos) continue;
    if (!platform::EqualsNoCase(Trim(part.substr(0, eq)), key)) continue;
    std::string value = Trim(part.substr(eq + 1));
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"') value = value.substr(1, value.size() - 2);
    return value;
  }
  return std::nullopt;
}

clsData::clsData() = default;
clsData::~clsData() { Disconnect(); }

void clsData::SetHeader(bool header) {
  header_ = header;
  header_text_ = header ? "hdr=yes" : "hdr=no";
}

void clsData::SetImportMode(const std::string& mode) { import_mode_ = mode.empty() ? "" : "IMEX=" + mode; }

std::string clsData::BuildConnectString() const {
  return "Provider=" + Provider + ";" + "Data Source=" + DataSource + ";" + "Extended Properties=" + "\"" +
         ISAMDriver + ";" + header_text_ + ";" + import_mode_ + "\"";
}

std::string clsData::XLSConnectString() const {
  return xls_connect_string_.empty() ? BuildConnectString() : xls_connect_string_;
}

void clsData::Record(const std::string& procedure, const std::string& text) {
  shell::AdoErrorRecord e;
  e.number = db_ ? sqlite3_extended_errcode(db_) : SQLITE_CANTOPEN;
  e.source = procedure;
  e.description = text;
  e.native_error = e.number;
  e.sql_state = "HY000";
  errors_.push_back(std::move(e));
}

bool clsData::Exec(const std::string& sql, std::string& detail) {
  char* message = nullptr;
  int rc = sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, &message);
  if (message) {
    detail = message;
    sqlite3_free(message);
  }
  return rc == SQLITE_OK;
}

bool clsData::Connect(std::string& errorText) {
  Disconnect();
  Provider = "Microsoft.Jet.OLEDB.4.0";
  errors_.clear();
  std::string detail;
  bool ok = sqlite3_open_v2(DataSource.c_str(), &db_, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK;
  // SQLite opens any file lazily: reading its schema proves it is a database.
  ok = ok && Exec("SELECT count(*) FROM sqlite_master", detail);
  if (!ok) {
    errorText = texts::kUnableToConnectTo + DataSource + texts::kDatabaseSuffix;
    Record("Connect", errorText + (detail.empty() ? "" : ": " + detail));
    Disconnect();
  }
  return ok;
}

bool clsData::XLSConnect(std::string& errorText) {
  Disconnect();
  errors_.clear();
  std::string connect = XLSConnectString();
  std::string source = ConnectStringPart(connect, "Data Source").value_or("");
  std::string extended = ConnectStringPart(connect, "Extended Properties").value_or("");
  bool header = true, imex = false;
  for (const auto& p : SplitParts(extended)) {
    std::string t = platform::ToUpper(Trim(p));
    if (t == "HDR=NO") header = false;
    if (t == "IMEX=1") imex = true;
  }
  Workbook book;
  WorkbookRead read = ReadWorkbook(source, book);
  std::string detail = read.detail;
  bool ok = read.ok() && sqlite3_open(":memory:", &db_) == SQLITE_OK;
  for (size_t s = 0; ok && s < book.sheets.size(); ++s) {
    const Grid& g = book.sheets[s].grid;
    auto names = FieldNames(g, header);
    std::string create = "CREATE TABLE " + Quote(book.sheets[s].name) + " (";
    for (size_t c = 0; c < names.size(); ++c) create += (c ? ", " : "") + Quote(names[c]);
    if (names.empty()) create += Quote("F1");
    create += ")";
    if (!Exec(create, detail)) {
      ok = false;
      break;
    }
    if (names.empty()) continue;
    // A column's kind is what most of its cells hold; with IMEX=1 a column that mixes
    // numbers and text is read as text.
    int first = header ? 2 : 1;
    std::vector<bool> as_text(names.size());
    for (size_t c = 0; c < names.size(); ++c) {
      int numbers = 0, textual = 0;
      for (int r = first; r <= g.MaxRows(); ++r) {
        const Cell& cell = g.At(r, static_cast<int>(c + 1));
        double v;
        if (cell.Empty()) continue;
        if (g.NumericValue(r, static_cast<int>(c + 1), v)) ++numbers; else ++textual;
      }
      as_text[c] = textual > numbers || (imex && textual > 0);
    }
    std::string insert = "INSERT INTO " + Quote(book.sheets[s].name) + " VALUES (";
    for (size_t c = 0; c < names.size(); ++c) insert += c ? ",?" : "?";
    insert += ")";
    sqlite3_stmt* stmt = nullptr;
    if (sqlite3_prepare_v2(db_, insert.c_str(), -1, &stmt, nullptr) != SQLITE_OK) {
      ok = false;
      break;
    }
    // Without the transaction each row commits on its own: slower, the same table.
    const bool in_transaction = Exec("BEGIN", detail);
    for (int r = first; ok && r <= g.MaxRows(); ++r) {
      for (size_t c = 0; c < names.size(); ++c) {
        int col = static_cast<int>(c + 1), k = static_cast<int>(c + 1);
        const Cell& cell = g.At(r, col);
        double v;
        if (cell.Empty())
          sqlite3_bind_null(stmt, k);
        else if (as_text[c])
          sqlite3_bind_text(stmt, k, g.Text(r, col).c_str(), -1, SQLITE_TRANSIENT);
        else if (g.NumericValue(r, col, v))
          sqlite3_bind_double(stmt, k, v);
        else
          sqlite3_bind_null(stmt, k);
      }
      ok = sqlite3_step(stmt) == SQLITE_DONE;
      sqlite3_reset(stmt);
    }
    sqlite3_finalize(stmt);
    if (in_transaction) ok = Exec("COMMIT", detail) && ok;
  }
  if (!ok) {
    errorText = texts::kUnableToConnect;
    Record("XLSConnect", errorText + (detail.empty() ? "" : ": " + detail));
    Disconnect();
  }
  return ok;
}

void clsData::Disconnect() {
  if (db_) sqlite3_close(db_);
  db_ = nullptr;
}

std::unique_ptr<Recordset> clsData::OpenRecordSet(const std::string& sql, std::string& errorText, bool forUpdate) {
  sqlite3_stmt* stmt = nullptr;
  if (!db_ || sqlite3_prepare_v2(db_, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) {
    errorText = texts::kUnableToRetrieve;
    Record("OpenRecordSet", errorText + (db_ ? std::string(": ") + sqlite3_errmsg(db_) : ""));
    return nullptr;
  }
  auto rs = std::make_unique<Recordset>();
  rs->ForUpdate = forUpdate;
  int n = sqlite3_column_count(stmt);
  for (int i = 0; i < n; ++i) rs->Fields.emplace_back(sqlite3_column_name(stmt, i));
  int rc;
  while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
    std::vector<FieldValue> row(n);
    for (int i = 0; i < n; ++i) {
      switch (sqlite3_column_type(stmt, i)) {
        case SQLITE_INTEGER:
          row[i].kind = FieldValue::Kind::Integer;
          row[i].number = static_cast<double>(sqlite3_column_int64(stmt, i));
          break;
        case SQLITE_FLOAT:
          row[i].kind = FieldValue::Kind::Real;
          row[i].number = sqlite3_column_double(stmt, i);
          break;
        case SQLITE_NULL:
          break;
        default:
          row[i].kind = FieldValue::Kind::Text;
          row[i].text = reinterpret_cast<const char*>(sqlite3_column_text(stmt, i));
      }
    }
    rs->Rows.push_back(std::move(row));
  }
  sqlite3_finalize(stmt);
  if (rc != SQLITE_DONE) {
    errorText = texts::kUnableToRetrieve;
    Record("OpenRecordSet", errorText + ": " + sqlite3_errmsg(db_));
    return nullptr;
  }
  if (rs->Rows.empty()) {
    errorText = texts::kNoRecords;
    Record("OpenRecordSet", errorText);
  }
  return rs;
}

std::unique_ptr<Recordset> clsData::OpenSchema(std::string& errorText) {
  errors_.clear();
  std::string detail;
  auto rs = db_ ? OpenRecordSet(
                      "SELECT NULL AS TABLE_CATALOG, NULL AS TABLE_SCHEMA, name AS TABLE_NAME, "
                      "'TABLE' AS TABLE_TYPE FROM sqlite_master WHERE type = 'table' ORDER BY rowid",
                      detail)
                : nullptr;
  errors_.clear();
  if (!rs) {
    errorText = texts::kNoSchemaInfo;
    Record("OpenSchema", errorText);
    return nullptr;
  }
  if (rs->Rows.empty()) {
    errorText = texts::kNoSchemaData;
    Record("OpenSchema", errorText);
  }
  return rs;
}

bool clsData::BeginTrans(std::string* errorText) {
  std::string detail;
  if (db_ && Exec("BEGIN", detail)) return true;
  if (errorText) *errorText = texts::kBeginFailed;
  Record("BeginTrans", std::string(texts::kBeginFailed) + (detail.empty() ? "" : ": " + detail));
  return false;
}

bool clsData::CommitTrans(std::string* errorText) {
  std::string detail;
  if (db_ && Exec("COMMIT", detail)) return true;
  if (errorText) *errorText = texts::kCommitFailed;
  Record("CommitTrans", std::string(texts::kCommitFailed) + (detail.empty() ? "" : ": " + detail));
  return false;
}

void clsData::RollBackTrans() {
  std::string detail;
  // RollBackTrans has no text to report through; a failed rollback leaves what SQLite leaves.
  if (db_) (void)Exec("ROLLBACK", detail);
}

bool clsData::ExecuteSQL(const std::string& sql, std::string* errorText) {
  std::string detail;
  if (db_ && Exec(sql, detail)) return true;
  if (errorText) *errorText = texts::kExecuteFailed;
  Record("ExecuteSQL", std::string(texts::kExecuteFailed) + (detail.empty() ? "" : ": " + detail));
  return false;
}

}  // namespace tessaly::spreadsheet
