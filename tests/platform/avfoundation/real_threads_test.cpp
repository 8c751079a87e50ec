#include <gtest/gtest.h>

#include <atomic>

#include "platform/avfoundation/AVPlayer.h"
#include "platform/dispatch/PlainRunLoop.h"
#include "tests/support/ScriptedMediaEngine.h"

using namespace std::chrono_literals;

// Real time and real threads: what a subtitle engine does on its own queue meets what the main thread does.
TEST(OnRealThreads, ticksOnAQueueMeetSeeksAndTheEndOfThePlayer) {
  PlainRunLoop loop;
  ScriptedMedia media;
  media.otherwise().loadDelay = 0.001;
  media.otherwise().duration = 0.05;
  const auto queue = dispatch_queue_create("aside");
  for (int round = 0; round < 20; ++round) {
    auto player = AVPlayer::playerWithPlayerItem(
        AVPlayerItem::playerItemWithURL(NSURL::URLWithString("http://example.com/programme.mp4")));
    player->setActionAtItemEnd(AVPlayerActionAtItemEndNone);
    const auto ticks = std::make_shared<std::atomic<int>>(0);
    player->addPeriodicTimeObserver(CMTimeMake(1, 1000), queue, [ticks, weak = std::weak_ptr(player)](CMTime time) {
      const auto alive = weak.lock();  // may become the last reference
      const auto item = alive ? alive->currentItem() : nullptr;
      EXPECT_TRUE(!item || item->currentTime() >= kCMTimeZero);
      EXPECT_LE(time, CMTimeMake(50, 1000));
      ++*ticks;
    });
    player->play();
    ASSERT_TRUE(loop.runUntil([&] { return *ticks > round; }, 10s));
    player->seekToTime(CMTimeMake(round, 1000));
    if (round % 3) dispatch_async(dispatch_get_global_queue(), [last = player]() mutable { last.reset(); });
    player.reset();
  }
  EXPECT_TRUE(loop.runUntil([&] { return media.aliveEngines() == 0; }, 10s));
}
