#include "platform/uikit/UIView.h"

#include <QQmlEngine>
#include <QQuickWindow>
#include <algorithm>
#include <utility>

#include "platform/foundation/MainThread.h"
#include "platform/uikit/QtRunLoop.h"
#include "platform/uikit/QtValues.h"

UIView::UIView(QQuickItem* parent) : QQuickItem(parent) {
  QtRunLoop::installIfNeeded();
  YMR_ASSERT_MAIN_THREAD();
}

UIView::UIView(const CGRect& frame) : UIView() {
  setFrame(frame);
}

UIView::~UIView() {
  subviews_.clear();  // while they can still find their way here
}

namespace {

// Lends a host's item a place among the views.
class WrappedItem final : public UIView {
 public:
  explicit WrappedItem(QQuickItem* item) : item_(item) {
    setSize(item->size());
    item->setParentItem(this);
    item->setPosition({});
  }
  ~WrappedItem() override {
    if (item_ && item_->parentItem() == this) item_->setParentItem(nullptr);
  }

 protected:
  void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override {
    UIView::geometryChange(newGeometry, oldGeometry);
    if (item_ && item_->parentItem() == this) item_->setSize(newGeometry.size());
  }

 private:
  QPointer<QQuickItem> item_;
};

}  // namespace

std::shared_ptr<UIView> UIView::wrap(QQuickItem* item) {
  if (!item || (item->window() && item == item->window()->contentItem())) return nullptr;
  if (auto* view = qobject_cast<UIView*>(item)) {
    if (auto held = view->weak_from_this().lock()) return held;
  }
  if (auto* wrapper = dynamic_cast<WrappedItem*>(item->parentItem())) return wrapper->shared_from_this();
  return std::make_shared<WrappedItem>(item);
}

CGRect UIView::frame() const {
  return CGRectMake(x(), y(), width(), height());
}

void UIView::setFrame(const CGRect& frame) {
  YMR_ASSERT_MAIN_THREAD();
  setPosition({frame.origin.x, frame.origin.y});
  setSize({std::max(0.0, frame.size.width), std::max(0.0, frame.size.height)});
}

CGRect UIView::bounds() const {
  return CGRectMake(0, 0, width(), height());
}

void UIView::setHidden(bool hidden) {
  YMR_ASSERT_MAIN_THREAD();
  hidden_ = hidden;
  setVisible(!hidden);
}

void UIView::setBackgroundColor(const UIColor& color) {
  if (backgroundColor_ == color) return;
  backgroundColor_ = color;
  setFlag(ItemHasContents);
  update();
}

QColor UIView::qmlBackgroundColor() const {
  return toQColor(backgroundColor_);
}

void UIView::setQmlBackgroundColor(const QColor& color) {
  setBackgroundColor(toUIColor(color));
}

void UIView::addSubview(const std::shared_ptr<UIView>& view) {
  YMR_ASSERT_MAIN_THREAD();
  if (view && view->superview().get() == this) return bringSubviewToFront(view);
  const auto self = weak_from_this().lock();
  if (!view || (self && self->isDescendantOfView(view))) return;
  view->detach();
  subviews_.push_back(view);
  view->setParentItem(this);
  if (childItems().last() != view.get()) view->stackAfter(childItems().last());
  setNeedsSolving();
}

void UIView::removeFromSuperview() {
  YMR_ASSERT_MAIN_THREAD();
  const auto self = weak_from_this().lock();
  detach();
}

void UIView::detach() {
  for (auto* outer = qobject_cast<UIView*>(parentItem()); outer; outer = qobject_cast<UIView*>(outer->parentItem())) {
    std::erase_if(outer->constraints_, [this](const auto& constraint) {
      const auto isInside = [this](const std::shared_ptr<UIView>& item) {
        return item && (item.get() == this || isAncestorOf(item.get()));
      };
      const bool goes = isInside(constraint->firstItem()) || isInside(constraint->secondItem());
      if (goes) constraint->holder_.reset();
      return goes;
    });
  }
  auto* superview = qobject_cast<UIView*>(parentItem());
  if (superview) superview->setNeedsSolving();
  setParentItem(nullptr);
  if (superview) std::erase_if(superview->subviews_, [this](const auto& view) { return view.get() == this; });
}

void UIView::bringSubviewToFront(const std::shared_ptr<UIView>& view) {
  YMR_ASSERT_MAIN_THREAD();
  const auto place = std::find(subviews_.begin(), subviews_.end(), view);
  if (place == subviews_.end()) return;
  std::rotate(place, place + 1, subviews_.end());
  if (childItems().last() != view.get()) view->stackAfter(childItems().last());
}

void UIView::sendSubviewToBack(const std::shared_ptr<UIView>& view) {
  YMR_ASSERT_MAIN_THREAD();
  const auto place = std::find(subviews_.begin(), subviews_.end(), view);
  if (place == subviews_.end()) return;
  std::rotate(subviews_.begin(), place, place + 1);
  if (childItems().first() != view.get()) view->stackBefore(childItems().first());
}

std::shared_ptr<UIView> UIView::superview() const {
  auto* view = qobject_cast<UIView*>(parentItem());
  return view ? view->weak_from_this().lock() : nullptr;
}

bool UIView::isDescendantOfView(const std::shared_ptr<UIView>& view) const {
  return view && (view.get() == this || view->isAncestorOf(this));
}

const std::shared_ptr<CALayer>& UIView::layer() {
  if (!layer_) layer_ = std::shared_ptr<CALayer>(new CALayer(*this));
  return layer_;
}

void UIView::setGestureRecognizers(std::vector<std::shared_ptr<UIGestureRecognizer>> recognizers) {
  YMR_ASSERT_MAIN_THREAD();
  recognizers_ = std::move(recognizers);
  std::erase(recognizers_, nullptr);
}

void UIView::addGestureRecognizer(const std::shared_ptr<UIGestureRecognizer>& recognizer) {
  YMR_ASSERT_MAIN_THREAD();
  if (recognizer && std::find(recognizers_.begin(), recognizers_.end(), recognizer) == recognizers_.end()) {
    recognizers_.push_back(recognizer);
  }
}

// An interface file's objects are made with owners in the sense of QObject; from here on the superview is the owner.
void UIView::componentComplete() {
  QQuickItem::componentComplete();
  // Not in the constructor: the engine lays its own record of the object over one made there, which then leaks.
  QQmlEngine::setObjectOwnership(this, QQmlEngine::CppOwnership);
  for (QQuickItem* item : childItems()) {
    auto* view = qobject_cast<UIView*>(item);
    if (!view || !view->weak_from_this().expired()) continue;
    view->setParent(nullptr);
    subviews_.emplace_back(view);
  }
  setNeedsSolving();
}

void UIView::itemChange(ItemChange change, const ItemChangeData& data) {
  QQuickItem::itemChange(change, data);
  switch (change) {
    case ItemSceneChange:
    case ItemDevicePixelRatioHasChanged:
      setNeedsDisplay();
      break;
    case ItemVisibleHasChanged:
      if (data.boolValue && needsDisplay_) polish();
      break;
    default:
      break;
  }
}
