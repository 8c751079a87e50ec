#include <gmock/gmock.h>

#include "VAST/Parser/SKVASTModel.h"
#include "tests/VAST/Parser/RecordedLog.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Lines = std::vector<std::string>;

void add(SKVASTModel& model, std::string_view document) {
  const auto bytes = std::as_bytes(std::span(document));
  model.addVASTDocument({bytes.begin(), bytes.end()});
}

Lines shown(const std::optional<std::vector<SKVASTUrlWithId>>& urls) {
  if (!urls) return {"nil"};
  Lines lines;
  for (const auto& url : *urls) {
    lines.push_back(url.id_().value_or("nil") + " " + (url.url() ? url.url()->absoluteString() : "nil"));
  }
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

TEST(QueryModel, answersOverAllDocumentsInOrder) {
  SKVASTModel model;
  add(model, first);
  add(model, second);
  const RecordedLog log;
  EXPECT_THAT(shown(model.impressions()), ElementsAre("one http://i.example/1%7cx", "nil http://i.example/2",
                                                      "three nil", "two http://i.example/3"));
  EXPECT_THAT(shown(model.errors()), ElementsAre("e http://e.example/[ERRORCODE]"));
  EXPECT_THAT(shown(model.clickTracking()), ElementsAre("c http://c.example/1"));
  EXPECT_EQ(shown({{model.clickThrough().value()}}), (Lines{"t http://through.example/"}));
  EXPECT_THAT(shown(model.resultsForQuery("/VAST/Ad/@id")), ElementsAre("nil nil", "nil nil"));
  const auto events = model.trackingEvents().value();
  ASSERT_THAT(events, ElementsAre(testing::Pair("start", testing::SizeIs(3))));
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(events.at("start")[i].absoluteString(), "http://t.example/" + std::to_string(i + 1));
  }
  EXPECT_EQ(log.lines().front(), "debug VAST - Model: returning Impression array with 4 element(s)");
  EXPECT_EQ(log.lines().back(), "debug VAST - Model: start has 3 URL(s)");
  const auto files = model.mediaFiles();
  ASSERT_EQ(files.size(), 2U);
  EXPECT_EQ(files[0]->width() * 1000 + files[0]->height(), 640'360);
  EXPECT_EQ(files[0]->url()->absoluteString(), "http://m.example/a%7cb.mp4");
  EXPECT_EQ(files[1]->url(), std::nullopt);

  EXPECT_EQ(model.vastVersion(), "2.0") << "of the first document";
  EXPECT_EQ(model.adTitle(), "Second") << "of the last";
  EXPECT_EQ(model.adDescription(), " words ");
  add(model, "<VAST><AdTitle> Plain <b/></AdTitle><Description><b/><![CDATA[x]]></Description></VAST>");
  EXPECT_EQ(model.adTitle(), "Plain");
  EXPECT_EQ(model.adDescription(), "");
}

TEST(QueryModel, givesNilWhereNothingMatchesAndPassesOverWhatDoesNotParse) {
  SKVASTModel model;
  EXPECT_THAT(shown(model.errors()), ElementsAre("nil"));
  EXPECT_EQ(model.adTitle(), std::nullopt);
  add(model, "<VAST><Error>");
  {
    const RecordedLog log;
    EXPECT_THAT(shown(model.errors()), ElementsAre("nil"));
    EXPECT_THAT(log.lines(), Contains("error VAST - XML Util: Unable to parse."));
  }
  add(model, "<VAST><Linear><Tracking event='start'>not a url</Tracking></Linear></VAST>");
  EXPECT_THAT(model.trackingEvents(), testing::Optional(IsEmpty()));
  EXPECT_EQ(model.clickThrough(), std::nullopt);
  EXPECT_EQ(model.vastVersion(), std::nullopt);
  EXPECT_EQ(model.adDescription(), "");
  add(model, second);
  EXPECT_THAT(shown(model.errors()), ElementsAre("e http://e.example/[ERRORCODE]"));
}
