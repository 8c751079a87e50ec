// The ads of a break: fetched, chosen, played one after another, and their ends.
#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>
#include <variant>

#include "VAST/Parser/SKVAST2Parser.h"
#include "VAST/SKLogger.h"
#include "ads/core/SKVASTEventProcessor.h"
#include "ads/core/YMRBreakTracker.h"
#include "ads/core/YMRPlayerErrorHandler.h"
#include "platform/dispatch/Weakly.h"
#include "platform/foundation/NSString.h"
#include "platform/uikit/UIApplication.h"
#include "platform/uikit/values/UIScreen.h"
#include "player/YMRVideoPlayerImpl.h"
#include "player/states/YMRPlayerStatePlayingAd.h"
#include "player/states/YMRPlayerStateRules.h"

namespace {

constexpr const char* adTag = "VAST - View Controller";

// Building or starting the ad's player failed.
constexpr const char* playerErrorCode = "400";

// Seconds left, counted down to 1. 0 for an ad of unknown length.
std::int64_t remainingSeconds(double duration, double time) {
  const double remaining = duration - time + 1.0;
  return std::abs(remaining) < 1e9 ? static_cast<std::int64_t>(remaining) : 0;
}

// What the label says at each tick; nil leaves it as it is.
std::optional<std::string> countdown(const YMRAdSchedule& schedule, const YMRAdQueue& ads, std::int64_t remaining) {
  const auto& single = schedule.adCountdownText();
  const auto& pod = schedule.adpodCountdownText();
  if (!ads.isPod() && !single.empty()) return stringWithFormat(single, {remaining});
  if (pod.empty()) return std::nullopt;
  return stringWithFormat(pod, {remaining, ads.number(), ads.totalCount()});
}

}  // namespace

void YMRVideoPlayerImpl::loadVideoUsingSource(const AdSource& source) {
  const auto* url = std::get_if<std::optional<NSURL>>(&source);
  SKLogger::debug(adTag, url ? "Starting loadVideoWithURL" : "Starting loadVideoWithData");
  const auto number = adNumber_;
  tell(&YMRVideoPlayerDelegate::videoAdOnRequest, currentAdBreak_);
  if (!isAtHand(number)) return;
  const auto didLoad =
      weakly(weak_from_this(), [number](YMRVideoPlayerImpl& self, const std::shared_ptr<YMRVastModel>& model) {
        if (self.isAtHand(number)) self.vastDidLoad(*model);
      });
  SKVAST2ParserOptions options;
  if (adSchedule_) options.profile = adSchedule_->tagProfile();
  options.macroValues = macroValues();
  if (const auto& listed = currentAdBreak_->listedBreak()) {
    options.followsWrappers = listed->followsRedirects;
    options.allowsMultipleAds = listed->allowsMultipleAds;
  }
  SKVAST2Parser parser(std::move(options));
  if (url) {
    parser.parseWithUrl(*url, didLoad);
  } else {
    parser.parseWithData(std::get<VASTDocument>(source), didLoad);
  }
}

void YMRVideoPlayerImpl::vastDidLoad(YMRVastModel& model) {
  SKLogger::debug(adTag, "back from block in loadVideoFromData");
  const auto number = adNumber_;
  tell(&YMRVideoPlayerDelegate::videoAdOnResponse, currentAdBreak_);
  if (!isAtHand(number)) return;
  ads_ = YMRAdQueue(model);
  breakStage_ = BreakStage::fetched;
  goOnWithBreak();
}

void YMRVideoPlayerImpl::goOnWithBreak() {
  if (breakStage_ != BreakStage::fetched || isProgrammePausedBeforeBreak()) return;
  breakStage_ = BreakStage::begun;
  if (breakTracker_) breakTracker_->breakDidStart();
  prepareToPlayVastAdModel(false);
}

// A loop, so that a break of thousands of ads that fail is no deeper than a break of one.
void YMRVideoPlayerImpl::prepareToPlayVastAdModel(bool seek) {
  while (!ads_.isEmpty()) {
    const auto number = ++adNumber_;
    if (prepareNextAd() || !isAtHand(number)) return;
    seek = isPlayingAd_;  // the programme has been stopped for it already
    endAd(seek, true);
  }
  breakDidEnd(seek);
}

