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

// A writer that cannot open its file never reports success; a rewrite goes through a
// temporary file, so the old file is whole until the new one is (given up, killed or on
// a full disk), keeps its permissions and links, and nothing is left beside it.
TEST(TextFile, ARewriteReplacesTheFileWholeOrFailsAndLeavesItAsItWas) {
  TempDir dir;
  WriteFile(dir / "rules.txt", "old\r\n");
  fs::create_directory(dir / "a-folder");
  for (const fs::path& path : {dir / "no-such-folder" / "f.txt", dir / "rules.txt" / "f.txt", dir / "a-folder"}) {
    EXPECT_FALSE(WriteWholeFile(path, "text")) << path;
    EXPECT_FALSE(AppendLine(path, "text")) << path;
  }
  ::chmod((dir / "rules.txt").c_str(), 0640);
  fs::create_symlink(dir / "rules.txt", dir / "link.txt");
  ASSERT_TRUE(WriteAllLines(dir / "link.txt", {"new"}));
  EXPECT_TRUE(fs::is_symlink(dir / "link.txt"));
  EXPECT_EQ(ReadFile(dir / "rules.txt"), "new\r\n");
  EXPECT_EQ(fs::status(dir / "rules.txt").permissions() & fs::perms::all,
            fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
  TextWriter(dir / "rules.txt").Abandon();
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

  SmallDisk disk(16 * 1024);
  TESSALY_REQUIRE_SMALL_DISK(disk);
  ASSERT_TRUE(WriteWholeFile(disk / "project.xml", "old"));
  std::string reason;
  EXPECT_FALSE(WriteWholeFile(disk / "project.xml", std::string(64 * 1024, 'n'), &reason));
  EXPECT_NE(reason.find("No space left on device"), std::string::npos) << reason;
  EXPECT_EQ(ReadFile(disk / "project.xml"), "old");
  EXPECT_EQ(std::distance(fs::directory_iterator(disk.path()), fs::directory_iterator()), 1);
  EXPECT_FALSE(AppendLine(disk / "log.txt", std::string(64 * 1024, 'a')));
}

// Reads stop at what no file of the system exceeds: a device, a pipe or a link to one is
// refused before it is read (none blocks or runs on), an endless line ends the read.
TEST(TextFile, ReadsAreBoundedAndRefuseWhatIsNotAFile) {
  TempDir dir;
  fs::create_symlink("/dev/zero", dir / "zero.asc");
  fs::create_symlink("/dev/urandom", dir / "random.asc");
  ASSERT_EQ(::mkfifo((dir / "pipe.asc").c_str(), 0600), 0);
  for (const char* name : {"zero.asc", "random.asc", "pipe.asc"}) {
    EXPECT_FALSE(ReadWholeFile(dir / name)) << name;
    EXPECT_FALSE(ReadAllLines(dir / name)) << name;
  }
  WriteFile(dir / "long.txt", "a\n" + std::string(kMaxLineBytes + 10, 'x') + "\nb\n");
  LineReader r(dir / "long.txt");
  EXPECT_EQ(r.Next().value(), "a");
  EXPECT_FALSE(r.Next());
  EXPECT_TRUE(r.TooLarge());
}

}  // namespace
}  // namespace tessaly::platform
