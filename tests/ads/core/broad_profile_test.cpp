// What the two profiles make of the same tags: which films come, in which order, and which codes for those that don't.
#include <gmock/gmock.h>

#include "VAST/Parser/SKVAST2Parser.h"
#include "ads/core/SKVASTEventProcessor.h"
#include "ads/core/YMRAdQueue.h"
#include "platform/dispatch/VirtualRunLoop.h"
#include "platform/foundation/ConnectionRate.h"
#include "platform/uikit/values/UIScreen.h"
#include "tests/VAST/Parser/VASTTexts.h"
#include "tests/support/ScriptedURLLoader.h"

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

namespace {

using Lines = std::vector<std::string>;

const std::string ads = "http://ads.test/";

// A linear creative with a film of that name and type.
std::string linear(const std::string& name, const std::string& type = "video/mp4", const std::string& more = "") {
  return "<Linear><MediaFiles>" + vast::mediaFile("http://m.test/" + name, "type='" + type + "' " + more) +
         "</MediaFiles></Linear>";
}
std::string creative(const std::string& content, const std::string& attributes = "") {
  return "<Creative " + attributes + ">" + content + "</Creative>";
}
std::string ad(const std::string& creatives, const std::string& attributes = "") {
  return vast::inLine("<Creatives>" + creatives + "</Creatives>", attributes);
}
std::string film(const std::string& name, const std::string& attributes = "") {
  return ad(creative(linear(name)), attributes);
}
std::string wrapper(const std::string& to, const std::string& allowing = "", const std::string& attributes = "") {
  return "<Ad " + attributes + "><Wrapper " + allowing + "><VASTAdTagURI>" + ads + to +
         "</VASTAdTagURI></Wrapper></Ad>";
}

struct Profiles : testing::Test {
  Profiles() {
    SKVASTMediaFilePicker::setProbeHost("127.0.0.1");
    UIScreen::mainScreen().setSize({1920, 1080});
    loader->answer(ads + "pod", vast::document(film("p2", "sequence='2'") + film("p1", "sequence='1'") + film("s")));
    loader->answer(ads + "several", vast::document(film("first", "id='1'") + film("second", "id='2'")));
    loader->answer(ads + "a", vast::document(film("a")));
    loader->answer(ads + "to-a", vast::document(wrapper("a")));
    loader->answer(ads + "none", {204, "", {}, {}, false});
    loader->answer(ads + "self", vast::document(wrapper("self")));
  }

  std::shared_ptr<YMRVastModel> resolve(YMRTagProfile profile) {
    SKVAST2ParserOptions options;
    options.profile = profile;
    options.macroValues.breakPosition = 2;
    std::shared_ptr<YMRVastModel> model;
    SKVAST2Parser(options).parseWithUrl(NSURL::URLWithString(tag), [&](auto result) { model = result; });
    EXPECT_TRUE(loop.advanceUntil([&] { return model != nullptr; }, 30s));
    return model;
  }
  // Films and codes in the order of play.
  Lines played(YMRTagProfile profile) {
    Lines lines;
    const auto model = resolve(profile);
    for (YMRAdQueue queue(*model); !queue.isEmpty();) {
      const auto next = queue.takeNext();
      lines.push_back(next.failure ? next.errorCode() : next.mediaFile->url()->path().substr(1));
    }
    return lines;
  }

  // What the tag answers from now on.
  void answer(ScriptedURLLoader::Answer answer) {
    tag = ads + "tag" + std::to_string(++tags);
    loader->answer(tag, std::move(answer));
  }
  void answer(const std::string& content) { answer({200, vast::document(content), {}, {}, false}); }

  VirtualRunLoop loop;
  ScriptedLoaderInPlace network;
  const std::shared_ptr<ScriptedURLLoader> loader = network.loader;
  std::string tag;
  int tags = 0;
};

}  // namespace

