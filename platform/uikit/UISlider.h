#pragma once

#include <functional>
#include <optional>
#include <utility>

#include "platform/uikit/UIView.h"

// A value on a line, that a viewer drags: with a finger, the mouse, or the remote's arrows. Main thread.
//
// A drag is the same whatever it is made with: it begins, moves, and ends or is cancelled.
//   finger, mouse   the knob goes where they go down and follows them; a second finger does nothing
//   Left, Right     for the first responder: a step when the button goes down, and one for each repetition; the
//                   drag ends when it comes up
// Drawn to be seen from three metres: the line and the knob are as large as the height makes them, 60 points of a
// screen of 1080 look right. The knob is larger, and the line in the accent's colour, for the first responder and in a
// drag.
//
// Kept from the platform: value, limits, continuous, tracking, "value changed". Left out: images, tint, animation,
// targets for other events. The platform's knob has to be met; here the whole line is the target.
class YMR_API UISlider : public UIView {
  Q_OBJECT
 public:
  // Called for each phase of a drag, also for one that leaves the value as it is. The event has one touch, the drag's;
  // for a drag with the remote it is where the knob is. Anything may be called from here, destruction included.
  using ValueChanged = std::function<void(UISlider& slider, const UIEvent& event)>;

  explicit UISlider(QQuickItem* parent = nullptr);
  explicit UISlider(const CGRect& frame);
  ~UISlider() override;

  // 0 at first. Setting it moves the knob and calls nobody; it is held within the limits. What is not finite is
  // ignored, for the limits as well.
  double value() const { return value_; }
  void setValue(double value);
  // 0 and 1 at first. A limit that passes the other one takes it along; the value follows.
  double minimumValue() const { return minimumValue_; }
  void setMinimumValue(double minimum);
  double maximumValue() const { return maximumValue_; }
  void setMaximumValue(double maximum);
  // How far an arrow goes. nil, as it starts: a hundredth of the way. Not of the platform.
  std::optional<double> step() const { return step_; }
  void setStep(std::optional<double> step) { step_ = step; }

  // True, as it starts: a drag is told of throughout. False: when it is over.
  bool isContinuous() const { return continuous_; }
  void setContinuous(bool continuous) { continuous_ = continuous; }
  // A drag is under way. What sets the value by the clock leaves it alone then.
  bool isTracking() const { return finger_ || arrow_; }
  void setValueChanged(ValueChanged valueChanged) { valueChanged_ = std::move(valueChanged); }

  // 60 points high.
  CGSize intrinsicContentSize() const override;

  bool pressesBegan(const UIPress& press) override;
  void pressesEnded(const UIPress& press) override;
  void pressesCancelled(const UIPress& press) override;
  void touchesBegan(const UIEvent& event) override;
  void touchesMoved(const UIEvent& event) override;
  void touchesEnded(const UIEvent& event) override;
  void touchesCancelled(const UIEvent& event) override;

 protected:
  void drawRect(QPainter& painter, const CGRect& rect) override;

 private:
  // The knob's centre, in points from the left.
  double place() const;
  void stepTowards(UIPressType arrow);
  // Follows the finger that drags, if the event has it in that phase.
  void drag(const UIEvent& event, UITouchPhase phase);
  // Calls the host; the last thing that a function does.
  void tell(const UITouch& touch);
  void tellOfArrow(UITouchPhase phase);

  double value_ = 0;
  double minimumValue_ = 0;
  double maximumValue_ = 1;
  std::optional<double> step_;
  bool continuous_ = true;
  ValueChanged valueChanged_;
  std::optional<int> finger_;         // the touch that drags, if one does
  std::optional<UIPressType> arrow_;  // the button that drags, if one does
  double drawnPlace_ = -1;
};
