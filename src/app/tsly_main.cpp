// tsly COMMAND [ARGS...]: the headless flows, for scripts and servers.
#include <iostream>
#include <string>

#include "app/tsly.h"
#include "platform/paths.h"
#include "shell/app_info.h"

namespace {
using namespace tessaly::app::tsly;

void PrintHelp(std::ostream& out) {
  out << "usage: tsly COMMAND [ARGS...]\n"
         "\n"
         "The flows of the desktop without a window. Commands:\n";
  for (const Command& c : Commands()) {
    out << "  " << c.name << std::string(c.name.size() < 12 ? 12 - c.name.size() : 1, ' ')
        << c.summary << "\n";
  }
  out << "\n'tsly COMMAND --help' tells how to use one. Exit status: 0 all done, 1 done in part,\n"
         "2 nothing done or bad usage.\n";
}
}  // namespace

int main(int argc, char** argv) {
  Args words(argv + 1, argv + argc);
  if (words.empty()) {
    PrintHelp(std::cerr);
    return kExitNothing;
  }
  const std::string& name = words.front();
  if (name == "--help" || name == "-h" || name == "help") {
    if (name == "help" && words.size() > 1) {
      for (const Command& c : Commands())
        if (c.name == words[1]) return std::cout << c.usage, kExitDone;
    }
    PrintHelp(std::cout);
    return kExitDone;
  }
  if (name == "--version") {
    std::cout << "tsly " << tessaly::shell::kVersion << "\n";
    // Naming the working folder also makes it: an install's first start copies the samples there.
    std::cout << "working folder " << tessaly::platform::ProgramFolder().string() << "\n";
    return kExitDone;
  }
  for (const Command& c : Commands()) {
    if (c.name != name) continue;
    Args rest(words.begin() + 1, words.end());
    if (WantsHelp(rest)) {
      std::cout << c.usage;
      return kExitDone;
    }
    try {
      return c.run(rest, std::cout, std::cerr);
    } catch (const std::exception& e) {
      std::cerr << "tsly " << name << ": " << e.what() << "\n";
      return kExitNothing;
    }
  }
  std::cerr << "tsly: '" << name << "' is not a command.\n\n";
  PrintHelp(std::cerr);
  return kExitNothing;
}