TEST_F(Profiles, makeTheirOwnOfEachDocument) {
  const std::string companion = creative("<CompanionAds/>"), vpaid = "apiFramework='VPAID'";
  const std::string interactive =
      "<Linear><MediaFiles><InteractiveCreativeFile apiFramework='SIMID'>http://m.test/x</InteractiveCreativeFile>";
  const struct {
    const char* name;
    std::string ads;
    Lines exact, broad;
  } rows[] = {
      {"a companion beside the film", ad(companion + creative(linear("a"))), {"303"}, {"a"}},
      {"creatives by number, the first with a film",
       ad(creative(linear("ten"), "sequence='10'") +
          creative(linear("flash", "application/x-shockwave-flash"), "sequence='1'") +
          creative(linear("two"), "sequence='2'")),
       {"303"},
       {"two"}},
      {"a pod without ids", film("a", "sequence='1'") + film("b", "sequence='2'"), {"303"}, {"a", "b"}},
      {"a pod of ten and more",
       film("a10", "id='A' sequence='10'") + film("a2", "id='B' sequence=' 2'") + film("x", "id='C' sequence='x'"),
       {"a2", "a10", "x"},
       {"a2", "a10", "x"}},
      {"text and number",
       film("a10", "id='A' sequence='10'") + film("a2", "id='B' sequence='2'"),
       {"a10", "a2"},
       {"a2", "a10"}},
      {"stand-alone ads only",
       ad(companion, "id='1'") + wrapper("missing") + film("b", "id='2'") + film("c", "id='3'"),
       {"303"},
       {"200", "301", "b"}},
      {"fall-backs for any failure, one after another",
       ad(creative(linear("x", "application/x-shockwave-flash")), "id='1' sequence='1'") +
           film("z", "id='2' sequence='2'") + wrapper("missing", "", "id='3'") + film("s", "id='4'"),
       {"401", "z"},
       {"403", "301", "s", "z"}},
      {"a wrapper that allows all", wrapper("pod"), {"303"}, {"p1", "p2"}},
      {"a wrapper that allows one", wrapper("pod", "allowMultipleAds='False'"), {"303"}, {"s"}},
      {"of stand-alone ads", wrapper("several", "allowMultipleAds='0'"), {"303"}, {"first"}},
      {"a wrapper that allows no other", wrapper("to-a", "followAdditionalWrappers=' 0 '"), {"a"}, {"303"}},
      {"a wrapper that allows no fall-back",
       wrapper("none", "fallbackOnNoAd='false'", "id='1' sequence='1'") + film("s", "id='2'"),
       {"900"},
       {"303"}},
      {"a fall-back that allows no further one",
       wrapper("none", "", "id='1' sequence='1'") + wrapper("none", "fallbackOnNoAd='false'", "id='2'") +
           film("s", "id='3'"),
       {"900"},
       {"303", "303"}},
      {"no ad behind a wrapper",
       wrapper("none", "", "id='1' sequence='1'") + film("s", "id='2'"),
       {"900"},
       {"303", "s"}},
      {"a list of segments", ad(creative(linear("a", "application/x-mpegURL"))), {"401"}, {"a"}},
      {"any bytes", ad(creative(linear("a", "application/octet-stream"))), {"401"}, {"a"}},
      {"a kind of video that is seldom met", ad(creative(linear("a", "video/x-flv"))), {"401"}, {"a"}},
      {"a film that does not say its type",
       ad(creative("<Linear><MediaFiles><MediaFile>http://m.test/a.webm</MediaFile></MediaFiles></Linear>")),
       {"401"},
       {"a.webm"}},
      {"a program to be run", ad(creative(linear("a", "application/javascript", vpaid))), {"401"}, {"901"}},
      {"one beside a film", ad(creative(linear("a", "video/mp4", vpaid)) + creative(linear("b"))), {"303"}, {"b"}},
      {"an interactive creative without a film",
       ad(creative(interactive + "</MediaFiles></Linear>")),
       {"303"},
       {"409"}},
      {"nothing linear", ad(creative("<NonLinearAds/>")), {"303"}, {"201"}},
      {"companions only", ad(companion), {"303"}, {"200"}},
      {"a film nobody can ask for", ad(creative(linear("a\nb")) + companion), {"303"}, {"401"}},
      {"a space in an address", ad(creative(linear("a b|c"))), {"303"}, {"a b|c"}},
      {"an empty ad", "<Ad/>", {"303"}, {"101"}},
      {"a wrapper that leads nowhere", "<Ad><Wrapper/></Ad>", {"303"}, {"300"}},
      {"a wrapper to what is missing", wrapper("missing"), {"900"}, {"301"}},
      {"too many wrappers", wrapper("self"), {"302"}, {"302"}},
      {"no ad", "", {"303"}, {"303"}},
      {"not XML", "<Ad", {"100"}, {"100"}},
  };
  for (const auto& row : rows) {
    answer(row.ads);
    EXPECT_EQ(played(YMRTagProfileExact), row.exact) << row.name;
    EXPECT_EQ(played(YMRTagProfileBroad), row.broad) << row.name;
  }
}

