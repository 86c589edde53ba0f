#include "shell/startup.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <thread>

#include "formats/batch_schema.h"
#include "formats/bp_schema.h"
#include "platform/dialogs.h"
#include "platform/paths.h"
#include "platform/working_folder.h"
#include "platform/process.h"
#include "shell/app_info.h"
#include "shell/error_context.h"
#include "shell/errors.h"
#include "shell/ftables.h"
#include "shell/mru.h"
#include "shell/preferences.h"

namespace tessaly::shell {

ShellState& Shell() {
  static ShellState state;
  return state;
}

const std::vector<std::string>& StartCleanList() {
  static const std::vector<std::string> list = {
      "killquor.qvx",  "engine.qvx",   "levelrpt.csv", "pulserpt.csv",    "earlysig.csv",
      "earlysig.dpr",  "fore-mon.csv", "fitted.csv",   "forecast.csv",    "residualacf.csv",
      "equation.csv",  "summape.txt",  "mapecomp.csv", "trendrpt.csv",    "poolcoef.csv",
      "parchrpt.csv",  "varchrpt.csv"};
  return list;
}

void CleanupReports(const std::vector<std::string>& list, const fs::path& current_folder,
                    const fs::path& program_folder) {
  EnterProcedure("tesmod", "CleanupReports");
  for (const std::string& name : list)
    if (platform::ExistsNoCase(current_folder, name)) platform::RemoveNoCase(program_folder, name);
}

bool IsControlFileName(const std::string& name) {
  return name.size() >= 3 &&
         (name.compare(name.size() - 3, 3, "QVX") == 0 || name.compare(name.size() - 3, 3, "qvx") == 0);
}

std::vector<fs::path> ControlFiles(const fs::path& folder) {
  std::vector<fs::path> out;
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator(folder, ec)) {
    std::error_code ec2;
    if (entry.is_regular_file(ec2) && IsControlFileName(entry.path().filename().string()))
      out.push_back(entry.path());
  }
  std::sort(out.begin(), out.end());
  return out;
}

namespace {
int lock_fd = -1;
fs::path locked_folder;
}  // namespace

FolderLock TryLockWorkingFolder(const fs::path& folder, long* holder) {
  if (holder) *holder = 0;
  if (lock_fd >= 0 && locked_folder == folder) return FolderLock::Locked;
  fs::path file = folder / kLockFileName;
  for (int attempt = 0; attempt < 10; ++attempt) {
    int fd = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) return FolderLock::Unavailable;
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
      if (holder) {
        char buf[32] = {};
        ssize_t n = ::pread(fd, buf, sizeof buf - 1, 0);
        if (n > 0) *holder = std::strtol(buf, nullptr, 10);
      }
      ::close(fd);
      return FolderLock::HeldByAnother;
    }
    // The holder removes the file as it lets go: a lock taken on a file already removed
    // holds nothing, so the name must still be this file.
    struct stat held {}, named {};
    if (::fstat(fd, &held) != 0 || ::stat(file.c_str(), &named) != 0 || held.st_ino != named.st_ino ||
        held.st_dev != named.st_dev) {
      ::close(fd);
      continue;
    }
    // The holder's process id, for the message a second program shows.
    std::string pid = std::to_string(::getpid()) + "\n";
    if (::ftruncate(fd, 0) == 0) (void)!::pwrite(fd, pid.data(), pid.size(), 0);
    UnlockWorkingFolder();
    lock_fd = fd;
    locked_folder = folder;
    return FolderLock::Locked;
  }
  return FolderLock::HeldByAnother;
}

std::string LockHeldText(const fs::path& folder, long holder) {
  return "Another Tessaly" + (holder > 0 ? " (process " + std::to_string(holder) + ")" : std::string()) +
         " is using the working folder " + folder.string() +
         ". Two programs in one folder would delete each other's files, so this one waits until it ends.";
}

bool LockWorkingFolder(const fs::path& folder) {
  // A job that `tsly run --jobs` started works under the lock its parent holds for it.
  if (const char* parent = std::getenv(platform::kJobsParentVariable);
      parent && std::strtol(parent, nullptr, 10) == static_cast<long>(::getppid()))
    return true;
  long holder = 0;
  if (TryLockWorkingFolder(folder, &holder) != FolderLock::HeldByAnother) return true;
  if (platform::Dialogs().Unattended()) {
    platform::Dialogs().Message(LockHeldText(folder, holder), platform::mb::OKOnly, kApplicationTitle);
    while (TryLockWorkingFolder(folder, &holder) == FolderLock::HeldByAnother)
      std::this_thread::sleep_for(std::chrono::milliseconds(500));
    return true;
  }
  while (true) {
    std::string text = LockHeldText(folder, holder) +
                       "\r\n\r\nRetry when it has closed, or Cancel to close this one.";
    if (platform::Dialogs().Message(text, platform::mb::RetryCancel + platform::mb::Exclamation,
                                    kApplicationTitle) != platform::mb::Retry)
      return false;
    if (TryLockWorkingFolder(folder, &holder) != FolderLock::HeldByAnother) return true;
  }
}

