#include "platform/uikit/LayoutEquations.h"
#include "platform/uikit/UILabel.h"
#include "tests/support/ScreenTest.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

TEST(LayoutEquations, whatComesFirstCounts) {
  LayoutEquations equations(3);
  EXPECT_TRUE(equations.add({{0, 1}, {1, 1}}, 10));
  EXPECT_TRUE(equations.add({{0, 1}, {1, -1}}, 4));
  EXPECT_FALSE(equations.add({{0, 1}}, 5)) << "contradicts both";
  EXPECT_TRUE(equations.add({{0, 2}}, 14)) << "says the same again";
  EXPECT_THAT(equations.solution(), ElementsAre(7, 3, 0)) << "the third is left open";
  EXPECT_TRUE(equations.add({{2, 0.5}, {1, 1}}, 4));
  EXPECT_THAT(equations.solution(), ElementsAre(7, 3, 2));
}

class LayoutTest : public ScreenTest {
 protected:
  using View = std::shared_ptr<UIView>;

  // A subview of the controller's view that goes by constraints.
  View constrained() {
    auto added = addView(CGRectMake(1, 2, 3, 4), UIColor::redColor());
    added->setTranslatesAutoresizingMaskIntoConstraints(false);
    return added;
  }
  std::shared_ptr<NSLayoutConstraint> constrain(const View& first, NSLayoutAttribute attribute, double constant,
                                                const View& second = nullptr,
                                                NSLayoutAttribute secondAttribute = NSLayoutAttributeNotAnAttribute,
                                                double multiplier = 1,
                                                NSLayoutRelation relation = NSLayoutRelationEqual) {
    auto constraint = NSLayoutConstraint::constraintWithItem(first, attribute, relation, second, secondAttribute,
                                                             multiplier, constant);
    constraint->setActive(true);
    return constraint;
  }
  CGRect frameOf(const View& of) {
    view()->layoutIfNeeded();
    return of->frame();
  }
};

TEST_F(LayoutTest, everyAttributePlacesAView) {
  const View a = constrained();
  constrain(a, NSLayoutAttributeWidth, 100);
  constrain(a, NSLayoutAttributeHeight, 10, view(), NSLayoutAttributeHeight, 0.25);
  constrain(a, NSLayoutAttributeCenterX, -20, view(), NSLayoutAttributeCenterX);
  constrain(a, NSLayoutAttributeBottom, 0, view(), NSLayoutAttributeBottom, 0.9);
  EXPECT_EQ(frameOf(a), CGRectMake(250, 224, 100, 100));

  const View b = constrained();
  constrain(b, NSLayoutAttributeLeft, 8, a, NSLayoutAttributeRight);
  constrain(b, NSLayoutAttributeRight, -8, view(), NSLayoutAttributeRight);
  constrain(b, NSLayoutAttributeCenterY, 0, a, NSLayoutAttributeCenterY);
  constrain(b, NSLayoutAttributeHeight, 0, b, NSLayoutAttributeWidth, 0.5);
  EXPECT_EQ(frameOf(b), CGRectMake(358, 206, 274, 137)) << "with the centre at the nearest whole pixel";
}

TEST_F(LayoutTest, constraintsReachAcrossLevels) {
  const View outer = addView(CGRectMake(100, 50, 200, 100), UIColor::blueColor());
  auto inner = std::make_shared<UIView>();
  inner->setTranslatesAutoresizingMaskIntoConstraints(false);
  outer->addSubview(inner);
  const View beside = addView(CGRectMake(400, 80, 50, 60), UIColor::greenColor());
  const auto right = constrain(inner, NSLayoutAttributeRight, -10, beside, NSLayoutAttributeLeft);
  const auto top = constrain(inner, NSLayoutAttributeTop, 0, beside, NSLayoutAttributeTop);
  const auto width = constrain(inner, NSLayoutAttributeWidth, 30);
  const auto height = constrain(inner, NSLayoutAttributeHeight, 0, beside, NSLayoutAttributeHeight);
  EXPECT_EQ(frameOf(inner), CGRectMake(260, 30, 30, 60));
  EXPECT_THAT(outer->constraints(), IsEmpty());
  EXPECT_THAT(view()->constraints(), ElementsAre(right, top, height)) << "held where both views are inside";
  EXPECT_THAT(inner->constraints(), ElementsAre(width));
}

TEST_F(LayoutTest, boundsHoldOnlyWhereTheyMust) {
  struct Case {
    double asked, got;
  };
  for (const Case& c : {Case{50, 100}, Case{200, 200}, Case{500, 300}}) {
    const View content = constrained();
    constrain(content, NSLayoutAttributeWidth, c.asked);
    const View holder = constrained();
    const auto bound = [&](NSLayoutRelation relation, double constant, const View& other = nullptr) {
      constrain(holder, NSLayoutAttributeWidth, constant, other,
                other ? NSLayoutAttributeWidth : NSLayoutAttributeNotAnAttribute, 1, relation);
    };
    bound(NSLayoutRelationGreaterThanOrEqual, 0, content);
    bound(NSLayoutRelationGreaterThanOrEqual, 100);
    bound(NSLayoutRelationLessThanOrEqual, 300);
    EXPECT_EQ(frameOf(holder).size.width, c.got);
    EXPECT_EQ(content->frame().size.width, c.asked);
  }
}

