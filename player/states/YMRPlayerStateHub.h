#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <type_traits>

#include "VAST/HostCall.h"
#include "platform/coremedia/CMTime.h"
#include "player/states/YMRVideoPlayerDelegate.h"

class NSObject;
class YMRAbstractPlayerState;

// The tag of the player's log lines.
inline constexpr const char* ymrPlayerTag = "YMRVideoPlayer";

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

  // The host's, held weakly by the player; nil for none.
  virtual std::shared_ptr<YMRVideoPlayerDelegate> delegate() const = 0;
  // Makes one callback of the host's, when it listens. Times and durations in seconds.
  template <typename... Parameters>
  void tell(std::function<void(Parameters...)> YMRVideoPlayerDelegate::*callback,
            const std::type_identity_t<Parameters>&... arguments) {
    callDelegate(ymrPlayerTag, std::weak_ptr(delegate()), callback, arguments...);
  }
};
