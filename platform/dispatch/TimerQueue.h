#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <utility>

#include "platform/dispatch/RunLoop.h"

// The timers of one run loop, by when they are due and, within a moment, by when they were added. No locks; blocks are
// handed out, so that they go where the caller holds no lock either: what they own may use the loop.
class TimerQueue {
 public:
  using Block = RunLoop::Block;
  using Duration = RunLoop::Duration;
  using TimerToken = RunLoop::TimerToken;

  TimerToken add(Duration due, Block block) {
    const TimerToken token = nextToken();
    timers_.emplace(std::pair(due, token), std::move(block));
    return token;
  }

  // When the first is due.
  std::optional<Duration> next() const {
    if (timers_.empty()) return std::nullopt;
    return timers_.begin()->first.first;
  }

  // The first timer's block when it is due at `now`, else an empty one.
  Block takeDue(Duration now) {
    if (timers_.empty() || timers_.begin()->first.first > now) return nullptr;
    return std::move(timers_.extract(timers_.begin()).mapped());
  }

  // The timer's block; an empty one for an unknown token.
  Block take(TimerToken token) {
    for (auto timer = timers_.begin(); timer != timers_.end(); ++timer) {
      if (timer->first.second == token) return std::move(timers_.extract(timer).mapped());
    }
    return nullptr;
  }

  bool empty() const { return timers_.empty(); }
  std::size_t size() const { return timers_.size(); }
  void swap(TimerQueue& other) { timers_.swap(other.timers_); }

 private:
  // Grows from loop to loop too, so that a token left over from one cancels nothing of the next.
  YMR_API static TimerToken nextToken();

  std::map<std::pair<Duration, TimerToken>, Block> timers_;
};
