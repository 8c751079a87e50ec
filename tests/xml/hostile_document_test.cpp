#include <gmock/gmock.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <string>

#include "xml/Parser.h"
#include "xml/ParserContext.h"

namespace {

std::span<const std::byte> bytes(const std::string& document) {
  return std::as_bytes(std::span(document));
}

std::string repeated(int count, const std::function<std::string(int)>& part) {
  std::string whole;
  for (int i = 0; i < count; ++i) whole += part(i);
  return whole;
}

std::string deep(int depth) {
  return repeated(depth, [](int) { return "<a>"; }) + repeated(depth, [](int) { return "</a>"; });
}

// Both readers: into the tree, and into libxml2's.
struct Verdict {
  bool tree;
  bool document;
  friend bool operator==(const Verdict&, const Verdict&) = default;
};
std::ostream& operator<<(std::ostream& out, const Verdict& verdict) {
  return out << "tree " << verdict.tree << ", document " << verdict.document;
}
constexpr Verdict taken{true, true};
constexpr Verdict refused{false, false};
constexpr Verdict takenAsTree{true, false};
constexpr Verdict refusedAsTree{false, true};

Verdict verdictOn(const std::string& document) {
  return {XML::Parser().parse(bytes(document)), XMLParserContext(bytes(document)).readDocument() != nullptr};
}

}  // namespace

TEST(HostileDocument, isReadOrRefusedWithinBounds) {
  const auto bomb = "<!DOCTYPE a [<!ENTITY e0 'ha'>" +
                    repeated(40,
                             [](int i) {
                               const std::string reference = "&e" + std::to_string(i) + ";";
                               return "<!ENTITY e" + std::to_string(i + 1) + " '" + reference + reference + "'>";
                             }) +
                    "]>";
  const std::string attributes = repeated(200'000, [](int i) { return " a" + std::to_string(i) + "=''"; });
  const std::string namespaces = repeated(50'000, [](int i) { return " xmlns:a" + std::to_string(i) + "='u'"; });
  const std::string tokens = repeated(50'000, [](int i) { return "t" + std::to_string(i) + "|"; });
  const struct {
    const char* name;
    std::string document;
    Verdict verdict;
  } rows[] = {
      {"entities that double forty times", bomb + "<a>&e40;</a>", taken},
      {"the same in an attribute", bomb + "<a b='&e40;'/>", taken},
      {"an undeclared entity after a declared one", "<!DOCTYPE a [<!ENTITY e ''>]><a>&e;&f;</a>", refused},
      {"parameter entities", "<!DOCTYPE a [<!ENTITY % p '<!ENTITY e \"x\">'>%p;]><a/>", taken},
      {"200,000 attributes", "<a" + attributes + "/>", refused},
      {"50,000 namespaces", "<a" + namespaces + "/>", refused},
      {"a DTD of 400 kB", "<!DOCTYPE a [<!ATTLIST a b (" + tokens + "t) 't'>]><a/>", refused},
      {"250 elements deep", deep(250), taken},
      {"100,000 elements deep", deep(100'000), refused},
      {"a text of 9 MB", "<a>" + std::string(9'000'000, 'x') + "</a>", taken},
      {"a text of 11 MB", "<a>" + std::string(11'000'000, 'x') + "</a>", refused},
      {"a CDATA section of 11 MB", "<a><![CDATA[" + std::string(11'000'000, 'x') + "]]></a>", refused},
      {"an attribute of 11 MB", "<a b='" + std::string(11'000'000, 'x') + "'/>", refused},
      {"a comment of 11 MB, which the tree skips", "<!--" + std::string(11'000'000, 'x') + "--><a/>", takenAsTree},
      {"a name of 49,999 bytes", "<" + std::string(49'999, 'n') + "/>", taken},
      {"a name of 60,000 bytes", "<" + std::string(60'000, 'n') + "/>", refused},
      {"more than a million", "<a>" + repeated(1'000'000, [](int) { return "<b/>"; }) + "</a>", refusedAsTree},
  };
  for (const auto& row : rows) EXPECT_EQ(verdictOn(row.document), row.verdict) << row.name;
}

TEST(HostileDocument, getsNothingForItsDeclarationsAndPrintsNothing) {
  const std::string path = testing::TempDir() + "/secret.txt";
  std::ofstream(path) << "secret";
  const std::string declarations = "<!DOCTYPE a [<!ENTITY in 'inside'><!ENTITY out SYSTEM 'file://" + path +
                                   "'><!ENTITY % p SYSTEM 'file://" + path + "'> %p;]>";
  testing::internal::CaptureStderr();
  EXPECT_EQ(XML::parse(declarations + "<a>x&in;y</a>")["a"].text(), "xy");
  EXPECT_EQ(XML::parse(declarations + "<a>x&out;y</a>")["a"].text(), "xy");
  EXPECT_EQ(XML::parse(declarations + "<a b='x&in;y'/>")["a"].attributes().at("b"), "xy");
  std::remove(path.c_str());
  const auto a = XML::parse("<!DOCTYPE a [<!ATTLIST a b CDATA 'x' xmlns:n CDATA #FIXED 'u'>]><a c='1'/>")["a"];
  EXPECT_THAT(a.attributes(), testing::ElementsAre(testing::Pair("c", "1"))) << "nor default attributes";
  verdictOn("<?xml version='1.0' encoding='none-such'?><a><b>&undeclared;</a>");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
