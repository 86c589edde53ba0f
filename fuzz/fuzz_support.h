#pragma once
// What every fuzz target shares: a private scratch folder for the files a reader takes by
// path, and a dialog host that answers every message silently, as an unattended run would,
// so that a reader's message boxes cost nothing and never wait.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

#include "platform/dialogs.h"

namespace tessaly::fuzz {

namespace fs = std::filesystem;

class SilentDialogHost : public platform::DialogHost {
 public:
  int16_t Message(const std::string&, int16_t type, const std::string&) override {
    return platform::UnattendedAnswer(type);
  }
  std::optional<std::string> OpenFile(const platform::FileDialogRequest&) override {
    return std::nullopt;
  }
  std::optional<std::string> SaveFile(const platform::FileDialogRequest&) override {
    return std::nullopt;
  }
  std::optional<std::string> ChooseFolder(const std::string&, const std::string&) override {
    return std::nullopt;
  }
  bool Unattended() const override { return true; }
};

// The scratch folder of this process, made on first use (each target overwrites its own
// files there on every input) and removed when the run ends normally; a crash leaves it
// for a look at what the reader wrote.
inline const fs::path& Scratch() {
  static const fs::path folder = [] {
    platform::SetDialogHost(std::make_shared<SilentDialogHost>());
    fs::path base = fs::temp_directory_path() / ("tessaly-fuzz-" + std::to_string(getpid()));
    fs::create_directories(base);
    std::atexit([] {
      std::error_code ec;
      fs::remove_all(Scratch(), ec);
    });
    return base;
  }();
  return folder;
}

inline fs::path WriteInput(const fs::path& path, const uint8_t* data, size_t size) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  return path;
}

inline std::string_view AsText(const uint8_t* data, size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// The input's lines without their line ends (LF, CR LF or a lone CR).
inline std::vector<std::string> Lines(std::string_view text) {
  std::vector<std::string> lines;
  std::string line;
  for (size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c == '\r' || c == '\n') {
      lines.push_back(line);
      line.clear();
      if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
    } else {
      line += c;
    }
  }
  if (!line.empty()) lines.push_back(line);
  return lines;
}

}  // namespace tessaly::fuzz
