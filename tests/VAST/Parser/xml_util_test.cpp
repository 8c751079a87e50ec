#include <gmock/gmock.h>

#include "VAST/Parser/VASTXMLUtil.h"
#include "tests/VAST/Parser/RecordedLog.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::span<const std::byte> bytes(std::string_view text) {
  return std::as_bytes(std::span(text));
}

std::string shown(const VASTXMLNodeDictionary& node) {
  std::string line = node.nodeName.value_or("-");
  if (node.nodeContent) line += " '" + *node.nodeContent + "'";
  for (const auto& attribute : node.nodeAttributeArray) {
    line += " " + attribute.attributeName.value_or("-") + "='" + attribute.nodeContent.value_or("-") + "'";
    for (const auto& content : attribute.attributeContent) line += "<" + shown(content) + ">";
  }
  if (node.nodeChildArray.empty()) return line;
  line += " [";
  for (const auto& child : node.nodeChildArray)
    line += shown(child) + (&child == &node.nodeChildArray.back() ? "]" : ", ");
  return line;
}

std::vector<std::string> found(std::string_view document, std::string_view query) {
  std::vector<std::string> lines;
  const auto nodes = performXMLXPathQuery(bytes(document), query);
  if (!nodes) return {"nil"};
  for (const auto& node : *nodes) lines.push_back(shown(node));
  return lines;
}

}  // namespace

TEST(XMLUtil, turnsNodesIntoDictionaries) {
  const struct {
    const char *document, *query;
    std::vector<std::string> nodes;
  } rows[] = {
      {"<a>\n x <b/> y\t</a>", "/a", {"a 'xy' [b]"}},
      {"<a> </a>", "/a", {"a ''"}},
      {"<a/>", "/a", {"a"}},
      {"<a c=' 1 ' b=''/>", "/a", {"a c='1' b=''"}},
      {"<a><![CDATA[ x ]]></a>", "/a", {"a [- ' x ']"}},
      {"<a>1<!-- c --><?p q ?>2</a>", "/a", {"a '12' [comment ' c ', p 'q ']"}},
      {"<a><b>1</b><b><c d='e'>2</c></b></a>", "//b", {"b '1'", "b [c '2' d='e']"}},
      {"<a b=' 1 '/>", "/a/@b", {"b '1'"}},
      {"<a> 1 </a>", "/a/text()", {"text ' 1 '"}},
      {"<a xmlns='urn:x'><b/></a>", "//b", {}},
      {"<n:a xmlns:n='urn:x' n:b='1'/>", "/*", {"a b='1'"}},
      {"<a xmlns:n='urn:x'/>", "/a/namespace::n", {"n 'urn:x'"}},
      {"<!DOCTYPE a [<!-- c -->]><a>1</a>", "/", {"- [a [comment ' c '], a '1']"}},
      {"<text><text>1</text></text>", "/text", {"text [text '1']"}},
      {"<a>\u00A0x\u3000</a>", "/a", {"a 'x'"}},
  };
  for (const auto& row : rows) EXPECT_EQ(found(row.document, row.query), row.nodes) << row.document;
}

TEST(XMLUtil, expandsNoEntityOfADocument) {
  const std::string declarations = "<!DOCTYPE a [<!ENTITY e 'inside'><!ENTITY f SYSTEM 'file:///etc/hostname'>]>";
  EXPECT_THAT(found(declarations + "<a>x&e;y&f;z</a>", "/a"), ElementsAre("a 'xyz' [e, f]"));
  EXPECT_THAT(found(declarations + "<a b='x&e;y'/>", "/a"), ElementsAre("a b='xy'"));
}

TEST(XMLUtil, stopsAtTheChildrenWhenAskedTo) {
  const auto document = parseXMLDoc(bytes("<a><b c='1'>x<d>y</d><!-- z --></b><text>t<e/></text></a>"));
  const auto nodes = performXPathQuery(document.get(), "/a", VASTXMLDepth::withChildren);
  ASSERT_TRUE(nodes);
  EXPECT_EQ(shown(nodes->front()), "a [b 'x' c='1', text 't']");
}

TEST(XMLUtil, saysWhyAQueryHasNoResult) {
  const struct {
    const char *document, *query, *line;
  } rows[] = {
      {"", "/a", "error VAST - XML Util: Unable to parse."},
      {"<a>", "/a", "error VAST - XML Util: Unable to parse."},
      {"<a/>", "///", "error VAST - XML Util: Unable to evaluate XPath."},
      {"<a/>", "", "error VAST - XML Util: Unable to evaluate XPath."},
      {"<a/>", "count(/a)", "debug VAST - XML Util: Nodes was nil."},
  };
  for (const auto& row : rows) {
    const RecordedLog log;
    testing::internal::CaptureStderr();
    EXPECT_THAT(found(row.document, row.query), ElementsAre("nil")) << row.query;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << row.query;
    EXPECT_THAT(log.lines(), ElementsAre(row.line)) << row.query;
  }
  const RecordedLog log;
  EXPECT_EQ(performXPathQuery(nullptr, "/a"), std::nullopt);
  EXPECT_THAT(log.lines(), ElementsAre("error VAST - XML Util: Unable to create XPath context."));
}

TEST(XMLUtil, cleansTheTextOfAUrl) {
  EXPECT_EQ(urlWithCleanString("\n http://a.example/?b=c|d|\t\u00A0")->absoluteString(),
            "http://a.example/?b=c%7cd%7c");
  EXPECT_EQ(urlWithCleanString(" \n"), std::nullopt);
  EXPECT_EQ(urlWithCleanString("http://a.example/a b"), std::nullopt);
}
