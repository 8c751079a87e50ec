#include "platform/foundation/NSTimer.h"

#include <algorithm>
#include <utility>

#include "platform/dispatch/Weakly.h"
#include "platform/foundation/MainThread.h"

struct NSTimer::State : std::enable_shared_from_this<State> {
  void arm();
  void fire();

  RunLoop::Duration interval{};
  RunLoop::Duration due{};
  bool repeats = false;
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
  auto state = std::make_shared<State>();
  state->interval = std::max<RunLoop::Duration>(interval, std::chrono::microseconds(100));
  state->due = RunLoop::main().now() + state->interval;
  state->repeats = repeats;
  state->block = std::move(block);
  state->arm();
  return std::shared_ptr<NSTimer>(new NSTimer(std::move(state)));
}

void NSTimer::State::arm() {
  RunLoop& loop = RunLoop::main();
  token = loop.schedule(due - loop.now(), weakly(weak_from_this(), &State::fire));
}

void NSTimer::State::fire() {
  if (!valid) return;
  std::function<void()> taken;  // out of the timer, which the block may let go of
  if (repeats) {
    taken = block;
    const auto missed = (RunLoop::main().now() - due) / interval;
    due += (missed + 1) * interval;
    arm();
  } else {
    taken = std::exchange(block, nullptr);
    valid = false;
  }
  taken();
}

void NSTimer::invalidate() {
  if (!state_->valid) return;
  state_->valid = false;
  if (RunLoop* loop = RunLoop::mainIfInstalled()) loop->cancel(state_->token);
  const auto block = std::exchange(state_->block, nullptr);  // destroyed last: it may own the holder of this timer
}
