#include "platform/paths.h"

#include <gtest/gtest.h>

#include "support/program_folder.h"

namespace tessaly::platform {
namespace {

using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

TEST(Paths, FindsNamesWhateverTheirCase) {
  TempDir dir;
  WriteFile(dir / "Output.TXT", "x");
  auto found = FindNoCase(dir.path(), "OUTPUT.txt");
  ASSERT_TRUE(found);
  EXPECT_EQ(found->filename(), "Output.TXT");
  EXPECT_FALSE(FindNoCase(dir.path(), "OUTPUT.tx"));
  EXPECT_FALSE(FindNoCase(dir.path() / "missing", "x"));
  // A name that does not exist resolves to the case given, for creation.
  EXPECT_EQ(ResolveNoCase(dir.path(), "NEW.QVX").filename(), "NEW.QVX");
  EXPECT_EQ(ResolveNoCase(dir.path(), "output.txt").filename(), "Output.TXT");
}

TEST(Paths, RemovesEverySpellingAndListsBySuffix) {
  TempDir dir;
  WriteFile(dir / "ENGINE.QVX", "a");
  WriteFile(dir / "allow.qvx", "b");
  WriteFile(dir / "notes.txt", "c");
  fs::create_directory(dir / "SUB.QVX");  // folders never count as files
  auto qvx = FilesEndingNoCase(dir.path(), "QVX");
  ASSERT_EQ(qvx.size(), 2u);
  EXPECT_EQ(qvx[0].filename(), "ENGINE.QVX");
  EXPECT_EQ(qvx[1].filename(), "allow.qvx");
  EXPECT_TRUE(RemoveNoCase(dir.path(), "engine.qvx"));
  EXPECT_FALSE(ExistsNoCase(dir.path(), "ENGINE.QVX"));
  EXPECT_FALSE(RemoveNoCase(dir.path(), "engine.qvx"));
}

TEST(Paths, EnsureSubfolderKeepsAnExistingSpelling) {
  TempDir dir;
  fs::create_directory(dir / "output");
  EXPECT_EQ(EnsureSubfolder(dir.path(), "OUTPUT").filename(), "output");
  EXPECT_TRUE(fs::is_directory(EnsureSubfolder(dir.path(), "QVXBACKUP")));
  EXPECT_EQ(WithTrailingSlash("/a/b"), "/a/b/");
  EXPECT_EQ(WithTrailingSlash("/a/b/"), "/a/b/");
}

}  // namespace
}  // namespace tessaly::platform
