#include "platform/avfoundation/process/HangWatch.h"

#include <utility>

namespace {
// Each look counts for no more than this, however long ago the one before was.
constexpr RunLoop::Duration interval = std::chrono::milliseconds(250);
}  // namespace

void HangWatch::begin(std::function<std::uint64_t()> beats, std::function<void()> hung) {
  end();
  beats_ = std::move(beats);
  hung_ = std::move(hung);
  last_ = beats_();
  silence_ = {};
  timer_ = RunLoop::main().schedule(interval, [this] { look(); });
}

void HangWatch::end() {
  if (timer_) RunLoop::main().cancel(std::exchange(timer_, 0));
}

void HangWatch::look() {
  timer_ = 0;
  const std::uint64_t beats = beats_();
  silence_ = beats == last_ ? silence_ + interval : RunLoop::Duration::zero();
  last_ = beats;
  if (silence_ >= silenceLimit) {
    const auto hung = std::exchange(hung_, nullptr);
    return hung();
  }
  timer_ = RunLoop::main().schedule(interval, [this] { look(); });
}
