#include "platform/uikit/UIPress.h"

#include <QKeyEvent>
#include <QPointer>
#include <QQuickWindow>
#include <vector>

#include "platform/foundation/MainThread.h"
#include "platform/uikit/UIPressDelivery.h"
#include "platform/uikit/UIViewController.h"
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
  const QPointer<QQuickWindow> alive(&window);
  const UIPress press{type, false};
  const bool began =
      UIPressDelivery::deliver(UIPressDelivery::firstResponder(window), press, UIPressDelivery::Phase::began);
  if (!alive) return began;
  return UIPressDelivery::deliver(UIPressDelivery::firstResponder(window), press, UIPressDelivery::Phase::ended) ||
         began;
}

bool UIPressDelivery::offer(UIView& view, const UIPress& press, Phase phase) {
  const auto alive = view.weak_from_this().lock();
  const bool down = phase == Phase::began;
  for (const auto recognizers = view.gestureRecognizers(); const auto& recognizer : recognizers) {
    if (down ? recognizer->pressBegan(press) : recognizer->pressEnded(press)) return true;
  }
  if (down ? view.pressesBegan(press) : view.pressesEnded(press)) return true;
  UIViewController* controller = view.viewController();
  if (!controller) return false;
  const auto held = controller->weak_from_this().lock();
  return down ? controller->pressesBegan(press) : controller->pressesEnded(press);
}

bool UIPressDelivery::deliver(QQuickItem* first, const UIPress& press, Phase phase) {
  std::vector<QPointer<QQuickItem>> way;
  for (QQuickItem* item = first; item; item = item->parentItem()) way.emplace_back(item);
  for (const auto& item : way) {
    auto* view = qobject_cast<UIView*>(item.data());
    if (view && offer(*view, press, phase)) return true;
  }
  return false;
}

QQuickItem* UIPressDelivery::firstResponder(QQuickWindow& window) {
  QQuickItem* focused = window.contentItem();
  while (focused->isFocusScope() && focused->scopedFocusItem()) focused = focused->scopedFocusItem();
  if (focused != window.contentItem() && focused->isVisible()) return focused;
  const auto items = window.contentItem()->childItems();
  for (auto item = items.rbegin(); item != items.rend(); ++item) {
    if ((*item)->isVisible() && qobject_cast<UIView*>(*item)) return *item;
  }
  return nullptr;
}

bool UIView::pressesBegan(const UIPress&) {
  return false;
}

bool UIView::pressesEnded(const UIPress&) {
  return false;
}

namespace {

// In a window of the host's own, Qt offers keys to one item after the other; in a UIWindow the window delivers presses.
void offerKey(UIView& view, QKeyEvent& event, UIPressDelivery::Phase phase) {
  const auto type = UIPressTypeForKey(event.key());
  const bool repeatsUp = phase == UIPressDelivery::Phase::ended && event.isAutoRepeat();
  event.setAccepted(type && !repeatsUp && !qobject_cast<UIWindow*>(view.window()) &&
                    UIPressDelivery::offer(view, {*type, event.isAutoRepeat()}, phase));
}

}  // namespace

void UIView::keyPressEvent(QKeyEvent* event) {
  const auto alive = weak_from_this().lock();
  offerKey(*this, *event, UIPressDelivery::Phase::began);
}

void UIView::keyReleaseEvent(QKeyEvent* event) {
  const auto alive = weak_from_this().lock();
  offerKey(*this, *event, UIPressDelivery::Phase::ended);
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
