// The presentation's course around its ad breaks.
#include "VAST/SKLogger.h"
#include "player/YMRVideoPlayerImpl.h"
#include "player/states/YMRPlayerStatePausedVideo.h"
#include "player/states/YMRPlayerStateRules.h"

void YMRVideoPlayerImpl::setAdSchedule(const std::shared_ptr<YMRAdSchedule>& schedule) {
  if (!schedule) {
    adSchedule_ = nullptr;
    adState_ = YMRAdStateNone;
    return;
  }
  adSchedule_ = schedule->copy();
  const auto forget = [](const YMRAdSchedule::Breaks& breaks) {
    for (const auto& each : breaks) each->setIsPlayed(false);
  };
  forget(*adSchedule_->preRolls());
  for (const auto& group : *adSchedule_->midRolls()) forget(group);
  forget(*adSchedule_->postRolls());
}

void YMRVideoPlayerImpl::startPreRoll() {
  lastPlayTime_ = kCMTimeZero;
  resumeVideoPlayer(true);
  startMidRoll();
}

void YMRVideoPlayerImpl::startMidRoll() {
  adState_ = YMRAdStatePostRoll;
  currentAdBreak_ = nullptr;
}

void YMRVideoPlayerImpl::startPostRoll() {
  end();
}

void YMRVideoPlayerImpl::resumeVideoPlayer(bool seek) {
  SKLogger::debug(ymrPlayerTag, std::string("resumeVideoPlayer - ") + (seek ? "1" : "0"));
  if (vodPlayer_ && seek) vodPlayer_->seekToTime(lastPlayTime_, kCMTimeZero, kCMTimeZero);
  playerState_ = std::make_shared<YMRPlayerStatePausedVideo>();
  if (!vodPlayer_) return;
  // A host that starts the programme from inside a report of its pause comes here before that pause was recorded.
  currentVodPlayerRate_ = vodPlayer_->rate();
  vodPlayer_->setMuted(false);
  vodPlayer_->play();
}
