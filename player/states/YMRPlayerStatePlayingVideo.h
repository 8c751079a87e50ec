#pragma once

#include "player/states/YMRAbstractPlayerState.h"

// The programme plays. Its ticks, jumps, empty buffers and its pause are reported; the pause leads to
// YMRPlayerStatePausedVideo.
class YMRPlayerStatePlayingVideo final : public YMRAbstractPlayerState {
 public:
  void log() override;
  void observeValueForKeyPath(const std::string& keyPath, const std::shared_ptr<NSObject>& object,
                              const NSKeyValueChange& change, void* context, YMRPlayerStateHub& ymrPlayer) override;
  void vodPlayerPeriodicTimeObserver(const CMTime& time, YMRPlayerStateHub& ymrPlayer) override;
  void videoDidSeek(const NSNotification& notification, YMRPlayerStateHub& ymrPlayer) override;

 private:
  void bufferRanEmpty(YMRPlayerStateHub& ymrPlayer);
  void rateChanged(YMRPlayerStateHub& ymrPlayer);
};
