#include "player/YMRVideoPlayerImpl.h"

#include <algorithm>
#include <utility>

#include "VAST/SKLogger.h"
#include "ads/core/SKVASTEventProcessor.h"
#include "platform/avfoundation/process/EngineChoice.h"
#include "platform/dispatch/Weakly.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/PerformSelector.h"
#include "platform/uikit/UIApplication.h"
#include "player/YMRItemPreparation.h"
#include "player/YMRSubtitleStage.h"
#include "player/states/YMRPlayerStateLoadingAd.h"
#include "player/states/YMRPlayerStateRules.h"
#include "subtitles/ASBPlayerScrubbing.h"

// What hosts hold is a handle apart from the hub's own count, so that an entry point that keeps the hub alive for its
// run does not keep the presentation alive: that ends with the last handle, and the running entry point sees it.
std::shared_ptr<YMRVideoPlayerImpl> YMRVideoPlayerImpl::init() {
  YMR_ASSERT_MAIN_THREAD();
  std::shared_ptr<YMRVideoPlayerImpl> hub(new YMRVideoPlayerImpl);
  hub->setUp();
  return {hub.get(), [inner = hub](YMRVideoPlayerImpl*) mutable {
            inner->hostLetGo();
            inner.reset();
          }};
}

YMRVideoPlayerImpl::YMRVideoPlayerImpl() = default;
YMRVideoPlayerImpl::~YMRVideoPlayerImpl() = default;

void YMRVideoPlayerImpl::setUp() {
  playerState_ = std::make_shared<YMRPlayerStateLoadingAd>();
  SKLogger::setLogLevel(SKLogLevelNone);
  scrubbing_ = std::make_shared<ASBPlayerScrubbing>();
  subtitleStage_ = std::make_shared<YMRSubtitleStage>();
  adContainerView_ = YMRAdContainerView::make();
  avPlayerVC_ = std::make_shared<AVPlayerViewController>();
  avPlayerVC_->setDelegate(weak_from_this());
  replaceMenuHandling();
  addAdRemote();
  initSubtitle();
  followApplication();
}

// Menu always ends the whole presentation, also during an ad, in place of what the player view controller would do.
void YMRVideoPlayerImpl::replaceMenuHandling() {
  const auto menu = std::make_shared<UITapGestureRecognizer>(weakly(weak_from_this(), &YMRVideoPlayerImpl::handleBack));
  menu->setAllowedPressTypes({UIPressTypeMenu});
  auto recognizers = avPlayerVC_->view()->gestureRecognizers();
  const auto own = std::find_if(recognizers.begin(), recognizers.end(), [](const auto& recognizer) {
    return std::dynamic_pointer_cast<UITapGestureRecognizer>(recognizer) && !recognizer->allowedPressTypes().empty() &&
           recognizer->allowedPressTypes().front() == UIPressTypeMenu;
  });
  if (own != recognizers.end()) recognizers.erase(own);
  recognizers.push_back(menu);
  avPlayerVC_->view()->setGestureRecognizers(std::move(recognizers));
}

void YMRVideoPlayerImpl::handleBack(const UIGestureRecognizer& recognizer) {
  if (recognizer.state() == UIGestureRecognizerStateEnded) dismiss();
}

// The overlay has the remote to itself while it is over the screen.
void YMRVideoPlayerImpl::addAdRemote() {
  const auto toggle = std::make_shared<UITapGestureRecognizer>(weakly(weak_from_this(), [](YMRVideoPlayerImpl& self) {
    if (const auto player = self.adPlayer()) player->setRate(player->rate() == 0 ? 1 : 0);
  }));
  toggle->setAllowedPressTypes({UIPressTypePlayPause});
  adContainerView_->addGestureRecognizer(toggle);
  addSkipping();
}

void YMRVideoPlayerImpl::followApplication() {
  auto& center = NSNotificationCenter::defaultCenter();
  center.addObserver(&presentation_, UIApplicationDidEnterBackgroundNotification, nullptr,
                     weakly(weak_from_this(), &YMRVideoPlayerImpl::appDidEnterBackground));
  center.addObserver(&presentation_, UIApplicationDidBecomeActiveNotification, nullptr,
                     weakly(weak_from_this(), &YMRVideoPlayerImpl::appDidBecomeActive));
  // By another key, since it is followed after dismissal, too: the views are there until the host lets go.
  center.addObserver(&avPlayerVC_, UIApplicationWillTerminateNotification, nullptr,
                     weakly(weak_from_this(), &YMRVideoPlayerImpl::applicationWillTerminate));
}

