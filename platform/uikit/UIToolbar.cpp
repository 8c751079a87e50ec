#include "platform/uikit/UIToolbar.h"

#include <QHoverEvent>
#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/foundation/MainThread.h"

namespace {

// Points of a bar of standard height.
constexpr double buttonHeight = 88;
constexpr double margin = (UIToolbar::standardHeight - buttonHeight) / 2;

double standardWidth(const UIBarButtonItem& item) {
  if (!item.isButton()) return std::max(0.0, item.width());
  return item.systemItem() == UIBarButtonSystemItemPlayPause ? 1.6 * buttonHeight : buttonHeight;
}

bool takesTheRest(const UIBarButtonItem& item) {
  return item.customView() && !(item.width() > 0);
}

}  // namespace

UIToolbar::UIToolbar(const CGRect& frame) {
  setFrame(frame);
  setDrawsContent(true);
  setUserInteractionEnabled(true);
  setAcceptHoverEvents(true);
}

UIToolbar::~UIToolbar() = default;

void UIToolbar::setItems(std::vector<std::shared_ptr<UIBarButtonItem>> items) {
  YMR_ASSERT_MAIN_THREAD();
  std::erase(items, nullptr);
  const auto former = std::exchange(items_, std::move(items));
  const auto isHere = [this](const auto& item) { return std::count(items_.begin(), items_.end(), item) > 0; };
  for (const auto& item : former) {
    if (item->customView() && !isHere(item)) item->customView()->removeFromSuperview();
  }
  for (const auto& item : items_) {
    if (item->customView()) addSubview(item->customView());
  }
  frames_.assign(items_.size(), {});
  setPressed(heldDown_ = nullptr);
  if (!isHere(focused_)) {
    const auto first = std::find_if(items_.begin(), items_.end(), [](const auto& item) { return item->isButton(); });
    focused_ = first == items_.end() ? nullptr : *first;
  }
  setNeedsLayout();
}

void UIToolbar::setFocusedItem(const std::shared_ptr<UIBarButtonItem>& item) {
  YMR_ASSERT_MAIN_THREAD();
  if (item == focused_ || !item || !item->isButton() || !std::count(items_.begin(), items_.end(), item)) return;
  focused_ = item;
  setNeedsDisplay();
}

CGSize UIToolbar::intrinsicContentSize() const {
  return {noIntrinsicMetric, standardHeight};
}

void UIToolbar::layoutSubviews() {
  double used = 2 * margin;
  double sharing = 0;
  for (const auto& item : items_) {
    used += standardWidth(*item);
    sharing += takesTheRest(*item);
  }
  const double share = std::max(0.0, bounds().size.width / std::max(unit(), 1e-9) - used) / std::max(1.0, sharing);
  double x = margin;
  for (std::size_t index = 0; index < items_.size(); ++index) {
    const auto& item = *items_[index];
    const double width = takesTheRest(item) ? share : standardWidth(item);
    const double inset = item.customView() ? 0 : margin;
    frames_[index] = CGRectMake(x * unit(), inset * unit(), width * unit(), (standardHeight - 2 * inset) * unit());
    if (item.customView()) item.customView()->setFrame(frames_[index]);
    x += width;
  }
  setNeedsDisplay();
}

bool UIToolbar::pressesBegan(const UIPress& press) {
  const auto alive = weak_from_this().lock();
  switch (press.type) {
    case UIPressTypeLeftArrow:
    case UIPressTypeRightArrow:
      tellUsed();
      moveFocus(press.type == UIPressTypeLeftArrow ? -1 : 1);
      return true;
    case UIPressTypeSelect:
      tellUsed();
      if (!press.isRepeat) setPressed(focused_);
      return true;
    default:
      return false;
  }
}

void UIToolbar::pressesEnded(const UIPress& press) {
  if (press.type == UIPressTypeSelect) fire();
}

void UIToolbar::pressesCancelled(const UIPress& press) {
  if (press.type == UIPressTypeSelect) setPressed(nullptr);
}

void UIToolbar::moveFocus(int step) {
  auto place = std::find(items_.begin(), items_.end(), focused_) - items_.begin() + step;
  while (place >= 0 && place < std::ssize(items_) && !items_[std::size_t(place)]->isButton()) place += step;
  if (place >= 0 && place < std::ssize(items_)) setFocusedItem(items_[std::size_t(place)]);
}

std::shared_ptr<UIBarButtonItem> UIToolbar::buttonAt(const CGPoint& place) const {
  for (std::size_t index = 0; index < items_.size(); ++index) {
    const CGRect& frame = frames_[index];
    const QRectF rect(frame.origin.x, frame.origin.y, frame.size.width, frame.size.height);
    if (items_[index]->isButton() && rect.contains(place.x, place.y)) return items_[index];
  }
  return nullptr;
}

void UIToolbar::touched(const UIEvent& event) {
  const auto alive = weak_from_this().lock();
  const UITouch touch = event.allTouches().front();
  const auto button = buttonAt(touch.locationInView(*this));
  switch (touch.phase()) {
    case UITouchPhaseBegan:
      tellUsed();
      heldDown_ = button;
      setFocusedItem(button);
      return setPressed(button);
    case UITouchPhaseMoved:
      tellUsed();
      return setPressed(button == heldDown_ ? button : nullptr);
    case UITouchPhaseEnded:
      heldDown_ = nullptr;
      return fire();
    case UITouchPhaseCancelled:
      return setPressed(heldDown_ = nullptr);
    case UITouchPhaseStationary:
      return;
  }
}

void UIToolbar::hoverEnterEvent(QHoverEvent* event) {
  pointer_ = mapToScene(event->position());
}

// A bar that comes up under a pointer at rest hears of it as well; only one that moves counts.
void UIToolbar::hoverMoveEvent(QHoverEvent* event) {
  const QPointF place = mapToScene(event->position());
  if (place == std::exchange(pointer_, place)) return;
  setFocusedItem(buttonAt({event->position().x(), event->position().y()}));
  tellUsed();
}

void UIToolbar::setPressed(std::shared_ptr<UIBarButtonItem> item) {
  if (pressed_ == item) return;
  pressed_ = std::move(item);
  setNeedsDisplay();
}

void UIToolbar::tellUsed() {
  if (const auto used = used_) used();
}

void UIToolbar::fire() {
  const auto alive = weak_from_this().lock();
  const auto item = pressed_;
  setPressed(nullptr);
  tellUsed();
  if (!item) return;
  if (const auto action = item->action()) action(*item);
}
