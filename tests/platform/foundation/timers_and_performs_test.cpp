#include <gmock/gmock.h>

#include "platform/dispatch/VirtualRunLoop.h"
#include "platform/foundation/NSTimer.h"
#include "platform/foundation/PerformSelector.h"

using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

struct TimersAndPerforms : testing::Test {
  std::function<void()> note(const std::string& name) {
    return [this, name] {
      const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(loop.now() - began);
      fired.push_back(name + "@" + std::to_string(passed.count()));
    };
  }

  VirtualRunLoop loop;
  const RunLoop::Duration began = loop.now();
  std::vector<std::string> fired;
  int target = 0, other = 0;
};

TEST_F(TimersAndPerforms, aTimerFiresOnceOrAtMultiplesOfItsInterval) {
  const auto once = NSTimer::scheduledTimerWithTimeInterval(150ms, false, note("once"));
  const auto again = NSTimer::scheduledTimerWithTimeInterval(100ms, true, note("again"));
  loop.advance(350ms);
  EXPECT_THAT(fired, ElementsAre("again@100", "once@150", "again@200", "again@300"));
  EXPECT_FALSE(once->isValid());
  EXPECT_TRUE(again->isValid());
}

TEST_F(TimersAndPerforms, aRepeatingTimerSkipsWhatABusyLoopMissed) {
  const auto timer = NSTimer::scheduledTimerWithTimeInterval(100ms, true, [&] {
    note("tick")();
    if (fired.size() == 1) loop.advance(250ms);  // the block itself takes a quarter of a second
  });
  loop.advance(600ms);
  EXPECT_THAT(fired, testing::Contains("tick@100"));
  for (std::size_t i = 1; i < fired.size(); ++i) EXPECT_NE(fired[i], fired[i - 1]) << "a missed beat was made up for";
  EXPECT_EQ(fired.back(), "tick@600");
}

TEST_F(TimersAndPerforms, invalidatingOrLettingGoEndsATimer) {
  auto dropped = NSTimer::scheduledTimerWithTimeInterval(100ms, true, note("dropped"));
  const auto invalidated = NSTimer::scheduledTimerWithTimeInterval(100ms, true, note("invalidated"));
  std::shared_ptr<NSTimer> self;
  self = NSTimer::scheduledTimerWithTimeInterval(50ms, true, [&, name = std::string("self")] {
    self.reset();
    fired.push_back(name);  // the block outlives the timer that it let go of
  });
  dropped.reset();
  invalidated->invalidate();
  invalidated->invalidate();
  loop.advance(1s);
  EXPECT_THAT(fired, ElementsAre("self"));
  EXPECT_EQ(loop.pendingTimers(), 0u);
}

TEST_F(TimersAndPerforms, aTimerLetsGoOfItsBlockWhenItHasFiredOrWasInvalidated) {
  const auto owned = std::make_shared<int>();
  const auto once = NSTimer::scheduledTimerWithTimeInterval(1ms, false, [owned] {});
  const auto again = NSTimer::scheduledTimerWithTimeInterval(1ms, true, [owned] {});
  loop.advance(5ms);
  again->invalidate();
  EXPECT_EQ(owned.use_count(), 1);
}

TEST_F(TimersAndPerforms, aZeroIntervalDoesNotHangTheLoop) {
  int count = 0;
  const auto timer = NSTimer::scheduledTimerWithTimeInterval(0ms, true, [&] { ++count; });
  loop.advance(10ms);
  EXPECT_GT(count, 0);
  EXPECT_LE(count, 100);
}

TEST_F(TimersAndPerforms, performsRunInOrderOfTheirTimes) {
  performSelectorAfterDelay(&target, "poll", 500ms, note("poll"));
  performSelectorAfterDelay(&target, "hide", 0ms, note("hide"));
  performSelectorAfterDelay(&target, "poll", 200ms, note("poll"));
  EXPECT_TRUE(fired.empty());
  loop.advance(1s);
  EXPECT_THAT(fired, ElementsAre("hide@0", "poll@200", "poll@500"));
}

TEST_F(TimersAndPerforms, cancellingTakesBackOneSelectorOrAllOfATarget) {
  for (const char* selector : {"poll", "hide", "poll"})
    performSelectorAfterDelay(&target, selector, 100ms, note(selector));
  performSelectorAfterDelay(&other, "poll", 100ms, note("other"));
  cancelPreviousPerformRequestsWithTarget(&target, "poll");
  loop.advance(100ms);
  EXPECT_THAT(fired, ElementsAre("hide@100", "other@100"));
  performSelectorAfterDelay(&target, "poll", 100ms, note("poll"));
  performSelectorAfterDelay(&target, "hide", 100ms, note("hide"));
  cancelPreviousPerformRequestsWithTarget(&target);
  cancelPreviousPerformRequestsWithTarget(&target);
  EXPECT_EQ(loop.pendingTimers(), 0u);
}

TEST_F(TimersAndPerforms, aPerformMayAskForItselfAgainOrCancelItsOwnTarget) {
  int rounds = 0;
  std::function<void()> poll = [&] {
    cancelPreviousPerformRequestsWithTarget(&target);
    if (++rounds < 3) performSelectorAfterDelay(&target, "poll", 500ms, poll);
  };
  performSelectorAfterDelay(&target, "poll", 500ms, poll);
  loop.advance(10s);
  EXPECT_EQ(rounds, 3);
}

}  // namespace
