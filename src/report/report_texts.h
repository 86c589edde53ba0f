#pragma once
// The texts of the reports subsystem: messages, fixed lines of the link-tree site, and
// the words of the intervention page.
#include <array>

namespace tessaly::report::texts {

// The link tree. The message names one log file and the program writes another; the
// two names differ by one letter and stay so.
inline constexpr const char* kLinkTreeSourceMissing =
    "Error with LinkTree: see C:\\error.log for details.";
inline constexpr const char* kLinkTreeSourceMissingLog =
    "Error: source directory for link tree not found.";
inline constexpr const char* kLinkTreeErrorLog = "errors.log";
inline constexpr const char* kLinkTreeTitle = "Link Tree";

// Writing a report file over an existing one.
inline constexpr const char* kFileExists =
    "Warning: the file you have chosen already exists. Overwrite?";
inline constexpr const char* kFileExistsTitle = "File Exists";
inline constexpr const char* kFileCreated = "File successfully created.";

// The browser pane.
inline constexpr const char* kBrowserError = "Browser error #";
inline constexpr const char* kBrowserTitle = "Browser";

// The home of the tree-menu script: it ships beside the site, and its head documents the
// calls the menu file makes.
inline constexpr const char* kTreeScriptHome =
    "// treeclass.js beside this file (Tessaly tree menu: gFld, gLnk, insFld, insDoc)";

inline constexpr const char* kMenuHead[] = {
    "<!--",
    "This frameset document includes the Treeview script.",
    "Tree menu script: Tessaly tree menu (treeclass.js), written for Tessaly reports.",
    "-->",
    "<!-- NO CHANGES PAST THIS LINE -->",
    "<html><head>",
    "<!-- Code for browser detection -->",
    "<script src=\"browserdetect.js\"></script>",
    "<!-- Infrastructure code for the tree -->",
    "<script src=\"treeclass.js\"></script>",
    "<!-- Execution of the code that actually builds the specific tree.",
    "The variable foldersTree creates its structure with calls to",
    "gFld, insFld, and insDoc -->",
};

inline constexpr const char* kMenuBody[] = {
    "<body topmargin=16 marginheight=16>",
    "<!-- The tree menu script, treeclass.js and browserdetect.js, is part of Tessaly.  -->",
    "<!-- It draws the tree of this site; the icons are in the gifs folder.           -->",
    "<table border=0 style=\"position:absolute; top:0; left:0\"><tr><td>",
    "<a style=\"font-size:7pt; text-decoration:none; color:silver\" href=\"treeclass.js\" "
    "target=\"_blank\">JavaScript Tree Menu</a>",
    "</td></tr></table>",
    "<!-- Build the browser's objects and display default view of the",
    "tree. -->",
    "<script>initializeDocument()</script><noscript>",
    "A tree for site navigation will open here if you enable",
    "JavaScript in your browser. </noscript></html>",
};

// The intervention page.
inline constexpr std::array<const char*, 5> kInterventionTypes = {
    "Pulse", "Level Shift", "Seasonal Pulse", "Trend", "Dynamic Pulse"};

}  // namespace tessaly::report::texts
