#include "platform/dispatch/VirtualRunLoop.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <utility>

#include "platform/dispatch/DropBlocks.h"

namespace {
thread_local const VirtualRunLoop* loopOfThread = nullptr;
}

// Not zero, so that code which takes 0 for "never" is found out.
VirtualRunLoop::VirtualRunLoop() : now_(std::chrono::hours(1)) {
  loopOfThread = this;
  install(this);
}

VirtualRunLoop::~VirtualRunLoop() {
  dropBlocks(mutex_, turns_, timers_);
  uninstall();
  if (loopOfThread == this) loopOfThread = nullptr;
}

RunLoop::Duration VirtualRunLoop::now() const {
  std::lock_guard lock(mutex_);
  return now_;
}

bool VirtualRunLoop::isCurrent() const {
  return loopOfThread == this && !inWork_;
}

void VirtualRunLoop::post(Block block) {
  std::lock_guard lock(mutex_);
  turns_.push_back({std::move(block), false});
}

void VirtualRunLoop::performWork(Block block) {
  std::lock_guard lock(mutex_);
  turns_.push_back({std::move(block), true});
}

RunLoop::TimerToken VirtualRunLoop::schedule(Duration delay, Block block) {
  std::lock_guard lock(mutex_);
  return timers_.add(now_ + std::max(delay, Duration::zero()), std::move(block));
}

void VirtualRunLoop::cancel(TimerToken token) {
  Block cancelled;  // destroyed after the lock is released: what it owns may call back
  std::lock_guard lock(mutex_);
  cancelled = timers_.take(token);
}

void VirtualRunLoop::run(Turn turn) {
  const bool outer = std::exchange(inWork_, turn.isWork);
  turn.block();
  turn.block = nullptr;
  inWork_ = outer;
}

bool VirtualRunLoop::turn() {
  Turn next;
  {
    std::lock_guard lock(mutex_);
    if (!turns_.empty()) {
      next = std::move(turns_.front());
      turns_.pop_front();
    } else if (Block due = timers_.takeDue(now_)) {
      next = {std::move(due), false};
    } else {
      return false;
    }
  }
  run(std::move(next));
  return true;
}

void VirtualRunLoop::moveTo(Duration time) {
  std::lock_guard lock(mutex_);
  now_ = std::max(now_, time);
}

void VirtualRunLoop::runUntilIdle() {
  while (turn()) {
  }
}

void VirtualRunLoop::advance(Duration duration) {
  const Duration end = now() + duration;
  advanceUntil([] { return false; }, duration);
  moveTo(end);
  runUntilIdle();
}

bool VirtualRunLoop::advanceUntil(const std::function<bool()>& done, Duration bound) {
  const Duration end = now() + bound;
  while (!done()) {
    if (turn()) continue;
    std::optional<Duration> next;
    {
      std::lock_guard lock(mutex_);
      next = timers_.next();
    }
    if (!next || *next > end) return false;
    moveTo(*next);
  }
  return true;
}

void VirtualRunLoop::waitUntil(const std::function<bool()>& done) {
  if (!advanceUntil(done, std::chrono::hours(24))) {
    std::fputs("VirtualRunLoop: waiting for what nothing left on the loop can bring about\n", stderr);
    std::abort();
  }
}
