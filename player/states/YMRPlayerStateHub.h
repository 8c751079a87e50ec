#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/coremedia/CMTime.h"

class NSObject;
class YMRAbstractPlayerState;
class YMRAd;

// What a player state reads of the player that it belongs to, and what it may make it do. The player implements it;
// tests put a table in its place. Main thread.
//
// A call that tells the host runs the host's code, which may do anything to the player. Whoever makes one asks
// isCurrent() before going on.
class YMRPlayerStateHub {
 public:
  virtual ~YMRPlayerStateHub() = default;

  // Whether `state` still decides: false once another state has taken its place or the presentation is gone.
  virtual bool isCurrent(const YMRAbstractPlayerState& state) const = 0;
  virtual void setPlayerState(std::shared_ptr<YMRAbstractPlayerState> state) = 0;

  // The programme. Times in seconds; NaN for what is not known, all of it without a player.
  virtual bool isVodPlayer(const NSObject* object) const = 0;
  virtual float vodPlayerRate() const = 0;
  virtual double programmeTime() const = 0;
  virtual double programmeDuration() const = 0;
  // Goes to exactly `time`.
  virtual void seekVodPlayer(const CMTime& time) = 0;

  // The ad, in the same way.
  virtual bool isAdPlayer(const NSObject* object) const = 0;
  virtual float adPlayerRate() const = 0;
  virtual double adTime() const = 0;
  virtual double adDuration() const = 0;
  virtual std::shared_ptr<YMRAd> currentAdBreak() const = 0;
  // Sends the ad's requests for one tracking event, 0 "start" to 8 "resume".
  virtual void trackEvent(std::uint32_t event) = 0;

  // Any item that reported something. false and NaN for an object that is none.
  virtual bool isPlaybackBufferEmpty(const NSObject* item) const = 0;
  virtual double itemTime(const NSObject* item) const = 0;
  virtual double itemDuration(const NSObject* item) const = 0;

  // What the player remembers for its states.
  virtual float currentVodPlayerRate() const = 0;  // the programme's rate when a state last saw it change
  virtual void setCurrentVodPlayerRate(float rate) = 0;
  virtual std::int64_t videoStartPosition() const = 0;  // seconds still to be skipped on the first start; 0 for none
  virtual void setVideoStartPosition(std::int64_t seconds) = 0;
  virtual int currentQuartile() const = 0;  // quartiles of the ad already reported
  virtual void setCurrentQuartile(int quartile) = 0;

  // Tells the host, when it listens. Times and durations in seconds.
  virtual void videoOnPlay() = 0;
  virtual void videoOnPlayDuration(double time, double duration) = 0;
  virtual void videoOnPause(double time) = 0;
  virtual void videoOnPauseDuration(double time, double duration) = 0;
  virtual void videoOnTime(double time) = 0;
  virtual void videoOnTimeDuration(double time, double duration) = 0;
  virtual void videoDidBuffer() = 0;
  virtual void videoOnBuffer() = 0;
  virtual void videoDidSeekTo(double time) = 0;
  virtual void videoAdOnTime(const std::shared_ptr<YMRAd>& ad, double duration, double second) = 0;
  virtual void videoAdOnPlayQuartile(const std::shared_ptr<YMRAd>& ad, int quartile, double duration) = 0;
  virtual void videoAdOnBuffer(const std::shared_ptr<YMRAd>& ad, double duration, double second) = 0;
  virtual void videoAdOnPause(const std::shared_ptr<YMRAd>& ad, double duration, double second) = 0;
  virtual void videoAdOnPlay(const std::shared_ptr<YMRAd>& ad, double duration, double second) = 0;
};
