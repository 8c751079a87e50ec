#include "platform/uikit/UISlider.h"

#include <QtTest/qtesttouch.h>
#include <QMouseEvent>

#include "tests/support/ScreenTest.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Diary = std::vector<std::string>;

// A slider from 0 to 100, whose line is 400 points long and begins at 120.
class SliderTest : public ScreenTest {
 protected:
  SliderTest() {
    slider->setMaximumValue(100);
    slider->setValueChanged([this](UISlider& changed, const UIEvent& event) {
      ASSERT_EQ(event.allTouches().size(), 1u);
      static const char* const phases[] = {"began", "moved", "stationary", "ended", "cancelled"};
      diary.push_back(std::string(phases[event.allTouches()[0].phase()]) + " " +
                      std::to_string(std::lround(changed.value())));
      EXPECT_EQ(changed.isTracking(), event.allTouches()[0].phase() < UITouchPhaseEnded);
      place = event.allTouches()[0].locationInView(*view());
    });
    view()->addSubview(slider);
  }
  void mouse(QEvent::Type type, double x, double y = 180) {
    const auto button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, {x, y}, {x, y}, button, type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton,
                      Qt::NoModifier);
    QCoreApplication::sendEvent(&window, &event);
  }
  // The fingers on the screen, one after the other, from now until touched() goes.
  QTest::QTouchEventSequence touched() { return QTest::touchEvent(&window, screen, true); }
  Diary taken() { return std::exchange(diary, {}); }

  static inline QPointingDevice* const screen = QTest::createTouchDevice();
  Diary diary;
  CGPoint place;
  std::shared_ptr<UISlider> slider = std::make_shared<UISlider>(CGRectMake(102, 155, 436, 50));
};

TEST_F(SliderTest, followsTheMouseAndOneFingerWhereverTheyGo) {
  mouse(QEvent::MouseButtonPress, 220);
  EXPECT_EQ(place.x, 220);
  mouse(QEvent::MouseMove, 320, 10);
  mouse(QEvent::MouseMove, 9999, -50);
  mouse(QEvent::MouseButtonRelease, 160);
  EXPECT_THAT(taken(), ElementsAre("began 25", "moved 50", "moved 100", "ended 10"));
  mouse(QEvent::MouseMove, 320);
  mouse(QEvent::MouseButtonPress, 320, 100);
  EXPECT_THAT(taken(), IsEmpty()) << "beside it";
  mouse(QEvent::MouseButtonRelease, 320, 100);

  touched().press(0, {220, 180});
  touched().stationary(0).press(1, {420, 180});
  touched().move(0, {320, 180}).move(1, {430, 180});
  touched().stationary(0).release(1, {430, 180});
  touched().release(0, {320, 180});
  EXPECT_THAT(taken(), ElementsAre("began 25", "moved 50", "ended 50"));
}

TEST_F(SliderTest, isDraggedByTheArrowsInTheSamePhases) {
  slider->becomeFirstResponder();
  slider->setValue(50);
  key(Qt::Key_Right);
  EXPECT_EQ(place.x, 324) << "the knob's";
  key(Qt::Key_Right, QEvent::KeyPress, true);
  key(Qt::Key_Left);
  mouse(QEvent::MouseButtonPress, 220);
  mouse(QEvent::MouseButtonRelease, 220);
  key(Qt::Key_Left, QEvent::KeyRelease);
  key(Qt::Key_Right, QEvent::KeyRelease);
  EXPECT_THAT(taken(), ElementsAre("began 51", "moved 52", "ended 52")) << "one drag at a time";
  slider->setStep(60);
  window.sendPress(UIPressTypeLeftArrow);
  EXPECT_THAT(taken(), ElementsAre("began 0", "ended 0"));
  EXPECT_FALSE(window.sendPress(UIPressTypeUpArrow));
  slider->setContinuous(false);
  window.sendPress(UIPressTypeRightArrow);
  EXPECT_THAT(taken(), ElementsAre("ended 60"));
}

TEST_F(SliderTest, cancelsADragThatItLosesAndMayGoInTheMiddleOfOne) {
  slider->becomeFirstResponder();
  const std::pair<std::function<void()>, std::function<void()>> drags[] = {
      {[&] { mouse(QEvent::MouseButtonPress, 320); }, [&] { mouse(QEvent::MouseButtonRelease, 320); }},
      {[&] {
         touched().press(0, {320, 180});
       },
       [&] {
         touched().release(0, {320, 180});
       }},
      {[&] { key(Qt::Key_Right); }, [&] { key(Qt::Key_Right, QEvent::KeyRelease); }}};
  for (const auto& [begin, end] : drags) {
    slider->setValue(49);
    begin();
    slider->setHidden(true);
    EXPECT_THAT(taken(), ElementsAre("began 50", "cancelled 50"));
    end();
    slider->setHidden(false);
    slider->becomeFirstResponder();
  }
  EXPECT_THAT(taken(), IsEmpty());
  for (const auto& [begin, end] : drags) {
    const std::weak_ptr<UISlider> watched = slider = std::make_shared<UISlider>(slider->frame());
    view()->addSubview(slider);
    slider->becomeFirstResponder();
    slider->setValueChanged([&](UISlider&, const UIEvent&) {
      slider->removeFromSuperview();
      slider = std::make_shared<UISlider>(CGRectMake(102, 155, 436, 50));
    });
    begin();
    end();
    loop.advance(std::chrono::milliseconds(1));
    EXPECT_TRUE(watched.expired());
  }
}

TEST_F(SliderTest, keepsItsValueWithinItsLimits) {
  slider->setValue(1000);
  EXPECT_EQ(slider->value(), 100);
  slider->setValue(std::nan(""));
  slider->setMaximumValue(-INFINITY);
  EXPECT_EQ(slider->value(), 100);
  slider->setMaximumValue(-5);
  EXPECT_EQ(slider->value(), -5);
  mouse(QEvent::MouseButtonPress, 320);
  EXPECT_EQ(slider->value(), -5) << "nowhere to go";
}

TEST_F(SliderTest, showsItsValueAndWhetherItHasTheKeys) {
  slider->setValue(25);
  const QImage quiet = snapshot();
  EXPECT_EQ(colorAt(quiet, 160, 180), "ffffff");
  EXPECT_THAT(colorAt(quiet, 400, 180), isAbout("404040"));
  EXPECT_NEAR(inkOf(quiet, {200, 100, 40, 160}).height(), 21, 1);
  slider->becomeFirstResponder();
  slider->setValue(75);
  const QImage active = snapshot();
  EXPECT_EQ(colorAt(active, 160, 180), "ffb81c");
  EXPECT_EQ(colorAt(active, 420, 166), "ffb81c");
  EXPECT_NEAR(inkOf(active, {400, 100, 40, 160}).height(), 36, 1);
}

}  // namespace
