#include "platform/avfoundation/ItemPlayback.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/avfoundation/AVMediaFormat.h"
#include "platform/dispatch/Weakly.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSNotificationCenter.h"

namespace {

bool sameRanges(const std::vector<CMTimeRange>& left, const std::vector<CMTimeRange>& right) {
  return std::equal(
      left.begin(), left.end(), right.begin(), right.end(),
      [](const CMTimeRange& a, const CMTimeRange& b) { return a.start == b.start && a.duration == b.duration; });
}

// Stores the value; false when it was there already.
template <typename Value>
bool assign(Value& variable, const Value& value) {
  if (variable == value) return false;
  variable = value;
  return true;
}

CMTime clamped(const CMTime& time, const CMTime& end) {
  if (time < kCMTimeZero) return kCMTimeZero;
  return CMTIME_IS_NUMERIC(end) && time > end ? end : time;
}

}  // namespace

ItemPlayback::ItemPlayback(std::shared_ptr<AVURLAsset> asset, std::weak_ptr<AVPlayerItem> item, Notify notify)
    : asset_(std::move(asset)), item_(std::move(item)), notify_(std::move(notify)), sampled_(asset_->startTime()) {}

void ItemPlayback::post(void (ItemPlayback::*action)()) {
  RunLoop::main().post(weakly(weak_from_this(), action));
}

bool ItemPlayback::notify(std::string_view key) {
  notify_(key);
  return speaks();
}

void ItemPlayback::begin(const std::weak_ptr<Player>& player, const Settings& settings) {
  YMR_ASSERT_MAIN_THREAD();
  hasBegun_ = true;
  player_ = player;
  rate_ = settings.rate;
  hasMoved_ = rate_ != 0;
  session_ = asset_->takeSession();
  if (!session_) return post(&ItemPlayback::failWithAsset);
  session_->addListener(shared_from_this());
  auto& engine = session_->engine();
  engine.setMuted(settings.muted);
  if (settings.frameSink) session_->setFrameSink(settings.frameSink);
  if (legibleTrack_) engine.selectLegibleTrack(legibleTrack_);
  if (rate_ != 0) engine.setRate(rate_);
  if (session_->isReady()) post(&ItemPlayback::becomeReady);
}

void ItemPlayback::letGo() {
  YMR_ASSERT_MAIN_THREAD();
  if (!hasBegun_ || std::exchange(isLetGo_, true)) return;
  supersedeSeek();
  dropSession();
}

void ItemPlayback::dropSession() {
  if (!session_) return;
  loadedTimeRanges_ = session_->engine().bufferedRanges();
  sample();
  session_->engine().setRate(0);
  session_->setFrameSink(nullptr);
  session_.reset();
}

void ItemPlayback::setRate(double rate) {
  rate_ = rate;
  if (rate != 0) hasMoved_ = true;
  if (!session_) return;
  session_->engine().setRate(rate);
  sample();
}

void ItemPlayback::setMuted(bool muted) {
  if (session_) session_->engine().setMuted(muted);
}

void ItemPlayback::setFrameSink(std::shared_ptr<VideoFrameSink> sink) {
  if (session_) session_->setFrameSink(std::move(sink));
}

void ItemPlayback::selectLegibleTrack(const std::optional<std::string>& identifier) {
  if (identifier == legibleTrack_) return;
  legibleTrack_ = identifier;
  if (session_) session_->engine().selectLegibleTrack(identifier);
}

CMTime ItemPlayback::position() const {
  return session_ ? session_->engine().position() : sampled_;
}

void ItemPlayback::sample() const {
  const CMTime now = position();
  std::lock_guard lock(sampleMutex_);
  sampled_ = now;
}

CMTime ItemPlayback::currentTime() const {
  if (const auto* loop = RunLoop::mainIfInstalled(); !loop || loop->isCurrent()) sample();
  std::lock_guard lock(sampleMutex_);
  return sampled_;
}

std::vector<CMTimeRange> ItemPlayback::loadedTimeRanges() const {
  return session_ ? session_->engine().bufferedRanges() : loadedTimeRanges_;
}

void ItemPlayback::becomeReady() {
  if (!speaks() || status_ != AVPlayerItemStatusUnknown) return;
  status_ = AVPlayerItemStatusReadyToPlay;
  duration_ = session_->engine().duration();
  if (CMTIME_IS_VALID(duration_) && !notify("duration")) return;
  if (!notify("status")) return;
  updateBuffering();
  if (seek_ && seek_->isStanding) finishSeek(true);
}

void ItemPlayback::failWithAsset() {
  NSError error;
  asset_->statusOfValueForKey("playable", &error);
  fail(error);
}

