#pragma once

#include "player/states/YMRAbstractPlayerState.h"

// The programme is paused, or has been handed back by an ad break and not yet started. A start at normal speed is
// reported and leads to YMRPlayerStatePlayingVideo; the first one also goes to the start position. Any other speed is
// scanning and counts as no start.
class YMRPlayerStatePausedVideo final : public YMRAbstractPlayerState {
 public:
  void log() override;
  void observeValueForKeyPath(const std::string& keyPath, const std::shared_ptr<NSObject>& object,
                              const NSKeyValueChange& change, void* context, YMRPlayerStateHub& ymrPlayer) override;
  void videoDidSeek(const NSNotification& notification, YMRPlayerStateHub& ymrPlayer) override;
};
