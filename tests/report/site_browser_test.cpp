// The link-tree site as a person meets it: opened in a real browser (headless Chromium),
// the tree must be drawn and a click on a link must show the report in the right pane.
#include <gtest/gtest.h>

#include <regex>

#include "airline.h"
#include "platform/textfile.h"
#include "report/forms/graph_drawer.h"
#include "report/site.h"
#include "support/program_folder.h"

namespace tessaly::report {
namespace {

using tessaly::testing::ProgramFolderCopy;
using tessaly::testing::RunCommand;
using tessaly::testing::TempDir;

std::string FindChromium() {
  for (const char* name : {"chromium", "chromium-browser"}) {
    std::string out;
    if (RunCommand(std::string("command -v ") + name, &out) == 0 && !out.empty()) return name;
  }
  return {};
}

TEST(SiteInBrowser, TreeIsDrawnAndAClickShowsTheReport) {
  const std::string chromium = FindChromium();
  if (chromium.empty()) GTEST_SKIP() << "chromium is not installed: the site is not checked in a browser";

  ProgramFolderCopy program;
  TempDir work;
  const fs::path out = work / "OUTPUT";
  fs::create_directories(out);
  GraphInput north = tessaly::testing::AirlineInput();
  north.series_name = "NORTH";
  ASSERT_TRUE(DrawSeriesGraphs(north, GraphPreferences{}, out).Any());
  EXPECT_TRUE(platform::WriteAllLines(out / "NORTH.htm",
                          {"<html><body><h1>Details of NORTH</h1><p>Seasonal model.</p></body></html>"}));
  EXPECT_TRUE(platform::WriteAllLines(out / "SOUTHerr.html", {"<html><body>SOUTH failed</body></html>"}));
  const std::vector<std::string> datasets = {"/in/NORTH.asc", "/in/SOUTH.asc"};
  ASSERT_TRUE(WriteLinkTreeSite("/projects/Regions.xml", datasets, out, program.path()));
  ASSERT_TRUE(WriteDisplayHtml(out, "/projects/Regions.xml", datasets));
  // The harness page opens the site in a frame, clicks as a person would and writes what it
  // saw into its own text, which the browser prints. Reading the frames needs the browser to
  // treat the local files as one origin.
  fs::copy_file(tessaly::testing::SourcePath("tests/report/data/site_harness.html"), out / "harness.html");

  const std::string flags =
      " --headless --no-sandbox --disable-gpu --no-first-run --disable-background-networking"
      " --disable-component-update --disable-sync --allow-file-access-from-files"
      " --virtual-time-budget=5000 --window-size=1200,700 --hide-scrollbars";
  TempDir profile;
  std::string dom;
  RunCommand("timeout 120 " + chromium + flags + " --user-data-dir='" + profile.path().string() +
                 "' --dump-dom 'file://" + (out / "harness.html").string() + "' 2>/dev/null",
             &dom);
  std::smatch result;
  ASSERT_TRUE(std::regex_search(dom, result, std::regex("<pre id=\"result\">([^<]*)</pre>")))
      << dom.substr(0, 2000);
  const std::string seen = result[1];
  // The root, and per dataset its folder, "Details" and nine graph rows.
  EXPECT_NE(seen.find("ROWS 23"), std::string::npos) << seen;
  EXPECT_NE(seen.find("DETAILS Details of NORTHSeasonal model."), std::string::npos) << seen;
  EXPECT_NE(seen.find("PICTURE 1000x600"), std::string::npos) << seen;
  EXPECT_NE(seen.find("HIDDEN 10"), std::string::npos) << seen;
  EXPECT_NE(seen.find("OVERVIEW Regions 2"), std::string::npos) << seen;
  EXPECT_NE(seen.find("END"), std::string::npos) << seen;

  // A picture of the site after the clicks, kept for a person to look at.
  const fs::path shots = fs::path(TESSALY_TEST_ARTIFACTS);
  fs::create_directories(shots);
  TempDir profile2;
  RunCommand("timeout 120 " + chromium + flags + " --user-data-dir='" + profile2.path().string() +
             "' --screenshot='" + (shots / "report_site.png").string() + "' 'file://" +
             (out / "harness.html").string() + "' >/dev/null 2>&1");
  EXPECT_TRUE(fs::exists(shots / "report_site.png"));
}

}  // namespace
}  // namespace tessaly::report
