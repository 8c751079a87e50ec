#include "platform/foundation/NSTimer.h"

#include <algorithm>
#include <utility>

#include "platform/foundation/MainThread.h"

struct NSTimer::State {
  RunLoop::Duration interval;
  RunLoop::Duration due;
  bool repeats;
  std::function<void()> block;
  bool valid = true;
  RunLoop::TimerToken token = 0;
};

NSTimer::NSTimer(std::shared_ptr<State> state) : state_(std::move(state)) {}

NSTimer::~NSTimer() {
  invalidate();
}

std::shared_ptr<NSTimer> NSTimer::scheduledTimerWithTimeInterval(RunLoop::Duration interval, bool repeats,
                                                                 std::function<void()> block) {
  YMR_ASSERT_MAIN_THREAD();
  interval = std::max<RunLoop::Duration>(interval, std::chrono::microseconds(100));
  auto state = std::make_shared<State>(State{interval, RunLoop::main().now() + interval, repeats, std::move(block)});
  arm(state);
  return std::shared_ptr<NSTimer>(new NSTimer(std::move(state)));
}

void NSTimer::arm(const std::shared_ptr<State>& state) {
  RunLoop& loop = RunLoop::main();
  state->token = loop.schedule(state->due - loop.now(), [weak = std::weak_ptr(state)] {
    const auto alive = weak.lock();
    if (!alive || !alive->valid) return;
    std::function<void()> block;  // taken out of the timer, which the block may let go of
    if (alive->repeats) {
      block = alive->block;
      const auto missed = (RunLoop::main().now() - alive->due) / alive->interval;
      alive->due += (missed + 1) * alive->interval;
      arm(alive);
    } else {
      block = std::exchange(alive->block, nullptr);
      alive->valid = false;
    }
    block();
  });
}

void NSTimer::invalidate() {
  if (!state_->valid) return;
  state_->valid = false;
  if (RunLoop* loop = RunLoop::mainIfInstalled()) loop->cancel(state_->token);
  const auto block = std::exchange(state_->block, nullptr);  // destroyed last: it may own the holder of this timer
}

bool NSTimer::isValid() const {
  return state_->valid;
}
