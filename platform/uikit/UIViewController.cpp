#include "platform/uikit/UIViewController.h"

#include <QQuickWindow>
#include <utility>

#include "platform/foundation/MainThread.h"
#include "platform/uikit/UIPresentation.h"

UIViewController::UIViewController() = default;

UIViewController::~UIViewController() {
  if (!view_) return;
  view_->viewController_ = nullptr;
  view_->removeFromSuperview();
}

const std::shared_ptr<UIView>& UIViewController::view() {
  YMR_ASSERT_MAIN_THREAD();
  if (!view_) {
    loadView();
    if (!view_) setView(std::make_shared<UIView>());
    viewDidLoad();
  }
  return view_;
}

void UIViewController::setView(std::shared_ptr<UIView> view) {
  YMR_ASSERT_MAIN_THREAD();
  if (view_) view_->viewController_ = nullptr;
  view_ = std::move(view);
  if (view_) view_->viewController_ = this;
}

void UIViewController::presentViewController(const std::shared_ptr<UIViewController>& controller, bool animated,
                                             Completion completion) {
  YMR_ASSERT_MAIN_THREAD();
  const auto self = std::static_pointer_cast<UIViewController>(shared_from_this());
  QQuickWindow* window = view()->window();
  if (!controller || controller == self || controller->presentingViewController() || presented_ || !window) return;
  presented_ = controller;
  controller->presenting_ = self;
  controller->presentation_ = std::make_shared<UIPresentation>(controller);
  const auto presentation = controller->presentation_;
  presentation->appear(*window, animated, std::move(completion));
}

void UIViewController::dismissViewControllerAnimated(bool animated, Completion completion) {
  YMR_ASSERT_MAIN_THREAD();
  const auto self = shared_from_this();
  if (!presented_) {
    const auto presenting = presentingViewController();
    if (presenting) presenting->dismissViewControllerAnimated(animated, std::move(completion));
    return;
  }
  // From the top down, so that each finds the focus where it was when it came.
  const auto leaving = std::exchange(presented_, nullptr);
  if (leaving->presented_) leaving->dismissViewControllerAnimated(animated);
  leaving->presenting_.reset();
  const auto presentation = leaving->presentation_;
  if (presentation) presentation->disappear(animated, std::move(completion));
}

std::shared_ptr<UIView> UIViewController::preferredFirstResponder() {
  return view();
}

bool UIViewController::prefersStatusBarHidden() const {
  return false;
}

bool UIViewController::shouldAutorotate() const {
  return true;
}

UIInterfaceOrientation UIViewController::preferredInterfaceOrientationForPresentation() const {
  return UIApplication::sharedApplication().statusBarOrientation();
}

void UIViewController::loadView() {
  setView(std::make_shared<UIView>());
}

void UIViewController::viewDidLoad() {}

void UIViewController::viewWillAppear(bool) {}

void UIViewController::viewDidAppear(bool) {}

void UIViewController::viewWillDisappear(bool) {}

void UIViewController::viewDidDisappear(bool) {}

bool UIViewController::pressesBegan(const UIPress&) {
  return false;
}

void UIViewController::pressesEnded(const UIPress&) {}

void UIViewController::pressesCancelled(const UIPress&) {}
