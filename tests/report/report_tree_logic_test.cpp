#include "report/report_tree_logic.h"

#include <gtest/gtest.h>

#include <deque>
#include <memory>

#include "support/messages.h"
#include "support/program_folder.h"

namespace tessaly::report {
namespace {

using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

// The desktop's side, recorded: each page shown and each step dialog with its buttons.
class FakeViewer : public ReportViewer {
 public:
  struct Dialog {
    std::string title;
    bool left, right;
  };
  void navigate(const fs::path& file) override { shown.push_back(file.filename().string()); }
  StepChoice ShowStepDialog(const std::string& title, bool left, bool right) override {
    dialogs.push_back({title, left, right});
    if (choices.empty()) return StepChoice::Cancel;
    StepChoice c = choices.front();
    choices.pop_front();
    return c;
  }
  void ShowWalkPosition(const std::string& dataset, int number, int count) override {
    positions.push_back(dataset + " " + std::to_string(number) + "/" + std::to_string(count));
  }
  std::vector<std::string> shown, positions;
  std::vector<Dialog> dialogs;
  std::deque<StepChoice> choices;
};

void Touch(const fs::path& folder, std::initializer_list<std::string> names) {
  for (const auto& n : names) WriteFile(folder / n, "x");
}

std::vector<std::string> ChildTexts(const batch::ReportTree& tree, const std::string& key) {
  std::vector<std::string> out;
  for (const auto* n : tree.Children(key)) out.push_back(n->text);
  return out;
}

const batch::ReportNode& Node(const batch::ReportTree& tree, const std::string& key) {
  const batch::ReportNode* n = tree.Find(key);
  if (!n) throw std::runtime_error("no node " + key);
  return *n;
}

class ReportTreeLogic : public ::testing::Test {
 protected:
  void SetUp() override {
    Touch(out.path(), {"NORTH.htm", "NORTHADJUSTED.TXT", "NORTHSTAT.HTM", "NORTHINTRVENT.HTM",
                       "NORTHact.jpg", "NORTHactfit.jpg", "NORTHactfore.jpg", "NORTHres.jpg", "NORTHactres.jpg",
                       "SOUTHerr.html", "east.htm", "eastact.jpg", "eastactfore.jpg",
                       "RegionsMAPE.TXT", "RegionsPARAMETER.TXT", "display.html"});
    context.output_path = out.path();
    context.batch_name = "Regions.xml";
    context.asc_files = {"NORTH.asc", "SOUTH.ASC", "east.asc"};
    PopulateTree(tree, flags, context.asc_files, out.path(), context.batch_name, false);
  }
  ClickAction Route(const std::string& key) { return RouteClick(tree, Node(tree, key), context); }

