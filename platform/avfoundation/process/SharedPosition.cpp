#include "platform/avfoundation/process/SharedPosition.h"

#include <algorithm>

namespace {
// A writer is done within a few stores; one that is not has been stopped, or means harm.
constexpr int readingLimit = 16;
// Three hundred years: sums of two stay numbers.
constexpr std::int64_t timeLimit = INT64_MAX / 4;
}  // namespace

std::unique_ptr<SharedPosition> SharedPosition::make() {
  auto memory = SharedMemory::make("ymr-position", sizeof(Page), SharedMemory::Access::bothWrite);
  return memory ? std::unique_ptr<SharedPosition>(new SharedPosition(std::move(memory))) : nullptr;
}

std::unique_ptr<SharedPosition> SharedPosition::map(Descriptor descriptor) {
  auto memory = SharedMemory::adopt(std::move(descriptor), sizeof(Page), true);
  return memory ? std::unique_ptr<SharedPosition>(new SharedPosition(std::move(memory))) : nullptr;
}

void SharedPosition::write(const State& state) {
  constexpr auto relaxed = std::memory_order_relaxed;
  Page& to = page();
  const std::uint32_t sequence = to.sequence.load(relaxed);
  to.sequence.store(sequence + 1, relaxed);
  std::atomic_thread_fence(std::memory_order_release);
  to.time.store(state.time, relaxed);
  to.at.store(state.at.count(), relaxed);
  to.moves.store(state.moves, relaxed);
  to.end.store(state.end, relaxed);
  to.seek.store(state.seek, relaxed);
  to.jumps.store(state.jumps, relaxed);
  to.sequence.store(sequence + 2, std::memory_order_release);
}

std::optional<SharedPosition::State> SharedPosition::read() const {
  constexpr auto relaxed = std::memory_order_relaxed;
  const Page& from = page();
  for (int attempt = 0; attempt < readingLimit; ++attempt) {
    const std::uint32_t before = from.sequence.load(std::memory_order_acquire);
    if (before == 0) return std::nullopt;
    if (before % 2 == 1) continue;
    State state;
    state.time = std::clamp<std::int64_t>(from.time.load(relaxed), 0, timeLimit);
    state.at = RunLoop::Duration(std::clamp<std::int64_t>(from.at.load(relaxed), 0, timeLimit));
    state.moves = from.moves.load(relaxed) != 0;
    state.end = std::clamp<std::int64_t>(from.end.load(relaxed), 0, timeLimit);
    state.seek = from.seek.load(relaxed);
    state.jumps = from.jumps.load(relaxed);
    std::atomic_thread_fence(std::memory_order_acquire);
    if (from.sequence.load(relaxed) == before) return state;
  }
  return std::nullopt;
}
