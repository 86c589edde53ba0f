#include "platform/text.h"

#include <gtest/gtest.h>

namespace tessaly::platform {
namespace {

// Each reader's padding: blanks alone in fixed columns (a tab stays part of a name), blanks
// and tabs where a person types, any white space where a CR LF line end may be left over.
TEST(TextTest, TrimDropsOnlyTheCharactersTheFormatPadsWith) {
  struct Case { std::string_view text, drop, trimmed, trimmed_end; };
  const Case cases[] = {
      {"  AIRLINE.ASC   ", kBlanks, "AIRLINE.ASC", "  AIRLINE.ASC"},
      {"\tSALES ", kBlanks, "\tSALES", "\tSALES"},
      {" \tSALES\t", kBlanksAndTabs, "SALES", " \tSALES"},
      {"MAXSERIES = 150\r\n", kWhiteSpace, "MAXSERIES = 150", "MAXSERIES = 150"},
      {"      ", kBlanks, "", ""},
      {"", kWhiteSpace, "", ""},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Trim(c.text, c.drop), c.trimmed) << '"' << c.text << '"';
    EXPECT_EQ(TrimEnd(c.text, c.drop), c.trimmed_end) << '"' << c.text << '"';
  }
}

TEST(TextTest, HtmlEscapeMakesEveryMarkupCharacterAnEntity) {
  EXPECT_EQ(HtmlEscape(R"(Sales & "Returns" <2024>)"), "Sales &amp; &quot;Returns&quot; &lt;2024&gt;");
  EXPECT_EQ(HtmlEscape("AIRLINE.ASC"), "AIRLINE.ASC");
}

}  // namespace
}  // namespace tessaly::platform
