#include <gmock/gmock.h>

#include "VAST/Parser/SKVASTModel.h"
#include "tests/VAST/Parser/RecordedLog.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::Pair;

namespace {

void add(SKVASTModel& model, std::string_view document) {
  const auto bytes = std::as_bytes(std::span(document));
  model.addVASTDocument({bytes.begin(), bytes.end()});
}

std::string shown(const SKVASTUrlWithId& url) {
  return url.id_().value_or("nil") + " " + (url.url() ? url.url()->absoluteString() : "nil");
}

std::vector<std::string> shown(const std::optional<std::vector<SKVASTUrlWithId>>& urls) {
  if (!urls) return {"nil"};
  std::vector<std::string> lines;
  for (const auto& url : *urls) lines.push_back(shown(url));
  return lines;
}

const char* const first = R"(<VAST version="2.0"><Ad id="a"><Wrapper>
  <Impression id="one"> http://i.example/1|x </Impression>
  <Impression><!-- http://no.example/ --><![CDATA[
     http://i.example/2 ]]></Impression>
  <Impression id="three">not a url</Impression>
  <Creatives><Creative><Linear><TrackingEvents>
    <Tracking event=" start ">http://t.example/1</Tracking>
    <Tracking event="start"><![CDATA[http://t.example/2]]></Tracking>
    <Tracking event="complete">not a url</Tracking>
    <Tracking>http://t.example/no-event</Tracking>
  </TrackingEvents><VideoClicks><ClickTracking id="c">http://c.example/1</ClickTracking></VideoClicks></Linear></Creative>
  <Creative><NonLinearAds><TrackingEvents><Tracking event="start">http://t.example/no</Tracking></TrackingEvents>
  </NonLinearAds></Creative></Creatives></Wrapper></Ad></VAST>)";

const char* const second = R"(<VAST version="3.0"><Ad id="b"><InLine>
  <AdTitle><![CDATA[Second]]></AdTitle><Description><!-- words --><![CDATA[Other]]></Description>
  <Impression id="two">http://i.example/3</Impression><Error id="e">http://e.example/[ERRORCODE]</Error>
  <Creatives><Creative><Linear><TrackingEvents><Tracking event="start">http://t.example/3</Tracking></TrackingEvents>
  <VideoClicks><ClickThrough id="t">
     <![CDATA[  http://through.example/  ]]>
  </ClickThrough><ClickThrough>http://later.example/</ClickThrough></VideoClicks>
  <MediaFiles><MediaFile id="m" delivery="progressive" type="video/mp4" width="640" height="360">
    <![CDATA[ http://m.example/a|b.mp4 ]]></MediaFile><MediaFile>nothing</MediaFile></MediaFiles>
  </Linear></Creative></Creatives></InLine></Ad></VAST>)";

}  // namespace

TEST(QueryModel, listsUrlsOverAllDocumentsInOrder) {
  SKVASTModel model;
  add(model, first);
  add(model, second);
  EXPECT_THAT(shown(model.impressions()), ElementsAre("one http://i.example/1%7cx", "nil http://i.example/2",
                                                      "three nil", "two http://i.example/3"));
  EXPECT_THAT(shown(model.errors()), ElementsAre("e http://e.example/[ERRORCODE]"));
  EXPECT_THAT(shown(model.clickTracking()), ElementsAre("c http://c.example/1"));
  EXPECT_EQ(shown(model.clickThrough().value()), "t http://through.example/");
  EXPECT_THAT(shown(model.resultsForQuery("/VAST/Ad/@id")), ElementsAre("nil nil", "nil nil"));
}

TEST(QueryModel, givesNilWhereNothingMatches) {
  SKVASTModel model;
  EXPECT_THAT(shown(model.errors()), ElementsAre("nil"));
  EXPECT_EQ(model.vastVersion(), std::nullopt);
  EXPECT_EQ(model.adTitle(), std::nullopt);
  EXPECT_EQ(model.adDescription(), std::nullopt);
  add(model, "<VAST/>");
  EXPECT_THAT(shown(model.errors()), ElementsAre("nil"));
  EXPECT_EQ(model.clickThrough(), std::nullopt);
  EXPECT_EQ(model.trackingEvents(), std::nullopt);
  EXPECT_THAT(model.mediaFiles(), IsEmpty());
  EXPECT_EQ(model.vastVersion(), std::nullopt);
  EXPECT_EQ(model.adTitle(), "");
  EXPECT_EQ(model.adDescription(), "");
}

TEST(QueryModel, readsTheVersionOfTheFirstAndTheTitleOfTheLastDocument) {
  SKVASTModel model;
  add(model, first);
  EXPECT_EQ(model.adTitle(), "");
  add(model, second);
  EXPECT_EQ(model.vastVersion(), "2.0");
  EXPECT_EQ(model.adTitle(), "Second");
  EXPECT_EQ(model.adDescription(), " words ");
  add(model, "<VAST><AdTitle> Plain <b/></AdTitle><Description><b/><![CDATA[x]]></Description></VAST>");
  EXPECT_EQ(model.adTitle(), "Plain");
  EXPECT_EQ(model.adDescription(), "");
}

TEST(QueryModel, gathersTrackingUrlsByEvent) {
  SKVASTModel model;
  add(model, first);
  add(model, second);
  const auto events = model.trackingEvents();
  ASSERT_TRUE(events);
  ASSERT_THAT(*events, ElementsAre(Pair("start", testing::SizeIs(3))));
  std::vector<std::string> urls;
  for (const auto& url : events->at("start")) urls.push_back(url.absoluteString());
  EXPECT_THAT(urls, ElementsAre("http://t.example/1", "http://t.example/2", "http://t.example/3"));

  SKVASTModel empty;
  add(empty, "<VAST><Linear><Tracking event='start'>not a url</Tracking></Linear></VAST>");
  EXPECT_THAT(empty.trackingEvents(), Optional(IsEmpty()));
}

TEST(QueryModel, makesMediaFilesOfTheirAttributes) {
  SKVASTModel model;
  add(model, second);
  const auto files = model.mediaFiles();
  ASSERT_EQ(files.size(), 2U);
  EXPECT_EQ(files[0]->width() * 1000 + files[0]->height(), 640'360);
  EXPECT_EQ(files[0]->url()->absoluteString(), "http://m.example/a%7cb.mp4");
  EXPECT_EQ(files[1]->url(), std::nullopt);
}

TEST(QueryModel, logsWhatItReturns) {
  SKVASTModel model;
  add(model, first);
  add(model, second);
  const RecordedLog log;
  model.impressions();
  model.resultsForQuery("//None");
  model.trackingEvents();
  EXPECT_THAT(log.lines(), ElementsAre("debug VAST - Model: returning Impression array with 4 element(s)",
                                       "debug VAST - Model: returning None array with 0 element(s)",
                                       "debug VAST - Model: returning event dictionary with 1 event(s)",
                                       "debug VAST - Model: start has 3 URL(s)"));
}

TEST(QueryModel, passesOverADocumentThatDoesNotParse) {
  SKVASTModel model;
  add(model, "<VAST><Error>");
  add(model, second);
  for (int round = 0; round < 2; ++round) {
    const RecordedLog log;
    EXPECT_THAT(shown(model.errors()), ElementsAre("e http://e.example/[ERRORCODE]"));
    EXPECT_THAT(log.lines(), Contains("error VAST - XML Util: Unable to parse."));
    EXPECT_EQ(model.vastVersion(), std::nullopt);
  }
}

// Quadratic work would take minutes.
TEST(QueryModel, answersOverAHundredThousandUrlsAndForMatchesInsideOneAnother) {
  const auto repeated = [](int count, const std::string& part) {
    std::string whole;
    for (int i = 0; i < count; ++i) whole += part;
    return whole;
  };
  const std::string linear =
      "<Linear>" + repeated(10, "<Tracking event='start'>http://t.example/</Tracking>") + "</Linear>";
  SKVASTModel wide, nested;
  add(wide, "<VAST>" + repeated(10'000, "<Ad>" + linear + "<Error>http://e.example/</Error></Ad>") + "</VAST>");
  EXPECT_EQ(wide.trackingEvents()->at("start").size(), 100'000U);
  EXPECT_EQ(wide.errors()->size(), 10'000U);
  add(nested,
      "<VAST>" + repeated(200, "<Error>") + repeated(20'000, "<x y='z'/>") + repeated(200, "</Error>") + "</VAST>");
  EXPECT_EQ(nested.errors()->size(), 200U);
}
