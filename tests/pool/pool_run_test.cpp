// Pooling runs through the real engine in a copy of the program folder: the stack as written,
// the F-test against one worked out from the engine's own fit statistics, the report tree.
#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "batch/batch_file.h"
#include "platform/numfmt.h"
#include "platform/textfile.h"
#include "pool/pool_headless.h"
#include "support/messages.h"
#include "support/program_folder.h"

namespace tessaly::pool {
namespace {

using tessaly::testing::ProgramFolderCopy;
using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;

// An AR(1) series around `mean`: x(t) = mean + phi (x(t-1) - mean) + e, e ~ N(0, sd), seeded.
std::vector<double> Ar1(unsigned seed, int n, double mean, double phi, double sd) {
  uint64_t state = seed * 2654435761u + 1;
  auto uniform = [&] {
    state = state * 6364136223846793005ULL + 1442695040888963407ULL;
    return ((state >> 11) + 0.5) / 9007199254740992.0;
  };
  std::vector<double> x;
  double level = mean;
  for (int t = 0; t < n; ++t) {
    double e = std::sqrt(-2 * std::log(uniform())) * std::cos(6.283185307179586 * uniform()) * sd;
    level = mean + phi * (level - mean) + e;
    x.push_back(std::round(level * 100) / 100);
  }
  return x;
}

class PoolRunTest : public ::testing::Test {
 protected:
  // Writes an ASC file of monthly series (the output last) and adds it to the project.
  void Asc(const std::string& name, const std::vector<std::vector<double>>& series) {
    int n = static_cast<int>(series.front().size());
    const size_t inputs = series.size() - 1;
    std::vector<std::string> lines{"0", "0", "0", std::to_string(series.size()), "12", "2015", "1",
                                   std::to_string(n), inputs ? "6" : "0", "0", "6"};
    for (size_t s = 0; s + 1 < series.size(); ++s) lines.push_back("PRICE" + std::to_string(s + 1));
    lines.push_back(name.substr(0, name.size() - 4));
    for (size_t s = 0; s < series.size(); ++s) lines.push_back(s + 1 == series.size() ? "0" : "1");
    for (const auto& values : series)
      for (double v : values) lines.push_back(platform::NumberToText(v));
    // The inputs' future: their last value held.
    for (size_t s = 0; s < inputs; ++s) lines.insert(lines.end(), 6, platform::NumberToText(series[s].back()));
    EXPECT_TRUE(platform::WriteAllLines(work / name, lines));
    project.Add_File(name, 0, 0, "00/00/00");
  }
  HeadlessPool Pool(const std::vector<std::string>& chosen, int preset) {
    project.SetInDirectory(work.path().string());
    project.SetOutDirectory(work.path().string());
    project.SetBatchName("STORES.xml");
    for (const auto& name : chosen) before[name] = ReadFile(work / name);
    ModelChoice choice;
    choice.preset = preset;
    return RunPoolHeadless(project, chosen, choice, PoolOptions{program.path(), true, false}, nullptr, &tree);
  }
  // The error sum of squares in a STAT.HTM page.
  double Sse(const std::string& stem) {
    std::string page = ReadFile(work / "OUTPUT" / (stem + "STAT.HTM"));
    std::string key = "<td>Error sum of squares</td><td>";
    size_t at = page.find(key);
    EXPECT_NE(at, std::string::npos) << stem;
    return at == std::string::npos ? 0 : platform::Val(page.substr(at + key.size()));
  }
  // The figure at the end of the report line that starts with `label`.
  double Figure(const std::vector<std::string>& lines, const std::string& label) {
    for (const auto& l : lines)
      if (l.rfind(label, 0) == 0) return platform::Val(l.substr(l.find_last_of(' ') + 1));
    ADD_FAILURE() << label;
    return 0;
  }
  // F from the engine's own fit statistics of the same run.
  double FFromStats(const std::vector<std::string>& stems, double numpar, double total) {
    double sosa = 0;
    for (size_t i = 0; i + 1 < stems.size(); ++i) sosa += Sse(stems[i]);
    double k = static_cast<double>(stems.size() - 1);
    return ((Sse(stems.back()) - sosa) / k) / (sosa / (total - k * numpar));
  }
  void ExpectSourcesUnchanged() {
    for (const auto& [name, bytes] : before) EXPECT_EQ(ReadFile(work / name), bytes) << name;
  }

