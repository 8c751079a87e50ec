#include "platform/uikit/UIPressDelivery.h"

#include <QKeyEvent>
#include <QPointer>
#include <QQuickWindow>
#include <algorithm>
#include <utility>
#include <vector>

#include "platform/uikit/UIViewController.h"

UIPressDelivery::UIPressDelivery(QQuickWindow& window) : QObject(&window) {
  window.installEventFilter(this);
}

UIPressDelivery& UIPressDelivery::of(QQuickWindow& window) {
  if (auto* made = window.findChild<UIPressDelivery*>(QString(), Qt::FindDirectChildrenOnly)) return *made;
  return *new UIPressDelivery(window);
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

bool UIPressDelivery::offer(UIView& view, const UIPress& press) {
  const auto alive = view.weak_from_this().lock();
  const QPointer<QQuickWindow> window = view.window();
  const auto taken = [&](Taker taker) {
    if (window) of(*window).take(press.type, std::move(taker));
    return true;
  };
  for (const auto recognizers = view.gestureRecognizers(); const auto& recognizer : recognizers) {
    if (recognizer->pressBegan(press)) return taken({alive, recognizer, {}});
  }
  if (view.pressesBegan(press)) return taken({alive, {}, {}, true});
  UIViewController* controller = view.viewController();
  if (!controller) return false;
  const auto held = std::static_pointer_cast<UIViewController>(controller->weak_from_this().lock());
  if (held && held->pressesBegan(press)) return taken({alive, {}, held});
  const auto presenting = held && press.type == UIPressTypeMenu ? held->presentingViewController() : nullptr;
  return presenting && offer(*presenting->view(), press);
}

bool UIPressDelivery::begin(UIPressType type) {
  const QPointer<UIPressDelivery> self(this);
  cancel(type);
  if (!self) return false;
  std::vector<QPointer<QQuickItem>> way;
  auto* first = firstResponder(*static_cast<QQuickWindow*>(parent()));
  for (QQuickItem* item = first; item; item = item->parentItem()) way.emplace_back(item);
  return std::any_of(way.begin(), way.end(), [type](const QPointer<QQuickItem>& item) {
    auto* view = qobject_cast<UIView*>(item.data());
    return view && offer(*view, {type, false});
  });
}

void UIPressDelivery::end(UIPressType type) {
  if (const auto held = takers_.extract(type)) tell(held.mapped(), type, Phase::ended);
}

void UIPressDelivery::cancel(UIPressType type) {
  if (const auto held = takers_.extract(type)) tell(held.mapped(), type, Phase::cancelled);
}

// A view that hands a press on from inside its own pressesBegan() takes it as well, after the one that it handed it to:
// the first taker keeps it.
void UIPressDelivery::take(UIPressType type, Taker taker) {
  if (const auto view = taker.view.lock()) {
    connect(view.get(), &QQuickItem::windowChanged, this, &UIPressDelivery::cancelLost, Qt::UniqueConnection);
    connect(view.get(), &QQuickItem::visibleChanged, this, &UIPressDelivery::cancelLost, Qt::UniqueConnection);
  }
  takers_.try_emplace(type, std::move(taker));
  cancelLost();
}

bool UIPressDelivery::isLost(const Taker& taker) const {
  const auto view = taker.view.lock();
  return !view || view->window() != parent() || !view->isVisible();
}

void UIPressDelivery::cancelLost() {
  const QPointer<UIPressDelivery> self(this);
  while (self) {
    const auto lost = std::find_if(takers_.begin(), takers_.end(), [this](const auto& t) { return isLost(t.second); });
    if (lost == takers_.end()) return;
    cancel(lost->first);
  }
}

void UIPressDelivery::tell(const Taker& taker, UIPressType type, Phase phase) {
  const auto view = taker.view.lock();
  const UIPress press{type, phase == Phase::repeated};
  if (const auto recognizer = taker.recognizer.lock()) {
    const bool watches =
        view && std::count(view->gestureRecognizers().begin(), view->gestureRecognizers().end(), recognizer) > 0;
    if (phase == Phase::ended && watches) {
      recognizer->pressEnded(press);
    } else if (phase != Phase::repeated) {
      recognizer->pressCancelled(press);
    }
    return;
  }
  const auto tellResponder = [&](auto& responder) {
    switch (phase) {
      case Phase::repeated:
        responder.pressesBegan(press);
        return;
      case Phase::ended:
        return responder.pressesEnded(press);
      case Phase::cancelled:
        return responder.pressesCancelled(press);
    }
  };
  if (const auto controller = taker.controller.lock()) {
    tellResponder(*controller);
  } else if (view && taker.isView) {
    tellResponder(*view);
  }
}

// What follows a press that a view took is no business of the items that have the focus by then.
bool UIPressDelivery::eventFilter(QObject*, QEvent* event) {
  if (event->type() == QEvent::FocusOut) {
    const QPointer<UIPressDelivery> self(this);
    while (self && !takers_.empty()) cancel(takers_.begin()->first);
    return false;
  }
  if (event->type() != QEvent::KeyPress && event->type() != QEvent::KeyRelease) return false;
  const auto& key = static_cast<const QKeyEvent&>(*event);
  const auto type = UIPressTypeForKey(key.key());
  const auto held = type ? takers_.find(*type) : takers_.end();
  if (held == takers_.end()) return false;
  const bool down = event->type() == QEvent::KeyPress;
  if (down && !key.isAutoRepeat()) {
    cancel(*type);
    return false;
  }
  event->accept();
  if (!key.isAutoRepeat()) {
    end(*type);
  } else if (down) {
    tell(Taker(held->second), *type, Phase::repeated);
  }
  return true;
}