void UnlockWorkingFolder() {
  if (lock_fd < 0) return;
  // Removed while still held, so the folder is left as it was found.
  ::unlink((locked_folder / kLockFileName).c_str());
  ::close(lock_fd);
  lock_fd = -1;
  locked_folder.clear();
}

void MainPrepare(const fs::path& program_folder, const CommandLine& command_line,
                 const fs::path& current_folder) {
  EnterProcedure("tesmod", "Main");
  ShellState& s = Shell();
  s.program_folder = program_folder;
  s.launch_folder = current_folder;
  s.command_line = command_line;

  platform::RemoveNoCase(program_folder, "GROUPLST.QVX");
  s.ReportCleanList = StartCleanList();
  CleanupReports(s.ReportCleanList, current_folder, program_folder);
  s.MissingValue = kMissingValue;
  SharedMsgBox() = cMsgBox();

  if (command_line.Has("/L")) {
    s.LogOn = true;
    ErrCtx().trace = true;
    if (TraceLog().CreateFile(program_folder.string(), "tslyb")) TraceLog().WriteHeader();
  }
  s.DebugMode = command_line.Has("/DBG");
  s.DevMode = command_line.Has("/DEV");
  s.InetMode = command_line.Has("/INET");

  // Made when no entry of that name exists, whatever its case.
  fs::path output = platform::EnsureSubfolder(program_folder, "OUTPUT");
  s.OutputPath = platform::WithTrailingSlash(output.string());
  TraceText(" load frmMain");
}

bool SplashWanted(const CommandLine& command_line) {
  return command_line.Empty() || !command_line.Has("/NS");
}

bool CheckForCriticalFiles() {
  TraceText(" check for critical fortran files");
  if (fs::exists(platform::ShippedFile(Shell().program_folder, kEngineLibrary))) return true;
  SharedMsgBox().Display("Quorvane.dll a required DLL is Missing\r\nThe program will now exit.",
                         platform::mb::OKOnly + platform::mb::Critical, "Tessaly Main Error");
  return false;
}

void EnsureFTables() {
  const fs::path& folder = Shell().program_folder;
  if (!platform::ExistsNoCase(folder, "FTable1.html")) LoadFTable1Link(folder);
  if (!platform::ExistsNoCase(folder, "FTable2.html")) LoadFTable2link(folder);
  TraceText(" end of sub");
}

void BackupControlFiles(const fs::path& program_folder) {
  EnterProcedure("frmMain", "BackupControlFiles");
  auto backup = platform::FindNoCase(program_folder, "QVXBACKUP");
  std::error_code ec;
  if (backup && fs::is_directory(*backup, ec)) {
    auto saved = ControlFiles(*backup);
    if (!saved.empty()) {
      // The last exit was not orderly: what was saved at that start wins.
      TraceText(" restore control files from QVXBACKUP");
      for (const auto& f : ControlFiles(program_folder)) fs::remove(f, ec);
      // A control file that cannot be restored stays in QVXBACKUP, which is left in place.
      for (const auto& f : saved) (void)platform::CopyFileOver(f, program_folder / f.filename());
      return;
    }
  } else {
    backup = platform::EnsureSubfolder(program_folder, "QVXBACKUP");
  }
  TraceText(" back up control files to QVXBACKUP");
  for (const auto& f : ControlFiles(program_folder))
    // The backup only serves a start after a crash; this run goes on without it.
    (void)platform::CopyFileOver(f, *backup / f.filename());
}

void WriteMissingSchemaFiles(const fs::path& program_folder) {
  fs::path dir = platform::EnsureSubfolder(program_folder, "DEFAULTXSD");
  TraceText(" load, check for schema files");
  // A schema that cannot be written fails the check of a file against it, which says why.
  if (!platform::ExistsNoCase(dir, "BPSchema.xsd")) (void)genseries::WriteBPSchema(dir / "BPSchema.xsd");
  if (!platform::ExistsNoCase(dir, batch::kBatchSchemaName))
    (void)batch::CreateBATCHXSD(dir / batch::kBatchSchemaName);
  if (!platform::ExistsNoCase(dir, "UserPrefschema.xsd"))
    WriteUserPrefSchema(dir / "UserPrefschema.xsd");
  if (!platform::ExistsNoCase(dir, "UserPreferences.xml"))
    WritePreferencesFile(program_folder, Prefs());
}

void FormLoad(CSetting& settings) {
  EnterProcedure("frmMain", "Form_Load");
  ShellState& s = Shell();
  const fs::path& folder = s.program_folder;
  TraceText(" load settings");
  LoadSettings(settings);

  for (const char* name : {"ENGINE.GO", "POOLPARAMS.RWF", "AGGPARAMS.RWF"})
    platform::RemoveNoCase(folder, name);
  s.NoTrendAtStart = platform::ExistsNoCase(folder, "NOTREND.QVX");
  for (const char* name : {"ALLOWMOD.QVX", "STARTMOD.123", "DATE.QVX"})
    platform::RemoveNoCase(folder, name);

  TraceText(" before control file backup");
  BackupControlFiles(folder);
  TraceText(" after control file backup");

  WriteMissingSchemaFiles(folder);
  LoadPrefXmlFile(folder, Prefs());

  std::error_code ec;
  fs::current_path(folder, ec);
  // The Test menu follows s.DevMode, set from "/DEV" by MainPrepare.

  platform::RemoveNoCase(folder, "Processing Errors.Err");
  platform::RemoveNoCase(folder, "Process Errors.Err");
  s.RunCanceled = false;

  SharedError() = clsError();
  s.PreCheck = false;
  TraceText(" end of load");
}

