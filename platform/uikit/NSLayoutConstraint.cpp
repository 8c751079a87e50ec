#include "platform/uikit/NSLayoutConstraint.h"

#include "platform/foundation/MainThread.h"
#include "platform/uikit/UIView.h"

std::shared_ptr<NSLayoutConstraint> NSLayoutConstraint::constraintWithItem(
    const std::shared_ptr<UIView>& first, NSLayoutAttribute firstAttribute, NSLayoutRelation,
    const std::shared_ptr<UIView>& second, NSLayoutAttribute secondAttribute, double multiplier, double constant) {
  YMR_ASSERT_MAIN_THREAD();
  std::shared_ptr<NSLayoutConstraint> constraint(new NSLayoutConstraint);
  constraint->first_ = first;
  constraint->firstAttribute_ = firstAttribute;
  constraint->second_ = second;
  constraint->secondAttribute_ = second ? secondAttribute : NSLayoutAttributeNotAnAttribute;
  constraint->multiplier_ = multiplier;
  constraint->constant_ = constant;
  return constraint;
}

void NSLayoutConstraint::setConstant(double constant) {
  if (constant_ == constant) return;
  constant_ = constant;
  if (const auto holder = holder_.lock()) holder->setNeedsSolving();
}
