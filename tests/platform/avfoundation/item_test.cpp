#include "platform/foundation/NSException.h"
#include "tests/platform/avfoundation/PlayerTest.h"

class Item : public PlayerTest {};

TEST_F(Item, failsOnceAndForAllAndStopsThePlayerWithoutSayingSo) {
  openReady();
  tickEvery(1);
  player->play();
  loop.advance(2500ms);
  diary->take();
  engine().fail({AVFoundationErrorDomain, AVErrorDecodeFailed, "broken"});
  engine().stall();
  engine().setDuration(90);
  loop.advance(10s);
  player->play();
  EXPECT_THAT(diary->take(), ElementsAre("status 2"));
  EXPECT_EQ(player->rate(), 0);
  EXPECT_EQ(item->error()->code, AVErrorDecodeFailed);
  EXPECT_EQ(position(), "2.5") << "stands where it broke";
  EXPECT_EQ(text(item->duration()), "60");
  EXPECT_EQ(media.aliveEngines(), 0);
}

TEST_F(Item, playsInOnePlayerOnce) {
  openReady();
  EXPECT_THROW(AVPlayer::playerWithPlayerItem(item), NSInternalInconsistencyException);
  const auto other = AVPlayer::playerWithPlayerItem(nullptr);
  player->replaceCurrentItemWithPlayerItem(nullptr);
  EXPECT_THROW(other->replaceCurrentItemWithPlayerItem(item), NSInternalInconsistencyException);
  EXPECT_EQ(other->currentItem(), nullptr);
}

TEST_F(Item, keepsWhatItKnewAndFallsSilentWhenItsPlayerLetsGo) {
  openReady();
  player->play();
  loop.advance(4s);
  diary->take();
  engine().setDuration(90);
  player->replaceCurrentItemWithPlayerItem(nullptr);
  EXPECT_EQ(media.aliveEngines(), 0);
  loop.advance(5s);
  EXPECT_THAT(diary->take(), IsEmpty());
  EXPECT_EQ(text(item->currentTime()), "4");
  EXPECT_EQ(text(item->duration()), "60");
  ASSERT_EQ(item->loadedTimeRanges().size(), 1u);
  EXPECT_EQ(text(CMTimeRangeGetEnd(item->loadedTimeRanges()[0])), "34");
}

TEST_F(Item, tellsAStallAndItsEndByWhatChanged) {
  media.script(programme).stalls = {{10, 4}};
  openReady();
  Diary::watch(diary, item, {"loadedTimeRanges"});
  player->play();
  loop.advance(9999ms);
  EXPECT_THAT(diary->take(), ElementsAre("rate 1"));
  loop.advance(1ms);
  EXPECT_THAT(diary->take(), ElementsAre("playbackBufferEmpty yes", "playbackLikelyToKeepUp no", "loadedTimeRanges 0"));
  EXPECT_TRUE(item->isPlaybackBufferEmpty());
  EXPECT_EQ(player->rate(), 1) << "what was asked for";
  loop.advance(4s);
  EXPECT_THAT(diary->take(), ElementsAre("playbackBufferEmpty no", "playbackLikelyToKeepUp yes", "loadedTimeRanges 1"));
  EXPECT_EQ(position(), "10");
}

TEST_F(Item, whoPausesOnAnEmptyBufferStillHearsTheRest) {
  media.script(programme).stalls = {{10, 4}};
  openReady();
  const auto pauser = std::make_shared<Reaction>([this] {
    player->pause();
    player->play();
  });
  item->addObserver(pauser, "playbackBufferEmpty");
  player->play();
  loop.advance(10s);
  EXPECT_THAT(diary->take(),
              ElementsAre("rate 1", "playbackBufferEmpty yes", "rate 0", "rate 1", "playbackLikelyToKeepUp no"));
}
