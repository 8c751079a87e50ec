#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "platform/Export.h"
#include "platform/uikit/UIPress.h"

enum UIGestureRecognizerState {
  UIGestureRecognizerStatePossible = 0,
  UIGestureRecognizerStateBegan = 1,
  UIGestureRecognizerStateChanged = 2,
  UIGestureRecognizerStateEnded = 3,
  UIGestureRecognizerStateCancelled = 4,
  UIGestureRecognizerStateFailed = 5,
};

// Watches the presses that come to a view, or past it from one inside, and calls its action when it sees its gesture.
// Held by the view and whoever made it. Main thread.
//
// Kept from the platform: states, the press types that are allowed. Left out: touches, delegates, dependencies, being
// disabled; one action, which must hold its target weakly.
class YMR_API UIGestureRecognizer : public std::enable_shared_from_this<UIGestureRecognizer> {
 public:
  using Action = std::function<void(UIGestureRecognizer&)>;

  explicit UIGestureRecognizer(Action action);
  UIGestureRecognizer(const UIGestureRecognizer&) = delete;
  UIGestureRecognizer& operator=(const UIGestureRecognizer&) = delete;
  virtual ~UIGestureRecognizer();

  UIGestureRecognizerState state() const { return state_; }
  // Empty, as it starts: no press at all.
  const std::vector<int>& allowedPressTypes() const { return allowedPressTypes_; }
  void setAllowedPressTypes(std::vector<int> types) { allowedPressTypes_ = std::move(types); }

  // What the view hands over: whether the press belongs to this recogniser, which ends its way, and what became of it.
  bool pressBegan(const UIPress& press);
  void pressEnded(const UIPress& press);
  void pressCancelled(const UIPress& press);
  // Gives a press up that has begun.
  void reset();

 protected:
  // A press of an allowed type went down or came up.
  virtual void began(UIPressType type) = 0;
  virtual void ended(UIPressType type) = 0;
  // Enters a state and calls the action, except for Possible and Failed; from Ended on it goes back to Possible.
  void enter(UIGestureRecognizerState state);

 private:
  Action action_;
  std::vector<int> allowedPressTypes_;
  UIGestureRecognizerState state_ = UIGestureRecognizerStatePossible;
  std::optional<UIPressType> pressed_;
};

// Recognises one press, when the button comes up: the action sees the state Ended.
class YMR_API UITapGestureRecognizer final : public UIGestureRecognizer {
 public:
  using UIGestureRecognizer::UIGestureRecognizer;
  ~UITapGestureRecognizer() override;

 protected:
  void began(UIPressType type) override;
  void ended(UIPressType type) override;
};
