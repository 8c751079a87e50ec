// What a viewer and the system do while ads come and go: the remote, going out of sight and coming back.
#include <gmock/gmock.h>

#include "platform/uikit/UIApplication.h"
#include "platform/uikit/UIWindow.h"
#include "tests/player/BreakRig.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// A presentation in a window, with a break of each kind.
class OnScreen : public BreakRig {
 public:
  explicit OnScreen(Answer pre = pod({"a"}), Answer mid = pod({"b"})) {
    window.setRootViewController(std::make_shared<UIViewController>());
    window.makeKeyAndVisible();
    player->presentWithController(window.rootViewController());
    preRoll("pre", std::move(pre));
    midRoll("mid", 3, std::move(mid));
    postRoll("post", pod({"c"}));
  }
  ~OnScreen() { UIApplication::sharedApplication().setVisible(true); }

  float rates() { return hub().vodPlayer()->rate() + (hub().adPlayer() ? hub().adPlayer()->rate() : 0); }

  UIWindow window{CGSize{320, 180}};
};

}  // namespace

TEST(BreakViewer, hasTheAdsPlayPauseAndNoOtherButtonButMenu) {
  OnScreen rig;
  rig.begin();
  rig.runUntilHeard("videoAdOnTime 8 3");
  for (const auto button : {UIPressTypeLeftArrow, UIPressTypeRightArrow, UIPressTypeSelect, UIPressTypeDownArrow}) {
    rig.window.sendPress(button);
    rig.loop.advance(100ms);
  }
  EXPECT_EQ(rig.hub().adPlayer()->rate(), 1);
  EXPECT_THAT(rig.engine().log().seeks, IsEmpty());
  EXPECT_FALSE(rig.hub().avPlayerVC()->showsPlaybackControls());
  EXPECT_TRUE(rig.window.sendPress(UIPressTypePlayPause));
  EXPECT_EQ(rig.state(), "PausedAd");
  rig.loop.advance(60s);
  EXPECT_TRUE(rig.window.sendPress(UIPressTypePlayPause));
  EXPECT_THAT(rig.host.heardOf({"videoAdOnPause", "videoAdOnPlay"}),
              ElementsAre("videoAdOnPause 8 3.4", "videoAdOnPlay 8 3.4"));
  rig.runUntilHeard("videoOnPlay");
  EXPECT_THAT(rig.tracked("a"), ElementsAre("impression", "start", "creativeView", "firstQuartile", "pause", "resume",
                                            "midpoint", "thirdQuartile", "complete"));
  EXPECT_EQ(rig.hub().vodPlayer()->rate(), 1);
  rig.loop.advance(1s);
  EXPECT_TRUE(rig.window.sendPress(UIPressTypePlayPause));
  EXPECT_EQ(rig.hub().vodPlayer()->rate(), 0) << "the programme's remote is back";
}

TEST(BreakViewer, isOfferedToSkipAnAdFromItsOffsetOnUnlessThatIsNoneOrTheScheduleForbidsIt) {
  constexpr int never = 9;
  std::map<std::string, int> firstSeconds{{"00:00:03", 3}, {" 00:00:00.5 ", 1}, {"25%", 2}, {"0%", 0}};
  for (const auto* none :
       {"00:00:08", "00:00:07.5", "00:01:00", "100%", "101%", "-10%", "-00:00:01", "00:00:60", "1e1%", "5", ":::"}) {
    firstSeconds[none] = never;
  }
  for (const auto& [offset, first] : firstSeconds) {
    for (const bool allows : {true, false}) {
      SCOPED_TRACE(offset + (allows ? "" : ", forbidden"));
      OnScreen rig(BreakRig::document({{"a", "video/mp4", "", offset}}));
      const auto& button = *rig.hub().adContainerView()->skipButton();
      rig.schedule->setTagProfile(YMRTagProfileBroad);
      rig.schedule->setAllowsSkipping(allows);
      rig.begin();
      for (int second = 0; second < 5; ++second) {
        rig.runUntilHeard("videoAdOnTime 8 " + std::to_string(second));
        EXPECT_EQ(button.isHidden(), !allows || first == never);
        const auto text = second < first ? "Skip ad in " + std::to_string(first - second) : "Skip ad";
        EXPECT_TRUE(button.isHidden() || button.text() == text) << second;
        if (!button.isReady()) rig.window.sendPress(UIPressTypeSelect);
      }
      rig.runUntilHeard("videoOnPlay");
      EXPECT_EQ(rig.tracked("a"), BreakRig::wholeAd());
      rig.window.sendPress(UIPressTypeSelect);
      EXPECT_EQ(rig.hub().vodPlayer()->rate(), allows && first != never) << "a press that came too late means nothing";
    }
  }
}

