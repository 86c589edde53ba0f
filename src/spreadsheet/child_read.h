#pragma once
// Reading outside input through a library we cannot fix (FreeXL for .xls workbooks) in a
// child process: a fault inside the library (a crash, an abort, a hang) ends only the
// child, and the program goes on with a clear "could not be read".
#include <chrono>
#include <functional>
#include <string>

namespace tessaly::spreadsheet {

struct ChildRead {
  bool ok = false;
  std::string bytes;  // what the work returned, when ok
  std::string why;    // why not, when not ok
};

// Runs `work` in a forked child and hands back the bytes it returns. A child that ends by
// a signal or a failing status, or runs past `limit` (it is then killed), gives ok = false.
ChildRead ReadInChild(const std::function<std::string()>& work,
                      std::chrono::seconds limit = std::chrono::seconds(120));

}  // namespace tessaly::spreadsheet