  TempDir out;
  ClickContext context;
  batch::ReportTree tree;
  batch::RowFlags flags;
};

TEST_F(ReportTreeLogic, PopulateTreeShowsWhatTheFolderHolds) {
  EXPECT_EQ(ChildTexts(tree, "NORTH.ascRpts"),
            (std::vector<std::string>{"DETAILS.HTM", "Adjusted.txt", "Intrvent.htm", "Stat.htm"}));
  EXPECT_EQ(ChildTexts(tree, "NORTH.ascGphs"),
            (std::vector<std::string>{"Actuals/Fit", "Actuals/Forecasts", "Residuals", "Actuals/Residuals",
                                      "Actuals"}));
  // A failed series still gets its node, with only the headings.
  EXPECT_EQ(ChildTexts(tree, "SOUTH.ASC"), (std::vector<std::string>{"Reports", "Graphs"}));
  EXPECT_TRUE(ChildTexts(tree, "SOUTH.ASCRpts").empty());
  EXPECT_EQ(ChildTexts(tree, "east.ascGphs"),
            (std::vector<std::string>{"Actuals/Forecasts", "Actuals"}));
  // The "All" rows follow the rows some series filled; summaries the files that exist.
  EXPECT_EQ(ChildTexts(tree, batch::kAllGraphsKey),
            (std::vector<std::string>{"All Actuals/Fit", "All Actuals/Forecasts", "All Residuals",
                                      "All Actuals/Residuals", "All Actuals"}));
  EXPECT_EQ(ChildTexts(tree, batch::kAllReportsKey),
            (std::vector<std::string>{"All Details", "All Adjusted", "All Stat"}));
  EXPECT_EQ(ChildTexts(tree, batch::kSummaryKey),
            (std::vector<std::string>{"Summary MAPE", "Parameters"}));
  EXPECT_TRUE(flags.graph[0] && flags.graph[8] && !flags.graph[2]);
}

TEST_F(ReportTreeLogic, NoAllRowsForOneFileOrWithoutGraphs) {
  PopulateTree(tree, flags, {"NORTH.asc"}, out.path(), "Regions.xml", false);
  EXPECT_FALSE(tree.Contains(batch::kAllGraphsKey));
  EXPECT_FALSE(tree.Contains(batch::kSummaryKey));
  EXPECT_EQ(ChildTexts(tree, "").size(), 1u);
  PopulateTree(tree, flags, {"NORTH.asc", "SOUTH.asc"}, out.path(), "Regions.xml", false);
  EXPECT_TRUE(tree.Contains(batch::kAllGraphsKey));
  PopulateTree(tree, flags, context.asc_files, out.path(), "Regions.xml", true);
  EXPECT_FALSE(tree.Contains(batch::kAllReportsKey));
  EXPECT_FALSE(tree.Contains(batch::kSummaryKey));
  PopulateTree(tree, flags, {}, out.path(), "Regions.xml", false);
  EXPECT_TRUE(tree.Empty());
  EXPECT_FALSE(flags.graph[0]);
}

TEST_F(ReportTreeLogic, ClicksShowTheRightFile) {
  FakeViewer viewer;
  for (const char* heading : {"NORTH.ascRpts", "NORTH.ascGphs", batch::kAllGraphsKey,
                              batch::kAllReportsKey, batch::kSummaryKey}) {
    EXPECT_EQ(Route(heading).kind, ClickKind::Heading) << heading;
    OnTreeClick(tree, Node(tree, heading), context, viewer);
  }
  EXPECT_TRUE(viewer.shown.empty());  // a heading changes nothing on the right

  const std::vector<std::pair<std::string, std::string>> cases = {
      {"NORTH.asc", "display.html"},
      {"SOUTH.ASC", "SOUTHerr.html"},
      {"NORTH.ascR1", "NORTH.htm"},
      {"NORTH.ascR2", "NORTHADJUSTED.TXT"},
      {"NORTH.ascR4", "NORTHINTRVENT.HTM"},
      {"NORTH.ascR7", "NORTHSTAT.HTM"},
      {"NORTH.ascG6", "NORTHres.jpg"},
      {"east.ascG9", "eastact.jpg"},
      {"S6", "RegionsMAPE.TXT"},
      {"S8", "RegionsPARAMETER.TXT"},
  };
  for (const auto& [key, file] : cases) {
    viewer.shown.clear();
    OnTreeClick(tree, Node(tree, key), context, viewer);
    ASSERT_EQ(viewer.shown.size(), 1u) << key;
    EXPECT_EQ(viewer.shown[0], file) << key;
  }
  EXPECT_FALSE(tree.Contains("NORTH.ascR3"));  // no file, no node
}

TEST_F(ReportTreeLogic, PoolingAndEngineRows) {
  Touch(out.path(), {"POOLCOEF.TXT", "RegionsANALYSIS.TXT", "FTable1.html"});
  tree.Add({"S8pool", "POOL COEFFICIENCIES", "", batch::NodeKind::Other, "S8", ""});
  tree.Add({"S11", "ANALYSIS", "", batch::NodeKind::Other, "S11", ""});
  tree.Add({"S12", "FTABLE1", "", batch::NodeKind::Other, "S12", ""});
  tree.Add({"NORTH.ascEng", "Engine.txt", "NORTH.ascRpts", batch::NodeKind::Report, "", "NORTH.asc"});
  EXPECT_EQ(Route("S8pool").file.filename(), "POOLCOEF.TXT");
  EXPECT_EQ(Route("S11").file.filename(), "RegionsANALYSIS.TXT");
  EXPECT_EQ(Route("S12").file.filename(), "FTable1.html");
  EXPECT_EQ(Route("NORTH.ascEng").file.filename(), "NORTHENGINE.TXT");
}

TEST_F(ReportTreeLogic, AllGraphsWalkStepsThroughTheSeries) {
  FakeViewer viewer;
  viewer.choices = {StepChoice::Right, StepChoice::Right};
  OnTreeClick(tree, Node(tree, "AG2"), context, viewer);
  // SOUTH has no picture: passed over without a dialog.
  EXPECT_EQ(viewer.shown, (std::vector<std::string>{"NORTHactfore.jpg", "eastactfore.jpg"}));
  EXPECT_EQ(viewer.positions, (std::vector<std::string>{"NORTH 1/3", "east 3/3"}));
  ASSERT_EQ(viewer.dialogs.size(), 2u);
  EXPECT_EQ(viewer.dialogs[0].title, "Select Graph");
  EXPECT_FALSE(viewer.dialogs[0].left);  // first stop
  EXPECT_TRUE(viewer.dialogs[0].right);
  EXPECT_TRUE(viewer.dialogs[1].left);
  EXPECT_FALSE(viewer.dialogs[1].right);  // last stop

  // "<===" at the first stop stays there; closing with neither button moves on; a step
  // back onto a stop without its file passes it over forwards again; Cancel ends.
  FakeViewer more;
  more.choices = {StepChoice::Left, StepChoice::Closed, StepChoice::Left, StepChoice::Cancel};
  OnTreeClick(tree, Node(tree, "AG9"), context, more);
  EXPECT_EQ(more.shown, (std::vector<std::string>{"NORTHact.jpg", "NORTHact.jpg", "eastact.jpg",
                                                  "eastact.jpg"}));
  EXPECT_EQ(more.dialogs.size(), 4u);
}

TEST_F(ReportTreeLogic, ActualsFitWalkCarriesOverIntoActualsForecasts) {
  Touch(out.path(), {"SOUTHactfit.jpg", "SOUTHactfore.jpg", "eastactfit.jpg"});
  FakeViewer viewer;
  viewer.choices = {StepChoice::Right, StepChoice::Right, StepChoice::Left, StepChoice::Left,
                    StepChoice::Left, StepChoice::Cancel};
  OnTreeClick(tree, Node(tree, "AG1"), context, viewer);
  EXPECT_EQ(viewer.shown,
            (std::vector<std::string>{"NORTHactfit.jpg", "SOUTHactfit.jpg", "eastactfit.jpg",
                                      "SOUTHactfore.jpg", "NORTHactfore.jpg", "NORTHactfore.jpg"}));
  for (const auto& d : viewer.dialogs) EXPECT_EQ(d.title, "Select Graph");
}

TEST_F(ReportTreeLogic, AllReportsWalkEndsAtThePooledStack) {
  Touch(out.path(), {"TOTALPOOL.htm"});
  FakeViewer viewer;
  viewer.choices = {StepChoice::Right, StepChoice::Right, StepChoice::Right};
  OnTreeClick(tree, Node(tree, "AR1"), context, viewer);
  EXPECT_EQ(viewer.shown, (std::vector<std::string>{"NORTH.htm", "east.htm", "TOTALPOOL.htm"}));
  EXPECT_EQ(viewer.dialogs[0].title, "Select Report");
  EXPECT_FALSE(viewer.dialogs[2].right);
}

TEST_F(ReportTreeLogic, ParentWalkInAnAggregationRun) {
  Touch(out.path(), {"GROUPTact.jpg", "C1act.jpg", "OTHERact.jpg", "C3act.jpg"});
  context.aggregation_run = true;
  context.chosen = {"C1.ASC", "C2.ASC", "C3.asc"};
  context.replacements_chosen = true;
  context.child_replacement = {"-999999", "/data/OTHER.asc", "-999999"};
  EXPECT_EQ(WalkStops(context, false), (std::vector<std::string>{"GROUPT", "C1", "OTHER", "C3"}));
  FakeViewer viewer;
  viewer.choices = {StepChoice::Right, StepChoice::Right, StepChoice::Left, StepChoice::Left,
                    StepChoice::Right, StepChoice::Right, StepChoice::Right, StepChoice::Right};
  OnTreeClick(tree, Node(tree, "AG9"), context, viewer);
  EXPECT_EQ(viewer.shown,
            (std::vector<std::string>{"GROUPTact.jpg", "C1act.jpg", "OTHERact.jpg", "C1act.jpg",
                                      "GROUPTact.jpg", "C1act.jpg", "OTHERact.jpg", "C3act.jpg"}));
  EXPECT_FALSE(viewer.dialogs[0].left);
  EXPECT_FALSE(viewer.dialogs.back().right);
  // A project of one file walks the same way, without "TOTALPOOL".
  ClickContext single = context;
  single.aggregation_run = false;
  single.asc_files = {"NORTH.asc"};
  EXPECT_TRUE(IsParentWalk(single));
  EXPECT_EQ(WalkStops(single, true).front(), "GROUPT");
}

TEST(BrowserError, TextAndMessage) {
  tessaly::testing::RecordedMessages host;
  ShowBrowserError(404, "Not found");
  ASSERT_EQ(host->shown.size(), 1u);
  EXPECT_EQ(host->shown[0].text, "Browser error #404: Not found");
}

}  // namespace
}  // namespace tessaly::report
