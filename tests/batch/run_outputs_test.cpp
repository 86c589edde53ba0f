#include "batch/run_outputs.h"

#include <gtest/gtest.h>

#include "support/program_folder.h"
#include "support/small_disk.h"


namespace tessaly::batch {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

TEST(RunOutputs, SeriesReportsMoveUnderTheStemWithTheirNodes) {
  TempDir program, out;
  for (const char* f : {"DETAILS.HTM", "ADJUSTED.TXT", "EQUATION.TXT", "OUTCAST.TXT", "RHSIDE.TXT", "VERBAL.TXT"})
    WriteFile(program / f, std::string("new ") + f);
  // No STAT.HTM this time: the older target goes all the same and gets no node.
  WriteFile(out / "airlineSTAT.HTM", "old");
  WriteFile(out / "airlineequation.txt", "old, other case");
  ReportTree tree;
  RowFlags flags;
  AddSeriesNode(tree, "airline.asc");
  fs::path intervent_target;
  FileSeriesReports(program.path(), out.path(), "airline.asc", tree, flags, [&](const fs::path& p) {
    intervent_target = p;
    WriteFile(p, "<html>");
  });
  EXPECT_EQ(ReadFile(out / "airline.htm"), "new DETAILS.HTM");
  EXPECT_EQ(ReadFile(out / "AIRLINEADJUSTED.TXT"), "new ADJUSTED.TXT");
  EXPECT_EQ(ReadFile(out / "airlineEQUATION.TXT"), "new EQUATION.TXT");
  EXPECT_FALSE(fs::exists(out / "airlineequation.txt"));
  EXPECT_FALSE(fs::exists(out / "airlineSTAT.HTM"));
  EXPECT_FALSE(fs::exists(program / "DETAILS.HTM"));
  EXPECT_EQ(intervent_target, out / "airlineINTRVENT.HTM");
  EXPECT_EQ(tree.Display(),
            "airline.asc [airline.asc]\n"
            "..Reports [airline.ascRpts]\n"
            "....DETAILS.HTM [airline.ascR1]\n"
            "....Adjusted.txt [airline.ascR2]\n"
            "....Equation.txt [airline.ascR3]\n"
            "....Intrvent.htm [airline.ascR4]\n"
            "....Outcast.txt [airline.ascR5]\n"
            "....RHSide.txt [airline.ascR6]\n"
            "....Verbal.txt [airline.ascR8]\n");
  EXPECT_TRUE(flags.report[3]);
  EXPECT_FALSE(flags.report[6]);

  // Graph nodes follow what was drawn; earlier pictures of the stem go before drawing.
  WriteFile(out / "airlineact.jpg", "old");
  WriteFile(out / "airlinefore.jpg", "kept");
  ClearEarlierGraphs(out.path(), "airline");
  EXPECT_FALSE(fs::exists(out / "airlineact.jpg"));
  EXPECT_TRUE(fs::exists(out / "airlinefore.jpg"));
  std::array<bool, 9> drawn{};
  drawn[0] = drawn[8] = true;
  AddGraphNodes("airline.asc", drawn, tree, flags);
  EXPECT_TRUE(tree.Contains("airline.ascG1"));
  EXPECT_TRUE(tree.Contains("airline.ascG9"));
  EXPECT_FALSE(tree.Contains("airline.ascG2"));
  EXPECT_TRUE(flags.graph[8]);
}

TEST(RunOutputs, RunWideFilesForecastsAndLeftovers) {
  TempDir program, out;
  WriteFile(program / "SUMMAPE.TXT", "mape 1");
  WriteFile(program / "earlysig.csv", "early");
  CopyRunWideFiles(program.path(), out.path(), "sample");
  WriteFile(program / "SUMMAPE.TXT", "mape 1\r\nmape 2");
  CopyRunWideFiles(program.path(), out.path(), "sample");
  EXPECT_EQ(ReadFile(out / "sampleMAPE.TXT"), "mape 1\r\nmape 2");
  EXPECT_EQ(ReadFile(out / "sampleEARLY.TXT"), "early");
  EXPECT_TRUE(fs::exists(program / "SUMMAPE.TXT"));  // the engine keeps adding to its own

  EXPECT_EQ(CombinedForecastName("Sample.XML"), "CONSample.PRO");
  WriteFile(program / "TS50PRO.123", "f1\n2.5\n");
  FileForecasts(program.path(), out.path(), "airline", "Sample.XML");
  WriteFile(program / "TS50PRO.123", "f2\r\n3.5");
  FileForecasts(program.path(), out.path(), "nile", "Sample.XML");
  EXPECT_EQ(ReadFile(out / "airline.PRO"), "f1\n2.5\n");
  EXPECT_EQ(ReadFile(out / "CONSample.PRO"), "f1\r\n2.5\r\nf2\r\n3.5\r\n");

  for (const char* f : {"nile.STA", "NILE.rhs", "nile.RES", "nile.PRO", "other.PRO"}) WriteFile(program / f, "x");
  DeleteLeftovers(program.path(), "nile");
  EXPECT_FALSE(fs::exists(program / "NILE.rhs"));
  EXPECT_FALSE(fs::exists(program / "nile.PRO"));
  EXPECT_TRUE(fs::exists(program / "other.PRO"));
}

// Each filing step names the files it could not write: the output path a file, a
// read-only or a full disk (the program's folder elsewhere, so a move is a copy).
TEST(RunOutputs, FilesThatCannotBeWrittenAreNamed) {
  TempDir program, out;
  tessaly::testing::SmallDisk read_only(16 * 1024, true), full(8 * 1024);
  if (!full.Mounted()) GTEST_SKIP() << "a tmpfs of a few KiB cannot be mounted here: the disk cases are not run";
  WriteFile(out / "OUTPUT", "a file where the folder should be");
  WriteFile(full / "filler", std::string(6 * 1024, 'f'));
  for (const fs::path& target : {out / "OUTPUT", read_only.path(), full.path()}) {
    WriteFile(program / "DETAILS.HTM", std::string(20000, 'd'));
    WriteFile(program / "SUMMAPE.TXT", std::string(20000, 'm'));
    WriteFile(program / "TS50PRO.123", std::string(20000, '1'));
    ReportTree tree;
    RowFlags flags;
    AddSeriesNode(tree, "airline.asc");
    std::vector<std::string> lost = FileSeriesReports(program.path(), target, "airline.asc", tree, flags, {});
    for (auto part : {CopyRunWideFiles(program.path(), target, "sample"),
                      FileForecasts(program.path(), target, "airline", "Sample.XML")})
      lost.insert(lost.end(), part.begin(), part.end());
    EXPECT_EQ(lost, (std::vector<std::string>{"airline.htm", "sampleMAPE.TXT", "airline.PRO", "CONSample.PRO"}))
        << target;
  }
}

}  // namespace
}  // namespace tessaly::batch
