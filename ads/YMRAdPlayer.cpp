#include "ads/YMRAdPlayer.h"

#include <utility>

#include "VAST/SKLogger.h"
#include "platform/avfoundation/layer/AVPlayerLayer.h"
#include "platform/dispatch/Weakly.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "platform/uikit/UIView.h"
#include "platform/uikit/values/UIScreen.h"

YMRAdPlayer::Listener::~Listener() = default;

// What is observed of the player, for one listener.
class YMRAdPlayer::Watch final : public NSKeyValueObserver, public std::enable_shared_from_this<Watch> {
 public:
  Watch(const YMRAdPlayer& of, std::weak_ptr<Listener> listener)
      : item_(of.item_), player_(of.player_), layer_(of.layer_), listener_(std::move(listener)) {}

  void start() {
    const auto self = shared_from_this();
    tick_ = player_->addPeriodicTimeObserver(CMTimeMakeWithSeconds(1.0, 1'000'000'000), nullptr,
                                             weakly(weak_from_this(), [](const Watch& watch, CMTime time) {
                                               const auto listener = watch.listener_.lock();
                                               if (listener) listener->adPlayerTick(time);
                                             }));
    NSNotificationCenter::defaultCenter().addObserver(this, AVPlayerItemDidPlayToEndTimeNotification, item_,
                                                      weakly(weak_from_this(), [](const Watch& watch) {
                                                        const auto listener = watch.listener_.lock();
                                                        if (listener) listener->adDidPLayToEndTime();
                                                      }));
    layer_->addObserver(self, "readyForDisplay");
    player_->addObserver(self, "rate", NSKeyValueObservingOptionNew);
    item_->addObserver(self, "status", NSKeyValueObservingOptionNew);
    // Last: this registration calls the listener at once, which may destroy the player of the ad.
    item_->addObserver(self, "playbackLikelyToKeepUp", NSKeyValueObservingOptionInitial | NSKeyValueObservingOptionNew);
  }

  void stop() {
    listener_.reset();
    NSNotificationCenter::defaultCenter().removeObserver(this);
    player_->removeTimeObserver(tick_);
    stopObserving(*item_, "status");
    stopObserving(*item_, "playbackLikelyToKeepUp");
    stopObserving(*player_, "rate");
    stopObserving(*layer_, "readyForDisplay");
  }

  void observeValueForKeyPath(const std::string& keyPath, const std::shared_ptr<NSObject>& object,
                              const NSKeyValueChange& change, void*) override {
    const auto listener = listener_.lock();
    if (!listener) return;
    if (object == layer_) return listener->adPictureDidArrive();
    listener->adPlayerDidChange(keyPath, object, change);
    const bool stillListens = !listener_.expired();
    if (stillListens && object == item_ && item_->status() == AVPlayerItemStatusFailed) {
      listener->adItemDidFail(item_->error().value_or(NSError{}));
    }
  }

 private:
  void stopObserving(NSObject& object, const char* key) {
    try {
      object.removeObserver(this, key);
    } catch (const NSException& exception) {
      SKLogger::error("YMRVideoPlayer", exception.description());
    }
  }

  const std::shared_ptr<AVPlayerItem> item_;
  const std::shared_ptr<AVPlayer> player_;
  const std::shared_ptr<AVPlayerLayer> layer_;
  std::weak_ptr<Listener> listener_;
  AVPlayerTimeObserverToken tick_;
};

YMRAdPlayer::YMRAdPlayer(const std::optional<NSURL>& film, bool anyContainer)
    : YMRAdPlayer(std::make_shared<AVURLAsset>(
          film,
          AVURLAssetOptions{.purpose = anyContainer ? MediaPurpose::anyAdvertisement : MediaPurpose::advertisement})) {}

// The item last: when its picture is here, that comes before all else that it has to say.
YMRAdPlayer::YMRAdPlayer(const std::shared_ptr<AVURLAsset>& film)
    : item_(AVPlayerItem::playerItemWithAsset(film)),
      player_(AVPlayer::playerWithPlayerItem(nullptr)),
      layer_(AVPlayerLayer::playerLayerWithPlayer(player_)) {
  player_->replaceCurrentItemWithPlayerItem(item_);
}

YMRAdPlayer::~YMRAdPlayer() {
  stopListening();
  if (layer_->player()) layer_->removeFromSuperlayer();
  player_->pause();
}

void YMRAdPlayer::showIn(UIView& view) {
  layer_->setFrame(UIScreen::mainScreen().bounds());
  layer_->setFillsSuperlayer(true);
  view.layer()->addSublayer(layer_);
}

bool YMRAdPlayer::isShown() const {
  return layer_->superlayer() != nullptr;
}

std::shared_ptr<CALayer> YMRAdPlayer::leavePicture() {
  if (!layer_->isReadyForDisplay()) return nullptr;
  layer_->keepPicture();
  return layer_;
}

void YMRAdPlayer::listen(std::weak_ptr<Listener> listener) {
  YMR_ASSERT_MAIN_THREAD();
  const auto watch = std::make_shared<Watch>(*this, std::move(listener));
  watch_ = watch;
  watch->start();
}

void YMRAdPlayer::stopListening() {
  if (const auto watch = std::exchange(watch_, nullptr)) watch->stop();
}
