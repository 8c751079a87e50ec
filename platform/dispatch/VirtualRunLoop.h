#pragma once

#include <deque>
#include <mutex>

#include "platform/dispatch/RunLoop.h"
#include "platform/dispatch/TimerQueue.h"

// The run loop of tests: time stands still until the test moves it, and nothing runs until the test asks.
//
// Blocks of work queues are turns of the same thread, during which isCurrent() is false, so that code which belongs on
// the main queue is still caught when it runs elsewhere. Construction installs the loop. post(), performWork() and
// notifyWaiters() may come from any thread; all else is for the constructing thread.
class YMR_API VirtualRunLoop final : public RunLoop {
 public:
  VirtualRunLoop();
  ~VirtualRunLoop() override;

  Duration now() const override;
  bool isCurrent() const override;
  void post(Block block) override;
  TimerToken schedule(Duration delay, Block block) override;
  void cancel(TimerToken token) override;
  void performWork(Block block) override;
  // Runs turns, moving time when nothing else is left, until `done`. Stops the process when nothing is left at all.
  void waitUntil(const std::function<bool()>& done) override;
  void notifyWaiters() override {}

  // Runs everything that is due now, and what that makes due, without moving time.
  void runUntilIdle();
  // Moves time by `duration`, stopping at every timer on the way and running what it makes due.
  void advance(Duration duration);
  // Moves time from timer to timer until `done` holds (asked after every turn) or `bound` has passed; returns `done`.
  bool advanceUntil(const std::function<bool()>& done, Duration bound);
  // Timers still waiting: a test's way to see that nothing was left behind.
  std::size_t pendingTimers() const { return timers_.size(); }

 private:
  struct Turn {
    Block block;
    bool isWork;
  };

  // Runs one due turn; false when there is none.
  bool turn();
  void run(Turn turn);
  void moveTo(Duration time);

  mutable std::mutex mutex_;
  std::deque<Turn> turns_;
  TimerQueue timers_;
  Duration now_;
  bool inWork_ = false;
};
