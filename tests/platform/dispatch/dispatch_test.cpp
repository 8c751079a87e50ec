#include "platform/dispatch/Dispatch.h"

#include <atomic>
#include <stdexcept>
#include <thread>

#include "tests/platform/dispatch/loop_forms.h"

using namespace std::chrono_literals;

namespace {

TYPED_TEST(OnEveryLoop, aSerialQueueRunsOneBlockAtATimeInOrderOffTheLoopWhoeverHoldsIt) {
  std::vector<int> order;  // without a lock: the queue is one
  std::atomic<int> inside{0}, overlaps{0}, onLoop{0};
  std::atomic<bool> done{false};
  {
    const auto queue = dispatch_queue_create("test");
    for (int i = 0; i < 300; ++i) {
      dispatch_async(queue, [&, i] {
        overlaps += ++inside != 1;
        onLoop += this->loop.isCurrent();
        order.push_back(i);
        --inside;
        done = i == 299;
      });
    }
  }
  this->runUntil([&] { return done.load(); });
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
  EXPECT_EQ(order.size(), 300u);
  EXPECT_EQ(overlaps, 0);
  EXPECT_EQ(onLoop, 0);
}

TYPED_TEST(OnEveryLoop, workMayWaitForAGroupOfFurtherWork) {
  std::atomic<int> finished{0};
  for (int i = 0; i < 8; ++i) {
    dispatch_async(dispatch_get_global_queue(), [&] {
      const auto group = dispatch_group_create();
      std::atomic<int> done{0};
      for (int j = 0; j < 3; ++j) {
        dispatch_group_enter(group);
        dispatch_async(dispatch_queue_create("inner"), [&, group] { ++done, dispatch_group_leave(group); });
      }
      dispatch_group_wait(group);
      if (done == 3) ++finished;
      EXPECT_THROW(dispatch_group_leave(group), std::logic_error);
    });
  }
  this->runUntil([&] { return finished == 8; });
}

TEST(WorkQueues, aLoopThatGoesWaitsForTheBlockAtHandAndDropsTheRest) {
  std::atomic<int> ended{0};
  const auto owned = std::make_shared<int>();
  {
    PlainRunLoop loop;
    std::atomic<bool> began{false};
    const auto queue = dispatch_queue_create("test");
    dispatch_async(queue, [&] {
      began = true;
      for (int i = 0; i < 1000; ++i) std::this_thread::yield();
      ++ended;
    });
    for (int i = 0; i < 100; ++i) dispatch_async(queue, [owned] {});
    EXPECT_TRUE(loop.runUntil([&] { return began.load(); }, 10s));
  }
  EXPECT_EQ(ended, 1);
  EXPECT_EQ(owned.use_count(), 1) << "blocks that never ran must go";
  {
    VirtualRunLoop loop;
    const auto queue = dispatch_queue_create("test");
    dispatch_async(queue, [owned, queue] {});
  }
  EXPECT_EQ(owned.use_count(), 1) << "those that hold their queue too";
}

}  // namespace
