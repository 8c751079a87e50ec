#include "platform/uikit/UIPresentation.h"

#include <QQuickWindow>
#include <utility>

#include "platform/dispatch/Dispatch.h"
#include "platform/uikit/UIPressDelivery.h"
#include "platform/uikit/WindowFilling.h"

namespace {

constexpr RunLoop::Duration fade = std::chrono::milliseconds(250);

// Runs `done` on a later turn: after a fade of `view` to `alpha`, or at once.
void show(UIView& view, double alpha, bool animated, std::function<void()> done) {
  UIView::animateWithDuration(
      animated ? fade : RunLoop::Duration::zero(), [&] { view.setAlpha(alpha); },
      [done = std::move(done)](bool) { done(); });
}

}  // namespace

bool UIPresentation::isCurrent() const {
  const auto controller = controller_.lock();
  return controller && controller->presentation_.get() == this;
}

void UIPresentation::appear(QQuickWindow& window, bool animated, Completion completion) {
  const auto controller = controller_.lock();
  focusBefore_ = UIPressDelivery::firstResponder(window);
  const auto view = controller->view();
  fillWindow(*view, window);
  QObject::connect(view.get(), &QQuickItem::windowChanged, &context_, [this](QQuickWindow* now) {
    if (!now) endWithoutWindow();
  });
  view->setAlpha(animated ? 0 : 1);
  controller->viewWillAppear(animated);
  if (isCurrent() && view->window()) {
    if (const auto first = controller->preferredFirstResponder()) first->becomeFirstResponder();
  }
  show(*view, 1, animated, [self = shared_from_this(), controller, animated, completion = std::move(completion)] {
    if (self->isCurrent() && !self->dismissed_ && controller->view()->window()) controller->viewDidAppear(animated);
    if (completion) completion();
  });
}

// The window went, or the view was taken out of it. On a later turn: what holds the view now is being taken apart.
void UIPresentation::endWithoutWindow() {
  if (dismissed_) return;
  dispatch_async(dispatch_get_main_queue(), [self = shared_from_this()] {
    const auto controller = self->controller_.lock();
    if (!self->isCurrent() || self->dismissed_ || controller->view()->window()) return;
    if (const auto presenting = controller->presentingViewController())
      presenting->dismissViewControllerAnimated(false);
  });
}

void UIPresentation::disappear(bool animated, Completion completion) {
  const auto controller = controller_.lock();
  dismissed_ = true;
  const auto view = controller->view();
  controller->viewWillDisappear(animated);
  if (focusBefore_ && view->window() && focusBefore_->window() == view->window()) focusBefore_->forceActiveFocus();
  show(*view, 0, animated, [self = shared_from_this(), controller, view, animated, completion = std::move(completion)] {
    if (self->isCurrent()) {
      controller->presentation_.reset();
      view->removeFromSuperview();
      view->setAlpha(1);
      controller->viewDidDisappear(animated);
    }
    if (completion) completion();
  });
}