  ProgramFolderCopy program;
  TempDir work;
  batch::cBatchFile project{program.path()};
  batch::ReportTree tree;
  tessaly::testing::RecordedMessages host;
  std::map<std::string, std::string> before;
};

TEST_F(PoolRunTest, LikeSeriesStackEndToEndAndPoolingIsNotRejected) {
  std::vector<std::vector<double>> data{Ar1(1, 24, 100, 0.5, 4), Ar1(2, 24, 100, 0.5, 4), Ar1(3, 24, 100, 0.5, 4)};
  Asc("S1.ASC", {data[0]});
  Asc("S2.ASC", {data[1]});
  Asc("S3.ASC", {data[2]});
  HeadlessPool run = Pool({"S1.ASC", "S2.ASC", "S3.ASC"}, 2);
  ASSERT_EQ(run.problem, "");
  ASSERT_EQ(run.outcome.end, PoolEnd::Finished) << host.Joined();

  // The stack: 72 observations, file 1, file 2, file 3 end to end.
  auto stack = platform::ReadAllLines(work / "TOTALPOOL.ASC").value();
  ASSERT_EQ(stack.size(), 13u + 72u);
  EXPECT_EQ(stack[7], "72");
  EXPECT_EQ(stack[11], "TOTALPOOL");
  for (int f = 0; f < 3; ++f)
    for (int i = 0; i < 24; ++i) EXPECT_EQ(stack[13 + f * 24 + i], platform::NumberToText(data[f][i]));

  // The report against the engine's own fits: F worked out from the four STAT.HTM pages.
  auto lines = platform::ReadAllLines(work / "OUTPUT" / "STORESANALYSIS.TXT").value();
  EXPECT_EQ(ReadFile(work / "OUTPUT" / "ANALYSIS.TXT"), ReadFile(work / "OUTPUT" / "STORESANALYSIS.TXT"));
  double numpar = Figure(lines, "NUMPAR");
  EXPECT_EQ(Figure(lines, "N (NOB"), 24);
  EXPECT_EQ(Figure(lines, "K(Number"), 3);
  EXPECT_GE(numpar, 2);  // the constant and the AR term
  double f = Figure(lines, "f - Test");
  const Poolability& p = *run.outcome.poolability;
  EXPECT_NEAR(p.f, f, 1e-9 * std::max(1.0, f));
  // One model for all fits no better than a model for each.
  ASSERT_GT(p.sosc, 0);
  EXPECT_NEAR(f, FFromStats({"S1", "S2", "S3", "TOTALPOOL"}, numpar, 72), 1e-3 * f);
  ASSERT_TRUE(p.p_value);
  EXPECT_GT(*p.p_value, 0.05) << "F = " << f;
  EXPECT_EQ(lines[5].substr(0, 11), "     S1.ASC");

  // The tree: the series, then the pooling rows in their order.
  std::vector<std::string> pooling;
  for (const auto& node : tree.Nodes())
    if (node.kind == batch::NodeKind::Other) pooling.push_back(node.key + " " + node.text);
  ASSERT_GE(pooling.size(), 4u);
  EXPECT_EQ(pooling.front(), "S8 POOL COEFFICIENCIES");
  EXPECT_EQ(pooling[pooling.size() - 3], "S11 ANALYSIS");
  EXPECT_EQ(pooling[pooling.size() - 2], "S12 FTABLE1");
  EXPECT_EQ(pooling.back(), "S13 FTABLE2");
  EXPECT_TRUE(tree.Contains("S1.ASC") && tree.Contains("TOTALPOOL.ASC"));
  // The stack was fitted as three groups of 24.
  EXPECT_NE(ReadFile(work / "OUTPUT" / "POOLCOEF.TXT").find(",3,24\r\n"), std::string::npos);
  EXPECT_TRUE(fs::exists(work / "OUTPUT" / "FTable1.html"));

  // The closing message, the markers gone, nothing of the sources changed.
  EXPECT_TRUE(host.Starting("If you would like to review the \"POOL COEFFICIENCIES\" in Excel for expediency, use "));
  for (const char* gone : {"POOLPARAMS.RWF", "POOL.QVX", "GROUPLST.QVX"}) EXPECT_FALSE(fs::exists(program / gone));
  ExpectSourcesUnchanged();
}

TEST_F(PoolRunTest, UnlikeSeriesRejectPoolingAndTwoSeriesFilesStackLikeBlocks) {
  // Two causal files: the input (series 1) and sales whose level differs by store.
  auto in1 = Ar1(11, 30, 50, 0.3, 2), in2 = Ar1(12, 30, 50, 0.3, 2);
  auto out1 = Ar1(13, 30, 100, 0.6, 3), out2 = Ar1(14, 30, 400, -0.4, 3);
  Asc("STORE1.ASC", {in1, out1});
  Asc("STORE2.ASC", {in2, out2});
  HeadlessPool run = Pool({"STORE1.ASC", "STORE2.ASC"}, 52);
  ASSERT_EQ(run.problem, "");
  ASSERT_EQ(run.outcome.end, PoolEnd::Finished) << host.Joined();

  // File 1 series 1, file 2 series 1, file 1 series 2, file 2 series 2.
  auto stack = platform::ReadAllLines(work / "TOTALPOOL.ASC").value();
  ASSERT_EQ(stack.size(), 11u + 4u + 120u);
  EXPECT_EQ(stack[7], "60");
  EXPECT_EQ((std::vector<std::string>{stack[11], stack[12], stack[13], stack[14]}),
            (std::vector<std::string>{"PRICE1", "TOTALPOOL", "0", "0"}));
  std::vector<double> order;
  for (const auto* block : {&in1, &in2, &out1, &out2}) order.insert(order.end(), block->begin(), block->end());
  for (size_t i = 0; i < order.size(); ++i) EXPECT_EQ(stack[15 + i], platform::NumberToText(order[i])) << i;

  auto lines = platform::ReadAllLines(work / "OUTPUT" / "STORESANALYSIS.TXT").value();
  const Poolability& p = *run.outcome.poolability;
  ASSERT_GT(p.sosc, 0);
  EXPECT_NEAR(p.f, FFromStats({"STORE1", "STORE2", "TOTALPOOL"}, Figure(lines, "NUMPAR"), 60), 1e-3 * p.f);
  ASSERT_TRUE(p.p_value);
  EXPECT_LT(*p.p_value, 0.01) << "F = " << p.f;
  EXPECT_EQ(lines.back(), "* FTable2 (Maximum of 20 Numerators and 200 Denomintors Degrees of Freedom)");
  ExpectSourcesUnchanged();
}

TEST_F(PoolRunTest, ASeriesTheEngineRefusesCountsZeroAndLeavesTheRunIncomplete) {
  auto a = Ar1(21, 24, 100, 0.5, 4), c = Ar1(23, 24, 100, 0.5, 4);
  Asc("A.ASC", {a});
  Asc("C.ASC", {c});
  // Holding back as many values as there are observations passes the front-end's checks but
  // not the engine's; the stack takes the file's first 24 values.
  Asc("B.ASC", {Ar1(22, 48, 100, 0.5, 4)});
  auto b = platform::ReadAllLines(work / "B.ASC").value();
  b[7] = "24";
  b[9] = "24";
  b[10] = "24";
  EXPECT_TRUE(platform::WriteAllLines(work / "B.ASC", b));
  HeadlessPool run = Pool({"A.ASC", "B.ASC", "C.ASC"}, 2);
  EXPECT_EQ(run.outcome.end, PoolEnd::Incomplete);
  const PoolabilityInputs& kept = run.outcome.inputs;
  EXPECT_EQ(kept.series_name, (std::vector<std::string>{"A.ASC", "", "C.ASC", "TOTALPOOL.ASC"}));
  EXPECT_EQ(kept.series_error[1], 0);
  EXPECT_NEAR(run.outcome.poolability->sosa, kept.series_error[0] + kept.series_error[2], 1e-9);
  auto lines = platform::ReadAllLines(work / "OUTPUT" / "STORESANALYSIS.TXT").value();
  EXPECT_EQ(lines[6], std::string(60, ' ') + "0");
  EXPECT_TRUE(fs::exists(work / "OUTPUT" / "Berr.html"));
  EXPECT_TRUE(host.Starting("Please see the following for reasons the indicated series could not be processed"));
  ExpectSourcesUnchanged();
}

}  // namespace
}  // namespace tessaly::pool
