#include "platform/uikit/UIWakefulness.h"

#include "platform/uikit/UIApplication.h"

void UIWakefulness::setAwake(bool awake) {
  if (awake == isAwake_) return;
  isAwake_ = awake;
  static int count = 0;
  count += awake ? 1 : -1;
  UIApplication::sharedApplication().setIdleTimerDisabled(count > 0);
}
