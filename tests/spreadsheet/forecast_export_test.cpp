// All forecasts of a project side by side: the periods of series that end at different
// times merged in time order, the limits' headings taken from the forecast files, the
// datasets without forecasts named, and the workbook holding the same table as the CSV.
#include "spreadsheet/forecast_export.h"

#include <gtest/gtest.h>

#include "batch/batch_file.h"
#include "spreadsheet/workbook.h"
#include "support/program_folder.h"

namespace tessaly::spreadsheet {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

TEST(ForecastExport, OneWideTableOfEverySeriesWithItsLimits) {
  TempDir dir;
  fs::create_directories(dir / "OUTPUT");
  // Quarterly series: one ends a quarter later than the other, across a year end.
  WriteFile(dir / "OUTPUT/GDP.PRO",
            "PERIOD         REALGDP FORECAST                LOWER 90%                UPPER 90%\r\n"
            "2009/4                  12990.3412               12800.1000               13180.5824\r\n"
            "2010/1                  13050.0000               12790.0000               13310.0000\r\n");
  WriteFile(dir / "OUTPUT/cons.pro",
            "PERIOD         REAL,CONS FORECAST                LOWER 90%                UPPER 90%\r\n"
            "2010/1                   9200.5000                9100.2500                9300.7500\r\n"
            "2010/2                   9250.0000                9140.0000                9360.0000\r\n"
            "2010/3                   9300.0000                9180.0000\r\n");  // cut short: left out
  batch::cBatchFile project(dir.path());
  project.SetBatchName("macro.xml");
  for (const char* f : {"GDP.ASC", "CONS.asc", "BROKEN.ASC"}) project.Add_File(f, 0, 0, "00/00/00");

  ForecastExport result;
  std::string error;
  ASSERT_TRUE(ExportForecasts(project, dir / "OUTPUT", {}, result, error)) << error;
  EXPECT_EQ(result.exported, (std::vector<std::string>{"GDP.ASC", "CONS.asc"}));
  EXPECT_EQ(result.missing, (std::vector<std::string>{"BROKEN.ASC"}));
  EXPECT_EQ(result.csv, dir / "OUTPUT/macroFORECASTS.csv");
  EXPECT_EQ(ReadFile(result.csv),
            "PERIOD,GDP FORECAST,GDP LOWER 90%,GDP UPPER 90%,CONS FORECAST,CONS LOWER 90%,CONS UPPER 90%\r\n"
            "2009/4,12990.3412,12800.1,13180.5824,,,\r\n"
            "2010/1,13050,12790,13310,9200.5,9100.25,9300.75\r\n"
            "2010/2,,,,9250,9140,9360\r\n");

  Workbook book;
  ASSERT_TRUE(ReadXlsx(result.xlsx, book).ok());
  ASSERT_EQ(book.SheetNames(), (std::vector<std::string>{"Forecasts"}));
  const Grid& grid = book.sheets[0].grid;
  EXPECT_EQ(grid.Text(1, 5), "CONS FORECAST");
  EXPECT_EQ(grid.Text(3, 1), "2010/1");
  double value = 0;
  ASSERT_TRUE(grid.NumericValue(2, 4, value));
  EXPECT_DOUBLE_EQ(value, 13180.5824);
  EXPECT_TRUE(grid.At(4, 2).Empty());

  // Nothing run: nothing written, and the reason.
  TempDir empty;
  ForecastExport none;
  EXPECT_FALSE(ExportForecasts(project, empty / "OUTPUT", {}, none, error));
  EXPECT_EQ(error, "No dataset of macro.xml has forecasts in " + (empty / "OUTPUT").string() +
                       ": run the project first.");
  EXPECT_EQ(none.missing.size(), 3u);
  EXPECT_FALSE(fs::exists(empty / "OUTPUT/macroFORECASTS.csv"));
}

}  // namespace
}  // namespace tessaly::spreadsheet
