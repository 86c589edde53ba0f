#include "support/program_folder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <sys/wait.h>

namespace tessaly::testing {

TempDir::TempDir() {
  std::string templ = (fs::temp_directory_path() / "tessaly-test-XXXXXX").string();
  char* made = mkdtemp(templ.data());
  if (!made) throw std::runtime_error("cannot create a temporary folder");
  path_ = made;
}

TempDir::~TempDir() {
  std::error_code ec;
  fs::remove_all(path_, ec);
}

ProgramFolderCopy::ProgramFolderCopy() {
  fs::copy(TESSALY_PROGRAM_DIR, dir_.path(),
           fs::copy_options::recursive | fs::copy_options::copy_symlinks);
}

fs::path SourcePath(const std::string& relative) {
  return fs::path(TESSALY_SOURCE_DIR) / relative;
}

void WriteFile(const fs::path& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary);
  out << bytes;
}

std::string ReadFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

int RunCommand(const std::string& command, std::string* output) {
  std::string full = command + " 2>&1";
  FILE* pipe = popen(full.c_str(), "r");
  if (!pipe) return -1;
  std::array<char, 4096> buf;
  std::string out;
  size_t n;
  while ((n = fread(buf.data(), 1, buf.size(), pipe)) > 0) out.append(buf.data(), n);
  int status = pclose(pipe);
  if (output) *output = out;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace tessaly::testing
