// What the run loop under a screen has to do besides what every form promises.
#include "platform/uikit/QtRunLoop.h"

#include <QEventLoop>

#include "tests/support/ScreenTest.h"

using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

struct QtRunLoopTest : testing::Test {
  QGuiApplication& application = screenApplication();
  QtRunLoop loop;
};

TEST_F(QtRunLoopTest, qtsOwnEventsAndTimersGetTheirTurnBetweenBlocks) {
  std::vector<int> order;
  QObject receiver;
  loop.post([&] {
    order.push_back(1);
    loop.post([&] { order.push_back(3); });
  });
  const auto second = [&] { order.push_back(2); };
  QMetaObject::invokeMethod(&receiver, second, Qt::QueuedConnection);
  EXPECT_TRUE(runEventsUntil([&] { return order.size() == 3; }));
  EXPECT_THAT(order, ElementsAre(1, 2, 3));

  bool fired = false;
  std::function<void()> again = [&] {
    if (!fired) loop.post(again);
  };
  loop.post(again);
  loop.schedule(20ms, [&] { fired = true; });
  EXPECT_TRUE(runEventsUntil([&] { return fired; })) << "a busy loop holds its timers up";
}

TEST_F(QtRunLoopTest, goesOnInsideANestedEventLoop) {
  std::vector<int> order;
  QEventLoop nested;
  const auto nest = [&] {
    order.push_back(1);
    nested.exec();
    order.push_back(3);
  };
  const auto leave = [&] {
    order.push_back(2);
    nested.quit();
  };
  loop.post(nest);
  loop.schedule(5ms, leave);
  EXPECT_TRUE(runEventsUntil([&] { return order.size() == 3; }));
  loop.schedule(0ms, nest);
  loop.schedule(0ms, leave);
  EXPECT_TRUE(runEventsUntil([&] { return order.size() == 6; })) << "also from inside a timer";
  EXPECT_THAT(order, ElementsAre(1, 2, 3, 1, 2, 3));
}

TEST_F(QtRunLoopTest, timersFromOtherThreadsAreOnTime) {
  bool soon = false;
  loop.schedule(1h, [] { FAIL(); });
  std::thread([&] { loop.schedule(10ms, [&] { soon = true; }); }).join();
  EXPECT_TRUE(runEventsUntil([&] { return soon; }));
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
