#include "batch/project_commands.h"

#include <algorithm>
#include <system_error>

#include "batch/batch_texts.h"
#include "batch/run_outputs.h"
#include "dataset/asc_dataset.h"
#include "platform/dialogs.h"
#include "platform/paths.h"

namespace tessaly::batch {

using platform::Dialogs;
namespace mb = platform::mb;

namespace {

void Tell(const std::string& text, const std::string& title = texts::kAppTitle) {
  Dialogs().Message(text, mb::OKOnly, title);
}

void RemoveAll(const fs::path& folder, const char* name) {
  while (platform::RemoveNoCase(folder, name)) {
  }
}

std::string JoinLines(const std::vector<std::string>& names) {
  std::string out;
  for (const auto& n : names) out += n + "\r\n";
  return out;
}

constexpr const char* kXmlFilter = "XML files (*.xml)|*.xml";

}  // namespace

ProjectCommands::ProjectCommands(ProjectSession& session, ProjectForms& forms, ProjectHooks hooks)
    : s_(session), forms_(forms), hooks_(std::move(hooks)) {
  if (s_.program_folder.empty()) s_.program_folder = platform::ProgramFolder();
}

void ProjectCommands::Log(const std::string& line) const {
  if (hooks_.log) hooks_.log(line);
}

std::vector<std::string> ProjectCommands::AscFilesIn(const fs::path& folder) {
  std::vector<std::string> names;
  for (const fs::path& p : platform::FilesEndingNoCase(folder, ".asc")) names.push_back(p.filename().string());
  return names;
}

void ProjectCommands::RestoreBackups(const fs::path& folder, const std::string& backup) {
  auto backup_folder = platform::FindNoCase(folder, backup);
  if (!backup_folder || !fs::is_directory(*backup_folder)) return;
  std::error_code ec;
  for (auto it = fs::directory_iterator(*backup_folder, ec); !ec && it != fs::directory_iterator();
       it.increment(ec)) {
    if (!it->is_regular_file()) continue;
    fs::path dest = platform::ResolveNoCase(folder, it->path().filename().string());
    Log("Org = " + it->path().string());
    Log("   Dest = " + dest.string());
    // A file that cannot be moved back stays in the backup folder, named in the log above.
    (void)MoveFileOver(it->path(), dest);
  }
}

std::optional<fs::path> ProjectCommands::AskProjectPath(const std::string& folder) {
  for (;;) {
    std::optional<std::string> chosen;
    if (hooks_.name_form_instead_of_dialog) {
      auto answer = forms_.XmlName(folder);
      if (answer.kind != PageAnswer<std::string>::Kind::Next) return std::nullopt;
      if (answer.value.empty()) {
        Tell(texts::kNeedXmlName);
        continue;
      }
      std::string name = answer.value;
      if (!platform::EndsWithNoCase(name, ".xml")) name += ".xml";
      chosen = (fs::path(folder) / name).string();
    } else {
      platform::FileDialogRequest request;
      request.title = "Save Project";
      request.filter = kXmlFilter;
      request.initial_dir = folder;
      request.must_exist = false;
      chosen = Dialogs().SaveFile(request);
      if (!chosen) return std::nullopt;
    }
    fs::path path = *chosen;
    if (fs::exists(path)) {
      int16_t answer = Dialogs().Message(std::string(texts::kFileExists) + texts::kOverwrite,
                                         mb::YesNo + mb::Exclamation + mb::DefaultButton2,
                                         texts::kFileExistsTitle);
      if (answer != mb::Yes) continue;
    }
    return path;
  }
}

bool ProjectCommands::mnuFileNew() {
  // What an earlier project or run left: the ASC files an aggregation backed up go back,
  // the error logs and control files go, the tree is emptied.
  if (s_.ctrlBatch) RestoreBackups(s_.ctrlBatch->InDirectory(), "AGGBACKUP");
  for (const char* name : {"Processing Errors.Err", "Process Errors.Err", "ENGINE.GO", "STARTMOD.123"})
    RemoveAll(s_.program_folder, name);
  s_.trvMenu.Clear();

  auto project = std::make_unique<cBatchFile>(s_.program_folder);
  std::string folder = s_.ctrlBatch ? s_.ctrlBatch->InDirectory() : s_.program_folder.string();
  std::vector<std::string> available;
  enum class Page { Folder, Select, Output } page = Page::Folder;
  std::vector<std::string> chosen;
  for (;;) {
    if (page == Page::Folder) {
      // The folder of the ASC files (frmASCLoc).
      auto answer = forms_.AscFolder(folder);
      if (answer.kind != PageAnswer<std::string>::Kind::Next) return false;
      available = AscFilesIn(answer.value);
      if (available.empty()) {
        Tell(texts::kNoAscInFolder);
        continue;
      }
      folder = answer.value;
      project->SetInDirectory(folder);
      // The output page starts beside the data, not among the program's own folders.
      project->SetOutDirectory(folder);
      page = Page::Select;
    } else if (page == Page::Select) {
      // The files of the project among them (frmSelect).
      auto answer = forms_.SelectFiles(available);
      if (answer.kind == PageAnswer<std::vector<std::string>>::Kind::Back) {
        page = Page::Folder;
        continue;
      }
      if (answer.kind == PageAnswer<std::vector<std::string>>::Kind::Cancel) return false;
      if (answer.value.empty()) {
        Tell(texts::kNoneChosen);
        continue;
      }
      chosen = answer.value;
      page = Page::Output;
    } else {
      // The output folder (frmChooseOut).
      auto answer = forms_.OutputFolder(project->OutDirectory());
      if (answer.kind == PageAnswer<std::string>::Kind::Back) {
        page = Page::Select;
        continue;
      }
      if (answer.kind == PageAnswer<std::string>::Kind::Cancel) return false;
      project->SetOutDirectory(answer.value);
      // The project's file.
      auto path = AskProjectPath(project->OutDirectory());
      if (!path) continue;
      for (const auto& name : chosen) project->Add_File(name, 0, 0, "00/00/00");
      project->SetBatchName(path->filename().string());
      // The reports in a folder named after the project under the one chosen: two projects
      // saved side by side never share an OUTPUT folder.
      project->SetOutDirectory((fs::path(answer.value) / ProjectStem(project->BatchName())).string());
      if (!project->Build(*path)) {
        Tell("The project could not be written to " + path->string() + ".");
        while (project->Size() > 0) project->Remove_File();
        project->SetOutDirectory(answer.value);
        continue;
      }
      Tell(texts::kFileCreated);
      Tell("\"" + path->string() + "\"" + texts::kCreatedEnd);
      if (hooks_.add_recent) hooks_.add_recent(*path);
      s_.ctrlBatch = std::move(project);
      s_.project_path = *path;
      s_.OutputPath = platform::EnsureSubfolder(s_.ctrlBatch->OutDirectory(), "OUTPUT");
      s_.lblStatus.clear();
      return true;
    }
  }
}

bool ProjectCommands::mnuFileOpen() {
  platform::FileDialogRequest request;
  request.title = "Open Project";
  request.filter = kXmlFilter;
  request.initial_dir = s_.ctrlBatch ? s_.ctrlBatch->OutDirectory() : s_.program_folder.string();
  auto chosen = Dialogs().OpenFile(request);
  if (!chosen) return false;
  return OpenProject(*chosen);
}

bool ProjectCommands::OpenProject(const fs::path& path) {
  if (!fs::exists(path)) {
    Tell(std::string(texts::kFyiBang) + "\"" + path.string() + "\" " + texts::kNotExist +
         texts::kOpenAnother);
    return false;
  }
  auto project = std::make_unique<cBatchFile>(s_.program_folder);
  if (!project->Load(path)) return false;

  std::vector<std::string> missing;
  for (int i = 0; i < static_cast<int>(project->Count()); ++i)
    if (!platform::ExistsNoCase(project->InDirectory(), project->List(i))) missing.push_back(project->List(i));
  if (!missing.empty() && missing.size() == project->Count()) {
    Tell(std::string(texts::kNoneFound1) + "\r\n" + JoinLines(missing) + texts::kNoneFound2);
    return false;
  }
  if (!missing.empty())
    Tell(std::string(texts::kSomeMissing1) + "\r\n" + JoinLines(missing) + texts::kSomeMissing2 +
         project->InDirectory() + texts::kSomeMissing3);
  if (project->Count() > static_cast<size_t>(dataset::MaxAscFilesInProject))
    Tell(project->BatchName() + texts::kLimit1 + std::to_string(project->Count()) + texts::kLimit2 +
             std::to_string(dataset::MaxAscFilesInProject) + texts::kLimit3Open,
         texts::kFyi);

  std::error_code ec;
  fs::create_directories(project->OutDirectory(), ec);
  s_.OutputPath = platform::EnsureSubfolder(project->OutDirectory(), "OUTPUT");
  RestoreBackups(project->InDirectory(), "ASCBACKUP");
  RestoreBackups(project->InDirectory(), "AGGBACKUP");
  RemoveAll(s_.program_folder, "ENGINE.GO");
  RemoveAll(s_.program_folder, "STARTMOD.123");
  s_.ctrlBatch = std::move(project);
  s_.project_path = path;
  s_.lblStatus.clear();
  if (hooks_.populate_tree) hooks_.populate_tree(s_);
  if (hooks_.add_recent) hooks_.add_recent(path);
  return true;
}

void ProjectCommands::mnuFileClose() {
  if (!s_.ctrlBatch) return;
  if (s_.ctrlBatch->Changed()) {
    std::string question = std::string(texts::kSaveQuestion) + " \"" + s_.ctrlBatch->BatchName() + "\"?";
    if (Dialogs().Message(question, mb::YesNo + mb::Question, texts::kAppTitle) == mb::Yes) {
      fs::path path = s_.project_path.empty()
                          ? fs::path(s_.ctrlBatch->OutDirectory()) / s_.ctrlBatch->BatchName()
                          : s_.project_path;
      if (s_.ctrlBatch->Build(path)) s_.ctrlBatch->SetChanged(false);
    }
  }
  RestoreBackups(s_.ctrlBatch->InDirectory(), "ASCBACKUP");
  s_.trvMenu.Clear();
  s_.ctrlBatch.reset();
  s_.project_path.clear();
  s_.lblStatus.clear();
}

bool ProjectCommands::mnuBatchEdit() {
  if (!s_.ctrlBatch) return false;
  cBatchFile& project = *s_.ctrlBatch;
  std::vector<std::string> available = AscFilesIn(project.InDirectory());
  std::vector<std::string> chosen;
  for (int i = 0; i < static_cast<int>(project.Count()); ++i) chosen.push_back(project.List(i));
  std::string status = std::string(texts::kLookingIn) + project.InDirectory();
  for (;;) {
    auto answer = forms_.EditSeries(available, chosen, status);
    if (answer.kind != PageAnswer<std::vector<std::string>>::Kind::Next) return false;
    if (answer.value.empty()) {
      Tell(texts::kSelectOne);
      continue;
    }
    if (answer.value.size() > static_cast<size_t>(dataset::MaxAscFilesInProject)) {
      Tell(std::string(texts::kSelected1) + std::to_string(answer.value.size()) + texts::kLimit2 +
           std::to_string(dataset::MaxAscFilesInProject) + texts::kSelected2);
      continue;
    }
    chosen = answer.value;
    break;
  }
  // The list rebuilt: entries that stay keep their status.
  struct Entry {
    std::string name;
    int16_t completed, error;
    std::string run_date;
  };
  std::vector<Entry> before;
  for (int i = 0; i < static_cast<int>(project.Count()); ++i)
    before.push_back({project.List(i), project.Completed(i), project.Error(i), project.RunDate(i)});
  while (project.Size() > 0) project.Remove_File();
  for (const auto& name : chosen) {
    auto old = std::find_if(before.begin(), before.end(),
                            [&](const Entry& e) { return platform::EqualsNoCase(e.name, name); });
    if (old != before.end())
      project.Add_File(name, old->completed, old->error, old->run_date);
    else
      project.Add_File(name, 0, 0, "00/00/00");
  }
  // The chosen files are kept as they are now, so that changes made for a run can be undone.
  fs::path backup = platform::EnsureSubfolder(project.InDirectory(), "ASCBACKUP");
  for (const auto& name : chosen) {
    auto source = platform::FindNoCase(project.InDirectory(), name);
    // The backup is for undoing a run's changes by hand; the run itself does not need it.
    if (source && !platform::ExistsNoCase(backup, name)) (void)platform::CopyFileOver(*source, backup / name);
  }
  RemoveAll(platform::ResolveNoCase(project.OutDirectory(), "OUTPUT"), "display.html");
  project.SetChanged(true);
  return true;
}

void ProjectCommands::mnuBatchPrevReports() {
  if (!s_.ctrlBatch) return;
  if (hooks_.populate_tree) hooks_.populate_tree(s_);
  if (hooks_.show_tree) hooks_.show_tree(true);
}

std::string SelectSeriesAdd(const std::vector<std::string>& chosen) {
  if (chosen.empty()) return {};
  Tell(texts::kOnlyOne);
  return texts::kOnlyOne;
}

std::string SelectSeriesNext(const std::vector<std::string>& chosen, const fs::path& folder,
                             bool for_generated_series) {
  if (chosen.empty()) {
    Tell(texts::kNoneChosenOne);
    return texts::kNoneChosenOne;
  }
  if (for_generated_series) {
    dataset::AscHeader header;
    dataset::ReadAscHeader(platform::ResolveNoCase(folder, chosen.front()), header);
    int s = header.DataProp[2];
    if (s != 1 && s != 4 && s != 5 && s != 7 && s != 12 && s != 52) {
      Tell(texts::kGeneratedSeasonality);
      return texts::kGeneratedSeasonality;
    }
  }
  return {};
}

}  // namespace tessaly::batch
