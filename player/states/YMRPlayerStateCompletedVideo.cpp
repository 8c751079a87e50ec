#include "player/states/YMRPlayerStateCompletedVideo.h"

void YMRPlayerStateCompletedVideo::log() {}

void YMRPlayerStateCompletedVideo::observeValueForKeyPath(const std::string& keyPath,
                                                          const std::shared_ptr<NSObject>& object,
                                                          const NSKeyValueChange&, void*,
                                                          YMRPlayerStateHub& ymrPlayer) {
  if (keyPath == "rate" && ymrPlayer.isVodPlayer(object.get())) {
    ymrPlayer.setCurrentVodPlayerRate(ymrPlayer.vodPlayerRate());
  }
}
