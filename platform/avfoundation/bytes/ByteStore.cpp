#include "platform/avfoundation/bytes/ByteStore.h"

#include <fcntl.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "platform/avfoundation/bytes/ByteStoreReader.h"

using namespace ByteStoreLayout;

namespace {

// Copies text with a zero behind it, as much of it as there is room for, and no part of a character.
template <std::size_t size>
void copyText(char (&to)[size], const std::string& text) {
  std::size_t count = std::min(text.size(), size - 1);
  const auto continues = [&](std::size_t at) { return (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80; };
  while (count > 0 && count < text.size() && continues(count)) --count;
  std::memcpy(to, text.data(), count);
  to[count] = '\0';
}

}  // namespace

std::shared_ptr<ByteStore> ByteStore::make(std::size_t bytes) {
  const std::size_t count = std::clamp<std::size_t>(bytes / chunkBytes, 2 * lanes, chunksLimit);
  auto memory =
      SharedMemory::make("ymr-media-bytes", boardBytes + count * chunkBytes, SharedMemory::Access::ownerWrites);
  auto control = SharedMemory::make("ymr-media-wants", sizeof(Control), SharedMemory::Access::bothWrite);
  Descriptor wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!memory || !control || !wake || !memory.reserve(0, boardBytes) || !control.reserve(0, sizeof(Control))) {
    return nullptr;
  }
  return std::shared_ptr<ByteStore>(new ByteStore(std::move(memory), std::move(control), std::move(wake), count));
}

ByteStore::ByteStore(SharedMemory memory, SharedMemory control, Descriptor wake, std::size_t chunkCount)
    : memory_(std::move(memory)),
      control_(std::move(control)),
      wake_(std::move(wake)),
      chunkCount_(chunkCount),
      isReserved_(chunkCount) {
  new (memory_.data()) Board{};
  new (control_.data()) Control{};
  board().chunkCount = static_cast<std::uint32_t>(chunkCount);
  board().resourceEnd = nowhere;
  this->control().aheadLimit = nowhere;
  for (std::size_t chunk = chunkCount; chunk > 0; --chunk) free_.push_back(static_cast<std::uint32_t>(chunk - 1));
  for (Window& window : windows_) window.chunks.resize(chunkCount);
}

ByteStoreDescriptors ByteStore::descriptors() const {
  return {memory_.descriptor(), control_.descriptor(), wake_.get()};
}

std::shared_ptr<MediaBytes> ByteStore::makeReader() const {
  const auto copy = [](int descriptor) { return ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0); };
  return ByteStoreReader::adopt({copy(memory_.descriptor()), copy(control_.descriptor()), copy(wake_.get())});
}

void ByteStore::takeWake() {
  std::uint64_t count = 0;
  if (::read(wake_.get(), &count, sizeof count) < 0) return;  // there was nothing to take
}

ByteStore::Demand ByteStore::demand() const {
  Demand demand;
  demand.isWaiting = control().isWaiting.load() != 0;
  demand.readers = control().readers.load();
  demand.place = std::min(control().place.load(), placesLimit);
  if (const std::uint64_t limit = control().aheadLimit.load(); limit != nowhere) demand.aheadLimit = limit;
  demand.wish = control().wish.load();
  for (std::size_t lane = 0; lane < lanes; ++lane) {
    demand.lane[lane].uses = control().lane[lane].uses.load();  // the reader writes it last
    demand.lane[lane].place = std::clamp(control().lane[lane].place.load(), begin(lane), end(lane));
  }
  return demand;
}

bool ByteStore::tellHead(const MediaBytes::Head& head) {
  if (head.url.size() >= urlBytesLimit) return false;
  board().isSeekable = head.isSeekable;
  board().hasLength = head.length.has_value();
  board().length = head.length.value_or(0);
  copyText(board().contentType, head.contentType);
  copyText(board().url, head.url);
  if (head.length) board().resourceEnd.store(*head.length);
  board().hasHead.store(1);
  signal();
  return true;
}

