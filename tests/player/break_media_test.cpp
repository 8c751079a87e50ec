// Many ad breaks in one process, with real media from a real server, in a window that draws; every fourth presentation
// is broken off, at a moment of its own.
//
// With YMR_BREAKS=500 in the environment it is a soak, which prints what a break costs in the long run.
#include "player/YMRVideoPlayer.h"
#include "player/YMRVideoPlayerImpl.h"
#include "tests/player/Soak.h"

using BreakMedia = Soak;

TEST_F(BreakMedia, manyBreaksEachInAPlayerOfItsOwnLeaveNothingBehind) {
  const std::shared_ptr<YMRAd> kinds[] = {YMRAd::initPreRollWithVastUrl(ads.tag()),
                                          YMRAd::initMidRollWithVastUrl(ads.tag(), 0),
                                          YMRAd::initPostRollWithVastUrl(ads.tag())};
  const auto delegate = std::make_shared<YMRVideoPlayerDelegate>();
  int completed = 0;
  bool isFinished = false;
  delegate->videoAdOnComplete = [&](const auto&) { ++completed; };
  delegate->videoDidPlayFinished = [&] { isFinished = true; };
  run("YMR_BREAKS", [&](int number) {
    const auto schedule = std::make_shared<YMRAdSchedule>();
    schedule->addAdBreak(kinds[number % 3]);
    completed = isFinished = false;
    auto player = std::make_unique<YMRVideoPlayer>();
    const std::weak_ptr<AVPlayerViewController> screen = player->ymrPlayer()->avPlayerVC();
    player->setDelegate(delegate);
    player->setAdSchedule(schedule);
    player->presentWithController(root);
    player->playWithMediaItem(YMRMediaItem::itemWithUrl(NSURL::fileURLWithPath(YMR_SAMPLES "/half.mp4")), 0);
    if (number % 4 == 0) {
      QElapsedTimer passed;
      passed.start();
      runEventsUntil([&] { return passed.elapsed() >= number * 31 % 1000; });
    } else {
      ASSERT_TRUE(runEventsUntil([&] { return isFinished; }));
      EXPECT_EQ(completed, 1);
      EXPECT_EQ(player->ymrPlayer()->adPlayer(), nullptr);
      player->dismiss();
    }
    player.reset();
    EXPECT_TRUE(runEventsUntil([&] { return !root->presentedViewController(); }));
    EXPECT_TRUE(runEventsUntil([&] { return screen.expired(); }));
  });
}
