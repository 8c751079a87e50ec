#include "platform/dispatch/PlainRunLoop.h"

#include <algorithm>

PlainRunLoop::PlainRunLoop() {
  install(this);
}

PlainRunLoop::~PlainRunLoop() {
  stopWork();
  drop();
  uninstall();
}

void PlainRunLoop::drop() {
  decltype(posted_) posted;
  decltype(timers_) timers;
  do {  // what goes may post once more
    posted.clear();
    timers.clear();
    std::lock_guard lock(mutex_);
    posted.swap(posted_);
    timers.swap(timers_);
  } while (!posted.empty() || !timers.empty());
}

void PlainRunLoop::post(Block block) {
  {
    std::lock_guard lock(mutex_);
    posted_.emplace_back(now(), std::move(block));
  }
  wake_.notify_one();
}

RunLoop::TimerToken PlainRunLoop::schedule(Duration delay, Block block) {
  TimerToken token;
  {
    std::lock_guard lock(mutex_);
    token = ++lastToken_;
    timers_.emplace(std::pair(now() + std::max(delay, Duration::zero()), token), std::move(block));
  }
  wake_.notify_one();
  return token;
}

void PlainRunLoop::cancel(TimerToken token) {
  std::lock_guard lock(mutex_);
  std::erase_if(timers_, [token](const auto& timer) { return timer.first.second == token; });
}

bool PlainRunLoop::turn(std::optional<Duration> deadline) {
  Block block;
  {
    std::unique_lock lock(mutex_);
    for (;;) {
      if (stopped_) return true;
      const Duration time = now();
      const Duration timerDue = timers_.empty() ? Duration::max() : timers_.begin()->first.first;
      if (!posted_.empty() && posted_.front().first <= timerDue) {
        block = std::move(posted_.front().second);
        posted_.pop_front();
        break;
      }
      if (timerDue <= time) {
        block = std::move(timers_.extract(timers_.begin()).mapped());
        break;
      }
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
  for (;;) {
    {
      std::lock_guard lock(mutex_);
      if (stopped_) break;
    }
    turn(std::nullopt);
  }
  std::lock_guard lock(mutex_);
  stopped_ = false;
}

void PlainRunLoop::stop() {
  {
    std::lock_guard lock(mutex_);
    stopped_ = true;
  }
  wake_.notify_all();
}

bool PlainRunLoop::runUntil(const std::function<bool()>& done, Duration bound) {
  const Duration deadline = now() + bound;
  while (!done()) {
    if (!turn(deadline)) return done();
  }
  return true;
}
