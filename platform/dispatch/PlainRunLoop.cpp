#include "platform/dispatch/PlainRunLoop.h"

#include <algorithm>

#include "platform/dispatch/DropBlocks.h"

PlainRunLoop::PlainRunLoop() {
  install(this);
}

PlainRunLoop::~PlainRunLoop() {
  stopWork();
  dropBlocks(mutex_, posted_, timers_);
  uninstall();
}

// Wakes under the lock: the loop may go as soon as the block has run.
void PlainRunLoop::post(Block block) {
  std::lock_guard lock(mutex_);
  posted_.emplace_back(now(), std::move(block));
  wake_.notify_one();
}

RunLoop::TimerToken PlainRunLoop::schedule(Duration delay, Block block) {
  std::lock_guard lock(mutex_);
  const TimerToken token = timers_.add(now() + std::max(delay, Duration::zero()), std::move(block));
  wake_.notify_one();
  return token;
}

void PlainRunLoop::cancel(TimerToken token) {
  Block cancelled;  // destroyed after the lock is released: what it owns may call back
  std::lock_guard lock(mutex_);
  cancelled = timers_.take(token);
}

bool PlainRunLoop::turn(std::optional<Duration> deadline) {
  Block block;
  {
    std::unique_lock lock(mutex_);
    for (;;) {
      if (!deadline && std::exchange(stopped_, false)) return false;
      const Duration time = now();
      const Duration timerDue = timers_.next().value_or(Duration::max());
      if (!posted_.empty() && posted_.front().first <= timerDue) {
        block = std::move(posted_.front().second);
        posted_.pop_front();
        break;
      }
      if ((block = timers_.takeDue(time))) break;
      if (deadline && *deadline <= time) return false;
      const Duration until = std::min(deadline.value_or(Duration::max()), timerDue);
      if (until == Duration::max()) {
        wake_.wait(lock);
      } else {
        wake_.wait_for(lock, until - time);
      }
    }
  }
  block();
  return true;
}

void PlainRunLoop::run() {
  while (turn(std::nullopt)) {
  }
}

void PlainRunLoop::stop() {
  {
    std::lock_guard lock(mutex_);
    stopped_ = true;
  }
  wake_.notify_all();
}

bool PlainRunLoop::runUntil(const std::function<bool()>& done, Duration bound) {
  constexpr Duration askAgain = std::chrono::milliseconds(10);
  const Duration deadline = now() + bound;
  while (!done()) {
    const Duration time = now();
    if (time >= deadline) return false;
    turn(std::min(deadline, time + askAgain));
  }
  return true;
}
