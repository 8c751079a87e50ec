// The engine's seeks: one under way, the newest that was asked for meanwhile next.
#include <array>
#include <cmath>
#include <utility>

#include "platform/avfoundation/engine/GStreamerEngine.h"
#include "platform/avfoundation/engine/MediaErrors.h"
#include "platform/foundation/MainThread.h"

namespace {

constexpr std::int64_t second = 1'000'000'000;
constexpr std::int32_t nanoseconds = 1'000'000'000;
// How long a seek may take until one that was asked for later goes ahead of it.
constexpr auto seekLimit = std::chrono::seconds(1);
// How far before the place sought to look for a picture when there is none, and it is not known which was the last.
constexpr std::array<std::int64_t, 4> pictureSteps{second / 2, 2 * second, 8 * second, 32 * second};

}  // namespace

void GStreamerEngine::seek(const CMTime& time, SeekCompletion completion) {
  YMR_ASSERT_MAIN_THREAD();
  const bool isPlace = CMTIME_IS_VALID(time) && !CMTIME_IS_INDEFINITE(time);
  if (hasFailed_ || !isPlace) return complete(completion, false);
  if (next_) complete(next_->completion, false);
  if (current_) complete(current_->completion, false);
  next_ = Seek{.target = reachable(time), .time = time, .completion = std::move(completion)};
  if (!hasPrerolled_) return;
  if (!current_) return begin(*std::exchange(next_, std::nullopt));
  if (!overdueTimer_) {
    overdueTimer_ = RunLoop::main().schedule(seekLimit, [this] {
      overdueTimer_ = 0;
      if (next_) begin(*std::exchange(next_, std::nullopt));
    });
  }
}

void GStreamerEngine::begin(Seek seek) {
  seek.target = reachable(seek.time);
  const bool isThere = !current_ && !pipelinePlays_ && rate_ == 0 && seek.target == mediaTime();
  if (isThere || !facts_.isSeekable) {
    becomeReady();
    return complete(seek.completion, isThere);
  }
  seek.origin = current_ ? current_->origin : mediaTime();
  seek.hadEnded = current_ ? current_->hadEnded : hasEnded_;
  current_ = std::move(seek);
  hasEnded_ = false;
  floor_ = current_->target;
  sendSeek(pictureTime(*current_));
  apply();
}

void GStreamerEngine::sendSeek(std::int64_t time) {
  current_->flushesBefore.reset();
  pipelinePlays_ = false;
  pipeline_->seek(time);
}

void GStreamerEngine::arrived() {
  // An index of fragments names no more than the start of the last one: how long they are is known there.
  const std::int64_t target = facts_.duration ? reachable(current_->time) : 0;
  if (target > current_->target && !std::exchange(current_->isProlonged, true)) {
    current_->target = floor_ = target;
    return sendSeek(pictureTime(*current_));
  }
  const bool lacksPicture = hasVideo() && !pipeline_->frames().hasFreshPicture();
  if (lacksPicture && pipeline_->bufferedEnd() == GST_CLOCK_TIME_NONE && isCutOff()) {
    return fail(damagedMediaError(source_.url));
  }
  if (lacksPicture && current_->attempts < static_cast<int>(pictureSteps.size()) && current_->target > 0) {
    ++current_->attempts;
    return sendSeek(pictureTime(*current_));
  }
  const auto last = pipeline_->lastPicture();  // perhaps only now
  if (current_->attempts > 1 && !current_->isAtLast && last && *last > pictureTime(*current_)) {
    current_->isAtLast = true;
    return sendSeek(*last);
  }
  finishSeek(true);
}

void GStreamerEngine::finishSeek(bool finished) {
  becomeReady();
  complete(current_->completion, finished);
  current_.reset();
  connectSink();
  if (overdueTimer_) RunLoop::main().cancel(std::exchange(overdueTimer_, 0));
  if (isFilled_) silence_.reset();
  if (next_) begin(*std::exchange(next_, std::nullopt));
  apply();
}

void GStreamerEngine::complete(SeekCompletion& completion, bool finished) {
  if (!completion) return;
  hop_.post([completion = std::exchange(completion, nullptr), finished] { completion(finished); });
}

std::int64_t GStreamerEngine::reachable(const CMTime& time) const {
  const std::int64_t end = facts_.duration ? *facts_.duration : facts_.seekableEnd.value_or(INT64_MAX);
  const double wanted = CMTimeGetSeconds(time);
  if (wanted >= static_cast<double>(end) / second) return std::max(end, facts_.seekableStart);
  const std::int64_t exact = wanted <= 0 ? 0 : CMTimeConvertScale(time, nanoseconds).value;
  return std::max(exact, facts_.seekableStart);
}

std::int64_t GStreamerEngine::pictureTime(const Seek& seek) const {
  std::int64_t time = seek.target;
  if (facts_.duration && hasVideo()) {
    const double rate = pipeline_->frames().frameRate();
    const std::int64_t pictureLength = rate > 0 ? std::llround(static_cast<double>(second) / rate) : second / 25;
    time = std::min(time, *facts_.duration - pictureLength);
  }
  const auto last = pipeline_->lastPicture();
  if (seek.attempts == 1 && last && *last < time) {
    time = *last;
  } else if (seek.attempts > 0) {
    time -= pictureSteps[static_cast<std::size_t>(seek.attempts - 1)];
  }
  return std::max(time, facts_.seekableStart);
}
