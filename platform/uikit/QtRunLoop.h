#pragma once

#include <QObject>
#include <deque>
#include <mutex>
#include <utility>

#include "platform/dispatch/ThreadedRunLoop.h"
#include "platform/dispatch/TimerQueue.h"

// The run loop under a screen: turns of Qt's event loop, which the host runs. Real time, timers precise to a
// millisecond.
//
// Constructed on the thread of the QCoreApplication, after it; it installs itself. Posting is cheap and wakes the event
// loop. Turns also run inside nested event loops.
class YMR_API QtRunLoop final : public QObject, public ThreadedRunLoop {
 public:
  QtRunLoop();
  ~QtRunLoop() override;

  // Makes one, which lives as long as the QCoreApplication, when none of any form is installed and there is a
  // QCoreApplication. Whatever the form, the end of the QCoreApplication is told from then on: see
  // UIApplicationWillTerminateNotification. Main thread.
  static void installIfNeeded();

  void post(Block block) override;
  TimerToken schedule(Duration delay, Block block) override;
  void cancel(TimerToken token) override;

 protected:
  bool event(QEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  enum class Turn { nothing, timer, block };

  // Runs the oldest thing that is due and tells what it was.
  Turn turn();
  // Sets Qt's timer for the earliest of ours.
  void arm();

  std::mutex mutex_;
  std::deque<std::pair<Duration, Block>> posted_;  // with the time of posting: older than a due timer goes first
  TimerQueue timers_;
  int timer_ = 0;  // of Qt's, for the earliest of timers_
  Duration armedFor_ = Duration::max();
};
