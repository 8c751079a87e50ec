#include "tests/platform/avfoundation/PlayerTest.h"

class Buffering : public PlayerTest {};

TEST_F(Buffering, tellsAStallAndItsEndByWhatChanged) {
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

TEST_F(Buffering, whoPausesOnAnEmptyBufferStillHearsTheRest) {
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
