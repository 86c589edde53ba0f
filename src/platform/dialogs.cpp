#include "platform/dialogs.h"

#include <iostream>

namespace tessaly::platform {

int16_t UnattendedAnswer(int16_t type) {
  switch (mb::Buttons(type)) {
    case mb::OKOnly:
    case mb::OKCancel: return mb::OK;
    case mb::AbortRetryIgnore: return mb::Ignore;
    case mb::YesNoCancel:
    case mb::YesNo: return mb::Yes;
    case mb::RetryCancel: return mb::Retry;
    default: return mb::OK;
  }
}

std::string OneLine(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c == '\r' || c == '\n') {
      if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
      out += " / ";
    } else {
      out.push_back(c);
    }
  }
  return out;
}

std::vector<std::string> UnattendedLines(const std::string& title, const std::string& text) {
  std::vector<std::string> lines{""};
  for (size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c == '\r' || c == '\n') {
      if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
      lines.emplace_back();
    } else {
      lines.back().push_back(c);
    }
  }
  auto blank = [](const std::string& l) { return l.find_first_not_of(" \t") == std::string::npos; };
  std::vector<std::string> out;
  for (const std::string& line : lines) {
    if (blank(line)) {
      if (!out.empty() && !out.back().empty()) out.emplace_back();
      continue;
    }
    out.push_back(out.empty() ? title + ": " + line : "  " + line);
  }
  while (!out.empty() && out.back().empty()) out.pop_back();
  if (out.empty()) out.push_back(title + ":");
  return out;
}

int16_t StderrDialogHost::Message(const std::string& text, int16_t type, const std::string& title) {
  std::string all;
  for (const std::string& line : UnattendedLines(title, text)) {
    all += line + "\n";
    if (echo_) echo_(line);
  }
  std::cerr << all << std::flush;
  return UnattendedAnswer(type);
}

void StderrDialogHost::SetEcho(std::function<void(const std::string&)> echo) {
  echo_ = std::move(echo);
}

int16_t RecordingDialogHost::Message(const std::string& text, int16_t type,
                                     const std::string& title) {
  shown.push_back({text, type, title});
  if (!answers.empty()) {
    int16_t a = answers.front();
    answers.pop_front();
    return a;
  }
  return UnattendedAnswer(type);
}

namespace {
std::optional<std::string> NextFile(std::deque<std::optional<std::string>>& files) {
  if (files.empty()) return std::nullopt;
  auto f = files.front();
  files.pop_front();
  return f;
}
}  // namespace

std::optional<std::string> RecordingDialogHost::OpenFile(const FileDialogRequest& request) {
  file_requests.push_back(request);
  return NextFile(files);
}

std::optional<std::string> RecordingDialogHost::SaveFile(const FileDialogRequest& request) {
  file_requests.push_back(request);
  return NextFile(files);
}

std::optional<std::string> RecordingDialogHost::ChooseFolder(const std::string& title,
                                                             const std::string& initial_dir) {
  file_requests.push_back({title, "", initial_dir, "", true});
  return NextFile(files);
}

namespace {
std::shared_ptr<DialogHost>& CurrentHost() {
  static std::shared_ptr<DialogHost> host = std::make_shared<StderrDialogHost>();
  return host;
}
}  // namespace

DialogHost& Dialogs() { return *CurrentHost(); }

void SetDialogHost(std::shared_ptr<DialogHost> host) {
  CurrentHost() = host ? std::move(host) : std::make_shared<StderrDialogHost>();
}

}  // namespace tessaly::platform
