#include <gtest/gtest.h>

#include "platform/xml.h"
#include "shell/mru.h"
#include "shell/preferences.h"
#include "shell/settings.h"
#include "support/messages.h"
#include "support/program_folder.h"

namespace tessaly::shell {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

struct SettingsFixture : ::testing::Test {
  TempDir program, user;
  CSetting settings;
  void SetUp() override {
    settings.program_folder = program.path();
    settings.user_folder = user / "tessaly";
    settings.Init();
  }
};

TEST_F(SettingsFixture, ModeChoosesTheStore) {
  EXPECT_EQ(settings.Name(), "Tessaly");
  EXPECT_EQ(settings.StorePath(), user / "tessaly" / "Tessaly.ini");
  settings.SaveSettingStr("Settings", "Product", "0");
  EXPECT_EQ(ReadFile(user / "tessaly" / "Tessaly.ini"), "[Settings]\r\nProduct=0\r\n");
  settings.Init(std::string("  Other "));
  settings.SaveMode = 1;
  EXPECT_EQ(settings.StorePath(), program / "Other.ini");
}

TEST_F(SettingsFixture, ReadingStringsAndIntegersPerMode) {
  std::filesystem::create_directories(settings.StorePath().parent_path());
  WriteFile(settings.StorePath(), "[S]\r\nWord= text \r\nNum=12\r\nHalf=2.5\r\nMixed=7 days\r\n");
  EXPECT_EQ(settings.GetSettingStr("s", "word", "d"), "text");
  EXPECT_EQ(settings.GetSettingStr("S", "none", "d"), "d");
  EXPECT_EQ(settings.GetSettingInt("S", "Num", -1), 12);
  EXPECT_EQ(settings.GetSettingInt("S", "Half", -1), 2);  // rounds half to even
  EXPECT_EQ(settings.GetSettingInt("S", "Word", -1), -1);  // not numeric: the default
  EXPECT_EQ(settings.GetSettingInt("S", "Mixed", -1), -1);
  settings.SaveMode = 1;
  WriteFile(settings.StorePath(), "[S]\r\nMixed=7 days\r\nWord=text\r\n");
  EXPECT_EQ(settings.GetSettingInt("S", "Mixed", -1), 7);  // leading digits, as the profile reader
  EXPECT_EQ(settings.GetSettingInt("S", "Word", -1), 0);
  EXPECT_EQ(settings.GetSettingInt("S", "None", -1), -1);
  EXPECT_EQ(settings.GetSectionNames(), std::vector<std::string>{"S"});
  EXPECT_EQ(settings.GetSettingAll("S").size(), 2u);
}

TEST_F(SettingsFixture, DeletingKeysAndSections) {
  settings.SaveSettingStr("A", "k1", "1");
  settings.SaveSettingInt("A", "k2", 2);
  settings.SaveSettingStr("B", "k", "x");
  settings.DeleteKey("A", "k1");
  EXPECT_EQ(settings.GetSettingAll("A").size(), 1u);
  settings.DeleteKey("A", "");
  EXPECT_EQ(settings.GetSectionNames(), std::vector<std::string>{"B"});
}

TEST_F(SettingsFixture, DeleteFailureInFileModeIsTold) {
  tessaly::testing::RecordedMessages host;
  settings.SaveMode = 1;
  // A folder where the file should be cannot be written, whoever runs the test.
  std::filesystem::create_directory(settings.StorePath());
  settings.DeleteKey("Recent Files", "File1");
  settings.SaveMode = 0;
  settings.DeleteKey("Recent Files", "File1");  // mode 0 has nothing to delete: no box
  ASSERT_EQ(host->shown.size(), 1u);
  EXPECT_EQ(host->shown[0].text, "Error Deleting Key (check if file is protected)");
  EXPECT_EQ(host->shown[0].title, "CSetting.DeleteKey");
}

TEST_F(SettingsFixture, RecentListMovesReusedFilesToTheFrontAndKeepsFive) {
  SaveRecent(settings, "C:/A.XML");
  SaveRecent(settings, "c:/a.xml");
  auto captions = LoadMenu(settings);
  EXPECT_EQ(captions[0], "c:/a.xml");
  EXPECT_EQ(captions[1], "");

  for (const char* p : {"/p/1.xml", "/p/2.xml", "/p/3.xml", "/p/4.xml"}) SaveRecent(settings, p);
  SaveRecent(settings, "/p/5.xml");  // the oldest (c:/a.xml) drops
  captions = LoadMenu(settings);
  EXPECT_EQ(captions, (std::array<std::string, 5>{"/p/5.xml", "/p/4.xml", "/p/3.xml", "/p/2.xml",
                                                 "/p/1.xml"}));
  SaveRecent(settings, "/P/3.XML");
  captions = LoadMenu(settings);
  EXPECT_EQ(captions, (std::array<std::string, 5>{"/P/3.XML", "/p/5.xml", "/p/4.xml", "/p/2.xml",
                                                 "/p/1.xml"}));
  // A gap in the keys leaves that menu item hidden.
  settings.DeleteKey("Recent Files", "File2");
  EXPECT_EQ(LoadMenu(settings)[1], "");
  EXPECT_EQ(LoadMenu(settings)[2], "/p/4.xml");
}

TEST(Preferences, FileHoldsTheFourteenValuesInOrder) {
  TempDir program;
  std::filesystem::create_directory(program / "DEFAULTXSD");
  PreferenceValues values;
  values.Decimals = 4;
  values.Res = kTrue;
  ASSERT_TRUE(WritePreferencesFile(program.path(), values));
  std::string folder = (program / "DEFAULTXSD").string();
  EXPECT_EQ(ReadFile(program / "DEFAULTXSD" / "UserPreferences.xml"),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
            "<!--user preferences for processing-->\r\n"
            "<Pref_Variables xmlns:xsd=\"http://www.w3.org/2001/XMLSchema-instance\" inputpath=\"" +
                folder + "\" outputpath=\"" + folder + "\" xsd:noNamespaceSchemaLocation=\"" +
                folder +
                "/UserPrefshema.xsd\">\r\n"
                "  <Decimals>4</Decimals>\r\n  <AllGraphs>true</AllGraphs>\r\n"
                "  <NOGRAPHS>false</NOGRAPHS>\r\n  <SelGraphs>false</SelGraphs>\r\n"
                "  <Act>false</Act>\r\n  <ActClen>false</ActClen>\r\n  <ActFit>false</ActFit>\r\n"
                "  <ActFore>false</ActFore>\r\n  <ActFitFore>false</ActFitFore>\r\n"
                "  <ActRes>false</ActRes>\r\n  <Fore>false</Fore>\r\n  <FitFore>false</FitFore>\r\n"
                "  <Res>true</Res>\r\n  <NoLimits>false</NoLimits>\r\n</Pref_Variables>\r\n");
  PreferenceValues back;
  LoadPrefXmlFile(program.path(), back);
  EXPECT_EQ(back.Decimals, 4);
  EXPECT_EQ(back.Res, kTrue);
  EXPECT_EQ(back.AllGraphs, kTrue);
  EXPECT_EQ(back.Act, kFalse);
}

TEST(Preferences, ReaderGoesByPositionNotByName) {
  TempDir program;
  std::filesystem::create_directory(program / "DEFAULTXSD");
  // Names are wrong on purpose, and a fifteenth child lies past the end.
  std::string xml = "<?xml version=\"1.0\"?>\r\n<Pref_Variables>\r\n<X>7</X>\r\n<Y>false</Y>\r\n";
  for (int i = 2; i < 13; ++i) xml += "<Z>false</Z>\r\n";
  xml += "<W>true</W>\r\n<Extra>true</Extra>\r\n</Pref_Variables>\r\n";
  WriteFile(program / "DEFAULTXSD" / "UserPreferences.xml", xml);
  PreferenceValues values;
  LoadPrefXmlFile(program.path(), values);
  EXPECT_EQ(values.Decimals, 7);
  EXPECT_EQ(values.AllGraphs, kFalse);
  EXPECT_EQ(values.Res, kFalse);
  EXPECT_EQ(values.NoLimits, kTrue);
  // The number is a 16-bit figure: one past its range leaves the default.
  for (const auto& [text, decimals] : {std::pair{"32767", 32767}, {"32768", 2}, {"-32769", 2}}) {
    WriteFile(program / "DEFAULTXSD" / "UserPreferences.xml",
              "<Pref_Variables><Decimals>" + std::string(text) + "</Decimals></Pref_Variables>");
    PreferenceValues bound;
    LoadPrefXmlFile(program.path(), bound);
    EXPECT_EQ(bound.Decimals, decimals) << text;
  }
}

TEST(Preferences, BrokenFileIsToldAndDefaultsStand) {
  tessaly::testing::RecordedMessages host;
  TempDir program;
  std::filesystem::create_directory(program / "DEFAULTXSD");
  WriteFile(program / "DEFAULTXSD" / "UserPreferences.xml",
            "<Pref_Variables><Decimals>5</Decimals>");
  PreferenceValues values;
  LoadPrefXmlFile(program.path(), values);
  EXPECT_EQ(values.Decimals, 2);
  ASSERT_EQ(host->shown.size(), 1u);
  EXPECT_EQ(host->shown[0].text.rfind("You have error ", 0), 0u) << host->shown[0].text;
  EXPECT_GT(host->shown[0].text.size(), std::string("You have error ").size());
}

TEST(Preferences, WriteFailureNamesThePath) {
  tessaly::testing::RecordedMessages host;
  TempDir program;  // no DEFAULTXSD: the file cannot be made
  EXPECT_FALSE(WritePreferencesFile(program.path(), PreferenceValues()));
  ASSERT_EQ(host->shown.size(), 1u);
  EXPECT_EQ(host->shown[0].text,
            (program / "DEFAULTXSD" / "UserPreferences.xml").string() + " was not made.");
}

TEST(Preferences, SchemaFileLineByLine) {
  std::string text = UserPrefSchemaText();
  std::vector<std::string> lines;
  for (size_t pos = 0; pos < text.size();) {
    size_t end = text.find("\r\n", pos);
    ASSERT_NE(end, std::string::npos) << "every line ends with CR LF";
    lines.push_back(text.substr(pos, end - pos));
    pos = end + 2;
  }
  ASSERT_EQ(lines.size(), 25u);
  EXPECT_EQ(lines[0], "<?xml version=\"1.0\"  encoding=\"utf-8\"?>");
  EXPECT_EQ(lines[1], "<!--this schema is for UserPreferences.xml -->");
  EXPECT_EQ(lines[2],
            "<xs:Schema attributeFormDefault=\"unqualified\" elementFormDefault=\"qualified\" "
            "xmlns:xs=\"http://www.w3.org/2001/XMLSchema\" "
            "xmlns:vs=\"http://schemas.microsoft.com/Visual-Studio-Intellisense\">");
  EXPECT_EQ(lines[3], "  <xs:element name=\"Pref_Variables\">");
  EXPECT_EQ(lines[4], "    <xs:complextype>");
  EXPECT_EQ(lines[6], "        <xs:element name=\"Decimals\" type=\"xs:integer\" default=\"2\" />");
  EXPECT_EQ(lines[7], "        <xs:element name=\"AllGraphs\" type=\"xs:boolean\" default=\"true\" />");
  EXPECT_EQ(lines[8], "        <xs:element name=\"SelGraphs\" type=\"xs:boolean\" default=\"false\" />");
  EXPECT_EQ(lines[18], "        <xs:element name=\"NoLimits\" type=\"xs:boolean\" default=\"false\" />");
  EXPECT_EQ(text.find("NOGRAPHS"), std::string::npos);
  EXPECT_EQ(lines[20], "    </xs:complextype>");
  EXPECT_EQ(lines[21], "    <xs:attribute name=\"inputpath\" type=\"xs:string\" />");
  EXPECT_EQ(lines[22], "    <xs:attribute name=\"outputpath\" type=\"xs:string\" />");
  EXPECT_EQ(lines[24], "</xs:Schema>");
  // Odd as it is, the text is well-formed XML.
  EXPECT_TRUE(platform::xml::ParseString(text)) << platform::xml::ParseString(text).Describe();
}

TEST(Preferences, DecimalsCompareAsText) {
  const std::pair<const char*, int> cases[] = {{"1", 2},  {"9", 9},  {"", 2},   {"10", 2}, {"2", 2},
                                               {"5", 5},  {"25", 2}, {" 5", 2}, {"9x", 2}};
  for (const auto& [text, decimals] : cases) EXPECT_EQ(DecimalsFromText(text), decimals) << text;
}

TEST(Preferences, GraphDialogRules) {
  PreferenceValues v;
  EXPECT_EQ(GraphOptionFor(v), 0);
  GraphDialogChoice selected{"3", 1, {true, false, true, false, false, false, false, false, true}, true};
  ApplyGraphDialog(selected, v);
  EXPECT_EQ(v.Decimals, 3);
  EXPECT_EQ(v.AllGraphs, kFalse);
  EXPECT_EQ(v.SelGraphs, kTrue);
  EXPECT_EQ(v.Act, kTrue);
  EXPECT_EQ(v.ActClen, kFalse);
  EXPECT_EQ(v.ActFit, kTrue);
  EXPECT_EQ(v.Res, kTrue);
  EXPECT_EQ(v.NoLimits, kTrue);
  EXPECT_EQ(GraphOptionFor(v), 1);

  // No graphs: the graph choices stay as they were, for a later "selected".
  ApplyGraphDialog({"10", 2, {}, false}, v);
  EXPECT_EQ(v.Decimals, 2);
  EXPECT_EQ(v.NOGRAPHS, kTrue);
  EXPECT_EQ(v.AllGraphs, kFalse);
  EXPECT_EQ(v.SelGraphs, kFalse);
  EXPECT_EQ(v.Act, kTrue);
  EXPECT_EQ(v.NoLimits, kFalse);
  EXPECT_EQ(GraphOptionFor(v), 2);

  ApplyGraphDialog({"9", 0, {}, false}, v);
  EXPECT_EQ(v.AllGraphs, kTrue);
  EXPECT_EQ(v.SelGraphs, kFalse);
  EXPECT_EQ(v.NOGRAPHS, kFalse);
  EXPECT_EQ(GraphOptionFor(v), 0);
}

}  // namespace
}  // namespace tessaly::shell
