// The workbook runner over a scripted engine: the forecasts written back row by row with
// the next periods' headings (read back by our reader and by python3), every message of a
// bad sheet, the switches and the graphs they ask for, a cancel, and the input never changed.
#include <gtest/gtest.h>

#include <set>

#include "batch/engine/engine_client.h"
#include "dataset/error_catalogue.h"
#include "report/graph_plan.h"
#include "sheet_files.h"
#include "spreadsheet/runner.h"
#include "spreadsheet/texts.h"
#include "support/program_folder.h"

namespace tessaly::spreadsheet {
namespace {

using namespace testing;
using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using S = std::string;

// Forecasts each series as its last value + k; a series named in `fail` gets engine code 5,
// one named `cancel_at` is cancelled; DETAILS.HTM and TS50PRO.123 are left as the engine does.
struct ScriptedEngine {
  fs::path folder;
  std::set<std::string> fail, no_details;
  std::string cancel_at;
  std::vector<std::string> names;
  std::vector<int> observations;

  batch::EngineCallResult operator()(quorvane::EngineArrays& a, batch::EngineReturn& r,
                                     const batch::EngineCallContext& c) {
    names.push_back(c.series_name);
    EXPECT_EQ(a.run_mode, quorvane::kRunModeSpreadsheet);
    EXPECT_EQ(a.objective_values[2], 1);
    int n = a.property_values[4], nf = a.property_values[7];
    observations.push_back(n);
    if (c.series_name == cancel_at) return {batch::EngineCallOutcome::Canceled, 21, ""};
    if (fail.count(c.series_name)) return {batch::EngineCallOutcome::Done, 5, ""};
    if (!no_details.count(c.series_name)) tessaly::testing::WriteFile(folder / "DETAILS.HTM", "<html></html>");
    tessaly::testing::WriteFile(folder / "TS50PRO.123", "forecasts");
    r.returned_data_prop.assign(8, 0);
    r.returned_data_prop[7] = static_cast<int16_t>(nf);
    for (int k = 0; k < nf; ++k) a.forecast_values[k] = a.series_data[n - 1] + k + 1;
    return {};
  }
};

struct CountingReports : batch::RunReports {
  std::vector<std::string> drawn;
  std::array<bool, 9> DrawGraphs(const batch::SeriesResult& s) override {
    drawn.push_back(s.stem);
    return {};
  }
};

class RunnerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::create_directory(dir / "program");
    fs::create_directory(dir / "my books");
    engine.folder = dir / "program";
    host.program_folder = engine.folder;
    host.log = [this](const std::string& line) { log.push_back(line); };
    host.engine_call = [this](auto& a, auto& r, const auto& c) { return engine(a, r, c); };
    host.reports = reports;
  }
  // Row 1: the name heading and 24 months from 2001Jan; then the series rows.
  static std::vector<CellSpec> Header(const std::string& first = "2001Jan", int periods = 24) {
    std::vector<CellSpec> h = {S("Series")};
    const char* m[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    for (int k = 0; k < periods; ++k) h.push_back(k == 0 ? CellSpec(first) : CellSpec(std::to_string(2001 + k / 12) + m[k % 12]));
    return h;
  }
  static std::vector<CellSpec> Row(const std::string& name, std::vector<double> v) {
    std::vector<CellSpec> r = {name};
    for (double x : v) r.push_back(x);
    return r;
  }
  RunnerResult Run(const fs::path& book, const std::string& sheet, std::vector<std::string> switches = {}) {
    RunnerSettings settings;
    settings.switches = RunnerSwitches::Parse(switches);
    return XLSEngine(book, sheet, settings, host);
  }
  bool Logged(const std::string& line) const { return std::find(log.begin(), log.end(), line) != log.end(); }

  TempDir dir;
  ScriptedEngine engine;
  std::shared_ptr<CountingReports> reports = std::make_shared<CountingReports>();
  RunnerHost host;
  std::vector<std::string> log;
};

TEST_F(RunnerTest, EveryRowGetsItsForecastsAndTheHeadingsTheNextPeriods) {
  auto a = MonthlySeries(24, 1), b = MonthlySeries(20, 2), c = MonthlySeries(24, 3);
  fs::path book = dir / "my books" / "sales book.xlsx";
  MakeXlsx(book, {{"Notes", {{S("x")}}},
                  {"Sales", {Header(), Row("ALPHA", a), Row("SHORT", b), Row("BROKEN", c), Row("GAM/MA", c),
                             {}, Row("AFTER", a)}}});
  std::string before = ReadFile(book);
  engine.fail = {"BROKEN"};
  RunnerResult r = Run(book, "sales");
  ASSERT_TRUE(r.finished) << r.error;
  EXPECT_EQ(r.rows, 4);
  EXPECT_EQ(r.forecast_rows, 3);
  EXPECT_EQ(engine.names, (std::vector<std::string>{"ALPHA", "SHORT", "BROKEN", "GAM/MA"}));
  EXPECT_EQ(engine.observations, (std::vector<int>{24, 20, 24, 24}));
  EXPECT_EQ(ReadFile(book), before);
  EXPECT_EQ(r.result_book, dir / "my books" / "tslyb.xlsx");
  EXPECT_TRUE(fs::exists(engine.folder / "ALPHA.pro"));
  EXPECT_TRUE(fs::exists(engine.folder / "GAM_MA.pro"));
  EXPECT_TRUE(Logged("File Name: " + book.string()));
  EXPECT_TRUE(Logged("Worksheet: Sales"));
  EXPECT_TRUE(Logged("Series: SHORT row: 3"));
  std::string code5;
  for (const auto& row : dataset::EngineCatalogue())
    if (row.code == 5) code5 = row.text;
  ASSERT_FALSE(code5.empty());
  EXPECT_TRUE(Logged("Engine Error: " + code5));
  EXPECT_TRUE(Logged("Writing Forecasts to Spreadsheet."));
  EXPECT_EQ(log.back(), "Finished");
  EXPECT_EQ(reports->drawn, (std::vector<std::string>{"ALPHA", "SHORT", "GAM_MA"}));

  Workbook out;
  ASSERT_TRUE(ReadWorkbook(r.result_book, out).ok());
  ASSERT_EQ(out.SheetNames(), (std::vector<std::string>{"tessaly"}));
  const Grid& g = out.sheets[0].grid;
  EXPECT_EQ(g.Text(1, 26), "2003Jan");
  EXPECT_EQ(g.Text(1, 61), "2005Dec");
  EXPECT_EQ(g.At(2, 26).number, a.back() + 1);
  EXPECT_EQ(g.At(2, 61).number, a.back() + 36);
  EXPECT_EQ(g.At(3, 22).number, b.back() + 1);  // after its own last observation
  EXPECT_EQ(g.Text(1, 22), "2002Sep");           // the sheet's own heading stays
  EXPECT_TRUE(g.At(4, 26).Empty());
  EXPECT_EQ(g.At(5, 26).number, c.back() + 1);
  EXPECT_EQ(g.Text(7, 1), "AFTER");
  EXPECT_TRUE(g.At(7, 26).Empty());

  auto cells = PythonCells(r.result_book, "tessaly");
  EXPECT_EQ(cells["Z1"], "2003Jan");
  EXPECT_EQ(cells["BI1"], "2005Dec");
  EXPECT_DOUBLE_EQ(std::stod(cells["Z2"]), a.back() + 1);
  EXPECT_DOUBLE_EQ(std::stod(cells["V3"]), b.back() + 1);
  EXPECT_DOUBLE_EQ(std::stod(cells["BI5"]), c.back() + 36);
  EXPECT_EQ(cells.count("Z4"), 0u);
  EXPECT_EQ(cells["A5"], "GAM/MA");
}

TEST_F(RunnerTest, ABadSheetStopsWithItsMessageAndLeavesNoResult) {
  auto v = MonthlySeries(24, 4);
  auto with_text = Row("TEXT", v);
  with_text[7] = S("n/a");
  auto blank_date = Header();
  blank_date[1] = std::monostate{};
  MakeXlsx(dir / "blank.xlsx", {{"S", {blank_date, Row("A", v)}}});
  MakeXlsx(dir / "malformed.xlsx", {{"S", {Header("Jan2001"), Row("A", v)}}});
  MakeXlsx(dir / "text.xlsx", {{"S", {Header(), Row("A", v), with_text}}});
  MakeXlsx(dir / "good.xlsx", {{"S", {Header(), Row("A", v)}}});
  std::string good = ReadFile(dir / "good.xlsx");
  tessaly::testing::WriteFile(dir / "cut.xlsx", good.substr(0, good.size() - 200));
  tessaly::testing::WriteFile(dir / "plain.xlsx", "Series,2001Jan\nA,1\n");
  tessaly::testing::WriteFile(dir / "plain.xls", "Series,2001Jan\nA,1\n");
  tessaly::testing::WriteFile(dir / "good.csv", "Series,2001Jan\nA,1\n");
  struct Case {
    const char* file;
    const char* sheet;
    std::string message;
    bool opened;
  } cases[] = {
      {"blank.xlsx", "S", " Row1, Col2 appears to be blank, ", true},
      {"malformed.xlsx", "S", " Date in Row1, Col1 is missing or malformed ,", true},
      {"text.xlsx", "s", "Type mismatch: row 3, column 8 holds \"n/a\", not a number.", true},
      {"good.xlsx", "Other", " There was an error opening the input file or worksheet", false},
      {"good.xlsx", "", " There was an error opening the input file or worksheet", false},
      {"missing.xlsx", "S", " Input file is either missing, not a spreadsheet or malformed", false},
      {"cut.xlsx", "S", " Input file is either missing, not a spreadsheet or malformed", false},
      {"plain.xlsx", "S", " Input file is either missing, not a spreadsheet or malformed", false},
      {"plain.xls", "S", " Input file is either missing, not a spreadsheet or malformed", false},
      {"good.csv", "S", "The input file does not have a supported file extenstion", false},
  };
  for (const auto& c : cases) {
    log.clear();
    std::string before = fs::exists(dir / c.file) ? ReadFile(dir / c.file) : "";
    RunnerResult r = Run(dir / c.file, c.sheet);
    EXPECT_EQ(r.error, c.message) << c.file;
    EXPECT_EQ(r.opened, c.opened) << c.file;
    EXPECT_FALSE(r.finished) << c.file;
    EXPECT_TRUE(Logged(c.message)) << c.file;
    EXPECT_FALSE(fs::exists(dir / "tslyb.xlsx")) << c.file;
    if (!before.empty()) EXPECT_EQ(ReadFile(dir / c.file), before) << c.file;
  }
  // Only the text sheet reached the engine, for its good first row.
  EXPECT_EQ(engine.names, (std::vector<std::string>{"A"}));
  for (const auto& e : fs::directory_iterator(dir.path()))
    EXPECT_EQ(e.path().filename().string().find(".tmp"), std::string::npos) << e.path();
}

TEST_F(RunnerTest, SwitchesChooseTheGraphs) {
  struct Case {
    std::vector<std::string> tokens;
    bool wanted, all;
    std::vector<report::GraphKind> kinds;
    bool limits;
  } cases[] = {
      {{}, true, true, {}, false},
      {{"/NG"}, false, false, {}, false},
      {{"/ng", "/A"}, true, false, {report::GraphKind::Act}, false},
      {{"/AFIT", "/ff", "/P"}, true, false, {report::GraphKind::ActFit, report::GraphKind::Fore}, true},
      {{"/ALL", "/R"}, true, true, {}, false},
      {{"/AC", "/AF", "/AFF", "/AR", "/F", "/S", "/NL"},
       true,
       false,
       {report::GraphKind::ActCleanse, report::GraphKind::ActFore, report::GraphKind::ActFitFore,
        report::GraphKind::ActRes, report::GraphKind::FitFore},
       false},
  };
  for (const auto& c : cases) {
    auto s = RunnerSwitches::Parse(c.tokens);
    auto p = s.Preferences();
    std::string label = c.tokens.empty() ? "(none)" : c.tokens[0];
    EXPECT_EQ(s.graphs_wanted, c.wanted) << label;
    EXPECT_EQ(p.no_limits, !c.limits) << label;
    for (const auto& info : report::AllGraphs()) {
      bool expected = c.wanted && (c.all || std::find(c.kinds.begin(), c.kinds.end(), info.kind) != c.kinds.end());
      EXPECT_EQ(report::WantsGraph(p, info.kind), expected) << label << " " << info.file_suffix;
    }
  }
  EXPECT_TRUE(RunnerSwitches::Parse({"/S"}).status);
  EXPECT_TRUE(RunnerSwitches::Parse({"/nl"}).nl);

  MakeXlsx(dir / "g.xlsx", {{"S", {Header(), Row("A", MonthlySeries(24, 5))}}});
  ASSERT_TRUE(Run(dir / "g.xlsx", "S", {"/NG"}).finished);
  EXPECT_TRUE(reports->drawn.empty());
  EXPECT_FALSE(Logged("Generating Graphs "));
  ASSERT_TRUE(Run(dir / "g.xlsx", "S", {"/NG", "/A"}).finished);
  EXPECT_EQ(reports->drawn.size(), 1u);
  EXPECT_TRUE(Logged("Generating Graphs "));
}

TEST_F(RunnerTest, AMissingReportSkipsTheRowAndCancelEndsTheSheetWithoutAResult) {
  MakeXlsx(dir / "c.xlsx", {{"S", {Header(), Row("A", MonthlySeries(24, 6)), Row("B", MonthlySeries(24, 7)),
                                   Row("C", MonthlySeries(24, 8))}}});
  engine.cancel_at = "B";
  engine.no_details = {"A"};
  RunnerResult r = Run(dir / "c.xlsx", "S");
  EXPECT_TRUE(Logged(" DETAILS.HTM file was not found."));
  EXPECT_TRUE(Logged("There was an error running the Tessaly Engine"));
  EXPECT_FALSE(Logged("Writing Forecasts to Spreadsheet."));
  EXPECT_TRUE(r.canceled);
  EXPECT_FALSE(r.finished);
  EXPECT_EQ(engine.names, (std::vector<std::string>{"A", "B"}));
  EXPECT_TRUE(Logged("User clicked Cancel."));
  EXPECT_TRUE(Logged(" Outahere"));
  EXPECT_FALSE(fs::exists(dir / "tslyb.xlsx"));
}

TEST_F(RunnerTest, XlsInputAndADateCellRunLikeTheText) {
  auto v = MonthlySeries(12, 9);
  if (!MakeXls(dir / "old.xls", {{"Data", {Header("2001Mar", 12), Row("A", v)}}})) GTEST_SKIP() << "no python3-xlwt";
  RunnerResult r = Run(dir / "old.xls", "Data");
  ASSERT_TRUE(r.finished) << r.error;
  Workbook out;
  ASSERT_TRUE(ReadWorkbook(dir / "tslyb.xlsx", out).ok());
  EXPECT_EQ(out.sheets[0].grid.Text(1, 14), "2002Mar");
  EXPECT_EQ(out.sheets[0].grid.At(2, 14).number, v.back() + 1);

  // A real date in row 1, column 2 gives the year and month the same way.
  Grid g;
  g.SetNumber(1, 2, 36951, true);
  SheetLayout layout;
  std::string message;
  ASSERT_TRUE(ReadSheetLayout(g, layout, message));
  EXPECT_EQ(layout.year, 2001);
  EXPECT_EQ(layout.month, 3);
  EXPECT_EQ(PeriodHeading(2004, 12, 12), "2004Dec");
  EXPECT_EQ(PeriodHeading(2004, 3, 4), "2004/3");
}

}  // namespace
}  // namespace tessaly::spreadsheet