bool YMRVideoPlayerImpl::prepareNextAd() {
  const auto number = adNumber_;
  if (ads_.isPod() && ads_.isWhole()) {
    tell(&YMRVideoPlayerDelegate::videoAdOnPodStart, currentAdBreak_);
    if (!isAtHand(number)) return false;
  }
  ad_ = ads_.takeNext(nextFilm_.pick(ads_.next()->rules().profile()));
  eventProcessor_ =
      std::make_shared<SKVASTEventProcessor>(ad_.trackingEvents, std::weak_ptr<SKVASTViewControllerDelegate>());
  eventProcessor_->setRules(ad_.rules(), [weak = weak_from_this()] {
    const auto self = weak.lock();
    return self ? self->macroValues() : VASTMacroValues();
  });
  eventProcessor_->setProgress(ad_.progress);
  if (!ad_.failure) {
    SKLogger::debug(adTag, "Sending vastReady: callback");
    currentAdBreak_->setAdTitle(ad_.title);
    currentAdBreak_->setAdDescription(ad_.description);
    return vastReady();
  }
  if (*ad_.failure == SKVASTErrorMediaFileNotCompatible) {
    SKLogger::error(adTag,
                    "Error - VASTMediaFilePicker did not find a compatible mediaFile - VASTViewcontroller will not "
                    "be presented");
    if (!ad_.errors.empty()) SKLogger::debug(adTag, "Sending Error requests");
    eventProcessor_->sendVASTError(ad_.errors, ad_.errorCode());
    onYMRVastError(YMRVastErrorNoCompatibleAsset);
  } else {
    eventProcessor_->sendVASTError(ad_.errors, ad_.errorCode());
    onVastError(*ad_.failure, ad_.message());
  }
  return false;
}

void YMRVideoPlayerImpl::adDidReach(YMRTagRules::Moment moment) {
  if (ad_.rules().impressionsAt() == moment) {
    SKLogger::debug(adTag, "Sending Impressions requests");
    eventProcessor_->sendVASTUrlsWithId(ad_.impressions);
    eventProcessor_->sendNotRun(ad_.notRun);
  }
  if (ad_.rules().startAt() == moment) {
    trackEvent(SKVASTTrackingEventStart);
    trackEvent(SKVASTTrackingEventCreativeView);
  }
}

void YMRVideoPlayerImpl::adDidShow() {
  breakHasShown_ = true;
  ad_.replaceable = nullptr;
  if (!std::exchange(adHasShown_, true)) adDidReach(YMRTagRules::Moment::shown);
}

void YMRVideoPlayerImpl::adPictureDidArrive() {
  adContainerView_->pictureDidArrive();
  adDidShow();
}

VASTMacroValues YMRVideoPlayerImpl::macroValues() const {
  VASTMacroValues values;
  const CGSize size = UIScreen::mainScreen().bounds().size;
  values.playerSize = {static_cast<int>(size.width), static_cast<int>(size.height)};
  values.mediaPlayhead = breakStage_ == BreakStage::onScreen ? CMTimeGetSeconds(lastPlayTime_) : currentPosition();
  if (currentAdBreak_) values.breakPosition = currentAdBreak_->roll() + 1;
  if (breakStage_ < BreakStage::begun) return values;
  values.adCount = ads_.totalCount();
  values.podSequence = ad_.sequence;
  if (ad_.mediaFile) values.assetURI = ad_.mediaFile->url()->absoluteString();
  if (adPlayer_) values.adPlayhead = adTime();
  return values;
}

bool YMRVideoPlayerImpl::vastReady() {
  adDidReach(YMRTagRules::Moment::prepared);
  const auto number = adNumber_;
  tell(&YMRVideoPlayerDelegate::videoAdOnStart, currentAdBreak_);
  return isAtHand(number) && playAd();
}

bool YMRVideoPlayerImpl::playAd() {
  SKLogger::debug(adTag, "playVideo");
  const auto number = adNumber_;
  try {
    startAd();
    return true;
  } catch (const std::exception& exception) {
    SKLogger::error(adTag, std::string("Exception - moviePlayer.prepareToPlay: ") + exception.what());
    if (!isAtHand(number)) return false;
    if (!ad_.errors.empty()) SKLogger::debug(adTag, "Sending Error requests");
    eventProcessor_->sendVASTError(ad_.errors, playerErrorCode);
    ads_.replace(ad_);
    return false;
  }
}

void YMRVideoPlayerImpl::startAd() {
  SKLogger::debug(adTag, "initializing player");
  adContainerView_->confWithAdSchedule(adSchedule_);
  const auto number = adNumber_;
  const bool isFirst = pauseVideoPlayer();
  if (!isAtHand(number)) return;
  isPlayingAd_ = true;
  playerState_ = std::make_shared<YMRPlayerStatePlayingAd>();
  adPlayer_ = std::make_unique<YMRAdPlayer>(nextFilm_.take(ad_, macroValues()));
  adHasShown_ = false;
  adPlayer_->showIn(*adContainerView_->adPlayerView());
  // Between two ads it stays as it was, so that the programme does not show through.
  putOverlayOnScreen(isFirst);
  adPlayer_->listen(weak_from_this());
  adDidReach(YMRTagRules::Moment::asked);
  currentQuartile_ = 0;
  if (!UIApplication::sharedApplication().isInBackground()) adPlayer_->player()->play();
}

