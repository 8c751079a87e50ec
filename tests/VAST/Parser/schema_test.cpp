#include <gmock/gmock.h>

#include "VAST/Parser/VASTSchema.h"
#include "VAST/Parser/VASTXMLUtil.h"
#include "tests/VAST/Parser/RecordedLog.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

std::span<const std::byte> bytes(std::string_view text) {
  return std::as_bytes(std::span(text));
}

bool isValid(const std::string& document) {
  return validateXMLDocAgainstSchema(bytes(document), vastSchema());
}

std::string replaced(std::string text, std::string_view from, std::string_view to) {
  const auto at = text.find(from);
  if (at == text.npos) throw std::logic_error("nothing to replace: " + std::string(from));
  return text.replace(at, from.size(), to);
}

const std::string inLine = R"(<?xml version="1.0"?>
<VAST version="2.0" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xsi:noNamespaceSchemaLocation="vast.xsd">
 <Ad id="1"><InLine>
  <AdSystem version="1.0">S</AdSystem><AdTitle>T</AdTitle><Description>D</Description>
  <Survey>http://s.example/</Survey><Error>http://e.example/</Error>
  <Impression id="i"><![CDATA[http://i.example/]]></Impression><Impression>http://i.example/2</Impression>
  <Creatives>
   <Creative id="c" sequence="1" AdID="a"><Linear>
     <Duration>00:00:30.500</Duration>
     <TrackingEvents><Tracking event="start">http://t.example/</Tracking></TrackingEvents>
     <AdParameters>p</AdParameters>
     <VideoClicks><ClickThrough id="1">http://c.example/</ClickThrough><ClickTracking/><CustomClick id="x"/></VideoClicks>
     <MediaFiles><MediaFile id="m" delivery="progressive" type="video/mp4" bitrate="500" width="640" height="360"
       scalable="true" maintainAspectRatio="0" apiFramework="VPAID">http://m.example/a.mp4</MediaFile></MediaFiles>
   </Linear></Creative>
   <Creative><CompanionAds><Companion width="300" height="250"><IFrameResource>http://f.example/</IFrameResource>
     <TrackingEvents/><CompanionClickThrough>http://c.example/</CompanionClickThrough><AltText>A</AltText>
     <AdParameters/></Companion></CompanionAds></Creative>
   <Creative><NonLinearAds><NonLinear width="1" height="2" minSuggestedDuration="00:00:05"><HTMLResource>h</HTMLResource>
     <NonLinearClickThrough/></NonLinear></NonLinearAds></Creative>
  </Creatives>
  <Extensions><Extension type="any">text<Free><AsAir kind="x"/></Free></Extension></Extensions>
 </InLine></Ad>
</VAST>)";

const std::string wrapper = R"(<VAST version="2.0.1"><Ad id="w"><Wrapper><AdSystem>S</AdSystem>
  <VASTAdTagURI>http://w.example/</VASTAdTagURI><Error>http://e.example/</Error><Impression>http://i.example/</Impression>
  <Creatives><Creative><Linear><TrackingEvents><Tracking event=" close ">http://t.example/</Tracking></TrackingEvents>
    <VideoClicks><ClickTracking>http://c.example/</ClickTracking></VideoClicks></Linear></Creative>
   <Creative><CompanionAds><Companion width="1" height="1"/></CompanionAds></Creative>
   <Creative><NonLinearAds/></Creative></Creatives></Wrapper></Ad></VAST>)";

// One of the two with something replaced.
struct Changed {
  const std::string& document;
  const char *from, *to;
};

}  // namespace

