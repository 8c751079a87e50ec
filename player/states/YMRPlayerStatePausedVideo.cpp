#include "player/states/YMRPlayerStatePausedVideo.h"

#include "VAST/SKLogger.h"
#include "player/states/YMRPlayerStatePlayingVideo.h"
#include "player/states/YMRPlayerStateRules.h"

void YMRPlayerStatePausedVideo::log() {}

void YMRPlayerStatePausedVideo::observeValueForKeyPath(const std::string& keyPath,
                                                       const std::shared_ptr<NSObject>& object, const NSKeyValueChange&,
                                                       void*, YMRPlayerStateHub& ymrPlayer) {
  if (keyPath != "rate" || !ymrPlayer.isVodPlayer(object.get())) return;
  const float rate = ymrPlayer.vodPlayerRate();
  if (programmeDidStart(rate, ymrPlayer.currentVodPlayerRate())) {
    SKLogger::debug(ymrPlayerTag, "Video onPlay");
    ymrPlayer.tell(&YMRVideoPlayerDelegate::videoOnPlay);
    if (!ymrPlayer.isCurrent(*this)) return;
    ymrPlayer.tell(&YMRVideoPlayerDelegate::videoOnPlayDuration, ymrPlayer.programmeTime(),
                   ymrPlayer.programmeDuration());
    if (!ymrPlayer.isCurrent(*this)) return;
    ymrPlayer.setPlayerState(std::make_shared<YMRPlayerStatePlayingVideo>());
    if (const auto start = ymrPlayer.videoStartPosition(); start != 0) {
      ymrPlayer.seekVodPlayer(CMTimeMakeWithSeconds(static_cast<double>(start), 1'000'000'000));
      ymrPlayer.setVideoStartPosition(0);
    }
  }
  ymrPlayer.setCurrentVodPlayerRate(rate);  // what was reported; the host may have changed it again
}

void YMRPlayerStatePausedVideo::videoDidSeek(const NSNotification& notification, YMRPlayerStateHub& ymrPlayer) {
  reportProgrammeJump(notification, ymrPlayer);
}
