#pragma once

#include <functional>
#include <memory>

#include "platform/Export.h"
#include "platform/dispatch/RunLoop.h"

// Fires a block on the main queue after an interval, once or again and again. Main thread.
//
// Kept from the platform: invalidate() is final; a repeating timer fires at multiples of its interval and skips those
// that it missed. Unlike the platform's, it is owned by its holder: letting go of it invalidates it.
class YMR_API NSTimer {
 public:
  static std::shared_ptr<NSTimer> scheduledTimerWithTimeInterval(RunLoop::Duration interval, bool repeats,
                                                                 std::function<void()> block);
  NSTimer(const NSTimer&) = delete;
  NSTimer& operator=(const NSTimer&) = delete;
  ~NSTimer();

  void invalidate();

 private:
  struct State;
  explicit NSTimer(std::shared_ptr<State> state);
  std::shared_ptr<State> state_;
};
