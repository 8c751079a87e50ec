#include "platform/avkit/PlayerScreen.h"

#include <algorithm>
#include <utility>

#include "platform/uikit/UIPressDelivery.h"

std::shared_ptr<PlayerScreen> PlayerScreen::make() {
  std::shared_ptr<PlayerScreen> screen(new PlayerScreen);
  screen->setBackgroundColor(UIColor::blackColor());
  screen->canvas_ = std::make_shared<UIView>();
  screen->picture_ = AVPlayerLayer::playerLayerWithPlayer(nullptr);
  screen->picture_->setFillsSuperlayer(true);
  screen->canvas_->layer()->addSublayer(screen->picture_);
  screen->shade_ = std::make_shared<UIView>();
  screen->overlay_ = std::make_shared<UIView>();
  screen->controls_ = ControlsView::make();
  screen->controls_->setGround(screen->shade_);
  screen->addSubview(screen->canvas_);
  screen->addSubview(screen->shade_);
  screen->addSubview(screen->overlay_);
  screen->addSubview(screen->controls_);
  return screen;
}

QList<QQuickItem*> PlayerScreen::cover() const {
  QList<QQuickItem*> items = childItems().mid(childItems().indexOf(controls_.get()) + 1);
  items.removeIf([](const QQuickItem* item) {
    const auto* view = qobject_cast<const UIView*>(item);
    return view ? view->isHidden() : !item->isVisible();
  });
  return items;
}

bool PlayerScreen::isCovered() const {
  return controls_ && !cover().isEmpty();
}

bool PlayerScreen::offerToCover(const UIPress& press) {
  const QQuickItem* first = window() ? UIPressDelivery::firstResponder(*window()) : nullptr;
  std::vector<std::shared_ptr<UIView>> views;
  for (QQuickItem* item : cover()) {
    auto* view = qobject_cast<UIView*>(item);
    if (view && view != first && !view->isAncestorOf(first)) views.push_back(view->shared_from_this());
  }
  return std::any_of(views.rbegin(), views.rend(),
                     [&](const auto& view) { return UIPressDelivery::offer(*view, press); });
}

void PlayerScreen::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
  UIView::geometryChange(newGeometry, oldGeometry);
  const CGRect all = bounds();
  for (const auto& view : {canvas_, shade_, overlay_, std::shared_ptr<UIView>(controls_)}) view->setFrame(all);
}

void PlayerScreen::itemChange(ItemChange change, const ItemChangeData& data) {
  UIView::itemChange(change, data);
  const bool childrenChanged = change == ItemChildAddedChange || change == ItemChildRemovedChange;
  if (childrenChanged && coverChanged_) coverChanged_();
}