TEST(BreakViewer, endsAnAdOnceByAPressThatLeadsOnAtOnce) {
  // Where in the film it comes, in milliseconds, and whether the viewer has paused it.
  for (const auto& [moment, isPaused] : {std::pair(0, false), {2500, false}, {2500, true}, {7999, false}}) {
    SCOPED_TRACE(std::to_string(moment) + (isPaused ? ", paused" : ""));
    const auto both = [](const std::string& ad) {
      return BreakRig::document({{ad, "video/mp4", "1", "0%"}, {ad + "2", "video/mp4", "2", "0%"}});
    };
    OnScreen rig(both("pre"), both("mid"));
    rig.schedule->setTagProfile(YMRTagProfileBroad);
    rig.begin();
    for (const std::string ad : {"pre", "pre2", "mid", "mid2"}) {
      ASSERT_TRUE(rig.loop.advanceUntil([&] { return rig.hub().adContainerView()->skipButton()->isReady(); }, 60s));
      const bool isLast = ad.ends_with('2');
      const int when = std::max(moment, isLast ? 700 : 0);  // a double press skips one ad, not the next as well
      rig.loop.advance(std::chrono::milliseconds(std::max(0, when - int(rig.hub().adTime() * 1000))));
      if (isPaused) rig.window.sendPress(UIPressTypePlayPause);
      rig.host.heard.clear();
      for (int press = 0; press < 2; ++press) rig.window.sendPress(UIPressTypeSelect);
      const std::string roll = ad.starts_with("pre") ? ":Preroll" : ":Midroll";
      EXPECT_THAT(rig.host.heardOf({"videoAdOnStart", "videoAdOnSkip", "videoAdOnPause", "videoOnPlay"}),
                  ElementsAre("videoAdOnSkip" + roll, isLast ? "videoOnPlay" : "videoAdOnStart" + roll));
      EXPECT_EQ(rig.host.count("videoAdOnPodComplete"), isLast);
      EXPECT_EQ(rig.isAdGone(), isLast);
      EXPECT_EQ(std::ranges::count(rig.tracked(ad), "complete"), 0);
    }
    EXPECT_NEAR(rig.player->currentPosition(), 3, 0.1) << "the programme where it stopped";
    rig.loop.advance(1s);
    for (const int rate : {0, 1}) {
      rig.window.sendPress(UIPressTypeSelect);
      EXPECT_EQ(rig.hub().vodPlayer()->rate(), rate) << "Enter means the programme again";
    }
    rig.loop.advance(9s);
    EXPECT_EQ(rig.host.count("videoAdOnComplete"), 0);
  }
}

