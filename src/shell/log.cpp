#include "shell/log.h"

#include "platform/dates.h"
#include "platform/text.h"

namespace tessaly::shell {

namespace {
const std::string kStars(47, '*');

std::string TrimBlanks(const std::string& s) { return platform::Trim(s, platform::kBlanksAndTabs); }
}  // namespace

std::string LogFileName() { return platform::dates::FormatIso(platform::dates::Today()) + ".txt"; }

Log::~Log() {
  if (file_) std::fclose(file_);
}

void Log::WriteLine(std::string_view text) {
  error_.Clear();
  if (!file_) {
    error_.Set(kLogNoFile, "No file has been assigned");
    return;
  }
  std::fwrite(text.data(), 1, text.size(), file_);
  std::fwrite("\r\n", 1, 2, file_);
  // Flushed at once: the trace is read after a crash.
  std::fflush(file_);
}

void Log::CloseFile() {
  error_.Clear();
  if (!file_) {
    error_.Set(kLogNoFile, "No file has been assigned");
    return;
  }
  std::fclose(file_);
  file_ = nullptr;
}

void Log::WriteHeader() {
  std::string moment = platform::dates::FormatIso(platform::dates::Now());
  WriteLine(kStars);
  WriteLine("START " + title_ + " ON " + moment);
  WriteLine(kStars);
  WriteLine(" ");
  WriteLine(" ");
}

void Log::WriteFooter() {
  std::string moment = platform::dates::FormatIso(platform::dates::Now());
  WriteLine(" ");
  WriteLine(" ");
  WriteLine(kStars);
  WriteLine("END " + title_ + " ON " + moment);
  WriteLine(kStars);
}

bool Log::CreateFile(const std::string& folder, const std::string& title) {
  error_.Clear();
  if (file_) {
    std::fclose(file_);
    file_ = nullptr;
  }
  std::string dir = TrimBlanks(folder);
  if (!dir.empty() && dir.back() != '/') dir += '/';
  path_ = std::filesystem::path(dir + LogFileName());
  std::error_code ec;
  bool exists = std::filesystem::exists(path_, ec);
  file_ = std::fopen(path_.c_str(), exists ? "ab" : "wb");
  title_ = title;
  if (!file_) {
    error_.Set(kLogCreationFailed, "File Creation failed");
    return false;
  }
  return true;
}

}  // namespace tessaly::shell
