#include "platform/avfoundation/hls/HLSRow.h"

#include <algorithm>

namespace {

// Of the store's memory: spared, so that heads and the other row's texts always find some.
constexpr std::size_t sparedChunks = 8;
// A record is no larger, so that a reader gets on before all is here.
constexpr std::size_t pieceBytes = 256 * 1024;
static_assert(pieceBytes <= SegmentRecord::sizeLimit);

}  // namespace

void HLSRow::begin(std::uint64_t place) {
  store_.move(lane_, place);
  marks_.clear();
}

bool HLSRow::hasRoom(std::size_t bytes) const {
  return store_.freeCount() > bytes / ByteStore::chunkBytes + sparedChunks;
}

bool HLSRow::write(const SegmentRecord& record, std::span<const std::byte> content) {
  if (record.kind == SegmentRecord::Kind::segment && record.track != SegmentRecord::audioTrack) {
    marks_.push_back({store_.end(lane_), record.start});
  }
  do {
    const auto piece = content.first(std::min(content.size(), pieceBytes));
    content = content.subspan(piece.size());
    if (!store_.append(lane_, bytesOf(record, piece))) return false;
  } while (!content.empty());
  return true;
}

void HLSRow::follow(const ByteStore::Demand& demand) {
  const std::uint64_t place = demand.lane[lane_].place;
  while (marks_.size() > 1 && marks_[1].place <= place) marks_.pop_front();
  store_.trim(lane_, place);
}

std::optional<std::int64_t> HLSRow::readTime() const {
  return marks_.empty() ? std::nullopt : std::optional(marks_.front().time);
}

bool HLSRow::isDry(const ByteStore::Demand& demand) const {
  return demand.isWaiting && demand.place == store_.end(lane_);
}
