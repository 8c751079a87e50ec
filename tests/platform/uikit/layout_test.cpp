#include "platform/uikit/UILabel.h"
#include "tests/support/ScreenTest.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class LayoutTest : public ScreenTest {
 protected:
  using View = std::shared_ptr<UIView>;
  static constexpr auto Left = NSLayoutAttributeLeft, Right = NSLayoutAttributeRight, Top = NSLayoutAttributeTop,
                        Bottom = NSLayoutAttributeBottom, Width = NSLayoutAttributeWidth,
                        Height = NSLayoutAttributeHeight, CenterX = NSLayoutAttributeCenterX,
                        CenterY = NSLayoutAttributeCenterY;

  // A subview of the controller's view that goes by constraints.
  View constrained() {
    auto added = addView(CGRectMake(1, 2, 3, 4), UIColor::redColor());
    added->setTranslatesAutoresizingMaskIntoConstraints(false);
    return added;
  }
  std::shared_ptr<NSLayoutConstraint> constrain(const View& first, NSLayoutAttribute attribute, double constant,
                                                const View& second = nullptr,
                                                NSLayoutAttribute secondAttribute = NSLayoutAttributeNotAnAttribute,
                                                double multiplier = 1) {
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
  const View a = constrained(), b = constrained(), c = constrained();
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
  auto inner = std::make_shared<UIView>();
  inner->setTranslatesAutoresizingMaskIntoConstraints(false);
  outer->addSubview(inner);
  const View beside = addView(CGRectMake(400, 80, 50, 60), UIColor::greenColor());
  const auto right = constrain(inner, Right, -10, beside, Left);
  const auto top = constrain(inner, Top, 0, beside, Top);
  const auto width = constrain(inner, Width, 30);
  const auto height = constrain(inner, Height, 0, beside, Height);
  EXPECT_EQ(frameOf(inner), CGRectMake(260, 30, 30, 60));
  EXPECT_THAT(outer->constraints(), IsEmpty());
  EXPECT_THAT(view()->constraints(), ElementsAre(right, top, height)) << "held where both views are inside";
  auto quarter = std::make_shared<UIView>();
  quarter->setTranslatesAutoresizingMaskIntoConstraints(false);
  outer->addSubview(quarter);
  constrain(quarter, Left, 0, outer, Right, 0.25);
  EXPECT_EQ(frameOf(quarter).origin.x, 50) << "a share of what holds both";
  outer->removeFromSuperview();
  EXPECT_THAT(view()->constraints(), IsEmpty());
  EXPECT_THAT(inner->constraints(), ElementsAre(width)) << "its own stay";
}

TEST_F(LayoutTest, contentDecidesWhatConstraintsLeaveOpen) {
  auto label = std::make_shared<UILabel>();
  label->setText("Some text that is long enough to wrap when it gets narrow");
  label->setNumberOfLines(0);
  label->setTranslatesAutoresizingMaskIntoConstraints(false);
  view()->addSubview(label);
  constrain(label, Top, 5, view(), Top);
  EXPECT_EQ(frameOf(label).size, label->intrinsicContentSize());
  EXPECT_EQ(label->frame().origin, (CGPoint{0, 5}));
  const double oneLine = label->frame().size.height;
  const auto width = constrain(label, Width, 150);
  EXPECT_EQ(frameOf(label).size.width, 150);
  EXPECT_GE(label->frame().size.height, 3 * oneLine) << "a given width makes it higher";
  width->setConstant(600);
  EXPECT_EQ(frameOf(label).size, (CGSize{600, oneLine}));
}

TEST_F(LayoutTest, theEarlierOfTwoContradictionsWins) {
  const View a = constrained();
  const auto first = constrain(a, Width, 100);
  const auto second = constrain(a, Width, 60);
  EXPECT_EQ(frameOf(a).size.width, 100);
  a->removeConstraint(first);
  EXPECT_EQ(frameOf(a).size.width, 60);
  a->addConstraint(first);
  EXPECT_THAT(a->constraints(), ElementsAre(second, first));
  EXPECT_EQ(frameOf(a).size.width, 60);

  auto elsewhere = std::make_shared<UIView>(CGRectMake(0, 0, 77, 77));
  const View b = constrained();
  b->addConstraint(NSLayoutConstraint::constraintWithItem(b, Width, NSLayoutRelationEqual, elsewhere, Width, 1, 0));
  constrain(b, Width, 11);
  EXPECT_EQ(frameOf(b).size.width, 11) << "what is elsewhere contradicts nothing";
  elsewhere.reset();
  constrain(b, Height, 12);
  EXPECT_EQ(frameOf(b).size, (CGSize{11, 12})) << "nor what has gone";

  const View fixed = addView(CGRectMake(10, 20, 30, 40), UIColor::blueColor());
  constrain(fixed, Width, 500);
  EXPECT_EQ(frameOf(fixed), CGRectMake(10, 20, 30, 40)) << "who keeps its frame, keeps it";
}

class CountsLayouts : public UIView {
 public:
  int layouts = 0;
  double childWidth = 0;

 protected:
  void layoutSubviews() override {
    ++layouts;
    childWidth = subviews().at(0)->frame().size.width;
  }
};

TEST_F(LayoutTest, subviewsAreLaidOutAfterConstraintsAndOnlyWhenNeeded) {
  auto a = std::make_shared<CountsLayouts>();
  auto child = std::make_shared<UIView>();
  child->setTranslatesAutoresizingMaskIntoConstraints(false);
  a->addSubview(child);
  view()->addSubview(a);
  constrain(child, Width, 0, a, Width, 0.5);
  const auto after = [&](const CGRect& frame) {
    a->setFrame(frame);
    snapshot();  // lays out by itself
    return std::pair(a->layouts, a->childWidth);
  };
  EXPECT_EQ(after(CGRectMake(0, 0, 100, 100)), std::pair(1, 50.0));
  EXPECT_EQ(after(CGRectMake(5, 5, 100, 100)), std::pair(1, 50.0)) << "moving is no reason";
  EXPECT_EQ(after(CGRectMake(5, 5, 80, 100)), std::pair(2, 40.0));
  a->setNeedsLayout();
  view()->layoutIfNeeded();
  EXPECT_EQ(a->layouts, 3);
}

}  // namespace
