#pragma once

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/dispatch/ThreadedRunLoop.h"

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

  // Runs turns until stop() is called.
  void run();
  // Ends run() after the turn at hand. Any thread.
  void stop();
  // Runs turns until `done` returns true (asked between turns) or `bound` has passed; returns what `done` last said.
  bool runUntil(const std::function<bool()>& done, Duration bound);

 private:
  // Lets go of the blocks that wait, with what they own.
  void drop();
  // Runs what is due; waits at most until `deadline` when nothing is. Returns false at the deadline.
  bool turn(std::optional<Duration> deadline);

  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<std::pair<Duration, Block>> posted_;  // with the time of posting: older than a due timer goes first
  std::map<std::pair<Duration, TimerToken>, Block> timers_;
  TimerToken lastToken_ = 0;
  bool stopped_ = false;
};
