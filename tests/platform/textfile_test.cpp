#include "platform/textfile.h"

#include <gtest/gtest.h>

#include "support/program_folder.h"

namespace tessaly::platform {
namespace {

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

}  // namespace
}  // namespace tessaly::platform
