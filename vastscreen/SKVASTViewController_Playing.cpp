// The stand-alone ad screen on the screen: presenting it, playing the ad, its end, the viewer's remote.
#include <algorithm>
#include <utility>

#include "VAST/HostCall.h"
#include "VAST/SKLogger.h"
#include "ads/core/SKVASTEventProcessor.h"
#include "ads/core/VASTSettings.h"
#include "ads/core/YMRPlayerErrorHandler.h"
#include "platform/dispatch/Weakly.h"
#include "platform/foundation/MainThread.h"
#include "platform/uikit/values/UIScreen.h"
#include "vastscreen/SKVASTViewController.h"

namespace {

constexpr const char* tag = "VAST - View Controller";

// For the error URLs when the film's player can't be made.
constexpr const char* playerErrorCode = "400";

constexpr auto initialDelay = std::chrono::seconds(4);
// How long a film that has been made ready waits for play() after a dismissal.
constexpr auto nextFilmLimit = std::chrono::seconds(10);
constexpr auto playbackInterval = std::chrono::milliseconds(250);

RunLoop::Duration loadTimeout() {
  const std::chrono::duration<double> seconds(std::min(VASTSettings::vastVideoLoadTimeout(), 1e6));
  return std::chrono::duration_cast<RunLoop::Duration>(seconds);
}

}  // namespace

void SKVASTViewController::play() {
  YMR_ASSERT_MAIN_THREAD();
  if (stage_ == Stage::over) return;
  const auto self = own();
  if (!ad_) {
    SKLogger::warning(tag, "Ignoring call to playVideo before the player has sent vastReady.");
    return tellError(SKVASTErrorPlayerNotReady);
  }
  if (stage_ != Stage::idle) {
    SKLogger::warning(tag, "Ignoring call to playVideo while playback is already in progress");
    return tellError(SKVASTErrorAdAlreadyPlaying);
  }
  if (!networkCurrentlyReachable()) return refuseWithoutNetwork();
  if (!canBePresented()) {
    SKLogger::error(tag, "There is no view controller to present the ad, in a window and without another one over it");
    return tellError(SKVASTErrorPlayback);
  }
  try {
    film_ = std::make_unique<YMRAdPlayer>(nextFilm_.take(ad_->prepared, macroValues(ad_.get())));
  } catch (const std::exception& exception) {
    SKLogger::error(tag, std::string("Exception - moviePlayer.prepareToPlay: ") + exception.what());
    reportFailure(*ad_, playerErrorCode);
    return tellError(SKVASTErrorPlayback);
  }
  stage_ = Stage::presented;
  nextFilmTimer_ = nullptr;
  shown_ = ad_;
  isShown_ = hasPicture_ = isOver_ = false;
  addObservers();
  view();
  film_->showIn(*picture_);
  film_->listen(self);
  videoLoadTimeoutTimer_ = NSTimer::scheduledTimerWithTimeInterval(
      loadTimeout(), false, weakly(std::weak_ptr(self), &SKVASTViewController::videoLoadDidTimeOut));
  if (!UIApplication::sharedApplication().isInBackground()) film_->player()->play();
  wakefulness_.setAwake(true);
  presentPlayer();
}

void SKVASTViewController::reportFailure(Ad& ad, const std::string& code) {
  if (!std::exchange(ad.hasFailed, true)) ad.events->sendVASTError(ad.prepared.errors, code);
}

bool SKVASTViewController::canBePresented() const {
  const auto presenter = viewController_.lock();
  return presenter && !presenter->presentedViewController() && presenter->view()->window();
}

void SKVASTViewController::presentPlayer() {
  const auto number = ++presentation_;
  callDelegate(tag, delegate_, &SKVASTViewControllerDelegate::vastWillPresentFullScreen, own());
  if (!isAtHand(number)) return;
  if (canBePresented()) return viewController_.lock()->presentViewController(own(), true);
  SKLogger::error(tag, "The view controller that was to present the ad can't any more");
  tellError(SKVASTErrorPlayback);
  if (isAtHand(number)) close();
}

void SKVASTViewController::viewDidAppear(bool animated) {
  UIViewController::viewDidAppear(animated);
  if (stage_ != Stage::presented) return;
  if (!hasPicture_) indicator_->startAnimating();
  if (!UIApplication::sharedApplication().isInBackground()) resume();
}

// However the screen was taken away.
void SKVASTViewController::viewWillDisappear(bool animated) {
  UIViewController::viewWillDisappear(animated);
  if (stage_ == Stage::presented) close();
}

