#include "platform/uikit/UIApplication.h"

#include <utility>

#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "platform/uikit/IdleInhibitor.h"
#include "platform/uikit/values/UIScreen.h"

UIApplication::UIApplication() = default;
UIApplication::~UIApplication() = default;

// Never destroyed: windows may outlive what is static.
UIApplication& UIApplication::sharedApplication() {
  static auto* application = new UIApplication;
  return *application;
}

bool UIApplication::isIdleTimerDisabled() const {
  return inhibitor_ != nullptr;
}

void UIApplication::setIdleTimerDisabled(bool disabled) {
  YMR_ASSERT_MAIN_THREAD();
  if (disabled == isIdleTimerDisabled()) return;
  inhibitor_ = disabled ? std::make_unique<IdleInhibitor>() : nullptr;
}

bool UIApplication::isInBackground() const {
  return inBackground_;
}

UIInterfaceOrientation UIApplication::statusBarOrientation() const {
  const CGSize size = UIScreen::mainScreen().bounds().size;
  return size.height > size.width ? UIInterfaceOrientationPortrait : UIInterfaceOrientationLandscapeRight;
}

void UIApplication::setSupportedInterfaceOrientations(std::vector<std::string> names) {
  YMR_ASSERT_MAIN_THREAD();
  supportedOrientations_ = std::move(names);
}

void UIApplication::terminate() {
  NSNotificationCenter::defaultCenter().postNotificationName(UIApplicationWillTerminateNotification, nullptr);
  setIdleTimerDisabled(false);
}

void UIApplication::setVisible(bool visible) {
  YMR_ASSERT_MAIN_THREAD();
  if (inBackground_ == !visible) return;
  inBackground_ = !visible;
  NSNotificationCenter::defaultCenter().postNotificationName(
      visible ? UIApplicationDidBecomeActiveNotification : UIApplicationDidEnterBackgroundNotification, nullptr);
}
