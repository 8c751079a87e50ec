#include "player/states/YMRPlayerStatePausedAd.h"

#include <cstdint>

#include "player/states/YMRPlayerStatePlayingAd.h"

namespace {
constexpr std::uint32_t resumeEvent = 8;
}

void YMRPlayerStatePausedAd::log() {}

void YMRPlayerStatePausedAd::observeValueForKeyPath(const std::string& keyPath, const std::shared_ptr<NSObject>& object,
                                                    const NSKeyValueChange&, void*, YMRPlayerStateHub& ymrPlayer) {
  if (keyPath != "rate" || !ymrPlayer.isAdPlayer(object.get()) || ymrPlayer.adPlayerRate() == 0.0f) return;
  ymrPlayer.trackEvent(resumeEvent);
  ymrPlayer.tell(&YMRVideoPlayerDelegate::videoAdOnPlay, ymrPlayer.currentAdBreak(), ymrPlayer.adDuration(),
                 ymrPlayer.adTime());
  if (!ymrPlayer.isCurrent(*this)) return;
  ymrPlayer.setPlayerState(std::make_shared<YMRPlayerStatePlayingAd>());
}
