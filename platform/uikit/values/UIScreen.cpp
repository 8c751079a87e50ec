#include "platform/uikit/values/UIScreen.h"

UIScreen& UIScreen::mainScreen() {
  static UIScreen screen;
  return screen;
}

CGRect UIScreen::bounds() const {
  std::lock_guard lock(mutex_);
  return {{}, size_};
}

void UIScreen::setSize(const CGSize& size) {
  if (!(size.width > 0 && size.height > 0)) return;
  std::lock_guard lock(mutex_);
  size_ = size;
}
