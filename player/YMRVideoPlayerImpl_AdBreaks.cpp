// Which ad break is next, and the programme before, between and after the breaks.
#include <utility>

#include "VAST/SKLogger.h"
#include "ads/core/YMRBreakTracker.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/PerformSelector.h"
#include "platform/uikit/UIApplication.h"
#include "player/YMRVideoPlayerImpl.h"
#include "player/states/YMRPlayerStatePausedVideo.h"
#include "player/states/YMRPlayerStateRules.h"
#include "ui/Autolayout.h"

namespace {

constexpr const char* adTag = "VAST - View Controller";

void forgetPlayed(const YMRAdSchedule::Breaks& breaks) {
  for (const auto& each : breaks) {
    if (each) each->setIsPlayed(false);
  }
}

YMRAdState phaseOf(const YMRAd& adBreak) {
  if (adBreak.roll() == YMRAdRollPre) return YMRAdStatePreRoll;
  return adBreak.roll() == YMRAdRollMid ? YMRAdStateMidRoll : YMRAdStatePostRoll;
}

}  // namespace

void YMRVideoPlayerImpl::setAdSchedule(const std::shared_ptr<YMRAdSchedule>& schedule) {
  if (!schedule) {
    adSchedule_ = nullptr;
    adState_ = YMRAdStateNone;
    return markBreaks();
  }
  adSchedule_ = schedule->copy();
  forgetPlayed(*adSchedule_->preRolls());
  for (const auto& group : *adSchedule_->midRolls()) forgetPlayed(group);
  forgetPlayed(*adSchedule_->postRolls());
  markBreaks();
}

std::shared_ptr<YMRAd> YMRVideoPlayerImpl::takeFirst(YMRAdSchedule::Breaks& breaks) {
  while (!breaks.empty()) {
    const auto first = breaks.front();
    breaks.erase(breaks.begin());
    if (first) return first;
  }
  return nullptr;
}

