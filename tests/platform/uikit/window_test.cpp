#include <QKeyEvent>

#include "platform/foundation/NSNotificationCenter.h"
#include "platform/uikit/UIApplication.h"
#include "platform/uikit/values/UIScreen.h"
#include "tests/support/ScreenTest.h"

namespace {

struct WindowTest : ScreenTest {
  WindowTest() {
    for (const char* name : {UIApplicationDidEnterBackgroundNotification, UIApplicationDidBecomeActiveNotification}) {
      NSNotificationCenter::defaultCenter().addObserver(this, name, nullptr, [this](const NSNotification& posted) {
        diary += posted.name == UIApplicationDidBecomeActiveNotification ? "back " : "away ";
      });
    }
  }
  ~WindowTest() override {
    NSNotificationCenter::defaultCenter().removeObserver(this);
    UIApplication::sharedApplication().setVisible(true);
  }
  std::string taken() {
    QCoreApplication::processEvents();
    return std::exchange(diary, {});
  }

  std::string diary;
};

TEST_F(WindowTest, outOfSightAndBackIsToldAndLosingTheFocusIsNot) {
  for (const auto& [leave, come] :
       {std::pair<std::function<void()>, std::function<void()>>{[&] { window.hide(); }, [&] { window.show(); }},
        {[&] { window.setWindowState(Qt::WindowMinimized); }, [&] { window.setWindowState(Qt::WindowNoState); }}}) {
    leave();
    EXPECT_EQ(taken(), "away ");
    EXPECT_TRUE(UIApplication::sharedApplication().isInBackground());
    come();
    EXPECT_EQ(taken(), "back ");
  }
  QFocusEvent lost(QEvent::FocusOut);
  QCoreApplication::sendEvent(&window, &lost);

  UIWindow second(CGSize{100, 100}, UIGraphics::software);
  EXPECT_EQ(taken(), "") << "a window that was never shown is not out of sight";
  second.makeKeyAndVisible();
  window.hide();
  EXPECT_EQ(taken(), "") << "one of them is to be seen";
  second.hide();
  EXPECT_EQ(taken(), "away ");
}

TEST_F(WindowTest, tellsTheScreenItsSizeHidesThePointerAndShowsAnotherRoot) {
  EXPECT_EQ(window.cursor().shape(), Qt::BlankCursor);
  resize(1024, 576);
  EXPECT_EQ(UIScreen::mainScreen().bounds(), CGRectMake(0, 0, 1024, 576));
  EXPECT_EQ(view()->frame(), CGRectMake(0, 0, 1024, 576));
  auto other = std::make_shared<UIViewController>();
  other->view()->setBackgroundColor(UIColor::blueColor());
  window.setRootViewController(other);
  EXPECT_EQ(colorAt(snapshot(), 5, 5), "0000ff");
  EXPECT_EQ(view()->window(), nullptr);
  EXPECT_TRUE(other->view()->isFirstResponder());
}

}  // namespace
