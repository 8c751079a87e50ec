#include "platform/avfoundation/process/PictureReceiver.h"

#include <algorithm>

#include "platform/avfoundation/process/DeviceMemory.h"
#include "platform/avfoundation/process/PictureLayout.h"

namespace {

// 8K in ten bits. A decoder holds up to seventeen pictures, its threads some more, and the screen two.
constexpr std::uint64_t slotLimit = 128 * 1024 * 1024;
constexpr std::uint64_t roomLimit = 512 * 1024 * 1024;
constexpr std::uint32_t fewestSlots = 8;
constexpr std::uint32_t mostSlots = 40;
// How often a process may ask, each time for larger pictures than before, and for how much in all.
constexpr std::uint32_t roomsLimit = 16;
constexpr std::uint64_t allRoomsLimit = 1024 * 1024 * 1024;

struct Held {
  std::shared_ptr<const void> memory;
  std::function<void(std::uint64_t)> giveBack;
  std::uint64_t picture;
  ~Held() { giveBack(picture); }
};

}  // namespace

PictureReceiver::PictureReceiver(std::function<void(std::uint64_t)> giveBack) : giveBack_(std::move(giveBack)) {}

std::optional<PictureReceiver::Room> PictureReceiver::makeRoom(std::uint64_t slotSize) {
  if (slotSize == 0 || slotSize > slotLimit || rooms_.size() == roomsLimit) return std::nullopt;
  const auto page = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
  const std::uint64_t size = (slotSize + page - 1) / page * page;
  std::uint64_t held = 0;
  for (const Room& room : rooms_) held += room.area.slotSize * room.area.count;
  if (!rooms_.empty() && size <= rooms_.back().area.slotSize) return std::nullopt;
  const auto count = std::clamp(static_cast<std::uint32_t>(roomLimit / size), fewestSlots, mostSlots);
  if (held + size * count > allRoomsLimit) return std::nullopt;
  auto memory =
      std::make_shared<SharedMemory>(SharedMemory::make("ymr-pictures", size * count, SharedMemory::Access::bothWrite));
  if (!*memory) return std::nullopt;
  const auto number = static_cast<std::uint32_t>(rooms_.size());
  rooms_.push_back({wire::Area{.number = number, .slotSize = size, .count = count}, std::move(memory)});
  return rooms_.back();
}

void PictureReceiver::setSink(std::uint64_t number, std::shared_ptr<VideoFrameSink> sink) {
  std::lock_guard lock(mutex_);
  number_ = number;
  sink_ = std::move(sink);
}

std::optional<PictureReceiver::Place> PictureReceiver::placeOf(const wire::Picture& picture, Descriptor memory) const {
  if (picture.isOnDevice) {
    auto device = DeviceMemory::map(std::move(memory), slotLimit);
    if (!device) return std::nullopt;
    return Place{device->data(), device->size(), device};
  }
  if (picture.area >= rooms_.size()) return std::nullopt;
  const auto& [area, slots] = rooms_[picture.area];
  if (picture.slot >= area.count) return std::nullopt;
  return Place{slots->data() + picture.slot * area.slotSize, area.slotSize, slots};
}

bool PictureReceiver::take(const wire::Picture& picture, Descriptor memory) {
  const auto place = placeOf(picture, std::move(memory));
  if (!place) return false;
  const auto pixels = picturePixels(picture, place->begin, place->size);
  if (!pixels || picture.rotation % 90 != 0 || picture.rotation < 0 || picture.rotation > 270) return false;
  const auto held = std::shared_ptr<Held>(new Held{place->keeper, giveBack_, picture.number});
  VideoFrame frame = converter_.convert(*pixels, held);
  if (!frame.isValid()) return true;
  frame.rotation = picture.rotation;
  frame.mirrored = picture.mirrored;
  frame.time = picture.time;
  std::lock_guard lock(mutex_);
  if (sink_ && picture.sink == number_) sink_->present(std::move(frame));
  return true;
}
