// A programme whose data run out, and how it comes back.
#include <gmock/gmock.h>

#include "player/YMRStallRules.h"
#include "tests/player/PlayerRig.h"

using testing::ElementsAre;

TEST(Stall, isRecoveredBetweenTheProgrammesEnds) {
  const CMTime minute = CMTimeMake(60, 1);
  EXPECT_FALSE(isStallToRecover(kCMTimeZero, minute));
  EXPECT_TRUE(isStallToRecover(CMTimeMake(1, 1000), minute));
  EXPECT_TRUE(isStallToRecover(CMTimeMake(59'999, 1000), minute));
  EXPECT_FALSE(isStallToRecover(minute, minute));
  EXPECT_TRUE(isStallToRecover(minute, kCMTimeIndefinite));
  EXPECT_TRUE(isStallToRecover(minute, kCMTimeInvalid));
}

TEST(Stall, isReportedAndGoesOnWithItsData) {
  PlayerRig rig;
  rig.media.script(PlayerRig::film).bufferedLead = 5;
  rig.playFilm();
  rig.loop.advance(5200ms);
  rig.host.heard.clear();
  rig.engine().stall();
  rig.loop.runUntilIdle();
  // The pause and the first nudge at once.
  EXPECT_THAT(rig.host.heardOf({"videoOnPause", "videoOnPlay"}), ElementsAre("videoOnPause 5.2", "videoOnPlay"));
  rig.loop.advance(2s);
  EXPECT_NEAR(rig.player->currentPosition(), 5.2, 0.01);
  rig.engine().resumeData();
  rig.loop.advance(5s);
  EXPECT_NEAR(rig.player->currentPosition(), 10.2, 0.1);
  EXPECT_EQ(rig.host.heard.back(), "videoOnTimeDuration 10 60");
}

TEST(Stall, isPolledEveryHalfSecondUntilMoreThanTenSecondsAreBuffered) {
  for (const double lead : {0.0, 10.0}) {
    SCOPED_TRACE(lead);
    PlayerRig rig;
    rig.playFilm();
    rig.loop.advance(5s);
    rig.engine().setBuffering(true, lead);
    rig.loop.runUntilIdle();
    const auto timers = rig.loop.pendingTimers();  // the poll's is one of them
    rig.loop.advance(1s);
    EXPECT_EQ(rig.loop.pendingTimers(), timers);
    rig.engine().setBuffering(true, 10.001);
    rig.loop.advance(499ms);
    EXPECT_EQ(rig.loop.pendingTimers(), timers);
    rig.loop.advance(1ms);
    EXPECT_EQ(rig.loop.pendingTimers(), timers - 1) << "polled once more, and no further";
  }
}

TEST(Stall, doesNotStartWhatSomebodyHasPaused) {
  for (const auto* moment : {"before it", "between two polls", "videoOnPlay"}) {
    SCOPED_TRACE(moment);
    PlayerRig rig;
    rig.playFilm();
    rig.loop.advance(5s);
    const auto pause = [&] { rig.hub().vodPlayer()->pause(); };
    if (moment == std::string("before it")) pause();
    rig.host.inside[moment] = pause;
    rig.engine().setBuffering(true, 0);
    rig.loop.advance(200ms);
    if (moment == std::string("between two polls")) pause();
    rig.loop.advance(5s);
    EXPECT_EQ(rig.hub().vodPlayer()->rate(), 0);
    EXPECT_EQ(rig.state(), "PausedVideo");
  }
}

TEST(Stall, atTheVeryBeginningIsTheEnginesBusinessAlone) {
  PlayerRig rig;
  rig.media.script(PlayerRig::film).stalls = {{0, 3}};
  rig.playFilm();
  rig.loop.advance(2s);
  EXPECT_EQ(rig.host.count("videoOnPause"), 0);
  rig.loop.advance(5s);
  EXPECT_EQ(rig.state(), "PlayingVideo");
  EXPECT_EQ(rig.host.count("videoOnPlay"), 1);
}
