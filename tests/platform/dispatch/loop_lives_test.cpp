// What the forms of the run loop without a screen promise each, and how loops come and go.
#include <gmock/gmock.h>

#include <atomic>
#include <csignal>
#include <thread>

#include "platform/dispatch/Dispatch.h"
#include "platform/dispatch/PlainRunLoop.h"
#include "platform/dispatch/VirtualRunLoop.h"

using namespace std::chrono_literals;

namespace {

TEST(VirtualRunLoopTest, waitingForAGroupMovesTimeAndEndsATestThatWaitsForNothing) {
  VirtualRunLoop loop;
  const auto began = loop.now();
  const auto group = dispatch_group_create();
  dispatch_group_enter(group);
  loop.schedule(5s, [&] { dispatch_group_leave(group); });
  dispatch_group_wait(group);
  EXPECT_EQ(loop.now() - began, 5s);
  dispatch_group_enter(group);
  EXPECT_DEATH(dispatch_group_wait(group), "nothing left on the loop");
}

TEST(PlainRunLoopTest, runsUntilItIsStopped) {
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

TEST(PlainRunLoopTest, aBusyLoopKeepsItsTimersAndItsBound) {
  PlainRunLoop loop;
  std::function<void()> again = [&] { loop.post(again); };
  bool fired = false;
  loop.post(again);
  loop.schedule(20ms, [&] { fired = true; });
  EXPECT_TRUE(loop.runUntil([&] { return fired; }, 5s)) << "what is posted later starves a timer";
  loop.stop();  // ends run() only
  const auto began = loop.now();
  EXPECT_FALSE(loop.runUntil([&] { return loop.now() - began > 10s; }, 50ms));
  EXPECT_LT(loop.now() - began, 5s);
}

TEST(PlainRunLoopTest, workersLeaveSignalsToTheHostsThreads) {
  PlainRunLoop loop;
  const auto blocksInterrupts = [] {
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    return sigismember(&mask, SIGINT);
  };
  std::atomic<int> inWorker{-1};
  loop.performWork([&] { inWorker = blocksInterrupts(); });
  EXPECT_TRUE(loop.runUntil([&] { return inWorker >= 0; }, 5s));
  EXPECT_EQ(inWorker, 1);
  EXPECT_EQ(blocksInterrupts(), 0);
}

template <typename Loop>
void goWithBlocksThatPostAsTheyGo() {
  const auto posts = [] {
    return std::shared_ptr<void>(
        nullptr, [](void*) { EXPECT_TRUE(RunLoop::whileInstalled([](RunLoop& loop) { loop.post([] {}); })); });
  };
  {
    Loop loop;
    loop.post([owned = posts()] {});
    loop.schedule(1h, [owned = posts()] {});
  }
  EXPECT_EQ(RunLoop::mainIfInstalled(), nullptr);
}

TEST(RunLoopInstallation, aLoopThatGoesTakesItsBlocksAlongWhileItStillStands) {
  goWithBlocksThatPostAsTheyGo<PlainRunLoop>();
  goWithBlocksThatPostAsTheyGo<VirtualRunLoop>();
}

TEST(RunLoopInstallation, aHostThatForgotItIsToldAndAnotherThatOutlivesItFindsALoopThatDropsEverything) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // in a process that has had none
  EXPECT_DEATH(RunLoop::main(), "no run loop is installed");
  { PlainRunLoop loop; }
  const auto owned = std::make_shared<int>();
  RunLoop::main().schedule(1h, [owned] {});
  dispatch_async(dispatch_queue_create("late"), [owned] { FAIL(); });
  EXPECT_EQ(owned.use_count(), 1);
}

TEST(RunLoopInstallation, otherThreadsUseTheLoopOnlyWhileItIsThere) {
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

}  // namespace