void SKVASTViewController::showAndPlayVideo() {
  const auto ad = shown_;
  isShown_ = true;
  film_->showIn(*picture_);
  controls_->hideControls();
  initialDelayTimer_ = NSTimer::scheduledTimerWithTimeInterval(
      initialDelay, false, [controls = controls_.get(), skip = skipButton_.get()] {
        if (!skip->isReady()) controls->showControls();  // which would take Enter from it
      });
  playFilm();
  const auto number = presentation_;
  if (std::exchange(ad->hasBegun, true)) {
    trackViewer(SKVASTTrackingEventResume);
  } else {
    adDidReach(YMRTagRules::Moment::prepared, *ad);
    adDidReach(YMRTagRules::Moment::asked, *ad);
  }
  if (isAtHand(number) && hasPicture_) adDidShow();
}

void SKVASTViewController::adDidReach(YMRTagRules::Moment moment, const Ad& ad) {
  if (ad.prepared.rules().impressionsAt() == moment) {
    SKLogger::debug(tag, "Sending Impressions requests");
    ad.events->sendVASTUrlsWithId(ad.prepared.impressions);
    ad.events->sendNotRun(ad.prepared.notRun);
  }
  if (ad.prepared.rules().startAt() != moment) return;
  ad.events->trackEvent(SKVASTTrackingEventStart);
  if (moment == YMRTagRules::Moment::shown) ad.events->trackEvent(SKVASTTrackingEventCreativeView);
}

void SKVASTViewController::adDidShow() {
  const auto ad = shown_;
  if (ad && !std::exchange(ad->hasShown, true)) adDidReach(YMRTagRules::Moment::shown, *ad);
}

void SKVASTViewController::trackViewer(SKVASTTrackingEvent event) {
  const auto ad = shown_;
  if (ad->hasShown || ad->prepared.rules().startAt() != YMRTagRules::Moment::shown) ad->events->trackEvent(event);
}

void SKVASTViewController::adPlayerTick(const CMTime& time) {
  if (!isShown_ || !film_) return;
  const double second = CMTimeGetSeconds(time);
  const double duration = CMTimeGetSeconds(film_->item()->duration());
  offerSkipping(second, duration);
  if (shown_->hasShown) shown_->events->trackProgress(second, duration);
  if (film_) prepareNextFilm(second);
}

void SKVASTViewController::prepareNextFilm(double second) {
  if (!ad_ || ad_ == shown_ || ad_->wasMadeReady) return;
  const auto& skipOffset = shown_->prepared.skipOffset;
  if (!YMRNextFilm::isDue(*film_->item(), second, allowsSkipping_ ? skipOffset : std::nullopt)) return;
  ad_->wasMadeReady = true;
  nextFilm_.prepare(ad_->prepared, macroValues(ad_.get()));
}

VASTMacroValues SKVASTViewController::macroValues(const Ad* ad) const {
  constexpr int onItsOwn = 4;
  VASTMacroValues values;
  const CGSize size = UIScreen::mainScreen().bounds().size;
  values.playerSize = {static_cast<int>(size.width), static_cast<int>(size.height)};
  values.breakPosition = onItsOwn;
  values.adCount = 1;
  if (film_) values.adPlayhead = CMTimeGetSeconds(film_->player()->currentTime());
  if (!ad) return values;
  values.podSequence = ad->prepared.sequence;
  if (ad->prepared.mediaFile) values.assetURI = ad->prepared.mediaFile->url()->absoluteString();
  return values;
}

void SKVASTViewController::playFilm() {
  if (std::exchange(isOver_, false)) film_->player()->seekToTime(kCMTimeZero);
  film_->player()->play();
  wakefulness_.setAwake(true);
  playbackTimer_ = NSTimer::scheduledTimerWithTimeInterval(playbackInterval, true, [this] { updatePlayedSeconds(); });
}

bool SKVASTViewController::isPlaying() const {
  return film_ && film_->player()->rate() != 0;
}

void SKVASTViewController::pause() {
  YMR_ASSERT_MAIN_THREAD();
  if (!isPlaying()) return;
  playbackTimer_ = nullptr;
  film_->player()->pause();
  wakefulness_.setAwake(false);
  if (const auto self = own(); isShown_) trackViewer(SKVASTTrackingEventPause);
}

void SKVASTViewController::resume() {
  YMR_ASSERT_MAIN_THREAD();
  if (stage_ != Stage::presented) return;
  const auto self = own();
  if (!isShown_) return showAndPlayVideo();
  if (isPlaying()) return;
  playFilm();
  trackViewer(SKVASTTrackingEventResume);
}

