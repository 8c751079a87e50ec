#include "ui/Autolayout.h"

#include "tests/support/ScreenTest.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class AutolayoutTest : public ScreenTest {
 protected:
  static std::shared_ptr<NSLayoutConstraint> height(const std::shared_ptr<UIView>& of, double constant) {
    return NSLayoutConstraint::constraintWithItem(of, NSLayoutAttributeHeight, NSLayoutRelationEqual, nullptr,
                                                  NSLayoutAttributeNotAnAttribute, 1, constant);
  }

  std::shared_ptr<UIView> subview = std::make_shared<UIView>(CGRectMake(3, 4, 5, 6));
};

TEST_F(AutolayoutTest, pinsAllEdgesInOrderWithTheSameInset) {
  addSubViewWithAutolayout(view(), subview, 12.5f);
  std::vector<std::pair<int, double>> edges;
  for (const auto& constraint : view()->constraints()) {
    EXPECT_EQ(constraint->firstAttribute(), constraint->secondAttribute());
    edges.emplace_back(constraint->firstAttribute(), constraint->constant());
  }
  EXPECT_THAT(edges, ElementsAre(std::pair(NSLayoutAttributeBottom, -12.5), std::pair(NSLayoutAttributeTop, 12.5),
                                 std::pair(NSLayoutAttributeLeft, 12.5), std::pair(NSLayoutAttributeRight, -12.5)));
  EXPECT_THAT(subview->constraints(), IsEmpty());
}

TEST_F(AutolayoutTest, hidingZeroesTheFirstHeightThatTheViewItselfHolds) {
  view()->addSubview(subview);
  view()->addConstraint(height(subview, 100));
  EXPECT_EQ(heightConstraint(subview), nullptr) << "the superview's";
  hideViewAndSetHeightConstraintsZero(subview);
  EXPECT_TRUE(subview->isHidden());
  EXPECT_TRUE(subview->clipsToBounds());
  EXPECT_EQ(view()->constraints()[0]->constant(), 100);

  const auto first = height(subview, 100), second = height(subview, 90);
  subview->addConstraint(NSLayoutConstraint::constraintWithItem(subview, NSLayoutAttributeWidth, NSLayoutRelationEqual,
                                                                nullptr, NSLayoutAttributeNotAnAttribute, 1, 640));
  for (const auto& constraint : {first, second}) subview->addConstraint(constraint);
  EXPECT_EQ(heightConstraint(subview), first);
  hideViewAndSetHeightConstraintsZero(subview);
  EXPECT_EQ(first->constant(), 0);
  EXPECT_EQ(second->constant(), 90);
}

}  // namespace
