#include "xml/Parser.h"

#include <gtest/gtest.h>

#include <string>

using namespace std::string_literals;

namespace {

// A tree on one line: name(attributes)"text"[children].
std::string shown(const XML::Element& element) {
  std::string line = element.name;
  for (const auto& [name, value] : element.attributes) line += " " + name + "=" + value;
  if (element.text) line += " \"" + *element.text + "\"";
  if (element.childElements.empty()) return line;
  std::string children;
  for (const auto& child : element.childElements) children += (children.empty() ? "" : ", ") + shown(*child);
  return line + " [" + children + "]";
}

// Documents and their trees.
using Rows = std::vector<std::pair<std::string, std::string>>;
void check(const Rows& rows, bool isWellFormed) {
  for (const auto& [document, tree] : rows) {
    XML::Parser parser;
    EXPECT_EQ(parser.parse(std::as_bytes(std::span(document))), isWellFormed) << document;
    const auto& children = parser.documentRoot()->childElements;
    EXPECT_EQ(children.empty() ? "" : shown(*children.front()), tree) << document;
  }
}

std::string utf16(std::string_view ascii, bool littleEndian) {
  std::string bytes;
  for (const char c : ascii) (bytes += littleEndian ? c : '\0') += littleEndian ? '\0' : c;
  return bytes;
}

}  // namespace

TEST(Parser, buildsTheTreeAsWrittenInWhateverEncoding) {
  const std::string plain = "<a b='1'>text</a>";
  const Rows rows{
      {"<a/>", "a"},
      {"<a> </a>", "a \" \""},
      {"<a>a<b/>b</a>", "a \"ab\" [b]"},
      {"<a>x&amp;y&lt;&#65;&#x42;</a>", "a \"x&y<AB\""},
      {"<a>x<![CDATA[<b>&amp;]]>y<!-- no --><?no?></a>", "a \"x<b>&amp;y\""},
      {"<a><![CDATA[]]></a>", "a"},
      {"<a b='1' c=\"a&amp;b&#38;c&lt;&quot;&amp;amp;#38;\"/>", "a b=1 c=a&b&c<\"&amp;#38;"},
      {"<v:a xmlns:v='urn:v' xmlns='urn:d' v:b='1' b='2'><v:c/><x:d/></v:a>",
       "v:a xmlns:v=urn:v xmlns=urn:d v:b=1 b=2 [v:c, x:d]"},
      {"<!DOCTYPE a SYSTEM \"file:///etc/passwd\"><a>t</a>", "a \"t\""},
      // Encodings: marked, or named by the document.
      {"\xEF\xBB\xBF" + plain, "a b=1 \"text\""},
      {"\xFF\xFE" + utf16(plain, true), "a b=1 \"text\""},
      {"\xFE\xFF" + utf16(plain, false), "a b=1 \"text\""},
      {utf16("<?xml version='1.0' encoding='UTF-16LE'?>" + plain, true), "a b=1 \"text\""},
      {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>", "a \"é\""},
      {"<?xml version='1.0' encoding='windows-1252'?><a>\x80</a>", "a \"€\""},
      {"<a>€𝄞é</a>", "a \"€𝄞é\""},
  };
  check(rows, true);
}

TEST(Parser, keepsTheTreeUpToTheFirstError) {
  const Rows rows{
      {"", ""},
      {"<a", "a"},
      {"<a><b>1</b><c>", "a [b \"1\", c]"},
      {"<a><b>1</c></a>", "a [b \"1\"]"},
      {"<a/><b/>", "a"},
      {"<a b='1' b='2'/>", ""},
      {"<a>&undeclared;</a>", "a"},
      {"<a>x\0y</a>"s, "a \"x\""},
      {"<a>x\xFFy</a>", "a \"x\""},
      {"\n<?xml version='1.0'?><a/>", ""},
      {"<?xml version='1.0' encoding='X-KLINGON'?><a/>", ""},
  };
  check(rows, false);
}

TEST(Parser, trimsTextWhenAnElementEnds) {
  const auto root = XML::parse("<a>\n <b> \u00A0x y\u2028 </b><c> </c><d/></a>",
                               NSCharacterSet::whitespaceAndNewlineCharacterSet())["a"];
  EXPECT_EQ(root.text(), "");
  EXPECT_EQ(root["b"].text(), "x y");
  EXPECT_EQ(root["c"].text(), "");
  EXPECT_EQ(root["d"].text(), std::nullopt);
  EXPECT_EQ(XML::parse("<a>-é1.é-</a>", NSCharacterSet::characterSetWithCharactersInString("é-"))["a"].text(), "1.");
}

TEST(Parser, refusesTextThatIsNotUtf8) {
  for (const auto* text :
       {"<a>\xFF</a>", "<a>\xC0\xAF</a>", "<a>\xED\xA0\x80</a>", "<a>\xF4\x90\x80\x80</a>", "\xC3"}) {
    EXPECT_THROW(XML::parse(text), XMLError) << text;
  }
}