void ByteStore::tellEnd(std::uint64_t place) {
  board().resourceEnd.store(place);
  signal();
}

void ByteStore::tellFailure(const NSError& error) {
  {
    std::lock_guard lock(mutex_);
    if (failure_) return;
    failure_ = error;
  }
  board().code = error.code;
  copyText(board().domain, error.domain);
  copyText(board().message, error.message);
  board().hasFailed.store(1);
  signal();
}

std::optional<NSError> ByteStore::failure() const {
  std::lock_guard lock(mutex_);
  return failure_;
}

void ByteStore::signal() {
  // Bytes are published before this looks whether somebody waits, and whoever waits says so before it looks for bytes.
  fence();
  if (control().isWaiting.load() != 0) ByteStoreLayout::signal(control().signal);
}

std::size_t ByteStore::heldCount(std::size_t lane) const {
  const Window& window = windows_[lane];
  if (window.begin == window.end) return 0;
  return (window.end + chunkBytes - 1) / chunkBytes - window.begin / chunkBytes;
}

void ByteStore::move(std::size_t number, std::uint64_t place) {
  Window& window = windows_[number];
  Lane& lane = board().lane[number];
  lane.moves.fetch_add(1);
  release(window, window.end);
  if (window.begin != window.end) free_.push_back(window.chunks[window.begin / chunkBytes % chunkCount_]);
  window.begin = window.end = std::min(place, placesLimit);
  lane.begin.store(window.begin);
  lane.end.store(window.end);
  lane.moves.fetch_add(1);
  setFull(number, false);
  // No byte of a chunk that was given up is written before the reader can see it.
  fence();
}

// Frees the chunks that end at or before `place`.
void ByteStore::release(Window& window, std::uint64_t place) {
  const std::uint64_t kept = std::min(place, window.end) / chunkBytes;
  if (window.begin == window.end || kept <= window.begin / chunkBytes) return;
  for (auto chunk = window.begin / chunkBytes; chunk < kept; ++chunk) {
    free_.push_back(window.chunks[chunk % chunkCount_]);
  }
  window.begin = kept * chunkBytes;
}

void ByteStore::trim(std::size_t number, std::uint64_t place) {
  Window& window = windows_[number];
  release(window, place);
  board().lane[number].begin.store(window.begin);
  fence();
}

bool ByteStore::append(std::size_t number, std::span<const std::byte> bytes) {
  Window& window = windows_[number];
  Lane& lane = board().lane[number];
  const auto first = (window.end + (window.begin == window.end ? 0 : chunkBytes - 1)) / chunkBytes;
  const auto behind = (window.end + bytes.size() + chunkBytes - 1) / chunkBytes;
  if (behind > first && behind - first > free_.size()) return false;
  for (std::uint64_t chunk = first; chunk < behind; ++chunk) {
    const std::uint32_t index = free_.back();
    free_.pop_back();
    if (!isReserved_[index] && !memory_.reserve(boardBytes + index * chunkBytes, chunkBytes)) {
      // The machine has no memory for it: it stays out, and the store is smaller from now on.
      for (auto taken = first; taken < chunk; ++taken) free_.push_back(window.chunks[taken % chunkCount_]);
      return false;
    }
    isReserved_[index] = true;
    window.chunks[chunk % chunkCount_] = index;
    lane.chunks[chunk % chunkCount_].store(index, std::memory_order_relaxed);
  }
  while (!bytes.empty()) {
    const std::size_t within = window.end % chunkBytes;
    const std::size_t count = std::min(bytes.size(), chunkBytes - within);
    const std::size_t index = window.chunks[window.end / chunkBytes % chunkCount_];
    std::memcpy(memory_.data() + boardBytes + index * chunkBytes + within, bytes.data(), count);
    bytes = bytes.subspan(count);
    window.end += count;
  }
  lane.end.store(window.end);
  signal();
  return true;
}

void ByteStore::setFull(std::size_t lane, bool isFull) {
  if (windows_[lane].isFull == isFull) return;
  windows_[lane].isFull = isFull;
  board().lane[lane].isFull.store(isFull);
}
