#include <gmock/gmock.h>

#include "platform/dispatch/PlainRunLoop.h"
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
}

TEST(TimersOnABusyLoop, skipTheBeatsThatItMissed) {
  PlainRunLoop loop;
  const auto began = loop.now();
  std::vector<std::int64_t> beats;
  const auto timer = NSTimer::scheduledTimerWithTimeInterval(20ms, true, [&] {
    beats.push_back((loop.now() - began) / 20ms);
    while (beats.size() == 1 && loop.now() - began < 110ms) continue;
  });
  EXPECT_TRUE(loop.runUntil([&] { return beats.size() == 4; }, 5s));
  EXPECT_EQ(std::adjacent_find(beats.begin(), beats.end()), beats.end()) << "a missed beat was made up for";
}

TEST_F(TimersAndPerforms, aTimerThatEndsLetsGoOfItsBlockAndMayGoByIt) {
  const auto owned = std::make_shared<int>();
  const auto once = NSTimer::scheduledTimerWithTimeInterval(1ms, false, [owned] {});
  auto dropped = NSTimer::scheduledTimerWithTimeInterval(1ms, true, [owned] {});
  std::shared_ptr<NSTimer> self;
  self = NSTimer::scheduledTimerWithTimeInterval(1ms, true, [&, name = std::string("self")] {
    self.reset();
    fired.push_back(name);  // the block outlives the timer that it let go of
  });
  dropped.reset();
  loop.advance(1s);
  EXPECT_THAT(fired, ElementsAre("self"));
  EXPECT_EQ(owned.use_count(), 1);
  EXPECT_EQ(loop.pendingTimers(), 0u);
}

TEST_F(TimersAndPerforms, performsRunInOrderOfTheirTimesUnlessTheyAreTakenBack) {
  const auto perform = [&](const void* who, const char* selector, RunLoop::Duration delay) {
    performSelectorAfterDelay(who, selector, delay, note(who == &target ? selector : "other"));
  };
  perform(&target, "poll", 500ms);
  perform(&target, "hide", 0ms);
  perform(&target, "poll", 200ms);
  EXPECT_TRUE(fired.empty());
  loop.advance(500ms);
  EXPECT_THAT(std::exchange(fired, {}), ElementsAre("hide@0", "poll@200", "poll@500"));

  for (const char* selector : {"poll", "hide", "poll"}) perform(&target, selector, 100ms);
  perform(&other, "poll", 100ms);
  cancelPreviousPerformRequestsWithTarget(&target, "poll");
  loop.advance(100ms);
  EXPECT_THAT(fired, ElementsAre("hide@600", "other@600"));
  perform(&target, "poll", 100ms);
  perform(&target, "hide", 100ms);
  cancelPreviousPerformRequestsWithTarget(&target);
  EXPECT_EQ(loop.pendingTimers(), 0u);
}

TEST_F(TimersAndPerforms, aPerformMayAskForItselfAgainAndCancelInsideACancellation) {
  int rounds = 0;
  std::function<void()> poll = [&] {
    cancelPreviousPerformRequestsWithTarget(&target);
    if (++rounds < 3) performSelectorAfterDelay(&target, "poll", 500ms, poll);
  };
  performSelectorAfterDelay(&target, "poll", 500ms, poll);
  loop.advance(10s);
  EXPECT_EQ(rounds, 3);

  auto cancels =
      std::shared_ptr<void>(nullptr, [this](void*) { cancelPreviousPerformRequestsWithTarget(&target, "b"); });
  for (const char* selector : {"a", "b", "b", "a"}) {
    performSelectorAfterDelay(&target, selector, 1s, [owned = std::exchange(cancels, nullptr)] {});
  }
  cancelPreviousPerformRequestsWithTarget(&target, "a");
  EXPECT_EQ(loop.pendingTimers(), 0u);
}

}  // namespace
