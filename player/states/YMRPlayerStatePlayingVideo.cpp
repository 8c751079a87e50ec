#include "player/states/YMRPlayerStatePlayingVideo.h"

#include "VAST/SKLogger.h"
#include "player/states/YMRPlayerStatePausedVideo.h"
#include "player/states/YMRPlayerStateRules.h"

void YMRPlayerStatePlayingVideo::log() {}

void YMRPlayerStatePlayingVideo::observeValueForKeyPath(const std::string& keyPath,
                                                        const std::shared_ptr<NSObject>& object,
                                                        const NSKeyValueChange&, void*, YMRPlayerStateHub& ymrPlayer) {
  if (keyPath == "playbackBufferEmpty") {
    if (ymrPlayer.isPlaybackBufferEmpty(object.get())) bufferRanEmpty(ymrPlayer);
  } else if (keyPath == "rate" && ymrPlayer.isVodPlayer(object.get())) {
    rateChanged(ymrPlayer);
  }
}

void YMRPlayerStatePlayingVideo::bufferRanEmpty(YMRPlayerStateHub& ymrPlayer) {
  SKLogger::debug(ymrPlayerTag, "Video ad onBuffer");
  ymrPlayer.tell(&YMRVideoPlayerDelegate::videoDidBuffer);
  if (!ymrPlayer.isCurrent(*this)) return;
  ymrPlayer.tell(&YMRVideoPlayerDelegate::videoOnBuffer);
}

void YMRPlayerStatePlayingVideo::rateChanged(YMRPlayerStateHub& ymrPlayer) {
  const float rate = ymrPlayer.vodPlayerRate();
  if (programmeDidStop(rate, ymrPlayer.currentVodPlayerRate())) {
    SKLogger::debug(ymrPlayerTag, "Video onPaused");
    ymrPlayer.tell(&YMRVideoPlayerDelegate::videoOnPause, ymrPlayer.programmeTime());
    if (!ymrPlayer.isCurrent(*this)) return;
    ymrPlayer.tell(&YMRVideoPlayerDelegate::videoOnPauseDuration, ymrPlayer.programmeTime(),
                   ymrPlayer.programmeDuration());
    if (!ymrPlayer.isCurrent(*this)) return;
    ymrPlayer.setPlayerState(std::make_shared<YMRPlayerStatePausedVideo>());
  }
  ymrPlayer.setCurrentVodPlayerRate(rate);  // what was reported; the host may have changed it again
}

void YMRPlayerStatePlayingVideo::vodPlayerPeriodicTimeObserver(const CMTime& time, YMRPlayerStateHub& ymrPlayer) {
  ymrPlayer.tell(&YMRVideoPlayerDelegate::videoOnTime, CMTimeGetSeconds(time));
  if (!ymrPlayer.isCurrent(*this)) return;
  ymrPlayer.tell(&YMRVideoPlayerDelegate::videoOnTimeDuration, CMTimeGetSeconds(time), ymrPlayer.programmeDuration());
}

void YMRPlayerStatePlayingVideo::videoDidSeek(const NSNotification& notification, YMRPlayerStateHub& ymrPlayer) {
  reportProgrammeJump(notification, ymrPlayer);
}
