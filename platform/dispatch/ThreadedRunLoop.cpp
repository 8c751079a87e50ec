#include "platform/dispatch/ThreadedRunLoop.h"

ThreadedRunLoop::ThreadedRunLoop() : thread_(std::this_thread::get_id()) {}

ThreadedRunLoop::~ThreadedRunLoop() {
  stopWork();
}

void ThreadedRunLoop::stopWork() {
  workers_.stop();
}

RunLoop::Duration ThreadedRunLoop::now() const {
  return std::chrono::duration_cast<Duration>(std::chrono::steady_clock::now().time_since_epoch());
}

bool ThreadedRunLoop::isCurrent() const {
  return std::this_thread::get_id() == thread_;
}

void ThreadedRunLoop::performWork(Block block) {
  workers_.run(std::move(block));
}

void ThreadedRunLoop::waitUntil(const std::function<bool()>& done) {
  std::unique_lock lock(waitMutex_);
  waiters_.wait(lock, done);
}

void ThreadedRunLoop::notifyWaiters() {
  { std::lock_guard lock(waitMutex_); }  // a waiter is either before its question or asleep, never between
  waiters_.notify_all();
}
