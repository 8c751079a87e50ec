// The ads of a break: fetched, chosen, played one after another, and their ends.
#include <QScopedValueRollback>
#include <algorithm>
#include <utility>
#include <variant>

#include "VAST/Parser/SKVAST2Parser.h"
#include "VAST/SKLogger.h"
#include "ads/core/SKVASTEventProcessor.h"
#include "ads/core/SKVASTMediaFilePicker.h"
#include "ads/core/YMRPlayerErrorHandler.h"
#include "platform/avfoundation/layer/AVPlayerLayer.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSString.h"
#include "platform/uikit/UIApplication.h"
#include "platform/uikit/values/UIScreen.h"
#include "player/YMRDelegateSend.h"
#include "player/YMRVideoPlayerImpl.h"
#include "player/states/YMRPlayerStatePlayingAd.h"
#include "player/states/YMRPlayerStateRules.h"
#include "ui/Autolayout.h"

namespace {

constexpr const char* adTag = "VAST - View Controller";

// Building or starting the ad's player failed.
constexpr const char* playerErrorCode = "400";

// Seconds left, counted down to 1. 0 for an ad of unknown length.
std::int64_t remainingSeconds(double duration, double time) {
  const double remaining = duration - time + 1.0;
  return std::abs(remaining) < 1e9 ? static_cast<std::int64_t>(remaining) : 0;
}

}  // namespace

void YMRVideoPlayerImpl::loadVideoUsingSource(const AdSource& source) {
  const auto* url = std::get_if<std::optional<NSURL>>(&source);
  SKLogger::debug(adTag, url ? "Starting loadVideoWithURL" : "Starting loadVideoWithData");
  const auto number = adNumber_;
  sendToDelegate(delegate_, &YMRVideoPlayerDelegate::videoAdOnRequest, currentAdBreak_);
  if (!isAtHand(number)) return;
  const auto didLoad = [weak = weak_from_this(), number](const std::shared_ptr<YMRVastModel>& model) {
    const auto self = weak.lock();
    if (self && self->isAtHand(number)) self->vastDidLoad(*model);
  };
  if (url) {
    SKVAST2Parser().parseWithUrl(*url, didLoad);
  } else {
    SKVAST2Parser().parseWithData(std::get<VASTDocument>(source), didLoad);
  }
}

void YMRVideoPlayerImpl::vastDidLoad(YMRVastModel& model) {
  SKLogger::debug(adTag, "back from block in loadVideoFromData");
  const auto number = adNumber_;
  sendToDelegate(delegate_, &YMRVideoPlayerDelegate::videoAdOnResponse, currentAdBreak_);
  if (!isAtHand(number)) return;
  const auto models = model.sequencedAdModels();
  vastAdModels_.assign(models.begin(), models.end());
  vastAdModelTotalCount_ = static_cast<int>(models.size());
  prepareToPlayVastAdModel();
}

// An ad that fails while it is prepared asks for the next one from inside; a loop makes a break of thousands of them no
// deeper than a break of one.
void YMRVideoPlayerImpl::prepareToPlayVastAdModel() {
  preparesNext_ = true;
  if (isPreparing_) return;
  const QScopedValueRollback preparing(isPreparing_, true);
  while (std::exchange(preparesNext_, false) && !vastAdModels_.empty()) prepareNextAd();
}

void YMRVideoPlayerImpl::prepareNextAd() {
  const auto number = ++adNumber_;
  if (vastAdModelTotalCount_ >= 2 && static_cast<int>(vastAdModels_.size()) == vastAdModelTotalCount_) {
    sendToDelegate(delegate_, &YMRVideoPlayerDelegate::videoAdOnPodStart, currentAdBreak_);
    if (!isAtHand(number)) return;
  }
  const auto model = std::move(vastAdModels_.front());
  vastAdModels_.pop_front();
  eventProcessor_ = std::make_shared<SKVASTEventProcessor>(model->trackingEvents(), vastDelegate_);
  impressions_ = model->impressions();
  vastErrors_ = model->errors();
  if (const auto files = model->mediaFiles(); !files.empty()) {
    const auto file = SKVASTMediaFilePicker::pick(files);
    mediaFileURL_ = file ? file->url() : std::nullopt;
    if (mediaFileURL_) {
      SKLogger::debug(adTag, "Sending vastReady: callback");
      vastReady_ = true;
      currentAdBreak_->setAdTitle(model->adTitle());
      currentAdBreak_->setAdDescription(model->adDescription());
      vastReady(nullptr);
    } else {
      SKLogger::error(adTag,
                      "Error - VASTMediaFilePicker did not find a compatible mediaFile - VASTViewcontroller will not "
                      "be presented");
      if (!vastErrors_.empty()) SKLogger::debug(adTag, "Sending Error requests");
      sendVASTErrors(YMRPlayerErrorHandler::VASTErrorToErrorCode(SKVASTErrorMediaFileNotCompatible));
      onYMRVastError(YMRVastErrorNoCompatibleAsset);
    }
  } else {
    const auto error = model->vastError().value_or(SKVASTErrorNoAd);
    sendVASTErrors(YMRPlayerErrorHandler::VASTErrorToErrorCode(error));
    if (error == SKVASTErrorNoAd || error == SKVASTErrorNoAdAfterWrappers) {
      const auto standalone = model->sequencedAdModelsOfStandaloneAd();
      vastAdModels_.insert(vastAdModels_.begin(), standalone.begin(), standalone.end());
    }
    onVastError(error);
  }
  model->setParent(nullptr);
}

