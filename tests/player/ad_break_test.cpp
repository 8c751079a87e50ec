// Ad breaks as they should go: order of calls, texts, pods, fall-backs, and which break comes when.
#include <gmock/gmock.h>

#include "VAST/SKLogger.h"
#include "tests/player/BreakRig.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const Lines course{"videoOnPlay",          "videoOnPause",     "videoOnError",      "videoDidPlayFinished",
                   "videoAdOnRequest",     "videoAdOnStart",   "videoAdOnPodStart", "videoAdOnComplete",
                   "videoAdOnPodComplete", "videoAdOnResponse"};

std::string label(BreakRig& rig) {
  return rig.hub().adContainerView()->timeRemainLabel()->text().value_or("");
}

bool isWaiting(BreakRig& rig) {
  return rig.hub().adContainerView()->loadingIndicator()->isAnimating();
}

}  // namespace

TEST(AdBreaks, ofEveryKindInterruptTheProgrammeInTheirOrder) {
  BreakRig rig;
  rig.preRoll("pre", BreakRig::pod({"a"}));
  rig.preRoll("pre2", BreakRig::pod({"a2"}));
  rig.midRoll("first", 3, BreakRig::pod({"b"}));
  rig.midRoll("second", 3, BreakRig::pod({"b2"}));
  rig.midRoll("beyond", 21, BreakRig::pod({"d"}));
  rig.postRoll("post", BreakRig::document({{"x", "", "1"}, {"c", "video/mp4", "2"}, {"alone", "video/mp4", ""}}));
  ASSERT_TRUE(rig.playToEnd());
  EXPECT_THAT(rig.host.heardOf(course),
              ElementsAre("videoAdOnRequest:Preroll", "videoAdOnResponse:Preroll", "videoAdOnStart:Preroll",
                          "videoAdOnComplete:Preroll", "videoAdOnRequest:Preroll", "videoAdOnResponse:Preroll",
                          "videoAdOnStart:Preroll", "videoAdOnComplete:Preroll", "videoOnPlay",  //
                          "videoAdOnRequest:Midroll", "videoAdOnResponse:Midroll", "videoAdOnStart:Midroll",
                          "videoOnPause 3", "videoAdOnComplete:Midroll", "videoOnPlay",  //
                          "videoAdOnRequest:Midroll", "videoAdOnResponse:Midroll", "videoAdOnStart:Midroll",
                          "videoOnPause 3", "videoAdOnComplete:Midroll", "videoOnPlay", "videoOnPause 20",  //
                          "videoAdOnRequest:Postroll", "videoAdOnResponse:Postroll", "videoAdOnPodStart:Postroll",
                          "videoAdOnPodStart:Postroll", "videoAdOnStart:Postroll", "videoAdOnComplete:Postroll",
                          "videoAdOnStart:Postroll", "videoAdOnComplete:Postroll", "videoAdOnPodComplete:Postroll",
                          "videoDidPlayFinished"));
  for (const auto* ad : {"a", "a2", "b", "b2", "c", "alone"}) EXPECT_EQ(rig.tracked(ad), BreakRig::wholeAd()) << ad;
  EXPECT_THAT(rig.tracked("x"), ElementsAre("error-303"))
      << "a stand-alone ad takes its place, and the pod starts anew";
  EXPECT_THAT(rig.tracked("d"), IsEmpty());
  EXPECT_THAT(*rig.schedule->preRolls(), IsEmpty()) << "a break plays once";
  EXPECT_THAT(*rig.schedule->postRolls(), IsEmpty());
  EXPECT_TRUE(rig.isAdGone());
}

