// Pods without a gap: the next ad's film is made ready while one plays, and nobody hears of it.
#include <gmock/gmock.h>

#include "VAST/SKLogger.h"
#include "ads/core/VASTSettings.h"
#include "platform/foundation/ConnectionRate.h"
#include "platform/uikit/UIApplication.h"
#include "tests/player/BreakRig.h"

namespace {

const NSError gone{NSURLErrorDomain, NSURLErrorResourceUnavailable, "gone"};

// All that anybody hears of a mid-roll whose second and fourth ad behave like that, and of a viewer who skips what may
// be skipped.
Lines courseOf(bool prepares, YMRTagProfile profile, const MediaScript& script, const std::string& type) {
  VASTSettings::setPreparesNextFilm(prepares);
  BreakRig rig;
  Lines course;
  SKLogger::installSink(SKLogLevelDebug, [&](int, auto tag, auto text) { course.emplace_back(tag).append(text); });
  for (const auto& callback : rig.host.callbacks) {
    rig.host.inside[callback] = [&] { course.push_back(rig.host.heard.back()); };
  }
  rig.schedule->setTagProfile(profile);
  for (const auto* ad : {"b", "b2"}) rig.media.script(BreakRig::film(ad)) = script;
  rig.midRoll("mid", 3,
              BreakRig::document({{"a", "video/mp4", "1"},
                                  {"b", type, "2"},
                                  {"c", "video/mp4", "3", "75%"},
                                  {"b2", "video/mp4", "4"},
                                  {"d", "video/mp4", "5"}}));
  rig.host.inside["videoAdOnPlayQuartile"] = [&] { rig.hub().adContainerView()->skipButton()->press(); };
  EXPECT_TRUE(rig.playToEnd());
  SKLogger::installSink(SKLogLevelNone, nullptr);
  VASTSettings::setPreparesNextFilm(true);
  for (const auto* ad : {"a", "b", "c", "b2", "d"}) EXPECT_LE(rig.media.logs(BreakRig::film(ad)).size(), 1u) << ad;
  EXPECT_EQ(rig.media.aliveEngines(), 1);
  const auto tracked = rig.tracked();
  course.insert(course.end(), tracked.begin(), tracked.end());
  return course;
}

}  // namespace

TEST(PodGap, isClosedWithoutAWordOrARequestToATrackerThatMoves) {
  const MediaScript scripts[] = {{.duration = 9},          {.duration = 8},       {.duration = 0.04},
                                 {.duration = 30},         {.loadFailure = gone}, {.neverLoads = true},
                                 {.loadDelay = 9},         {.duration = 0},       {.cannotBeMade = true},
                                 {.failure = {{7, gone}}}, {.stalls = {{2, 5}}}};
  for (const auto profile : {YMRTagProfileExact, YMRTagProfileBroad}) {
    for (const auto& script : scripts) {
      SCOPED_TRACE(&script - scripts);
      const std::string type = &script == scripts ? "application/x-shockwave-flash" : "video/mp4";
      EXPECT_EQ(courseOf(true, profile, script, type), courseOf(false, profile, script, type));
    }
  }
}

TEST(PodGap, isFilledByPicturesAloneAndWhatIsReadyGoesWithTheBreak) {
  for (const std::string end : {"", "dismiss", "background", "let go"}) {
    BreakRig rig;
    UIWindow window{CGSize{64, 36}, UIGraphics::software};
    window.setRootViewController(std::make_shared<UIViewController>());
    window.makeKeyAndVisible();
    rig.player->presentWithController(window.rootViewController());
    rig.preRoll("pre", BreakRig::pod({"a", "b", "c"}));
    rig.media.script(BreakRig::film("a")).duration = 24.4;
    rig.media.script(BreakRig::film("c")).loadDelay = 0.3;  // longer than b lasts
    rig.media.script(BreakRig::film("b")).duration = 0.2;
    rig.begin();
    rig.runUntilHeard("videoAdOnTime 24.4 18");
    EXPECT_EQ(rig.media.aliveEngines(), 2);
    rig.runUntilHeard("videoAdOnTime 24.4 19");
    EXPECT_EQ(rig.media.aliveEngines(), 3) << "three quarters are over";
    if (end == "dismiss") rig.player->dismiss();
    if (end == "background") UIApplication::sharedApplication().setVisible(false);
    if (end == "let go") rig.player.reset();
    for (int step = 0; end.empty() && rig.host.count("videoAdOnComplete") < 3; ++step) {
      ASSERT_NE(colorAt(window.snapshot(), 32, 18), "000000") << step;
      rig.loop.advance(20ms);
    }
    rig.loop.runUntilIdle();
    EXPECT_EQ(rig.media.aliveEngines(), end.empty() ? 1 : end == "background" ? 2 : 0) << end;
    EXPECT_EQ(rig.media.logs(BreakRig::film("b")).size(), 1u);
    UIApplication::sharedApplication().setVisible(true);
  }
}

TEST(PodGap, staysWithTheFilmThatWasMadeReadyWhateverTheConnectionShowsSince) {
  ConnectionRate::shared().forget();
  BreakRig rig;
  rig.schedule->setTagProfile(YMRTagProfileBroad);
  auto pod = BreakRig::document({{"a", "video/mp4", "1", "00:00:08"}, {"b", "video/mp4", "2"}});
  rig.media.script(BreakRig::film("a")).duration = 24;
  pod.body.insert(
      pod.body.rfind("</MediaFiles>"),
      vast::mediaFile(BreakRig::film("large"), "type='video/mp4' width='640' height='360' bitrate='50000'"));
  rig.midRoll("mid", 3, pod);
  rig.begin();
  rig.runUntilHeard("videoAdOnTime 24 4");
  EXPECT_EQ(rig.media.logs(BreakRig::film("b")).size(), 0u);
  rig.runUntilHeard("videoAdOnTime 24 5");
  EXPECT_EQ(rig.media.logs(BreakRig::film("b")).size(), 1u) << "three seconds until it may be skipped";
  ConnectionRate::shared().note(100'000'000, 1s);
  ASSERT_TRUE(rig.loop.advanceUntil([&] { return rig.host.count("videoAdOnComplete") == 2; }, 60s));
  EXPECT_EQ(rig.media.logs(BreakRig::film("b")).size(), 1u);
  EXPECT_EQ(rig.media.logs(BreakRig::film("large")).size(), 0u);
  ConnectionRate::shared().forget();
}
