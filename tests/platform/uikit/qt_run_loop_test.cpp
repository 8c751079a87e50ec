#include "platform/uikit/QtRunLoop.h"

#include <QEventLoop>

#include "tests/support/ScreenTest.h"

using namespace std::chrono_literals;
using testing::ElementsAre;

// What every form of the run loop promises is tested in run_loop_test.cpp, on this one too.

namespace {

class QtRunLoopTest : public testing::Test {
 protected:
  void runUntil(const std::function<bool()>& done) { EXPECT_TRUE(runEventsUntil(done)); }

  QGuiApplication& application = screenApplication();
  QtRunLoop loop;
};

TEST_F(QtRunLoopTest, qtsOwnEventsGetTheirTurnBetweenBlocks) {
  std::vector<int> order;
  QObject receiver;
  loop.post([&] {
    order.push_back(1);
    loop.post([&] { order.push_back(3); });
  });
  QMetaObject::invokeMethod(
      &receiver, [&] { order.push_back(2); }, Qt::QueuedConnection);
  runUntil([&] { return order.size() == 3; });
  EXPECT_THAT(order, ElementsAre(1, 2, 3));
}

TEST_F(QtRunLoopTest, goesOnInsideANestedEventLoop) {
  std::vector<int> order;
  QEventLoop nested;
  loop.post([&] {
    order.push_back(1);
    nested.exec();
    order.push_back(4);
  });
  loop.post([&] { order.push_back(2); });
  loop.schedule(5ms, [&] {
    order.push_back(3);
    nested.quit();
  });
  runUntil([&] { return order.size() == 4; });
  EXPECT_THAT(order, ElementsAre(1, 2, 3, 4));

  order.clear();
  loop.schedule(0ms, [&] {
    order.push_back(1);
    nested.exec();
    order.push_back(3);
  });
  loop.schedule(0ms, [&] {
    order.push_back(2);
    nested.quit();
  });
  runUntil([&] { return order.size() == 3; });
  EXPECT_THAT(order, ElementsAre(1, 2, 3)) << "also from inside a timer";
}

TEST_F(QtRunLoopTest, aBusyLoopDoesNotHoldTimersUp) {
  std::size_t posted = 0;
  bool fired = false;
  std::function<void()> again = [&] {
    ++posted;
    if (!fired) loop.post(again);
  };
  loop.post(again);
  loop.schedule(20ms, [&] { fired = true; });
  runUntil([&] { return fired; });
  EXPECT_GT(posted, 10u);
}

TEST_F(QtRunLoopTest, timersFromOtherThreadsAreOnTime) {
  bool late = false;
  bool soon = false;
  loop.schedule(1h, [&] { late = true; });
  std::thread([&] { loop.schedule(10ms, [&] { soon = true; }); }).join();
  const auto began = loop.now();
  runUntil([&] { return soon; });
  EXPECT_LT(loop.now() - began, 5s);
  EXPECT_FALSE(late);
}

TEST(QtRunLoopInstallation, theFirstViewInstallsOneAndOneOnly) {
  screenApplication();
  ASSERT_EQ(RunLoop::mainIfInstalled(), nullptr);
  {
    VirtualRunLoop other;
    const UIView view;
    EXPECT_EQ(RunLoop::mainIfInstalled(), &other) << "what the host installed stays";
  }
  const UIView view;
  RunLoop* loop = RunLoop::mainIfInstalled();
  EXPECT_NE(dynamic_cast<QtRunLoop*>(loop), nullptr);
  const UIView another;
  EXPECT_EQ(RunLoop::mainIfInstalled(), loop);
  RunLoop::install(nullptr);
}

}  // namespace
