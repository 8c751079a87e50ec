// How a presentation ends: by itself, by the host, by the viewer.
#include <gmock/gmock.h>

#include "tests/VAST/Parser/RecordedLog.h"
#include "tests/player/PlayerRig.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

void expectNothingLeft(PlayerRig& rig) {
  rig.loop.advance(5s);
  EXPECT_EQ(rig.hub().vodPlayer(), nullptr);
  EXPECT_EQ(rig.hub().avPlayerVC()->player(), nullptr);
  EXPECT_EQ(rig.hub().avPlayerVC()->delegate(), nullptr);
  EXPECT_EQ(rig.media.aliveEngines(), 0);
  EXPECT_EQ(rig.loop.pendingTimers(), 0u);
}

const Lines ending{"videoOnPause", "videoDidPlayFinished", "playerWillDismiss", "playerDidDismiss"};

}  // namespace

TEST(Ending, aHostThatAnswersTheEndKeepsThePlayerUntilItDismissesIt) {
  PlayerRig rig;
  rig.playFilm();
  rig.loop.advance(70s);
  EXPECT_THAT(rig.host.heardOf(ending), ElementsAre("videoOnPause 60", "videoDidPlayFinished"));
  EXPECT_EQ(rig.state(), "CompletedVideo");
  ASSERT_NE(rig.hub().vodPlayer(), nullptr);
  EXPECT_EQ(rig.player->currentPosition(), 60);
  rig.host.heard.clear();
  rig.hub().vodPlayer()->play();
  rig.hub().vodPlayer()->seekToTime(kCMTimeZero);
  rig.loop.advance(5s);
  EXPECT_THAT(rig.host.heard, IsEmpty()) << "a completed programme reports nothing";
  rig.player->dismiss();
  EXPECT_THAT(rig.host.heard, ElementsAre("playerWillDismiss", "playerDidDismiss"));
  expectNothingLeft(rig);
}

TEST(Ending, aHostThatDoesNotAnswerTheEndSeesThePlayerDismissItself) {
  const RecordedLog log(SKLogLevelError);
  PlayerRig rig;
  rig.host.delegate->videoDidPlayFinished = nullptr;
  rig.playFilm();
  rig.loop.advance(70s);
  EXPECT_THAT(rig.host.heardOf(ending), ElementsAre("videoOnPause 60", "playerWillDismiss", "playerDidDismiss"));
  EXPECT_THAT(log.lines(), IsEmpty()) << "though the end and the dismissal both take the observers away";
  expectNothingLeft(rig);
}

TEST(Ending, isFollowedByAllOfItOnceMoreWhenTheHostStartsItAgain) {
  for (const auto* moment : {"videoOnPause", "videoDidPlayFinished", "later"}) {
    SCOPED_TRACE(moment);
    PlayerRig rig;
    Lines once;
    const auto startAgain = [&] {
      rig.host.inside.clear();
      once = std::exchange(rig.host.heard, {});
      rig.player->start();
    };
    rig.host.inside[moment] = startAgain;
    rig.playFilm();
    rig.loop.advance(65s);
    if (moment == std::string("later")) startAgain();
    rig.loop.advance(65s);
    rig.host.heard.resize(std::min(once.size(), rig.host.heard.size()));
    EXPECT_EQ(rig.host.heard, once);
    EXPECT_EQ(rig.host.count("videoDidPlayFinished"), moment == std::string("videoOnPause") ? 0 : 1);
    EXPECT_EQ(rig.state(), "CompletedVideo");
  }
}

TEST(Ending, dismissalReportsThePauseItMakesAndThenIsSilent) {
  PlayerRig rig;
  rig.playFilm();
  rig.loop.advance(2s);
  rig.host.heard.clear();
  rig.player->dismiss();
  EXPECT_THAT(rig.host.heard,
              ElementsAre("playerWillDismiss", "videoOnPause 2", "videoOnPauseDuration 2 60", "playerDidDismiss"));
  EXPECT_TRUE(std::isnan(rig.player->currentPosition()));
  EXPECT_EQ(rig.player->videoDuration(), 0);
  EXPECT_EQ(rig.player->delegate(), nullptr) << "it has heard of the dismissal";
  rig.player->dismiss();
  rig.player->start();
  rig.player->playWithMediaItem(PlayerRig::item(), 0);
  expectNothingLeft(rig);
  EXPECT_EQ(rig.host.heard.size(), 4u);
}

TEST(Ending, aPlayerDestroyedFromWithinItsDismissalSaysNoMore) {
  for (const auto* callback : {"playerWillDismiss", "videoOnPause", "videoOnPauseDuration", "playerDidDismiss"}) {
    PlayerRig rig;
    rig.playFilm();
    rig.host.inside[callback] = [&] { rig.player.reset(); };
    rig.player->dismiss();
    rig.loop.advance(5s);
    EXPECT_EQ(rig.host.heard.back().find(callback), 0u) << callback;
    EXPECT_EQ(rig.media.aliveEngines(), 0);
  }
  PlayerRig rig;
  const std::string artwork = "http://media.example/never.png";
  rig.net.loader->answer(artwork, {.never = true});
  const auto item = PlayerRig::item();
  item->setVideoThumbnailUrl(artwork);
  rig.player->playWithMediaItem(item, 0);
  rig.player.reset();
  EXPECT_EQ(rig.media.aliveEngines(), 0);
  rig.loop.advance(40s);  // fetches are not taken back
  EXPECT_THAT(rig.host.heard, IsEmpty());
  EXPECT_EQ(rig.loop.pendingTimers() + rig.net.loader->asked().size(), 1u) << "the artwork";
}
