#include "ui/Autolayout.h"

#include <algorithm>

void addSubViewWithAutolayout(const std::shared_ptr<UIView>& superview, const std::shared_ptr<UIView>& subview,
                              float offset) {
  subview->setTranslatesAutoresizingMaskIntoConstraints(false);
  superview->addSubview(subview);
  const auto pin = [&](NSLayoutAttribute edge, double constant) {
    superview->addConstraint(
        NSLayoutConstraint::constraintWithItem(subview, edge, NSLayoutRelationEqual, superview, edge, 1.0, constant));
  };
  pin(NSLayoutAttributeBottom, -offset);
  pin(NSLayoutAttributeTop, offset);
  pin(NSLayoutAttributeLeft, offset);
  pin(NSLayoutAttributeRight, -offset);
}

void addSubViewWithAutolayout(const std::shared_ptr<UIView>& superview, const std::shared_ptr<UIView>& subview) {
  addSubViewWithAutolayout(superview, subview, 0);
}

void hideViewAndSetHeightConstraintsZero(const std::shared_ptr<UIView>& view) {
  view->setHidden(true);
  view->setClipsToBounds(true);
  if (const auto height = heightConstraint(view)) {
    height->setConstant(0);
    view->setNeedsLayout();
  }
}

std::shared_ptr<NSLayoutConstraint> heightConstraint(const std::shared_ptr<UIView>& view) {
  const auto& constraints = view->constraints();
  const auto found = std::find_if(constraints.begin(), constraints.end(), [](const auto& constraint) {
    return constraint->firstAttribute() == NSLayoutAttributeHeight;
  });
  return found == constraints.end() ? nullptr : *found;
}
