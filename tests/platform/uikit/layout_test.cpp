#include "platform/uikit/UILabel.h"
#include "tests/support/ScreenTest.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class LayoutTest : public ScreenTest {
 protected:
  using View = std::shared_ptr<UIView>;
  using Constraint = std::shared_ptr<NSLayoutConstraint>;
  using Attribute = NSLayoutAttribute;
  static constexpr auto Left = NSLayoutAttributeLeft, Right = NSLayoutAttributeRight, Top = NSLayoutAttributeTop,
                        Bottom = NSLayoutAttributeBottom, Width = NSLayoutAttributeWidth,
                        Height = NSLayoutAttributeHeight, CenterX = NSLayoutAttributeCenterX,
                        CenterY = NSLayoutAttributeCenterY;

  // A subview that goes by constraints.
  static View inside(const View& outer, View added = std::make_shared<UIView>(CGRectMake(1, 2, 3, 4))) {
    added->setTranslatesAutoresizingMaskIntoConstraints(false);
    outer->addSubview(added);
    return added;
  }
  static Constraint constrain(const View& first, Attribute attribute, double constant, const View& second = nullptr,
                              Attribute secondAttribute = {}, double multiplier = 1) {
    auto constraint = NSLayoutConstraint::constraintWithItem(first, attribute, NSLayoutRelationEqual, second,
                                                             secondAttribute, multiplier, constant);
    View holder = first;
    while (second && !second->isDescendantOfView(holder)) holder = holder->superview();
    holder->addConstraint(constraint);
    return constraint;
  }
  CGRect frameOf(const View& of) {
    view()->layoutIfNeeded();
    return of->frame();
  }
};

TEST_F(LayoutTest, everyAttributePlacesAViewOnWholePixels) {
  const View a = inside(view()), b = inside(view()), c = inside(view());
  constrain(a, Width, 100);
  constrain(a, Height, 10, view(), Height, 0.25);
  constrain(a, CenterX, -20, view(), CenterX);
  constrain(a, Bottom, 0, view(), Bottom, 0.9);
  constrain(b, Left, 8, a, Right);
  constrain(b, Right, -8, view(), Right);
  constrain(b, CenterY, 0, a, CenterY);
  constrain(b, Height, 0, b, Width, 0.5);
  constrain(c, Left, 0.4, view(), Left);
  constrain(c, Width, 101);
  constrain(c, Height, 33.4);
  constrain(c, Top, 10.3, view(), Top);
  EXPECT_EQ(frameOf(a), CGRectMake(250, 224, 100, 100));
  EXPECT_EQ(b->frame(), CGRectMake(358, 206, 274, 137));
  EXPECT_EQ(c->frame(), CGRectMake(0, 10, 101, 34));
}

TEST_F(LayoutTest, constraintsReachAcrossLevelsAndGoWithTheViewThatIsTakenOut) {
  const View outer = addView(CGRectMake(100, 50, 200, 100), UIColor::blueColor());
  const View beside = addView(CGRectMake(400, 80, 50, 60), UIColor::greenColor());
  const View inner = inside(outer), quarter = inside(outer);
  const auto right = constrain(inner, Right, -10, beside, Left), height = constrain(inner, Height, 0, beside, Height);
  const auto width = constrain(inner, Width, 30);
  constrain(quarter, Left, 0, outer, Right, 0.25);
  EXPECT_EQ(frameOf(inner), CGRectMake(260, 0, 30, 60));
  EXPECT_EQ(quarter->frame().origin.x, 50) << "a share of what holds both";
  EXPECT_THAT(view()->constraints(), ElementsAre(right, height)) << "held where both views are inside";
  outer->removeFromSuperview();
  EXPECT_THAT(view()->constraints(), IsEmpty());
  EXPECT_THAT(inner->constraints(), ElementsAre(width)) << "its own stay";
}

TEST_F(LayoutTest, contentDecidesWhatConstraintsLeaveOpen) {
  auto label = std::make_shared<UILabel>();
  label->setText("Some text that is long enough to wrap when it gets narrow");
  label->setNumberOfLines(0);
  constrain(inside(view(), label), Top, 5, view(), Top);
  EXPECT_EQ(frameOf(label), (CGRect{{0, 5}, label->intrinsicContentSize()}));
  const double oneLine = label->frame().size.height;
  const auto width = constrain(label, Width, 150);
  EXPECT_GE(frameOf(label).size.height, 3 * oneLine) << "a given width makes it higher";
  width->setConstant(600);
  EXPECT_EQ(frameOf(label).size, (CGSize{600, oneLine}));
}

TEST_F(LayoutTest, theEarlierOfTwoContradictionsWinsAndWhatIsElsewhereContradictsNothing) {
  const View a = inside(view()), b = inside(view());
  const auto first = constrain(a, Width, 100), second = constrain(a, Width, 60);
  EXPECT_EQ(frameOf(a).size.width, 100);
  a->removeConstraint(first);
  a->addConstraint(first);
  EXPECT_THAT(a->constraints(), ElementsAre(second, first));
  EXPECT_EQ(frameOf(a).size.width, 60);

  auto elsewhere = std::make_shared<UIView>(CGRectMake(0, 0, 77, 77));
  b->addConstraint(NSLayoutConstraint::constraintWithItem(b, Width, NSLayoutRelationEqual, elsewhere, Width, 1, 0));
  constrain(b, Width, 11);
  EXPECT_EQ(frameOf(b).size.width, 11);
  elsewhere.reset();
  constrain(b, Height, 12);
  EXPECT_EQ(frameOf(b).size, (CGSize{11, 12})) << "nor what has gone";
  const View fixed = addView(CGRectMake(10, 20, 30, 40), UIColor::blueColor());
  constrain(fixed, Width, 500);
  EXPECT_EQ(frameOf(fixed), CGRectMake(10, 20, 30, 40)) << "who keeps its frame, keeps it";
}

}  // namespace
