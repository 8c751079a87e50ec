#pragma once

#include "player/states/YMRAbstractPlayerState.h"

// An ad break is being fetched, or nothing has started yet. Every event is ignored.
class YMRPlayerStateLoadingAd final : public YMRAbstractPlayerState {
 public:
  void log() override;
  void observeValueForKeyPath(const std::string& keyPath, const std::shared_ptr<NSObject>& object,
                              const NSKeyValueChange& change, void* context, YMRPlayerStateHub& ymrPlayer) override;
};
