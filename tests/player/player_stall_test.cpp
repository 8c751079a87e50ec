// A programme whose data run out, and how it comes back.
#include <gmock/gmock.h>

#include "player/YMRStallRules.h"
#include "tests/player/PlayerRig.h"

using testing::ElementsAre;

namespace {

CMTime seconds(double value) {
  return CMTimeMakeWithSeconds(value, 1'000'000'000);
}

}  // namespace

TEST(Stall, isRecoveredBetweenTheProgrammesEndsAndGoesOnWithMoreThanTenSecondsAhead) {
  EXPECT_FALSE(isStallToRecover(kCMTimeZero, seconds(60)));
  EXPECT_TRUE(isStallToRecover(seconds(0.001), seconds(60)));
  EXPECT_TRUE(isStallToRecover(seconds(59.999), seconds(60)));
  EXPECT_FALSE(isStallToRecover(seconds(60), seconds(60)));
  EXPECT_TRUE(isStallToRecover(seconds(5), kCMTimeIndefinite));
  EXPECT_TRUE(isStallToRecover(seconds(5), kCMTimeInvalid));
  EXPECT_FALSE(isLeadEnough(10.0));
  EXPECT_TRUE(isLeadEnough(10.001));
  EXPECT_FALSE(isLeadEnough(std::numeric_limits<double>::quiet_NaN()));
}

TEST(Stall, isPolledEveryHalfSecondUntilTheProgrammeKeepsUp) {
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
  const auto nudges = rig.engine().log().rates.size();
  rig.engine().resumeData();
  rig.loop.advance(5s);
  EXPECT_EQ(rig.engine().log().rates.size(), nudges) << "it was already told to play";
  EXPECT_NEAR(rig.player->currentPosition(), 10.2, 0.1);
  EXPECT_EQ(rig.state(), "PlayingVideo");
  EXPECT_EQ(rig.host.heard.back(), "videoOnTimeDuration 10 60");
  rig.hub().vodPlayer()->pause();
  rig.loop.advance(2s);
  EXPECT_EQ(rig.hub().vodPlayer()->rate(), 0) << "a poll has started what the viewer paused";
}

TEST(Stall, aPollGivesUpOnlyWithMoreThanTenSecondsBuffered) {
  for (const auto& [lead, keepsPolling] : {std::pair{0.0, true}, {10.0, true}, {10.5, false}}) {
    SCOPED_TRACE(lead);
    PlayerRig rig;
    rig.playFilm();
    rig.loop.advance(5s);
    rig.hub().vodPlayer()->pause();  // so that the lead stays what it is said to be
    rig.loop.runUntilIdle();
    rig.engine().setBuffering(true, false, lead);
    rig.loop.runUntilIdle();
    int pollsThatPlayed = 0;
    for (int poll = 0; poll < 4; ++poll) {
      rig.hub().vodPlayer()->pause();
      rig.engine().setBuffering(true, false, lead);
      rig.loop.advance(500ms);
      pollsThatPlayed += rig.hub().vodPlayer()->rate() == 1;
    }
    EXPECT_EQ(pollsThatPlayed > 1, keepsPolling);
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

TEST(Stall, aPendingPollEndsWithThePresentation) {
  for (const bool isFinishing : {false, true}) {
    SCOPED_TRACE(isFinishing);
    PlayerRig rig;
    rig.playFilm();
    rig.loop.advance(5s);
    rig.engine().stall();
    rig.loop.advance(700ms);
    if (isFinishing) {
      rig.hub().vodPlayer()->seekToTime(seconds(60));
      rig.engine().resumeData();
      rig.loop.advance(200ms);
      ASSERT_EQ(rig.host.count("videoDidPlayFinished"), 1);
      rig.loop.advance(3s);
      EXPECT_EQ(rig.hub().vodPlayer()->rate(), 0) << "a poll has started the finished programme";
    } else {
      rig.player->dismiss();
      rig.loop.runUntilIdle();
      EXPECT_EQ(rig.loop.pendingTimers(), 0u);
    }
  }
}
