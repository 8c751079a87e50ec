#pragma once

#include <memory>

#include "platform/Export.h"

class UIView;

// The platform's numbers.
enum NSLayoutAttribute {
  NSLayoutAttributeNotAnAttribute = 0,
  NSLayoutAttributeLeft = 1,
  NSLayoutAttributeRight = 2,
  NSLayoutAttributeTop = 3,
  NSLayoutAttributeBottom = 4,
  NSLayoutAttributeWidth = 7,
  NSLayoutAttributeHeight = 8,
  NSLayoutAttributeCenterX = 9,
  NSLayoutAttributeCenterY = 10,
};

enum NSLayoutRelation {
  NSLayoutRelationEqual = 0,
};

// first.attribute = multiplier x second.attribute + constant. Main thread.
//
// Held by the view that it was added to, which is one that both views are inside of (or is itself). Views are held
// weakly; a constraint that has lost one counts no more, and one between views of different trees waits. All
// constraints are required. When they contradict each other the frame of a view that keeps its frame wins, then the
// earlier constraint: outer views' first, and each view's in the order of its list.
//
// Left out: inequalities, priorities, leading and trailing, baselines, margins, the visual format.
class YMR_API NSLayoutConstraint {
 public:
  // `second` nil with NotAnAttribute: a width or height that is just the constant.
  static std::shared_ptr<NSLayoutConstraint> constraintWithItem(
      const std::shared_ptr<UIView>& first, NSLayoutAttribute firstAttribute, NSLayoutRelation relation,
      const std::shared_ptr<UIView>& second, NSLayoutAttribute secondAttribute, double multiplier, double constant);

  std::shared_ptr<UIView> firstItem() const { return first_.lock(); }
  std::shared_ptr<UIView> secondItem() const { return second_.lock(); }
  NSLayoutAttribute firstAttribute() const { return firstAttribute_; }
  NSLayoutAttribute secondAttribute() const { return secondAttribute_; }
  double multiplier() const { return multiplier_; }
  double constant() const { return constant_; }
  // Lays the views out anew.
  void setConstant(double constant);

 private:
  friend class UIView;
  NSLayoutConstraint() = default;

  std::weak_ptr<UIView> first_;
  std::weak_ptr<UIView> second_;
  NSLayoutAttribute firstAttribute_ = NSLayoutAttributeNotAnAttribute;
  NSLayoutAttribute secondAttribute_ = NSLayoutAttributeNotAnAttribute;
  double multiplier_ = 1;
  double constant_ = 0;
  std::weak_ptr<UIView> holder_;
};
