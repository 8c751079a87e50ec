#include "platform/dispatch/VirtualRunLoop.h"

#include <gmock/gmock.h>

#include "platform/dispatch/Dispatch.h"

using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

struct Virtual : testing::Test {
  std::chrono::milliseconds passed() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(loop.now() - began);
  }

  VirtualRunLoop loop;
  const RunLoop::Duration began = loop.now();
};

TEST_F(Virtual, timeStandsStillUntilItIsMoved) {
  bool ran = false;
  loop.schedule(1ms, [&] { ran = true; });
  loop.runUntilIdle();
  EXPECT_FALSE(ran);
  EXPECT_EQ(passed(), 0ms);
  EXPECT_EQ(loop.pendingTimers(), 1u);
  loop.advance(1ms);
  EXPECT_TRUE(ran);
  EXPECT_EQ(loop.pendingTimers(), 0u);
}

TEST_F(Virtual, advancingStopsAtEveryTimerOnTheWay) {
  std::vector<std::chrono::milliseconds> times;
  const std::function<void()> again = [&] {
    times.push_back(passed());
    loop.schedule(300ms, again);
  };
  loop.schedule(300ms, again);
  loop.advance(1s);
  EXPECT_THAT(times, ElementsAre(300ms, 600ms, 900ms));
  EXPECT_EQ(passed(), 1000ms);
}

TEST_F(Virtual, advanceUntilStopsWhenItsConditionHoldsOrItsBoundHasPassed) {
  int fired = 0;
  for (int i = 1; i <= 5; ++i) loop.schedule(i * 1s, [&] { ++fired; });
  EXPECT_TRUE(loop.advanceUntil([&] { return fired == 2; }, 10s));
  EXPECT_EQ(passed(), 2000ms);
  EXPECT_FALSE(loop.advanceUntil([&] { return fired == 5; }, 2s));
  EXPECT_EQ(fired, 4);
}

TEST_F(Virtual, waitingForAGroupRunsTheLoopAndItsTime) {
  const auto group = dispatch_group_create();
  dispatch_group_enter(group);
  dispatch_after(5s, dispatch_get_global_queue(), [&] { dispatch_group_leave(group); });
  dispatch_group_wait(group);
  EXPECT_EQ(passed(), 5000ms);
}

TEST_F(Virtual, tellsThatTimeHasMovedBeforeWhatIsDueThenRuns) {
  std::vector<std::string> order;
  loop.setTimeMoved([&] { order.push_back("moved to " + std::to_string(passed().count())); });
  loop.schedule(10ms, [&] { order.push_back("timer"); });
  loop.advance(15ms);
  EXPECT_THAT(order, ElementsAre("moved to 10", "timer", "moved to 15"));
}

using VirtualDeathTest = Virtual;
TEST_F(VirtualDeathTest, waitingForWhatCannotComeStopsTheTest) {
  const auto group = dispatch_group_create();
  dispatch_group_enter(group);
  EXPECT_DEATH(dispatch_group_wait(group), "nothing left on the loop");
}

}  // namespace
