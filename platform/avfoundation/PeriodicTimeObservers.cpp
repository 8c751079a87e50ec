#include "platform/avfoundation/PeriodicTimeObservers.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/dispatch/Weakly.h"

using namespace std::chrono_literals;

class AVPlayerPeriodicObserver : public ObserverListEntry,
                                 public std::enable_shared_from_this<AVPlayerPeriodicObserver> {
 public:
  AVPlayerPeriodicObserver(const CMTime& interval, dispatch_queue_t queue, std::function<void(CMTime)> block)
      : interval_(interval), queue_(std::move(queue)), block_(std::move(block)) {}

  // The next multiple to call with.
  CMTime next() const { return multiple(next_); }
  // Makes the first multiple at `position` or after it the next one; or the first one after it.
  void countFrom(const CMTime& position) {
    countAfter(position);
    if (multiple(next_ - 1) == position) --next_;
  }
  void countAfter(const CMTime& position) { next_ = multiples(position) + 1; }
  void countOn() { ++next_; }
  // Forgets all but the latest `limit` of the multiples that `position` has reached.
  void forgetAllBut(std::int64_t limit, const CMTime& position) {
    next_ = std::max(next_, multiples(position) + 1 - limit);
  }

  void call(const CMTime& time) {
    if (!queue_ || queue_ == dispatch_get_main_queue()) {
      block_(time);
      return;
    }
    // Weakly: the observer holds the queue, on which this may be waiting when everything ends.
    dispatch_async(queue_, weakly(weak_from_this(), [time](const AVPlayerPeriodicObserver& self) {
                     if (!self.isRemoved()) self.block_(time);
                   }));
  }

 private:
  __extension__ using Wide = __int128;

  CMTime multiple(std::int64_t number) const { return CMTimeMake(interval_.value * number, interval_.timescale); }
  // How many whole intervals lie before `position`.
  std::int64_t multiples(const CMTime& position) const {
    if (!CMTIME_IS_NUMERIC(position)) return 0;
    const Wide units = static_cast<Wide>(position.value) * interval_.timescale;
    return static_cast<std::int64_t>(units / (static_cast<Wide>(interval_.value) * position.timescale));
  }

  const CMTime interval_;
  const dispatch_queue_t queue_;
  const std::function<void(CMTime)> block_;
  std::int64_t next_ = 0;
};

namespace {

// How many multiples a main thread that was held up makes up for.
constexpr std::int64_t missedLimit = 60;
// The timer came before media time did: how long to wait before asking again, and while data are missing.
constexpr RunLoop::Duration shortWait = 5ms;
constexpr RunLoop::Duration longWait = 100ms;

}  // namespace

PeriodicTimeObservers::PeriodicTimeObservers(std::function<Pace()> pace) : pace_(std::move(pace)) {}

PeriodicTimeObservers::~PeriodicTimeObservers() {
  close();
}

AVPlayerTimeObserverToken PeriodicTimeObservers::add(const CMTime& interval, const dispatch_queue_t& queue,
                                                     std::function<void(CMTime)> block) {
  if (isClosed_ || !block || !CMTIME_IS_NUMERIC(interval) || interval <= kCMTimeZero) return nullptr;
  const auto observer = std::make_shared<AVPlayerPeriodicObserver>(interval, queue, std::move(block));
  observer->countFrom(pace_().position);
  observers_.add(observer);
  arm(0ms);
  return observer;
}

void PeriodicTimeObservers::remove(const AVPlayerTimeObserverToken& token) {
  if (observers_.remove(token) && observers_.entries().empty()) disarm();
}

void PeriodicTimeObservers::close() {
  isClosed_ = true;
  disarm();
  observers_.removeIf([](const auto&) { return true; });
}

void PeriodicTimeObservers::paceDidChange() {
  arm(0ms);
}

void PeriodicTimeObservers::restart() {
  ++items_;
  const CMTime start = pace_().position;
  for (const auto& observer : observers_.entries()) observer->countFrom(start);
  arm(0ms);
}

void PeriodicTimeObservers::timeDidJump() {
  const auto self = shared_from_this();
  const CMTime position = pace_().position;
  for (const auto& observer : observers_.entries()) observer->countAfter(position);
  bool isOver = false;
  observers_.callEach([&, item = items_](AVPlayerPeriodicObserver& observer) {
    isOver = isOver || isClosed_ || item != items_ || pace_().isSeeking;
    if (!isOver) observer.call(position);
  });
  if (!isOver) arm(0ms);
}

void PeriodicTimeObservers::catchUp() {
  const auto self = shared_from_this();
  observers_.callEach([&, item = items_](AVPlayerPeriodicObserver& observer) {
    while (!isClosed_ && item == items_ && !observer.isRemoved()) {
      const Pace pace = pace_();
      if (pace.isSeeking) return;
      observer.forgetAllBut(missedLimit, pace.position);
      const CMTime due = observer.next();
      if (due > pace.position) return;
      observer.countOn();
      observer.call(due);
    }
  });
}

void PeriodicTimeObservers::arm(RunLoop::Duration floor) {
  disarm();
  const auto& observers = observers_.entries();
  if (isClosed_ || observers.empty()) return;
  const Pace pace = pace_();
  if (pace.isSeeking || pace.rate <= 0) return;
  const auto nearest = std::min_element(observers.begin(), observers.end(), [](const auto& left, const auto& right) {
    return left->next() < right->next();
  });
  RunLoop::Duration wait = 0ms;
  if (const CMTime next = (*nearest)->next(); next > pace.position) {
    const CMTime away = CMTimeConvertScale(CMTimeSubtract(next, pace.position), 1000000000);
    wait = RunLoop::Duration(static_cast<std::int64_t>(std::ceil(static_cast<double>(away.value) / pace.rate)));
    wait = std::max({wait, pace.isWaiting ? longWait : floor, RunLoop::Duration(1)});
  }
  timer_ = RunLoop::main().schedule(wait, weakly(weak_from_this(), &PeriodicTimeObservers::timerFired));
}

void PeriodicTimeObservers::disarm() {
  if (timer_) RunLoop::main().cancel(std::exchange(timer_, 0));
}

void PeriodicTimeObservers::timerFired() {
  timer_ = 0;
  catchUp();
  arm(shortWait);
}
