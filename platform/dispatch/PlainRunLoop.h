#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/dispatch/ThreadedRunLoop.h"
#include "platform/dispatch/TimerQueue.h"

// The run loop of a program without a screen, and of tests that play real media. Real time.
//
// Construction installs it; the constructing thread is the main thread and the one that calls run functions.
class YMR_API PlainRunLoop final : public ThreadedRunLoop {
 public:
  PlainRunLoop();
  ~PlainRunLoop() override;

  void post(Block block) override;
  TimerToken schedule(Duration delay, Block block) override;
  void cancel(TimerToken token) override;

  // Runs turns until stop() is called; not at all when it was called since the last run.
  void run();
  // Ends run(), not runUntil(), after the turn at hand. Any thread.
  void stop();
  // Runs turns until `done` returns true or `bound` has passed; returns what `done` last said. It is asked between
  // turns, and every few milliseconds when there are none, since it may look at what other threads do.
  bool runUntil(const std::function<bool()>& done, Duration bound);

 private:
  // Runs one block that is due, after waiting for one at most until `deadline`, or, without one, until stop(). False
  // when nothing was run.
  bool turn(std::optional<Duration> deadline);

  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<std::pair<Duration, Block>> posted_;  // with the time of posting: older than a due timer goes first
  TimerQueue timers_;
  bool stopped_ = false;
};