void YMRVideoPlayerImpl::vastReady(const NSObject*) {
  SKLogger::debug(adTag, "Sending Impressions requests");
  eventProcessor_->sendVASTUrlsWithId(impressions_);
  const auto number = adNumber_;
  sendToDelegate(delegate_, &YMRVideoPlayerDelegate::videoAdOnStart, currentAdBreak_);
  if (isAtHand(number)) playAd();
}

void YMRVideoPlayerImpl::playAd() {
  SKLogger::debug(adTag, "playVideo");
  if (!vastReady_ && vastDelegate_->vastError) {
    vastDelegate_->vastError(nullptr, SKVASTErrorPlayerNotReady);
    SKLogger::warning(adTag, "Ignoring call to playVideo before the player has sent vastReady.");
    return;
  }
  const auto number = adNumber_;
  try {
    startAd();
  } catch (const std::exception& exception) {
    SKLogger::error(adTag, std::string("Exception - moviePlayer.prepareToPlay: ") + exception.what());
    if (!isAtHand(number)) return;
    if (vastDelegate_->vastError) vastDelegate_->vastError(nullptr, SKVASTErrorPlayback);
    if (!vastErrors_.empty()) SKLogger::debug(adTag, "Sending Error requests");
    sendVASTErrors(playerErrorCode);
    adPlayDidEnd(isPlayingAd_, true);  // until then the programme was not stopped
  }
}

void YMRVideoPlayerImpl::startAd() {
  SKLogger::debug(adTag, "initializing player");
  adContainerView_->confWithAdSchedule(adSchedule_);
  const auto item = AVPlayerItem::playerItemWithURL(mediaFileURL_, {.purpose = MediaPurpose::advertisement});
  const auto number = adNumber_;
  pauseVideoPlayer();
  if (!isAtHand(number)) return;
  isPlayingAd_ = true;
  playerState_ = std::make_shared<YMRPlayerStatePlayingAd>();
  removeObserverOfAdPlayer();
  adPlayer_ = AVPlayer::playerWithPlayerItem(item);
  adPlayerLayer_ = AVPlayerLayer::playerLayerWithPlayer(adPlayer_);
  adPlayerLayer_->setFrame(UIScreen::mainScreen().bounds());
  adPlayerLayer_->setFillsSuperlayer(true);
  adContainerView_->adPlayerView()->layer()->addSublayer(adPlayerLayer_);
  adPlayerLayer_->addObserver(shared_from_this(), "readyForDisplay");
  const auto& screen = avPlayerVC_->view();
  // Between two ads it stays as it was, so that the programme does not show through.
  if (!std::exchange(hasOverlayBeenUp_, true)) adContainerView_->awaitPicture();
  addSubViewWithAutolayout(screen, adContainerView_);

  const auto weak = weak_from_this();
  adTimeObserver_ =
      adPlayer_->addPeriodicTimeObserver(CMTimeMakeWithSeconds(1.0, 1'000'000'000), nullptr, [weak](CMTime time) {
        if (const auto self = weak.lock()) self->adPlayerTick(time);
      });
  const auto self = shared_from_this();
  item->addObserver(self, "status", NSKeyValueObservingOptionNew);
  item->addObserver(self, "playbackLikelyToKeepUp", NSKeyValueObservingOptionInitial | NSKeyValueObservingOptionNew);
  adPlayer_->addObserver(self, "rate", NSKeyValueObservingOptionNew);
  trackEvent(SKVASTTrackingEventStart);
  trackEvent(SKVASTTrackingEventCreativeView);
  currentQuartile_ = 0;
  if (!UIApplication::sharedApplication().isInBackground()) adPlayer_->play();
  NSNotificationCenter::defaultCenter().addObserver(&adPlayer_, AVPlayerItemDidPlayToEndTimeNotification, item,
                                                    [weak](const NSNotification&) {
                                                      if (const auto hub = weak.lock()) hub->adDidPLayToEndTime();
                                                    });
}

