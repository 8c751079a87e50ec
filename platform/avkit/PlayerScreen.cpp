#include "platform/avkit/PlayerScreen.h"

#include <algorithm>
#include <utility>

std::shared_ptr<PlayerScreen> PlayerScreen::make() {
  std::shared_ptr<PlayerScreen> screen(new PlayerScreen);
  screen->setBackgroundColor(UIColor::blackColor());
  screen->canvas_ = std::make_shared<UIView>();
  screen->picture_ = AVPlayerLayer::playerLayerWithPlayer(nullptr);
  screen->picture_->setFillsSuperlayer(true);
  screen->canvas_->layer()->addSublayer(screen->picture_);
  screen->overlay_ = std::make_shared<UIView>();
  screen->controls_ = ControlsView::make();
  screen->addSubview(screen->canvas_);
  screen->addSubview(screen->overlay_);
  screen->addSubview(screen->controls_);
  return screen;
}

bool PlayerScreen::isCovered() const {
  const auto items = childItems();
  const auto controls = std::find(items.begin(), items.end(), controls_.get());
  return controls != items.end() && std::any_of(controls + 1, items.end(), [](const QQuickItem* item) {
           const auto* view = qobject_cast<const UIView*>(item);
           return view ? !view->isHidden() : item->isVisible();
         });
}

void PlayerScreen::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
  UIView::geometryChange(newGeometry, oldGeometry);
  const CGRect all = bounds();
  for (const auto& view : {canvas_, overlay_, std::shared_ptr<UIView>(controls_)}) view->setFrame(all);
}

void PlayerScreen::itemChange(ItemChange change, const ItemChangeData& data) {
  UIView::itemChange(change, data);
  const bool childrenChanged = change == ItemChildAddedChange || change == ItemChildRemovedChange;
  if (childrenChanged && coverChanged_) coverChanged_();
}
