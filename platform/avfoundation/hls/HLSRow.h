#pragma once

#include <deque>
#include <span>

#include "platform/avfoundation/bytes/ByteStore.h"
#include "platform/avfoundation/segments/SegmentRecord.h"

// One row of records in a lane of a store, and where its reader is. The thread that drives the streams.
class HLSRow {
 public:
  HLSRow(ByteStore& store, std::size_t lane) : store_(store), lane_(lane) {}

  // Begins anew, at a place.
  void begin(std::uint64_t place);
  // There is room for so many bytes, with the heads that belong to them.
  bool hasRoom(std::size_t bytes) const;
  // After hasRoom() only; false when the machine has no memory left.
  bool write(const SegmentRecord& record, std::span<const std::byte> content = {});
  // Forgets what the reader has behind it.
  void follow(const ByteStore::Demand& demand);
  // Up to where segments were read, at least; nil before the first one was written.
  std::optional<std::int64_t> readTime() const;
  // The reader waits for what comes next.
  bool isDry(const ByteStore::Demand& demand) const;
  void setFull(bool isFull) { store_.setFull(lane_, isFull); }

 private:
  struct Mark {
    std::uint64_t place;
    std::int64_t time;
  };
  ByteStore& store_;
  const std::size_t lane_;
  std::deque<Mark> marks_;  // where segments begin; the first one is being read
};
