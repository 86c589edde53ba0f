#include "rules/saved_models.h"

#include "platform/dialogs.h"
#include "platform/paths.h"
#include "rules/rule_values.h"
#include "rules/rules_files.h"
#include "rules/texts.h"

namespace tessaly::rules {

namespace {

std::vector<std::string> Existing(const fs::path& folder, std::string_view stem, char letter) {
  std::vector<std::string> items{std::string(text::kNewModel)};
  std::string s = Trim(stem);
  for (int i = 0; i <= 9; ++i) {
    for (int j = (i == 0 ? 1 : 0); j <= 9; ++j) {
      std::string name = s + "." + letter + char('0' + i) + char('0' + j);
      if (auto found = platform::FindNoCase(folder, name)) items.push_back(ListEntry(*found));
    }
  }
  return items;
}

void Inform(const std::string& message) {
  platform::Dialogs().Message(message, platform::mb::OKOnly,
                              std::string(text::kForYourInformation));
}

}  // namespace

std::vector<std::string> Check4ExistingInitialModels(const fs::path& folder, std::string_view stem) {
  return Existing(folder, stem, 'I');
}

std::vector<std::string> Check4ExistingModel(const fs::path& folder, std::string_view stem) {
  return Existing(folder, stem, 'F');
}

std::string Check4InitialModels(const fs::path& folder, std::string_view stem) {
  auto startmod = platform::FindNoCase(folder, text::kStartmod);
  if (!startmod) {
    Inform(std::string(text::kModelNotSaved));
    return {};
  }
  std::string name = NextArchiveName(folder, Trim(stem), 'I');
  if (name.empty() || !platform::CopyFileOver(*startmod, folder / name)) {
    Inform(std::string(text::kModelNotSaved));
    return {};
  }
  Inform(std::string(text::kInitialModelSavedHead) + name + ".");
  return name;
}

std::string Check4Model(const fs::path& folder, std::string_view dataset_stem,
                        std::string_view model_file_name) {
  auto model = platform::FindNoCase(folder, model_file_name);
  std::string name = NextArchiveName(folder, Trim(dataset_stem), 'F');
  if (!model || name.empty()) {
    Inform(std::string(text::kModelNotSaved));
    return {};
  }
  std::error_code ec;
  fs::rename(*model, folder / name, ec);
  if (ec) {
    if (!platform::CopyFileOver(*model, folder / name)) {
      Inform(std::string(text::kModelNotSaved));
      return {};
    }
    fs::remove(*model, ec);
  }
  return name;
}

}  // namespace tessaly::rules
