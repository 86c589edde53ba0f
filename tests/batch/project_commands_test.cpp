#include "batch/project_commands.h"

#include <gtest/gtest.h>

#include <deque>

#include "support/messages.h"
#include "support/program_folder.h"

namespace tessaly::batch {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;
using Files = std::vector<std::string>;

// Scripted pages: each call takes the next answer of its queue.
struct ScriptedForms : ProjectForms {
  std::deque<PageAnswer<std::string>> folders, outputs, names;
  std::deque<PageAnswer<Files>> selections, edits;
  std::vector<Files> offered;
  std::vector<std::string> edit_status;
  PageAnswer<std::string> AscFolder(const std::string&) override { return Take(folders); }
  PageAnswer<Files> SelectFiles(const Files& available) override {
    offered.push_back(available);
    return Take(selections);
  }
  PageAnswer<std::string> OutputFolder(const std::string& initial) override {
    offered_out.push_back(initial);
    return Take(outputs);
  }
  std::vector<std::string> offered_out;
  PageAnswer<std::string> XmlName(const std::string&) override { return Take(names); }
  PageAnswer<Files> EditSeries(const Files& available, const Files&, const std::string& status) override {
    offered.push_back(available);
    edit_status.push_back(status);
    return Take(edits);
  }
  template <typename T>
  static T Take(std::deque<T>& q) {
    if (q.empty()) return T::Cancel();
    T t = q.front();
    q.pop_front();
    return t;
  }
};

std::string Asc(int seasonality) {
  std::string s = "0\n0\n0\n1\n" + std::to_string(seasonality) + "\n2000\n1\n3\n0\n0\n1\nX\n0\n1\n2\n3\n";
  return s;
}

class ProjectCommandsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    session.program_folder = program.path();
    fs::create_directories(data / "asc");
    fs::create_directories(data / "empty");
    WriteFile(data / "asc/b.asc", Asc(12));
    WriteFile(data / "asc/A.ASC", Asc(12));
    WriteFile(data / "asc/notes.txt", "not a dataset");
  }
  TempDir program, data;
  ProjectSession session;
  ScriptedForms forms;
  tessaly::testing::RecordedMessages host;
  std::vector<fs::path> recent;
  std::vector<std::string> log;
  ProjectHooks Hooks() {
    ProjectHooks h;
    h.add_recent = [this](const fs::path& p) { recent.push_back(p); };
    h.log = [this](const std::string& l) { log.push_back(l); };
    return h;
  }
};

