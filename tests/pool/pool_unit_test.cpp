// The stack's layout, the F-test report and the number of groups, without the engine.
#include <gtest/gtest.h>

#include "platform/textfile.h"
#include "pool/ftest.h"
#include "pool/group_data.h"
#include "pool/pool_stack.h"
#include "support/program_folder.h"

namespace tessaly::pool {
namespace {

using tessaly::testing::TempDir;

// An ASC file of `series` series of `n` monthly observations; value = base + series*100 + i.
fs::path WriteAsc(const TempDir& dir, const std::string& name, int series, int n, int base) {
  std::vector<std::string> lines{"0", "0", "0", std::to_string(series), "12", "2001", "1", std::to_string(n),
                                 "0", "0", "0"};
  for (int s = 1; s < series; ++s) lines.push_back("IN" + std::to_string(s) + name.substr(0, 1));
  lines.push_back(name.substr(0, name.size() - 4));
  for (int s = 0; s < series; ++s) lines.push_back(s + 1 == series ? "0" : "1");
  for (int s = 0; s < series; ++s)
    for (int i = 0; i < n; ++i) lines.push_back(std::to_string(base + s * 100 + i));
  EXPECT_TRUE(platform::WriteAllLines(dir / name, lines));
  return dir / name;
}

std::vector<std::string> Stack(const TempDir& dir, int series, int files, int n) {
  std::vector<fs::path> paths;
  for (int f = 0; f < files; ++f) paths.push_back(WriteAsc(dir, "F" + std::to_string(f + 1) + ".ASC", series, n, 1000 * (f + 1)));
  auto shape = ReadStackShape(paths.front());
  EXPECT_TRUE(shape);
  return TotalPoolLines({7, 0, 0}, *shape, ReadPooledData(paths, *shape));
}

TEST(PoolStack, ThreeSeriesFilesAreStackedFileByFileAfterTheFirstBlock) {
  TempDir dir;
  auto lines = Stack(dir, 3, 2, 2);
  std::vector<std::string> want{"7", "0", "0", "3", "12", "2001", "1", "4", "0", "0", "0", "IN1F", "IN2F",
                                "TOTALPOOL", "0", "0", "0",
                                // first block: file 1 series 1, file 2 series 1
                                "1000", "1001", "2000", "2001",
                                // second block: file 1 series 2 and 3, then file 2's
                                "1100", "1101", "1200", "1201", "2100", "2101", "2200", "2201"};
  EXPECT_EQ(lines, want);
}

TEST(PoolStack, AShortFileGivesWhatItHasAndOldOutputsAreListed) {
  TempDir dir;
  WriteAsc(dir, "A.ASC", 1, 5, 10);
  auto lines = platform::ReadAllLines(dir / "A.ASC").value();
  lines.resize(lines.size() - 2);
  EXPECT_TRUE(platform::WriteAllLines(dir / "B.ASC", lines));
  StackShape shape = *ReadStackShape(dir / "A.ASC");
  auto pooled = ReadPooledData({dir / "A.ASC", dir / "B.ASC"}, shape);
  EXPECT_EQ(pooled[0].size(), 5u);
  EXPECT_EQ(pooled[1].size(), 3u);
  EXPECT_FALSE(ReadStackShape(dir / "missing.ASC"));
  EXPECT_EQ(std::string(OldStackOutputs().front()), "TOTALPOOLactfit.jpg");
}

// The report's figure lines from "Total(SOSA)" on, blank lines left out.
std::vector<std::string> Figures(const std::string& sosb, const std::string& sosc, const std::string& ms1,
                                 const std::string& f) {
  auto pad = [](int n) { return std::string(static_cast<size_t>(n), ' '); };
  return {pad(5) + "Total(SOSA)" + pad(44) + "30",
          pad(5) + "TOTALPOOL.ASC(SOSB)" + pad(36) + sosb,
          "Differential(SOSC) = SOSB-SOSA" + pad(30) + sosc,
          "N (NOB in each series)" + pad(38) + "30",
          "K(Number of series in group)" + pad(32) + "2",
          "NUMPAR(parameters in Model)" + pad(33) + "3",
          "MS1(SOSC/K)" + pad(49) + ms1,
          "MS2(SOSA/(N*K - K*NUMPAR))" + pad(34) + "0.555555555555556",
          "f - Test(MS1/MS2)" + pad(43) + f,
          "With Degrees of Freedom(K, (N*K - K*NUMPAR))" + pad(16) + "(2, 54)",
          "Refer to a F - Table* to determine significance",
          "* FTable1 (Maximum of 10 Numerators and 100 Denomintors Degrees of Freedom)",
          "* FTable2 (Maximum of 20 Numerators and 200 Denomintors Degrees of Freedom)"};
}

TEST(PoolFTest, ReportLinesAndFigures) {
  struct Case {
    double pooled;
    std::vector<std::string> figures;
  };
  // The worked example; and a pooled sum no larger, where MS1 and F show 0 and MS2 stays.
  std::vector<Case> cases{{50, Figures("50", "20", "10", "18")}, {25, Figures("25", "-5", "0", "0")}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.pooled);
    PoolabilityInputs in{{"A.ASC", "B.ASC", "TOTALPOOL.ASC"}, {10, 20, c.pooled}, 60, 3};
    auto lines = AnalysisLines(in, ComputePoolability(in));
    ASSERT_EQ(lines.size(), 35u);
    EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 5),
              (std::vector<std::string>{"Calculation of f-Test", "", "", "Error/Residual Sum of Squares", ""}));
    EXPECT_EQ(lines[5], std::string(5, ' ') + "A.ASC" + std::string(50, ' ') + "10");
    EXPECT_EQ(lines[6], std::string(5, ' ') + "B.ASC" + std::string(50, ' ') + "20");
    EXPECT_EQ((std::vector<std::string>{lines[7], lines[8], lines[10], lines[11], lines[13], lines[14]}),
              std::vector<std::string>(6, ""));
    std::vector<std::string> figures;
    for (size_t i = 7; i < lines.size(); ++i)
      if (!lines[i].empty()) figures.push_back(lines[i]);
    EXPECT_EQ(figures, c.figures);
  }
  // F(2, 54) = 18 lies far out in the tail; no F when the pooled sum is no larger.
  Poolability example = ComputePoolability({{"A", "B", "T"}, {10, 20, 50}, 60, 3});
  ASSERT_TRUE(example.p_value);
  EXPECT_LT(*example.p_value, 1e-5);
  EXPECT_GT(*example.p_value, 0);
  EXPECT_FALSE(ComputePoolability({{"A", "B", "T"}, {10, 20, 25}, 60, 3}).p_value);
  Poolability near = ComputePoolability({{"A", "B", "T"}, {10, 20, 30.5}, 60, 3});
  EXPECT_GT(*near.p_value, 0.5);
}

