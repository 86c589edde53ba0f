#include "aggregate/replacements.h"

#include "dataset/asc_dataset.h"
#include "platform/dialogs.h"
#include "platform/paths.h"
#include "platform/textfile.h"

namespace tessaly::aggregate {

bool AcceptReplacement(const std::filesystem::path& in_directory, const std::string& child,
                       const std::string& file, const std::string& observations,
                       const std::string& forecasts) {
  namespace mb = platform::mb;
  auto refuse = [](const std::string& text) {
    platform::Dialogs().Message(text, mb::OKOnly, kReplaceTitle);
    return false;
  };
  if (file.empty()) return refuse("You must select a replacement file before continuing");
  if (auto original = platform::FindNoCase(in_directory, child))
    if (!platform::CopyFileOver(*original, platform::EnsureSubfolder(in_directory, "ASCBACKUP") / original->filename()))
      return refuse("The original of " + child + " could not be backed up to ASCBACKUP.");
  const auto lines = platform::ReadAllLines(platform::ResolveNoCase(in_directory, file));
  if (!lines || lines->empty()) return refuse("The asc file is empty.");
  auto line = [&](std::size_t n) { return n <= lines->size() ? dataset::TrimBlanks((*lines)[n - 1]) : std::string(); };
  if (line(8) != dataset::TrimBlanks(observations))
    return refuse("The number of observations of the replacement asc, " + line(8) +
                  ", does not agree with the  of the original asc, " + dataset::TrimBlanks(observations) +
                  ",. Therefore it cannot be used.");
  if (line(11) != dataset::TrimBlanks(forecasts))
    return refuse("The number of forecasts to be generated of the replacement asc, " + line(11) +
                  ", does not agree with the number of forecasts to be generated of the parent, " +
                  dataset::TrimBlanks(forecasts) + ",. Therefore it cannot be used.");
  return platform::Dialogs().Message("Are you sure that you want to replace " + child + " with " + file,
                                     mb::YesNo + mb::Question, kReplaceTitle) == mb::Yes;
}

}  // namespace tessaly::aggregate
