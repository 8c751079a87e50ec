#include "platform/uikit/UINib.h"

#include "tests/support/ScreenTest.h"

using namespace std::chrono_literals;

namespace {

class NibTest : public ScreenTest {};

TEST_F(NibTest, makesViewsThatTheirSuperviewsHold) {
  auto nib = UINib::instantiate("TestInterface");
  ASSERT_TRUE(nib && nib->subviews().size() == 1);
  const auto part = nib->subviews()[0];
  EXPECT_EQ(part->parent(), nullptr);
  view()->addSubview(nib);
  nib->setFrame(view()->bounds());
  EXPECT_EQ(part->frame().size.width, 640) << "anchors of the file hold";
  EXPECT_EQ(colorAt(snapshot(), 5, 5), "202040");

  nib->setProperty("turning", true);
  run(500ms);
  EXPECT_NEAR(nib->rotation(), 45, 12) << "animations of the file go by the run loop's time";
  run(700ms);
  EXPECT_EQ(nib->rotation(), 90);
  EXPECT_EQ(loop.pendingTimers(), 0u) << "at rest nothing ticks";

  nib->removeFromSuperview();
  nib.reset();
  EXPECT_EQ(part->superview(), nullptr) << "who holds a part of it keeps just that";
  for (const char* name : {"Missing", "../etc/passwd", "NotAView"}) EXPECT_EQ(UINib::instantiate(name), nullptr);
}

}  // namespace