void YMRVideoPlayerImpl::adPlayerTick(const CMTime& time) {
  if (const auto label = adContainerView_->timeRemainLabel(); label && adSchedule_) {
    const auto text = countdown(*adSchedule_, ads_, remainingSeconds(adDuration(), CMTimeGetSeconds(time)));
    if (text) label->setText(*text);
  }
  offerSkipping(CMTimeGetSeconds(time));
  const auto number = adNumber_;
  if (adHasShown_) eventProcessor_->trackProgress(CMTimeGetSeconds(time), adDuration());
  const auto state = playerState_;
  state->adPlayerPeriodicTimeObserver(time, *this);
  if (!isAtHand(number)) return;
  if (const auto indicator = adContainerView_->loadingIndicator()) indicator->stopAnimating();
  prepareNextFilm(CMTimeGetSeconds(time));
}

void YMRVideoPlayerImpl::adPlayerDidChange(const std::string& keyPath, const std::shared_ptr<NSObject>& object,
                                           const NSKeyValueChange& change) {
  observeValueForKeyPath(keyPath, object, change, nullptr);
}

void YMRVideoPlayerImpl::adDidPLayToEndTime() {
  if (isPlayingAd_) adPlayDidEnd(true, false);
}

void YMRVideoPlayerImpl::adItemDidFail(const NSError& error) {
  if (!isPlayingAd_) return;
  SKLogger::error(adTag, "The ad can't be played: " + error.message);
  const auto number = adNumber_;
  eventProcessor_->sendVASTError(ad_.errors, ad_.errorCodeOfFilm(error));
  ads_.replace(ad_);
  onVastError(SKVASTErrorPlayback, YMRPlayerErrorHandler::VASTErrorToString(SKVASTErrorPlayback));
  if (isAtHand(number)) adPlayDidEnd(false, true);
}

void YMRVideoPlayerImpl::onVastError(SKVASTError error, const std::string& message) {
  const auto number = adNumber_;
  tell(&YMRVideoPlayerDelegate::videoAdOnError, currentAdBreak_, message);
  if (isAtHand(number)) onYMRVastError(YMRPlayerErrorHandler::SKVASTErrorToYMRVastError(error));
}

void YMRVideoPlayerImpl::onYMRVastError(YMRVastError error) {
  tell(&YMRVideoPlayerDelegate::videoAdOnErrorDesc, currentAdBreak_, static_cast<int>(error),
       YMRPlayerErrorHandler::YMRVastErrorToString(error));
}

void YMRVideoPlayerImpl::adPlayDidEnd(bool seek, bool shouldPassTracking) {
  if (endAd(seek, shouldPassTracking)) prepareToPlayVastAdModel(seek);
}

bool YMRVideoPlayerImpl::endAd(bool seek, bool shouldPassTracking) {
  SKLogger::debug(ymrPlayerTag, std::string("adPlayDidEnd - ") + (seek ? "1" : "0"));
  const auto number = adNumber_;
  isPlayingAd_ = false;
  if (!shouldPassTracking) {
    adDidShow();                                                 // one without a picture has begun, too
    eventProcessor_->trackProgress(adDuration(), adDuration());  // what was due since the last tick
    trackEvent(SKVASTTrackingEventComplete);
    tell(&YMRVideoPlayerDelegate::videoAdOnComplete, currentAdBreak_);
    if (!isAtHand(number) || !endPod()) return false;
  }
  ++adNumber_;
  takeAdOffScreen();
  return true;
}

bool YMRVideoPlayerImpl::endPod() {
  if (!ads_.isPod() || !ads_.isEmpty()) return true;
  const auto number = adNumber_;
  tell(&YMRVideoPlayerDelegate::videoAdOnPodComplete, currentAdBreak_);
  return isAtHand(number);
}

// Nothing that the player of an ad still has to say belongs to that ad any more.
void YMRVideoPlayerImpl::takeAdOffScreen() {
  currentQuartile_ = 0;
  if (!adPlayer_) return;
  if (!ads_.isEmpty()) adContainerView_->keepPicture(adPlayer_->leavePicture());
  adPlayer_ = nullptr;
  endSkipping();
  adContainerView_->removeFromSuperview();
}

void YMRVideoPlayerImpl::removeObserverOfAdPlayer() {
  if (adPlayer_) adPlayer_->stopListening();
}