TEST_F(ProjectCommandsTest, NewProjectWalksThePagesWithTheirRefusals) {
  WriteFile(program / "ENGINE.GO", "rules");
  WriteFile(program / "Process Errors.Err", "old");
  WriteFile(data / "proj.xml", "an older file");
  using S = PageAnswer<std::string>;
  using F = PageAnswer<Files>;
  forms.folders = {S::Next((data / "empty").string()), S::Next((data / "asc").string())};
  forms.selections = {F::Next({}), F::Next({"A.ASC"}), F::Next({"b.asc", "A.ASC"})};
  forms.outputs = {S::Back(), S::Next((data / "out").string()), S::Next((data / "out").string())};
  // The save dialog: a name in a folder that does not exist (the project cannot be written,
  // the output page comes again), an existing name refused once (No), then a new one.
  const std::string unwritable = (data / "no such folder" / "p.xml").string();
  host->files = {unwritable, (data / "proj.xml").string(), (data / "new.xml").string()};
  // Every message takes an answer: three notices, then No to "Overwrite?".
  host->answers = {platform::mb::OK, platform::mb::OK, platform::mb::OK, platform::mb::No};
  fs::create_directories(data / "out");
  ProjectCommands commands(session, forms, Hooks());
  ASSERT_TRUE(commands.mnuFileNew());

  EXPECT_EQ(forms.offered.front(), (Files{"A.ASC", "b.asc"}));
  EXPECT_EQ(host.Texts(), (Files{
                         "There are no .asc files in the directory you selected!",
                         "FYI!  No files listed in the \"Chosen\" column!  Highlight file names listed "
                         "under \"Available\" and click \"Add\" to add files before continuing.",
                         "The project could not be written to " + unwritable + ".",
                         "Warning: the file you have chosen already exists. Overwrite?",
                         "File successfully created.",
                         "\"" + (data / "new.xml").string() + "\" created.",
                     }));
  EXPECT_EQ(host->shown[3].title, "File Exists");
  EXPECT_FALSE(fs::exists(program / "ENGINE.GO"));
  EXPECT_FALSE(fs::exists(program / "Process Errors.Err"));
  EXPECT_EQ(ReadFile(data / "proj.xml"), "an older file");
  ASSERT_TRUE(session.ctrlBatch);
  EXPECT_EQ(session.ctrlBatch->Size(), 2);
  EXPECT_EQ(session.ctrlBatch->List(0), "b.asc");
  EXPECT_EQ(session.ctrlBatch->RunDate(1), "00/00/00");
  // The reports of "new.xml" go to a folder of its own under the one chosen.
  EXPECT_EQ(session.ctrlBatch->OutDirectory(), (data / "out/new").string() + "/");
  EXPECT_EQ(forms.offered_out.front(), (data / "asc").string() + "/");
  EXPECT_EQ(recent, (std::vector<fs::path>{data / "new.xml"}));
  cBatchFile saved(program.path());
  ASSERT_TRUE(saved.Load(data / "new.xml"));
  EXPECT_EQ(saved.InDirectory(), (data / "asc").string() + "/");
  EXPECT_EQ(saved.Size(), 2);
}

TEST_F(ProjectCommandsTest, OpenTellsMissingFilesAndPutsBackupsBack) {
  cBatchFile p(program.path());
  p.SetInDirectory((data / "asc").string());
  p.SetOutDirectory((data / "out").string());
  p.Add_File("A.ASC", 1, 0, "11/01/26");
  p.Add_File("gone.asc", 0, 0, "00/00/00");
  ASSERT_TRUE(p.Build(data / "p.xml"));
  fs::create_directories(data / "asc/ASCBACKUP");
  WriteFile(data / "asc/ASCBACKUP/A.ASC", "the original");
  WriteFile(program / "STARTMOD.123", "model");
  bool populated = false;
  ProjectHooks hooks = Hooks();
  hooks.populate_tree = [&](ProjectSession& s) { populated = s.ctrlBatch != nullptr; };
  ProjectCommands commands(session, forms, hooks);
  ASSERT_TRUE(commands.OpenProject(data / "p.xml"));
  EXPECT_EQ(host.Texts(), (Files{"Warning!  The following file(s) weren't found: \r\ngone.asc\r\nYou may exit the "
                            "program and place these files in " + (data / "asc").string() +
                            "/; or you may use Batch\\Edit to delete/replace the missing files"}));
  EXPECT_EQ(ReadFile(data / "asc/A.ASC"), "the original");
  EXPECT_FALSE(fs::exists(data / "asc/ASCBACKUP/A.ASC"));
  EXPECT_EQ(log, (Files{"Org = " + (data / "asc/ASCBACKUP/A.ASC").string(),
                        "   Dest = " + (data / "asc/A.ASC").string()}));
  EXPECT_TRUE(fs::is_directory(data / "out/OUTPUT"));
  EXPECT_FALSE(fs::exists(program / "STARTMOD.123"));
  EXPECT_TRUE(populated);

  // None found: the project is not opened.
  host->shown.clear();
  p.SetInDirectory((data / "empty").string());
  ASSERT_TRUE(p.Build(data / "q.xml"));
  session.ctrlBatch.reset();
  EXPECT_FALSE(commands.OpenProject(data / "q.xml"));
  EXPECT_EQ(host.Texts(), (Files{"Warning! None of following file(s) were found: \r\nA.ASC\r\ngone.asc\r\n; or you "
                            "may select to open another file."}));
  EXPECT_FALSE(session.ctrlBatch);
  host->shown.clear();
  EXPECT_FALSE(commands.OpenProject(data / "nowhere.xml"));
  EXPECT_EQ(host.Texts(), (Files{"FYI! \"" + (data / "nowhere.xml").string() +
                            "\" does not exist. We will discontinue processing. You may select to open another file."}));
}

