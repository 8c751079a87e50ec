#include <gmock/gmock.h>

#include "VAST/Parser/VASTXMLUtil.h"
#include "tests/VAST/Parser/RecordedLog.h"

using testing::ElementsAre;

namespace {

std::string shown(const VASTXMLNodeDictionary& node) {
  std::string line = node.nodeName.value_or("-");
  if (node.nodeContent) line += " '" + *node.nodeContent + "'";
  for (const auto& attribute : node.nodeAttributeArray) {
    line += " " + attribute.attributeName.value_or("-") + "='" + attribute.nodeContent.value_or("-") + "'";
    for (const auto& content : attribute.attributeContent) line += "<" + shown(content) + ">";
  }
  for (const auto& child : node.nodeChildArray) line += " [" + shown(child) + "]";
  return line;
}

std::vector<std::string> found(std::string_view document, std::string_view query) {
  std::vector<std::string> lines;
  const auto nodes = performXMLXPathQuery(std::as_bytes(std::span(document)), query);
  if (!nodes) return {"nil"};
  for (const auto& node : *nodes) lines.push_back(shown(node));
  return lines;
}

}  // namespace

TEST(XMLUtil, turnsNodesIntoDictionariesWithoutExpandingEntities) {
  const std::string declarations = "<!DOCTYPE a [<!ENTITY e 'inside'><!ENTITY f SYSTEM 'file:///etc/hostname'>]>";
  const struct {
    std::string document;
    const char* query;
    std::vector<std::string> nodes;
  } rows[] = {
      {"<a>\n x <b/> y\t</a>", "/a", {"a 'xy' [b]"}},
      {"<a> </a>", "/a", {"a ''"}},
      {"<a c=' 1 ' b=''/>", "/a", {"a c='1' b=''"}},
      {"<a><![CDATA[ x ]]></a>", "/a", {"a [- ' x ']"}},
      {"<a><![CDATA[]]></a>", "/a", {"a [-]"}},
      {"<a>1<!-- c --><?p q ?>2</a>", "/a", {"a '12' [comment ' c '] [p 'q ']"}},
      {"<a><b>1</b><b><c d='e'>2</c></b></a>", "//b", {"b '1'", "b [c '2' d='e']"}},
      {"<a> 1 </a>", "/a/text()", {"text ' 1 '"}},
      {"<a xmlns='urn:x'><b/></a>", "//b", {}},
      {"<a xmlns:n='urn:x'/>", "/a/namespace::n", {"n 'urn:x'"}},
      {"<!DOCTYPE a [<!-- c -->]><a>1</a>", "/", {"- [a [comment ' c ']] [a '1']"}},
      {"<a>\u00A0x\u3000</a>", "/a", {"a 'x'"}},
      {declarations + "<a>x&e;y&f;z</a>", "/a", {"a 'xyz' [e] [f]"}},
      {declarations + "<a b='x&e;y'/>", "/a", {"a b='xy'"}},
  };
  for (const auto& row : rows) EXPECT_EQ(found(row.document, row.query), row.nodes) << row.document;
}

TEST(XMLUtil, saysWhyAQueryHasNoResult) {
  const struct {
    const char *document, *query, *line;
  } rows[] = {
      {"", "/a", "error VAST - XML Util: Unable to parse."},
      {"<a/>", "///", "error VAST - XML Util: Unable to evaluate XPath."},
      {"<a/>", "count(/a)", "debug VAST - XML Util: Nodes was nil."},
  };
  testing::internal::CaptureStderr();
  for (const auto& row : rows) {
    const RecordedLog log;
    EXPECT_THAT(found(row.document, row.query), ElementsAre("nil")) << row.query;
    EXPECT_THAT(log.lines(), ElementsAre(row.line)) << row.query;
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  const RecordedLog log;
  EXPECT_EQ(performXPathQuery(nullptr, "/a"), std::nullopt);
  EXPECT_THAT(log.lines(), ElementsAre("error VAST - XML Util: Unable to create XPath context."));
}
