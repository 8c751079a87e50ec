// Views: touches, from Qt's touch and mouse events.
#include <QMouseEvent>
#include <QTouchEvent>
#include <algorithm>

#include "platform/foundation/MainThread.h"
#include "platform/uikit/UIView.h"

namespace {

constexpr int mouseIdentifier = -1;  // Qt counts fingers from 0

CGPoint toCGPoint(const QPointF& point) {
  return {point.x(), point.y()};
}

UITouchPhase phaseOf(QEventPoint::State state) {
  switch (state) {
    case QEventPoint::Pressed:
      return UITouchPhaseBegan;
    case QEventPoint::Updated:
      return UITouchPhaseMoved;
    case QEventPoint::Released:
      return UITouchPhaseEnded;
    default:
      return UITouchPhaseStationary;
  }
}

}  // namespace

CGPoint UITouch::locationInView(const UIView& view) const {
  return toCGPoint(view.mapFromScene(QPointF(location_.x, location_.y)));
}

void UIView::setUserInteractionEnabled(bool enabled) {
  YMR_ASSERT_MAIN_THREAD();
  takesTouches_ = enabled;
  setAcceptTouchEvents(enabled);
  setAcceptedMouseButtons(enabled ? Qt::LeftButton : Qt::NoButton);
}

void UIView::touchesBegan(const UIEvent&) {}

void UIView::touchesMoved(const UIEvent&) {}

void UIView::touchesEnded(const UIEvent&) {}

void UIView::touchesCancelled(const UIEvent&) {}

// A touch is heard of from its beginning or not at all.
void UIView::deliverTouches(const std::vector<UITouch>& changed) {
  const auto alive = weak_from_this().lock();
  for (UITouch& touch : touches_) touch = touch.withPhase(UITouchPhaseStationary);
  for (const UITouch& touch : changed) {
    const auto down =
        std::ranges::find_if(touches_, [&](const UITouch& one) { return one.identifier() == touch.identifier(); });
    if (down != touches_.end()) {
      *down = touch;
    } else if (touch.phase() == UITouchPhaseBegan) {
      touches_.push_back(touch);
    }
  }
  const UIEvent event(touches_);
  std::erase_if(touches_, [](const UITouch& touch) {
    return touch.phase() == UITouchPhaseEnded || touch.phase() == UITouchPhaseCancelled;
  });
  const auto holds = [&event](UITouchPhase phase) {
    return std::ranges::any_of(event.allTouches(), [phase](const UITouch& touch) { return touch.phase() == phase; });
  };
  if (holds(UITouchPhaseBegan)) touchesBegan(event);
  if (holds(UITouchPhaseMoved)) touchesMoved(event);
  if (holds(UITouchPhaseEnded)) touchesEnded(event);
  if (holds(UITouchPhaseCancelled)) touchesCancelled(event);
  if (alive.use_count() == 1) RunLoop::main().post([alive] {});  // Qt still has it in hand
}

void UIView::deliverMouse(const QMouseEvent& event, UITouchPhase phase) {
  deliverTouches({UITouch(mouseIdentifier, phase, toCGPoint(event.scenePosition()))});
}

void UIView::cancelTouches(bool ofMouse) {
  std::vector<UITouch> cancelled;
  for (const UITouch& touch : touches_) {
    if ((touch.identifier() == mouseIdentifier) == ofMouse) cancelled.push_back(touch.withPhase(UITouchPhaseCancelled));
  }
  if (!cancelled.empty()) deliverTouches(cancelled);
}

void UIView::touchEvent(QTouchEvent* event) {
  if (!takesTouches_ && touches_.empty()) return QQuickItem::touchEvent(event);
  if (event->type() == QEvent::TouchCancel) return cancelTouches(false);
  std::vector<UITouch> changed;
  for (const QEventPoint& point : event->points()) {
    changed.emplace_back(point.id(), phaseOf(point.state()), toCGPoint(point.scenePosition()));
  }
  event->accept();
  deliverTouches(changed);
}

void UIView::touchUngrabEvent() {
  cancelTouches(false);
}

void UIView::mousePressEvent(QMouseEvent* event) {
  if (!takesTouches_) return QQuickItem::mousePressEvent(event);
  event->accept();
  deliverMouse(*event, UITouchPhaseBegan);
}

void UIView::mouseMoveEvent(QMouseEvent* event) {
  deliverMouse(*event, UITouchPhaseMoved);
}

void UIView::mouseReleaseEvent(QMouseEvent* event) {
  deliverMouse(*event, UITouchPhaseEnded);
}

// Comes after every release too, when there is nothing left to cancel.
void UIView::mouseUngrabEvent() {
  cancelTouches(true);
}
