// What every form of the run loop promises.
#include <atomic>
#include <thread>

#include "tests/platform/dispatch/loop_forms.h"

using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

TYPED_TEST(OnEveryLoop, postedBlocksRunLaterAndInOrder) {
  std::vector<int> order;
  this->loop.post([&] {
    order.push_back(1);
    this->loop.post([&] { order.push_back(3); });
  });
  this->loop.post([&] { order.push_back(2); });
  EXPECT_TRUE(order.empty());
  this->runUntil([&] { return order.size() == 3; });
  EXPECT_THAT(order, ElementsAre(1, 2, 3));
}

TYPED_TEST(OnEveryLoop, timersRunInTheOrderInWhichTheyAreDueNeverEarlyAndNotWhenCancelledByOneThatIsDueToo) {
  std::vector<int> order;
  const auto began = this->loop.now();
  const auto at = [&](int number, std::chrono::milliseconds delay) {
    this->loop.schedule(delay, [&, number, delay] {
      EXPECT_GE(this->loop.now() - began, delay);
      order.push_back(number);
    });
  };
  RunLoop::TimerToken cancelled = 0;
  this->loop.schedule(20ms, [&] { this->loop.cancel(cancelled); });
  cancelled = this->loop.schedule(20ms, [] { FAIL(); });
  at(5, 30ms);
  at(3, 20ms);
  at(4, 20ms);
  this->loop.cancel(0);
  at(0, -5ms);  // at once
  this->runUntil([&] { return !order.empty(); });
  at(1, 0ms);
  at(2, 0ms);
  this->runUntil([&] { return order.size() == 6; });
  EXPECT_THAT(order, ElementsAre(0, 1, 2, 3, 4, 5));
}

TYPED_TEST(OnEveryLoop, takesBlocksFromEveryThreadAndKnowsItsOwn) {
  EXPECT_TRUE(this->loop.isCurrent());
  int ran = 0;
  std::atomic<int> worked{0}, strangers{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      strangers += !this->loop.isCurrent();
      for (int i = 0; i < 500; ++i) this->loop.post([&] { ran += this->loop.isCurrent(); });
    });
  }
  for (auto& thread : threads) thread.join();
  this->loop.performWork([&] {
    strangers += !this->loop.isCurrent();
    ++worked;
  });
  this->runUntil([&] { return ran == 2000 && worked == 1; });
  EXPECT_EQ(strangers, 5);
}

TYPED_TEST(OnEveryLoop, aBlockGoesWithWhatItOwnsWhichMayUseTheLoop) {
  int gone = 0;
  const auto owner = [&] {
    return std::shared_ptr<void>(nullptr, [&](void*) {
      this->loop.cancel(this->loop.schedule(1h, [] {}));
      ++gone;
    });
  };
  this->loop.cancel(this->loop.schedule(1h, [owned = owner()] {}));
  EXPECT_EQ(gone, 1) << "a cancelled timer's";
  this->loop.post([owned = owner()] {});
  this->loop.schedule(1ms, [owned = owner()] {});
  this->runUntil([&] { return gone == 3; });
  const auto worker = std::make_shared<int>();
  this->loop.performWork([worker] {});
  this->runUntil([&] { return worker.use_count() == 1; });
}

}  // namespace