void YMRVideoPlayerImpl::presentWithController(const std::shared_ptr<UIViewController>& controller) {
  YMR_ASSERT_MAIN_THREAD();
  prepareMediaEngine();
  if (controller && presentation_ == Presentation::alive) controller->presentViewController(avPlayerVC_, true);
}

void YMRVideoPlayerImpl::removeObserver() {
  try {
    if (vodPlayer_ && vodTimeObserver_) {  // the tick comes and goes together with the key-value observers
      if (const auto item = vodPlayer_->currentItem()) {
        for (const auto* key : {"playbackBufferEmpty", "status", "playbackLikelyToKeepUp"}) {
          item->removeObserver(this, key);
        }
      }
      vodPlayer_->removeObserver(this, "rate");
    }
  } catch (const NSException& exception) {
    SKLogger::error(ymrPlayerTag, exception.description());
  }
  removeObserverOfAdPlayer();
  if (vodTimeObserver_ && vodPlayer_) vodPlayer_->removeTimeObserver(vodTimeObserver_);
  vodTimeObserver_ = nullptr;
  NSNotificationCenter::defaultCenter().removeObserver(this);
  cancelPreviousPerformRequestsWithTarget(this);
}

bool YMRVideoPlayerImpl::hostAnswers(std::function<void()> YMRVideoPlayerDelegate::*callback) const {
  const auto host = delegate();
  return host && (*host).*callback;
}

void YMRVideoPlayerImpl::dismiss() {
  YMR_ASSERT_MAIN_THREAD();
  if (presentation_ == Presentation::gone) return takeScreenAway(true);  // a host may have shown it once more
  if (presentation_ == Presentation::leaving) return;
  const auto self = shared_from_this();
  presentation_ = Presentation::leaving;
  tell(&YMRVideoPlayerDelegate::playerWillDismiss);
  ads_.clear();
  if (const auto player = adPlayer()) player->pause();
  if (vodPlayer_) vodPlayer_->pause();
  if (presentation_ == Presentation::gone) return;
  removeObserver();
  takeScreenAway(true);
  letGoOfPlayers();
  if (hostAnswers(&YMRVideoPlayerDelegate::playerDidDismiss)) {
    tell(&YMRVideoPlayerDelegate::playerDidDismiss);
    delegate_.reset();
  }
}

// Nobody can dismiss the player any more, so it must not stay on the screen.
void YMRVideoPlayerImpl::hostLetGo() {
  YMR_ASSERT_MAIN_THREAD();
  NSNotificationCenter::defaultCenter().removeObserver(&avPlayerVC_);
  if (presentation_ == Presentation::gone) return takeScreenAway(false);
  delegate_.reset();
  removeObserver();
  takeScreenAway(false);
  letGoOfPlayers();
}

// Nothing more has its turn, and no view may outlive Qt.
void YMRVideoPlayerImpl::applicationWillTerminate() {
  hostLetGo();
  delegate_.reset();
  if (avPlayerVC_->isViewLoaded()) avPlayerVC_->view()->removeFromSuperview();
  subtitleStage_->letGoOfViews();
  adContainerView_ = nullptr;
  overlayView_ = nullptr;
  avPlayerVC_ = nullptr;
}

// With what a guest of the host's may have put over it: whoever presents it dismisses everything above.
void YMRVideoPlayerImpl::takeScreenAway(bool animated) {
  if (!avPlayerVC_) return;
  const auto presenting = avPlayerVC_->presentingViewController();
  (presenting ? presenting : avPlayerVC_)->dismissViewControllerAnimated(animated);
}

void YMRVideoPlayerImpl::letGoOfPlayers() {
  presentation_ = Presentation::gone;
  preparation_ = nullptr;
  NSNotificationCenter::defaultCenter().removeObserver(&presentation_);
  leaveBreak();
  avPlayerVC_->setDelegate({});
  avPlayerVC_->setPlayer(nullptr);
  subtitleStage_->stopLoading();
  // Engine and scrubbing keep the player: nothing may go on behind it.
  if (vodPlayer_) vodPlayer_->replaceCurrentItemWithPlayerItem(nullptr);
  vodPlayer_ = nullptr;
}
