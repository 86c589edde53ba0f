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
  platform::WriteAllLines(dir / name, lines);
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
  platform::WriteAllLines(dir / "B.ASC", lines);
  StackShape shape = *ReadStackShape(dir / "A.ASC");
  auto pooled = ReadPooledData({dir / "A.ASC", dir / "B.ASC"}, shape);
  EXPECT_EQ(pooled[0].size(), 5u);
  EXPECT_EQ(pooled[1].size(), 3u);
  EXPECT_FALSE(ReadStackShape(dir / "missing.ASC"));
  EXPECT_EQ(std::string(OldStackOutputs().front()), "TOTALPOOLactfit.jpg");
}

struct FCase {
  const char* what;
  std::vector<std::string> names;
  std::vector<double> errors;
  double total, numpar;
  std::vector<std::string> expected_tail;  // from the "Total(SOSA)" line on, blank lines left out
};

TEST(PoolFTest, ReportLinesAndFigures) {
  const std::string b5(5, ' ');
  std::vector<FCase> cases{
      {"the worked example", {"A.ASC", "B.ASC", "TOTALPOOL.ASC"}, {10, 20, 50}, 60, 3,
       {b5 + "Total(SOSA)" + std::string(44, ' ') + "30", b5 + "TOTALPOOL.ASC(SOSB)" + std::string(36, ' ') + "50",
        "Differential(SOSC) = SOSB-SOSA" + std::string(30, ' ') + "20",
        "N (NOB in each series)" + std::string(38, ' ') + "30",
        "K(Number of series in group)" + std::string(32, ' ') + "2",
        "NUMPAR(parameters in Model)" + std::string(33, ' ') + "3", "MS1(SOSC/K)" + std::string(49, ' ') + "10",
        "MS2(SOSA/(N*K - K*NUMPAR))" + std::string(34, ' ') + "0.555555555555556",
        "f - Test(MS1/MS2)" + std::string(43, ' ') + "18",
        "With Degrees of Freedom(K, (N*K - K*NUMPAR))" + std::string(16, ' ') + "(2, 54)"}},
      {"a pooled sum no larger", {"A.ASC", "B.ASC", "TOTALPOOL.ASC"}, {10, 20, 25}, 60, 3,
       {b5 + "Total(SOSA)" + std::string(44, ' ') + "30", b5 + "TOTALPOOL.ASC(SOSB)" + std::string(36, ' ') + "25",
        "Differential(SOSC) = SOSB-SOSA" + std::string(30, ' ') + "-5",
        "N (NOB in each series)" + std::string(38, ' ') + "30",
        "K(Number of series in group)" + std::string(32, ' ') + "2",
        "NUMPAR(parameters in Model)" + std::string(33, ' ') + "3", "MS1(SOSC/K)" + std::string(49, ' ') + "0",
        "MS2(SOSA/(N*K - K*NUMPAR))" + std::string(34, ' ') + "0.555555555555556",
        "f - Test(MS1/MS2)" + std::string(43, ' ') + "0",
        "With Degrees of Freedom(K, (N*K - K*NUMPAR))" + std::string(16, ' ') + "(2, 54)"}},
  };
  for (const FCase& c : cases) {
    SCOPED_TRACE(c.what);
    PoolabilityInputs in{c.names, c.errors, c.total, c.numpar};
    Poolability r = ComputePoolability(in);
    auto lines = AnalysisLines(in, r);
    ASSERT_GE(lines.size(), 8u);
    EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 5),
              (std::vector<std::string>{"Calculation of f-Test", "", "", "Error/Residual Sum of Squares", ""}));
    EXPECT_EQ(lines[5], b5 + "A.ASC" + std::string(50, ' ') + "10");
    EXPECT_EQ(lines[6], b5 + "B.ASC" + std::string(50, ' ') + "20");
    std::vector<std::string> tail;
    for (size_t i = 7; i < lines.size(); ++i)
      if (!lines[i].empty()) tail.push_back(lines[i]);
    tail.resize(c.expected_tail.size());
    EXPECT_EQ(tail, c.expected_tail);
    EXPECT_EQ(lines.back(), "* FTable2 (Maximum of 20 Numerators and 200 Denomintors Degrees of Freedom)");
    EXPECT_EQ(lines[lines.size() - 4], "Refer to a F - Table* to determine significance");
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
