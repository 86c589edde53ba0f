#include "platform/inifile.h"

#include <gtest/gtest.h>

#include <limits>

#include "support/program_folder.h"

namespace tessaly::platform {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

TEST(IniFile, ReadsSectionsAndKeysWithoutRegardToCase) {
  IniFile ini = IniFile::Parse(
      "; settings\n[Recent Files]\r\nFile1 = /p/A.XML\r\n  file2=/p/b.xml  \n\n"
      "[Settings]\nUserMode=0\nbroken line\n");
  EXPECT_EQ(ini.Get("recent files", "FILE1").value_or("?"), "/p/A.XML");
  EXPECT_EQ(ini.Get("Recent Files", "File2").value_or("?"), "/p/b.xml");
  EXPECT_FALSE(ini.Get("Recent Files", "File3"));
  EXPECT_FALSE(ini.Get("Nowhere", "File1"));
  EXPECT_EQ(ini.Sections(), (std::vector<std::string>{"Recent Files", "Settings"}));
  auto keys = ini.Keys("settings");
  ASSERT_EQ(keys.size(), 1u);
  EXPECT_EQ(keys[0].first, "UserMode");
}

TEST(IniFile, WritingKeepsOtherLinesAndPlacesNewKeysAndSections) {
  IniFile ini = IniFile::Parse("; keep me\r\n[A]\r\nx=1\r\n\r\n[B]\r\ny=2\r\n");
  ini.Set("a", "z", "3");
  ini.Set("A", "X", "10");
  ini.Set("C", "k", "v");
  EXPECT_TRUE(ini.DeleteKey("B", "Y"));
  EXPECT_FALSE(ini.DeleteKey("B", "y"));
  EXPECT_EQ(ini.ToString(),
            "; keep me\r\n[A]\r\nx=10\r\nz=3\r\n\r\n[B]\r\n\r\n[C]\r\nk=v\r\n");
  EXPECT_TRUE(ini.DeleteSection("b"));
  EXPECT_FALSE(ini.DeleteSection("b"));
  EXPECT_EQ(ini.Sections(), (std::vector<std::string>{"A", "C"}));
}

TEST(IniFile, ProfileCallsReadAndWriteTheFile) {
  TempDir dir;
  auto path = dir / "AGGPARAMS.RWF";
  EXPECT_EQ(ReadProfileString("Params", "Name", "none", path), "none");
  EXPECT_EQ(ReadProfileInt("Params", "Count", 7, path), 7);
  ASSERT_TRUE(WriteProfileString("Params", "Name", "\"Group 1\"", path));
  ASSERT_TRUE(WriteProfileString("Params", "Count", "12 children", path));
  ASSERT_TRUE(WriteProfileString("Params", "Sign", "-4", path));
  ASSERT_TRUE(WriteProfileString("Params", "Word", "abc", path));
  EXPECT_EQ(ReadFile(path),
            "[Params]\r\nName=\"Group 1\"\r\nCount=12 children\r\nSign=-4\r\nWord=abc\r\n");
  EXPECT_EQ(ReadProfileString("params", "name", "", path), "Group 1");
  EXPECT_EQ(ReadProfileInt("Params", "Count", 0, path), 12);
  EXPECT_EQ(ReadProfileInt("Params", "Sign", 0, path), -4);
  EXPECT_EQ(ReadProfileInt("Params", "Word", 5, path), 0);
  ASSERT_TRUE(WriteProfileString("Params", "Huge", "-000400000000000000000147645", path));
  EXPECT_EQ(ReadProfileInt("Params", "Huge", 0, path), -std::numeric_limits<long>::max());
  ASSERT_TRUE(WriteProfileString("Params", "Word", std::nullopt, path));
  EXPECT_EQ(ReadProfileInt("Params", "Word", 5, path), 5);
  ASSERT_TRUE(WriteProfileString("Params", std::nullopt, std::nullopt, path));
  EXPECT_EQ(ReadFile(path), "");
  EXPECT_FALSE(WriteProfileString("P", "k", "v", dir / "no-folder" / "x.ini"));
}

}  // namespace
}  // namespace tessaly::platform
