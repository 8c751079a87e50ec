#include <atomic>
#include <csignal>
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

TYPED_TEST(OnEveryLoop, timersRunInTheOrderInWhichTheyAreDueAndNeverEarly) {
  std::vector<int> order;
  const auto began = this->loop.now();
  const auto at = [&](int number, std::chrono::milliseconds delay) {
    this->loop.schedule(delay, [&, number, delay] {
      EXPECT_GE(this->loop.now() - began, delay);
      order.push_back(number);
    });
  };
  at(4, 30ms);
  at(3, 20ms);
  at(1, -5ms);  // at once
  at(2, 0ms);
  this->loop.post([&] { order.push_back(0); });
  this->runUntil([&] { return order.size() == 5; });
  EXPECT_EQ(order.back(), 4);
  EXPECT_EQ(order[3], 3);
}

TYPED_TEST(OnEveryLoop, timersOfOneMomentKeepTheirOrder) {
  std::vector<int> order;
  for (int i = 0; i < 5; ++i) this->loop.schedule(0ms, [&, i] { order.push_back(i); });
  this->runUntil([&] { return order.size() == 5; });
  EXPECT_THAT(order, ElementsAre(0, 1, 2, 3, 4));
}

TYPED_TEST(OnEveryLoop, aCancelledTimerDoesNotRunEvenWhenItIsDue) {
  std::vector<int> order;
  RunLoop::TimerToken second = 0;
  this->loop.schedule(0ms, [&] {
    order.push_back(1);
    this->loop.cancel(second);
  });
  second = this->loop.schedule(0ms, [&] { order.push_back(2); });
  this->loop.schedule(10ms, [&] { order.push_back(3); });
  this->loop.cancel(0);
  this->runUntil([&] { return !order.empty() && order.back() == 3; });
  EXPECT_THAT(order, ElementsAre(1, 3));
}

TYPED_TEST(OnEveryLoop, knowsWhetherTheCallerIsOnIt) {
  EXPECT_TRUE(this->loop.isCurrent());
  std::atomic<int> inWork{-1};
  this->loop.performWork([&] { inWork = this->loop.isCurrent(); });
  this->runUntil([&] { return inWork >= 0; });
  EXPECT_EQ(inWork, 0);
  bool inThread = true;
  std::thread([&] { inThread = this->loop.isCurrent(); }).join();
  EXPECT_FALSE(inThread);
}

TYPED_TEST(OnEveryLoop, blocksPostedFromThreadsAllRun) {
  int ran = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 500; ++i) this->loop.post([&] { ++ran; });
    });
  }
  for (auto& thread : threads) thread.join();
  this->runUntil([&] { return ran == 2000; });
}

TYPED_TEST(OnEveryLoop, aBlockGoesWithWhatItOwnsWhenItHasRunOrItsTimerIsCancelled) {
  const auto owned = std::make_shared<int>();
  this->loop.post([owned] {});
  this->loop.schedule(0ms, [owned] {});
  this->loop.cancel(this->loop.schedule(1h, [owned] {}));
  this->loop.performWork([owned] {});
  this->runUntil([&] { return owned.use_count() == 1; });
}

TYPED_TEST(OnEveryLoop, whatABlockOwnsMayUseTheLoopAsItGoes) {
  const auto owner = [this] {
    return std::shared_ptr<void>(
        nullptr, [this](void*) { this->loop.cancel(this->loop.schedule(std::chrono::hours(1), [] {})); });
  };
  this->loop.cancel(this->loop.schedule(std::chrono::hours(1), [owned = owner()] {}));
  bool ran = false;
  this->loop.schedule(std::chrono::milliseconds(1), [owned = owner(), &ran] { ran = true; });
  this->runUntil([&] { return ran; });
}

