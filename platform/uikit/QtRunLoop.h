#pragma once

#include <QObject>
#include <deque>
#include <map>
#include <mutex>
#include <utility>

#include "platform/dispatch/ThreadedRunLoop.h"

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
  // QCoreApplication. Main thread.
  static void installIfNeeded();

  void post(Block block) override;
  TimerToken schedule(Duration delay, Block block) override;
  void cancel(TimerToken token) override;

 protected:
  bool event(QEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  // Runs the oldest thing that is due: 0 nothing, 1 a timer, 2 a posted block.
  int turn();
  void arm();

  std::mutex mutex_;
  std::deque<std::pair<Duration, Block>> posted_;  // with the time of posting: older than a due timer goes first
  std::map<std::pair<Duration, TimerToken>, Block> timers_;
  TimerToken lastToken_ = 0;
  int timer_ = 0;  // of Qt's, for the earliest of timers_
  Duration armedFor_ = Duration::max();
};
