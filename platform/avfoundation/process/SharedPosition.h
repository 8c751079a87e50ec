#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>

#include "platform/avfoundation/bytes/SharedMemory.h"
#include "platform/dispatch/RunLoop.h"

// Where a media process is in its media, on a page that its host reads without asking. One writer; readers on any
// thread, and they trust nothing: what is torn or absurd is not there.
class SharedPosition {
 public:
  struct State {
    std::int64_t time = 0;    // nanoseconds of media time
    RunLoop::Duration at{0};  // when it was so, on the machine's monotonic clock
    bool moves = false;       // and goes on with that clock
    std::int64_t end = 0;     // no position is behind it
    std::uint64_t seek = 0;   // the number of the last seek that the position knows of
    std::uint64_t jumps = 0;  // how often it has gone back, by a seek or otherwise
  };

  // For the host; null when the system has no memory.
  static std::unique_ptr<SharedPosition> make();
  // For the media process, of the descriptor that the host sent.
  static std::unique_ptr<SharedPosition> map(Descriptor descriptor);

  int descriptor() const { return memory_.descriptor(); }
  void write(const State& state);
  // The writer is alive, and so is all that it does. To be called often.
  void beat() { page().beats.fetch_add(1, std::memory_order_relaxed); }

  // nil before the first, and when the writer is in the middle of it for too long.
  std::optional<State> read() const;
  std::uint64_t beats() const { return page().beats.load(std::memory_order_relaxed); }

 private:
  struct Page {
    std::atomic<std::uint32_t> sequence;  // odd while it is being written; 0 before
    std::atomic<std::uint32_t> moves;
    std::atomic<std::int64_t> time, at, end;
    std::atomic<std::uint64_t> seek, jumps, beats;
  };
  static_assert(std::atomic<std::int64_t>::is_always_lock_free);

  explicit SharedPosition(SharedMemory memory) : memory_(std::move(memory)) {}
  Page& page() const { return *reinterpret_cast<Page*>(memory_.data()); }

  const SharedMemory memory_;
};
