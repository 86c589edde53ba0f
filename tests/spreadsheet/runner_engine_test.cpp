// The programs as a person calls them, with the real engine in a copy of the program
// folder: `tessaly BOOK.xlsx SHEET [switches]` and `tsly import`.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "platform/textfile.h"
#include "sheet_files.h"
#include "spreadsheet/workbook.h"
#include "support/program_folder.h"

namespace tessaly::spreadsheet {
namespace {

using namespace testing;
using tessaly::testing::ProgramFolderCopy;
using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using S = std::string;

class ProgramsTest : public ::testing::Test {
 protected:
  int Program(const std::string& name, const std::string& words, std::string* out) {
    return tessaly::testing::RunCommand("cd '" + work.path().string() + "' && QT_QPA_PLATFORM=offscreen '" +
                                            program.Executable(name).string() + "' " + words + " 2>&1",
                                        out);
  }
  static SheetSpec Monthly(const std::string& name, int series, int periods) {
    const char* m[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    SheetSpec s{name, {{S("Series")}}};
    for (int k = 0; k < periods; ++k) s.rows[0].push_back(std::to_string(2010 + k / 12) + m[k % 12]);
    for (int i = 0; i < series; ++i) {
      std::vector<CellSpec> row = {S("SKU") + std::to_string(i + 1)};
      for (double v : MonthlySeries(periods, 10 + i)) row.push_back(v);
      s.rows.push_back(row);
    }
    return s;
  }
  ProgramFolderCopy program;
  TempDir work;
};

TEST_F(ProgramsTest, WorkbookRunWritesEveryRowsForecastsBesideTheInput) {
  fs::create_directory(work / "my data");
  fs::path book = work / "my data" / "Sales.xlsx";
  MakeXlsx(book, {Monthly("Monthly", 3, 48)});
  std::string before = ReadFile(book);
  std::string out;
  ASSERT_EQ(Program("tessaly", "'my data/Sales.xlsx' monthly /NG /S", &out), 0) << out;
  EXPECT_NE(out.find("Series: SKU2 row: 3"), std::string::npos) << out;
  EXPECT_NE(out.find("Finished"), std::string::npos) << out;
  EXPECT_EQ(ReadFile(book), before);
  auto cells = PythonCells(work / "my data" / "tslyb.xlsx", "tessaly");
  EXPECT_EQ(cells["AX1"], "2014Jan");
  EXPECT_EQ(cells["CG1"], "2016Dec");
  for (const char* ref : {"AX2", "CG2", "AX3", "CG3", "AX4", "CG4"}) {
    ASSERT_TRUE(cells.count(ref)) << ref << "\n" << out;
    double v = std::stod(cells[ref]);
    EXPECT_GT(v, 50) << ref;
    EXPECT_LT(v, 400) << ref;
  }
  EXPECT_FALSE(fs::exists(work / "my data" / "OUTPUT"));

  // Graphs by default, into OUTPUT beside the input.
  ASSERT_EQ(Program("tessaly", "'my data/Sales.xlsx' Monthly /FF", &out), 0) << out;
  EXPECT_TRUE(fs::exists(work / "my data" / "OUTPUT" / "SKU1fore.jpg")) << out;
  EXPECT_FALSE(fs::exists(work / "my data" / "OUTPUT" / "SKU1act.jpg")) << out;

  // A file that is no workbook: the message, no result, status 2.
  fs::remove(work / "my data" / "tslyb.xlsx");
  tessaly::testing::WriteFile(work / "fake.xlsx", "not a zip");
  EXPECT_EQ(Program("tessaly", "fake.xlsx Monthly /NG", &out), 2);
  EXPECT_NE(out.find(" Input file is either missing, not a spreadsheet or malformed"), std::string::npos) << out;
  EXPECT_FALSE(fs::exists(work / "my data" / "tslyb.xlsx"));
  EXPECT_FALSE(fs::exists(work / "tslyb.xlsx"));

  // A workbook open elsewhere (locked) is not run.
  int fd = ::open(book.c_str(), O_RDONLY);
  ASSERT_EQ(::flock(fd, LOCK_EX), 0);
  EXPECT_NE(Program("tessaly", "'my data/Sales.xlsx' Monthly /NG", &out), 0);
  ::close(fd);
  EXPECT_NE(out.find("Permission denied"), std::string::npos) << out;
  EXPECT_FALSE(fs::exists(work / "my data" / "tslyb.xlsx"));
  EXPECT_EQ(ReadFile(book), before);
}

TEST_F(ProgramsTest, TslyImportWritesDatasetsAndAProjectThatRuns) {
  MakeXlsx(work / "book.xlsx", {{"PROPERTIES", {{S("PROPERTY"), S("VALUE")}, {S("MAJOR"), 2010.0}, {S("MINOR"), 1.0}}},
                                Monthly("Monthly", 2, 36)});
  std::string out;
  EXPECT_EQ(Program("tsly", "import --help", &out), 0);
  EXPECT_EQ(out.rfind("usage: tsly import BOOK.(xlsx|xls|csv)", 0), 0u) << out;
  EXPECT_EQ(Program("tsly", "import book.xlsx --rows --out asc --project sheet.xml", &out), 0) << out;
  EXPECT_NE(out.find("Finished importing 2 series."), std::string::npos) << out;
  auto lines = *platform::ReadAllLines(work / "asc" / "SKU2.asc");
  ASSERT_EQ(lines.size(), 11u + 2 + 36);
  EXPECT_EQ(std::vector<std::string>(lines.begin() + 3, lines.begin() + 13),
            (std::vector<std::string>{"1", "12", "2010", "1", "36", "0", "0", "36", "SKU2", "0"}));
  EXPECT_EQ(Program("tsly", "run asc/sheet.xml", &out), 0) << out;
  EXPECT_TRUE(fs::exists(work / "asc" / "OUTPUT" / "SKU1.PRO")) << out;

  // Refusals: no start anywhere, a bad seasonality, a file that is no workbook.
  MakeXlsx(work / "nostart.xlsx", {Monthly("Monthly", 1, 12)});
  EXPECT_EQ(Program("tsly", "import nostart.xlsx --rows", &out), 2);
  EXPECT_NE(out.find("Missing Major Period, Minor Period: give --start YEAR/PERIOD"), std::string::npos) << out;
  EXPECT_EQ(Program("tsly", "import nostart.xlsx --rows --start 2001/13", &out), 2);
  EXPECT_NE(out.find("The value input for Minor Period cannot exceed the selected seasonality."), std::string::npos)
      << out;
  tessaly::testing::WriteFile(work / "bad.xlsx", "text");
  EXPECT_EQ(Program("tsly", "import bad.xlsx", &out), 2);
  EXPECT_NE(out.find("Import Wizard: The selected file does not appear to have the correct formatting for an Excel XLSX file."),
            std::string::npos)
      << out;
  // A .csv into one dataset, the dependent series named, a blank cell as 0.
  tessaly::testing::WriteFile(work / "causal.csv", "Price,Demand\r\n1.5,10\r\n,12\r\n2,\"13\"\r\n");
  EXPECT_EQ(Program("tsly", "import causal.csv --start 2020/2 --seasonality 4 --single d.asc --output Price", &out), 0)
      << out;
  EXPECT_EQ(*platform::ReadAllLines(work / "d.asc"),
            (std::vector<std::string>{"0", "0", "0", "2", "4", "2020", "2", "3", "0", "0", "12", "Demand", "Price",
                                      "0", "0", "10", "12", "13", "1.5", "0", "2"}));
  EXPECT_EQ(Program("tsly", "import", &out), 2);
  EXPECT_EQ(Program("tsly", "import book.xlsx --single one.asc --project p.xml", &out), 2);
}

}  // namespace
}  // namespace tessaly::spreadsheet
