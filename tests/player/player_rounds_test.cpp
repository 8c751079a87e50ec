// The same presentation again and again: nothing may be left behind by any of them.
#include <gmock/gmock.h>

#include <malloc.h>

#include <QCoreApplication>

#include "platform/foundation/NSNotificationCenter.h"
#include "tests/player/BreakRig.h"

namespace {

// One presentation with ad breaks, broken off at a moment that depends on the round: with the asset loading, the
// artwork under way, an ad's tag, film or tracking in flight, an ad or the programme playing, stalled, ended. Half of
// them are dismissed, half just destroyed.
void playRound(int round) {
  BreakRig rig;
  rig.net.loader->answer("http://media.example/never.png", {.never = true});
  const auto item = PlayerRig::item();
  if (round % 3 == 0) item->setVideoThumbnailUrl("http://media.example/never.png");
  if (round % 3 != 1) rig.preRoll("pre", BreakRig::pod({"a", "b"}));
  rig.midRoll("mid", 2, BreakRig::wrapper(BreakRig::tag(round % 7 ? "post" : "nowhere")));
  rig.postRoll("post", BreakRig::pod({"c"}));
  rig.player->setAdSchedule(rig.schedule);
  rig.player->playWithMediaItem(item, round % 4 * 10);
  rig.loop.advance(std::chrono::milliseconds(round * 7919 % 80000 >> round % 11));
  if (round % 5 == 0 && rig.media.engine()) rig.media.engine()->stall();
  if (round % 2 == 0) rig.player->dismiss();
  rig.player.reset();
  ASSERT_EQ(rig.media.aliveEngines(), 0);
  rig.loop.advance(40s);  // fetches are not taken back
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
