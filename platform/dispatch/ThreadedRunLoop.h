#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include "platform/dispatch/RunLoop.h"
#include "platform/dispatch/WorkerPool.h"

// What the two real-time forms of the run loop share: the machine's monotonic clock, worker threads and waiting.
// The thread that constructs it is the loop's thread.
class YMR_API ThreadedRunLoop : public RunLoop {
 public:
  ThreadedRunLoop();
  ~ThreadedRunLoop() override;

  Duration now() const override;
  bool isCurrent() const override;
  void performWork(Block block) override;
  void waitUntil(const std::function<bool()>& done) override;
  void notifyWaiters() override;

 protected:
  // Ends the worker threads. A subclass whose members the blocks may still reach calls it first in its destructor.
  void stopWork();

 private:
  const std::thread::id thread_;
  std::mutex waitMutex_;
  std::condition_variable waiters_;
  WorkerPool workers_;
};
