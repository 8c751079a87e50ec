#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "platform/uikit/UIBarButtonItem.h"
#include "platform/uikit/UIView.h"

// A row of buttons on a dark plate, made to be read and used from three metres: one button has the focus, filled with
// the accent of the player's controls. Main thread.
//
// As first responder it takes left and right, which move the focus over the buttons and stop at the ends, and Enter,
// which presses the focused one when it comes up. All other presses it leaves to who is outside. A mouse or a finger
// presses what it goes down and up on; a moving pointer takes the focus along. What goes down anywhere on the plate
// stays on it. Hidden it takes nothing, and a press that has begun is given up.
//
// Everything grows with the bar's height: a bar of standard height has buttons 88 points high and takes the widths of
// items as they are. What does not fit runs over the right end.
//
// Kept from the platform: items from the left, fixed spaces, custom views. Left out: styles, tints, animation.
class YMR_API UIToolbar : public UIView {
 public:
  // Points; right for a screen of 1080.
  static constexpr double standardHeight = 120;

  explicit UIToolbar(const CGRect& frame = {});
  ~UIToolbar() override;

  const std::vector<std::shared_ptr<UIBarButtonItem>>& items() const { return items_; }
  // The focus goes to the first button, unless it is on one that stays. nil items are left out.
  void setItems(std::vector<std::shared_ptr<UIBarButtonItem>> items);

  // nil when there are no buttons.
  std::shared_ptr<UIBarButtonItem> focusedItem() const { return focused_; }
  // Ignored for what is no button of this bar.
  void setFocusedItem(const std::shared_ptr<UIBarButtonItem>& item);

  // True while a button is held down.
  bool isPressed() const { return pressed_ != nullptr; }
  // Called (may be empty) when the viewer is at work in the bar, before what the press does: for every press that the
  // bar takes, its repetitions and its end, and for a moving pointer. It must not hold the bar. Not of the platform.
  void setUsed(std::function<void()> used) { used_ = std::move(used); }

  CGSize intrinsicContentSize() const override;
  bool pressesBegan(const UIPress& press) override;
  void pressesEnded(const UIPress& press) override;
  void pressesCancelled(const UIPress& press) override;
  void touchesBegan(const UIEvent& event) override { touched(event); }
  void touchesMoved(const UIEvent& event) override { touched(event); }
  void touchesEnded(const UIEvent& event) override { touched(event); }
  void touchesCancelled(const UIEvent& event) override { touched(event); }

 protected:
  void layoutSubviews() override;
  void drawRect(QPainter& painter, const CGRect& rect) override;
  void hoverEnterEvent(QHoverEvent* event) override;
  void hoverMoveEvent(QHoverEvent* event) override;

 private:
  // What a point of a bar of standard height is in this one.
  double unit() const { return bounds().size.height / standardHeight; }
  std::shared_ptr<UIBarButtonItem> buttonAt(const CGPoint& place) const;
  // Follows the touch that went down first; others do nothing.
  void touched(const UIEvent& event);
  void moveFocus(int step);
  void setPressed(std::shared_ptr<UIBarButtonItem> item);
  void tellUsed();
  // Presses what is held down.
  void fire();

  std::vector<std::shared_ptr<UIBarButtonItem>> items_;
  std::vector<CGRect> frames_;  // of items_
  std::shared_ptr<UIBarButtonItem> focused_;
  std::shared_ptr<UIBarButtonItem> pressed_;
  std::shared_ptr<UIBarButtonItem> heldDown_;  // where the touch went down; pressed_ only while it is over it
  QPointF pointer_;                            // where the mouse's was last seen, in the window
  std::function<void()> used_;
};
