#include "platform/xml.h"

#include <gtest/gtest.h>

#include "support/program_folder.h"

namespace tessaly::platform::xml {
namespace {

using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;
using tessaly::testing::WriteFile;

constexpr const char* kXsi = "http://www.w3.org/2001/XMLSchema-instance";

// A document shaped like the system's own variable files: declaration, a comment before
// the root, namespace attributes and positional children.
Document BuildPreferences() {
  Document doc;
  doc.AppendProcessingInstruction("xml", "version=\"1.0\" encoding=\"UTF-8\"");
  doc.AppendComment("user preferences for processing");
  Node root = doc.SetRoot("Pref_Variables");
  root.SetAttribute("inputpath", "/opt/t/DEFAULTXSD");
  root.SetAttribute("outputpath", "/opt/t/DEFAULTXSD");
  root.SetAttribute("xmlns:xsd", kXsi);
  root.SetAttribute("xsd:noNamespaceSchemaLocation", "/opt/t/DEFAULTXSD/UserPrefshema.xsd");
  root.AppendElement("Decimals", "2");
  root.AppendElement("AllGraphs", "true");
  return doc;
}

TEST(Xml, BuiltDocumentSavesWithDeclarationCommentAndCrLf) {
  TempDir dir;
  std::string reason;
  ASSERT_TRUE(BuildPreferences().Save(dir / "p.xml", {}, &reason)) << reason;
  EXPECT_EQ(ReadFile(dir / "p.xml"),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
            "<!--user preferences for processing-->\r\n"
            "<Pref_Variables xmlns:xsd=\"http://www.w3.org/2001/XMLSchema-instance\" "
            "inputpath=\"/opt/t/DEFAULTXSD\" outputpath=\"/opt/t/DEFAULTXSD\" "
            "xsd:noNamespaceSchemaLocation=\"/opt/t/DEFAULTXSD/UserPrefshema.xsd\">\r\n"
            "  <Decimals>2</Decimals>\r\n"
            "  <AllGraphs>true</AllGraphs>\r\n"
            "</Pref_Variables>\r\n");
}

TEST(Xml, SaveOptionsControlDeclarationEncodingAndLayout) {
  Document doc;
  doc.SetRoot("r").AppendElement("a", "caf\xC3\xA9");
  SaveOptions bare;
  bare.declaration = false;
  bare.indent = false;
  bare.crlf = false;
  EXPECT_EQ(doc.ToString(bare), "<r><a>caf\xC3\xA9</a></r>\n");

  SaveOptions latin;
  latin.encoding = "ISO-8859-1";
  latin.crlf = false;
  EXPECT_EQ(doc.ToString(latin),
            "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<r>\n  <a>caf\xE9</a>\n</r>\n");

  TempDir dir;
  SaveOptions bogus;
  bogus.encoding = "NO-SUCH-ENCODING";
  std::string reason;
  EXPECT_FALSE(doc.Save(dir / "x.xml", bogus, &reason));
  EXPECT_NE(reason.find("NO-SUCH-ENCODING"), std::string::npos);
  EXPECT_FALSE(doc.Save(dir / "missing-folder" / "x.xml", {}, &reason));
  EXPECT_NE(reason.find("missing-folder"), std::string::npos);
}

TEST(Xml, RoundTripReadsChildrenByPositionAndAttributesByQualifiedName) {
  TempDir dir;
  ASSERT_TRUE(BuildPreferences().Save(dir / "p.xml"));
  ParseResult parsed = ParseFile(dir / "p.xml");
  ASSERT_TRUE(parsed) << parsed.Describe();
  const Document& doc = *parsed.document;

  ASSERT_EQ(doc.Children().size(), 2u);
  EXPECT_EQ(doc.Children()[0].Kind(), NodeKind::Comment);
  EXPECT_EQ(doc.Children()[0].Text(), "user preferences for processing");

  Node root = doc.Root();
  EXPECT_EQ(root.Name(), "Pref_Variables");
  EXPECT_EQ(root.Attribute("inputpath").value_or("?"), "/opt/t/DEFAULTXSD");
  EXPECT_EQ(root.Attribute("xmlns:xsd").value_or("?"), kXsi);
  EXPECT_EQ(root.Attribute("xsd:noNamespaceSchemaLocation").value_or("?"),
            "/opt/t/DEFAULTXSD/UserPrefshema.xsd");
  EXPECT_FALSE(root.Attribute("noSuch").has_value());

  // Indentation between elements is not a child: position 1 is AllGraphs.
  ASSERT_EQ(root.Children().size(), 2u);
  EXPECT_EQ(root.Child(0).Name(), "Decimals");
  EXPECT_EQ(root.Child(1).Text(), "true");
  EXPECT_FALSE(root.Child(2));
  EXPECT_EQ(root.FirstChildElement("AllGraphs").Text(), "true");
}

TEST(Xml, CommentsInsideTheRootCountAsChildren) {
  ParseResult parsed = ParseString(
      "<BP_Variables>\n  <!--batch variables-->\n  <!--inserted-->\n"
      "  <FirstObjective>1</FirstObjective>\n"
      "  <Holidays><Holiday1>XMAS</Holiday1><Holiday2/></Holidays>\n"
      "</BP_Variables>\n");
  ASSERT_TRUE(parsed) << parsed.Describe();
  Node root = parsed.document->Root();
  ASSERT_EQ(root.Children().size(), 4u);
  EXPECT_EQ(root.Child(1).Kind(), NodeKind::Comment);
  EXPECT_EQ(root.Child(2).Name(), "FirstObjective");
  EXPECT_EQ(root.ChildElements().size(), 2u);
  auto holidays = root.ElementsByTagName("Holiday1");
  ASSERT_EQ(holidays.size(), 1u);
  EXPECT_EQ(holidays[0].Text(), "XMAS");
  EXPECT_EQ(holidays[0].Parent().Name(), "Holidays");
  EXPECT_EQ(root.ElementsByTagName("Holiday2")[0].Text(), "");
}

TEST(Xml, ParseFailuresGiveTheParsersReasonAndPlace) {
  ParseResult bad = ParseString("<a>\n<b></a>");
  ASSERT_FALSE(bad);
  EXPECT_NE(bad.reason.find("mismatch"), std::string::npos) << bad.reason;
  EXPECT_EQ(bad.line, 2);
  EXPECT_NE(bad.Describe().find("(line 2"), std::string::npos);

  ParseResult empty = ParseString("");
  ASSERT_FALSE(empty);
  EXPECT_FALSE(empty.reason.empty());

  TempDir dir;
  ParseResult missing = ParseFile(dir / "none.xml");
  ASSERT_FALSE(missing);
  EXPECT_NE(missing.reason.find("none.xml"), std::string::npos);

  WriteFile(dir / "trunc.xml", "<?xml version=\"1.0\"?>\r\n<root><x>1</x>");
  ParseResult truncated = ParseFile(dir / "trunc.xml");
  ASSERT_FALSE(truncated);
  EXPECT_FALSE(truncated.reason.empty());
}

TEST(Xml, TextIsEscapedOnSaveAndReadBackLiterally) {
  Document doc;
  Node root = doc.SetRoot("r");
  Node e = root.AppendElement("path", "A&B <1> \"q\" &amp;");
  root.SetAttribute("note", "x<y & \"z\"");
  SaveOptions opts;
  opts.crlf = false;
  std::string text = doc.ToString(opts);
  EXPECT_NE(text.find("A&amp;B &lt;1&gt; \"q\" &amp;amp;"), std::string::npos) << text;
  ParseResult back = ParseString(text);
  ASSERT_TRUE(back) << back.Describe();
  EXPECT_EQ(back.document->Root().Child(0).Text(), "A&B <1> \"q\" &amp;");
  EXPECT_EQ(back.document->Root().Attribute("note").value_or(""), "x<y & \"z\"");
  e.SetText("replaced");
  EXPECT_EQ(e.Text(), "replaced");
  EXPECT_EQ(e.Children().size(), 1u);
}

TEST(Xml, ValidationAgainstSchemaAcceptsAndRejectsWithReason) {
  TempDir dir;
  WriteFile(dir / "s.xsd",
            "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
            "<xs:schema xmlns:xs=\"http://www.w3.org/2001/XMLSchema\">\r\n"
            " <xs:element name=\"Batch\">\r\n"
            "  <xs:complexType><xs:sequence>\r\n"
            "   <xs:element name=\"Count\" type=\"xs:integer\"/>\r\n"
            "  </xs:sequence>\r\n"
            "  <xs:attribute name=\"name\" type=\"xs:string\"/>\r\n"
            "  </xs:complexType>\r\n"
            " </xs:element>\r\n"
            "</xs:schema>\r\n");

  Document good;
  Node root = good.SetRoot("Batch");
  root.SetAttribute("xmlns:xsd", kXsi);
  root.SetAttribute("xsd:noNamespaceSchemaLocation", "s.xsd");
  root.SetAttribute("name", "p1");
  root.AppendElement("Count", "12");
  ValidationResult ok = ValidateAgainstSchema(good, dir / "s.xsd");
  EXPECT_TRUE(ok) << ok.reason;

  ParseResult wrong = ParseString("<Batch>\n<Count>twelve</Count>\n</Batch>");
  ASSERT_TRUE(wrong);
  ValidationResult bad = ValidateAgainstSchema(*wrong.document, dir / "s.xsd");
  EXPECT_FALSE(bad);
  EXPECT_NE(bad.reason.find("twelve"), std::string::npos) << bad.reason;
  EXPECT_EQ(bad.line, 2);

  WriteFile(dir / "broken.xsd", "<xs:schema xmlns:xs=\"http://www.w3.org/2001/XMLSchema\">"
                                "<xs:element/></xs:schema>");
  ValidationResult broken = ValidateAgainstSchema(good, dir / "broken.xsd");
  EXPECT_FALSE(broken);
  EXPECT_NE(broken.reason.find("broken.xsd"), std::string::npos) << broken.reason;

  ValidationResult nofile = ValidateAgainstSchema(good, dir / "absent.xsd");
  EXPECT_FALSE(nofile);
  EXPECT_NE(nofile.reason.find("absent.xsd"), std::string::npos);
}

TEST(Xml, PrefixedElementsBindToTheirDeclaredNamespace) {
  // A schema built in memory: the root declares its own prefix after creation.
  Document doc;
  Node schema = doc.SetRoot("xs:schema");
  schema.SetAttribute("xmlns:xs", "http://www.w3.org/2001/XMLSchema");
  Node el = schema.AppendElement("xs:element");
  el.SetAttribute("name", "Root");
  el.SetAttribute("type", "xs:string");
  EXPECT_EQ(schema.Name(), "xs:schema");
  EXPECT_EQ(el.Name(), "xs:element");
  TempDir dir;
  ASSERT_TRUE(doc.Save(dir / "built.xsd"));
  ParseResult inst = ParseString("<Root>hello</Root>");
  ASSERT_TRUE(inst);
  ValidationResult r = ValidateAgainstSchema(*inst.document, dir / "built.xsd");
  EXPECT_TRUE(r) << r.reason;
}

}  // namespace
}  // namespace tessaly::platform::xml