TEST(RunLoopInstallation, aLoopThatGoesTakesItsBlocksAlongWhileItStillStands) {
  struct PostsWhenItGoes {
    ~PostsWhenItGoes() {
      if (RunLoop* loop = RunLoop::mainIfInstalled()) loop->post([] {});
    }
  };
  const auto check = [](auto make) {
    auto loop = make();
    loop->post([owned = std::make_shared<PostsWhenItGoes>()] {});
    loop->schedule(1h, [owned = std::make_shared<PostsWhenItGoes>()] {});
    loop.reset();
    EXPECT_EQ(RunLoop::mainIfInstalled(), nullptr);
  };
  check([] { return std::make_unique<PlainRunLoop>(); });
  check([] { return std::make_unique<VirtualRunLoop>(); });
}

TEST(RunLoopInstallation, othersUseTheLoopOnlyWhileItIsThere) {
  EXPECT_FALSE(RunLoop::whileInstalled([](RunLoop&) { FAIL(); }));
  std::atomic<bool> stop{false};
  std::atomic<int> handedOver{0};
  std::thread other([&] {
    while (!stop) handedOver += RunLoop::whileInstalled([](RunLoop& loop) { loop.post([] {}); });
  });
  for (int round = 0; round < 200; ++round) PlainRunLoop loop;
  {
    PlainRunLoop loop;
    const int before = handedOver;
    EXPECT_TRUE(loop.runUntil([&] { return handedOver > before; }, 10s));
  }
  stop = true;
  other.join();
}

TEST(RunLoopInstallation, aTokenOfAnEarlierLoopCancelsNothing) {
  RunLoop::TimerToken old = 0;
  {
    VirtualRunLoop loop;
    old = loop.schedule(1s, [] {});
  }
  VirtualRunLoop loop;
  bool ran = false;
  loop.schedule(1s, [&] { ran = true; });
  loop.cancel(old);
  loop.advance(1s);
  EXPECT_TRUE(ran);
}

TEST(RunLoopInstallationDeathTest, aHostThatForgotTheLoopIsTold) {
  EXPECT_DEATH(RunLoop::main(), "no run loop is installed");
}

TEST(PlainRunLoop, runsUntilItIsStopped) {
  PlainRunLoop loop;
  int ran = 0;
  loop.schedule(5ms, [&] {
    ++ran;
    loop.stop();
    loop.post([&] { ++ran; });
  });
  loop.run();
  EXPECT_EQ(ran, 1) << "the turn at hand is the last";
  std::thread stopper([&] { loop.stop(); });
  loop.run();
  stopper.join();
}

TEST(PlainRunLoop, runUntilKeepsItsBoundWhateverIsPostedOrStopped) {
  PlainRunLoop loop;
  std::function<void()> again = [&] { loop.post(again); };
  loop.post(again);
  loop.stop();
  const auto began = loop.now();
  EXPECT_FALSE(loop.runUntil([&] { return loop.now() - began > 10s; }, 50ms));
  EXPECT_LT(loop.now() - began, 5s);
}

TEST(PlainRunLoop, aTimerThatIsDueGoesBeforeWhatIsPostedAfterIt) {
  PlainRunLoop loop;
  std::vector<int> order;
  std::function<void()> busy = [&] {
    order.push_back(0);
    if (order.size() < 1'000'000) loop.post(busy);
  };
  loop.post(busy);
  bool fired = false;
  loop.schedule(20ms, [&] { fired = true; });
  EXPECT_TRUE(loop.runUntil([&] { return fired; }, 5s)) << "a busy loop starves its timers";
  EXPECT_LT(order.size(), 1'000'000u);
}

TEST(PlainRunLoop, workersLeaveSignalsToTheHostsThreads) {
  PlainRunLoop loop;
  std::atomic<int> blocked{-1};
  loop.performWork([&] {
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    blocked = sigismember(&mask, SIGINT);
  });
  EXPECT_TRUE(loop.runUntil([&] { return blocked >= 0; }, 5s));
  EXPECT_EQ(blocked, 1);
  sigset_t mask;
  pthread_sigmask(SIG_SETMASK, nullptr, &mask);
  EXPECT_EQ(sigismember(&mask, SIGINT), 0);
}

}  // namespace
