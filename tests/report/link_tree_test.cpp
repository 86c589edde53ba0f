#include "report/link_tree.h"

#include <gtest/gtest.h>

#include <memory>

#include "platform/textfile.h"
#include "report/site.h"
#include "support/messages.h"
#include "support/program_folder.h"

namespace tessaly::report {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

// A program folder holding the support files of the site.
void ShipSupportFiles(const fs::path& folder) {
  WriteFile(folder / "treeclass.js", "// tree\n");
  WriteFile(folder / "browserdetect.js", "// detect\n");
  fs::create_directories(folder / "gifs");
  WriteFile(folder / "gifs" / "doc.gif", "GIF89a");
}

std::vector<std::string> Lines(const fs::path& file) {
  return platform::ReadAllLines(file).value_or(std::vector<std::string>{});
}

TEST(LinkTree, CursorMovesAndUnsetLinksAreNoOps) {
  cLinkTree tree;
  tree.StepUp();  // empty tree: nothing happens
  EXPECT_EQ(tree.CurrentCaption(), "");
  tree.addSibling("a.html", "A");
  tree.addSibling("b.html", "B");
  EXPECT_EQ(tree.CurrentCaption(), "A");  // addSibling leaves the cursor
  tree.addChild("a1.html", "A1");
  EXPECT_EQ(tree.CurrentCaption(), "A1");  // addChild moves it
  tree.addSibling("a2.html", "A2");
  tree.StepForward();
  EXPECT_EQ(tree.CurrentURL(), "a2.html");
  tree.StepForward();  // no next sibling
  EXPECT_EQ(tree.CurrentURL(), "a2.html");
  tree.StepDown();  // no child
  EXPECT_EQ(tree.CurrentURL(), "a2.html");
  tree.StepBack();
  tree.StepUp();
  EXPECT_EQ(tree.CurrentCaption(), "A");
  EXPECT_EQ(tree.Cursor()->ChildCount, 2);
  tree.StepUp();  // root level: stays
  tree.StepBack();
  EXPECT_EQ(tree.CurrentCaption(), "A");
  tree.StepForward();
  EXPECT_EQ(tree.CurrentCaption(), "B");
  tree.Top();
  EXPECT_EQ(tree.CurrentCaption(), "A");
  tree.SetCurrentCaption("First");
  EXPECT_EQ(tree.TopNode()->LinkCaption, "First");
  EXPECT_EQ(tree.Display(), "First-a.html\r\n..A1-a1.html\r\n..A2-a2.html\r\nB-b.html\r\n");
  EXPECT_EQ(tree.TopNode()->firstChild()->Level(), 2);
}

TEST(LinkTree, DeleteRemovesTheSubtreeAndMovesTheCursor) {
  cLinkTree tree;
  tree.addSibling("a", "A");
  tree.addChild("a1", "A1");
  tree.addSibling("a2", "A2");
  tree.addSibling("a3", "A3");
  tree.StepUp();
  tree.addSibling("b", "B");
  tree.StepDown();  // A1
  tree.StepForward();  // A2
  tree.Delete();
  EXPECT_EQ(tree.CurrentCaption(), "A3");  // the next sibling
  EXPECT_EQ(tree.TopNode()->ChildCount, 2);
  EXPECT_EQ(tree.Cursor()->prevSibling()->LinkCaption, "A1");
  tree.Delete();
  EXPECT_EQ(tree.CurrentCaption(), "A1");  // the previous one
  EXPECT_EQ(tree.Cursor()->nextSibling(), nullptr);
  tree.Delete();
  EXPECT_EQ(tree.CurrentCaption(), "A");  // the parent
  EXPECT_EQ(tree.Cursor()->firstChild(), nullptr);
  EXPECT_EQ(tree.Cursor()->ChildCount, 0);
  tree.Delete();  // the first root-level node: the next one becomes the top
  EXPECT_EQ(tree.TopNode()->LinkCaption, "B");
  EXPECT_EQ(tree.TopNode()->prevSibling(), nullptr);
  tree.Delete();
  EXPECT_TRUE(tree.Empty());
  EXPECT_EQ(tree.Display(), "");
}

TEST(LinkTree, BuilderMakesOneNodePerDatasetWithDetailsAndGraphRows) {
  cLinkTree tree;
  BuildLinkTree(tree, {"/data/in/SALES.ASC", "north", "x.asc.bak"});
  const std::string display = tree.Display();
  const std::string expected_sales =
      "SALES-display.html\r\n..Details-SALES.htm\r\n..Actuals/Forecasts-SALESactfit.jpg\r\n"
      "..Actuals/Forecasts-SALESactfore.jpg\r\n..Fitted/Forecasts-SALESfitfore.jpg\r\n"
      "..Actuals/Fitted/Forecasts-SALESactfitfore.jpg\r\n"
      "..Actuals/Cleansed-SALESactcleanse.jpg\r\n..Residuals-SALESres.jpg\r\n"
      "..Actuals/Residuals-SALESactres.jpg\r\n..Forecasts-SALESfore.jpg\r\n"
      "..Actuals-SALESact.jpg\r\n";
  EXPECT_EQ(display.substr(0, expected_sales.size()), expected_sales);
  // A name without ".asc" stands as it is.
  EXPECT_NE(display.find("\r\nnorth-display.html\r\n..Details-north.htm\r\n"), std::string::npos);
  EXPECT_NE(display.find("\r\nx.asc.bak-display.html\r\n"), std::string::npos);
  EXPECT_EQ(tree.TopNode()->ChildCount, 10);
  EXPECT_EQ(LinkTreeBaseName("/p/Monthly.XML"), "Monthly");
  EXPECT_EQ(LinkTreeBaseName("plain"), "plain");
}

TEST(LinkTree, ScriptFileLevelsAndQuotes) {
  TempDir program, out;
  ShipSupportFiles(program.path());
  cLinkTree tree;
  tree.addSibling("display.html", "SALES");
  tree.addChild("SALES.htm", "Details");
  tree.addSibling("sub.html", "Deeper");
  tree.StepForward();
  tree.addChild("leaf.htm", "Leaf \"quoted\"");
  tree.StepUp();
  tree.StepUp();
  tree.addSibling("lonely.htm", "Lonely");
  ASSERT_TRUE(tree.writeJavascript(program.path(), out.path() / "OUTPUT", "proj", "My Project",
                                   "gifs\\", true));
  EXPECT_EQ(Lines(out.path() / "OUTPUT" / "projtreemenu.js"),
            (std::vector<std::string>{
                "// You can find instructions for this file here:",
                "// treeclass.js beside this file (Tessaly tree menu: gFld, gLnk, insFld, insDoc)",
                "USETEXTLINKS = 1",
                "STARTALLOPEN = 1",
                "ICONPATH = 'gifs/'",
                "foldersTree = gFld(\"<b>My Project</b>\", \"display.html\")",
                "aux1 = insFld(foldersTree, gFld(\"SALES\", \"display.html\"))",
                "insDoc(aux1, gLnk(\"R\", \"Details\", \"SALES.htm\"))",
                "aux2 = insFld(aux1, gFld(\"Deeper\", \"sub.html\"))",
                "insDoc(aux2, gLnk(\"R\", \"Leaf \\\"quoted\\\"\", \"leaf.htm\"))",
                "insDoc(foldersTree, gLnk(\"R\", \"Lonely\", \"lonely.htm\"))",
            }));
  // Lines end in CR LF.
  EXPECT_NE(ReadFile(out.path() / "OUTPUT" / "projtreemenu.js").find("= 1\r\n"), std::string::npos);
  EXPECT_EQ(Lines(out.path() / "OUTPUT" / "proj.html"),
            (std::vector<std::string>{"<html><Frameset cols=\"18%, *\" >",
                                      "<Frame src=\"projmenu.html\" NAME=tree>",
                                      "<frame src=\"display.html\" NAME=display></frameset></html>"}));
  const auto menu = Lines(out.path() / "OUTPUT" / "projmenu.html");
  ASSERT_GT(menu.size(), 20u);
  EXPECT_EQ(menu[1], "This frameset document includes the Treeview script.");
  EXPECT_NE(std::find(menu.begin(), menu.end(), "<script src=\"projtreemenu.js\"></script></head>"),
            menu.end());
  EXPECT_EQ(menu.back(), "JavaScript in your browser. </noscript></html>");
  // The support files came along.
  EXPECT_TRUE(fs::exists(out.path() / "OUTPUT" / "treeclass.js"));
  EXPECT_TRUE(fs::exists(out.path() / "OUTPUT" / "browserdetect.js"));
  EXPECT_TRUE(fs::exists(out.path() / "OUTPUT" / "gifs" / "doc.gif"));
}

TEST(LinkTree, EmptyTreeAndEmptyIconPath) {
  TempDir program, out;
  ShipSupportFiles(program.path());
  cLinkTree tree;
  ASSERT_TRUE(tree.writeJavascript(program.path(), out.path(), "empty", "empty", "", false));
  EXPECT_EQ(Lines(out / "emptytreemenu.js"),
            (std::vector<std::string>{"// You can find instructions for this file here:",
                                      "// treeclass.js beside this file (Tessaly tree menu: gFld, "
                                      "gLnk, insFld, insDoc)",
                                      "USETEXTLINKS = 1", "STARTALLOPEN = 0", "ICONPATH = ''",
                                      "foldersTree = gFld(\"<b>empty</b>\", \"display.html\")"}));
}

TEST(LinkTree, MissingSourceFolderIsToldAndLogged) {
  tessaly::testing::RecordedMessages host;
  TempDir out, logs;
  cLinkTree tree;
  tree.SetErrorLogFolder(logs.path());
  tree.addSibling("display.html", "A");
  EXPECT_FALSE(tree.writeJavascript(out / "missing", out / "OUTPUT", "p", "p", "gifs\\", true));
  ASSERT_EQ(host->shown.size(), 1u);
  EXPECT_EQ(host->shown[0].text, "Error with LinkTree: see C:\\error.log for details.");
  EXPECT_EQ(Lines(logs / "errors.log"),
            std::vector<std::string>{"Error: source directory for link tree not found."});
  EXPECT_FALSE(fs::exists(out / "OUTPUT"));
}

TEST(LinkTree, WholeSiteFromAProject) {
  TempDir program, out;
  ShipSupportFiles(program.path());
  ASSERT_TRUE(WriteLinkTreeSite("/work/Regions.xml", {"/in/NORTH.asc", "/in/SOUTH.ASC"},
                                out.path(), program.path()));
  const auto js = Lines(out / "Regionstreemenu.js");
  ASSERT_EQ(js.size(), 6u + 2 * 11);
  EXPECT_EQ(js[5], "foldersTree = gFld(\"<b>Regions</b>\", \"display.html\")");
  EXPECT_EQ(js[6], "aux1 = insFld(foldersTree, gFld(\"NORTH\", \"display.html\"))");
  EXPECT_EQ(js[8], "insDoc(aux1, gLnk(\"R\", \"Actuals/Forecasts\", \"NORTHactfit.jpg\"))");
  EXPECT_EQ(js[17], "aux1 = insFld(foldersTree, gFld(\"SOUTH\", \"display.html\"))");
  EXPECT_TRUE(fs::exists(out / "Regions.html"));
  EXPECT_TRUE(fs::exists(out / "Regionsmenu.html"));
}

TEST(DisplayPage, OverviewOfTheProject) {
  TempDir out;
  for (const char* name : {"NORTH.htm", "NORTHADJUSTED.TXT", "NORTHactfitfore.jpg", "NORTHres.jpg",
                           "SOUTHerr.html", "R&D.htm", "RegionsMAPE.TXT", "CONRegions.PRO"})
    WriteFile(out / name, "x");
  WriteFile(out / "SOUTHerr.html",
            "<html><title>SOUTH.asc error report</title>\r\n<center><h1><u>Error Report for "
            "SOUTH.asc</u></h1><br><br>\r\nThe number of observations is less than 3 < 5.\r\n"
            "</center></html>\r\n");
  ASSERT_TRUE(WriteDisplayHtml(out.path(), "/p/Regions.xml",
                               {"NORTH.asc", "SOUTH.asc", "WEST.asc", "R&D.asc", "EAST.asc"},
                               {{"EAST.ASC", "The asc file is empty."}}));
  const std::string page = ReadFile(out / "display.html");
  EXPECT_NE(page.find("<h1>Regions</h1>"), std::string::npos);
  // Every dataset counted once: 2 + 1 + 1 + 1 = 5.
  EXPECT_NE(page.find("5 datasets</span> &middot; <span class=\"ok\">2 finished</span> &middot; <span "
                      "class=\"failed\">1 failed</span> &middot; <span class=\"failed\">1 rejected</span> "
                      "&middot; <span>1 not run</span>"),
            std::string::npos)
      << page;
  EXPECT_NE(page.find("<tr id=\"EAST\"><td><a name=\"EAST\"></a><b>EAST</b></td>\r\n<td class=\"failed\" colspan=\"4\">Rejected<div "
                      "class=\"why\">The asc file is empty.</div></td>\r\n</tr>"),
            std::string::npos)
      << page;
  // Links only to what exists, by the names they exist under.
  EXPECT_NE(page.find("<a href=\"NORTH.htm\">Details</a>"), std::string::npos);
  EXPECT_NE(page.find("<a href=\"NORTHADJUSTED.TXT\">Adjusted.txt</a>"), std::string::npos);
  EXPECT_NE(page.find("<a href=\"NORTHres.jpg\">Residuals</a>"), std::string::npos);
  EXPECT_EQ(page.find("NORTHact.jpg"), std::string::npos);
  EXPECT_NE(page.find("src=\"NORTHactfitfore.jpg\""), std::string::npos);
  EXPECT_NE(page.find("<a href=\"SOUTHerr.html\">Why it failed</a>"), std::string::npos);
  EXPECT_NE(page.find("<div class=\"why\">The number of observations is less than 3 &lt; 5.</div>"),
            std::string::npos);
  EXPECT_NE(page.find("Not run"), std::string::npos);  // WEST: nothing in the folder
  EXPECT_NE(page.find("1 not run"), std::string::npos);
  EXPECT_NE(page.find("<b>R&amp;D</b>"), std::string::npos);
  EXPECT_NE(page.find("<a href=\"RegionsMAPE.TXT\">Summary MAPE</a>"), std::string::npos);
  EXPECT_NE(page.find("<a href=\"CONRegions.PRO\">All forecasts</a>"), std::string::npos);
  // The series node falls back to this page: each dataset has its anchor.
  EXPECT_NE(page.find("<tr id=\"NORTH\">"), std::string::npos);
}

TEST(LinkTree, ReportFileAsksBeforeOverwriting) {
  tessaly::testing::RecordedMessages host;
  TempDir dir;
  WriteFile(dir / "r.txt", "old\r\n");
  host->answers.push_back(platform::mb::No);
  EXPECT_FALSE(WriteReportFile(dir / "r.txt", {"new"}));
  EXPECT_EQ(ReadFile(dir / "r.txt"), "old\r\n");
  ASSERT_EQ(host->shown.size(), 1u);
  EXPECT_EQ(host->shown[0].title, "File Exists");
  EXPECT_EQ(host->shown[0].type & platform::mb::DefaultButton2, platform::mb::DefaultButton2);
  host->answers.push_back(platform::mb::Yes);
  EXPECT_TRUE(WriteReportFile(dir / "r.txt", {"new"}));
  EXPECT_EQ(ReadFile(dir / "r.txt"), "new\r\n");
  EXPECT_EQ(host->shown.back().text, "File successfully created.");
}

}  // namespace
}  // namespace tessaly::report
