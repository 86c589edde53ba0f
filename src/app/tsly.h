#pragma once
// tsly: the headless program. Every flow that has a dialog also runs here without a window,
// through the same plain logic the dialog calls. Each command is one function of this table;
// a command's own file parses its arguments and calls its subsystem.
#include <iosfwd>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tessaly::app::tsly {

using Args = std::vector<std::string>;

// Exit statuses shared by every command: 0 all done, 1 done in part (some files refused or
// failed), 2 nothing done (bad usage, a refused selection, an unreadable project).
inline constexpr int kExitDone = 0;
inline constexpr int kExitPartly = 1;
inline constexpr int kExitNothing = 2;

struct Command {
  std::string_view name;
  std::string_view summary;  // one line for `tsly --help`
  std::string_view usage;    // the full text of `tsly NAME --help`
  // Runs the command on its arguments (the words after its name).
  int (*run)(const Args& args, std::ostream& out, std::ostream& err);
};

// The commands in the order `tsly --help` lists them.
std::span<const Command> Commands();

// True when the arguments ask for a command's help ("--help" or "-h" anywhere).
bool WantsHelp(const Args& args);

// Installs the standard-error message host: a box becomes "TITLE: text" on standard error and
// a question takes the answer that lets the work go on.
void InstallUnattendedHost();

// Prints "tsly NAME: text" and the hint to the command's help; returns kExitNothing.
int UsageError(std::string_view command, std::string_view text, std::ostream& err);

// The commands, each in its own file.
[[nodiscard]] int RunCommand(const Args& args, std::ostream& out, std::ostream& err);
int MergeCommand(const Args& args, std::ostream& out, std::ostream& err);
int PoolCommand(const Args& args, std::ostream& out, std::ostream& err);
int ImportCommand(const Args& args, std::ostream& out, std::ostream& err);
int AggregateCommand(const Args& args, std::ostream& out, std::ostream& err);
int AddSeriesCommand(const Args& args, std::ostream& out, std::ostream& err);
int ExportCommand(const Args& args, std::ostream& out, std::ostream& err);

}  // namespace tessaly::app::tsly
