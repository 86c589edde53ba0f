#include "batch/output_owner.h"

#include "batch/batch_texts.h"
#include "platform/dialogs.h"
#include "platform/paths.h"
#include "platform/textfile.h"

namespace tessaly::batch {

namespace {

constexpr const char* kMenuPage = "menu.html";

// A project's name as its files are named: the file name less ".xml", in capitals.
std::string ProjectKey(const std::string& project) {
  std::string name = fs::path(project).filename().string();
  if (platform::EndsWithNoCase(name, ".xml")) name.resize(name.size() - 4);
  return platform::ToUpper(name);
}

}  // namespace

std::optional<std::string> OutputOwner(const fs::path& output) {
  if (auto text = platform::ReadWholeFile(output / kOutputOwnerFile)) {
    std::string path = *text;
    while (!path.empty() && (path.back() == '\n' || path.back() == '\r')) path.pop_back();
    if (!path.empty()) return path;
  }
  // A folder filled before the owner file existed: the site's menu page names its project.
  std::error_code ec;
  for (auto it = fs::directory_iterator(output, ec); !ec && it != fs::directory_iterator(); it.increment(ec)) {
    std::string name = it->path().filename().string();
    if (name.size() > 9 && platform::EndsWithNoCase(name, kMenuPage) && it->is_regular_file())
      return name.substr(0, name.size() - 9) + ".xml";
  }
  return std::nullopt;
}

bool ConfirmOutputOwner(const fs::path& output, const fs::path& project) {
  auto owner = OutputOwner(output);
  if (!owner || ProjectKey(*owner) == ProjectKey(project.string())) return true;
  const std::string question = "The folder " + output.string() + " holds the reports of the project \"" +
                               *owner + "\".\r\nRunning \"" + project.filename().string() +
                               "\" will delete them.\r\n\r\nRun it all the same?";
  return platform::Dialogs().Message(question, platform::mb::YesNo + platform::mb::Exclamation +
                                                   platform::mb::DefaultButton2,
                                     texts::kAppTitle) == platform::mb::Yes;
}

bool WriteOutputOwner(const fs::path& output, const fs::path& project) {
  return platform::WriteAllLines(output / kOutputOwnerFile, {project.string()});
}

}  // namespace tessaly::batch
