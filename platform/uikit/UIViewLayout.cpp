// Views: constraints and layout.
#include <QScopeGuard>
#include <utility>

#include "platform/foundation/MainThread.h"
#include "platform/uikit/LayoutPass.h"
#include "platform/uikit/UIView.h"

namespace {

// Views that change each other's layout for ever are given up after this many rounds.
constexpr int roundsLimit = 16;

}  // namespace

UIView& UIView::root() {
  UIView* view = this;
  while (auto* outer = qobject_cast<UIView*>(view->parentItem())) view = outer;
  return *view;
}

void UIView::setTranslatesAutoresizingMaskIntoConstraints(bool translates) {
  YMR_ASSERT_MAIN_THREAD();
  if (keepsFrame_ == translates) return;
  keepsFrame_ = translates;
  setNeedsSolving();
}

void UIView::addConstraint(const std::shared_ptr<NSLayoutConstraint>& constraint) {
  YMR_ASSERT_MAIN_THREAD();
  if (!constraint) return;
  const auto holder = constraint->holder_.lock();
  if (holder.get() == this) return;
  if (holder) holder->removeConstraint(constraint);
  constraint->holder_ = weak_from_this();
  constraints_.push_back(constraint);
  setNeedsSolving();
}

void UIView::removeConstraint(const std::shared_ptr<NSLayoutConstraint>& constraint) {
  YMR_ASSERT_MAIN_THREAD();
  const auto held = constraint;  // the caller's may be the one in the list
  if (std::erase(constraints_, held) == 0) return;
  held->holder_.reset();
  setNeedsSolving();
}

void UIView::setNeedsSolving() {
  UIView& top = root();
  if (top.inSolving_) return;
  top.needsSolving_ = true;
  top.treeNeedsLayout_ = true;
  top.polish();
}

void UIView::setNeedsLayout() {
  YMR_ASSERT_MAIN_THREAD();
  needsLayout_ = true;
  UIView& top = root();
  top.treeNeedsLayout_ = true;
  top.polish();
}

void UIView::layoutIfNeeded() {
  YMR_ASSERT_MAIN_THREAD();
  UIView& top = root();
  const auto alive = top.weak_from_this().lock();
  if (!top.treeNeedsLayout_ || top.inLayout_) return;
  top.inLayout_ = true;
  const auto done = qScopeGuard([&top] { top.inLayout_ = top.inSolving_ = false; });
  for (int round = 0; round < roundsLimit && top.treeNeedsLayout_; ++round) {
    top.treeNeedsLayout_ = false;
    if (std::exchange(top.needsSolving_, false)) {
      top.inSolving_ = true;
      LayoutPass(top).run();
      top.inSolving_ = false;
    }
    top.layoutTree();
  }
}

void UIView::layoutTree() {
  if (std::exchange(needsLayout_, false)) layoutSubviews();
  for (const auto views = subviews_; const auto& view : views) view->layoutTree();
}

void UIView::layoutSubviews() {}

CGSize UIView::intrinsicContentSize() const {
  return {noIntrinsicMetric, noIntrinsicMetric};
}

double UIView::intrinsicHeightForWidth(double) const {
  return intrinsicContentSize().height;
}

void UIView::invalidateIntrinsicContentSize() {
  if (!keepsFrame_) setNeedsSolving();
}

void UIView::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
  QQuickItem::geometryChange(newGeometry, oldGeometry);
  if (newGeometry.size() != oldGeometry.size()) {
    needsLayout_ = true;
    if (drawsContent_) setNeedsDisplay();
    if (layer_) layer_->superlayerDidResize();
  }
  setNeedsSolving();
}
