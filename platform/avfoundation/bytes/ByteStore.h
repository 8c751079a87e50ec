#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

#include "platform/Export.h"
#include "platform/avfoundation/bytes/ByteStoreLayout.h"
#include "platform/avfoundation/bytes/MediaBytes.h"
#include "platform/avfoundation/bytes/SharedMemory.h"

// What makes a reader in another process. Three open descriptors: of the bytes, of the words that both sides write, and
// what the reader wakes the store's side with.
struct ByteStoreDescriptors {
  int memory = -1;
  int control = -1;
  int wake = -1;
};

// Bytes of a resource on their way to a reader, which may be in a process that is not to be trusted: the reader's side
// can't write to them, and outlives nothing but itself, so that the next reader finds them as they are.
//
// There are two lanes, each a window of the resource that grows at its end as bytes are appended, and loses its
// beginning as they are no longer needed. Both take their memory from one pool in small chunks; what was used lately is
// used again first, and what was never needed is never touched.
//
// One thread at a time, but for what says otherwise. Who brings the bytes decides what goes into which lane.
class YMR_API ByteStore {
 public:
  static constexpr std::size_t lanes = ByteStoreLayout::lanes;
  static constexpr std::size_t chunkBytes = ByteStoreLayout::chunkBytes;
  static constexpr std::uint64_t placesLimit = std::uint64_t{1} << 62;  // no place beyond it is looked for

  // What the reader wants. It may say anything, so places are held within what there can be, and numbers mean nothing
  // but an order.
  struct Demand {
    bool isWaiting = false;                   // for a byte at `place`
    std::uint32_t readers = 0;                // changes when another one takes over
    std::uint64_t place = 0;                  // or behind what was read last
    std::optional<std::uint64_t> aheadLimit;  // bytes to keep ready, any number; nil until it is said
    std::uint64_t wish = 0;                   // the reader's word, any number; 0 until it is said
    struct Lane {
      // Within the lane's window: behind what was read last in it. Means nothing before `uses` has changed since the
      // lane was moved.
      std::uint64_t place = 0;
      std::uint64_t uses = 0;  // the lane with the higher number was read from later
    };
    std::array<Lane, lanes> lane;
  };

  // A store that holds up to `bytes`, 64 MiB at most; nil when the machine has no memory or no descriptors left.
  static std::shared_ptr<ByteStore> make(std::size_t bytes);
  ByteStore(const ByteStore&) = delete;
  ByteStore& operator=(const ByteStore&) = delete;

  // The store's own, to be sent on or duplicated; open as long as it lives. Any thread.
  ByteStoreDescriptors descriptors() const;
  // A reader in this process; nil when there are no descriptors left. Any thread.
  std::shared_ptr<MediaBytes> makeReader() const;

  // Becomes readable when the reader wants something else than before; takeWake() ends that.
  int wakeDescriptor() const { return wake_.get(); }
  void takeWake();
  Demand demand() const;

  // What the reader hears. The head comes once; it is false for one whose URL is longer than 16 KiB.
  bool tellHead(const MediaBytes::Head& head);
  // Where the resource ends, when its head did not say.
  void tellEnd(std::uint64_t place);
  // It can't be read any further. The first one counts.
  void tellFailure(const NSError& error);
  // What was told. Any thread.
  std::optional<NSError> failure() const;

  std::uint64_t begin(std::size_t lane) const { return windows_[lane].begin; }
  std::uint64_t end(std::size_t lane) const { return windows_[lane].end; }
  bool holds(std::size_t lane, std::uint64_t place) const { return begin(lane) <= place && place < end(lane); }
  // In chunks: all there are, those that no lane has, those of one.
  std::size_t chunkCount() const { return chunkCount_; }
  std::size_t freeCount() const { return free_.size(); }
  std::size_t heldCount(std::size_t lane) const;

  // Empties a lane; it goes on at `place`.
  void move(std::size_t lane, std::uint64_t place);
  // Gives up the chunks of a lane whose bytes are all before `place`.
  void trim(std::size_t lane, std::uint64_t place);
  // Adds bytes at a lane's end: all of them, or, when too few chunks are free, none and false.
  bool append(std::size_t lane, std::span<const std::byte> bytes);
  // Whether there is no room for more in a lane, or no more to come.
  void setFull(std::size_t lane, bool isFull);

 private:
  // The store's own notes. What it has told the reader is never read back.
  struct Window {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    bool isFull = false;
    std::vector<std::uint32_t> chunks;  // by number of chunk, modulo the length
  };

  ByteStore(SharedMemory memory, SharedMemory control, Descriptor wake, std::size_t chunkCount);
  ByteStoreLayout::Board& board() const { return *reinterpret_cast<ByteStoreLayout::Board*>(memory_.data()); }
  ByteStoreLayout::Control& control() const { return *reinterpret_cast<ByteStoreLayout::Control*>(control_.data()); }
  void release(Window& window, std::uint64_t place);
  void signal();

  const SharedMemory memory_, control_;
  const Descriptor wake_;
  std::size_t chunkCount_;
  std::vector<std::uint32_t> free_;  // those used lately at the end
  std::vector<bool> isReserved_;
  std::array<Window, lanes> windows_;
  mutable std::mutex mutex_;  // guards failure_
  std::optional<NSError> failure_;
};
