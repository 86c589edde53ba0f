#include "shell/command_line.h"

#include <iostream>

#include "platform/paths.h"

namespace tessaly::shell {

bool IsSwitch(std::string_view token) {
  static const char* const kSwitches[] = {"/L",  "/NS", "/DBG", "/DEV", "/INET", "/ALL", "/NG",
                                          "/S",  "/A",  "/AC",  "/AFIT", "/AF",  "/AFF", "/AR",
                                          "/F",  "/FF", "/R",   "/P",   "/NL"};
  for (const char* s : kSwitches)
    if (platform::EqualsNoCase(token, s)) return true;
  return false;
}

CommandLine CommandLine::FromArgs(int argc, char** argv) {
  CommandLine cl;
  for (int i = 1; i < argc; ++i) cl.tokens.emplace_back(argv[i]);
  return cl;
}

bool CommandLine::Has(std::string_view switch_name) const {
  for (const auto& t : tokens)
    if (platform::EqualsNoCase(t, switch_name)) return true;
  return false;
}

std::optional<std::string> CommandLine::File() const {
  if (tokens.empty() || tokens[0].empty() || IsSwitch(tokens[0])) return std::nullopt;
  return tokens[0];
}

int CommandLineRunner::RunProject(const std::filesystem::path& project) {
  std::cerr << "Tessaly: project runs from the command line are not available in this build; "
            << project.string() << " was not run." << std::endl;
  return 3;
}

int CommandLineRunner::RunWorkbook(const std::filesystem::path& workbook, const std::string&,
                                   const std::vector<std::string>&) {
  std::cerr << "Tessaly: workbook runs are not available in this build; " << workbook.string()
            << " was not run." << std::endl;
  return 3;
}

}  // namespace tessaly::shell
