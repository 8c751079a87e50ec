#include "platform/avfoundation/hls/HLSTimeline.h"

#include <algorithm>

namespace {

constexpr std::size_t segmentsFromEdge = 3;
// Numbers that lie further apart belong to rows that are counted differently.
constexpr std::uint64_t missedLimit = 1000;
// A server that makes a programme longer and longer gets no further.
constexpr std::int64_t placesLimit = INT64_MAX / 4;

}  // namespace

void HLSTimeline::adopt(const HLSMediaPlaylist& list, const HLSTimeline* reference) {
  std::int64_t time = std::clamp(place(list, reference), -placesLimit, placesLimit);
  firstSequence_ = list.firstSequence;
  targetDuration_ = list.targetDuration;
  starts_.clear();
  starts_.reserve(list.segments.size() + 1);
  for (const HLSSegment& segment : list.segments) {
    starts_.push_back(time);
    time += segment.duration;
  }
  starts_.push_back(time);
}

std::int64_t HLSTimeline::timeOf(std::uint64_t sequence) const {
  if (sequence <= firstSequence_) {
    return begin() - static_cast<std::int64_t>(firstSequence_ - sequence) * targetDuration_;
  }
  if (knows(sequence)) return starts_[sequence - firstSequence_];
  return end() + static_cast<std::int64_t>(sequence - endSequence()) * targetDuration_;
}

std::int64_t HLSTimeline::place(const HLSMediaPlaylist& list, const HLSTimeline* reference) {
  if (!isEmpty()) {
    const bool isNewer = list.firstSequence >= firstSequence_ && list.firstSequence - endSequence() <= missedLimit;
    if (knows(list.firstSequence) || isNewer) return timeOf(list.firstSequence);
    if (list.firstSequence < firstSequence_ && list.endSequence() > firstSequence_) {
      // More of the past than before.
      std::int64_t time = begin();
      for (std::uint64_t i = list.firstSequence; i < firstSequence_; ++i) {
        time -= list.segments[i - list.firstSequence].duration;
      }
      return time;
    }
    ++count_;
    return end();
  }
  if (!reference || reference->isEmpty() || list.hasEnded) return 0;
  const auto apart = list.firstSequence > reference->firstSequence_ ? list.firstSequence - reference->firstSequence_
                                                                    : reference->firstSequence_ - list.firstSequence;
  if (apart <= missedLimit) return reference->timeOf(list.firstSequence);
  return reference->end() - list.duration();
}

std::optional<std::size_t> HLSTimeline::indexAt(std::int64_t time) const {
  if (starts_.size() < 2 || time >= end()) return std::nullopt;
  const auto behind = std::upper_bound(starts_.begin(), starts_.end(), time);
  return behind == starts_.begin() ? 0 : static_cast<std::size_t>(behind - starts_.begin()) - 1;
}

std::int64_t HLSTimeline::liveStart() const {
  const std::size_t count = starts_.empty() ? 0 : starts_.size() - 1;
  return count > segmentsFromEdge ? starts_[count - segmentsFromEdge] : begin();
}