TEST(AdBreaks, stopTheProgrammeBetweenAnAdsImpressionAndItsStart) {
  BreakRig rig;
  Lines log;
  SKLogger::installSink(SKLogLevelDebug, [&](int, std::string_view tag, std::string_view message) {
    if (tag == "VAST - View Controller" || (tag == "YMRVideoPlayer" && message.find("playhead") != 0)) {
      log.emplace_back(message);
    }
  });
  rig.midRoll("mid", 3, BreakRig::pod({"a"}));
  rig.host.inside["videoAdOnStart"] = [&] {
    log.emplace_back("<videoAdOnStart>");
    EXPECT_FALSE(rig.hub().isPlayingAd());
    EXPECT_EQ(rig.hub().vodPlayer()->rate(), 1);
  };
  rig.host.inside["videoOnPause"] = [&] { EXPECT_TRUE(rig.engine().log().muted); };
  rig.begin();
  rig.runUntilHeard("videoAdOnTime 8 7");
  EXPECT_TRUE(rig.hub().isPlayingAd());
  EXPECT_EQ(rig.state(), "PlayingAd");
  EXPECT_EQ(rig.media.logs(BreakRig::film("a")).front()->source.purpose, MediaPurpose::advertisement);
  const auto ad = rig.hub().currentAdBreak();
  EXPECT_EQ(ad->adTitle(), "Title of a");
  EXPECT_EQ(ad->adDescription(), "About a");
  EXPECT_TRUE(ad->isPlayed());
  rig.runUntilHeard("videoAdOnComplete:Midroll");
  rig.loop.advance(1s);
  SKLogger::installSink(SKLogLevelNone, nullptr);
  EXPECT_THAT(log, ElementsAre("resumeVideoPlayer - 1", "Video onPlay", "Video did Seek 0.000000 / 20.000000",
                               "Starting loadVideoWithURL", "back from block in loadVideoFromData",
                               "Sending vastReady: callback", "Sending Impressions requests", "<videoAdOnStart>",
                               "playVideo", "initializing player", "Pause video player for playing ad at 3.000000",
                               "Video onPaused", "adPlayDidEnd - 1", "resumeVideoPlayer - 1", "Video onPlay",
                               "Video did Seek 3.000000 / 20.000000"));
}

TEST(AdBreaks, showTheLoadingTextUntilTheFirstTickAndThenTheCountdown) {
  BreakRig rig;
  rig.schedule->setAdLoadingText("Soon");
  rig.schedule->setAdCountdownText("%d left");
  rig.schedule->setAdpodCountdownText("%d left, %d of %d");
  rig.preRoll("one", BreakRig::pod({"a"}));
  rig.preRoll("three", BreakRig::pod({"b", "c", "d"}));
  rig.media.script(BreakRig::film("a")).loadDelay = 2;
  rig.begin();
  rig.runUntilHeard("videoAdOnStart:Preroll");
  rig.loop.advance(1s);
  EXPECT_EQ(label(rig), "Soon");
  EXPECT_TRUE(isWaiting(rig));
  EXPECT_NE(rig.hub().adContainerView()->superview(), nullptr);
  rig.host.inside["videoAdOnTime"] = [&] {
    EXPECT_EQ(label(rig), "9 left");
    EXPECT_TRUE(isWaiting(rig)) << "until the host has heard of the tick";
    rig.host.inside.clear();
  };
  rig.runUntilHeard("videoAdOnTime 8 0");
  EXPECT_FALSE(isWaiting(rig));
  rig.runUntilHeard("videoAdOnTime 8 7");
  EXPECT_EQ(label(rig), "2 left");
  rig.host.inside["videoAdOnRequest"] = [&] { EXPECT_EQ(label(rig), "Soon") << "of the next break"; };
  for (const auto* text : {"9 left, 1 of 3", "9 left, 2 of 3", "9 left, 3 of 3"}) {
    rig.host.heard.clear();
    rig.runUntilHeard("videoAdOnTime 8 0");
    EXPECT_EQ(label(rig), text);
  }
}

TEST(AdBreaks, ofUnknownLengthCountNothingDown) {
  const std::string single = "%d", pod = "%d, %d of %d";  // which counts one ad as well
  for (const auto& [format, text] : {std::pair(single, "0"), {pod, "0, 1 of 1"}, {std::string(), "Soon"}}) {
    BreakRig rig;
    rig.schedule->setAdLoadingText("Soon");
    format == pod ? rig.schedule->setAdpodCountdownText(pod) : rig.schedule->setAdCountdownText(format);
    rig.preRoll("one", BreakRig::pod({"a"}));
    auto& film = rig.media.script(BreakRig::film("a"));
    film.live = true;
    film.failure = {5, NSError{AVFoundationErrorDomain, AVErrorDecodeFailed, "broken"}};
    rig.begin();
    rig.runUntilHeard("videoAdOnTime nan 3");
    EXPECT_EQ(label(rig), text);
    rig.runUntilHeard("videoOnPlay");
    EXPECT_EQ(rig.host.count("videoAdOnPlayQuartile"), 0);
  }
}

