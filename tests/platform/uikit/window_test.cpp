#include <QKeyEvent>

#include "platform/foundation/NSNotificationCenter.h"
#include "platform/uikit/UIApplication.h"
#include "platform/uikit/values/UIScreen.h"
#include "tests/support/ScreenTest.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class WindowTest : public ScreenTest {
 protected:
  WindowTest() {
    for (const char* name : {UIApplicationDidEnterBackgroundNotification, UIApplicationDidBecomeActiveNotification}) {
      NSNotificationCenter::defaultCenter().addObserver(
          this, name, nullptr, [this](const NSNotification& notification) { diary.push_back(notification.name); });
    }
  }
  ~WindowTest() override {
    NSNotificationCenter::defaultCenter().removeObserver(this);
    UIApplication::sharedApplication().setVisible(true);
  }
  std::vector<std::string> taken() {
    QCoreApplication::processEvents();
    return std::exchange(diary, {});
  }

  std::vector<std::string> diary;
};

TEST_F(WindowTest, outOfSightAndBackIsToldAndLosingTheFocusIsNot) {
  window.hide();
  EXPECT_THAT(taken(), ElementsAre("UIApplicationDidEnterBackgroundNotification"));
  EXPECT_TRUE(UIApplication::sharedApplication().isInBackground());
  window.show();
  EXPECT_THAT(taken(), ElementsAre("UIApplicationDidBecomeActiveNotification"));
  window.setWindowState(Qt::WindowMinimized);
  EXPECT_THAT(taken(), ElementsAre("UIApplicationDidEnterBackgroundNotification"));
  window.setWindowState(Qt::WindowNoState);
  EXPECT_THAT(taken(), ElementsAre("UIApplicationDidBecomeActiveNotification"));

  QWindow other;
  other.resize(10, 10);
  other.show();
  other.requestActivate();
  EXPECT_THAT(taken(), IsEmpty());
  QFocusEvent lost(QEvent::FocusOut);
  QCoreApplication::sendEvent(&window, &lost);
  EXPECT_THAT(taken(), IsEmpty());
}

TEST_F(WindowTest, theProgramIsInSightWhileOneOfItsWindowsIs) {
  auto second = std::make_unique<UIWindow>(CGSize{100, 100}, UIGraphics::software);
  EXPECT_THAT(taken(), IsEmpty()) << "a window that was never shown is not out of sight";
  second->makeKeyAndVisible();
  window.hide();
  EXPECT_THAT(taken(), IsEmpty());
  second->hide();
  EXPECT_THAT(taken(), ElementsAre("UIApplicationDidEnterBackgroundNotification"));
  second->show();
  taken();
  second.reset();
  taken();
}

TEST_F(WindowTest, tellsTheScreenItsSizeAndHidesThePointer) {
  EXPECT_EQ(UIScreen::mainScreen().bounds(), CGRectMake(0, 0, 640, 360));
  EXPECT_EQ(window.cursor().shape(), Qt::BlankCursor);
  resize(1024, 576);
  EXPECT_EQ(UIScreen::mainScreen().bounds(), CGRectMake(0, 0, 1024, 576));
  EXPECT_EQ(view()->frame(), CGRectMake(0, 0, 1024, 576));
  UIScreen::mainScreen().setSize({0, 10});
  EXPECT_EQ(UIScreen::mainScreen().bounds(), CGRectMake(0, 0, 1024, 576)) << "nonsense is ignored";
}

TEST_F(WindowTest, withoutASizeItCoversTheScreen) {
  UIWindow whole(std::nullopt, UIGraphics::software);
  whole.setRootViewController(std::make_shared<UIViewController>());
  whole.makeKeyAndVisible();
  QCoreApplication::processEvents();
  const QSize screen = whole.screen()->size();
  EXPECT_EQ(whole.rootViewController()->view()->frame(), CGRectMake(0, 0, screen.width(), screen.height()));
  EXPECT_EQ(whole.visibility(), QWindow::FullScreen);
}

TEST_F(WindowTest, isBlackBehindItsViewsAndCanBeWrittenAsAPicture) {
  const auto white = addView(CGRectMake(0, 0, 320, 360), UIColor::whiteColor());
  const std::string path = testing::TempDir() + "window.png";
  ASSERT_TRUE(window.writeSnapshot(path));
  const QImage picture(QString::fromStdString(path));
  EXPECT_EQ(picture.size(), QSize(640, 360));
  EXPECT_EQ(colorAt(picture, 10, 10), "ffffff");
  EXPECT_EQ(colorAt(picture, 400, 10), "000000");
  EXPECT_FALSE(window.writeSnapshot("/nowhere/at/all.png"));
}

TEST_F(WindowTest, anotherRootTakesThePlace) {
  view()->setBackgroundColor(UIColor::redColor());
  EXPECT_EQ(colorAt(snapshot(), 5, 5), "ff0000");
  auto other = std::make_shared<UIViewController>();
  other->view()->setBackgroundColor(UIColor::blueColor());
  window.setRootViewController(other);
  EXPECT_EQ(colorAt(snapshot(), 5, 5), "0000ff");
  EXPECT_EQ(view()->window(), nullptr);
  EXPECT_TRUE(other->view()->isFirstResponder());
  window.setRootViewController(nullptr);
  EXPECT_EQ(colorAt(snapshot(), 5, 5), "000000");
}

TEST_F(WindowTest, howTheProcessDrawsIsDecidedOnce) {
  EXPECT_EQ(UIChooseGraphics(), screenGraphics());
  EXPECT_EQ(UIChooseGraphics(UIGraphics::gpu), screenGraphics());
  EXPECT_EQ(UIChooseGraphics(UIGraphics::software), screenGraphics());
}

// With no session bus and no X server there is nobody to ask; it must not matter.
TEST_F(WindowTest, theScreenSaverCanBeKeptAwayWhereThereIsNone) {
  auto& app = UIApplication::sharedApplication();
  app.setIdleTimerDisabled(true);
  app.setIdleTimerDisabled(true);
  EXPECT_TRUE(app.isIdleTimerDisabled());
  run(std::chrono::minutes(1));
  app.setIdleTimerDisabled(false);
  app.setIdleTimerDisabled(false);
  EXPECT_FALSE(app.isIdleTimerDisabled());
  EXPECT_EQ(loop.pendingTimers(), 0u);
}

}  // namespace
