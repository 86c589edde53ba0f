#include "batch/report_tree.h"

#include <gtest/gtest.h>

#include "support/program_folder.h"

namespace tessaly::batch {
namespace {

using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

TEST(ReportTree, SeriesFamilyKeysTextsAndOrder) {
  ReportTree tree;
  ASSERT_TRUE(AddSeriesNode(tree, "AIRLINE.ASC"));
  ASSERT_TRUE(AddReportsNode(tree, "AIRLINE.ASC"));
  ASSERT_TRUE(AddReportRow(tree, "AIRLINE.ASC", kReportRows[0]));
  ASSERT_TRUE(AddReportRow(tree, "AIRLINE.ASC", kReportRows[6]));
  ASSERT_TRUE(AddGraphsNode(tree, "AIRLINE.ASC"));
  ASSERT_TRUE(AddGraphRow(tree, "AIRLINE.ASC", kGraphRows[8]));
  EXPECT_EQ(tree.Display(),
            "AIRLINE.ASC [AIRLINE.ASC]\n"
            "..Reports [AIRLINE.ASCRpts]\n"
            "....DETAILS.HTM [AIRLINE.ASCR1]\n"
            "....Stat.htm [AIRLINE.ASCR7]\n"
            "..Graphs [AIRLINE.ASCGphs]\n"
            "....Actuals [AIRLINE.ASCG9]\n");
  EXPECT_EQ(tree.Find("AIRLINE.ASCG9")->kind, NodeKind::Graph);
  EXPECT_EQ(tree.Find("AIRLINE.ASCR7")->series, "AIRLINE.ASC");

  // A key taken twice or a missing parent leaves the tree as it was.
  EXPECT_FALSE(AddSeriesNode(tree, "AIRLINE.ASC"));
  EXPECT_FALSE(AddReportRow(tree, "NILE.ASC", kReportRows[0]));
  EXPECT_EQ(tree.Size(), 6u);

  // Removing a series takes its whole family.
  ASSERT_TRUE(AddSeriesNode(tree, "NILE.ASC"));
  EXPECT_TRUE(tree.Remove("AIRLINE.ASC"));
  EXPECT_EQ(tree.Display(), "NILE.ASC [NILE.ASC]\n");
  EXPECT_FALSE(tree.Remove("AIRLINE.ASC"));
}

TEST(ReportTree, AllNodesFollowFlagsAndSummaryFiles) {
  TempDir out;
  RowFlags flags;
  ReportTree tree;
  // No flags, no summary files: two bare headings and no "Summary Reports".
  AddAllNodes(tree, flags, out.path(), "sample");
  EXPECT_EQ(tree.Display(), "All Reports By Type [AllRpts]\nAll Graphs By Type [AllGphs]\n");

  tree.Clear();
  flags.report[0] = flags.report[3] = flags.report[7] = true;  // R4 has no "All" row
  flags.graph[1] = true;
  WriteFile(out / "sampleMAPE.TXT", "x");
  WriteFile(out / "sampleearly.txt", "x");  // found without regard to case
  AddAllNodes(tree, flags, out.path(), "sample");
  EXPECT_EQ(tree.Display(),
            "All Reports By Type [AllRpts]\n"
            "..All Details [AR1]\n"
            "..All Verbal [AR8]\n"
            "All Graphs By Type [AllGphs]\n"
            "..All Actuals/Forecasts [AG2]\n"
            "Summary Reports [Summary]\n"
            "..Early Signal [S1]\n"
            "..Summary MAPE [S6]\n");
}

TEST(ReportTree, RowsAreFoundByTextWithoutRegardToCase) {
  EXPECT_STREQ(FindReportRowByText("ADJUSTED.TXT")->id, "R2");
  EXPECT_STREQ(FindReportRowByText("Details.htm")->suffix, ".htm");
  EXPECT_STREQ(FindGraphRowByText("actuals/fitted/forecasts")->suffix, "actfitfore.jpg");
  EXPECT_STREQ(FindSummaryRowByText("PARAMETERS")->suffix, "PARAMETER.TXT");
  EXPECT_EQ(FindReportRowByText("Engine.txt"), nullptr);
}

}  // namespace
}  // namespace tessaly::batch
