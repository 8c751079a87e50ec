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

std::optional<std::string> messageOf(const XML::Accessor& accessor) {
  const auto error = accessor.error();
  return error ? std::optional(error->description()) : std::nullopt;
}

std::optional<std::string> idOf(const XML::Accessor& accessor) {
  const auto found = accessor.attributes().find("id");
  return found == accessor.attributes().end() ? std::nullopt : std::optional(found->second);
}

}  // namespace

TEST(Accessor, stepsByNameAndByIndex) {
  const auto ads = pod()["VAST"]["Ad"];
  EXPECT_EQ(ads.count(), 2);
  EXPECT_EQ(ads.element(), nullptr);
  EXPECT_EQ(idOf(ads[1]), "2");
  EXPECT_EQ(ads[1][0]["Title"].text(), "b");
  EXPECT_EQ((pod()[{"VAST", "Ad", 1, "Title"}].text()), "b");
  const std::vector<Key> path{"VAST", "Ad", 0, "Title", 0};
  EXPECT_EQ(pod()[path].text(), "a");
  EXPECT_EQ(pod()[std::vector<Key>{}].element(), pod().element());
  const std::string name = "VAST";
  EXPECT_EQ(pod()[name].name(), "VAST");
}

TEST(Accessor, carriesTheFirstFailureToTheEnd) {
  const struct {
    std::vector<Key> path;
    std::string message;
  } rows[] = {
      {{"Vast"}, "Vast not found."},
      {{""}, " not found."},
      {{"VAST", "Nothing", 4, "More"}, "Nothing not found."},
      {{"VAST", 1}, "cannot access Index: 1"},
      {{"VAST", -1}, "cannot access Index: -1"},
      {{"VAST", "Ad", 2}, "cannot access Index: 2"},
      {{"VAST", "Ad", -3, "Title"}, "cannot access Index: -3"},
      {{"VAST", "Ad", "Title", 0}, "cannot access Title, because of multiple elements"},
  };
  for (const auto& row : rows) {
    const auto failure = pod()[row.path];
    EXPECT_THAT(messageOf(failure), Optional(row.message));
    EXPECT_EQ(failure.error()->kind(), XMLError::Kind::accessError);
    EXPECT_EQ(failure.description(), row.message);
    EXPECT_EQ(messageOf(failure.first()), messageOf(failure.last()));
    EXPECT_THAT(messageOf(failure.first()), Optional(row.message));
  }
}

TEST(Accessor, givesNoValuesForAFailureOrSeveralElements) {
  for (const auto& none : {pod()["nowhere"], pod()["VAST"]["Extra"]}) {
    EXPECT_EQ(none.name(), std::nullopt);
    EXPECT_EQ(none.text(), std::nullopt);
    EXPECT_EQ(none.boolValue(), std::nullopt);
    EXPECT_EQ(none.intValue(), std::nullopt);
    EXPECT_EQ(none.doubleValue(), std::nullopt);
    EXPECT_EQ(none.url(), std::nullopt);
    EXPECT_THAT(none.attributes(), IsEmpty());
  }
  EXPECT_EQ(pod()["nowhere"].all(), std::nullopt);
  EXPECT_EQ(pod()["nowhere"].names(), std::nullopt);
  EXPECT_EQ(pod()["nowhere"].begin(), pod()["nowhere"].end());
}

TEST(Accessor, givesFirstAndLastOfASequenceOfAnyLength) {
  EXPECT_EQ(idOf(pod()["VAST"]["Ad"].first()), "1");
  EXPECT_EQ(idOf(pod()["VAST"]["Ad"].last()), "2");
  const XML::Accessor one(std::vector{pod()["VAST"].element()});
  EXPECT_EQ(one.element(), nullptr) << "a sequence of one is a sequence";
  EXPECT_EQ(one.last().element(), pod()["VAST"].element());
  const XML::Accessor none{std::vector<std::shared_ptr<XML::Element>>{}};
  EXPECT_THAT(none.all(), Optional(IsEmpty()));
  EXPECT_THAT(messageOf(none.first()), Optional(std::string("cannot access first element")));
  EXPECT_THAT(messageOf(none.last()), Optional(std::string("cannot access last element")));
  EXPECT_EQ(none.description(), "[  ]");
}

TEST(Accessor, iteratesOverItsElementsInOrder) {
  std::vector<std::string> ids;
  for (const auto ad : pod()["VAST"]["Ad"]) ids.push_back(idOf(ad).value());
  EXPECT_THAT(ids, ElementsAre("1", "2"));
  EXPECT_EQ(std::distance(pod().begin(), pod().end()), 1);

  const auto children = XML::Accessor(pod()["VAST"].element()->childElements);
  EXPECT_THAT(children.names(), Optional(ElementsAre("Ad", "Ad", "Extra", "Extra")));
  EXPECT_THAT(children.map([](const XML::Accessor& each) { return each.name(); }),
              ElementsAre("Ad", "Ad", "Extra", "Extra"));
  EXPECT_THAT(children.mapWithSqueezeNil([](const XML::Accessor& each) { return each.text(); }), ElementsAre("true"));
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

TEST(Accessor, describesItselfByThePathsThatAreStillThere) {
  EXPECT_EQ((pod()[{"VAST", "Ad", 0}].description()), "\"XML.Parser.AbstructedDocumentRoot > VAST > Ad\"");
  EXPECT_EQ(pod()["VAST"]["Extra"].description(),
            "[ XML.Parser.AbstructedDocumentRoot > VAST > Extra,\n XML.Parser.AbstructedDocumentRoot > VAST > Extra ]");
  const auto title = XML::parse("<VAST><Ad><Title/></Ad></VAST>")[{"VAST", "Ad", "Title"}];
  EXPECT_EQ(title.description(), "\"Title\"");
}

TEST(Operators, changeNothingForAnAbsentValue) {
  std::optional<std::string> title = "before";
  assignIfPresent(title, pod()["nowhere"].text());
  EXPECT_EQ(title, "before");
  assignIfPresent(title, std::optional("a"));
  EXPECT_EQ(title, "a");
  std::vector<std::string> titles;
  titles <<= pod()["nowhere"].text();
  titles <<= title;
  EXPECT_THAT(titles, ElementsAre("a"));
}

TEST(Attributes, areAMapThatOutlivesItsTree) {
  XML::Attributes attributes = XML::parse("<a b='1' c='a long value, not kept inside of a string'/>")["a"].attributes();
  attributes["d"];
  attributes["b"] += "2";
  EXPECT_THAT(attributes,
              ElementsAre(testing::Pair("b", "12"), testing::Pair("c", testing::SizeIs(41)), testing::Pair("d", "")));
  EXPECT_TRUE(attributes.contains("c"));
  EXPECT_THROW(attributes.at("e"), std::out_of_range);
}
