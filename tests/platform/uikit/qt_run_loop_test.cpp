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

TEST_F(QtRunLoopTest, qtsOwnEventsAndTimersGetTheirTurnInABusyLoop) {
  QObject receiver;
  bool isToldByQt = false;
  bool fired = false;
  std::function<void()> again = [&] {
    if (!fired || !isToldByQt) loop.post(again);
  };
  loop.post(again);
  loop.schedule(20ms, [&] { fired = true; });
  QMetaObject::invokeMethod(
      &receiver, [&] { isToldByQt = true; }, Qt::QueuedConnection);
  EXPECT_TRUE(runEventsUntil([&] { return fired && isToldByQt; })) << "a busy loop holds others up";
}

TEST_F(QtRunLoopTest, goesOnInsideANestedEventLoopAlsoFromATimer) {
  std::vector<int> order;
  QEventLoop nested;
  loop.schedule(0ms, [&] {
    order.push_back(1);
    nested.exec();
    order.push_back(3);
  });
  loop.schedule(0ms, [&] {
    order.push_back(2);
    nested.quit();
  });
  EXPECT_TRUE(runEventsUntil([&] { return order.size() == 3; }));
  EXPECT_THAT(order, ElementsAre(1, 2, 3));
}

TEST_F(QtRunLoopTest, timersFromOtherThreadsAreOnTime) {
  bool soon = false;
  loop.schedule(1h, [] { FAIL(); });
  std::thread([&] { loop.schedule(10ms, [&] { soon = true; }); }).join();
  EXPECT_TRUE(runEventsUntil([&] { return soon; }));
}

TEST(QtRunLoopInstallation, theFirstViewInstallsOneUnlessAHostHas) {
  screenApplication();
  {
    VirtualRunLoop other;
    const UIView view;
    EXPECT_EQ(RunLoop::mainIfInstalled(), &other);
  }
  const UIView view;
  RunLoop* loop = RunLoop::mainIfInstalled();
  EXPECT_TRUE(dynamic_cast<QtRunLoop*>(loop));
  const UIView another;
  EXPECT_EQ(RunLoop::mainIfInstalled(), loop);
  RunLoop::install(nullptr);
}

}  // namespace