TEST(Schema, takesWhatTheStandardAllows) {
  const Changed rows[] = {
      {inLine, "", ""},
      {wrapper, "", ""},
      {inLine, "<Description>D</Description>", ""},
      {inLine, "</VAST>", "<Ad id=\"2\"/></VAST>"},
      {inLine, "<Creative>", "<Creative id=\"c\"/><Creative>"},
      {wrapper, "</Creatives>", "<Creative/></Creatives>"},
      {inLine, "<IFrameResource>http://f.example/</IFrameResource>", ""},
      {wrapper, "<Companion width=\"1\" height=\"1\"/>",
       "<Companion width=\"1\" height=\"1\"><AltText>A</AltText><AdParameters/></Companion>"},
      {inLine, "<CustomClick id=\"x\"/>", "<CustomClick/>"},
  };
  for (const auto& row : rows) {
    const RecordedLog log;
    EXPECT_TRUE(isValid(replaced(row.document, row.from, row.to))) << row.to;
    EXPECT_THAT(log.lines(), ElementsAre("error VAST - XML Util: document is valid"));
  }
}

TEST(Schema, refusesWhatTheStandardForbids) {
  const Changed rows[] = {
      {inLine, "<VAST version=\"2.0\"", "<VAST"},
      {inLine, "<InLine>", "<InLine id=\"1\">"},
      {inLine, "<AdTitle>T</AdTitle>", ""},
      {inLine, "<Impression id=\"i\">", "<Impression id=\"i\" event=\"start\">"},
      {inLine, "<Duration>00:00:30.500</Duration>", ""},
      {inLine, "00:00:30.500", "30"},
      {inLine, "event=\"start\"", "event=\"begin\""},
      {inLine, " delivery=\"progressive\"", ""},
      {inLine, "scalable=\"true\"", "scalable=\"yes\""},
      {inLine, "sequence=\"1\"", "sequence=\"\""},
      {inLine, "<IFrameResource>http://f.example/</IFrameResource>",
       "<StaticResource>http://f.example/</StaticResource>"},
      {inLine, "<TrackingEvents/><CompanionClickThrough>", "<AltText/><CompanionClickThrough>"},
      {inLine, "<Free>", "<VAST>"},
      {wrapper, "<Impression>", "<Impression id=\"i\">"},
      {wrapper, "<VASTAdTagURI>http://w.example/</VASTAdTagURI>", ""},
      {wrapper, "<VideoClicks>", "<VideoClicks><ClickThrough>http://c.example/</ClickThrough>"},
  };
  for (const auto& row : rows) EXPECT_FALSE(isValid(replaced(row.document, row.from, row.to))) << row.from << row.to;
  for (const auto* root :
       {"<vast version='2.0'/>", "<VideoAdServingTemplate/>", "<VAST xmlns='urn:v' version='2.0'/>"}) {
    EXPECT_FALSE(isValid(root)) << root;
  }
}

TEST(Schema, saysWhatIsWrongAtErrorLevel) {
  const RecordedLog log;
  EXPECT_FALSE(isValid("<VAST><Ad/></VAST>"));
  EXPECT_FALSE(isValid("<VAST"));
  const std::string error = "error VAST - XML Util: ";
  EXPECT_THAT(log.lines(), ElementsAre(error + "Schema validation error: Element 'VAST': The attribute 'version' is "
                                               "required but missing.",
                                       StartsWith(error + "Schema validation error: Element 'Ad'"),
                                       error + "document is invalid", error + "Unable to parse."));
}

// Minutes, if each error looked at the siblings before it.
TEST(Schema, takesNoLongerPerErrorForManyErrors) {
  std::string document = "<VAST version='2.0'>";
  for (int i = 0; i < 300'000; ++i) document += "<Ad/>";
  EXPECT_FALSE(isValid(document + "</VAST>"));
}

TEST(Schema, reachesNoVerdictWithoutUsableRules) {
  const RecordedLog log;
  EXPECT_FALSE(validateXMLDocAgainstSchema(bytes("<a/>"), bytes("no rules")));
  EXPECT_THAT(log.lines(), Contains(HasSubstr("Schema parser error: ")));
  EXPECT_EQ(log.lines().back(), "error VAST - XML Util: validation generated an internal error");
}