void YMRVideoPlayerImpl::startPreRoll() {
  if (auto next = adSchedule_ ? takeFirst(*adSchedule_->preRolls()) : nullptr) {
    adState_ = YMRAdStatePreRoll;
    currentAdBreak_ = std::move(next);
    playVastUrl(currentAdBreak_->vastUrl());
    return;
  }
  // The programme has been made ready at its start position, which a first start therefore need not seek. A later start
  // has none and goes to the beginning.
  lastPlayTime_ = CMTimeMakeWithSeconds(static_cast<double>(videoStartPosition_), 1'000'000'000);
  goOnWithProgramme(true);
}

void YMRVideoPlayerImpl::startPostRoll() {
  auto next = adSchedule_ ? takeFirst(*adSchedule_->postRolls()) : nullptr;
  if (!next) return end();
  adState_ = YMRAdStatePostRoll;
  currentAdBreak_ = std::move(next);
  playVastUrl(currentAdBreak_->vastUrl());
}

void YMRVideoPlayerImpl::playVastUrl(const std::optional<NSURL>& url) {
  breakStage_ = BreakStage::fetching;
  ++adNumber_;
  if (const auto label = adContainerView_->timeRemainLabel()) {
    label->setText(adSchedule_ ? adSchedule_->adLoadingText() : "");
  }
  if (const auto indicator = adContainerView_->loadingIndicator()) indicator->startAnimating();
  adContainerView_->confWithAdSchedule(adSchedule_);
  // A mid-roll is fetched while the programme plays; before and after it nothing does.
  if (currentAdBreak_->roll() != YMRAdRollMid) putOverlayOnScreen(true);
  breakHasShown_ = false;
  breakTracker_ = nullptr;
  const auto listed = currentAdBreak_->listedBreak();
  if (!listed) return loadVideoUsingSource(url);
  breakTracker_ = std::make_shared<YMRBreakTracker>(
      listed->trackingEvents, YMRTagRules::of(adSchedule_ ? adSchedule_->tagProfile() : YMRTagProfileExact),
      [weak = weak_from_this()] {
        const auto self = weak.lock();
        return self ? self->macroValues() : VASTMacroValues();
      });
  loadVideoUsingSource(listed->document ? AdSource(*listed->document) : AdSource(url));
}

bool YMRVideoPlayerImpl::isProgrammePausedBeforeBreak() const {
  return isBreakUnderWay() && breakStage_ != BreakStage::onScreen && currentAdBreak_->roll() == YMRAdRollMid &&
         vodPlayerRate() == 0 && !programmeHasEnded_;
}

// Every break leads on to something, whatever became of its ads.
void YMRVideoPlayerImpl::breakDidEnd(bool seek) {
  const bool staysPaused = isProgrammePausedBeforeBreak();
  breakStage_ = BreakStage::none;
  nextFilm_.letGo();
  const bool programmeHasEnded = std::exchange(programmeHasEnded_, false);
  if (const auto tracker = std::exchange(breakTracker_, nullptr)) {
    tracker->breakDidEnd(breakHasShown_ ? std::nullopt : std::optional(ad_.failure.value_or(SKVASTErrorPlayback)));
  }
  takeOverlayOffScreen();
  if (vodPlayer_) vodPlayer_->setMuted(false);
  // When its schedule was taken away meanwhile, the break goes back the way it came.
  switch (adState_ == YMRAdStateNone ? phaseOf(*currentAdBreak_) : adState_) {
    case YMRAdStatePreRoll:
      return startPreRoll();
    case YMRAdStateMidRoll:
      if (staysPaused) return startMidRoll();
      return programmeHasEnded ? goOnAtEnd() : goOnWithProgramme(seek);
    case YMRAdStatePostRoll:
      return startPostRoll();
    case YMRAdStateNone:
      return;
  }
}

void YMRVideoPlayerImpl::goOnWithProgramme(bool seek) {
  const auto number = adNumber_;
  resumeVideoPlayer(seek);
  if (isAtHand(number)) startMidRoll();
}

// A mid-roll came due at the programme's very end, which comes only once; there may be more of them.
void YMRVideoPlayerImpl::goOnAtEnd() {
  playerState_ = std::make_shared<YMRPlayerStatePausedVideo>();
  startMidRoll();
  const auto item = vodPlayer_ ? vodPlayer_->currentItem() : nullptr;
  programmeHasEnded_ = true;
  if (item && playMidRollDueAt(item->duration())) return;
  programmeHasEnded_ = false;
  startPostRoll();
}

// Ends a break and takes its ads and its overlay away. The host is not told.
void YMRVideoPlayerImpl::leaveBreak() {
  ++adNumber_;
  breakStage_ = BreakStage::none;
  breakTracker_ = nullptr;
  isPlayingAd_ = false;
  nextFilm_.letGo();
  takeAdOffScreen();
  takeOverlayOffScreen();
  ads_.clear();
}

void YMRVideoPlayerImpl::putOverlayOnScreen(bool waits) {
  if (adContainerView_->superview()) return;
  if (waits) adContainerView_->awaitPicture();
  addSubViewWithAutolayout(avPlayerVC_->view(), adContainerView_);
}

void YMRVideoPlayerImpl::takeOverlayOffScreen() {
  adContainerView_->removeFromSuperview();
  adContainerView_->endWaiting();
  if (const auto indicator = adContainerView_->loadingIndicator()) indicator->stopAnimating();
}

bool YMRVideoPlayerImpl::pauseVideoPlayer() {
  cancelPreviousPerformRequestsWithTarget(this);  // the poll of a stalled programme
  playsWhenActive_ = false;
  const auto item = vodPlayer_ ? vodPlayer_->currentItem() : nullptr;
  const bool isFirst = std::exchange(breakStage_, BreakStage::onScreen) != BreakStage::onScreen;
  // A host may have kept the programme running behind the ad before this one.
  if (isFirst) lastPlayTime_ = item ? item->currentTime() : kCMTimeZero;
  if (isFirst && adState_ == YMRAdStateMidRoll) tickedAt_ = CMTimeGetSeconds(lastPlayTime_);
  SKLogger::debug(adTag,
                  "Pause video player for playing ad at " + stringWithDouble(CMTimeGetSeconds(lastPlayTime_), 6));
  if (!vodPlayer_) return isFirst;
  vodPlayer_->setMuted(true);
  vodPlayer_->pause();
  return isFirst;
}

void YMRVideoPlayerImpl::resumeVideoPlayer(bool seek) {
  SKLogger::debug(ymrPlayerTag, std::string("resumeVideoPlayer - ") + (seek ? "1" : "0"));
  if (vodPlayer_ && seek) vodPlayer_->seekToTime(lastPlayTime_, kCMTimeZero, kCMTimeZero);
  playerState_ = std::make_shared<YMRPlayerStatePausedVideo>();
  if (!vodPlayer_) return;
  // The states compare with the recorded rate: after a 0 they take the next rate of 1 for a start.
  currentVodPlayerRate_ = 0;
  playVideo();
}

// Out of sight it waits until it is to be seen. A programme that never stopped, since its break failed before, has no
// change of rate to tell of, but the state still hears of its start.
void YMRVideoPlayerImpl::playVideo() {
  hasBegun_ = true;
  if (UIApplication::sharedApplication().isInBackground()) {
    playsWhenActive_ = true;
    return;
  }
  const auto player = vodPlayer_;
  const bool isPlaying = player->rate() == 1;
  player->play();
  if (isPlaying) observeValueForKeyPath("rate", player, {}, nullptr);
}

// Pauses the ad only: the player view controller pauses the programme.
void YMRVideoPlayerImpl::appDidEnterBackground() {
  nextFilm_.letGo();
  if (isPlayingAd_ && adPlayer_) adPlayer_->player()->pause();
}

void YMRVideoPlayerImpl::appDidBecomeActive() {
  if (adPlayer_ && adPlayer_->isShown()) {
    const auto player = adPlayer();
    if (player->rate() != 1) player->play();
  } else if (std::exchange(playsWhenActive_, false) && vodPlayer_) {
    playVideo();
  }
}
