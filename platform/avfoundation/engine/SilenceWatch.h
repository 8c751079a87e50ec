#pragma once

#include <functional>

#include "platform/dispatch/RunLoop.h"

// Calls `expired` when something has been waited for too long, all its waits since the last reset() added up. So a
// viewer who pauses in a stall neither runs the time down nor begins it anew. Main thread.
class SilenceWatch {
 public:
  explicit SilenceWatch(std::function<void()> expired);
  SilenceWatch(const SilenceWatch&) = delete;
  SilenceWatch& operator=(const SilenceWatch&) = delete;
  ~SilenceWatch();

  // Begins or ends a wait; `limit` is what all waits together may last.
  void setWaiting(bool waiting, RunLoop::Duration limit);
  // What was waited for has come.
  void reset();

 private:
  const std::function<void()> expired_;
  RunLoop::Duration spent_{0};  // by waits that have ended
  RunLoop::Duration began_{0};
  RunLoop::TimerToken timer_ = 0;  // 0: no wait is going on
};
