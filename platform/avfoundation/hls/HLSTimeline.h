#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/avfoundation/hls/HLSPlaylist.h"

// Where the segments of one playlist stand on the programme's time line, from one reload to the next. The first list of
// a programme begins at 0; other variants and renditions are put on the line by it. Nanoseconds.
//
// A plain value.
class HLSTimeline {
 public:
  // Takes a list, the first or a newer one. `reference` is where another list of the programme stands; null for none.
  void adopt(const HLSMediaPlaylist& list, const HLSTimeline* reference);

  bool isEmpty() const { return starts_.empty(); }
  std::int64_t begin() const { return starts_.empty() ? 0 : starts_.front(); }
  std::int64_t end() const { return starts_.empty() ? 0 : starts_.back(); }
  // Of the segment with this index in the list that was adopted last.
  std::int64_t start(std::size_t index) const { return starts_[index]; }
  // The segment that has `time`; the first one for times before it, nil behind the last.
  std::optional<std::size_t> indexAt(std::int64_t time) const;
  // Changes when a server counts its segments anew: their numbers and discontinuities mean others from then on.
  unsigned count() const { return count_; }
  // Where a viewer of a live programme begins: three segments from the edge.
  std::int64_t liveStart() const;

 private:
  std::int64_t place(const HLSMediaPlaylist& list, const HLSTimeline* reference);
  // Where a sequence number stands here, or would.
  std::int64_t timeOf(std::uint64_t sequence) const;
  bool knows(std::uint64_t sequence) const { return firstSequence_ <= sequence && sequence <= endSequence(); }
  std::uint64_t endSequence() const { return firstSequence_ + starts_.size() - 1; }

  std::uint64_t firstSequence_ = 0;
  unsigned count_ = 0;
  std::int64_t targetDuration_ = 0;
  std::vector<std::int64_t> starts_;  // one more than there are segments: the end
};
