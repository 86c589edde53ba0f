// Workbooks read and written: .xlsx from libxlsxwriter and by hand (shared and inline
// strings, rich text, dates by number format, gaps, cells without references, several
// sheets), .xls from python3-xlwt, RFC 4180 .csv, the saved .xlsx read back by python3,
// and the files that are not workbooks.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <thread>

#include "sheet_files.h"
#include "spreadsheet/child_read.h"
#include "spreadsheet/workbook.h"
#include "support/program_folder.h"

namespace tessaly::spreadsheet {
namespace {

using namespace testing;
using tessaly::testing::TempDir;

const char* kContentTypes =
    R"(<?xml version="1.0"?><Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types"/>)";
const char* kWorkbook = R"(<?xml version="1.0" encoding="UTF-8"?>
<workbook xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main"
 xmlns:r="http://schemas.openxmlformats.org/officeDocument/2006/relationships">
<sheets><sheet name="Data" sheetId="1" r:id="rId7"/><sheet name="Notes" sheetId="2" r:id="rId2"/></sheets></workbook>)";
const char* kRels = R"(<?xml version="1.0"?>
<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
<Relationship Id="rId7" Type="x/worksheet" Target="worksheets/sheet1.xml"/>
<Relationship Id="rId2" Type="x/worksheet" Target="/xl/worksheets/other.xml"/></Relationships>)";
const char* kShared = R"(<?xml version="1.0"?>
<sst xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main" count="3" uniqueCount="3">
<si><t>Sales &amp; Returns</t></si><si><r><t>Rich</t></r><r><rPr><b/></rPr><t> Name</t></r><rPh><t>IGNORED</t></rPh></si>
<si><t xml:space="preserve">  spaced  </t></si></sst>)";
const char* kStyles = R"(<?xml version="1.0"?>
<styleSheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main">
<numFmts count="1"><numFmt numFmtId="164" formatCode="yyyy\-mmm"/></numFmts>
<cellXfs count="4"><xf numFmtId="0"/><xf numFmtId="14"/><xf numFmtId="164"/><xf numFmtId="4"/></cellXfs></styleSheet>)";
// Row 1: names (shared, inline, rich); row 2: a built-in date, a custom date, a styled
// number; row 4 after a missing row 3: cells without references, a gap, a formula's text.
const char* kSheet1 = R"(<?xml version="1.0"?>
<worksheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main"><sheetData>
<row r="1"><c r="A1" t="s"><v>0</v></c><c r="B1" t="inlineStr"><is><t>Inline</t></is></c><c r="C1" t="s"><v>1</v></c></row>
<row r="2"><c r="A2" s="1"><v>36892</v></c><c r="B2" s="2"><v>36923</v></c><c r="C2" s="3"><v>1234.5</v></c><c r="D2" s="3"/></row>
<row r="4"><c><v>1.5E3</v></c><c t="s"><v>2</v></c><c r="E4" t="str"><f>A4</f><v>text</v></c><c r="F4" t="b"><v>1</v></c></row>
</sheetData></worksheet>)";
const char* kSheet2 = R"(<?xml version="1.0"?>
<worksheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main"><sheetData>
<row r="3"><c r="AB3"><v>-0.25</v></c></row></sheetData></worksheet>)";

std::map<std::string, std::string> HandMadeParts() {
  return {{"[Content_Types].xml", kContentTypes}, {"xl/workbook.xml", kWorkbook},
          {"xl/_rels/workbook.xml.rels", kRels},  {"xl/sharedStrings.xml", kShared},
          {"xl/styles.xml", kStyles},             {"xl/worksheets/sheet1.xml", kSheet1},
          {"xl/worksheets/other.xml", kSheet2}};
}