TEST(AdBreaks, areAnnouncedWhileTheirTagIsFetchedUnlessTheProgrammePlays) {
  BreakRig rig;
  rig.schedule->setAdLoadingText("Soon");
  rig.schedule->setAdpodCountdownText("%d left, %d of %d");
  auto slow = BreakRig::pod({"a"});
  slow.delay = 3s;
  rig.preRoll("pre", slow);
  rig.midRoll("mid", 3, slow);
  rig.postRoll("post", slow);
  rig.begin();
  const auto& overlay = rig.hub().adContainerView();
  for (const std::string roll : {"Preroll", "Midroll", "Postroll"}) {
    SCOPED_TRACE(roll);
    rig.runUntilHeard("videoAdOnRequest:" + roll);
    for (const auto wait : {1s, 2s}) {
      rig.loop.advance(wait - 50ms);
      EXPECT_EQ(overlay->superview() && overlay->alpha() == 1, roll != "Midroll");
      EXPECT_TRUE(isWaiting(rig) && label(rig) == "Soon");
    }
    rig.runUntilHeard("videoAdOnComplete:" + roll);
    EXPECT_EQ(label(rig), "1 left, 1 of 1") << "the text for pods, for want of another";
    EXPECT_EQ(overlay->superview(), nullptr);
  }
}

TEST(AdBreaks, beginBeforeTheTickOfTheirSecondIsReported) {
  BreakRig rig;
  rig.midRoll("mid", 3, {.status = 404});
  rig.host.inside["videoAdOnRequest"] = [&] { EXPECT_EQ(rig.host.heardOf({"videoOnTime"}).back(), "videoOnTime 2"); };
  rig.begin();
  rig.runUntilHeard("videoOnTime 3");
  EXPECT_EQ(rig.host.count("videoAdOnRequest"), 1);
}

TEST(AdBreaks, waitForAProgrammeThatSomebodyHasPausedAndDoNotStartIt) {
  const Lines endings{"videoAdOnComplete", "videoAdOnErrorDesc"};
  for (const auto* moment : {"videoAdOnRequest", "later", "videoAdOnResponse", "videoAdOnErrorDesc"}) {
    for (const bool fails : {false, true}) {
      if (!fails && moment == endings[1]) continue;
      SCOPED_TRACE(std::string(moment) + (fails ? ", fails" : ""));
      BreakRig rig;
      auto slow = BreakRig::pod({"a"}, fails ? "video/webm" : "video/mp4");
      slow.delay = 2s;
      rig.midRoll("slow", 3, slow);
      rig.begin();
      rig.host.inside[moment] = [&] { rig.hub().vodPlayer()->pause(); };
      rig.runUntilHeard("videoAdOnRequest:Midroll");
      if (moment == std::string("later")) rig.loop.advance(500ms), rig.hub().vodPlayer()->pause();
      rig.loop.advance(60s);
      EXPECT_LT(rig.player->currentPosition(), 6);
      EXPECT_EQ(rig.host.count("videoAdOnStart") + rig.host.count(endings[1]), moment == endings[1] ? 1 : 0);
      rig.hub().vodPlayer()->play();
      EXPECT_EQ(rig.hub().vodPlayer()->rate(), 1) << "the break comes on a turn of its own";
      rig.runUntilHeard("videoDidPlayFinished");
      EXPECT_EQ(rig.host.heardOf(endings).size(), 1u);
      EXPECT_EQ(rig.tracked("a"), fails ? Lines{"error-401"} : BreakRig::wholeAd());
    }
  }
}