TEST(BreakViewer, leavesByMenuFromEveryMomentAsDoesTheHostThatGoes) {
  for (const auto* moment : {"videoAdOnRequest:Preroll", "videoAdOnStart:Preroll", "videoAdOnTime 8 4", "videoOnTime 2",
                             "videoAdOnRequest:Midroll", "videoAdOnStart:Midroll", "videoAdOnComplete:Midroll",
                             "videoAdOnRequest:Postroll", "videoAdOnStart:Postroll", "videoDidPlayFinished"}) {
    SCOPED_TRACE(moment);
    {
      OnScreen rig;
      rig.begin();
      rig.runUntilHeard(moment);
      rig.player.reset();
      EXPECT_EQ(rig.window.rootViewController()->presentedViewController(), nullptr);
      rig.loop.advance(2s);
      EXPECT_EQ(rig.media.aliveEngines(), 0);
    }
    OnScreen rig;
    rig.begin();
    rig.runUntilHeard(moment);
    const bool plays = rig.hub().isPlayingAd();
    EXPECT_EQ(rig.window.rootViewController()->presentedViewController(), rig.hub().avPlayerVC());
    EXPECT_TRUE(rig.window.sendPress(UIPressTypeMenu));
    const auto heard = rig.host.heard;
    const auto tracked = rig.tracked();
    EXPECT_EQ(heard.back(), "playerDidDismiss");
    EXPECT_EQ(rig.host.count("videoAdOnPause"), plays) << "to leave is to pause";
    EXPECT_TRUE(rig.isAdGone());
    rig.loop.advance(60s);
    EXPECT_EQ(rig.host.heard, heard);
    EXPECT_EQ(rig.tracked(), tracked);
    EXPECT_EQ(rig.window.rootViewController()->presentedViewController(), nullptr);
    EXPECT_EQ(rig.media.aliveEngines(), 0);
    EXPECT_EQ(rig.loop.pendingTimers(), 0u);
  }
}

TEST(BreakViewer, isRidOfThePlayerAlsoUnderAGuestOfTheHostsOrWhenThatShowsItOnceMore) {
  const std::vector<std::pair<const char*, std::function<void(OnScreen&)>>> ways{
      {"dismiss", [](OnScreen& rig) { rig.player->dismiss(); }},
      {"menu", [](OnScreen& rig) { rig.window.sendPress(UIPressTypeMenu); }},
      {"destruction", [](OnScreen& rig) { rig.player.reset(); }},
  };
  for (const auto& [way, leave] : ways) {
    for (const bool hasGuest : {true, false}) {
      SCOPED_TRACE(std::string(way) + (hasGuest ? ", a guest" : ", once more"));
      OnScreen rig;
      rig.begin();
      const auto root = rig.window.rootViewController();
      const auto screen = rig.hub().avPlayerVC();
      if (hasGuest) {
        screen->presentViewController(std::make_shared<UIViewController>(), false);
      } else {
        rig.player->dismiss();
        rig.player->presentWithController(root);
        EXPECT_EQ(root->presentedViewController(), nullptr) << "it has had its time";
        root->presentViewController(screen, false);
      }
      rig.loop.advance(1s);
      leave(rig);
      rig.loop.advance(1s);
      EXPECT_EQ(root->presentedViewController(), nullptr);
      EXPECT_EQ(screen->view()->window(), nullptr);
    }
  }
}

TEST(BreakViewer, outOfSightNothingPlaysAndAfterwardsItGoesOn) {
  for (const auto* moment : {"videoAdOnRequest:Preroll", "videoAdOnStart:Preroll", "videoAdOnTime 8 4", "videoOnTime 2",
                             "videoAdOnRequest:Midroll", "videoAdOnTime 8 7", "videoAdOnComplete:Midroll",
                             "videoOnTime 6", "videoAdOnRequest:Postroll", "videoAdOnStart:Postroll"}) {
    for (const bool fails : {false, true}) {
      SCOPED_TRACE(std::string(moment) + (fails ? ", ads fail" : ""));
      OnScreen rig;
      rig.begin();
      rig.runUntilHeard(moment);
      if (fails) rig.media.otherwise().loadFailure = NSError{AVFoundationErrorDomain, AVErrorDecodeFailed, "broken"};
      auto& application = UIApplication::sharedApplication();
      application.setVisible(false);
      for (int second = 0; second < 60; ++second) {
        rig.loop.advance(1s);
        ASSERT_EQ(rig.rates(), 0);
      }
      application.setVisible(true);
      for (int press = 0; press < 2; ++press) {
        if (rig.rates() == 0) rig.window.sendPress(UIPressTypePlayPause);
        rig.loop.advance(90s);
      }
      EXPECT_EQ(rig.host.count("videoDidPlayFinished"), 1);
      EXPECT_EQ(rig.host.count("videoAdOnComplete") + rig.host.count("videoAdOnErrorDesc"), 3);
      EXPECT_TRUE(rig.isAdGone());
    }
  }
}