TEST(WorkbookTest, HandMadeXlsxGivesStringsDatesGapsAndBothSheets) {
  TempDir dir;
  MakeZip(dir / "hand.xlsx", HandMadeParts());
  ASSERT_TRUE(IsExcel2007File(dir / "hand.xlsx"));
  Workbook book;
  ASSERT_TRUE(ReadWorkbook(dir / "hand.xlsx", book).ok());
  ASSERT_EQ(book.SheetNames(), (std::vector<std::string>{"Data", "Notes"}));
  const Grid& g = book.Find("data")->grid;
  EXPECT_EQ(g.Text(1, 1), "Sales & Returns");
  EXPECT_EQ(g.Text(1, 2), "Inline");
  EXPECT_EQ(g.Text(1, 3), "Rich Name");
  EXPECT_TRUE(g.At(2, 1).is_date);
  EXPECT_EQ(g.Text(2, 1), "2001-01-01");
  EXPECT_TRUE(g.At(2, 2).is_date);
  EXPECT_EQ(g.Text(2, 2), "2001-02-01");
  EXPECT_FALSE(g.At(2, 3).is_date);
  EXPECT_EQ(g.At(2, 3).number, 1234.5);
  EXPECT_TRUE(g.At(2, 4).Empty());
  EXPECT_TRUE(g.At(3, 1).Empty());
  EXPECT_EQ(g.At(4, 1).number, 1500);
  EXPECT_EQ(g.Text(4, 2), "  spaced  ");
  EXPECT_TRUE(g.At(4, 3).Empty());
  EXPECT_EQ(g.Text(4, 5), "text");
  EXPECT_EQ(g.At(4, 6).number, 1);
  EXPECT_EQ(g.MaxRows(), 4);
  EXPECT_EQ(g.MaxCols(), 6);
  EXPECT_EQ(book.Find("Notes")->grid.At(3, 28).number, -0.25);
}

TEST(WorkbookTest, XlsFromXlwtReadsThroughFreeXL) {
  TempDir dir;
  if (!MakeXls(dir / "old.xls", {{"Monthly", {{std::string("Name"), std::string("2001Jan")},
                                             {std::string("ALPHA"), 10.25, std::monostate{}, 3.0}}},
                                 {"Second", {{1.0}}}}))
    GTEST_SKIP() << "python3-xlwt is not installed";
  Workbook book;
  ASSERT_TRUE(ReadWorkbook(dir / "old.xls", book).ok());
  ASSERT_EQ(book.SheetNames(), (std::vector<std::string>{"Monthly", "Second"}));
  const Grid& g = book.sheets[0].grid;
  EXPECT_EQ(g.Text(2, 1), "ALPHA");
  EXPECT_EQ(g.At(2, 2).number, 10.25);
  EXPECT_TRUE(g.At(2, 3).Empty());
  EXPECT_EQ(g.At(2, 4).number, 3.0);
}

// The .xls reader runs in a child: a fault there (FreeXL's reads outside its buffers on some
// malformed workbooks) ends only the child, and the caller gets "could not be read".
TEST(WorkbookTest, AReaderThatCrashesOrHangsEndsOnlyItsChild) {
  struct Case {
    const char* what;
    std::function<std::string()> work;
    bool ok;
    std::string bytes_or_why;
  };
  const Case cases[] = {
      {"answers", [] { return std::string("cells\0and more", 14); }, true, std::string("cells\0and more", 14)},
      // The default action, as a crash in the library meets it (a sanitizer's handler would
      // otherwise turn the signal into an exit).
      {"crashes", []() -> std::string { std::signal(SIGSEGV, SIG_DFL); std::raise(SIGSEGV); return "never"; }, false,
       "the reader stopped with signal 11"},
      {"aborts", []() -> std::string { std::abort(); }, false, "the reader stopped with signal 6"},
      {"hangs", []() -> std::string { std::this_thread::sleep_for(std::chrono::seconds(30)); return "late"; },
       false, "the reader took longer than 1 seconds and was stopped"},
  };
  for (const Case& c : cases) {
    ChildRead read = ReadInChild(c.work, std::chrono::seconds(1));
    EXPECT_EQ(read.ok, c.ok) << c.what;
    EXPECT_EQ(read.ok ? read.bytes : read.why, c.bytes_or_why) << c.what;
  }
}

TEST(WorkbookTest, CsvFollowsRfc4180) {
  struct Case {
    std::string text;
    std::vector<std::vector<std::string>> rows;
  } cases[] = {
      {"a,b\r\n1,2\r\n", {{"a", "b"}, {"1", "2"}}},
      {"a,b\n1,2", {{"a", "b"}, {"1", "2"}}},
      {"\"x, y\",\"say \"\"hi\"\"\"\n", {{"x, y", "say \"hi\""}}},
      {"\"two\nlines\",3\n", {{"two\nlines", "3"}}},
      {"a,,c\n,\n", {{"a", "", "c"}, {"", ""}}},
      {"\xEF\xBB\xBFName\n", {{"Name"}}},
      {"", {}},
  };
  for (const auto& c : cases) EXPECT_EQ(ParseCsv(c.text), c.rows) << c.text;
}

