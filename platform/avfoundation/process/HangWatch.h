#pragma once

#include <cstdint>
#include <functional>

#include "platform/dispatch/RunLoop.h"

// Tells when somebody whose heart should beat has stood still for too long. Time counts only while this loop runs: a
// host that was stopped, or busy, accuses nobody. Main thread.
class HangWatch {
 public:
  // Begins anew. `beats` gives the number of beats so far; `hung` is called once, on a turn of its own, when it has not
  // changed for silenceLimit.
  void begin(std::function<std::uint64_t()> beats, std::function<void()> hung);
  static constexpr RunLoop::Duration silenceLimit = std::chrono::seconds(2);
  void end();
  HangWatch() = default;
  HangWatch(const HangWatch&) = delete;
  HangWatch& operator=(const HangWatch&) = delete;
  ~HangWatch() { end(); }

 private:
  void look();

  std::function<std::uint64_t()> beats_;
  std::function<void()> hung_;
  std::uint64_t last_ = 0;
  RunLoop::Duration silence_{0};
  RunLoop::TimerToken timer_ = 0;
};
