#include "tests/player/states/RecordingHub.h"

#include "player/states/YMRPlayerStateCompletedVideo.h"
#include "player/states/YMRPlayerStateLoadingAd.h"
#include "player/states/YMRPlayerStatePausedAd.h"
#include "player/states/YMRPlayerStatePausedVideo.h"
#include "player/states/YMRPlayerStatePlayingAd.h"
#include "player/states/YMRPlayerStatePlayingVideo.h"

std::string RecordingHub::nameOf(const YMRAbstractPlayerState& state) {
  if (dynamic_cast<const YMRPlayerStateCompletedVideo*>(&state)) return "CompletedVideo";
  if (dynamic_cast<const YMRPlayerStateLoadingAd*>(&state)) return "LoadingAd";
  if (dynamic_cast<const YMRPlayerStatePausedAd*>(&state)) return "PausedAd";
  if (dynamic_cast<const YMRPlayerStatePausedVideo*>(&state)) return "PausedVideo";
  if (dynamic_cast<const YMRPlayerStatePlayingAd*>(&state)) return "PlayingAd";
  if (dynamic_cast<const YMRPlayerStatePlayingVideo*>(&state)) return "PlayingVideo";
  return "?";
}