TEST(AdBreaks, behindWhichTheProgrammeEndsHandItBackWhereItStopped) {
  BreakRig rig;
  rig.media.script(BreakRig::film("a")).duration = 30;
  rig.midRoll("mid", 3, BreakRig::pod({"a", "b"}));
  rig.postRoll("post", BreakRig::pod({"c"}));
  rig.begin();
  rig.runUntilHeard("videoAdOnTime 30 1");
  rig.hub().vodPlayer()->play();  // a host that keeps it running
  rig.runUntilHeard("videoAdOnPodComplete:Midroll");
  rig.loop.advance(1s);
  EXPECT_NEAR(rig.player->currentPosition(), 4, 0.1);
  EXPECT_EQ(rig.state(), "PlayingVideo");
  rig.runUntilHeard("videoDidPlayFinished");
  EXPECT_EQ(rig.tracked("c"), BreakRig::wholeAd());
}

TEST(AdBreaks, atTheVeryEndAndAtTheVeryBeginningHaveTheirTurn) {
  for (const bool fails : {false, true}) {
    BreakRig rig;
    const auto film = [&](const char* name) { return BreakRig::pod({name}, fails ? "video/webm" : "video/mp4"); };
    rig.midRoll("first", 0, film("a"));
    rig.midRoll("last", 20, film("b"));
    rig.midRoll("very-last", 20, film("c"));
    rig.postRoll("post", BreakRig::pod({"d"}));
    rig.host.inside["videoAdOnRequest"] = [&] {
      if (rig.hub().adState() != YMRAdStatePostRoll) return;
      EXPECT_EQ(rig.state(), "PausedVideo");
      EXPECT_FALSE(rig.engine().log().muted);
    };
    ASSERT_TRUE(rig.playToEnd());
    EXPECT_FALSE(rig.engine().log().muted) << "a host may keep the screen and play it once more";
    for (const auto* ad : {"a", "b", "c"}) EXPECT_EQ(rig.tracked(ad), fails ? Lines{"error-401"} : BreakRig::wholeAd());
    EXPECT_EQ(rig.tracked("d"), BreakRig::wholeAd());
    EXPECT_EQ(rig.host.count("videoOnTime"), fails ? 21 : 22);
    EXPECT_EQ(rig.host.heardOf({"videoOnPause"}).back(), "videoOnPause 20");
    rig.loop.advance(60s);
    EXPECT_EQ(rig.host.count("videoDidPlayFinished"), 1);
  }
}

TEST(AdBreaks, stillBeingFetchedAtTheEndPlayBeforeThePostRoll) {
  for (const bool viewerGoesBack : {false, true}) {
    BreakRig rig;
    auto slow = BreakRig::pod({"a"});
    slow.delay = 5s;
    rig.midRoll("slow", 18, slow);
    rig.postRoll("post", BreakRig::pod({"b"}));
    rig.begin();
    rig.runUntilHeard("videoOnPause 20");
    if (viewerGoesBack) {
      rig.hub().vodPlayer()->seekToTime(CMTimeMake(10, 1));
      rig.hub().vodPlayer()->play();
      rig.loop.advance(500ms);
    }
    ASSERT_TRUE(rig.loop.advanceUntil([&] { return rig.host.count("videoDidPlayFinished") > 0; }, 60s));
    EXPECT_EQ(rig.tracked("a"), BreakRig::wholeAd());
    EXPECT_EQ(rig.tracked("b"), BreakRig::wholeAd());
    EXPECT_THAT(rig.host.heardOf({"videoOnPlay", "videoAdOnComplete", "videoDidPlayFinished"}).size(),
                viewerGoesBack ? 6u : 4u);
    rig.loop.advance(30s);
    EXPECT_EQ(rig.host.count("videoDidPlayFinished"), 1);
  }
}

