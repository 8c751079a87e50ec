#include "platform/uikit/UISlider.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/foundation/MainThread.h"

namespace {

// Shares of the height.
constexpr double lineShare = 0.16;
constexpr double knobShare = 0.42;
constexpr double activeKnobShare = 0.72;

constexpr QColor lineColor(255, 255, 255, 64);
constexpr QColor accentColor(0xff, 0xb8, 0x1c);

}  // namespace

UISlider::UISlider(QQuickItem* parent) : UIView(parent) {
  setDrawsContent(true);
  setUserInteractionEnabled(true);
  connect(this, &QQuickItem::focusChanged, this, &UIView::setNeedsDisplay);
}

UISlider::UISlider(const CGRect& frame) : UISlider() {
  setFrame(frame);
}

UISlider::~UISlider() = default;

void UISlider::setValue(double value) {
  YMR_ASSERT_MAIN_THREAD();
  if (!std::isfinite(value)) return;
  value_ = std::clamp(value, minimumValue_, maximumValue_);
  if (std::abs(place() - drawnPlace_) >= 0.5) setNeedsDisplay();  // less is not to be seen
}

void UISlider::setMinimumValue(double minimum) {
  if (!std::isfinite(minimum)) return;
  minimumValue_ = minimum;
  maximumValue_ = std::max(maximumValue_, minimum);
  setValue(value_);
}

void UISlider::setMaximumValue(double maximum) {
  if (!std::isfinite(maximum)) return;
  maximumValue_ = maximum;
  minimumValue_ = std::min(minimumValue_, maximum);
  setValue(value_);
}

CGSize UISlider::intrinsicContentSize() const {
  return {noIntrinsicMetric, 60};
}

// The line leaves room for half a knob at both ends.
double UISlider::place() const {
  const double margin = height() * activeKnobShare / 2;
  const double range = maximumValue_ - minimumValue_;
  const double share = range > 0 ? (value_ - minimumValue_) / range : 0;
  return margin + share * std::max(0.0, width() - 2 * margin);
}

void UISlider::stepTowards(UIPressType arrow) {
  const double step = step_.value_or((maximumValue_ - minimumValue_) / 100);
  setValue(value_ + (arrow == UIPressTypeLeftArrow ? -step : step));
}

bool UISlider::pressesBegan(const UIPress& press) {
  if (press.type != UIPressTypeLeftArrow && press.type != UIPressTypeRightArrow) return false;
  const bool begins = !isTracking();
  if (begins) {
    arrow_ = press.type;
    setNeedsDisplay();
  } else if (arrow_ != press.type) {
    return true;  // one drag at a time
  }
  stepTowards(press.type);
  tellOfArrow(begins ? UITouchPhaseBegan : UITouchPhaseMoved);
  return true;
}

void UISlider::pressesEnded(const UIPress& press) {
  if (arrow_ != press.type) return;
  arrow_.reset();
  setNeedsDisplay();
  tellOfArrow(UITouchPhaseEnded);
}

void UISlider::pressesCancelled(const UIPress& press) {
  if (arrow_ != press.type) return;
  arrow_.reset();
  setNeedsDisplay();
  tellOfArrow(UITouchPhaseCancelled);
}

void UISlider::touchesBegan(const UIEvent& event) {
  if (isTracking()) return;
  const auto& touches = event.allTouches();
  const auto first = std::ranges::find(touches, UITouchPhaseBegan, &UITouch::phase);
  if (first == touches.end()) return;
  finger_ = first->identifier();
  setNeedsDisplay();
  drag(event, UITouchPhaseBegan);
}

void UISlider::touchesMoved(const UIEvent& event) {
  drag(event, UITouchPhaseMoved);
}

void UISlider::touchesEnded(const UIEvent& event) {
  drag(event, UITouchPhaseEnded);
}

void UISlider::touchesCancelled(const UIEvent& event) {
  drag(event, UITouchPhaseCancelled);
}

void UISlider::drag(const UIEvent& event, UITouchPhase phase) {
  const auto& touches = event.allTouches();
  const auto touch = std::ranges::find_if(
      touches, [&](const UITouch& one) { return one.identifier() == finger_ && one.phase() == phase; });
  if (touch == touches.end()) return;
  if (phase == UITouchPhaseEnded || phase == UITouchPhaseCancelled) {
    finger_.reset();
    setNeedsDisplay();
  }
  const double margin = height() * activeKnobShare / 2;
  const double length = width() - 2 * margin;
  if (phase != UITouchPhaseCancelled && length > 0) {
    const double share = (touch->locationInView(*this).x - margin) / length;
    setValue(minimumValue_ + std::clamp(share, 0.0, 1.0) * (maximumValue_ - minimumValue_));
  }
  tell(*touch);
}

void UISlider::tellOfArrow(UITouchPhase phase) {
  const QPointF knob = mapToScene({place(), height() / 2});
  tell(UITouch(0, phase, {knob.x(), knob.y()}));
}

void UISlider::tell(const UITouch& touch) {
  const bool isOver = touch.phase() == UITouchPhaseEnded || touch.phase() == UITouchPhaseCancelled;
  if (!continuous_ && !isOver) return;
  if (const auto call = valueChanged_) call(*this, UIEvent({touch}));
}

void UISlider::drawRect(QPainter& painter, const CGRect& rect) {
  const bool isActive = isFirstResponder() || isTracking();
  const double height = rect.size.height;
  const double line = height * lineShare;
  const double margin = height * activeKnobShare / 2;
  const double knob = height * (isActive ? activeKnobShare : knobShare);
  drawnPlace_ = place();
  const auto drawLine = [&](double from, double to, const QColor& color) {
    painter.setBrush(color);
    painter.drawRoundedRect(QRectF(from, (height - line) / 2, std::max(line, to - from), line), line / 2, line / 2);
  };
  painter.setPen(Qt::NoPen);
  drawLine(margin, rect.size.width - margin, lineColor);
  drawLine(margin, drawnPlace_, isActive ? accentColor : QColor(Qt::white));
  painter.drawEllipse(QPointF(drawnPlace_, height / 2), knob / 2, knob / 2);
}
