#include "player/states/YMRPlayerStatePlayingAd.h"

#include "VAST/SKLogger.h"
#include "player/states/YMRPlayerStatePausedAd.h"
#include "player/states/YMRPlayerStateRules.h"

namespace {
constexpr std::uint32_t pauseEvent = 7;
}

void YMRPlayerStatePlayingAd::log() {}

void YMRPlayerStatePlayingAd::observeValueForKeyPath(const std::string& keyPath,
                                                     const std::shared_ptr<NSObject>& object, const NSKeyValueChange&,
                                                     void*, YMRPlayerStateHub& ymrPlayer) {
  if (keyPath == "playbackBufferEmpty") {
    if (!ymrPlayer.isPlaybackBufferEmpty(object.get())) return;
    SKLogger::debug(ymrPlayerTag, "Video ad onBuffer");
    ymrPlayer.tell(&YMRVideoPlayerDelegate::videoAdOnBuffer, ymrPlayer.currentAdBreak(), ymrPlayer.adDuration(),
                   ymrPlayer.adTime());
  } else if (keyPath == "rate" && ymrPlayer.isAdPlayer(object.get()) && ymrPlayer.adPlayerRate() == 0.0f) {
    ymrPlayer.trackEvent(pauseEvent);
    ymrPlayer.tell(&YMRVideoPlayerDelegate::videoAdOnPause, ymrPlayer.currentAdBreak(), ymrPlayer.adDuration(),
                   ymrPlayer.adTime());
    if (!ymrPlayer.isCurrent(*this)) return;
    ymrPlayer.setPlayerState(std::make_shared<YMRPlayerStatePausedAd>());
  }
}

void YMRPlayerStatePlayingAd::adPlayerPeriodicTimeObserver(const CMTime& time, YMRPlayerStateHub& ymrPlayer) {
  const double second = CMTimeGetSeconds(time);
  ymrPlayer.tell(&YMRVideoPlayerDelegate::videoAdOnTime, ymrPlayer.currentAdBreak(), ymrPlayer.adDuration(), second);
  if (!ymrPlayer.isCurrent(*this)) return;
  const int reported = ymrPlayer.currentQuartile();
  const auto event = quartileEventDue(second, ymrPlayer.adDuration(), reported);
  if (!event) return;
  ymrPlayer.setCurrentQuartile(reported + 1);  // first: the host may pause or end the ad when it hears of this one
  ymrPlayer.trackEvent(*event);
  ymrPlayer.tell(&YMRVideoPlayerDelegate::videoAdOnPlayQuartile, ymrPlayer.currentAdBreak(), reported,
                 ymrPlayer.adDuration());
}
