#pragma once
// The command line as the shell splits it. A token is a switch when it equals one of the
// program's switches without regard to case; any other token is a file name, even one
// that starts with "/".
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessaly::shell {

bool IsSwitch(std::string_view token);

struct CommandLine {
  std::vector<std::string> tokens;

  static CommandLine FromArgs(int argc, char** argv);
  bool Empty() const { return tokens.empty(); }
  bool Has(std::string_view switch_name) const;
  // The file to process: the first token, unless it is a switch or empty.
  std::optional<std::string> File() const;
};

// What runs a file named on the command line. The default says the run is not available
// in this build and gives a non-zero status; src/app plugs in the real runs.
class CommandLineRunner {
 public:
  virtual ~CommandLineRunner() = default;
  // A project (.xml). The exit status of the run: 0 when it ended.
  [[nodiscard]] virtual int RunProject(const std::filesystem::path& project);
  // A workbook (.xls, .xlsx) with the report sheet (second token, may be empty) and, with
  // three tokens or more, all tokens as the run's options.
  [[nodiscard]] virtual int RunWorkbook(const std::filesystem::path& workbook, const std::string& sheet,
                          const std::vector<std::string>& options);
};

}  // namespace tessaly::shell
