#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/avfoundation/bytes/SharedMemory.h"
#include "platform/avfoundation/engine/PictureConverter.h"
#include "platform/avfoundation/process/Wire.h"

// The host's end of one media process' pictures: makes the memory that they lie in, looks at what the process says of
// each, and hands it to the sink as a frame that is drawn from where it lies. A frame keeps its memory for as long as
// it is held, whatever has become of the process.
//
// setSink() on any thread; the rest on the one that hears the process.
class PictureReceiver {
 public:
  // `giveBack` is called with the number of each picture that was taken, when nobody holds it any more; on any thread.
  explicit PictureReceiver(std::function<void(std::uint64_t picture)> giveBack);

  struct Room {
    wire::Area area;
    std::shared_ptr<SharedMemory> memory;
  };
  // New memory for pictures of so many bytes; nil when that is too much, or too often.
  std::optional<Room> makeRoom(std::uint64_t slotSize);

  // From now on only pictures that carry `number` are handed over; nil for none.
  void setSink(std::uint64_t number, std::shared_ptr<VideoFrameSink> sink);
  // False for one that can't be. `memory` is what came with it: a device's, when its pixels lie there.
  bool take(const wire::Picture& picture, Descriptor memory);

 private:
  // Where a picture lies, and what keeps it there.
  struct Place {
    std::byte* begin;
    std::size_t size;
    std::shared_ptr<const void> keeper;
  };
  std::optional<Place> placeOf(const wire::Picture& picture, Descriptor memory) const;

  const std::function<void(std::uint64_t)> giveBack_;
  PictureConverter converter_;
  // Pictures decoded into the older ones may be due yet. The process lets go of their pages, so they cost nothing.
  std::vector<Room> rooms_;

  std::mutex mutex_;
  std::uint64_t number_ = 0;
  std::shared_ptr<VideoFrameSink> sink_;
};
