#pragma once

#include "player/states/YMRAbstractPlayerState.h"

// The ad player is paused. Its going on is tracked, reported and leads to YMRPlayerStatePlayingAd.
class YMRPlayerStatePausedAd final : public YMRAbstractPlayerState {
 public:
  void log() override;
  void observeValueForKeyPath(const std::string& keyPath, const std::shared_ptr<NSObject>& object,
                              const NSKeyValueChange& change, void* context, YMRPlayerStateHub& ymrPlayer) override;
};
