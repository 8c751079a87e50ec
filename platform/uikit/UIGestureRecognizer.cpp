#include "platform/uikit/UIGestureRecognizer.h"

#include <algorithm>
#include <utility>

UIGestureRecognizer::UIGestureRecognizer(Action action) : action_(std::move(action)) {}

UIGestureRecognizer::~UIGestureRecognizer() = default;

bool UIGestureRecognizer::pressBegan(const UIPress& press) {
  if (std::find(allowedPressTypes_.begin(), allowedPressTypes_.end(), press.type) == allowedPressTypes_.end()) {
    return false;
  }
  pressed_ = press.type;
  began(press.type);
  return true;
}

void UIGestureRecognizer::pressEnded(const UIPress& press) {
  if (pressed_ != press.type) return;
  pressed_.reset();
  ended(press.type);
}

void UIGestureRecognizer::pressCancelled(const UIPress& press) {
  if (pressed_ == press.type) reset();
}

void UIGestureRecognizer::reset() {
  pressed_.reset();
  if (state_ == UIGestureRecognizerStateBegan || state_ == UIGestureRecognizerStateChanged) {
    enter(UIGestureRecognizerStateCancelled);
  }
}

void UIGestureRecognizer::enter(UIGestureRecognizerState state) {
  const auto self = weak_from_this().lock();
  const auto action = action_;
  state_ = state;
  if (action && state != UIGestureRecognizerStatePossible && state != UIGestureRecognizerStateFailed) action(*this);
  if (state_ >= UIGestureRecognizerStateEnded) state_ = UIGestureRecognizerStatePossible;
}

UITapGestureRecognizer::~UITapGestureRecognizer() = default;

void UITapGestureRecognizer::began(UIPressType) {}

void UITapGestureRecognizer::ended(UIPressType) {
  enter(UIGestureRecognizerStateEnded);
}
