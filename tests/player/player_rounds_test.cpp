// The same presentation again and again: nothing may be left behind by any of them.
#include <gmock/gmock.h>

#include <malloc.h>

#include <QCoreApplication>

#include "platform/foundation/NSNotificationCenter.h"
#include "tests/player/PlayerRig.h"

namespace {

// One presentation, broken off at a moment that depends on the round: with the asset loading, the artwork under way,
// the programme just begun, playing, stalled, ended. Half of them are dismissed, half just destroyed.
void playRound(int round) {
  PlayerRig rig;
  rig.net.loader->answer("http://media.example/never.png", {.never = true});
  const auto item = PlayerRig::item();
  if (round % 3 == 0) item->setVideoThumbnailUrl("http://media.example/never.png");
  rig.player->playWithMediaItem(item, round % 4 * 10);
  constexpr RunLoop::Duration moments[]{0ms, 20ms, 60ms, 3s, 5200ms, 90s};
  rig.loop.advance(moments[round % 6]);
  if (round % 5 == 0 && rig.media.engine()) rig.media.engine()->stall();
  if (round % 2 == 0) rig.player->dismiss();
  rig.player.reset();
  ASSERT_EQ(rig.media.aliveEngines(), 0);
  rig.loop.advance(10s);  // the fetch of the artwork is not taken back
  ASSERT_EQ(rig.loop.pendingTimers(), 0u);
  ASSERT_EQ(rig.net.loader->inFlight(), 0);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  QCoreApplication::processEvents();
}

}  // namespace

TEST(Rounds, aThousandPresentationsLeaveNothingBehind) {
  for (int round = 0; round < 60; ++round) playRound(round);
  const auto observers = NSNotificationCenter::defaultCenter().observerCount();
  const auto memory = mallinfo2().uordblks;
  for (int round = 0; round < 1000; ++round) {
    SCOPED_TRACE(round);
    ASSERT_NO_FATAL_FAILURE(playRound(round));
  }
  EXPECT_EQ(NSNotificationCenter::defaultCenter().observerCount(), observers);
  EXPECT_LT(mallinfo2().uordblks, memory + 100 * 1024);
}
