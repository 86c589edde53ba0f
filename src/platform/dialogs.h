#pragma once
// The only way the logic reaches a person. The desktop installs a Qt host; an unattended
// run installs the standard-error host; tests install a recorder with scripted answers.
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tessaly::platform {

// Message-box type and answer values as plain numbers, because callers add buttons and
// style together into one type value and store answers as 16-bit integers.
namespace mb {
constexpr int16_t OKOnly = 0, OKCancel = 1, AbortRetryIgnore = 2, YesNoCancel = 3, YesNo = 4,
                  RetryCancel = 5;
constexpr int16_t Critical = 16, Question = 32, Exclamation = 48, Information = 64;
constexpr int16_t DefaultButton2 = 256;
// Answers.
constexpr int16_t OK = 1, Cancel = 2, Abort = 3, Retry = 4, Ignore = 5, Yes = 6, No = 7;
// The button part of a type value.
constexpr int16_t Buttons(int16_t type) { return static_cast<int16_t>(type & 7); }
}  // namespace mb

struct FileDialogRequest {
  std::string title;
  std::string filter;        // "XML files (*.xml)|*.xml"
  std::string initial_dir;
  std::string initial_name;
  bool must_exist = true;
};

class DialogHost {
 public:
  virtual ~DialogHost() = default;
  // Shows a message; returns the answer (mb::OK, mb::Yes, ...).
  virtual int16_t Message(const std::string& text, int16_t type, const std::string& title) = 0;
  // File and folder choice; nullopt when the person cancels.
  [[nodiscard]] virtual std::optional<std::string> OpenFile(const FileDialogRequest& request) = 0;
  [[nodiscard]] virtual std::optional<std::string> SaveFile(const FileDialogRequest& request) = 0;
  [[nodiscard]] virtual std::optional<std::string> ChooseFolder(const std::string& title,
                                                  const std::string& initial_dir) = 0;
  // True when nobody is there to answer (command-line runs, tests that say so).
  virtual bool Unattended() const = 0;
};

// The answer that lets an unattended run go on: Yes to a question, OK, Retry; and,
// when the box offers no Yes, OK or Retry, its first button.
int16_t UnattendedAnswer(int16_t type);

// Unattended: each message is one line on standard error, "TITLE: text", with line ends
// inside the text shown as " / ". Nothing waits. File dialogs answer nothing.
class StderrDialogHost : public DialogHost {
 public:
  int16_t Message(const std::string& text, int16_t type, const std::string& title) override;
  std::optional<std::string> OpenFile(const FileDialogRequest&) override { return std::nullopt; }
  std::optional<std::string> SaveFile(const FileDialogRequest&) override { return std::nullopt; }
  std::optional<std::string> ChooseFolder(const std::string&, const std::string&) override {
    return std::nullopt;
  }
  bool Unattended() const override { return true; }
  // Where else each message line goes (the dated log when logging is on); may be empty.
  void SetEcho(std::function<void(const std::string&)> echo);

 private:
  std::function<void(const std::string&)> echo_;
};

// For tests: records every message and answers from scripted queues (else the unattended answer).
class RecordingDialogHost : public DialogHost {
 public:
  struct Shown {
    std::string text;
    int16_t type;
    std::string title;
  };
  int16_t Message(const std::string& text, int16_t type, const std::string& title) override;
  std::optional<std::string> OpenFile(const FileDialogRequest& request) override;
  std::optional<std::string> SaveFile(const FileDialogRequest& request) override;
  std::optional<std::string> ChooseFolder(const std::string& title,
                                          const std::string& initial_dir) override;
  bool Unattended() const override { return false; }

  std::vector<Shown> shown;
  std::vector<FileDialogRequest> file_requests;
  std::deque<int16_t> answers;                     // next answers to Message
  std::deque<std::optional<std::string>> files;    // next answers to Open/Save/ChooseFolder
};

// The process-wide host. Defaults to the standard-error host until one is installed.
DialogHost& Dialogs();
void SetDialogHost(std::shared_ptr<DialogHost> host);

// Joins message text for one line: CR LF, CR or LF become " / ".
std::string OneLine(const std::string& text);

// A message as the standard-error host prints it, one entry per line: "TITLE: " and the
// first line, then each further line indented by two blanks; blank lines at either end are
// dropped and a run of blank lines inside becomes one.
std::vector<std::string> UnattendedLines(const std::string& title, const std::string& text);

}  // namespace tessaly::platform
