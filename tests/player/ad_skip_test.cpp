// Skipping an ad: when it is offered, what the viewer's press leads to, and that every ad ends once.
#include <gmock/gmock.h>

#include "platform/uikit/UIWindow.h"
#include "tests/player/BreakRig.h"

using testing::ElementsAre;

namespace {

// A presentation in a window, with a remote. Its ads are 8 s long.
struct SkipRig : BreakRig {
  SkipRig() {
    window.setRootViewController(std::make_shared<UIViewController>());
    window.makeKeyAndVisible();
    player->presentWithController(window.rootViewController());
  }
  YMRSkipButton& button() { return *hub().adContainerView()->skipButton(); }
  // What it says; empty while there is none.
  std::string said() { return button().isHidden() ? "" : button().text().value_or(""); }

  UIWindow window{CGSize{320, 180}};
};

}  // namespace

TEST(AdSkip, isOfferedFromItsOffsetOnUnlessThatIsNoneOrTheScheduleForbidsIt) {
  constexpr int never = 9;
  std::map<std::string, int> firstSeconds{{"00:00:03", 3}, {" 00:00:00.5 ", 1}, {"25%", 2}, {"0%", 0}};
  for (const auto* none :
       {"00:00:08", "00:01:00", "100%", "101%", "-10%", "-00:00:01", "00:00:60", "1e1%", "5", ":::"}) {
    firstSeconds[none] = never;
  }
  for (const auto& [offset, first] : firstSeconds) {
    for (const bool allows : {true, false}) {
      SCOPED_TRACE(offset + (allows ? "" : ", forbidden"));
      SkipRig rig;
      rig.schedule->setAllowsSkipping(allows);
      rig.preRoll("pre", BreakRig::document({{"a", "video/mp4", "", offset}}));
      rig.begin();
      rig.runUntilHeard("videoAdOnStart:Preroll");
      EXPECT_EQ(rig.said(), "") << "before there is a picture";
      for (int second = 0; second < 5; ++second) {
        rig.runUntilHeard("videoAdOnTime 8 " + std::to_string(second));
        const auto text = second < first ? "Skip ad in " + std::to_string(first - second) : "Skip ad";
        EXPECT_EQ(rig.said(), allows && first != never ? text : "") << second;
        if (rig.said() != "Skip ad") rig.window.sendPress(UIPressTypeSelect);
      }
      rig.runUntilHeard("videoOnPlay");
      EXPECT_EQ(rig.said(), "");
      EXPECT_EQ(rig.tracked("a"), BreakRig::wholeAd());
    }
  }
}

TEST(AdSkip, endsTheAdOnceAndLeadsOnWithinThePress) {
  // Where in the film it comes, in milliseconds, and whether the viewer has paused it.
  for (const auto& [moment, isPaused] : {std::pair(0, false), {2500, false}, {2500, true}, {7999, false}}) {
    SCOPED_TRACE(std::to_string(moment) + (isPaused ? ", paused" : ""));
    SkipRig rig;
    rig.preRoll("pre", BreakRig::document({{"a", "video/mp4", "1", "0%"}, {"b", "video/mp4", "2", "0%"}}));
    rig.midRoll("mid", 3, BreakRig::document({{"c", "video/mp4", "", "0%"}}));
    rig.begin();
    for (const std::string ad : {"a", "b", "c"}) {
      ASSERT_TRUE(rig.loop.advanceUntil([&] { return rig.button().isReady(); }, 60s));
      rig.loop.advance(std::chrono::milliseconds(moment - int(rig.hub().adTime() * 1000)));
      if (isPaused) rig.window.sendPress(UIPressTypePlayPause);
      rig.host.heard.clear();
      for (int press = 0; press < 2; ++press) rig.window.sendPress(UIPressTypeSelect);
      const std::string roll = ad == "c" ? ":Midroll" : ":Preroll";
      EXPECT_THAT(rig.host.heardOf({"videoAdOnStart", "videoAdOnSkip", "videoAdOnPause", "videoOnPlay"}),
                  ElementsAre("videoAdOnSkip" + roll, ad == "a" ? "videoAdOnStart" + roll : "videoOnPlay"));
      EXPECT_EQ(rig.host.count("videoAdOnPodComplete"), ad == "b");
      EXPECT_EQ(rig.isAdGone(), ad != "a");
      EXPECT_EQ(rig.said(), "");
    }
    EXPECT_NEAR(rig.player->currentPosition(), 3, 0.1) << "the programme where it stopped";
    ASSERT_TRUE(rig.loop.advanceUntil([&] { return rig.host.count("videoDidPlayFinished") > 0; }, 60s));
    EXPECT_EQ(rig.host.count("videoAdOnComplete"), 0);
    for (const auto* ad : {"a", "b", "c"}) EXPECT_EQ(std::ranges::count(rig.tracked(ad), "complete"), 0);
  }
}
