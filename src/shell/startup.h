#pragma once
// Start-up and exit of the program as plain steps: what Main does before the main form
// shows, what the form's load does, the command-line run, and the orderly exit that puts
// the program's folder back as it was found. The desktop and the unattended run call the
// same steps.
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "shell/command_line.h"
#include "shell/settings.h"

namespace tessaly::shell {

namespace fs = std::filesystem;

inline constexpr double kMissingValue = 99999999999.0;

// Filters of the main form's file dialogs (cdlXML, cdlHIS).
inline constexpr const char* kXmlFilter = "XML files (*.xml)|*.xml";
inline constexpr const char* kHisFilter = "HIS files (*.his)|*.his";

// Process-wide state that start-up sets and the rest of the program reads.
struct ShellState {
  fs::path program_folder;
  fs::path launch_folder;  // the current folder when the program started
  CommandLine command_line;
  bool LogOn = false;
  bool DebugMode = false;  // "/DBG"; nothing reads it yet
  bool DevMode = false;    // "/DEV": the Test menu is shown
  bool InetMode = false;   // "/INET"; nothing reads it yet
  double MissingValue = 0;
  std::string OutputPath;  // <program folder>/OUTPUT/
  std::vector<std::string> ReportCleanList;
  bool NoTrendAtStart = false;
  bool RunCanceled = false;
  bool PreCheck = false;
};
ShellState& Shell();

// ---- the lock on the working folder ----
// Two programs sharing one working folder would delete each other's rules, model and
// report files (start-up clears them). A program holds a lock on the folder from start-up
// to exit; a second one finds it held and says so.
inline constexpr const char* kLockFileName = ".tessaly.lock";
enum class FolderLock { Locked, HeldByAnother, Unavailable };
// One try, never waiting. HeldByAnother fills `holder` with the process id that holds it
// (0 when unknown). Unavailable: the folder takes no lock file (read-only); the program
// goes on without one. A folder already locked by this program gives Locked.
FolderLock TryLockWorkingFolder(const fs::path& folder, long* holder = nullptr);
// Start-up's lock: when another program holds it, an unattended run says so on standard
// error and waits until it is free; the desktop asks whether to wait (Retry) or to close
// (Cancel). False only when the person chose to close.
[[nodiscard]] bool LockWorkingFolder(const fs::path& folder);
// Gives the lock up (exit does; the system does it too when the process ends).
void UnlockWorkingFolder();
std::string LockHeldText(const fs::path& folder, long holder);

// The seventeen report files that are cleared at start and around each run.
const std::vector<std::string>& StartCleanList();

// Deletes from the program's folder each listed file that exists in `current_folder`.
void CleanupReports(const std::vector<std::string>& list, const fs::path& current_folder,
                    const fs::path& program_folder);

// Names the system keeps in QVXBACKUP: those ending in "QVX" or "qvx".
bool IsControlFileName(const std::string& name);
std::vector<fs::path> ControlFiles(const fs::path& folder);

// Main, up to showing the form: GROUPLST.QVX, the clean list, MissingValue, "/L" logging,
// the switches, the OUTPUT folder and OutputPath.
void MainPrepare(const fs::path& program_folder, const CommandLine& command_line,
                 const fs::path& current_folder);
// The splash is shown unless the command line is not empty and holds "/NS".
bool SplashWanted(const CommandLine& command_line);

// The engine library is looked for in the program's folder.
inline constexpr const char* kEngineLibrary = "libquorvane.so";
// False, after the box "Quorvane.dll a required DLL is Missing" / "The program will now
// exit." under "Tessaly Main Error", when the library is missing.
[[nodiscard]] bool CheckForCriticalFiles();
// Writes FTable1.html / FTable2.html when missing.
void EnsureFTables();

// The main form's load, before the command line: settings, the deletions, the control-file
// backup, the schema files and preferences, the Test switch, the error objects.
void FormLoad(CSetting& settings);
// Run by the form's load: keeps the program folder's control files (names ending in QVX)
// in QVXBACKUP so that exit can put them back. When QVXBACKUP still holds files, the last
// exit was not orderly, and the files saved at that start replace those in the folder.
void BackupControlFiles(const fs::path& program_folder);
// Writes each missing file of DEFAULTXSD.
void WriteMissingSchemaFiles(const fs::path& program_folder);

// The command line of the load. nullopt: nothing to run, the desktop opens. Otherwise the
// file was run (or refused) and the program is to exit with the returned status; the exit
// steps (FileExit) have already run.
[[nodiscard]] std::optional<int> RunCommandLine(const CommandLine& command_line, CommandLineRunner& runner);

// What exit asks of parts of the program that are not the shell's.
struct ExitHooks {
  std::function<void()> settle_series_properties;  // shows the pending property edit
  std::function<bool()> project_open;
  std::function<void()> close_project;
};
ExitHooks& Hooks();

// mnuFileExit_Click without unloading the forms (the desktop closes its windows itself):
// the control files go back from QVXBACKUP to the program's folder, the open project is
// closed. A second call finds QVXBACKUP empty and does nothing there.
void FileExit();
// The form's unload: clears the clean list, SaveSettings, FileExit, closes the log.
void FormUnload(CSetting& settings);

}  // namespace tessaly::shell
