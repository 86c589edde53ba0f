#pragma once
// The desktop's DialogHost: message boxes and file dialogs through Qt, parented to the
// active window so that they stay on top of the program.
#include "platform/dialogs.h"

class QWidget;

namespace tessaly::platform {

class QtDialogHost : public DialogHost {
 public:
  int16_t Message(const std::string& text, int16_t type, const std::string& title) override;
  std::optional<std::string> OpenFile(const FileDialogRequest& request) override;
  std::optional<std::string> SaveFile(const FileDialogRequest& request) override;
  std::optional<std::string> ChooseFolder(const std::string& title,
                                          const std::string& initial_dir) override;
  bool Unattended() const override { return false; }
};

// "XML files (*.xml)|*.xml|All files (*.*)|*.*" as Qt writes filters:
// "XML files (*.xml);;All files (*.*)".
std::string QtFilterFromPattern(const std::string& filter);

}  // namespace tessaly::platform
