#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/avfoundation/bytes/SharedMemory.h"
#include "platform/avfoundation/engine/PictureMemory.h"
#include "platform/avfoundation/process/Wire.h"

// Memory that the host has made for pictures, a slot for each: decoders decode into it, and the host paints from it.
// Where there is none, pictures get pages of this process, and have to be copied on their way.
//
// What is not needed goes back to the system, but for one slot: new pages cost as much as decoding into them. Any
// thread.
class PictureSlots final : public PicturePages {
 public:
  // `ask` asks the host for slots of so many bytes; add() answers.
  explicit PictureSlots(std::function<void(std::uint64_t slotSize)> ask) : ask_(std::move(ask)) {}

  void add(const wire::Area& area, Descriptor memory);
  std::byte* take(std::size_t size) override;
  void giveBack(std::byte* pages, std::size_t size) override;

  struct Place {
    std::uint32_t area;
    std::uint32_t slot;
    std::byte* begin;
    std::size_t size;
  };
  // The slot that holds this byte; nil for memory of this process.
  std::optional<Place> placeOf(const void* byte) const;

 private:
  struct Room {
    wire::Area area;
    SharedMemory memory;
    std::vector<std::uint32_t> warm;  // free, and their pages are there
    std::vector<std::uint32_t> cold;
  };
  std::optional<Place> placeIn(const Room& room, const std::byte* byte) const;
  // Waits a while for the host's answer. With the lock held.
  bool hasRoom(std::unique_lock<std::mutex>& lock, std::size_t size);

  const std::function<void(std::uint64_t)> ask_;
  mutable std::mutex mutex_;
  std::condition_variable added_;
  std::vector<Room> rooms_;  // the last one is used
  std::uint64_t asked_ = 0;  // the size of the slots that were asked for last
};
