#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

#include "platform/Export.h"

// The one clock and the one main queue of the process.
//
// Everything that has to do with time goes through a RunLoop: the main queue, delayed performs, timers, periodic time
// observers and animations. It has three forms: PlainRunLoop (a program without a screen), QtRunLoop (under a window;
// in platform/uikit) and VirtualRunLoop (tests; time moves only when the test moves it). No other product code reads a
// clock or sleeps.
//
// Exactly one loop is installed at a time, by the object that made it. What outlives it finds a loop that is over: it
// takes everything, drops it at once and calls nobody. Other threads must not be using the loop while it goes; those
// that may go through whileInstalled(). Unless a function says otherwise it may be called from any thread.
class YMR_API RunLoop {
 public:
  using Block = std::function<void()>;
  using Duration = std::chrono::nanoseconds;
  using TimerToken = std::uint64_t;  // never 0; 0 means "no timer"

  RunLoop() = default;
  RunLoop(const RunLoop&) = delete;
  RunLoop& operator=(const RunLoop&) = delete;
  virtual ~RunLoop();

  // The installed loop, or one that is over when there was one before. Stops the process when there has never been one:
  // a host forgot to make it.
  static RunLoop& main();
  // The installed loop, or null.
  static RunLoop* mainIfInstalled();
  // Calls `use` with the installed loop, which stays installed meanwhile, and returns true; returns false when there is
  // none. For threads that may outlive the loop; `use` hands something over and does no more.
  static bool whileInstalled(const std::function<void(RunLoop&)>& use);
  // Makes `loop` the process's loop; null uninstalls. Main thread.
  static void install(RunLoop* loop);

  // Time on a monotonic clock whose zero means nothing.
  virtual Duration now() const = 0;
  // True when the caller runs on the loop's own thread, and not inside a block of a work queue.
  virtual bool isCurrent() const = 0;
  // Runs `block` on a later turn of the loop. Blocks run in the order in which they were posted.
  virtual void post(Block block) = 0;
  // Runs `block` once, `delay` from now (negative counts as 0), on a turn of its own. Timers that are due at the same
  // time run in the order in which they were scheduled.
  virtual TimerToken schedule(Duration delay, Block block) = 0;
  // After the call, made on the loop's thread, the timer's block does not run. Unknown tokens are ignored.
  virtual void cancel(TimerToken token) = 0;
  // Runs `block` off the loop: on a thread of a pool, or, in virtual form, as a turn of its own with isCurrent() false.
  virtual void performWork(Block block) = 0;
  // Returns when `done` does: blocks the calling thread, or, in virtual form, runs the loop. `done` is asked again
  // after every notifyWaiters(), under the lock that waiting uses, so it must not call the loop.
  virtual void waitUntil(const std::function<bool()>& done) = 0;
  virtual void notifyWaiters() = 0;

 protected:
  // Ends being the installed loop, when it is. A subclass calls it in its destructor, while its members still stand.
  void uninstall();
};
