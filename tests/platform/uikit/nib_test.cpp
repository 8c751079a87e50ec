#include "platform/uikit/UINib.h"

#include "tests/support/ScreenTest.h"

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

  nib->removeFromSuperview();
  nib.reset();
  EXPECT_EQ(part->superview(), nullptr) << "who holds a part of it keeps just that";
  for (const char* name : {"Missing", "../etc/passwd", "NotAView"}) EXPECT_EQ(UINib::instantiate(name), nullptr);
}

}  // namespace
