#include "apps/ymr-media/PictureSlots.h"

#include <sys/mman.h>

#include <chrono>

namespace {
// The host answers within a fraction of a millisecond, unless it is stopped.
constexpr auto answerLimit = std::chrono::milliseconds(500);
constexpr std::size_t warmLimit = 1;
}  // namespace

void PictureSlots::add(const wire::Area& area, Descriptor descriptor) {
  auto memory = SharedMemory::adopt(std::move(descriptor), area.slotSize * area.count, true);
  if (!memory) return;
  std::lock_guard lock(mutex_);
  for (Room& older : rooms_) {
    for (const std::uint32_t slot : older.warm) older.memory.forget(slot * older.area.slotSize, older.area.slotSize);
    older.cold.insert(older.cold.end(), older.warm.begin(), older.warm.end());
    older.warm.clear();
  }
  Room& room = rooms_.emplace_back(Room{area, std::move(memory), {}, {}});
  for (std::uint32_t slot = area.count; slot > 0; --slot) room.cold.push_back(slot - 1);
  added_.notify_all();
}

bool PictureSlots::hasRoom(std::unique_lock<std::mutex>& lock, std::size_t size) {
  const auto fits = [&] { return !rooms_.empty() && rooms_.back().area.slotSize >= size; };
  if (fits()) return true;
  if (asked_ < size) {
    asked_ = size;
    ask_(size);
  }
  return added_.wait_for(lock, answerLimit, fits);
}

std::byte* PictureSlots::take(std::size_t size) {
  std::unique_lock lock(mutex_);
  if (hasRoom(lock, size)) {
    Room& room = rooms_.back();
    for (auto* slots : {&room.warm, &room.cold}) {
      if (slots->empty()) continue;
      const std::uint32_t slot = slots->back();
      slots->pop_back();
      return room.memory.data() + slot * room.area.slotSize;
    }
  }
  void* pages = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return pages == MAP_FAILED ? nullptr : static_cast<std::byte*>(pages);
}

void PictureSlots::giveBack(std::byte* pages, std::size_t size) {
  std::lock_guard lock(mutex_);
  for (Room& room : rooms_) {
    const auto place = placeIn(room, pages);
    if (!place) continue;
    if (&room == &rooms_.back() && room.warm.size() < warmLimit) {
      room.warm.push_back(place->slot);
    } else {
      room.memory.forget(place->slot * room.area.slotSize, room.area.slotSize);
      room.cold.push_back(place->slot);
    }
    return;
  }
  munmap(pages, size);
}

std::optional<PictureSlots::Place> PictureSlots::placeOf(const void* byte) const {
  std::lock_guard lock(mutex_);
  for (const Room& room : rooms_) {
    if (const auto place = placeIn(room, static_cast<const std::byte*>(byte))) return place;
  }
  return std::nullopt;
}

std::optional<PictureSlots::Place> PictureSlots::placeIn(const Room& room, const std::byte* byte) const {
  const std::byte* begin = room.memory.data();
  if (byte < begin || byte >= begin + room.memory.size()) return std::nullopt;
  const auto slot = static_cast<std::uint32_t>(static_cast<std::size_t>(byte - begin) / room.area.slotSize);
  return Place{room.area.number, slot, room.memory.data() + slot * room.area.slotSize, room.area.slotSize};
}
