#include "platform/foundation/ConnectionRate.h"

#include <algorithm>

namespace {

constexpr std::size_t bytesNeeded = 128 * 1024;
constexpr std::chrono::milliseconds timeNeeded{50};
// How much of the best an attempt that falls short of it leaves: a connection that has become slow is known after some.
constexpr double memory = 0.9;

}  // namespace

ConnectionRate& ConnectionRate::shared() {
  static auto* const instance = new ConnectionRate;  // threads may still fetch while the process ends
  return *instance;
}

void ConnectionRate::note(std::size_t bytes, std::chrono::nanoseconds elapsed) {
  if (bytes < bytesNeeded || elapsed < timeNeeded) return;
  const double rate = static_cast<double>(bytes) * 8 / 1000 / std::chrono::duration<double>(elapsed).count();
  const std::lock_guard lock(mutex_);
  best_ = std::max(rate, best_.value_or(0) * memory);
}

std::optional<double> ConnectionRate::kilobits() const {
  const std::lock_guard lock(mutex_);
  return best_;
}

void ConnectionRate::forget() {
  const std::lock_guard lock(mutex_);
  best_.reset();
}
