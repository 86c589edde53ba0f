#pragma once
// Every message box of a test recorded, answered from a script, and the process-wide host put
// back (standard error) when the test ends, whether it passes or not.
#include <memory>
#include <string>
#include <vector>

#include "platform/dialogs.h"

namespace tessaly::testing {

class RecordedMessages {
 public:
  using Shown = platform::RecordingDialogHost::Shown;

  RecordedMessages() { platform::SetDialogHost(host_); }
  ~RecordedMessages() { platform::SetDialogHost(nullptr); }
  RecordedMessages(const RecordedMessages&) = delete;
  RecordedMessages& operator=(const RecordedMessages&) = delete;

  platform::RecordingDialogHost* operator->() const { return host_.get(); }
  const std::shared_ptr<platform::RecordingDialogHost>& host() const { return host_; }

  // The texts shown so far, in order.
  std::vector<std::string> Texts() const {
    std::vector<std::string> out;
    for (const auto& s : host_->shown) out.push_back(s.text);
    return out;
  }
  // The first message whose text starts with `start`, or null.
  const Shown* Starting(const std::string& start) const {
    for (const auto& s : host_->shown)
      if (s.text.rfind(start, 0) == 0) return &s;
    return nullptr;
  }
  // Every message so far as "title: text", one a line.
  std::string Joined() const {
    std::string all;
    for (const auto& s : host_->shown) all += s.title + ": " + s.text + "\n";
    return all;
  }

 private:
  std::shared_ptr<platform::RecordingDialogHost> host_ =
      std::make_shared<platform::RecordingDialogHost>();
};

}  // namespace tessaly::testing
