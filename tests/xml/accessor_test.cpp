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

TEST(Accessor, givesNothingForAFailure) {
  const auto failure = pod()["nowhere"];
  EXPECT_EQ(failure.name(), std::nullopt);
  EXPECT_EQ(failure.text(), std::nullopt);
  EXPECT_EQ(failure.boolValue(), std::nullopt);
  EXPECT_EQ(failure.intValue(), std::nullopt);
  EXPECT_EQ(failure.doubleValue(), std::nullopt);
  EXPECT_EQ(failure.url(), std::nullopt);
  EXPECT_EQ(failure.all(), std::nullopt);
  EXPECT_EQ(failure.names(), std::nullopt);
  EXPECT_THAT(failure.attributes(), IsEmpty());
  EXPECT_EQ(failure.count(), 0);
  EXPECT_EQ(failure.begin(), failure.end());
  EXPECT_THAT(failure.map([](const XML::Accessor& each) { return each.count(); }), IsEmpty());
}

TEST(Accessor, hasNoValuesWhereThereAreSeveralElements) {
  const auto extras = pod()["VAST"]["Extra"];
  EXPECT_EQ(extras.name(), std::nullopt);
  EXPECT_EQ(extras.text(), std::nullopt);
  EXPECT_THAT(extras.attributes(), IsEmpty());
  EXPECT_EQ(extras.error(), std::nullopt);
  EXPECT_EQ(extras[0].boolValue(), true);
  EXPECT_EQ(extras[1].boolValue(), std::nullopt);
}

TEST(Accessor, givesFirstAndLastOfASequence) {
  EXPECT_EQ(idOf(pod()["VAST"]["Ad"].first()), "1");
  EXPECT_EQ(idOf(pod()["VAST"]["Ad"].last()), "2");
  const auto one = pod()["VAST"];
  EXPECT_EQ(one.first().element(), one.element());
  EXPECT_EQ(one.last().element(), one.element());

  const XML::Accessor none{std::vector<std::shared_ptr<XML::Element>>{}};
  EXPECT_EQ(none.count(), 0);
  EXPECT_THAT(none.all(), Optional(IsEmpty()));
  EXPECT_THAT(messageOf(none.first()), Optional(std::string("cannot access first element")));
  EXPECT_THAT(messageOf(none.last()), Optional(std::string("cannot access last element")));
  EXPECT_EQ(none.description(), "[  ]");
}

TEST(Accessor, keepsASequenceOfOneASequence) {
  const XML::Accessor one(std::vector{pod()["VAST"].element()});
  EXPECT_EQ(one.element(), nullptr);
  EXPECT_THAT(messageOf(one["Ad"]), Optional(std::string("cannot access Ad, because of multiple elements")));
  EXPECT_EQ(one[0]["Ad"].count(), 2);
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

TEST(Accessor, readsTextAsBool) {
  EXPECT_EQ(holding("true").boolValue(), true);
  for (const auto* text : {"True", " true", "1", "false"}) EXPECT_EQ(holding(text).boolValue(), false) << text;
  EXPECT_EQ(holding("").boolValue(), std::nullopt);
}

TEST(Accessor, readsTextAsANumberStrictly) {
  EXPECT_EQ(holding("42").intValue(), 42);
  EXPECT_EQ(holding("-9223372036854775808").intValue(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(holding("+7").intValue(), 7);
  for (const auto* text : {" 42", "42 ", "4.2", "0x10", "", "+", "+-1", "--1", "9223372036854775808", "twelve"}) {
    EXPECT_EQ(holding(text).intValue(), std::nullopt) << text;
  }
  const auto trimmed = XML::parse("<a> 42\n</a>", NSCharacterSet::whitespaceAndNewlineCharacterSet());
  EXPECT_EQ(trimmed["a"].intValue(), 42);

  EXPECT_EQ(holding("-1.5e3").doubleValue(), -1500);
  EXPECT_EQ(holding("+.5").doubleValue(), 0.5);
  EXPECT_TRUE(std::isinf(holding("inf").doubleValue().value()));
  for (const auto* text : {" 1", "1,5", "", "1.5s"}) EXPECT_EQ(holding(text).doubleValue(), std::nullopt) << text;
}

TEST(Accessor, readsTextAsAUrl) {
  EXPECT_EQ(holding("http://example.com/a?b&amp;c").url()->absoluteString(), "http://example.com/a?b&c");
  EXPECT_EQ(holding("no url").url(), std::nullopt);
}

TEST(Accessor, describesItselfByPaths) {
  EXPECT_EQ(pod().description(), "\"XML.Parser.AbstructedDocumentRoot\"");
  EXPECT_EQ((pod()[{"VAST", "Ad", 0}].description()), "\"XML.Parser.AbstructedDocumentRoot > VAST > Ad\"");
  EXPECT_EQ(pod()["VAST"]["Extra"].description(),
            "[ XML.Parser.AbstructedDocumentRoot > VAST > Extra,\n XML.Parser.AbstructedDocumentRoot > VAST > Extra ]");
}

TEST(Accessor, keepsWhatItWalkedToWhenTheTreeAboveIsGone) {
  const auto title = XML::parse("<VAST><Ad><Title>a</Title></Ad></VAST>")[{"VAST", "Ad", "Title"}];
  EXPECT_EQ(title.text(), "a");
  EXPECT_EQ(title.description(), "\"Title\"");
}

TEST(Operators, changeNothingForAnAbsentValue) {
  std::string title = "before";
  assignIfPresent(title, pod()["nowhere"].text());
  EXPECT_EQ(title, "before");
  assignIfPresent(title, (pod()[{"VAST", "Ad", 0, "Title"}].text()));
  EXPECT_EQ(title, "a");

  std::optional<std::string> kept = "kept";
  assignIfPresent(kept, std::optional<std::string>());
  EXPECT_EQ(kept, "kept");

  std::vector<std::string> titles;
  titles <<= pod()["nowhere"].text();
  titles <<= std::optional<std::string>("one");
  EXPECT_THAT(titles, ElementsAre("one"));
}

TEST(Attributes, areAMapFromNameToValue) {
  XML::Attributes attributes;
  attributes["b"] = "1";
  attributes["a"];
  attributes["b"] += "2";
  EXPECT_THAT(attributes, ElementsAre(testing::Pair("b", "12"), testing::Pair("a", "")));
  EXPECT_EQ(attributes.at("b"), "12");
  EXPECT_TRUE(attributes.contains("a"));
  EXPECT_FALSE(attributes.contains("c"));
  EXPECT_THROW(attributes.at("c"), std::out_of_range);
}