void YMRVideoPlayerImpl::adPlayerTick(const CMTime& time) {
  showCountdown(time);
  const auto number = adNumber_;
  const auto state = playerState_;
  state->adPlayerPeriodicTimeObserver(time, *this);
  if (!isAtHand(number)) return;
  if (const auto indicator = adContainerView_->loadingIndicator()) indicator->stopAnimating();
}

void YMRVideoPlayerImpl::showCountdown(const CMTime& time) {
  const auto label = adContainerView_->timeRemainLabel();
  if (!adSchedule_ || !label) return;
  const auto remaining = remainingSeconds(adDuration(), CMTimeGetSeconds(time));
  const int total = vastAdModelTotalCount_;
  const auto& single = adSchedule_->adCountdownText();
  const auto& pod = adSchedule_->adpodCountdownText();
  if (total < 2 && !single.empty()) {
    label->setText(stringWithFormat(single, {remaining}));
  } else if (!pod.empty()) {
    label->setText(stringWithFormat(pod, {remaining, total - static_cast<int>(vastAdModels_.size()), total}));
  }
}

void YMRVideoPlayerImpl::adDidPLayToEndTime() {
  if (isPlayingAd_) adPlayDidEnd(true, false);
}

void YMRVideoPlayerImpl::adItemDidFail() {
  const auto error = adPlayer_->currentItem()->error();
  SKLogger::error(adTag, "The ad can't be played: " + (error ? error->message : ""));
  sendVASTErrors(YMRPlayerErrorHandler::VASTErrorToErrorCode(SKVASTErrorPlayback));
  onVastError(SKVASTErrorPlayback);
}

void YMRVideoPlayerImpl::onVastError(SKVASTError error) {
  const auto number = adNumber_;
  sendToDelegate(delegate_, &YMRVideoPlayerDelegate::videoAdOnError, currentAdBreak_,
                 YMRPlayerErrorHandler::VASTErrorToString(error));
  if (isAtHand(number)) onYMRVastError(YMRPlayerErrorHandler::SKVASTErrorToYMRVastError(error));
}

void YMRVideoPlayerImpl::onYMRVastError(YMRVastError error) {
  const auto number = adNumber_;
  sendToDelegate(delegate_, &YMRVideoPlayerDelegate::videoAdOnErrorDesc, currentAdBreak_, static_cast<int>(error),
                 YMRPlayerErrorHandler::YMRVastErrorToString(error));
  if (isAtHand(number)) adPlayDidEnd(false, true);
}

void YMRVideoPlayerImpl::sendVASTErrors(const std::string& code) {
  if (!vastErrors_.empty()) eventProcessor_->sendVASTError(vastErrors_, code);
}

void YMRVideoPlayerImpl::adPlayDidEnd(bool seek, bool shouldPassTracking) {
  SKLogger::debug(ymrPlayerTag, std::string("adPlayDidEnd - ") + (seek ? "1" : "0"));
  const auto number = adNumber_;
  isPlayingAd_ = false;
  if (!shouldPassTracking) {
    trackEvent(SKVASTTrackingEventComplete);
    sendToDelegate(delegate_, &YMRVideoPlayerDelegate::videoAdOnComplete, currentAdBreak_);
    if (!isAtHand(number)) return;
    if (vastAdModelTotalCount_ >= 2 && vastAdModels_.empty()) {
      sendToDelegate(delegate_, &YMRVideoPlayerDelegate::videoAdOnPodComplete, currentAdBreak_);
      if (!isAtHand(number)) return;
    }
  }
  ++adNumber_;
  takeAdOffScreen();
  if (!vastAdModels_.empty()) {
    prepareToPlayVastAdModel();
  } else {
    breakDidEnd(seek);
  }
}

// Nothing that the player of an ad still has to say belongs to that ad any more.
void YMRVideoPlayerImpl::takeAdOffScreen() {
  removeObserverOfAdPlayer();
  currentQuartile_ = 0;
  if (const auto layer = std::exchange(adPlayerLayer_, nullptr)) layer->removeFromSuperlayer();
  adContainerView_->removeFromSuperview();
  if (const auto player = std::exchange(adPlayer_, nullptr)) player->pause();
}

void YMRVideoPlayerImpl::removeObserverOfAdPlayer() {
  NSNotificationCenter::defaultCenter().removeObserver(&adPlayer_);
  const auto token = std::exchange(adTimeObserver_, nullptr);
  if (!adPlayer_ || !token) return;
  adPlayer_->removeTimeObserver(token);
  const auto stopObserving = [this](NSObject& object, const char* key) {
    try {
      object.removeObserver(this, key);
    } catch (const NSException& exception) {
      SKLogger::error(ymrPlayerTag, exception.description());
    }
  };
  if (const auto item = adPlayer_->currentItem()) {
    stopObserving(*item, "status");
    stopObserving(*item, "playbackLikelyToKeepUp");
  }
  stopObserving(*adPlayer_, "rate");
}