TEST(PoolFTest, FailedPassesLongNamesAndNoDegreesOfFreedom) {
  std::string long_name(56, 'X');
  PoolabilityInputs in{{long_name, "", "TOTALPOOL.ASC"}, {5, 0, 9}, 20, 10};
  Poolability r = ComputePoolability(in);
  EXPECT_EQ(r.denominator_df, 0);
  EXPECT_EQ(r.ms2, 0);
  EXPECT_FALSE(r.p_value);
  auto lines = AnalysisLines(in, r);
  // The long name's line is left out; the failed pass shows an empty name and 0.
  EXPECT_EQ(lines[5], std::string(5, ' ') + std::string(55, ' ') + "0");
  EXPECT_EQ(lines[6], "");
  EXPECT_EQ(AnalysisFileName("STORES.xml"), "STORESANALYSIS.TXT");
}

TEST(PoolGroups, RangeAndEvenDivision) {
  struct Case {
    const char* text;
    long observations;
    bool accepted;
    std::string message;
  };
  const std::string range = "The range for number of groups is from 2 to 2000";
  const std::string ok =
      "The number of groups you indicated have been validated and will be used in processing.\r\n"
      "The program will now return you to the Rules Wizard so you may edit/review the other options";
  std::vector<Case> cases{
      {"7", 30, false,
       "The number of observations in the series, 30, cannot be divided evenly by the number of groups, 7.\r\n"
       "Either enter a valid number of Groups or select \"Cancel\". "},
      {"5", 30, true, ok},
      {"2001", 4002, false, range},
      {"2000", 4000, true, ok},
      {"1", 30, false, range},
      {"", 30, false, range},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    GroupCountCheck check = CheckGroupCount(c.text, c.observations);
    EXPECT_EQ(check.accepted, c.accepted);
    EXPECT_EQ(check.message, c.message);
  }
}

}  // namespace
}  // namespace tessaly::pool
