#pragma once
// Tests never run in the build tree: each gets a fresh copy of the built program folder
// (or an empty temporary folder) that is removed when the test ends.
#include <filesystem>
#include <string>

namespace tessaly::testing {

namespace fs = std::filesystem;

// A temporary folder, removed with its content on destruction.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const fs::path& path() const { return path_; }
  fs::path operator/(const std::string& name) const { return path_ / name; }

 private:
  fs::path path_;
};

// A copy of the built program folder in a temporary folder.
class ProgramFolderCopy {
 public:
  ProgramFolderCopy();
  const fs::path& path() const { return dir_.path(); }
  fs::path operator/(const std::string& name) const { return dir_.path() / name; }
  fs::path Executable(const std::string& name = "tessaly") const { return dir_.path() / name; }

 private:
  TempDir dir_;
};

// The source tree's folder of a kind of test data: tests/<relative>.
fs::path SourcePath(const std::string& relative);

// Writes bytes to a file as given (no line-end translation).
void WriteFile(const fs::path& path, const std::string& bytes);
std::string ReadFile(const fs::path& path);

// Runs a command line through /bin/sh; returns its exit status and fills output with
// stdout and stderr interleaved when `output` is given.
int RunCommand(const std::string& command, std::string* output = nullptr);

}  // namespace tessaly::testing
