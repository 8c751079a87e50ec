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
      NSNotificationCenter::defaultCenter().addObserver(this, name, nullptr, [this](const NSNotification& posted) {
        diary.push_back(posted.name == UIApplicationDidBecomeActiveNotification ? "back" : "away");
      });
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
  EXPECT_THAT(taken(), ElementsAre("away"));
  EXPECT_TRUE(UIApplication::sharedApplication().isInBackground());
  window.show();
  EXPECT_THAT(taken(), ElementsAre("back"));
  window.setWindowState(Qt::WindowMinimized);
  EXPECT_THAT(taken(), ElementsAre("away"));
  window.setWindowState(Qt::WindowNoState);
  EXPECT_THAT(taken(), ElementsAre("back"));
  QFocusEvent lost(QEvent::FocusOut);
  QCoreApplication::sendEvent(&window, &lost);

  UIWindow second(CGSize{100, 100}, UIGraphics::software);
  EXPECT_THAT(taken(), IsEmpty()) << "a window that was never shown is not out of sight";
  second.makeKeyAndVisible();
  window.hide();
  EXPECT_THAT(taken(), IsEmpty()) << "one of them is to be seen";
  second.hide();
  EXPECT_THAT(taken(), ElementsAre("away"));
}

TEST_F(WindowTest, tellsTheScreenItsSizeAndHidesThePointer) {
  EXPECT_EQ(window.cursor().shape(), Qt::BlankCursor);
  resize(1024, 576);
  EXPECT_EQ(UIScreen::mainScreen().bounds(), CGRectMake(0, 0, 1024, 576));
  EXPECT_EQ(view()->frame(), CGRectMake(0, 0, 1024, 576));

  UIWindow whole(std::nullopt, UIGraphics::software);
  whole.makeKeyAndVisible();
  EXPECT_EQ(whole.visibility(), QWindow::FullScreen);
  EXPECT_EQ(whole.size(), whole.screen()->size());
}

TEST_F(WindowTest, showsItsRootOnBlack) {
  addView(CGRectMake(0, 0, 320, 360), UIColor::whiteColor());
  const QImage picture = snapshot();
  EXPECT_EQ(colorAt(picture, 10, 10) + colorAt(picture, 400, 10), "ffffff000000");
  auto other = std::make_shared<UIViewController>();
  other->view()->setBackgroundColor(UIColor::blueColor());
  window.setRootViewController(other);
  EXPECT_EQ(colorAt(snapshot(), 5, 5), "0000ff");
  EXPECT_EQ(view()->window(), nullptr);
  EXPECT_TRUE(other->view()->isFirstResponder());
}

}  // namespace
