#pragma once

#include "player/states/YMRAbstractPlayerState.h"

// The programme is over. Its rate is still recorded, nothing is reported, and no event leads out of here.
class YMRPlayerStateCompletedVideo final : public YMRAbstractPlayerState {
 public:
  void log() override;
  void observeValueForKeyPath(const std::string& keyPath, const std::shared_ptr<NSObject>& object,
                              const NSKeyValueChange& change, void* context, YMRPlayerStateHub& ymrPlayer) override;
};
