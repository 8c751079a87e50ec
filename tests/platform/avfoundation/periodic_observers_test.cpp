#include <cmath>
#include <numeric>

#include "tests/platform/avfoundation/PlayerTest.h"

class PeriodicObservers : public PlayerTest {
 protected:
  // The whole seconds that were ticked, in order.
  std::vector<int> ticks() {
    std::vector<int> found;
    for (const auto& line : diary->take()) {
      if (line.rfind("tick ", 0) == 0) found.push_back(std::stoi(line.substr(5)));
    }
    return found;
  }
  static std::vector<int> from(int first, int last) {
    std::vector<int> all(static_cast<std::size_t>(last - first + 1));
    std::iota(all.begin(), all.end(), first);
    return all;
  }
};

TEST_F(PeriodicObservers, tickAtEachMultipleOfMediaTimeWhilePlayingAndOnlyThen) {
  openReady();
  tickEvery(1);
  loop.advance(5s);
  const struct {
    float rate;
    RunLoop::Duration duration;
    std::vector<int> ticks;
  } rows[] = {{1, 3s, {0, 1, 2, 3}}, {0, 5s, {}}, {1, 3500ms, {4, 5, 6}}, {1, 500ms, {7}}};
  for (const auto& row : rows) {
    player->setRate(row.rate);
    loop.advance(row.duration);
    EXPECT_EQ(ticks(), row.ticks) << "at the rate " << row.rate;
  }
}

TEST_F(PeriodicObservers, neitherLoseNorDoubleAMultipleAcrossStalls) {
  media.script(programme).stalls = {{2.0, 6.73}, {4.3, 1.5}, {5.99, 30}};
  openReady();
  tickEvery(1);
  player->play();
  loop.advance(2s);
  EXPECT_EQ(ticks(), from(0, 2));
  loop.advance(7729ms);
  EXPECT_THAT(ticks(), IsEmpty()) << "stalled";
  loop.advance(1ms);
  EXPECT_EQ(ticks(), from(3, 3)) << "on time, as soon as it goes on";
  loop.advance(40s);
  EXPECT_EQ(ticks(), from(4, 11));
}

TEST_F(PeriodicObservers, onAQueueOfTheirOwnTickOnceAfterAJumpAndCountOnFromThereAndNeverOnTheWay) {
  media.script(programme).seekDelay = 5;
  openReady();
  token = player->addPeriodicTimeObserver(seconds(1), dispatch_queue_create("subtitling"), [&](CMTime time) {
    EXPECT_FALSE(loop.isCurrent());
    diary->note("tick " + text(time));
  });
  player->play();
  loop.advance(500ms);
  for (const double target : {20.5, 30.0, 10.999}) {
    diary->take();
    player->seekToTime(seconds(target));
    loop.advance(4999ms);
    EXPECT_THAT(diary->lines(), IsEmpty());
    loop.advance(1001ms);
    const std::string place = text(seconds(target)), next = text(seconds(std::floor(target) + 1));
    EXPECT_THAT(diary->take(), ElementsAre("jumped to " + place, "tick " + place, "tick " + next));
  }
}

TEST_F(PeriodicObservers, followMediaTimeWhenItLagsBehindTheClockAndWhenTheMainThreadWasHeldUp) {
  media.script(programme).duration = 1000;
  openReady();
  tickEvery(1);
  player->play();
  loop.advance(900ms);
  engine().skipTo(0.895);
  loop.advance(104ms);
  EXPECT_EQ(ticks(), from(0, 0)) << "never early";
  loop.advance(3ms);
  EXPECT_EQ(ticks(), from(1, 1));
  engine().skipTo(4.5);
  loop.advance(1s);
  EXPECT_EQ(ticks(), from(2, 5));
  engine().skipTo(700.5);
  loop.advance(1s);
  EXPECT_EQ(ticks(), from(642, 701)) << "no more than sixty";
}

TEST_F(PeriodicObservers, areNotCalledAfterRemovalOnAnyQueue) {
  openReady();
  for (const auto& queue : {dispatch_queue_create("slow"), dispatch_get_main_queue()}) {
    const auto removed =
        player->addPeriodicTimeObserver(seconds(1), queue, [&](CMTime) { diary->note("called after removal"); });
    // Removes it on the turn that hands its block to the queue, or before its turn.
    AVPlayerTimeObserverToken remover =
        player->addPeriodicTimeObserver(seconds(1), nullptr, [&, waits = queue != dispatch_get_main_queue()](CMTime) {
          if (waits) player->removeTimeObserver(removed);
        });
    if (queue == dispatch_get_main_queue()) player->removeTimeObserver(removed);
    player->play();
    loop.advance(3s);
    player->pause();
    player->removeTimeObserver(remover);
    player->removeTimeObserver(removed);
  }
  EXPECT_THAT(diary->take(), ElementsAre("rate 1", "rate 0", "rate 1", "rate 0"));
  EXPECT_EQ(loop.pendingTimers(), 0u);
}

TEST_F(PeriodicObservers, mayRemoveEachOtherAndAddMoreFromInsideATick) {
  openReady();
  AVPlayerTimeObserverToken second;
  const auto first = player->addPeriodicTimeObserver(seconds(1), nullptr, [&](CMTime time) {
    diary->note("first " + text(time));
    if (!second) return;
    player->removeTimeObserver(std::exchange(second, nullptr));
    tickEvery(1, "third");
  });
  second = player->addPeriodicTimeObserver(seconds(1), nullptr, [&](CMTime) { diary->note("second"); });
  player->play();
  loop.advance(1s);
  EXPECT_THAT(diary->take(), ElementsAre("rate 1", "first 0", "third 0", "first 1", "third 1"));
  second = token;
  player->seekToTime(seconds(5.5));
  loop.advance(1s);
  EXPECT_THAT(diary->take(), ElementsAre("jumped to 5.5", "first 5.5", "first 6", "third 6")) << "in a jump, too";
}

TEST_F(PeriodicObservers, thatSeekOrChangeTheItemInATickSilenceTheOthersUntilTheJumpOrTheNextBeginning) {
  openReady();
  int calls = 0;
  player->addPeriodicTimeObserver(seconds(1), nullptr, [&](CMTime) {
    if (++calls == 2) player->seekToTime(seconds(40));
    if (calls == 4) player->replaceCurrentItemWithPlayerItem(itemOf(advertisement));
  });
  tickEvery(1);
  player->play();
  loop.advance(3050ms);
  EXPECT_THAT(diary->take(), ElementsAre("rate 1", "tick 0", "jumped to 40", "tick 40", "tick 0", "tick 1"));
}
