// The import wizard's logic: name repairs and their messages, series by orientation, the
// filter, the figures' checks, the PROPERTIES sheet, the summary and the written files.
#include <gtest/gtest.h>

#include "batch/batch_file.h"
#include "platform/textfile.h"
#include "sheet_files.h"
#include "spreadsheet/import.h"
#include "spreadsheet/import_job.h"
#include "spreadsheet/texts.h"
#include "support/messages.h"
#include "support/program_folder.h"

namespace tessaly::spreadsheet {
namespace {

using namespace testing;
using tessaly::testing::TempDir;

TEST(ImportTest, SeriesNamesAreRepairedAndTheMessagesSayWhich) {
  struct Case {
    std::string in, out;
    bool truncated, illegal;
  } cases[] = {
      {"Sales 2001!", "Sales_2001_", false, true},
      {"ABCDEFGHIJKLMNOP", "ABCDEFGHIJKLMN", true, false},
      {"  (A+B)-c_9  ", "(A+B)-c_9", false, false},
      {"x.y*z?[1]`", "x_y_z__1__", false, true},
      {"Ünits", "__nits", false, true},
      {"exactly14chars", "exactly14chars", false, false},
      {"a.b.c.d.e.f.g.h", "a_b_c_d_e_f_g_", true, true},
  };
  for (const auto& c : cases) {
    bool t = false, i = false;
    EXPECT_EQ(CheckSeriesName(c.in, t, i), c.out) << c.in;
    EXPECT_EQ(t, c.truncated) << c.in;
    EXPECT_EQ(i, c.illegal) << c.in;
  }
  EXPECT_EQ(SeriesNameErrorMessage(false, false), "");
  EXPECT_EQ(SeriesNameErrorMessage(true, false),
            "One or more series names exceed the maximum length of 14 have been truncated.");
  std::string both = SeriesNameErrorMessage(true, true);
  EXPECT_EQ(both.rfind("One or more series names have illegal characters. The series name cannot include spaces, "
                       "period(.), exclamation (!), backquote('), Brackets([]), wild card characters such as * or ?, "
                       "and ASCII character 0 through 31. All unacceptable characters will be replaced by an "
                       "Underscore(_). You may wish to correct the .asc file later.",
                       0),
            0u);
  EXPECT_NE(both.find("have been truncated."), std::string::npos);
}

TEST(ImportTest, FileInfoBreaksAPath) {
  clFileInfo f;
  f.parsepath("C:/data/sales.2001/book.xlsx");
  EXPECT_EQ(f.Drive, "C:");
  EXPECT_EQ(f.Ext, ".xlsx");
  EXPECT_EQ(f.Filename, "book.xlsx");
  EXPECT_EQ(f.SourcePath, "C:/data/sales.2001/");
  f.parsepath("/data/sales.backup/book");
  EXPECT_EQ(f.Drive, "");
  EXPECT_EQ(f.Ext, "");
  f.parsepath("notes.config1");
  EXPECT_EQ(f.Ext, "");
}

Grid ColumnSheet() {
  Grid g;
  g.SetText(1, 1, "Sales\nEast");
  g.SetText(1, 2, "Region Code");
  g.SetText(1, 3, "Cost");
  for (int r = 2; r <= 5; ++r) {
    g.SetNumber(r, 1, r * 10);
    g.SetText(r, 2, r % 2 ? "N" : "S");
    if (r != 4) g.SetNumber(r, 3, r + 0.5);
  }
  return g;
}

TEST(ImportTest, FieldsByOrientationWithNamesTypesAndTheFilter) {
  Grid g = ColumnSheet();
  bool t = false, i = false;
  auto fields = SeriesFields(g, true, true, t, i);
  ASSERT_EQ(fields.size(), 3u);
  EXPECT_EQ(fields[0].NewName, "SalesEast");
  EXPECT_EQ(fields[1].NewName, "Region_Code");
  EXPECT_TRUE(i);
  EXPECT_EQ(fields[0].FieldType, "Integer");
  EXPECT_EQ(fields[1].FieldType, "Char");
  EXPECT_EQ(fields[2].FieldType, "Double");
  auto unnamed = SeriesFields(g, true, false, t, i);
  EXPECT_EQ(unnamed[2].NewName, "S-3");
  EXPECT_EQ(CheckNumOfSeries(g, true), 3);
  EXPECT_EQ(CheckNumOfSeries(g, false), 5);

  EXPECT_EQ(FilterRecords(g, true, true, 0, ""), (std::vector<int>{2, 3, 4, 5}));
  EXPECT_EQ(FilterRecords(g, true, true, 2, "S"), (std::vector<int>{2, 4}));
  EXPECT_EQ(FieldValues(g, true, true, 2), (std::vector<std::string>{"S", "N"}));

  Grid blank;
  blank.SetNumber(2, 2, 1);
  EXPECT_TRUE(CkBlankR1C1(blank));
  EXPECT_FALSE(CkBlankR1C1(g));
}

TEST(ImportTest, FiguresAreCheckedWithTheirMessages) {
  ImportFigures f{"12", "2001", "1", "48", "36", "", "", "/tmp"};
  EXPECT_FALSE(ValidateFigures(f));
  EXPECT_FALSE(ValidateFigures({"200", "2001", "200", "48", "36", "", "", "/tmp"}));  // both at their bounds
  EXPECT_TRUE(IncompleteData(f).empty());
  struct Case {
    std::string seasonality, minor, forecasts, message, title;
  } cases[] = {
      {"0", "1", "3", "The value input for seasonality must be greater than 0. ", "Series Properties"},
      {"201", "1", "3", "The value input for seasonality exceeds the maximum value of 200", "Series Properties"},
      {"4", "5", "3", "The value input for Minor Period cannot exceed the selected seasonality.", "Series Properties"},
      {"12", "1", "601", "The number of forecasts cannot exceed 600", "Quorvane Series Properties"},
  };
  for (const auto& c : cases) {
    ImportFigures g = f;
    g.seasonality = c.seasonality;
    g.begin_period = c.minor;
    g.forecasts = c.forecasts;
    auto p = ValidateFigures(g);
    ASSERT_TRUE(p) << c.message;
    EXPECT_EQ(p->message, c.message);
    EXPECT_EQ(p->title, c.title);
  }
  f.begin_year = "";
  f.directory = " ";
  EXPECT_EQ(IncompleteData(f), (std::vector<std::string>{"Major Period", "Directory"}));
  EXPECT_TRUE(ShowsFiveOrSevenNote("5"));
  EXPECT_TRUE(ShowsFiveOrSevenNote("7"));
  EXPECT_FALSE(ShowsFiveOrSevenNote("12"));
}

TEST(ImportTest, PropertiesSheetGivesFiguresOrItsMessages) {
  auto book_with = [](std::vector<std::vector<CellSpec>> rows) {
    Workbook b;
    Sheet s{"Properties", {}};
    for (size_t r = 0; r < rows.size(); ++r)
      for (size_t c = 0; c < rows[r].size(); ++c) {
        if (auto* d = std::get_if<double>(&rows[r][c])) s.grid.SetNumber(r + 1, c + 1, *d);
        if (auto* t = std::get_if<std::string>(&rows[r][c])) s.grid.SetText(r + 1, c + 1, *t);
      }
    b.sheets.push_back(s);
    return b;
  };
  using S = std::string;
  SheetFigures defaults{12, 2001, 1, 36};
  auto good = ReadPropertiesSheet(
      book_with({{S("PROPERTY"), S("VALUE")}, {S("SEASONALITY"), 4.0}, {S("MAJOR"), 1999.0}, {S("MINOR"), 3.0}}),
      defaults);
  EXPECT_TRUE(good.found);
  EXPECT_EQ(good.MessageText(), "");
  EXPECT_EQ(good.figures.seasonality, 4);
  EXPECT_EQ(good.figures.major, 1999);
  EXPECT_EQ(good.figures.minor, 3);
  EXPECT_EQ(good.figures.forecasts, 12);

  auto header = ReadPropertiesSheet(book_with({{S("SEASONALITY"), 4.0}}), defaults);
  EXPECT_FALSE(header.header_ok);
  EXPECT_EQ(header.figures.seasonality, 12);
  EXPECT_EQ(header.MessageText(),
            "Error reading properties sheet, the header was not correct.\nDefault values will be used.");

  auto bad = ReadPropertiesSheet(book_with({{S("Key"), S("Value")},
                                            {S("SEASONALITY"), 300.0},
                                            {S("MAJOR"), 10000.0},
                                            {S("MINOR"), 13.0},
                                            {S("FORECASTS"), 700.0}}),
                                 defaults);
  EXPECT_EQ(bad.MessageText(),
            "The following issues were found:\n"
            "Seasonality may not exceed the Maximum Value of 200, Default value was used.\n"
            "Major may not exceed the Maximum value of 9999, the default value was used.\n"
            "The number of forecasts cannot exceed 600\n"
            "Minor value is greater than the Seasonality, default value was used");
  EXPECT_EQ(bad.figures.seasonality, 12);
  EXPECT_EQ(bad.figures.major, 2001);
  EXPECT_EQ(bad.figures.minor, 1);
  EXPECT_EQ(bad.figures.forecasts, 36);
  EXPECT_FALSE(ReadPropertiesSheet(Workbook{}, defaults).found);
}

TEST(ImportTest, RowModeSkipsTheNameColumnAndOneFilePutsTheOutputSeriesLast) {
  // Two marked series in row mode, names in the first column: 3 observations, not 4.
  Grid g;
  const char* names[] = {"Price", "Demand", "Promo"};
  for (int r = 1; r <= 3; ++r) {
    g.SetText(r, 1, names[r - 1]);
    for (int c = 2; c <= 4; ++c)
      if (!(r == 3 && c == 3)) g.SetNumber(r, c, r * 100 + c);
  }
  TempDir dir;
  ImportRequest q;
  q.layout = {&g, false, true, AllRecords(g, false, true)};
  bool t = false, i = false;
  q.fields = SeriesFields(g, false, true, t, i);
  q.fields[0].Skip = false;
  q.figures = {"4", "2010", "2", "3", "8", "", "Price", dir.path().string()};
  q.mode = ImportMode::OneFile;
  q.one_file = dir / "demand.asc";
  ImportResult r = FinishImport(q);
  ASSERT_TRUE(r.ok) << r.ErrorString;
  EXPECT_EQ(*platform::ReadAllLines(dir / "demand.asc"),
            (std::vector<std::string>{"0", "0", "0", "3", "4", "2010", "2", "3", "0", "0", "8", "Demand", "Promo",
                                      "Price", "0", "0", "0", "202", "203", "204", "302", "0", "304", "102", "103",
                                      "104"}));

  // No output series chosen: the last marked one, under the name box's name.
  q.fields[2].Skip = true;
  q.figures.output_series = "";
  q.figures.output_series_name = "TARGET";
  ASSERT_TRUE(FinishImport(q).ok);
  auto lines = *platform::ReadAllLines(dir / "demand.asc");
  EXPECT_EQ(std::vector<std::string>(lines.begin() + 11, lines.begin() + 13),
            (std::vector<std::string>{"Price", "TARGET"}));
}

TEST(ImportTest, BatchRunWritesAFilePerSeriesAndAProjectOfThem) {
  Grid g = ColumnSheet();
  g.SetNumber(3, 2, 1);  // the code column still holds text: that series is refused
  TempDir dir;
  ImportRequest q;
  q.layout = {&g, true, true, FilterRecords(g, true, true, 0, "")};
  bool t = false, i = false;
  q.fields = SeriesFields(g, true, true, t, i);
  q.figures = {"12", "2001", "1", "4", "12", "", "", (dir / "asc").string()};
  q.mode = ImportMode::BatchRun;
  q.project_file = dir / "asc" / "sheet.xml";
  std::vector<std::string> status;
  ImportResult r = FinishImport(q, [&](const std::string& s) { status.push_back(s); });
  EXPECT_FALSE(r.ok);
  EXPECT_NE(r.ErrorString.find("Region Code"), std::string::npos) << r.ErrorString;
  EXPECT_EQ(r.end_message, "Finished importing 2 series.");
  EXPECT_EQ(std::vector<std::string>(status.begin(), status.begin() + 3),
            (std::vector<std::string>{"Open File", "Gather Data", "Write File"}));
  auto cost = *platform::ReadAllLines(dir / "asc" / "Cost.asc");
  EXPECT_EQ(std::vector<std::string>(cost.begin() + 3, cost.end()),
            (std::vector<std::string>{"1", "12", "2001", "1", "4", "0", "0", "12", "Cost", "0", "2.5", "3.5", "0",
                                      "5.5"}));
  EXPECT_FALSE(fs::exists(dir / "asc" / "Region_Code.asc"));
  batch::cBatchFile project(dir.path());
  ASSERT_TRUE(project.Load(dir / "asc" / "sheet.xml"));
  ASSERT_EQ(project.Count(), 2u);
  EXPECT_EQ(project.List(0), "SalesEast.asc");
  EXPECT_EQ(project.List(1), "Cost.asc");

  std::string html = SummaryHtml("/data/book.xlsx", 2, q.figures);
  for (const char* piece : {"Import Summary", "File Information", "Path:   /data/", "Filename:   book.xlsx",
                            "Number of Series: 2", "Series Properties", "Seasonality: 12", "Observations: 4",
                            "Forecasts: 12", "Major Period: 2001", "Minor Period: 1", "Directory: "})
    EXPECT_NE(html.find(piece), std::string::npos) << piece;
}

TEST(ImportTest, OpeningRefusesOtherFilesWithTheWizardsMessages) {
  TempDir dir;
  tessaly::testing::WriteFile(dir / "book.xlsx", "plain text");
  tessaly::testing::WriteFile(dir / "book.xls", "plain text");
  tessaly::testing::WriteFile(dir / "book.txt", "plain text");
  EXPECT_EQ(OpenForImport(dir / "book.xlsx").message, texts::kBadXlsx);
  EXPECT_EQ(OpenForImport(dir / "book.xls").message, texts::kBadXls);
  EXPECT_EQ(OpenForImport(dir / "book.txt").message,
            "Currently only files with an extention of XLS or XLSX are supported.");
  EXPECT_EQ(OpenForImport(dir / "gone.xlsx").message, " There was an error opening the input file");
}

// A sheet of codes and names only, taken as one dataset: every column is left out for want
// of numbers, so nothing is marked; it says so and writes no file.
TEST(ImportTest, ASheetWithoutNumbersTakenAsOneDatasetSaysNoSeriesIsMarked) {
  TempDir dir;
  tessaly::testing::WriteFile(dir / "regions.csv", "Region,Code\r\nEast,E1\r\nWest,W1\r\nNorth,N1\r\n");
  tessaly::testing::RecordedMessages host;
  ImportJob job;
  job.book = dir / "regions.csv";
  job.major = 2001;
  job.minor = 1;
  job.single = "regions.asc";
  ImportJobResult r = RunImportJob(job);
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(host.Joined(), "Import Excel File: No series is marked.\n");
  EXPECT_FALSE(fs::exists(dir / "regions.asc"));
}

}  // namespace
}  // namespace tessaly::spreadsheet
