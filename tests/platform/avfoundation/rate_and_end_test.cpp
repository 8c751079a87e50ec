#include <cmath>

#include "tests/platform/avfoundation/PlayerTest.h"

class RateAndEnd : public PlayerTest {};

TEST_F(RateAndEnd, rateIsHeardInsideTheCallWhenItChangesAndIsNeverAnotherThanZeroAndOne) {
  open();
  for (const float rate : {2.0f, 1.0f, 1.0f, 2.0f, -1.0f, 0.5f, std::nanf(""), 0.0f}) player->setRate(rate);
  EXPECT_THAT(diary->take(), ElementsAre("rate 1", "rate 0"));
}

TEST_F(RateAndEnd, endPausesBeforeItIsPostedWithoutSayingSoOrDoesNothing) {
  media.script(programme).duration = 3;
  for (const float rateAfter : {0, 1}) {
    openReady();
    if (rateAfter > 0) player->setActionAtItemEnd(AVPlayerActionAtItemEndNone);
    tickEvery(3);
    float atEnd = -1;
    NSNotificationCenter::defaultCenter().addObserver(&atEnd, AVPlayerItemDidPlayToEndTimeNotification, item,
                                                      [&](const NSNotification&) { atEnd = player->rate(); });
    player->play();
    loop.advance(4s);
    EXPECT_THAT(diary->take(), ElementsAre("rate 1", "tick 0", "tick 3", "ended"));
    EXPECT_EQ(atEnd, rateAfter);
    EXPECT_EQ(player->rate(), rateAfter);
    EXPECT_EQ(player->currentTime(), item->duration());
    EXPECT_EQ(loop.pendingTimers(), 0u);
    player->seekToTime(seconds(1));
    player->play();
    loop.advance(1900ms);
    diary->take();
    loop.advance(100ms);
    EXPECT_THAT(diary->take(), ElementsAre("tick 3", "ended")) << "after seeking back once more";
    NSNotificationCenter::defaultCenter().removeObserver(&atEnd);
    NSNotificationCenter::defaultCenter().removeObserver(diary.get());
  }
}

TEST_F(RateAndEnd, anEndReportedBeforeASeekAwayIsNone) {
  openReady();
  player->play();
  loop.advance(10s);
  diary->take();
  engine().skipTo(60);
  player->seekToTime(seconds(20));
  loop.advance(1s);
  EXPECT_THAT(diary->take(), ElementsAre("jumped to 20"));
  EXPECT_EQ(position(), "21");
  EXPECT_EQ(player->rate(), 1);
}

TEST_F(RateAndEnd, aSeekInTheLastTickTakesTheEndBack) {
  openReady();
  player->addPeriodicTimeObserver(seconds(60), nullptr, [&](CMTime time) {
    if (time == seconds(60)) player->seekToTime(seconds(50));
  });
  player->play();
  loop.advance(65s);
  EXPECT_EQ(position(), "55");
  EXPECT_EQ(player->rate(), 1);
  EXPECT_THAT(diary->take(), ElementsAre("rate 1", "jumped to 50"));
}

TEST_F(RateAndEnd, whatIsSetHoldsForTheNextItem) {
  openReady();
  player->setMuted(true);
  player->play();
  Diary::watch(diary, player, {"currentItem"});
  player->replaceCurrentItemWithPlayerItem(itemOf(advertisement));
  loop.advance(1050ms);
  EXPECT_EQ(media.aliveEngines(), 1);
  EXPECT_EQ(player->rate(), 1);
  EXPECT_EQ(position(), "1");
  EXPECT_TRUE(engine().log().muted);
  player->replaceCurrentItemWithPlayerItem(nullptr);
  EXPECT_THAT(diary->take(), ElementsAre("rate 1", "currentItem ?", "currentItem ?"));
  EXPECT_EQ(position(), "0");
}