TEST_F(LayoutTest, contentDecidesWhatConstraintsLeaveOpen) {
  auto label = std::make_shared<UILabel>();
  label->setText("Some text that is long enough to wrap when it gets narrow");
  label->setNumberOfLines(0);
  label->setTranslatesAutoresizingMaskIntoConstraints(false);
  view()->addSubview(label);
  constrain(label, NSLayoutAttributeTop, 5, view(), NSLayoutAttributeTop);
  EXPECT_EQ(frameOf(label).size, label->intrinsicContentSize());
  EXPECT_EQ(label->frame().origin, (CGPoint{0, 5}));

  const double oneLine = label->frame().size.height;
  const auto width = constrain(label, NSLayoutAttributeWidth, 150);
  EXPECT_EQ(frameOf(label).size.width, 150);
  EXPECT_GE(label->frame().size.height, 3 * oneLine) << "a given width makes it higher";
  width->setConstant(600);
  EXPECT_EQ(frameOf(label).size, (CGSize{600, oneLine}));
}

TEST_F(LayoutTest, theEarlierOfTwoContradictionsWins) {
  const View a = constrained();
  const auto first = constrain(a, NSLayoutAttributeWidth, 100);
  const auto second = constrain(a, NSLayoutAttributeWidth, 60);
  EXPECT_EQ(frameOf(a).size.width, 100);
  EXPECT_THAT(a->constraints(), ElementsAre(first, second));
  first->setActive(false);
  EXPECT_EQ(frameOf(a).size.width, 60);
  first->setActive(true);
  EXPECT_THAT(a->constraints(), ElementsAre(second, first));
  EXPECT_EQ(frameOf(a).size.width, 60);

  const View fixed = addView(CGRectMake(10, 20, 30, 40), UIColor::blueColor());
  constrain(fixed, NSLayoutAttributeWidth, 500);
  EXPECT_EQ(frameOf(fixed), CGRectMake(10, 20, 30, 40)) << "who keeps its frame, keeps it";
}

TEST_F(LayoutTest, constraintsOfWhatIsTakenOutGoAlong) {
  const View a = constrained();
  const View stays = constrained();
  constrain(a, NSLayoutAttributeWidth, 10);
  constrain(a, NSLayoutAttributeLeft, 10, view(), NSLayoutAttributeLeft);
  auto inside = std::make_shared<UIView>();
  a->addSubview(inside);
  const auto deep = constrain(inside, NSLayoutAttributeLeft, 10, stays, NSLayoutAttributeLeft);
  const auto own = constrain(stays, NSLayoutAttributeLeft, 33, view(), NSLayoutAttributeLeft);
  a->removeFromSuperview();
  EXPECT_THAT(view()->constraints(), ElementsAre(own));
  EXPECT_FALSE(deep->isActive());
  EXPECT_EQ(a->constraints().size(), 1u) << "its own stay";
  EXPECT_EQ(frameOf(stays).origin.x, 33);
}

TEST_F(LayoutTest, aConstraintWhoseViewHasGoneCountsNoMore) {
  const View a = constrained();
  auto gone = std::make_shared<UIView>(CGRectMake(0, 0, 77, 77));
  a->addConstraint(NSLayoutConstraint::constraintWithItem(a, NSLayoutAttributeWidth, NSLayoutRelationEqual, gone,
                                                          NSLayoutAttributeWidth, 1, 0));
  constrain(a, NSLayoutAttributeWidth, 11);
  EXPECT_EQ(frameOf(a).size.width, 11) << "it waits while its views are in different trees";
  gone.reset();
  constrain(a, NSLayoutAttributeHeight, 12);
  EXPECT_EQ(frameOf(a).size, (CGSize{11, 12}));
}

TEST_F(LayoutTest, edgesLieOnWholePixels) {
  const View a = constrained();
  constrain(a, NSLayoutAttributeWidth, 101);
  constrain(a, NSLayoutAttributeHeight, 33.4);
  constrain(a, NSLayoutAttributeCenterX, 0, view(), NSLayoutAttributeCenterX);
  constrain(a, NSLayoutAttributeTop, 10.3, view(), NSLayoutAttributeTop);
  const CGRect frame = frameOf(a);
  EXPECT_EQ(frame.origin.y, 10);
  EXPECT_EQ(frame.size.height, 34);
  EXPECT_EQ(frame.origin.x, std::round(frame.origin.x));
}

class CountsLayouts : public UIView {
 public:
  int layouts = 0;
  CGRect child;

 protected:
  void layoutSubviews() override {
    ++layouts;
    child = subviews().empty() ? CGRectZero : subviews()[0]->frame();
  }
};

TEST_F(LayoutTest, subviewsAreLaidOutAfterConstraintsAndOnlyWhenNeeded) {
  auto a = std::make_shared<CountsLayouts>();
  a->setFrame(CGRectMake(0, 0, 100, 100));
  auto child = std::make_shared<UIView>();
  child->setTranslatesAutoresizingMaskIntoConstraints(false);
  a->addSubview(child);
  view()->addSubview(a);
  constrain(child, NSLayoutAttributeWidth, 0, a, NSLayoutAttributeWidth, 0.5);
  view()->layoutIfNeeded();
  EXPECT_EQ(a->layouts, 1);
  EXPECT_EQ(a->child.size.width, 50);
  view()->layoutIfNeeded();
  EXPECT_EQ(a->layouts, 1);
  a->setFrame(CGRectMake(5, 5, 100, 100));
  view()->layoutIfNeeded();
  EXPECT_EQ(a->layouts, 1) << "moving is no reason";
  a->setFrame(CGRectMake(5, 5, 80, 100));
  snapshot();
  EXPECT_EQ(a->layouts, 2) << "done before a picture by itself";
  EXPECT_EQ(a->child.size.width, 40);
  a->setNeedsLayout();
  snapshot();
  EXPECT_EQ(a->layouts, 3);
}

}  // namespace
