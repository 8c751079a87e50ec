#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

// Threads that run blocks for the work queues. A block may wait for others, so the pool grows while blocks are queued
// and nobody is idle, up to a limit; threads stay until the pool is destroyed.
//
// Any thread may call run(). stop() waits for running blocks and drops those not begun and those that still come.
class WorkerPool {
 public:
  static constexpr std::size_t threadsLimit = 64;

  WorkerPool() = default;
  ~WorkerPool() { stop(); }
  void run(std::function<void()> block);
  void stop();

 private:
  void work();

  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<std::function<void()>> blocks_;
  std::vector<std::thread> threads_;
  std::size_t idle_ = 0;
  bool stopping_ = false;
};
