#include "platform/dialogs.h"

#include <gtest/gtest.h>

namespace tessaly::platform {
namespace {

TEST(Dialogs, UnattendedAnswersLetTheRunGoOn) {
  EXPECT_EQ(UnattendedAnswer(mb::YesNo + mb::Question), mb::Yes);
  EXPECT_EQ(UnattendedAnswer(mb::OKOnly + mb::Exclamation), mb::OK);
  EXPECT_EQ(UnattendedAnswer(mb::RetryCancel), mb::Retry);
  EXPECT_EQ(UnattendedAnswer(mb::AbortRetryIgnore), mb::Ignore);
}

TEST(Dialogs, OneLineJoinsEveryKindOfLineEnd) {
  EXPECT_EQ(OneLine("a\r\nb\nc\rd"), "a / b / c / d");
  EXPECT_EQ(OneLine("plain"), "plain");
}

TEST(Dialogs, StderrHostPrintsTitleAndText) {
  StderrDialogHost host;
  std::string echoed;
  host.SetEcho([&](const std::string& line) { echoed += line + "\n"; });
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(host.Message("Quorvane.dll a required DLL is Missing\r\nThe program will now exit.",
                         mb::OKOnly, "Tessaly Main Error"),
            mb::OK);
  std::string err = ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(err,
            "Tessaly Main Error: Quorvane.dll a required DLL is Missing\n"
            "  The program will now exit.\n");
  EXPECT_EQ(echoed, err);
}

TEST(Dialogs, UnattendedLinesKeepTheMessageReadable) {
  struct Case {
    std::string text;
    std::vector<std::string> lines;
  } cases[] = {
      {"plain", {"FYI: plain"}},
      {"", {"FYI:"}},
      {"\r\n\r\nfirst\r\n\r\n\r\nB.ASC\nwhy\r\n\r\n",
       {"FYI: first", "", "  B.ASC", "  why"}},
      {"a\rb", {"FYI: a", "  b"}},
  };
  for (const Case& c : cases) EXPECT_EQ(UnattendedLines("FYI", c.text), c.lines) << c.text;
}

TEST(Dialogs, RecorderAnswersFromItsScriptThenUnattended) {
  auto rec = std::make_shared<RecordingDialogHost>();
  rec->answers.push_back(mb::No);
  rec->files.push_back(std::string("/tmp/p.xml"));
  SetDialogHost(rec);
  EXPECT_EQ(Dialogs().Message("Overwrite?", mb::YesNo, "T"), mb::No);
  EXPECT_EQ(Dialogs().Message("Continue?", mb::YesNo, "T"), mb::Yes);
  EXPECT_EQ(Dialogs().OpenFile({"Open", "XML files (*.xml)|*.xml", "", "", true}).value(),
            "/tmp/p.xml");
  EXPECT_FALSE(Dialogs().OpenFile({}));
  ASSERT_EQ(rec->shown.size(), 2u);
  EXPECT_EQ(rec->shown[0].title, "T");
  SetDialogHost(nullptr);
  EXPECT_TRUE(Dialogs().Unattended());
}

}  // namespace
}  // namespace tessaly::platform