TEST_F(ProjectCommandsTest, EditKeepsStatusesBacksUpAndCloseAsksToSave) {
  cBatchFile p(program.path());
  p.SetInDirectory((data / "asc").string());
  p.SetOutDirectory((data / "out").string());
  p.Add_File("A.ASC", 1, 0, "11/01/26");
  ASSERT_TRUE(p.Build(data / "p.xml"));
  ProjectCommands commands(session, forms, Hooks());
  ASSERT_TRUE(commands.OpenProject(data / "p.xml"));
  WriteFile(data / "out/OUTPUT/display.html", "x");
  Files too_many(2501, "x.asc");
  using F = PageAnswer<Files>;
  forms.edits = {F::Next({}), F::Next(too_many), F::Next({"A.ASC", "b.asc"})};
  ASSERT_TRUE(commands.mnuBatchEdit());
  EXPECT_EQ(host.Texts(), (Files{"FYI!  You must select at least one series!",
                            "You have selected 2501 asc files. The allowable limit of asc files in a xml is "
                            "2500. You must delete the excess asc files; or make a new xml file."}));
  EXPECT_EQ(forms.edit_status.front(), "Now looking in directory: " + (data / "asc").string() + "/");
  cBatchFile& b = *session.ctrlBatch;
  EXPECT_EQ(b.Completed(0), 1);
  EXPECT_EQ(b.RunDate(0), "11/01/26");
  EXPECT_EQ(b.Completed(1), 0);
  EXPECT_TRUE(b.Changed());
  EXPECT_EQ(ReadFile(data / "asc/ASCBACKUP/b.asc"), Asc(12));
  EXPECT_FALSE(fs::exists(data / "out/OUTPUT/display.html"));

  // Close: Yes saves; the backups go back over the files changed for a run.
  WriteFile(data / "asc/b.asc", "changed by a run");
  host->shown.clear();
  host->answers = {platform::mb::Yes};
  commands.mnuFileClose();
  EXPECT_EQ(host.Texts(), (Files{"Would you like to save \"p.xml\"?"}));
  EXPECT_EQ(ReadFile(data / "asc/b.asc"), Asc(12));
  EXPECT_FALSE(session.ctrlBatch);
  cBatchFile saved(program.path());
  ASSERT_TRUE(saved.Load(data / "p.xml"));
  EXPECT_EQ(saved.Size(), 2);
}

TEST_F(ProjectCommandsTest, SelectingOneSeries) {
  EXPECT_EQ(SelectSeriesAdd({}), "");
  EXPECT_EQ(SelectSeriesAdd({"A.ASC"}).rfind("FYI!  You may only select one ASC file.", 0), 0u);
  EXPECT_EQ(SelectSeriesNext({}, data / "asc", false).rfind("FYI!  No files listed", 0), 0u);
  EXPECT_EQ(SelectSeriesNext({"A.ASC"}, data / "asc", true), "");
  WriteFile(data / "asc/w.asc", Asc(6));
  EXPECT_EQ(SelectSeriesNext({"w.asc"}, data / "asc", true),
            "Generated series can only be created for datasets that have a seasonality of 1, 4, 5, 7, 12, or 52.");
  EXPECT_EQ(SelectSeriesNext({"w.asc"}, data / "asc", false), "");
}

}  // namespace
}  // namespace tessaly::batch
