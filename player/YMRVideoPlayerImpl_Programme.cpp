// The programme: loading it, hearing of it, keeping it going, its end.
#include <chrono>
#include <utility>

#include "VAST/SKLogger.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/dispatch/Weakly.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/PerformSelector.h"
#include "player/YMRItemPreparation.h"
#include "player/YMRStallRules.h"
#include "player/YMRVideoPlayerImpl.h"
#include "player/states/YMRPlayerStateCompletedVideo.h"
#include "player/states/YMRPlayerStateRules.h"
#include "ui/Autolayout.h"

namespace {

// A host that answers each report of a rate with the opposite is told no more after these.
constexpr int contraryReportsLimit = 8;

}  // namespace

void YMRVideoPlayerImpl::playWithMediaItem(const std::shared_ptr<YMRMediaItem>& mediaItem, std::int64_t startPosition) {
  _playWithMediaItem(mediaItem, std::make_shared<AVURLAsset>(mediaItem ? mediaItem->mediaUrl() : std::nullopt),
                     startPosition);
}

void YMRVideoPlayerImpl::playWithMediaItem(const std::shared_ptr<YMRMediaItem>& mediaItem,
                                           const std::shared_ptr<AVURLAsset>& asset, std::int64_t startPosition) {
  _playWithMediaItem(mediaItem, asset ? asset : std::make_shared<AVURLAsset>(std::nullopt), startPosition);
}

