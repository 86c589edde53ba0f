#include "report/link_tree.h"

#include <system_error>

#include "platform/dialogs.h"
#include "platform/paths.h"
#include "report/report_texts.h"

namespace tessaly::report {

namespace {

// Captions and addresses go into double-quoted script strings.
std::string ScriptText(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    if (c == '\\' || c == '"') out += '\\';
    out += c;
  }
  return out;
}

void WriteNode(const cBranch& node, platform::TextWriter& stream) {
  const int level = node.Level();
  const std::string caption = ScriptText(node.LinkCaption);
  const std::string url = ScriptText(node.LinkURL);
  const std::string holder = level <= 1 ? "foldersTree" : "aux" + std::to_string(level - 1);
  if (node.firstChild()) {
    stream.Line("aux" + std::to_string(level) + " = insFld(" + holder + ", gFld(\"" + caption +
                "\", \"" + url + "\"))");
  } else {
    stream.Line("insDoc(" + holder + ", gLnk(\"R\", \"" + caption + "\", \"" + url + "\"))");
  }
}

}  // namespace

int cBranch::Level() const {
  int level = 1;
  for (const cBranch* p = parent_; p; p = p->parent_) ++level;
  return level;
}

void cBranch::removeNode() {
  std::unique_ptr<cBranch>* slot = nullptr;
  if (prev_) slot = &prev_->next_;
  else if (parent_) slot = &parent_->first_child_;
  else if (tree_ && tree_->root_.get() == this) slot = &tree_->root_;
  if (!slot) return;  // a node in no tree: nothing holds it
  if (parent_) --parent_->ChildCount;
  std::unique_ptr<cBranch> self = std::move(*slot);
  if (next_) next_->prev_ = prev_;
  *slot = std::move(next_);
  prev_ = nullptr;
  parent_ = nullptr;
  // `self` goes here, and with it everything under the node.
}

void cBranch::writeFile(const fs::path& basePath, platform::TextWriter& stream) const {
  for (const cBranch* node = this; node; node = node->nextSibling()) {
    WriteNode(*node, stream);
    if (node->firstChild()) node->firstChild()->writeFile(basePath, stream);
  }
}

cLinkTree::~cLinkTree() {
  // Freed from the top, one root-level node at a time, so no long chain of owners
  // unwinds at once.
  while (root_) root_->removeNode();
}

std::string cLinkTree::CurrentURL() const { return cursor_ ? cursor_->LinkURL : std::string(); }
std::string cLinkTree::CurrentCaption() const {
  return cursor_ ? cursor_->LinkCaption : std::string();
}
void cLinkTree::SetCurrentURL(const std::string& url) {
  if (cursor_) cursor_->LinkURL = url;
}
void cLinkTree::SetCurrentCaption(const std::string& caption) {
  if (cursor_) cursor_->LinkCaption = caption;
}

void cLinkTree::Top() {
  if (root_) cursor_ = root_.get();
}
void cLinkTree::StepForward() {
  if (cursor_ && cursor_->nextSibling()) cursor_ = cursor_->nextSibling();
}
void cLinkTree::StepBack() {
  if (cursor_ && cursor_->prevSibling()) cursor_ = cursor_->prevSibling();
}
void cLinkTree::StepUp() {
  if (cursor_ && cursor_->parent()) cursor_ = cursor_->parent();
}
void cLinkTree::StepDown() {
  if (cursor_ && cursor_->firstChild()) cursor_ = cursor_->firstChild();
}

void cLinkTree::addSibling(const std::string& url, const std::string& caption) {
  auto node = std::make_unique<cBranch>(url, caption);
  if (!cursor_) {
    if (root_) {  // a cursor lost by removal: append at the root level
      cursor_ = root_.get();
    } else {
      node->tree_ = this;
      root_ = std::move(node);
      cursor_ = root_.get();
      return;
    }
  }
  cBranch* last = cursor_;
  while (last->nextSibling()) last = last->nextSibling();
  node->prev_ = last;
  node->parent_ = last->parent_;
  node->tree_ = this;
  if (node->parent_) ++node->parent_->ChildCount;
  last->next_ = std::move(node);
}

void cLinkTree::addChild(const std::string& url, const std::string& caption) {
  if (!cursor_) {
    addSibling(url, caption);
    return;
  }
  auto node = std::make_unique<cBranch>(url, caption);
  node->parent_ = cursor_;
  node->tree_ = this;
  cBranch* added = node.get();
  if (!cursor_->first_child_) {
    cursor_->first_child_ = std::move(node);
  } else {
    cBranch* last = cursor_->first_child_.get();
    while (last->nextSibling()) last = last->nextSibling();
    node->prev_ = last;
    last->next_ = std::move(node);
  }
  ++cursor_->ChildCount;
  cursor_ = added;
}

