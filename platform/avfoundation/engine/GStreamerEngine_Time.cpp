// Where the engine stands, how far it could go, and what is held ready for that.
#include <algorithm>

#include "platform/avfoundation/engine/GStreamerEngine.h"
#include "platform/foundation/MainThread.h"

namespace {

constexpr std::int64_t second = 1'000'000'000;
constexpr std::int32_t nanoseconds = 1'000'000'000;
// The end that a container names and the end of its last sample differ by less than this.
constexpr std::int64_t endTolerance = second / 2;

}  // namespace

std::int64_t GStreamerEngine::mediaTime() const {
  if (next_) return next_->target;
  if (!hasPrerolled_ || current_ || hasEnded_ || hasFailed_) return floor_;
  std::int64_t time = pipeline_->mediaTime().value_or(floor_);
  if (facts_.duration) {
    // Some containers name less than they hold: what is there to play counts. The clock alone may run on, as when the
    // process was stopped for a while.
    const auto reached = static_cast<std::int64_t>(pipeline_->reachedEnd().value_or(0));
    time = std::min(time, reached < *facts_.duration + endTolerance ? *facts_.duration : reached);
  }
  floor_ = std::max(floor_, time);
  return floor_;
}

CMTime GStreamerEngine::position() const {
  YMR_ASSERT_MAIN_THREAD();
  return CMTimeMake(mediaTime(), nanoseconds);
}

CMTime GStreamerEngine::duration() const {
  YMR_ASSERT_MAIN_THREAD();
  if (!isReady_) return kCMTimeInvalid;
  return facts_.duration ? CMTimeMake(*facts_.duration, nanoseconds) : kCMTimeIndefinite;
}

bool GStreamerEngine::isLive() const {
  return isReady_ && !facts_.duration && !source_.isLocal();
}

std::vector<CMTimeRange> GStreamerEngine::bufferedRanges() const {
  YMR_ASSERT_MAIN_THREAD();
  if (!isReady_ || hasFailed_) return {};
  std::int64_t start = 0;
  std::optional<std::int64_t> end = facts_.duration;
  if (!source_.isLocal()) {
    start = mediaTime();
    const auto buffered = pipeline_->bufferedEnd();
    if (!buffered) return {};
    if (GST_CLOCK_TIME_IS_VALID(*buffered)) {
      const auto time = static_cast<std::int64_t>(*buffered);
      end = std::min(time, std::max(end.value_or(time), start));
    }
  }
  if (!end || *end <= start) return {};
  return {{CMTimeMake(start, nanoseconds), CMTimeMake(*end - start, nanoseconds)}};
}

bool GStreamerEngine::isBufferEmpty() const {
  return !isReady_ || (!isFilled_ && !hasEnded_);
}

bool GStreamerEngine::isLikelyToKeepUp() const {
  return isReady_ && (isFilled_ || hasEnded_ || (pipeline_ && pipeline_->isFull()));
}

bool GStreamerEngine::hasVideo() const {
  return std::ranges::any_of(facts_.tracks, [](const auto& track) { return track.kind == MediaTrack::Kind::video; });
}
