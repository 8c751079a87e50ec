#pragma once

#include "player/states/YMRAbstractPlayerState.h"

// An ad plays on the ad player. Its ticks, quartiles, empty buffers and its pause are reported; the pause is tracked
// before the host hears of it and leads to YMRPlayerStatePausedAd.
class YMRPlayerStatePlayingAd final : public YMRAbstractPlayerState {
 public:
  void log() override;
  void observeValueForKeyPath(const std::string& keyPath, const std::shared_ptr<NSObject>& object,
                              const NSKeyValueChange& change, void* context, YMRPlayerStateHub& ymrPlayer) override;
  void adPlayerPeriodicTimeObserver(const CMTime& time, YMRPlayerStateHub& ymrPlayer) override;
};