namespace {
// The file is opened for exclusive access and closed at once: another program holding it
// (or a missing or unreadable file) stops the run here.
bool CanOpenExclusively(const fs::path& file) {
  EnterProcedure("frmMain", "Form_Load");
  std::error_code ec;
  if (!fs::exists(file, ec)) {
    Err().Raise(53, kApplicationTitle, "File not found: " + file.string());
    return false;
  }
  if (fs::is_directory(file, ec)) {
    Err().Raise(75, kApplicationTitle, "Path/File access error: " + file.string());
    return false;
  }
  int fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    Err().Raise(75, kApplicationTitle, "Path/File access error: " + file.string());
    return false;
  }
  // Another program's probe holds the file only for an instant (the jobs of one parallel run
  // start together), so a lock is tried for up to a second before the file counts as in use.
  bool locked = false;
  for (int attempt = 0; attempt < 20 && !locked; ++attempt) {
    locked = ::flock(fd, LOCK_EX | LOCK_NB) == 0;
    if (!locked) std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  if (locked) ::flock(fd, LOCK_UN);
  ::close(fd);
  if (!locked) {
    Err().Raise(70, kApplicationTitle, "Permission denied: " + file.string());
    return false;
  }
  return true;
}
}  // namespace

std::optional<int> RunCommandLine(const CommandLine& command_line, CommandLineRunner& runner) {
  EnterProcedure("frmMain", "Form_Load");
  auto file = command_line.File();
  if (!file) return std::nullopt;
  const auto& tokens = command_line.tokens;
  std::string sheet;
  if (tokens.size() >= 2) {
    sheet = tokens[1];
    if (sheet.find_first_not_of(" \t") == std::string::npos) {
      std::cerr << "Tessaly: the report sheet named after " << *file
                << " is empty; nothing was run." << std::endl;
      FileExit();
      return 2;
    }
  }
  std::vector<std::string> options;
  if (tokens.size() >= 3) options = tokens;

  // A relative name means the folder the user started in; start-up has since moved to
  // the program's folder.
  fs::path path(*file);
  if (path.is_relative() && !Shell().launch_folder.empty()) path = Shell().launch_folder / path;
  if (!CanOpenExclusively(path)) {
    SharedError().StdError();
    Err().Clear();
    FileExit();
    return 2;
  }
  std::string ext = platform::ToUpper(path.extension().string());
  int status;
  if (ext == ".XLS" || ext == ".XLSX") {
    TraceText(" run workbook " + path.string());
    status = runner.RunWorkbook(path, sheet, options);
  } else if (ext == ".XML") {
    TraceText(" run project " + path.string());
    status = runner.RunProject(path);
  } else {
    std::cerr << "Tessaly: " << path.string()
              << " is neither a project (.xml) nor a workbook (.xls, .xlsx); nothing was run."
              << std::endl;
    status = 2;
  }
  FileExit();
  TraceText(" end of sub");
  return status;
}

ExitHooks& Hooks() {
  static ExitHooks hooks;
  return hooks;
}

void FileExit() {
  EnterMenuCommand("frmMain", "mnuFileExit_Click");
  ExitHooks& hooks = Hooks();
  if (hooks.settle_series_properties) hooks.settle_series_properties();

  const fs::path& folder = Shell().program_folder;
  auto backup = platform::FindNoCase(folder, "QVXBACKUP");
  std::vector<fs::path> saved;
  if (backup) saved = ControlFiles(*backup);
  if (!saved.empty()) {
    std::error_code ec;
    for (const auto& f : ControlFiles(folder)) {
      TraceText(" delete " + f.filename().string());
      fs::remove(f, ec);
    }
    for (const auto& f : saved) {
      fs::path target = folder / f.filename();
      fs::rename(f, target, ec);
      if (ec) {
        ec.clear();
        if (platform::CopyFileOver(f, target)) fs::remove(f, ec);
      }
    }
  }
  if (hooks.project_open && hooks.project_open() && hooks.close_project) hooks.close_project();
  TraceText("Exiting:");
}

void FormUnload(CSetting& settings) {
  EnterProcedure("frmMain", "Form_Unload");
  Shell().ReportCleanList.clear();
  SaveSettings(settings);
  FileExit();
  if (Shell().LogOn && TraceLog().IsOpen()) {
    TraceLog().WriteFooter();
    TraceLog().CloseFile();
  }
  UnlockWorkingFolder();
}

}  // namespace tessaly::shell