void YMRVideoPlayerImpl::_playWithMediaItem(const std::shared_ptr<YMRMediaItem>& mediaItem,
                                            const std::shared_ptr<AVURLAsset>& asset, std::int64_t startPosition) {
  YMR_ASSERT_MAIN_THREAD();
  if (presentation_ != Presentation::alive) return;
  asset->setStartTime(CMTimeMakeWithSeconds(static_cast<double>(startPosition), 1'000'000'000));
  const auto didPrepare =
      weakly(weak_from_this(), [startPosition](YMRVideoPlayerImpl& self, const std::shared_ptr<AVPlayerItem>& item) {
        self.videoStartPosition_ = startPosition;  // only now: until then the programme before may still be started
        self.playWithAVMediaItem(item);
      });
  preparation_ = YMRItemPreparation::begin(mediaItem ? mediaItem : std::make_shared<YMRMediaItem>(), asset, didPrepare);
}

void YMRVideoPlayerImpl::playWithAVMediaItem(const std::shared_ptr<AVPlayerItem>& item) {
  preparation_ = nullptr;
  if (vodPlayer_) {  // a programme that makes room, with the break that it may be in
    leaveBreak();
    removeObserver();
  }
  vodPlayer_ = AVPlayer::playerWithPlayerItem(item);
  vodPlayer_->setActionAtItemEnd(AVPlayerActionAtItemEndNone);
  avPlayerVC_->setPlayer(vodPlayer_);
  const auto player = vodPlayer_;
  loadSubtitle();
  if (vodPlayer_ != player) return;
  followFromBeginning(item);
  if (overlayView_) {
    addSubViewWithAutolayout(avPlayerVC_->contentOverlayView(), overlayView_);
    avPlayerVC_->contentOverlayView()->sendSubviewToBack(overlayView_);
  }
  start();
}

void YMRVideoPlayerImpl::followFromBeginning(const std::shared_ptr<AVPlayerItem>& item) {
  currentMidRollOffsetIndex_ = 0;
  jump_.reset();
  tickedAt_ = -1;
  hasBegun_ = false;
  programmeHasEnded_ = false;
  playsWhenActive_ = false;
  currentVodPlayerRate_ = 0;
  const auto weak = weak_from_this();
  vodTimeObserver_ = vodPlayer_->addPeriodicTimeObserver(CMTimeMakeWithSeconds(1.0, 1'000'000'000), nullptr,
                                                         weakly(weak, &YMRVideoPlayerImpl::vodPlayerTick));
  auto& center = NSNotificationCenter::defaultCenter();
  center.addObserver(this, AVPlayerItemDidPlayToEndTimeNotification, item,
                     weakly(weak, &YMRVideoPlayerImpl::videoPlayDidEnd));
  center.addObserver(this, AVPlayerItemTimeJumpedNotification, item, weakly(weak, &YMRVideoPlayerImpl::videoDidSeek));
  const auto self = shared_from_this();
  item->addObserver(self, "playbackBufferEmpty", NSKeyValueObservingOptionNew);
  item->addObserver(self, "status", NSKeyValueObservingOptionNew);
  item->addObserver(self, "playbackLikelyToKeepUp", NSKeyValueObservingOptionNew | NSKeyValueObservingOptionInitial);
  vodPlayer_->addObserver(self, "rate", NSKeyValueObservingOptionNew);
}

void YMRVideoPlayerImpl::start() {
  YMR_ASSERT_MAIN_THREAD();
  const auto self = shared_from_this();
  if (presentation_ != Presentation::alive || isBreakUnderWay() || isProgrammeRunning()) return;
  const bool isAfterItsEnd = vodPlayer_ && !vodTimeObserver_;
  if (isAfterItsEnd) followFromBeginning(vodPlayer_->currentItem());
  startPreRoll();
}

// Starting a running programme once more would send it back to its beginning and, since its rate does not change, leave
// the states waiting for a start that is never reported.
bool YMRVideoPlayerImpl::isProgrammeRunning() const {
  return vodPlayer_ && !isPlayingAd_ && vodPlayer_->rate() != 0;
}

double YMRVideoPlayerImpl::currentPosition() const {
  return CMTimeGetSeconds(vodPlayer_ ? vodPlayer_->currentTime() : CMTime{});
}

double YMRVideoPlayerImpl::videoDuration() const {
  const auto item = vodPlayer_ ? vodPlayer_->currentItem() : nullptr;
  return item ? CMTimeGetSeconds(item->asset()->duration()) : 0;
}

void YMRVideoPlayerImpl::observeValueForKeyPath(const std::string& keyPath, const std::shared_ptr<NSObject>& object,
                                                const NSKeyValueChange& change, void* context) {
  // A host may change the rate inside the report of its change: the state that came of it hears of that in its turn.
  for (int reports = 0; reports < contraryReportsLimit; ++reports) {
    const auto state = playerState_;
    state->observeValueForKeyPath(keyPath, object, change, context, *this);
    if (keyPath != "rate" || playerState_ == state || presentation_ != Presentation::alive) break;
  }
  if (vodPlayer_ && object == vodPlayer_->currentItem()) programmeItemDidChange(keyPath);
  if (breakStage_ == BreakStage::fetched && isVodPlayer(object.get())) {
    // A break that waited goes on, but not from inside somebody's play().
    dispatch_async(dispatch_get_main_queue(), weakly(weak_from_this(), &YMRVideoPlayerImpl::goOnWithBreak));
  }
}

void YMRVideoPlayerImpl::programmeItemDidChange(const std::string& keyPath) {
  const auto player = vodPlayer_;
  const auto item = player->currentItem();
  if (keyPath == "status") {
    if (item->status() != AVPlayerItemStatusFailed) return;
    tell(&YMRVideoPlayerDelegate::videoOnError, item->error().value_or(NSError{}));
  } else if (keyPath == "playbackLikelyToKeepUp") {
    if (!hasBegun_ || player->rate() == 0 || item->isPlaybackLikelyToKeepUp()) return;
    if (!isStallToRecover(player->currentTime(), item->duration())) return;
    player->pause();
    if (vodPlayer_ == player) handleStalled();
  }
}

// Polls until the programme can go on. Every poll nudges the player; who has paused it since the last one is obeyed.
// Behind an ad it is to stay where it is.
void YMRVideoPlayerImpl::handleStalled() {
  cancelPreviousPerformRequestsWithTarget(this);
  const auto player = vodPlayer_;
  const auto item = player ? player->currentItem() : nullptr;
  if (!item || item->status() == AVPlayerItemStatusFailed || isPlayingAd_) return;
  const double lead = availableDuration() - CMTimeGetSeconds(item->currentTime());
  if (!item->isPlaybackLikelyToKeepUp() && !isLeadEnough(lead)) {
    performSelectorAfterDelay(this, "handleStalled", std::chrono::milliseconds(500),
                              weakly(weak_from_this(), [](YMRVideoPlayerImpl& self) {
                                if (self.isProgrammeRunning()) self.handleStalled();
                              }));
  }
  player->play();
}

double YMRVideoPlayerImpl::availableDuration() const {
  const auto item = vodPlayer_ ? vodPlayer_->currentItem() : nullptr;
  const auto ranges = item ? item->loadedTimeRanges() : std::vector<CMTimeRange>{};
  return ranges.empty() ? 0 : CMTimeGetSeconds(ranges.front().start) + CMTimeGetSeconds(ranges.front().duration);
}

void YMRVideoPlayerImpl::vodPlayerTick(const CMTime& time) {
  if (SKLogger::reachesSink(SKLogLevelDebug)) {
    SKLogger::debug(ymrPlayerTag, "playhead position = " + stringWithDouble(CMTimeGetSeconds(time), 6));
  }
  if (!isBreakUnderWay() && adState_ != YMRAdStateNone && placeShares()) startMidRoll();
  followMidRolls(time);
  if (presentation_ == Presentation::gone) return;
  const auto state = playerState_;
  state->vodPlayerPeriodicTimeObserver(time, *this);
}

void YMRVideoPlayerImpl::videoDidSeek(const NSNotification& notification) {
  if (!isPlayingAd_) programmeHasEnded_ = false;
  programmeDidJump();
  const auto state = playerState_;
  state->videoDidSeek(notification, *this);
}

void YMRVideoPlayerImpl::videoPlayDidEnd() {
  const auto player = vodPlayer_;
  if (!player) return;
  if (isPlayingAd_) {  // a host kept it running: it goes on where it was stopped for the ad
    player->seekToTime(CMTimeMakeWithSeconds(0, 1'000'000'000), kCMTimeZero, kCMTimeZero);
    return;
  }
  player->pause();
  // The host may have dismissed the player, or started it anew, when it heard of the pause.
  if (vodPlayer_ != player || player->rate() != 0) return;
  if (isBreakUnderWay()) {  // a mid-roll that came due at the very end still has its turn
    programmeHasEnded_ = true;
    goOnWithBreak();
  } else if (adState_ == YMRAdStateMidRoll || adState_ == YMRAdStatePostRoll) {
    startPostRoll();
  } else {
    end();
  }
}

void YMRVideoPlayerImpl::end() {
  playerState_ = std::make_shared<YMRPlayerStateCompletedVideo>();
  removeObserver();
  if (hostAnswers(&YMRVideoPlayerDelegate::videoDidPlayFinished)) {
    tell(&YMRVideoPlayerDelegate::videoDidPlayFinished);
  } else {
    dismiss();
  }
}
