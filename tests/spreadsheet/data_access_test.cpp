// The data-access layer: its connection string, a workbook opened as tables, a database
// file, SQL and transactions, every failure text with its record, and ASC files written
// from a recordset.
#include <gtest/gtest.h>

#include "dataset/asc_dataset.h"
#include "platform/textfile.h"
#include "sheet_files.h"
#include "spreadsheet/asc_from_table.h"
#include "spreadsheet/data_access.h"
#include "support/program_folder.h"

namespace tessaly::spreadsheet {
namespace {

using namespace testing;
using tessaly::testing::TempDir;

TEST(DataAccessTest, ConnectStringCarriesHeaderAndImportMode) {
  clsData data;
  data.DataSource = "/data/book.xls";
  EXPECT_EQ(data.BuildConnectString(),
            "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=/data/book.xls;Extended Properties=\"Excel 8.0;hdr=yes;\"");
  data.SetHeader(false);
  data.SetImportMode("1");
  EXPECT_EQ(data.ConnectString(),
            "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=/data/book.xls;Extended Properties=\"Excel 8.0;hdr=no;IMEX=1\"");
  EXPECT_EQ(data.ImportMode(), "IMEX=1");
  data.SetImportMode("");
  EXPECT_EQ(data.ImportMode(), "");
  EXPECT_EQ(ConnectStringPart(data.ConnectString(), "extended properties"), "Excel 8.0;hdr=no;");
  EXPECT_EQ(ConnectStringPart(data.ConnectString(), "DATA SOURCE"), "/data/book.xls");
}

class WorkbookTables : public ::testing::Test {
 protected:
  void SetUp() override {
    MakeXlsx(dir / "book.xlsx",
             {{"Sales", {{std::string("Region"), std::string("Units"), std::monostate{}, std::string("Units")},
                         {std::string("North"), 10.0, 1.0, 5.0},
                         {std::string("South"), std::monostate{}, 2.0, std::string("x")},
                         {std::string("East"), 30.0, 3.0, 7.0}}},
              {"Empty", {}}});
    data.DataSource = (dir / "book.xlsx").string();
  }
  TempDir dir;
  clsData data;
  std::string error;
};

TEST_F(WorkbookTables, SheetsAreTablesWithHeaderNamesNullsAndSql) {
  ASSERT_TRUE(data.XLSConnect(error)) << error;
  auto schema = data.OpenSchema(error);
  ASSERT_TRUE(schema);
  std::vector<std::string> tables;
  for (schema->MoveFirst(); !schema->EOF_(); schema->MoveNext()) tables.push_back(schema->Value("TABLE_NAME").text);
  EXPECT_EQ(tables, (std::vector<std::string>{"Sales", "Empty"}));

  auto rs = data.OpenRecordSet("SELECT * FROM Sales", error);
  ASSERT_TRUE(rs);
  // A blank header gets F and its column; a repeated one too.
  EXPECT_EQ(rs->Fields, (std::vector<std::string>{"Region", "Units", "F3", "F4"}));
  ASSERT_EQ(rs->RecordCount(), 3);
  rs->MoveNext();
  EXPECT_TRUE(rs->Value("Units").IsNull());
  EXPECT_EQ(rs->Value("Units").AsDouble(), 0.0);
  // Without IMEX the odd text of a numeric column is null.
  EXPECT_TRUE(rs->Value("F4").IsNull());

  auto sum = data.OpenRecordSet("SELECT SUM(Units) AS total FROM Sales WHERE Region <> 'North'", error);
  EXPECT_EQ(sum->Value(0).number, 30.0);

  ASSERT_TRUE(data.BeginTrans());
  ASSERT_TRUE(data.ExecuteSQL("DELETE FROM Sales"));
  data.RollBackTrans();
  EXPECT_EQ(data.OpenRecordSet("SELECT * FROM Sales", error)->RecordCount(), 3);
  ASSERT_TRUE(data.BeginTrans());
  ASSERT_TRUE(data.ExecuteSQL("INSERT INTO Sales (Region, Units) VALUES ('West', 4)"));
  ASSERT_TRUE(data.CommitTrans());
  EXPECT_EQ(data.OpenRecordSet("SELECT * FROM Sales", error)->RecordCount(), 4);
}

TEST_F(WorkbookTables, NoHeaderAndImportModeChangeTheFields) {
  data.SetHeader(false);
  data.SetImportMode("1");
  ASSERT_TRUE(data.XLSConnect(error));
  auto rs = data.OpenRecordSet("SELECT F1, F4 FROM Sales", error);
  ASSERT_EQ(rs->RecordCount(), 4);
  EXPECT_EQ(rs->Value(0).text, "Region");
  rs->MoveNext();
  rs->MoveNext();
  EXPECT_EQ(rs->Value("F4").text, "x");
}

TEST_F(WorkbookTables, EveryFailureGivesItsTextAndRecordsItsProcedure) {
  std::string text;
  clsData missing;
  missing.DataSource = (dir / "none.xlsx").string();
  EXPECT_FALSE(missing.XLSConnect(text));
  EXPECT_EQ(text, "Unable to connect");
  ASSERT_EQ(missing.Errors().size(), 1u);
  EXPECT_EQ(missing.Errors()[0].source, "XLSConnect");

  tessaly::testing::WriteFile(dir / "notdb.mdb", "this is not a database file, only text........................"
                                                  "..................................................");
  clsData db;
  db.DataSource = (dir / "notdb.mdb").string();
  EXPECT_FALSE(db.Connect(text));
  EXPECT_EQ(text, "Unable to connect to " + db.DataSource + " database");
  EXPECT_EQ(db.Errors().back().source, "Connect");

  ASSERT_TRUE(data.XLSConnect(error));
  EXPECT_FALSE(data.OpenRecordSet("SELECT * FROM Nowhere", text));
  EXPECT_EQ(text, "Unable to retrieve data");
  EXPECT_EQ(data.Errors().back().source, "OpenRecordSet");
  auto none = data.OpenRecordSet("SELECT * FROM Sales WHERE 0", text);
  ASSERT_TRUE(none);
  EXPECT_EQ(text, "No records retrieved");
  EXPECT_FALSE(data.ExecuteSQL("DROP TABLE Nowhere", &text));
  EXPECT_EQ(text, "Error executing SQL statement");
  EXPECT_FALSE(data.CommitTrans(&text));
  EXPECT_EQ(text, "Cannot commit database changes");
  ASSERT_TRUE(data.BeginTrans());
  EXPECT_FALSE(data.BeginTrans(&text));
  EXPECT_EQ(text, "Cannot begin a transaction");
  data.RollBackTrans();
  shell::clsError err;
  EXPECT_TRUE(err.ADOError(data.Errors()));

  // An empty database: connected, but no tables.
  clsData empty;
  empty.DataSource = (dir / "empty.db").string();
  tessaly::testing::WriteFile(dir / "empty.db", "");
  ASSERT_TRUE(empty.Connect(text));
  EXPECT_TRUE(empty.OpenSchema(text));
  EXPECT_EQ(text, "No schema data retrieved");
  clsData closed;
  EXPECT_FALSE(closed.OpenSchema(text));
  EXPECT_EQ(text, "Unable to retrieve database schema information");
}

TEST_F(WorkbookTables, RecordsetBecomesAnAscFileWithNullsAsZero) {
  ASSERT_TRUE(data.XLSConnect(error));
  auto rs = data.OpenRecordSet("SELECT Units, F3 FROM Sales", error);
  clsCreateASC asc;
  asc.ADO_Recordset = rs.get();
  asc.OutputFolder = dir.path();
  asc.Filename = "units.asc";
  asc.SeriesProperties.SetNumberOfSeries(2);
  asc.SeriesProperties.SetSeasonality(12);
  asc.SeriesProperties.SetBeginningYear(" 2001 ");
  asc.SeriesProperties.SetBeginningPeriod(3);
  asc.SeriesProperties.SetNumberOfObservations(3);
  asc.SeriesProperties.SetNumberOfForecasts(12);
  ASSERT_TRUE(asc.Write_File()) << asc.ErrorString;
  auto lines = platform::ReadAllLines(dir / "units.asc");
  EXPECT_EQ(*lines, (std::vector<std::string>{"0", "0", "0", "2", "12", "2001", "3", "3", "0", "0", "12", "Units",
                                              "F3", "0", "0", "10", "0", "30", "1", "2", "3"}));
  auto text = data.OpenRecordSet("SELECT Region FROM Sales", error);
  asc.ADO_Recordset = text.get();
  asc.Filename = "region.asc";
  EXPECT_FALSE(asc.Write_File());
  EXPECT_NE(asc.ErrorString.find("Region"), std::string::npos);
  EXPECT_FALSE(fs::exists(dir / "region.asc"));
}

}  // namespace
}  // namespace tessaly::spreadsheet