void SKVASTViewController::info() {
  YMR_ASSERT_MAIN_THREAD();
  const auto self = own();
  const auto ad = shown_ ? shown_ : ad_;
  if (!ad) return;
  SKLogger::debug(tag, "Sending clickTracking requests");
  ad->events->sendVASTUrlsWithId(ad->clickTracking);
  if (!ad->clickThrough) return;
  const NSURL target = ad->prepared.rules().withMacros(*ad->clickThrough, macroValues(ad.get()));
  callDelegate(tag, delegate_, &SKVASTViewControllerDelegate::vastOpenBrowseWithUrl, target);
}

void SKVASTViewController::close() {
  YMR_ASSERT_MAIN_THREAD();
  if (stage_ != Stage::presented) return;
  const auto self = own();
  stage_ = Stage::closing;
  removeObservers();
  stopTimers();
  film_ = nullptr;
  nextFilmTimer_ = NSTimer::scheduledTimerWithTimeInterval(nextFilmLimit, false, [this] { nextFilm_.letGo(); });
  wakefulness_.setAwake(false);
  indicator_->stopAnimating();
  controls_->hideControls();
  skipButton_->setSecondsLeft(std::nullopt);
  shown_->events->trackEvent(SKVASTTrackingEventClose);
  SKLogger::debug(tag, "Dismissing VASTViewController");
  if (const auto presenter = presentingViewController()) {
    presenter->dismissViewControllerAnimated(true);
  } else {
    view()->removeFromSuperview();  // who presented it has gone
  }
  shown_ = nullptr;
  stage_ = Stage::idle;
  callDelegate(tag, delegate_, &SKVASTViewControllerDelegate::vastDidDismissFullScreen, self);
}

void SKVASTViewController::stopTimers() {
  playbackTimer_ = nullptr;
  initialDelayTimer_ = nullptr;
  videoLoadTimeoutTimer_ = nullptr;
}

void SKVASTViewController::adPictureDidArrive() {
  const auto self = own();
  hasPicture_ = true;
  videoLoadTimeoutTimer_ = nullptr;
  indicator_->stopAnimating();
  if (isShown_) adDidShow();
}

void SKVASTViewController::videoLoadDidTimeOut() {
  const auto self = own();
  const auto ad = shown_;
  SKLogger::error(tag, "Video Load Timeout");
  close();
  reportFailure(*ad,
                ad->prepared.errorCodeOfFilm({AVFoundationErrorDomain, AVErrorNoDataReceived, ""}, SKVASTErrorTimeout));
  tellError(SKVASTErrorTimeout);
}

void SKVASTViewController::moviePlayBackDidFinish(const std::optional<NSError>& error) {
  const auto self = own();
  const auto ad = shown_;
  const auto number = presentation_;
  stopTimers();
  wakefulness_.setAwake(false);
  if (error) {
    SKLogger::error(tag, "playback error:  " + error->message);
    reportFailure(*ad, ad->prepared.errorCodeOfFilm(*error));
    tellError(SKVASTErrorPlayback);
    if (isAtHand(number)) close();
    return;
  }
  isOver_ = true;
  if (!isShown_) return;  // over before the screen was there; it is shown from its beginning
  adDidShow();
  if (!isAtHand(number)) return;
  skipButton_->setSecondsLeft(std::nullopt);
  const double duration = CMTimeGetSeconds(film_->item()->duration());
  ad->events->trackProgress(duration, duration);  // what was due since the last tick
  if (!std::exchange(ad->hasEnded, true)) ad->events->trackEvent(SKVASTTrackingEventComplete);
  if (!isAtHand(number)) return;
  controls_->showControls();
  controls_->toggleToPlayButton(true);
}

// An ad that had ended before the application was left does not begin again.
void SKVASTViewController::applicationDidBecomeActive() {
  if (!isOver_) resume();
}

void SKVASTViewController::applicationDidEnterBackground() {
  nextFilm_.letGo();
  pause();
}

void SKVASTViewController::handleTouches() {
  if (stage_ == Stage::presented && isShown_) controls_->showControls();
}

bool SKVASTViewController::pressesBegan(const UIPress& press) {
  const auto self = own();
  if (press.isRepeat || press.type == UIPressTypeMenu) return true;
  if (skipTakesPress(press.type)) return true;
  if (press.type == UIPressTypePlayPause && isShown_) isPlaying() ? pause() : resume();
  handleTouches();
  return true;
}

void SKVASTViewController::pressesEnded(const UIPress& press) {
  if (press.type == UIPressTypeMenu) close();
  if (press.type == UIPressTypeSelect && std::exchange(skipIsDown_, false)) skipButton_->press();
}
