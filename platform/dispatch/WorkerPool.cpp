#include "platform/dispatch/WorkerPool.h"

#include <utility>

#include "platform/dispatch/BlockedSignals.h"

void WorkerPool::stop() {
  std::deque<std::function<void()>> dropped;  // destroyed after the lock is released: what they own may call back
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
    dropped.swap(blocks_);
  }
  wake_.notify_all();
  for (auto& thread : threads_) thread.join();
  threads_.clear();
}

void WorkerPool::run(std::function<void()> block) {
  std::lock_guard lock(mutex_);
  if (stopping_) return;
  blocks_.push_back(std::move(block));
  if (idle_ < blocks_.size() && threads_.size() < threadsLimit) {
    const BlockedSignals blocked;
    threads_.emplace_back([this] { work(); });
  }
  wake_.notify_one();
}

void WorkerPool::work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    ++idle_;
    wake_.wait(lock, [this] { return stopping_ || !blocks_.empty(); });
    --idle_;
    if (stopping_) return;
    auto block = std::move(blocks_.front());
    blocks_.pop_front();
    lock.unlock();
    block();
    block = nullptr;  // what the block owns goes before the lock is taken
    lock.lock();
  }
}
