#include "platform/avfoundation/bytes/ByteStoreReader.h"

#include <algorithm>
#include <cstring>

using namespace ByteStoreLayout;

namespace {

// How far a reader moves on before the store hears of it, unless it waits.
constexpr std::uint64_t tellEvery = 256 * 1024;

}  // namespace

std::shared_ptr<ByteStoreReader> ByteStoreReader::adopt(ByteStoreDescriptors descriptors) {
  auto memory = SharedMemory::adopt(Descriptor(descriptors.memory), boardBytes, false);
  auto control = SharedMemory::adopt(Descriptor(descriptors.control), sizeof(Control), true);
  Descriptor wake(descriptors.wake);
  if (!memory || !control || !wake) return nullptr;
  const auto count = reinterpret_cast<const Board*>(memory.data())->chunkCount;
  if (count == 0 || count > chunksLimit || memory.size() < boardBytes + count * chunkBytes) return nullptr;
  return std::shared_ptr<ByteStoreReader>(new ByteStoreReader(std::move(memory), std::move(control), std::move(wake)));
}

ByteStoreReader::ByteStoreReader(SharedMemory memory, SharedMemory control, Descriptor wake)
    : memory_(std::move(memory)), control_(std::move(control)), wake_(std::move(wake)) {
  // What a reader before this one has left.
  this->control().isWaiting.store(0);
  ++this->control().readers;
  for (const auto& lane : this->control().lane) uses_ = std::max(uses_, lane.uses.load());
}

template <typename Look, typename Ask>
MediaBytes::Outcome ByteStoreReader::waitFor(const Look& look, const Ask& ask) {
  bool hasAsked = false;
  std::optional<Outcome> outcome;
  while (!outcome) {
    const std::uint32_t signal = control().signal.load();
    if ((outcome = look())) break;
    if (isInterrupted_) {
      outcome = Outcome::interrupted;
    } else if (hasAsked) {
      sleepOn(control().signal, signal);
    } else {
      ask();
      control().isWaiting.store(1);
      fence();
      wakeStore();
      hasAsked = true;
    }
  }
  if (hasAsked) control().isWaiting.store(0);
  return *outcome;
}

MediaBytes::Outcome ByteStoreReader::head(Head& head) {
  const auto look = [&]() -> std::optional<Outcome> {
    if (board().hasHead.load()) {
      head.length.reset();
      if (board().hasLength) head.length = board().length;
      head.isSeekable = board().isSeekable;
      head.contentType = board().contentType;
      head.url = board().url;
      return Outcome::done;
    }
    if (board().hasFailed.load()) return Outcome::failed;
    return std::nullopt;
  };
  return waitFor(look, [] {});
}

MediaBytes::Outcome ByteStoreReader::read(std::uint64_t place, std::span<std::byte> target, std::size_t& count) {
  count = 0;
  if (target.empty()) return Outcome::done;
  const auto look = [&]() -> std::optional<Outcome> {
    for (std::size_t lane = 0; lane < lanes; ++lane) {
      if ((count = copy(lane, place, target)) == 0) continue;
      noteRead(lane, place + count);
      return Outcome::done;
    }
    if (place >= board().resourceEnd.load()) return Outcome::ended;
    if (board().hasFailed.load()) return Outcome::failed;
    return std::nullopt;
  };
  return waitFor(look, [&] {
    place_ = place;
    control().place.store(place);
  });
}

std::optional<ByteStoreReader::Window> ByteStoreReader::window(std::size_t number) const {
  const Lane& lane = board().lane[number];
  const std::uint32_t moves = lane.moves.load();
  const Window window{moves, lane.begin.load(), lane.end.load()};
  if (moves % 2 != 0 || lane.moves.load() != moves) return std::nullopt;
  return window;
}

std::size_t ByteStoreReader::copy(std::size_t number, std::uint64_t place, std::span<std::byte> target) const {
  const Lane& lane = board().lane[number];
  const auto before = window(number);
  if (!before || !before->holds(place)) return 0;
  const std::size_t count = std::min<std::uint64_t>(target.size(), before->end - place);
  for (std::size_t done = 0; done < count;) {
    const std::uint64_t at = place + done;
    const std::size_t within = at % chunkBytes;
    const std::size_t part = std::min(count - done, chunkBytes - within);
    const std::size_t index =
        lane.chunks[at / chunkBytes % board().chunkCount].load(std::memory_order_relaxed) % board().chunkCount;
    std::memcpy(target.data() + done, memory_.data() + boardBytes + index * chunkBytes + within, part);
    done += part;
  }
  // The store makes it known that a chunk is given up before it writes to it again.
  fence();
  return lane.moves.load() == before->moves && lane.begin.load() <= place ? count : 0;
}

void ByteStoreReader::noteRead(std::size_t lane, std::uint64_t place) {
  place_ = place;
  control().place.store(place, std::memory_order_relaxed);
  control().lane[lane].place.store(place, std::memory_order_relaxed);
  control().lane[lane].uses.store(++uses_, std::memory_order_release);
  const bool isNear = place >= toldPlace_[lane] && place - toldPlace_[lane] < tellEvery;
  if (isNear && lane == toldLane_) return;
  toldPlace_[lane] = place;
  toldLane_ = lane;
  wakeStore();
}

void ByteStoreReader::wakeStore() const {
  const std::uint64_t one = 1;
  if (::write(wake_.get(), &one, sizeof one) < 0) return;  // it is as awake as can be
}

void ByteStoreReader::setInterrupted(bool interrupted) {
  isInterrupted_ = interrupted;
  if (interrupted) signal(control().signal);
}

std::uint64_t ByteStoreReader::ahead(std::uint64_t place) const {
  std::uint64_t end = place;
  for (std::size_t round = 0; round < lanes; ++round) {  // one lane may go on where another ends
    for (std::size_t lane = 0; lane < lanes; ++lane) {
      const auto found = window(lane);
      if (found && found->holds(end)) end = found->end;
    }
  }
  return end - place;
}

bool ByteStoreReader::isFull() const {
  const std::uint64_t place = place_, last = board().resourceEnd.load();
  if (place >= last) return true;
  for (std::size_t lane = 0; lane < lanes; ++lane) {
    const auto found = window(lane);
    if (found && found->begin <= place && place <= found->end && found->begin < found->end) {
      if (board().lane[lane].isFull.load() || found->end >= last) return true;
    }
  }
  return false;
}

void ByteStoreReader::setAheadLimit(std::uint64_t bytes) {
  control().aheadLimit.store(bytes);
  wakeStore();
}

void ByteStoreReader::setWish(std::uint64_t wish) {
  control().wish.store(wish);
  wakeStore();
}

std::optional<NSError> ByteStoreReader::failure() const {
  if (!board().hasFailed.load()) return std::nullopt;
  return NSError{board().domain, board().code, board().message};
}
