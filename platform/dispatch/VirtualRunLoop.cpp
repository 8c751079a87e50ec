#include "platform/dispatch/VirtualRunLoop.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <utility>

namespace {
thread_local const VirtualRunLoop* loopOfThread = nullptr;
}

// Not zero, so that code which takes 0 for "never" is found out.
VirtualRunLoop::VirtualRunLoop() : now_(std::chrono::hours(1)) {
  loopOfThread = this;
  install(this);
}

VirtualRunLoop::~VirtualRunLoop() {
  drop();
  uninstall();
  if (loopOfThread == this) loopOfThread = nullptr;
}

void VirtualRunLoop::drop() {
  decltype(turns_) turns;
  decltype(timers_) timers;
  do {  // what goes may post once more
    turns.clear();
    timers.clear();
    std::lock_guard lock(mutex_);
    turns.swap(turns_);
    timers.swap(timers_);
  } while (!turns.empty() || !timers.empty());
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
  timers_.emplace(std::pair(now_ + std::max(delay, Duration::zero()), ++lastToken_), std::move(block));
  return lastToken_;
}

void VirtualRunLoop::cancel(TimerToken token) {
  std::lock_guard lock(mutex_);
  std::erase_if(timers_, [token](const auto& timer) { return timer.first.second == token; });
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
    } else if (!timers_.empty() && timers_.begin()->first.first <= now_) {
      next = {std::move(timers_.extract(timers_.begin()).mapped()), false};
    } else {
      return false;
    }
  }
  run(std::move(next));
  return true;
}

void VirtualRunLoop::moveTo(Duration time) {
  {
    std::lock_guard lock(mutex_);
    if (time <= now_) return;
    now_ = time;
  }
  if (timeMoved_) timeMoved_();
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
    Duration next;
    {
      std::lock_guard lock(mutex_);
      if (timers_.empty() || timers_.begin()->first.first > end) return false;
      next = timers_.begin()->first.first;
    }
    moveTo(next);
  }
  return true;
}

void VirtualRunLoop::waitUntil(const std::function<bool()>& done) {
  if (!advanceUntil(done, std::chrono::hours(24))) {
    std::fputs("VirtualRunLoop: waiting for what nothing left on the loop can bring about\n", stderr);
    std::abort();
  }
}