TEST(AdBreaks, thatSeeksPassByAreCaughtUpWithOneATick) {
  for (const auto& seeks : std::vector<std::vector<int>>{{10}, {10, 10, 10}, {4, 8, 2, 12, 6}, {20}, {25}}) {
    SCOPED_TRACE(testing::PrintToString(seeks));
    BreakRig rig;
    for (const int offset : {3, 5, 7}) {
      rig.midRoll(std::to_string(offset), static_cast<std::uint64_t>(offset),
                  BreakRig::pod({"at" + std::to_string(offset)}));
    }
    rig.media.script(PlayerRig::film).seekDelay = 0.05;
    rig.begin();
    rig.runUntilHeard("videoOnTime 1");
    for (const int second : seeks) {
      rig.hub().vodPlayer()->seekToTime(CMTimeMake(second, 1));
      rig.loop.advance(20ms);
    }
    rig.runUntilHeard("videoAdOnComplete:Midroll");
    EXPECT_THAT(rig.tracked("at5"), IsEmpty()) << "one at a time";
    rig.runUntilHeard("videoDidPlayFinished");
    for (const auto* ad : {"at3", "at5", "at7"}) EXPECT_EQ(rig.tracked(ad), BreakRig::wholeAd());
    rig.loop.advance(60s);
    EXPECT_EQ(rig.host.count("videoDidPlayFinished"), 1);
  }
}

TEST(AdBreaks, withThousandsOfAdsThatFailNeedNoMoreStackThanOne) {
  std::vector<BreakRig::Ad> ads;
  for (int number = 10000; number < 20000; ++number)
    ads.push_back({std::to_string(number), "", std::to_string(number)});
  BreakRig rig;
  rig.preRoll("many", BreakRig::document(ads));
  rig.begin();
  rig.runUntilHeard("videoOnPlay");
  EXPECT_EQ(rig.host.count("videoAdOnErrorDesc"), 10000);
}

TEST(AdBreaks, followTheScheduleOfTheMoment) {
  BreakRig rig;
  rig.preRoll("pre", BreakRig::pod({"a"}));
  rig.midRoll("mid", 3, BreakRig::pod({"b"}));
  rig.schedule->preRolls()->front()->setIsPlayed(true);
  rig.schedule->preRolls()->push_back(nullptr);
  rig.begin();
  EXPECT_NE(rig.player->adSchedule(), rig.schedule);
  EXPECT_EQ(rig.player->adSchedule()->preRolls(), rig.schedule->preRolls());
  EXPECT_FALSE(rig.schedule->preRolls()->front()->isPlayed());
  rig.runUntilHeard("videoAdOnTime 8 2");
  EXPECT_EQ(rig.hub().adState(), YMRAdStatePreRoll);
  rig.runUntilHeard("videoOnTime 1");
  EXPECT_EQ(rig.hub().adState(), YMRAdStateMidRoll);
  EXPECT_THAT(rig.schedule->midRolls()->front(), IsEmpty()) << "armed";

  rig.player->setAdSchedule(nullptr);
  EXPECT_EQ(rig.hub().adState(), YMRAdStateNone);
  rig.runUntilHeard("videoOnTime 5");
  const auto other = std::make_shared<YMRAdSchedule>();
  other->addAdBreak(YMRAd::initPostRollWithVastUrl(std::nullopt));
  rig.player->setAdSchedule(other);
  rig.runUntilHeard("videoDidPlayFinished");
  EXPECT_THAT(rig.host.heardOf({"videoAdOnRequest"}), ElementsAre("videoAdOnRequest:Preroll"));
  EXPECT_THAT(*other->postRolls(), testing::SizeIs(1)) << "without a phase there is no post-roll";
}

TEST(AdBreaks, beginBeforeTheirProgrammeIsThereWhenTheHostStartsThem) {
  BreakRig rig;
  rig.preRoll("pre", BreakRig::pod({"a"}));
  rig.midRoll("mid", 3, BreakRig::pod({"b"}));
  rig.player->setAdSchedule(rig.schedule);
  rig.player->start();
  rig.player->start();
  rig.loop.advance(2s);
  rig.player->playWithMediaItem(PlayerRig::item(), 10);
  rig.runUntilHeard("videoAdOnTime 8 4");
  EXPECT_EQ(rig.player->currentPosition(), 10);
  rig.runUntilHeard("videoOnTime 12");
  for (const auto* ad : {"a", "b"}) EXPECT_EQ(rig.tracked(ad), BreakRig::wholeAd()) << ad;
  EXPECT_EQ(rig.engine().log().start, 10);
  EXPECT_THAT(rig.engine().log().seeks, IsEmpty()) << "it was made ready there";
}
