#include <QSignalSpy>
#include <QTest>

#include "platform/uikit/UIToolbar.h"
#include "tests/support/ScreenTest.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class ToolbarTest : public ScreenTest {
 protected:
  ToolbarTest() { putUp(); }
  void putUp() {
    view()->addSubview(bar);
    bar->setItems({play, std::make_shared<UIBarButtonItem>(std::make_shared<UIView>()), stop});
    bar->becomeFirstResponder();
    bar->layoutIfNeeded();
  }
  std::shared_ptr<UIBarButtonItem> button(UIBarButtonSystemItem kind) {
    return std::make_shared<UIBarButtonItem>(kind, [this, kind](UIBarButtonItem&) { diary.push_back(kind), then(); });
  }
  void mouse(QTest::MouseAction action, const QPoint& place) {
    QTest::mouseEvent(action, &window, Qt::LeftButton, {}, place);
  }
  void tap(const QPoint& place) {
    static auto* device = QTest::createTouchDevice();
    QTest::touchEvent(&window, device).press(0, place, &window);
    QTest::touchEvent(&window, device).release(0, place, &window);
  }
  std::vector<int> notes() { return std::exchange(diary, {}); }

  static constexpr QPoint onPlay{106, 280}, onStop{560, 280};
  std::vector<int> diary;
  std::function<void()> then = [] {};
  std::shared_ptr<UIBarButtonItem> play = button(UIBarButtonSystemItemPlayPause);
  std::shared_ptr<UIBarButtonItem> stop = button(UIBarButtonSystemItemStop);
  std::shared_ptr<UIToolbar> bar = std::make_shared<UIToolbar>(CGRectMake(20, 220, 600, 120));
};

TEST_F(ToolbarTest, aMouseOrAFingerPressesWhatItGoesDownAndUpOnWhileTheBarShows) {
  mouse(QTest::MouseClick, onPlay);
  tap(onStop);
  EXPECT_THAT(notes(), ElementsAre(UIBarButtonSystemItemPlayPause, UIBarButtonSystemItemStop));
  EXPECT_EQ(bar->focusedItem(), stop);
  mouse(QTest::MousePress, onPlay);
  mouse(QTest::MouseMove, onStop);
  mouse(QTest::MouseRelease, onStop);
  QTest::keyPress(&window, Qt::Key_Return);
  EXPECT_TRUE(bar->isPressed());
  bar->setHidden(true);
  QTest::keyRelease(&window, Qt::Key_Return);
  mouse(QTest::MouseClick, onPlay);
  EXPECT_FALSE(bar->isPressed());
  EXPECT_THAT(notes(), IsEmpty());
}

TEST_F(ToolbarTest, aPointerTakesTheFocusAlongWhenItMovesAndNotWhenTheBarComesUpUnderIt) {
  bar->setHidden(true);
  mouse(QTest::MouseMove, onStop);
  bar->setHidden(false);
  QSignalSpy drawn(&window, &QQuickWindow::frameSwapped);
  EXPECT_TRUE(runEventsUntil([&] { return bar->update(), drawn.count() >= 3; }));
  EXPECT_EQ(bar->focusedItem(), play);
  mouse(QTest::MouseMove, onStop + QPoint(3, 0));
  EXPECT_EQ(bar->focusedItem(), stop);
}

TEST_F(ToolbarTest, mayGoFromInsideAButton) {
  const std::vector<std::function<void()>> ways{[this] { window.sendPress(UIPressTypeSelect); },
                                                [this] { mouse(QTest::MouseClick, onPlay); }, [this] { tap(onPlay); }};
  then = [this] { bar->removeFromSuperview(), bar = std::make_shared<UIToolbar>(bar->frame()); };
  for (const auto& press : ways) {
    const std::weak_ptr<UIToolbar> gone = bar;
    press();
    EXPECT_THAT(notes(), ElementsAre(UIBarButtonSystemItemPlayPause));
    run(std::chrono::milliseconds(20));
    EXPECT_TRUE(gone.expired());
    putUp();
  }
}

}  // namespace