void cLinkTree::Delete() {
  if (!cursor_) return;
  cBranch* gone = cursor_;
  cursor_ = gone->nextSibling() ? gone->nextSibling()
            : gone->prevSibling() ? gone->prevSibling()
                                  : gone->parent();
  gone->removeNode();
  if (!cursor_) cursor_ = root_.get();
}

std::string cLinkTree::Display() const {
  std::string out;
  // Depth-first without recursion: a node, its children, then its next sibling.
  const cBranch* node = root_.get();
  while (node) {
    for (int i = 1; i < node->Level(); ++i) out += "..";
    out += node->LinkCaption + "-" + node->LinkURL + "\r\n";
    if (node->firstChild()) {
      node = node->firstChild();
      continue;
    }
    while (node && !node->nextSibling()) node = node->parent();
    if (node) node = node->nextSibling();
  }
  return out;
}

bool cLinkTree::CopySupportFiles(const fs::path& sourceFolder, const fs::path& targetFolder,
                                 const std::string& iconFolder) {
  std::error_code ec;
  fs::create_directories(targetFolder, ec);
  const fs::path icons_target = platform::EnsureSubfolder(targetFolder, iconFolder);
  bool ok = fs::is_directory(icons_target, ec);
  for (const char* name : {kBrowserDetectScript, kTreeClassScript}) {
    if (auto from = platform::FindNoCase(sourceFolder, name))
      ok = platform::CopyFileOver(*from, targetFolder / name) && ok;
    else
      ok = false;
  }
  if (auto icons = platform::FindNoCase(sourceFolder, iconFolder)) {
    for (const auto& entry : fs::directory_iterator(*icons, ec)) {
      if (entry.is_regular_file(ec))
        ok = platform::CopyFileOver(entry.path(), icons_target / entry.path().filename()) && ok;
    }
  } else {
    ok = false;
  }
  return ok;
}

bool cLinkTree::writeJavascript(const fs::path& sourceFolder, const fs::path& targetFolder,
                                const std::string& name, const std::string& title,
                                const std::string& iconPath, bool startAllOpen) {
  std::error_code ec;
  if (!fs::is_directory(sourceFolder, ec)) {
    platform::Dialogs().Message(texts::kLinkTreeSourceMissing, platform::mb::OKOnly,
                                texts::kLinkTreeTitle);
    const fs::path log_folder =
        error_log_folder_.empty() ? platform::ProgramFolder() : error_log_folder_;
    // The person was told above; the log only keeps it.
    (void)platform::WriteAllLines(log_folder / texts::kLinkTreeErrorLog,
                            {texts::kLinkTreeSourceMissingLog});
    return false;
  }
  fs::create_directories(targetFolder, ec);
  if (!fs::is_directory(targetFolder, ec)) return false;

  Top();
  // Icons come from the folder named first in the icon path.
  std::string icon_path;
  std::string icon_folder = kIconFolder;
  {
    std::string part;
    bool first = true;
    for (size_t i = 0; i <= iconPath.size(); ++i) {
      if (i == iconPath.size() || iconPath[i] == '\\' || iconPath[i] == '/') {
        if (!part.empty()) {
          icon_path += part + "/";
          if (first) icon_folder = part;
          first = false;
        }
        part.clear();
      } else {
        part += iconPath[i];
      }
    }
  }
  bool ok = CopySupportFiles(sourceFolder, targetFolder, icon_folder);

  {
    platform::TextWriter js(targetFolder / (name + "treemenu.js"));
    js.Line("// You can find instructions for this file here:");
    js.Line(texts::kTreeScriptHome);
    js.Line("USETEXTLINKS = 1");
    js.Line(std::string("STARTALLOPEN = ") + (startAllOpen ? "1" : "0"));
    js.Line("ICONPATH = '" + icon_path + "'");
    js.Line("foldersTree = gFld(\"<b>" + ScriptText(title) + "</b>\", \"display.html\")");
    if (root_) root_->writeFile(targetFolder, js);
    ok = js.Close() && ok;
  }
  {
    platform::TextWriter frames(targetFolder / (name + ".html"));
    frames.Line("<html><Frameset cols=\"18%, *\" >");
    frames.Line("<Frame src=\"" + name + "menu.html\" NAME=tree>");
    frames.Line("<frame src=\"display.html\" NAME=display></frameset></html>");
    ok = frames.Close() && ok;
  }
  {
    platform::TextWriter menu(targetFolder / (name + "menu.html"));
    for (const char* line : texts::kMenuHead) menu.Line(line);
    menu.Line("<script src=\"" + name + "treemenu.js\"></script></head>");
    for (const char* line : texts::kMenuBody) menu.Line(line);
    ok = menu.Close() && ok;
  }
  return ok;
}

}  // namespace tessaly::report
