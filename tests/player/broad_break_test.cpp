// Breaks of a schedule that is read broadly, and of a schedule document.
#include <gmock/gmock.h>

#include "tests/player/BreakRig.h"

using testing::ElementsAre;
using testing::IsEmpty;

TEST(BroadBreaks, areToldWithTheFirstPicture) {
  BreakRig rig;
  rig.schedule->setTagProfile(YMRTagProfileBroad);
  rig.midRoll("mid", 3, BreakRig::pod({"a", "b", "c"}));
  rig.media.script(BreakRig::film("a")).loadFailure = NSError{NSURLErrorDomain, NSURLErrorResourceUnavailable, "gone"};
  rig.media.script(BreakRig::film("b")).neverLoads = true;
  const std::string nearly = "<Tracking event='progress' offset='99%'>http://track.example/d/nearly</Tracking>";
  const std::string ad = vast::linear(vast::mediaFile(BreakRig::film("d"), "type='video/mp4'"), nearly);
  rig.postRoll("post", {.body = vast::document(vast::inLine(ad))});
  rig.host.inside["videoAdOnStart"] = [&] {
    EXPECT_TRUE(rig.host.heard.back() == "videoAdOnStart:Postroll" || rig.tracked("c").empty());
  };
  ASSERT_TRUE(rig.playToEnd());
  EXPECT_THAT(rig.tracked("a"), ElementsAre("error-401")) << "an ad that nobody saw has not begun";
  EXPECT_THAT(rig.tracked("b"), ElementsAre("error-402"));
  EXPECT_EQ(rig.tracked("c"), BreakRig::wholeAd());
  EXPECT_EQ(rig.media.logs(BreakRig::film("c")).front()->source.purpose, MediaPurpose::anyAdvertisement);
  rig.runUntilHeard("videoAdOnComplete:Postroll");
  EXPECT_THAT(rig.tracked("d"), ElementsAre("nearly"));
  EXPECT_TRUE(rig.isAdGone());
}

TEST(BroadBreaks, goOnWithTheNextStandAloneAdAsLongAsNothingWasSeen) {
  BreakRig rig;
  rig.schedule->setTagProfile(YMRTagProfileBroad);
  rig.midRoll("mid", 3, BreakRig::document({{"a"}, {"b"}, {"c"}}));
  rig.media.script(BreakRig::film("a")).loadFailure = NSError{NSURLErrorDomain, NSURLErrorResourceUnavailable, "gone"};
  rig.media.script(BreakRig::film("b")).failure = {1, {AVFoundationErrorDomain, AVErrorDecodeFailed, "broken"}};
  ASSERT_TRUE(rig.playToEnd());
  EXPECT_THAT(rig.tracked("a"), ElementsAre("error-401"));
  EXPECT_THAT(rig.tracked("b"), ElementsAre("impression", "start", "creativeView", "error-405"));
  EXPECT_THAT(rig.tracked("c"), IsEmpty());
  BreakRig dead;
  dead.schedule->setTagProfile(YMRTagProfileBroad);
  dead.media.otherwise().neverLoads = true;
  dead.midRoll("mid", 3, BreakRig::document(std::vector<BreakRig::Ad>(1000, {"d"})));
  EXPECT_TRUE(dead.playToEnd());
  EXPECT_EQ(dead.tracked("d"), Lines(6, "error-402")) << "not for hours";
}

TEST(BroadBreaks, ofAScheduleDocumentComeInItsOrderAndTellTheirTrackers) {
  BreakRig rig;  // the programme lasts 20 s
  const auto adBreak = [](const std::string& time, const std::string& name, const std::string& ads) {
    const auto track = [&](const std::string& event) {
      return "<Tracking event='" + event + "'>http://track.example/" + name + "/" + event +
             "?p=[BREAKPOSITION]&amp;c=[ERROR_CODE]</Tracking>";
    };
    return "<AdBreak breakType='linear' timeOffset='" + time + "'><AdSource><VASTAdData>" + ads +
           "</VASTAdData></AdSource><TrackingEvents>" + track("breakStart") + track("error") + track("breakEnd") +
           "</TrackingEvents></AdBreak>";
  };
  const auto ad = [](const std::string& name) {
    const std::string text = adDocument({{name}});
    return text.substr(text.find("<VAST"));
  };
  const std::string text = "<VMAP>" + adBreak("end", "last", "<VAST/>") + adBreak("25%", "quarter", ad("q")) +
                           adBreak("00:00:05", "five", ad("f")) + adBreak("00:00:02.1", "three", ad("t")) +
                           adBreak("101%", "never", ad("n")) + adBreak("00:00:00", "first", ad("p")) + "</VMAP>";
  const auto bytes = std::as_bytes(std::span(text));
  YMRAdSchedule::scheduleWithVMAPData({bytes.begin(), bytes.end()}, [&](const auto& schedule, const auto& problem) {
    EXPECT_EQ(problem, "");
    rig.schedule = schedule;
  });
  rig.loop.runUntilIdle();
  rig.schedule->setTagProfile(YMRTagProfileBroad);
  ASSERT_TRUE(rig.playToEnd());
  Lines order;
  for (const auto& each : rig.tracked()) {
    const auto event = each.substr(each.find('/') + 1);
    if (event.rfind("break", 0) == 0 || event.rfind("error", 0) == 0 || event == "start") order.push_back(each);
  }
  EXPECT_THAT(order, ElementsAre("first/breakStart?p=1&c=[ERROR_CODE]", "p/start", "first/breakEnd?p=1&c=[ERROR_CODE]",
                                 "three/breakStart?p=2&c=[ERROR_CODE]", "t/start", "three/breakEnd?p=2&c=[ERROR_CODE]",
                                 "quarter/breakStart?p=2&c=[ERROR_CODE]", "q/start",
                                 "quarter/breakEnd?p=2&c=[ERROR_CODE]", "five/breakStart?p=2&c=[ERROR_CODE]", "f/start",
                                 "five/breakEnd?p=2&c=[ERROR_CODE]", "last/breakStart?p=3&c=[ERROR_CODE]",
                                 "last/error?p=3&c=1004", "last/breakEnd?p=3&c=[ERROR_CODE]"));
}

TEST(BroadBreaks, atAShareWaitForTheProgrammesLength) {
  BreakRig rig;
  rig.media.script(PlayerRig::film).live = true;
  VMAPDocument document;
  document.breaks.resize(2);
  for (auto& each : document.breaks) {
    each.place = VMAPBreak::Place::inProgramme;
    each.percent = 50;
    each.document.emplace(adDocument({{"a"}}));
  }
  document.breaks[1].percent.reset();
  document.breaks[1].second = 4;
  rig.schedule->addBreaks(document);
  rig.begin();
  rig.loop.advance(40s);
  EXPECT_EQ(rig.host.count("videoAdOnComplete"), 1) << "a live stream has none";
  EXPECT_TRUE(rig.schedule->hasShares());
  YMRAdSchedule schedule;
  document.breaks.assign(10'000, document.breaks[0]);
  for (std::size_t i = 0; i < document.breaks.size(); ++i) {
    document.breaks[i].number = i;
    document.breaks[i].percent = static_cast<double>(i % 100) + 0.5;
  }
  schedule.addBreaks(document);
  schedule.placeShares(NAN);
  EXPECT_TRUE(schedule.midRolls()->empty());
  schedule.placeShares(1000);
  EXPECT_EQ(schedule.midRollOffsets()->size(), 100u);
  EXPECT_EQ(schedule.midRollOffsets()->front(), 5u);
  EXPECT_EQ(schedule.midRolls()->front()[1]->listedBreak()->number, 100u);
}
