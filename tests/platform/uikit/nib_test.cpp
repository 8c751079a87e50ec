#include "platform/uikit/UINib.h"

#include "platform/uikit/UIActivityIndicatorView.h"
#include "platform/uikit/UILabel.h"
#include "tests/support/ScreenTest.h"

using namespace std::chrono_literals;

namespace {

class NibTest : public ScreenTest {};

TEST_F(NibTest, makesViewsThatTheirSuperviewsHold) {
  auto nib = UINib::instantiate("TestInterface");
  ASSERT_TRUE(nib);
  ASSERT_EQ(nib->subviews().size(), 2u);
  const auto label = std::dynamic_pointer_cast<UILabel>(nib->subviews()[0]);
  ASSERT_TRUE(label);
  EXPECT_EQ(label->text(), "From the file");
  EXPECT_EQ(label->font().pointSize, 40);
  EXPECT_EQ(label->textAlignment(), NSTextAlignmentCenter);
  EXPECT_EQ(label->superview(), nib);
  EXPECT_EQ(label->parent(), nullptr);
  const auto wheel = std::dynamic_pointer_cast<UIActivityIndicatorView>(nib->subviews()[1]);
  ASSERT_TRUE(wheel);

  view()->addSubview(nib);
  nib->setFrame(view()->bounds());
  EXPECT_EQ(label->frame().size.width, 640) << "anchors of the file hold";
  const QImage picture = snapshot();
  EXPECT_EQ(colorAt(picture, 5, 5), "202040");
  EXPECT_FALSE(inkOf(picture, QRect(0, 0, 640, 100), 0xff202040).isEmpty());

  const std::weak_ptr<UIView> watched = label;
  nib->removeFromSuperview();
  nib.reset();
  EXPECT_FALSE(watched.expired());
  EXPECT_EQ(label->superview(), nullptr) << "who holds a part of it keeps just that";
}

TEST_F(NibTest, whatIsWrongIsNil) {
  EXPECT_EQ(UINib::instantiate("Missing"), nullptr);
  EXPECT_EQ(UINib::instantiate("../etc/passwd"), nullptr);
  EXPECT_EQ(UINib::instantiate("NotAView"), nullptr);
}

TEST_F(NibTest, animationsOfTheFileGoByTheRunLoopsTime) {
  const auto nib = UINib::instantiate("TestInterface");
  view()->addSubview(nib);
  nib->setProperty("turning", true);
  run(16ms);
  EXPECT_LT(nib->rotation(), 20);
  run(500ms);
  EXPECT_NEAR(nib->rotation(), 45, 12);
  run(600ms);
  EXPECT_EQ(nib->rotation(), 90);
  run(100ms);
  EXPECT_EQ(loop.pendingTimers(), 0u) << "at rest nothing ticks";
}

}  // namespace
