#include "platform/uikit/CALayer.h"

#include <algorithm>
#include <utility>

#include "platform/foundation/MainThread.h"
#include "platform/uikit/UIView.h"

CALayer::CALayer() : CALayer(std::make_unique<QQuickItem>()) {}

CALayer::CALayer(std::unique_ptr<QQuickItem> item) : owned_(std::move(item)), item_(owned_.get()) {}

CALayer::CALayer(UIView& view) : item_(&view) {}

CALayer::~CALayer() = default;

CGRect CALayer::frame() const {
  return item_ ? CGRectMake(item_->x(), item_->y(), item_->width(), item_->height()) : CGRectZero;
}

void CALayer::setFrame(const CGRect& frame) {
  YMR_ASSERT_MAIN_THREAD();
  if (!item_) return;
  item_->setPosition({frame.origin.x, frame.origin.y});
  item_->setSize({std::max(0.0, frame.size.width), std::max(0.0, frame.size.height)});
  superlayerDidResize();
}

bool CALayer::isHidden() const {
  return hidden_;
}

void CALayer::setHidden(bool hidden) {
  hidden_ = hidden;
  if (item_) item_->setVisible(!hidden);
}

void CALayer::setFillsSuperlayer(bool fills) {
  fillsSuperlayer_ = fills;
  follow();
}

void CALayer::follow() {
  const auto outer = superlayer();
  if (fillsSuperlayer_ && outer) setFrame({{}, outer->frame().size});
}

void CALayer::superlayerDidResize() {
  for (const auto& layer : sublayers_) layer->follow();
}

void CALayer::addSublayer(const std::shared_ptr<CALayer>& layer) {
  YMR_ASSERT_MAIN_THREAD();
  if (!layer || !item_ || !layer->owned_) return;
  for (auto outer = std::static_pointer_cast<CALayer>(shared_from_this()); outer; outer = outer->superlayer()) {
    if (outer == layer) return;
  }
  layer->removeFromSuperlayer();
  sublayers_.push_back(layer);
  layer->superlayer_ = std::static_pointer_cast<CALayer>(shared_from_this());
  layer->item_->setParentItem(item_);
  layer->follow();
}

void CALayer::removeFromSuperlayer() {
  YMR_ASSERT_MAIN_THREAD();
  const auto outer = superlayer();
  if (!outer) return;
  const auto self = shared_from_this();
  superlayer_.reset();
  if (item_) item_->setParentItem(nullptr);
  std::erase_if(outer->sublayers_, [this](const auto& layer) { return layer.get() == this; });
}
