#pragma once

#include <functional>
#include <memory>

#include "platform/avfoundation/AVPlayer.h"
#include "platform/dispatch/RunLoop.h"
#include "platform/foundation/ObserverList.h"

// The periodic observers of a player: calls each with the multiples of its interval that media time reaches.
//
// Each observer counts the multiple that comes next. One timer waits for the nearest of them, and asks where time
// stands when it fires: media time drifts from the run loop's, and may have stopped. Thus nothing comes early, twice or
// not at all. Main thread; everything may be called from inside an observer.
class PeriodicTimeObservers : public std::enable_shared_from_this<PeriodicTimeObservers> {
 public:
  // Where media time stands and how it goes.
  struct Pace {
    CMTime position;
    double rate = 0;         // seconds of media a second; 0 stands
    bool isSeeking = false;  // nobody is to be called
    bool isWaiting = false;  // for data: it stands, though the rate says otherwise
  };

  explicit PeriodicTimeObservers(std::function<Pace()> pace);
  ~PeriodicTimeObservers();

  AVPlayerTimeObserverToken add(const CMTime& interval, const dispatch_queue_t& queue,
                                std::function<void(CMTime)> block);
  void remove(const AVPlayerTimeObserverToken& token);

  // The pace has changed, or may have.
  void paceDidChange();
  // Time has jumped to where it stands now: calls everybody, and counts on from here.
  void timeDidJump();
  // Calls for all multiples that time has reached, without waiting for the timer.
  void catchUp();
  // Another item's time begins where that item does.
  void restart();
  // Nobody is called any more.
  void close();

 private:
  // Arms the timer, with at least `floor` to wait.
  void arm(RunLoop::Duration floor);
  void disarm();
  void timerFired();

  const std::function<Pace()> pace_;
  ObserverList<AVPlayerPeriodicObserver> observers_;
  unsigned items_ = 0;  // counts items; a round of calls for one ends when the next begins
  RunLoop::TimerToken timer_ = 0;
  bool isClosed_ = false;
};
