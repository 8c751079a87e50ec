#pragma once

#include <mutex>

#include "platform/Export.h"
#include "platform/uikit/values/CGGeometry.h"

// The screen that the process shows its pictures on. Any thread.
//
// Its bounds are those of the window that presents, in points. A program without a window sets them itself.
class YMR_API UIScreen {
 public:
  static UIScreen& mainScreen();

  // Origin 0, 0. 1920 x 1080 until something is known.
  CGRect bounds() const;
  // For who presents: the window, or a program that has none. A size that is not positive is ignored.
  void setSize(const CGSize& size);

 private:
  UIScreen() = default;
  mutable std::mutex mutex_;
  CGSize size_{1920, 1080};
};
