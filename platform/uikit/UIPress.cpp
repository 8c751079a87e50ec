#include "platform/uikit/UIPress.h"

#include <QKeyEvent>
#include <QPointer>
#include <QQuickWindow>

#include "platform/foundation/MainThread.h"
#include "platform/uikit/UIPressDelivery.h"
#include "platform/uikit/UIView.h"
#include "platform/uikit/UIWindow.h"

std::optional<UIPressType> UIPressTypeForKey(int qtKey) {
  switch (qtKey) {
    case Qt::Key_Up:
      return UIPressTypeUpArrow;
    case Qt::Key_Down:
      return UIPressTypeDownArrow;
    case Qt::Key_Left:
      return UIPressTypeLeftArrow;
    case Qt::Key_Right:
      return UIPressTypeRightArrow;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Select:
      return UIPressTypeSelect;
    case Qt::Key_Space:
    case Qt::Key_Play:
    case Qt::Key_MediaPlay:
    case Qt::Key_MediaPause:
    case Qt::Key_MediaTogglePlayPause:
      return UIPressTypePlayPause;
    case Qt::Key_Escape:
    case Qt::Key_Backspace:
    case Qt::Key_Back:
    case Qt::Key_Menu:
    case Qt::Key_Exit:
      return UIPressTypeMenu;
    default:
      return std::nullopt;
  }
}

bool UIPressSend(QQuickWindow& window, UIPressType type) {
  YMR_ASSERT_MAIN_THREAD();
  const QPointer<UIPressDelivery> delivery(&UIPressDelivery::of(window));
  const bool taken = delivery->begin(type);
  if (delivery) delivery->end(type);
  return taken;
}

bool UIView::pressesBegan(const UIPress&) {
  return false;
}

void UIView::pressesEnded(const UIPress&) {}

void UIView::pressesCancelled(const UIPress&) {}

// In a window of the host's own, Qt offers keys to one item after the other; in a UIWindow the window delivers presses.
void UIView::keyPressEvent(QKeyEvent* event) {
  const auto alive = weak_from_this().lock();
  const auto type = UIPressTypeForKey(event->key());
  event->ignore();
  if (!type || event->isAutoRepeat() || !window() || qobject_cast<UIWindow*>(window())) return;
  event->setAccepted(UIPressDelivery::offer(*this, {*type, false}));
}

bool UIView::becomeFirstResponder() {
  YMR_ASSERT_MAIN_THREAD();
  if (!window() || !isVisible()) return false;
  forceActiveFocus();
  return true;
}

bool UIView::isFirstResponder() const {
  return window() && UIPressDelivery::firstResponder(*window()) == this;
}