TEST_F(Profiles, takeWhatAServerAnswers) {
  const auto document = vast::document(film("a"));
  const std::string qualified =
      "<v:VAST xmlns:v='http://www.iab.com/VAST' version='4.2'><v:Ad><v:InLine><v:Creatives><v:Creative><v:Linear>"
      "<v:MediaFiles><v:MediaFile type='video/mp4'>http://m.test/q</v:MediaFile></v:MediaFiles></v:Linear></v:Creative>"
      "</v:Creatives></v:InLine></v:Ad></v:VAST>";
  const struct {
    long status;
    std::string body;
    Lines exact, broad;
  } rows[] = {
      {200, document, {"a"}, {"a"}},
      {201, document, {"900"}, {"a"}},
      {200, "\r\n " + document, {"100"}, {"a"}},
      {200, "\xEF\xBB\xBF\n<?xml version='1.0'?>" + document.substr(document.find("<VAST")), {"100"}, {"a"}},
      {204, "", {"900"}, {"303"}},
      {200, "", {"100"}, {"303"}},
      {300, document, {"900"}, {"900"}},
      {200, qualified, {"303"}, {"q"}},
      {200, "<VideoAdServingTemplate/>", {"303"}, {"102"}},
      {200, "<html/>", {"303"}, {"101"}},
  };
  for (const auto& row : rows) {
    answer({row.status, row.body, {}, {}, false});
    EXPECT_EQ(played(YMRTagProfileExact), row.exact) << row.status << row.body;
    EXPECT_EQ(played(YMRTagProfileBroad), row.broad) << row.status << row.body;
  }
}

