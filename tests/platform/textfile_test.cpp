#include "platform/textfile.h"

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "support/program_folder.h"
#include "support/small_disk.h"

namespace tessaly::platform {
namespace {

namespace fs = std::filesystem;
using tessaly::testing::SmallDisk;

using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

TEST(TextFile, ReadsCrLfAndLfAlikeAndKeepsALastLineWithoutEnd) {
  TempDir dir;
  WriteFile(dir / "mixed.txt", "one\r\ntwo\nthree\r\n\r\nlast");
  auto lines = ReadAllLines(dir / "mixed.txt");
  ASSERT_TRUE(lines);
  EXPECT_EQ(*lines, (std::vector<std::string>{"one", "two", "three", "", "last"}));

  WriteFile(dir / "empty.txt", "");
  EXPECT_TRUE(ReadAllLines(dir / "empty.txt")->empty());
  EXPECT_FALSE(ReadAllLines(dir / "missing.txt"));
}

TEST(TextFile, LineReaderSkipsAndCounts) {
  TempDir dir;
  WriteFile(dir / "f.txt", "a\nb\nc\n");
  LineReader r(dir / "f.txt");
  EXPECT_TRUE(r.Skip(2));
  EXPECT_EQ(r.Next().value(), "c");
  EXPECT_FALSE(r.Next());
  EXPECT_EQ(r.LinesRead(), 3);
  LineReader r2(dir / "f.txt");
  EXPECT_FALSE(r2.Skip(4));
}

TEST(TextFile, WritesCrLfAndAppends) {
  TempDir dir;
  ASSERT_TRUE(WriteAllLines(dir / "out.txt", {"x", "", "y"}));
  EXPECT_EQ(ReadFile(dir / "out.txt"), "x\r\n\r\ny\r\n");
  ASSERT_TRUE(AppendLine(dir / "out.txt", "z"));
  EXPECT_EQ(ReadFile(dir / "out.txt"), "x\r\n\r\ny\r\nz\r\n");
  EXPECT_FALSE(WriteAllLines(dir / "no-such-folder" / "f.txt", {"x"}));
}

// A writer that could not open its file never reports success, whatever the reason.
TEST(TextFile, AWriterThatCannotOpenItsFileFails) {
  TempDir dir;
  WriteFile(dir / "a-file", "x");
  fs::create_directory(dir / "a-folder");
  for (const fs::path& path : {dir / "no-such-folder" / "f.txt", dir / "a-file" / "f.txt", dir / "a-folder"}) {
    SCOPED_TRACE(path.string());
    TextWriter w(path);
    w.Line("text");
    EXPECT_FALSE(w.Close());
    EXPECT_FALSE(WriteWholeFile(path, "text"));
    EXPECT_FALSE(AppendLine(path, "text"));
  }
  EXPECT_TRUE(fs::is_directory(dir / "a-folder"));
  EXPECT_EQ(ReadFile(dir / "a-file"), "x");
}

// A rewrite goes through a temporary file: the old file is whole until the new one is
// complete, keeps its permissions and links, and nothing is left beside it.
TEST(TextFile, ARewriteReplacesTheFileWholeOrNotAtAll) {
  TempDir dir;
  WriteFile(dir / "rules.txt", "old\r\n");
  ::chmod((dir / "rules.txt").c_str(), 0640);
  fs::create_symlink(dir / "rules.txt", dir / "link.txt");
  ASSERT_TRUE(WriteAllLines(dir / "link.txt", {"new"}));
  EXPECT_TRUE(fs::is_symlink(dir / "link.txt"));
  EXPECT_EQ(ReadFile(dir / "rules.txt"), "new\r\n");
  EXPECT_EQ(fs::status(dir / "rules.txt").permissions() & fs::perms::all,
            fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
  {
    TextWriter w(dir / "rules.txt");
    w.Line("given up");
    w.Abandon();
  }
  EXPECT_EQ(ReadFile(dir / "rules.txt"), "new\r\n");
  EXPECT_EQ(std::distance(fs::directory_iterator(dir.path()), fs::directory_iterator()), 2);

  // Killed mid-write: the old file is as it was.
  pid_t child = ::fork();
  if (child == 0) {
    TextWriter w(dir / "rules.txt");
    for (int i = 0; i < 100000; ++i) w.Line("half written");
    ::kill(::getpid(), SIGKILL);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(ReadFile(dir / "rules.txt"), "new\r\n");
}

TEST(TextFile, AFullDiskFailsTheWriteAndLeavesTheOldFileWhole) {
  SmallDisk disk(16 * 1024);
  TESSALY_REQUIRE_SMALL_DISK(disk);
  const std::string old_text(4000, 'o');
  ASSERT_TRUE(WriteWholeFile(disk / "project.xml", old_text));
  std::string reason;
  EXPECT_FALSE(WriteWholeFile(disk / "project.xml", std::string(64 * 1024, 'n'), &reason));
  EXPECT_NE(reason.find("No space left on device"), std::string::npos) << reason;
  EXPECT_EQ(ReadFile(disk / "project.xml"), old_text);
  EXPECT_EQ(std::distance(fs::directory_iterator(disk.path()), fs::directory_iterator()), 1);
  // An append that does not fit fails too.
  TextWriter w(disk / "log.txt", TextWriter::Mode::Append);
  w.Raw(std::string(64 * 1024, 'a'));
  EXPECT_FALSE(w.Close());
}

// Reads stop at what no file of the system exceeds: a device, a pipe or a link to one is
// refused before it is read (none blocks or runs on), an endless line ends the read.
TEST(TextFile, ReadsAreBoundedAndRefuseWhatIsNotAFile) {
  TempDir dir;
  fs::create_symlink("/dev/zero", dir / "zero.asc");
  fs::create_symlink("/dev/urandom", dir / "random.asc");
  ASSERT_EQ(::mkfifo((dir / "pipe.asc").c_str(), 0600), 0);
  fs::create_directory(dir / "folder.asc");
  for (const char* name : {"zero.asc", "random.asc", "pipe.asc", "folder.asc", "/dev/zero"}) {
    SCOPED_TRACE(name);
    fs::path path = name[0] == '/' ? fs::path(name) : dir / name;
    EXPECT_FALSE(IsReadableFile(path));
    EXPECT_FALSE(ReadWholeFile(path));
    EXPECT_FALSE(ReadAllLines(path));
    EXPECT_FALSE(LineReader(path).IsOpen());
  }
  WriteFile(dir / "long.txt", "a\n" + std::string(kMaxLineBytes + 10, 'x') + "\nb\n");
  LineReader r(dir / "long.txt");
  EXPECT_EQ(r.Next().value(), "a");
  EXPECT_FALSE(r.Next());
  EXPECT_TRUE(r.TooLarge());
  EXPECT_FALSE(ReadAllLines(dir / "long.txt"));
}

}  // namespace
}  // namespace tessaly::platform
