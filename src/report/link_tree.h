#pragma once
// The link tree: a first-child, next-sibling tree of links with a cursor, written out as
// a small browsable site (a frameset with the tree at the left and the reports at the
// right) that any browser can read without the program.
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/textfile.h"

namespace tessaly::report {

namespace fs = std::filesystem;

class cLinkTree;

// One node. A node owns its first child and its next sibling; the other links are plain
// references. A new node has all four links unset.
class cBranch {
 public:
  cBranch(std::string url, std::string caption)
      : LinkURL(std::move(url)), LinkCaption(std::move(caption)) {}
  cBranch(const cBranch&) = delete;
  cBranch& operator=(const cBranch&) = delete;

  std::string LinkURL;
  std::string LinkCaption;
  int16_t ChildCount = 0;

  cBranch* nextSibling() const { return next_.get(); }
  cBranch* prevSibling() const { return prev_; }
  cBranch* parent() const { return parent_; }
  cBranch* firstChild() const { return first_child_.get(); }

  // Nesting level: 1 at the root level, one more per parent.
  int Level() const;

  // Removes the node with all that hangs under it, unsetting the links that led to it.
  void removeNode();

  // Writes the tree-menu calls of this node, its children, and every node after it.
  void writeFile(const fs::path& basePath, platform::TextWriter& stream) const;

 private:
  friend class cLinkTree;
  std::unique_ptr<cBranch> next_;
  std::unique_ptr<cBranch> first_child_;
  cBranch* prev_ = nullptr;
  cBranch* parent_ = nullptr;
  cLinkTree* tree_ = nullptr;  // the tree whose root list holds a root-level node
};

class cLinkTree {
 public:
  cLinkTree() = default;
  ~cLinkTree();
  cLinkTree(const cLinkTree&) = delete;
  cLinkTree& operator=(const cLinkTree&) = delete;

  // Pass through to the node under the cursor ("" when the tree is empty).
  std::string CurrentURL() const;
  std::string CurrentCaption() const;
  void SetCurrentURL(const std::string& url);
  void SetCurrentCaption(const std::string& caption);

  // Cursor moves. Moving onto an unset link leaves the cursor where it is.
  void Top();
  void StepForward();
  void StepBack();
  void StepUp();
  void StepDown();

  // Appends a node after the cursor's last sibling; the cursor stays (on an empty tree the
  // new node becomes the first and the cursor goes to it).
  void addSibling(const std::string& url, const std::string& caption);
  // Appends a node after the last child of the cursor's node and moves the cursor onto it.
  void addChild(const std::string& url, const std::string& caption);
  // Removes the node under the cursor; the cursor moves to the next sibling, else the
  // previous one, else the parent.
  void Delete();

  // One line per node, indented by ".." per level below the root, "caption-URL", each
  // line ended with CR LF. For tracing.
  std::string Display() const;

  // Writes <name>treemenu.js, <name>.html and <name>menu.html into targetFolder after the
  // support-file copy. False when the site could not be written.
  [[nodiscard]] bool writeJavascript(const fs::path& sourceFolder, const fs::path& targetFolder,
                       const std::string& name, const std::string& title,
                       const std::string& iconPath, bool startAllOpen);

  // The support files (browserdetect.js, treeclass.js and the icon folder) copied from the
  // source folder; makes sure the target folder and its icon folder exist.
  [[nodiscard]] bool CopySupportFiles(const fs::path& sourceFolder, const fs::path& targetFolder,
                        const std::string& iconFolder);

  cBranch* TopNode() const { return root_.get(); }
  cBranch* Cursor() const { return cursor_; }
  bool Empty() const { return root_ == nullptr; }

  // Where the note of a missing source folder is written; the program's folder unless set.
  void SetErrorLogFolder(const fs::path& folder) { error_log_folder_ = folder; }

 private:
  friend class cBranch;
  std::unique_ptr<cBranch> root_;
  cBranch* cursor_ = nullptr;
  fs::path error_log_folder_;
};

// The names of the support files that ship beside the program.
inline constexpr const char* kBrowserDetectScript = "browserdetect.js";
inline constexpr const char* kTreeClassScript = "treeclass.js";
inline constexpr const char* kIconFolder = "gifs";

}  // namespace tessaly::report
