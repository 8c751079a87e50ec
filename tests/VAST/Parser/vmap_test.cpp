// Schedule documents: which breaks they list, when, and what of them is left.
#include <gmock/gmock.h>

#include "VAST/Parser/VMAPParser.h"
#include "platform/dispatch/VirtualRunLoop.h"
#include "tests/VAST/Parser/VASTTexts.h"
#include "tests/support/ScriptedURLLoader.h"

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

const std::string source = "<AdSource><AdTagURI templateType='vast3'> http://ads.test/a|b </AdTagURI></AdSource>";

std::string adBreak(const std::string& time, const std::string& content = source, const std::string& kind = "linear") {
  return "<AdBreak timeOffset='" + time + "' breakType='" + kind + "'>" + content + "</AdBreak>";
}

std::optional<VMAPDocument> read(const std::string& text) {
  std::string problem;
  auto document = VMAPDocument::read(std::as_bytes(std::span(text)), problem);
  EXPECT_EQ(document.has_value(), problem.empty()) << problem;
  return document;
}

VMAPBreak only(const std::string& text) {
  const auto document = read("<VMAP version='1.0'>" + text + "</VMAP>");
  EXPECT_TRUE(document && document->breaks.size() == 1);
  return document->breaks.at(0);
}

}  // namespace

TEST(Schedules, sayWhenABreakIsDue) {
  using Place = VMAPBreak::Place;
  const struct {
    std::string time;
    Place place;
    std::optional<std::uint64_t> second;
    std::optional<double> percent;
  } rows[] = {
      {"start", Place::beforeProgramme, {}, {}},      {"end", Place::afterProgramme, {}, {}},
      {"00:00:00", Place::beforeProgramme, {}, {}},   {"00:00:00.001", Place::inProgramme, 1, {}},
      {"01:00:10.000", Place::inProgramme, 3610, {}}, {"00:00:10.5", Place::inProgramme, 11, {}},
      {"0%", Place::beforeProgramme, {}, {}},         {"12.5%", Place::inProgramme, {}, 12.5},
      {"100%", Place::afterProgramme, {}, {}},
  };
  for (const auto& row : rows) {
    const auto read = only(adBreak(row.time));
    EXPECT_EQ(read.refusal, "") << row.time;
    EXPECT_EQ(std::tie(read.place, read.second, read.percent), std::tie(row.place, row.second, row.percent))
        << row.time;
  }
  for (const auto* time : {"#1", "", "noon", "101%", "-00:00:01", "999999999:00:00"}) {
    EXPECT_NE(only(adBreak(time)).refusal, "") << time;
  }
}

TEST(Schedules, takeAdsFromATagOrADocumentAndNameTheRest) {
  EXPECT_EQ(only(adBreak("start")).tag->absoluteString(), "http://ads.test/a%7cb");
  EXPECT_EQ(only(adBreak("start", source, "display, Linear")).refusal, "");
  const std::string vast = "<v:VAST v:x='&quot;&amp;'><v:Ad>1 &lt; 2<![CDATA[<&]]></v:Ad></v:VAST>";
  for (const std::string name : {"x:VASTAdData", "VASTData"}) {
    const auto read = only(adBreak("start", "<AdSource allowMultipleAds='false' followRedirects='0'><" + name + ">" +
                                                vast + "</" + name + "></AdSource>"));
    ASSERT_TRUE(read.document) << read.refusal;
    EXPECT_TRUE(read.document->isWellFormed()) << read.document->text();
    EXPECT_EQ(read.document->adElements().front()->text, "1 < 2<&");
    EXPECT_EQ(read.document->root()->attributes.at("v:x"), "\"&");
    EXPECT_FALSE(read.allowsMultipleAds || read.followsRedirects);
  }
  const auto inText =
      only(adBreak("start", "<AdSource><VASTAdData><![CDATA[<VAST><Ad/></VAST>]]></VASTAdData></AdSource>"));
  EXPECT_EQ(inText.document->adElements().size(), 1u);
  const std::pair<std::string, const char*> refused[] = {
      {adBreak("start", source, "nonlinear"), "not linear"},
      {adBreak("start", source, ""), "not linear"},
      {adBreak("start", ""), "no ads"},
      {adBreak("start", "<AdSource/>"), "no ads"},
      {adBreak("start", "<AdSource><AdTagURI>file:///etc/passwd</AdTagURI></AdSource>"), "can't be asked"},
      {adBreak("start", "<AdSource><AdTagURI templateType='house'>http://a.test/</AdTagURI></AdSource>"), "'house'"},
      {adBreak("start", "<AdSource><CustomAdData templateType='own'>x</CustomAdData></AdSource>"), "'own'"},
  };
  for (const auto& [one, why] : refused) EXPECT_THAT(only(one).refusal, HasSubstr(why)) << one;
  for (const auto* text : {"", "<VMAP", "<VAST/>", "<VMAP version='2.0'/>"}) EXPECT_FALSE(read(text)) << text;
}

TEST(Schedules, comeOnceOverTheNetworkWhateverItSays) {
  VirtualRunLoop loop;
  ScriptedLoaderInPlace net;
  std::string many;
  for (int i = 0; i < 10'000; ++i) many += adBreak(std::to_string(i % 90 + 10) + "%");
  const std::string good = "<x:VMAP xmlns:x='x'>" + many + "</x:VMAP>";
  const std::pair<ScriptedURLLoader::Answer, bool> rows[] = {
      {{201, good, {}, {}, false}, true}, {{404, good, {}, {}, false}, false},
      {{204, "", {}, {}, false}, false},  {{.error = NSURLErrorTimedOut}, false},
      {{.never = true}, false},           {{200, "<VAST/>", {}, {}, false}, false},
  };
  int number = 0;
  for (const auto& [answer, isRead] : rows) {
    const std::string url = "http://ads.test/" + std::to_string(++number);
    net.loader->answer(url, answer);
    int completions = 0;
    VMAPParser::parseWithUrl(*NSURL::URLWithString(url), [&, isRead = isRead](const VMAPParser::Result& result) {
      ++completions;
      EXPECT_EQ(result.document.has_value(), isRead) << result.problem;
      EXPECT_EQ(result.problem.empty(), isRead);
      EXPECT_EQ(isRead ? result.document->breaks.size() : 10'000u, 10'000u);
      throw completions;
    });
    EXPECT_EQ(completions, 0);
    loop.advance(30s);
    EXPECT_EQ(completions, 1) << number;
  }
}
