#pragma once
// The site a run leaves in its OUTPUT folder: the link tree over every dataset's reports
// and graphs (<name>.html, <name>menu.html, <name>treemenu.js and their support files),
// and display.html, the overview that opens in the right pane.
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "report/link_tree.h"

namespace tessaly::report {

namespace fs = std::filesystem;

// The site's base name: the project's file name less a closing ".xml" (any case).
std::string LinkTreeBaseName(const std::string& project_file);
// A dataset's name in the tree: its file name less a closing ".asc" (any case).
std::string DatasetName(const std::string& asc_file);

// The sentence an error page (<dataset>err.html) gives as the failure's reason.
std::string ErrorPageReason(const fs::path& page);

// Fills the tree: per dataset a node on display.html, with "Details" and the graph rows
// under it. The graph rows stand whether or not a picture was drawn.
void BuildLinkTree(cLinkTree& tree, const std::vector<std::string>& asc_files);

// The builder at the end of a run: fills a tree from the project's ASC files and writes
// the site into the output folder, the support files copied from the program's folder.
// False when the site could not be written whole.
[[nodiscard]] bool WriteLinkTreeSite(const std::string& project_file, const std::vector<std::string>& asc_files,
                       const fs::path& output_folder, const fs::path& program_folder);

// display.html in the output folder: the project at a glance, each dataset with its
// status (finished, failed with a link to its error page, rejected by the run's checks with
// their reason, or not run) and links to the reports and graphs that exist, then the
// run-wide summaries. `rejected` maps an ASC file's name, in capitals, to the reason the
// run's checks gave. False when not written.
[[nodiscard]] bool WriteDisplayHtml(const fs::path& output_folder, const std::string& project_file,
                      const std::vector<std::string>& asc_files,
                      const std::map<std::string, std::string>& rejected = {});

// Writes a report file the user named: an existing file is overwritten only when the
// user says Yes ("File Exists", No the default); success is told.
[[nodiscard]] bool WriteReportFile(const fs::path& file, const std::vector<std::string>& lines);

}  // namespace tessaly::report
