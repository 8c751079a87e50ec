#include "platform/avfoundation/engine/SegmentClock.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

constexpr std::int64_t second = 1'000'000'000;
// How far a list's sums may be from the media's own times: where one begins to read, and while it goes on.
constexpr std::int64_t firstTolerance = 2 * second;
constexpr std::int64_t tolerance = 30 * second;

std::int64_t nearest(std::int64_t time, std::int64_t near) {
  const std::int64_t round = SegmentClock::ofTicks(std::uint64_t{1} << 33);
  return time + round * std::llround(static_cast<double>(near - time) / static_cast<double>(round));
}

}  // namespace

void SegmentClock::note(const SegmentRecord& segment, std::int64_t raw, bool isFirst) {
  std::lock_guard lock(mutex_);
  const auto known = offsets_.find(segment.discontinuity);
  const bool isOfMain = segment.track == SegmentRecord::mainTrack;
  if (known != offsets_.end() && (known->second.isOfMain || !isOfMain)) {
    const std::int64_t apart = std::llabs(nearest(raw + known->second.value, segment.start) - segment.start);
    if (apart <= (isFirst ? std::max(firstTolerance, segment.duration) : tolerance)) return;
  }
  if (offsets_.size() >= discontinuitiesLimit) offsets_.erase(offsets_.begin());
  offsets_[segment.discontinuity] = {segment.start - raw, isOfMain};
}

std::optional<std::int64_t> SegmentClock::time(std::uint64_t discontinuity, std::int64_t raw, std::int64_t near) const {
  std::lock_guard lock(mutex_);
  const auto known = offsets_.find(discontinuity);
  if (known == offsets_.end()) return std::nullopt;
  return nearest(raw + known->second.value, near);
}