TEST_F(Profiles, readTenThousandCreativesInOnePass) {
  std::string creatives;
  for (int i = 10'000; i > 0; --i) {
    creatives += creative(linear(std::to_string(i), i == 1 ? "video/mp4" : "application/x-shockwave-flash"),
                          "sequence='" + std::to_string(i) + "'");
  }
  std::string pod;
  for (int i = 10'000; i > 0; --i) pod += film(std::to_string(i), "sequence='" + std::to_string(i) + "'");
  answer(ad(creatives));
  EXPECT_THAT(played(YMRTagProfileBroad), ElementsAre("1"));
  answer(pod);
  const auto all = played(YMRTagProfileBroad);
  ASSERT_EQ(all.size(), 10'000u);
  EXPECT_EQ(all.back(), "10000");
}

TEST_F(Profiles, takeTheHighestRateThatTheConnectionCarries) {
  ConnectionRate::shared().forget();
  const auto size = [](const std::string& sides, const std::string& rate) {
    return vast::mediaFile("http://m.test/" + rate, "type='video/mp4' " + sides + " bitrate='" + rate + "'");
  };
  const std::string full = "width='1920' height='1080'";
  answer(vast::inLine(vast::linear(size("width='640' height='360'", "500") + size(full, "3000") + size(full, "9000") +
                                   size(full, "6000"))));
  EXPECT_THAT(played(YMRTagProfileExact), ElementsAre("3000")) << "the first of that size";
  EXPECT_THAT(played(YMRTagProfileBroad), ElementsAre("3000")) << "nothing has been shown yet";
  ConnectionRate::shared().note(1000, 1ns);
  ConnectionRate::shared().note(1'000'000, 1s);
  EXPECT_THAT(played(YMRTagProfileBroad), ElementsAre("6000"));
  for (int i = 0; i < 20; ++i) ConnectionRate::shared().note(200'000, 1s);
  EXPECT_THAT(played(YMRTagProfileBroad), ElementsAre("3000")) << "it has become slow";
  ConnectionRate::shared().forget();
}

TEST_F(Profiles, tellWhatTheirTrackersWantToKnow) {
  const std::string at = "http://t.test/";
  const auto progress = [&](const std::string& offset) {
    return "<Tracking event='progress' offset='" + offset + "'>" + at + offset.substr(0, 2) + "</Tracking>";
  };
  answer("<Ad><Wrapper><VASTAdTagURI>" + ads +
         "inner?[BREAKPOSITION]</VASTAdTagURI>"
         "<Creatives><Creative><Linear><TrackingEvents>" +
         progress("00:00:05") + "</TrackingEvents></Linear></Creative></Creatives></Wrapper></Ad>");
  loader->answer(ads + "inner?2",
                 vast::document(vast::inLine(
                     "<AdVerifications><Verification vendor='v'><TrackingEvents>"
                     "<Tracking event='verificationNotExecuted'>" +
                     at +
                     "not?r=[REASON]</Tracking></TrackingEvents>"
                     "</Verification></AdVerifications><Creatives><Creative><Linear skipoffset='25%'>"
                     "<TrackingEvents>" +
                     progress("50%") + progress("99x") + vast::tracking("skip", at + "skip?at=[ADPLAYHEAD]") +
                     "</TrackingEvents><MediaFiles>" + vast::mediaFile("http://m.test/a") +
                     "</MediaFiles></Linear></Creative></Creatives>")));
  const auto model = resolve(YMRTagProfileBroad);
  const auto prepared = YMRPreparedAd::from(*model);
  ASSERT_FALSE(prepared.failure) << prepared.errorCode();
  EXPECT_EQ(prepared.skipOffset, (VASTOffset{25, true}));
  SKVASTEventProcessor processor(prepared.trackingEvents, {});
  processor.setRules(prepared.rules(), [] { return VASTMacroValues{.adPlayhead = 3661.5}; });
  processor.setProgress(prepared.progress);
  processor.sendNotRun(prepared.notRun);
  processor.trackProgress(4, NAN);
  processor.trackProgress(6, NAN);
  processor.trackProgress(7, 10);
  processor.trackProgress(8, 10);
  processor.trackSkip();
  processor.sendVASTError({{std::nullopt, NSURL::URLWithString(at + "e?[ERRORCODE]&%5bERRORCODE%5d&[CACHEBUSTING]")}},
                          "405");
  EXPECT_THAT(loader->sentURLs(), ElementsAre(at + "not?r=2", at + "00", at + "50", at + "skip?at=01%3A01%3A01.500",
                                              MatchesRegex(at + "e.405&405&[0-9]{8}")));
}

TEST(Macros, becomeOneValueEach) {
  const VASTMacroValues values{.mediaPlayhead = 0.25,
                               .assetURI = "http://m.test/?a=1&[ERRORCODE]=#",
                               .playerSize = std::pair(1920, 1080),
                               .podSequence = "1&admin=1"};
  const std::pair<std::string, std::string> rows[] = {
      {"a=[ASSETURI]", "a=http%3A%2F%2Fm.test%2F%3Fa%3D1%26%5BERRORCODE%5D%3D%23"},
      {"[PLAYERSIZE]%5BPODSEQUENCE%5D", "1920%2C10801%26admin%3D1"},
      {"[CONTENTPLAYHEAD] [MEDIAPLAYHEAD]", "00%3A00%3A00.250 00%3A00%3A00.250"},
      {"[ADPLAYHEAD][ERRORCODE][ADCOUNT][IFA]", "-1-1-1-1"},
      {"[DEVICEIP]", "-2"},
      {"[ERROR[ADCOUNT]CODE] [] [ [errorcode] [OTHER] %5B [[ADCOUNT]]",
       "[ERROR-1CODE] [] [ [errorcode] [OTHER] %5B [-1]"},
  };
  for (const auto& [given, expected] : rows) EXPECT_EQ(expandVASTMacros(given, values), expected);
  EXPECT_THAT(expandVASTMacros("[TIMESTAMP]", values),
              MatchesRegex("20[0-9]{2}-[01][0-9]-[0-3][0-9]T[0-9]{2}%3A[0-9]{2}%3A[0-9]{2}\\.[0-9]{3}Z"));
  const std::string many(200'000, '[');
  EXPECT_EQ(expandVASTMacros(many, values), many);
}

TEST(Offsets, areReadStrictly) {
  for (const auto* text : {"", "5", "00:5", "00:60:00", "00:00:60", "1:00:00x", "00:00:00.", "101%", "%", "-1%", "#1",
                           "1234567890:00:00", "start"}) {
    EXPECT_FALSE(VASTOffset::from(text)) << text;
  }
  EXPECT_EQ(VASTOffset::from(" 01:02:03.5 ")->secondsOf(NAN), 3723.5);
  EXPECT_EQ(VASTOffset::from("12.5%")->secondsOf(80), 10);
  EXPECT_FALSE(VASTOffset::from("50%")->secondsOf(INFINITY)) << "of a live stream";
}
