#include "xml/Accessor.h"

#include <gmock/gmock.h>

#include <cmath>

#include "xml/Operators.h"
#include "xml/Parser.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using Key = XML::Accessor::Key;

namespace {

const XML::Accessor& pod() {
  static const XML::Accessor root = XML::parse(
      "<VAST><Ad id='1'><Title>a</Title></Ad><Ad id='2'><Title>b</Title></Ad><Extra>true</Extra><Extra/></VAST>");
  return root;
}

XML::Accessor holding(const std::string& text) {
  return XML::parse("<a>" + text + "</a>")["a"];
}

std::string idOf(const XML::Accessor& accessor) {
  return accessor.attributes().at("id");
}

}  // namespace

TEST(Accessor, stepsByNameAndByIndexInOrder) {
  const auto ads = pod()["VAST"]["Ad"];
  EXPECT_EQ(ads.count(), 2);
  EXPECT_EQ(ads.element(), nullptr);
  EXPECT_EQ(ads[1][0]["Title"].text(), "b");
  EXPECT_EQ((pod()[{"VAST", "Ad", 1, "Title", 0}].text()), "b");
  EXPECT_EQ(pod()[std::vector<Key>{}].element(), pod().element());
  EXPECT_EQ(idOf(ads.first()) + idOf(ads.last()), "12");
  std::string ids;
  for (const auto ad : ads) ids += idOf(ad);
  EXPECT_EQ(ids, "12");
  EXPECT_EQ(std::distance(pod().begin(), pod().end()), 1);
  const auto children = XML::Accessor(pod()["VAST"].element()->childElements);
  EXPECT_THAT(children.names(), Optional(ElementsAre("Ad", "Ad", "Extra", "Extra")));
  EXPECT_THAT(children.map([](const XML::Accessor& each) { return each.name(); }),
              ElementsAre("Ad", "Ad", "Extra", "Extra"));
  EXPECT_THAT(children.mapWithSqueezeNil([](const XML::Accessor& each) { return each.text(); }), ElementsAre("true"));
  EXPECT_EQ(pod()["VAST"]["Extra"].description(),
            "[ XML.Parser.AbstructedDocumentRoot > VAST > Extra,\n XML.Parser.AbstructedDocumentRoot > VAST > Extra ]");
}

TEST(Accessor, carriesTheFirstFailureToTheEndWithoutAnyValue) {
  const struct {
    std::vector<Key> path;
    std::string message;
  } rows[] = {
      {{"Vast"}, "Vast not found."},
      {{"VAST", "Nothing", 4, "More"}, "Nothing not found."},
      {{"VAST", -1}, "cannot access Index: -1"},
      {{"VAST", "Ad", 2}, "cannot access Index: 2"},
      {{"VAST", "Ad", "Title", 0}, "cannot access Title, because of multiple elements"},
  };
  for (const auto& row : rows) {
    const auto failure = pod()[row.path];
    EXPECT_EQ(failure.error()->kind(), XMLError::Kind::accessError);
    EXPECT_EQ(failure.description(), row.message);
    EXPECT_EQ(failure.first().error()->description(), row.message);
    EXPECT_EQ(failure.last().error()->description(), row.message);
  }
  EXPECT_EQ(pod()["nowhere"].names(), std::nullopt);
  EXPECT_EQ(pod()["nowhere"].begin(), pod()["nowhere"].end());
  for (const auto& none : {pod()["nowhere"], pod()["VAST"]["Extra"]}) {
    EXPECT_FALSE(none.name() || none.text() || none.boolValue() || none.intValue() || none.doubleValue() || none.url());
    EXPECT_THAT(none.attributes(), IsEmpty());
  }
  const XML::Accessor empty{std::vector<std::shared_ptr<XML::Element>>{}};
  EXPECT_THAT(empty.all(), Optional(IsEmpty()));
  EXPECT_EQ(empty.first().description(), "cannot access first element");
  EXPECT_EQ(empty.last().description(), "cannot access last element");
  std::optional<std::string> title = "before";
  std::vector<std::string> titles;
  assignIfPresent(title, pod()["nowhere"].text());
  titles <<= pod()["nowhere"].text();
  titles <<= title;
  EXPECT_THAT(titles, ElementsAre("before"));
}

TEST(Accessor, readsTextAsOtherValuesStrictly) {
  EXPECT_EQ(holding("true").boolValue(), true);
  for (const auto* text : {"True", " true", "1", "false"}) EXPECT_EQ(holding(text).boolValue(), false) << text;
  EXPECT_EQ(holding("-9223372036854775808").intValue(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(holding("+7").intValue(), 7);
  for (const auto* text : {" 42", "42 ", "4.2", "0x10", "", "+", "+-1", "--1", "9223372036854775808", "twelve"}) {
    EXPECT_EQ(holding(text).intValue(), std::nullopt) << text;
  }
  EXPECT_EQ(holding("-1.5e3").doubleValue(), -1500);
  EXPECT_EQ(holding("+.5").doubleValue(), 0.5);
  EXPECT_TRUE(std::isinf(holding("inf").doubleValue().value()));
  for (const auto* text : {" 1", "1,5", "", "1.5s"}) EXPECT_EQ(holding(text).doubleValue(), std::nullopt) << text;
  EXPECT_EQ(holding("http://example.com/a?b&amp;c").url()->absoluteString(), "http://example.com/a?b&c");
  EXPECT_EQ(holding("no url").url(), std::nullopt);
}

TEST(Attributes, areAMapThatOutlivesItsTree) {
  XML::Attributes attributes = XML::parse("<a b='1' c='a long value, not kept inside of a string'/>")["a"].attributes();
  attributes["d"];
  attributes["b"] += "2";
  EXPECT_THAT(attributes,
              ElementsAre(testing::Pair("b", "12"), testing::Pair("c", testing::SizeIs(41)), testing::Pair("d", "")));
  EXPECT_THROW(attributes.at("e"), std::out_of_range);
}
