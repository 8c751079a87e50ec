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
  ASSERT_TRUE(label && std::dynamic_pointer_cast<UIActivityIndicatorView>(nib->subviews()[1]));
  EXPECT_EQ(label->text(), "From the file");
  EXPECT_EQ(label->font().pointSize, 40);
  EXPECT_EQ(label->parent(), nullptr);
  view()->addSubview(nib);
  nib->setFrame(view()->bounds());
  EXPECT_EQ(label->frame().size.width, 640) << "anchors of the file hold";
  EXPECT_EQ(colorAt(snapshot(), 5, 5), "202040");

  nib->setProperty("turning", true);
  run(500ms);
  EXPECT_NEAR(nib->rotation(), 45, 12) << "animations of the file go by the run loop's time";
  run(600ms);
  EXPECT_EQ(nib->rotation(), 90);
  run(100ms);
  EXPECT_EQ(loop.pendingTimers(), 0u) << "at rest nothing ticks";

  nib->removeFromSuperview();
  nib.reset();
  EXPECT_EQ(label->superview(), nullptr) << "who holds a part of it keeps just that";
}

TEST_F(NibTest, whatIsWrongIsNil) {
  for (const char* name : {"Missing", "../etc/passwd", "NotAView"}) EXPECT_EQ(UINib::instantiate(name), nullptr);
}

}  // namespace