TEST(WorkbookTest, FilesThatAreNotWorkbooksAreRefusedByKind) {
  TempDir dir;
  MakeZip(dir / "good.xlsx", HandMadeParts());
  std::string whole = tessaly::testing::ReadFile(dir / "good.xlsx");
  tessaly::testing::WriteFile(dir / "cut.xlsx", whole.substr(0, whole.size() / 2));
  tessaly::testing::WriteFile(dir / "text.xlsx", "Name,2001Jan\nA,1\n");
  tessaly::testing::WriteFile(dir / "text.xls", "not a BIFF file at all");
  auto parts = HandMadeParts();
  parts.erase("xl/worksheets/other.xml");
  MakeZip(dir / "nosheet.xlsx", parts);
  parts = HandMadeParts();
  parts["xl/worksheets/sheet1.xml"] = "<worksheet><sheetData><row><c t=\"s\"><v>99</v>";
  MakeZip(dir / "broken.xlsx", parts);
  MakeZip(dir / "plain.xlsx", {{"readme.txt", "hello"}});
  fs::create_directory(dir / "folder.xlsx");

  struct Case {
    const char* name;
    WorkbookStatus status;
  } cases[] = {{"cut.xlsx", WorkbookStatus::Malformed},     {"text.xlsx", WorkbookStatus::Malformed},
               {"text.xls", WorkbookStatus::Malformed},     {"nosheet.xlsx", WorkbookStatus::Malformed},
               {"broken.xlsx", WorkbookStatus::Malformed},  {"plain.xlsx", WorkbookStatus::Malformed},
               {"missing.xlsx", WorkbookStatus::Missing},   {"missing.xls", WorkbookStatus::Missing},
               {"folder.xlsx", WorkbookStatus::Unreadable}, {"good.txt", WorkbookStatus::Malformed}};
  for (const auto& c : cases) {
    Workbook book;
    EXPECT_EQ(ReadWorkbook(dir / c.name, book).status, c.status) << c.name;
  }
  EXPECT_FALSE(IsExcel2007File(dir / "plain.xlsx"));
  EXPECT_FALSE(IsExcel2007File(dir / "text.xlsx"));
}

TEST(WorkbookTest, SavedXlsxIsReadBackByUsAndByPython) {
  TempDir dir;
  fs::create_directory(dir / "with blank");
  Sheet sheet{"tessaly", {}};
  sheet.grid.SetText(1, 1, "Name");
  sheet.grid.SetText(1, 2, "2001Jan");
  sheet.grid.SetText(2, 1, "Sales & <Co>");
  sheet.grid.SetNumber(2, 2, 123.456);
  sheet.grid.SetNumber(2, 4, 36892, true);
  sheet.grid.SetNumber(3, 3, -1e-9);
  fs::path out = dir / "with blank" / "tslyb.xlsx";
  ASSERT_TRUE(SaveXlsx(out, {&sheet}));
  for (const auto& e : fs::directory_iterator(dir / "with blank")) EXPECT_EQ(e.path(), out);

  Workbook book;
  ASSERT_TRUE(ReadWorkbook(out, book).ok());
  const Grid& g = book.Find("tessaly")->grid;
  EXPECT_EQ(g.Text(2, 1), "Sales & <Co>");
  EXPECT_EQ(g.At(2, 2).number, 123.456);
  EXPECT_TRUE(g.At(2, 3).Empty());
  EXPECT_TRUE(g.At(2, 4).is_date);
  EXPECT_EQ(g.At(3, 3).number, -1e-9);

  auto cells = PythonCells(out, "tessaly");
  EXPECT_EQ(cells["A1"], "Name");
  EXPECT_EQ(cells["A2"], "Sales & <Co>");
  EXPECT_DOUBLE_EQ(std::stod(cells["B2"]), 123.456);
  EXPECT_EQ(cells["D2"], "36892");
  EXPECT_EQ(cells.count("C2"), 0u);

  // A save that cannot be made leaves the old workbook as it was and no temporary file.
  std::string before = tessaly::testing::ReadFile(out);
  Sheet bad{"bad/name[]", {}};
  bad.grid.SetNumber(1, 1, 1);
  EXPECT_FALSE(SaveXlsx(out, {&bad}));
  EXPECT_EQ(tessaly::testing::ReadFile(out), before);
  int files = 0;
  for (const auto& e : fs::directory_iterator(dir / "with blank")) ++files, (void)e;
  EXPECT_EQ(files, 1);
  EXPECT_FALSE(SaveXlsx(dir / "no such folder" / "x.xlsx", {&sheet}));
}

}  // namespace
}  // namespace tessaly::spreadsheet