void ItemPlayback::fail(const NSError& error) {
  if (!speaks()) return;
  dropSession();
  status_ = AVPlayerItemStatusFailed;
  error_ = error;
  if (const auto player = player_.lock()) player->itemDidFail();
  if (const auto seek = std::exchange(seek_, std::nullopt)) seek->completion(false);
  if (!isLetGo_) notify("status");
}

void ItemPlayback::engineDurationDidChange() {
  if (!speaks() || status_ == AVPlayerItemStatusUnknown) return;
  if (assign(duration_, session_->engine().duration())) notify("duration");
}

void ItemPlayback::engineBufferingDidChange() {
  if (speaks()) updateBuffering();
}

void ItemPlayback::updateBuffering() {
  const auto& engine = session_->engine();
  const bool emptyChanged = assign(isBufferEmpty_, engine.isBufferEmpty());
  const bool keepUpChanged = assign(isLikelyToKeepUp_, engine.isLikelyToKeepUp());
  const auto ranges = engine.bufferedRanges();
  const bool rangesChanged = !sameRanges(ranges, loadedTimeRanges_);
  loadedTimeRanges_ = ranges;
  if (const auto player = player_.lock()) player->itemPaceDidChange();
  // Empty first: who hears that playing can't keep up may pause, and would then not take an empty buffer for a stall.
  if (emptyChanged && !notify("playbackBufferEmpty")) return;
  if (keepUpChanged && !notify("playbackLikelyToKeepUp")) return;
  if (rangesChanged) notify("loadedTimeRanges");
}

void ItemPlayback::engineDidReachEnd() {
  // What was reported before a seek away is no end any more.
  if (!speaks() || (seek_ && !seek_->isStanding)) return;
  isAtEnd_ = true;
  sample();
  if (const auto player = player_.lock()) player->itemDidReachEnd();
  if (!speaks() || !isAtEnd_) return;
  NSNotificationCenter::defaultCenter().postNotificationName(AVPlayerItemDidPlayToEndTimeNotification, item_.lock());
}

void ItemPlayback::engineCaptionDidChange(const std::optional<MediaCaption>& caption) {
  if (speaks() && assign(caption_, caption)) notify("currentCaption");
}

bool ItemPlayback::standsAt(const CMTime& target) const {
  if (seek_ && seek_->target == target) return true;  // asked for already, before it was told to play
  if (!session_->isReady()) return target == asset_->startTime();
  if (rate_ != 0) return false;
  // A live programme is made ready near its edge, where its viewers begin.
  if (!hasMoved_ && session_->engine().isLive() && target == asset_->startTime()) return true;
  // A pipeline comes to rest a little after it was told to. Less than half a frame off it shows the picture asked for.
  const auto video = asset_->tracksWithMediaType(AVMediaTypeVideo);
  const double frameRate = video.empty() ? 0 : video.front().nominalFrameRate;
  const double tolerance = std::min(0.02, frameRate > 0 ? 0.5 / frameRate : 0.01);
  return std::abs(CMTimeGetSeconds(CMTimeSubtract(target, session_->engine().position()))) < tolerance;
}

void ItemPlayback::seek(const CMTime& time, SeekCompletion completion) {
  YMR_ASSERT_MAIN_THREAD();
  if (!session_ || !CMTIME_IS_NUMERIC(time)) {
    RunLoop::main().post([completion = std::move(completion)] { completion(false); });
    return;
  }
  const bool engineSeeks = seek_ && !seek_->isStanding;
  const CMTime target = clamped(time, session_->engine().duration());
  const bool isStanding = !engineSeeks && standsAt(target);
  supersedeSeek();
  seek_ = Seek{target, std::move(completion), isStanding};
  const auto finish = weakly(weak_from_this(), [number = ++seeks_](ItemPlayback& self, bool finished) {
    if (self.seek_ && self.seeks_ == number) self.finishSeek(finished);
  });
  if (!isStanding) {
    isAtEnd_ = false;
    hasMoved_ = true;
    session_->seek(target, finish);
  } else if (session_->isReady()) {
    RunLoop::main().post([finish] { finish(true); });
  }
  sample();
}

void ItemPlayback::supersedeSeek() {
  if (!seek_) return;
  RunLoop::main().post([completion = std::move(seek_->completion)] { completion(false); });
  seek_.reset();
}

void ItemPlayback::finishSeek(bool finished) {
  const auto seek = std::exchange(seek_, std::nullopt);
  sample();
  if (finished) {
    tellOfJump();
  } else if (const auto player = player_.lock()) {
    player->itemPaceDidChange();
  }
  seek->completion(finished);
}

void ItemPlayback::tellOfJump() {
  const auto player = player_.lock();
  NSNotificationCenter::defaultCenter().postNotificationName(AVPlayerItemTimeJumpedNotification, item_.lock());
  if (!isLetGo_ && player) player->itemDidJump();
}

void ItemPlayback::engineDidJump() {
  if (!speaks() || seek_) return;
  sample();
  tellOfJump();
}
