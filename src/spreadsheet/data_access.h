#pragma once
// clsData: the thin layer through which databases and workbooks are opened as tables. A
// database file opens directly in SQLite; a workbook opens as an in-memory database with
// one table per sheet (the table names are the sheet names), so the same SQL, schema
// listing and transactions work on both. Nothing here shows a dialog: each operation gives
// its text through its text parameter and records the fault in Errors() for clsError.
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "shell/errors.h"

struct sqlite3;

namespace tessaly::spreadsheet {

struct FieldValue {
  enum class Kind { Null, Integer, Real, Text };
  Kind kind = Kind::Null;
  double number = 0;
  std::string text;
  bool IsNull() const { return kind == Kind::Null; }
  // The value as a double: a null is 0; a text that is no number is nullopt.
  [[nodiscard]] std::optional<double> AsDouble() const;
};

// The rows of a query, read whole; a cursor walks them.
class Recordset {
 public:
  std::vector<std::string> Fields;  // the field names in order
  std::vector<std::vector<FieldValue>> Rows;
  bool ForUpdate = false;

  int RecordCount() const { return static_cast<int>(Rows.size()); }
  bool EOF_() const { return position_ >= Rows.size(); }
  void MoveFirst() { position_ = 0; }
  void MoveNext() {
    if (position_ < Rows.size()) ++position_;
  }
  // The current row's value of field `index` (0-based) or of the field of that name.
  const FieldValue& Value(size_t index) const { return Rows.at(position_).at(index); }
  const FieldValue& Value(const std::string& field) const;

 private:
  size_t position_ = 0;
};

class clsData {
 public:
  clsData();
  ~clsData();
  clsData(const clsData&) = delete;
  clsData& operator=(const clsData&) = delete;

  std::string Provider = "Microsoft.Jet.OLEDB.4.0";
  std::string DataSource;
  std::string ISAMDriver = "Excel 8.0";
  std::string Server, UserID, Password;

  // The header flag; its text is "hdr=yes" or "hdr=no".
  void SetHeader(bool header);
  bool Header() const { return header_; }
  const std::string& HeaderText() const { return header_text_; }
  // An empty mode clears it; otherwise the stored text is "IMEX=" + mode.
  void SetImportMode(const std::string& mode);
  const std::string& ImportMode() const { return import_mode_; }

  // "Provider=...;Data Source=...;Extended Properties="<driver>;<hdr>;<imex>"".
  std::string BuildConnectString() const;
  std::string ConnectString() const { return BuildConnectString(); }
  // The string for a workbook: set by the caller, or the built one when none was set.
  std::string XLSConnectString() const;
  void SetXLSConnectString(std::string s) { xls_connect_string_ = std::move(s); }

  // Opens DataSource as a database file.
  [[nodiscard]] bool Connect(std::string& errorText);
  // Opens the workbook named in XLSConnectString as tables (header row as field names
  // with "hdr=yes"; F1, F2, ... otherwise; "IMEX=1" reads a column mixing numbers and
  // text as text, otherwise the odd cells of a column are null).
  [[nodiscard]] bool XLSConnect(std::string& errorText);
  void Disconnect();
  bool Connected() const { return db_ != nullptr; }

  std::unique_ptr<Recordset> OpenRecordSet(const std::string& sql, std::string& errorText,
                                           bool forUpdate = false);
  // The tables: fields TABLE_CATALOG, TABLE_SCHEMA, TABLE_NAME, TABLE_TYPE.
  std::unique_ptr<Recordset> OpenSchema(std::string& errorText);
  [[nodiscard]] bool BeginTrans(std::string* errorText = nullptr);
  [[nodiscard]] bool CommitTrans(std::string* errorText = nullptr);
  void RollBackTrans();
  [[nodiscard]] bool ExecuteSQL(const std::string& sql, std::string* errorText = nullptr);

  // The faults recorded since the last clear, as clsError reads them.
  const std::vector<shell::AdoErrorRecord>& Errors() const { return errors_; }
  void ClearErrors() { errors_.clear(); }

 private:
  void Record(const std::string& procedure, const std::string& text);
  [[nodiscard]] bool Exec(const std::string& sql, std::string& detail);
  sqlite3* db_ = nullptr;
  bool header_ = true;
  std::string header_text_ = "hdr=yes";
  std::string import_mode_;
  std::string xls_connect_string_;
  std::vector<shell::AdoErrorRecord> errors_;
};

// The parts of a connection string, keys without regard to case ("data source",
// "extended properties"), quotes around a value removed.
[[nodiscard]] std::optional<std::string> ConnectStringPart(const std::string& connect, const std::string& key);

}  // namespace tessaly::spreadsheet
