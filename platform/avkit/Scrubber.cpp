#include "platform/avkit/Scrubber.h"

#include <chrono>

#include "platform/coremedia/CMTime.h"

using namespace std::chrono_literals;

namespace {

constexpr auto repetition = 160ms;
constexpr auto commitDelay = 600ms;
// Longer than any keyboard waits before it repeats. A release that got lost must not hold the seek back for ever.
constexpr auto lostReleaseLimit = 1500ms;
constexpr std::int32_t timescale = 1000;

}  // namespace

std::optional<std::pair<double, double>> reachableRange(const std::shared_ptr<AVPlayerItem>& item) {
  if (!item || item->status() != AVPlayerItemStatusReadyToPlay) return std::nullopt;
  std::pair<double, double> range{0, 0};
  if (const CMTime duration = item->duration(); CMTIME_IS_NUMERIC(duration)) {
    range.second = CMTimeGetSeconds(duration);
  } else if (const auto buffered = item->loadedTimeRanges(); CMTIME_IS_INDEFINITE(duration) && !buffered.empty()) {
    range = {CMTimeGetSeconds(buffered.front().start), CMTimeGetSeconds(CMTimeRangeGetEnd(buffered.front()))};
  }
  if (!(range.first < range.second)) return std::nullopt;
  return range;
}

Scrubber::Scrubber(std::function<void()> changed) : changed_(std::move(changed)) {}

void Scrubber::setPlayer(std::shared_ptr<AVPlayer> player) {
  cancel();
  player_ = std::move(player);
}

void Scrubber::press(Direction direction) {
  const auto range = player_ ? reachableRange(player_->currentItem()) : std::nullopt;
  if (!range) return cancel();
  if (!burst_) burst_.emplace(CMTimeGetSeconds(player_->currentTime()), range->first, range->second);
  step(direction);
}

void Scrubber::repeat(Direction direction) {
  if (burst_ && RunLoop::main().now() - lastStep_ >= repetition) step(direction);
}

void Scrubber::release() {
  if (burst_) commitAfter(commitDelay);
}

void Scrubber::step(Direction direction) {
  lastStep_ = RunLoop::main().now();
  burst_->step(direction);
  commitAfter(lostReleaseLimit);
  changed_();
}

void Scrubber::commitAfter(RunLoop::Duration delay) {
  timer_ = NSTimer::scheduledTimerWithTimeInterval(delay, false, [this] { commit(); });
}

void Scrubber::commit() {
  if (!burst_) return;
  const CMTime target = CMTimeMakeWithSeconds(burst_->target(), timescale);
  // First: who hears that the burst is over looks where the player is.
  if (const auto player = player_) player->seekToTime(target);
  cancel();
}

void Scrubber::cancel() {
  timer_ = nullptr;
  if (!std::exchange(burst_, std::nullopt)) return;
  changed_();
}

std::optional<double> Scrubber::target() const {
  return burst_ ? std::optional(burst_->target()) : std::nullopt;
}
