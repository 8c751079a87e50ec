// What the states read of the presentation, and what they make it do.
#include "ads/core/SKVASTEventProcessor.h"
#include "player/YMRVideoPlayerImpl.h"

namespace {

double durationOf(const std::shared_ptr<AVPlayer>& player) {
  const auto item = player ? player->currentItem() : nullptr;
  return CMTimeGetSeconds(item ? item->duration() : CMTime{});
}

}  // namespace

bool YMRVideoPlayerImpl::isCurrent(const YMRAbstractPlayerState& state) const {
  return presentation_ != Presentation::gone && playerState_.get() == &state;
}

bool YMRVideoPlayerImpl::isVodPlayer(const NSObject* object) const {
  return object && object == vodPlayer_.get();
}

float YMRVideoPlayerImpl::vodPlayerRate() const {
  return vodPlayer_ ? vodPlayer_->rate() : 0;
}

double YMRVideoPlayerImpl::programmeDuration() const {
  return durationOf(vodPlayer_);
}

void YMRVideoPlayerImpl::seekVodPlayer(const CMTime& time) {
  if (vodPlayer_) vodPlayer_->seekToTime(time, kCMTimeZero, kCMTimeZero);
}

bool YMRVideoPlayerImpl::isAdPlayer(const NSObject* object) const {
  return object && object == adPlayer().get();
}

float YMRVideoPlayerImpl::adPlayerRate() const {
  const auto player = adPlayer();
  return player ? player->rate() : 0;
}

double YMRVideoPlayerImpl::adTime() const {
  const auto player = adPlayer();
  return CMTimeGetSeconds(player ? player->currentTime() : CMTime{});
}

double YMRVideoPlayerImpl::adDuration() const {
  return durationOf(adPlayer());
}

void YMRVideoPlayerImpl::trackEvent(std::uint32_t event) {
  // What tells how far the ad has come tells that it has begun, also of one that has no picture.
  if (event >= SKVASTTrackingEventFirstQuartile && event <= SKVASTTrackingEventComplete) adDidShow();
  // What the viewer does to an ad that has not begun for its trackers is none of theirs.
  const bool isViewers = event == SKVASTTrackingEventPause || event == SKVASTTrackingEventResume;
  if (isViewers && !adHasShown_ && ad_.rules().startAt() == YMRTagRules::Moment::shown) return;
  if (eventProcessor_) eventProcessor_->trackEvent(static_cast<SKVASTTrackingEvent>(event));
}

bool YMRVideoPlayerImpl::isPlaybackBufferEmpty(const NSObject* item) const {
  const auto* playerItem = dynamic_cast<const AVPlayerItem*>(item);
  return playerItem && playerItem->isPlaybackBufferEmpty();
}

double YMRVideoPlayerImpl::itemTime(const NSObject* item) const {
  const auto* playerItem = dynamic_cast<const AVPlayerItem*>(item);
  return CMTimeGetSeconds(playerItem ? playerItem->currentTime() : CMTime{});
}

double YMRVideoPlayerImpl::itemDuration(const NSObject* item) const {
  const auto* playerItem = dynamic_cast<const AVPlayerItem*>(item);
  return CMTimeGetSeconds(playerItem ? playerItem->duration() : CMTime{});
}
