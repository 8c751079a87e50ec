#pragma once

#include <cmath>
#include <limits>
#include <string>

#include "platform/foundation/NSObject.h"
#include "player/states/YMRAbstractPlayerState.h"
#include "tests/player/RecordingHost.h"

// A player for states that is nothing but a table: what a state reads stands in members, what it does is written down
// as text, in order: "videoOnPause 12", "track 7", "seek 120", "-> PausedVideo".
class RecordingHub : public YMRPlayerStateHub {
 public:
  // An object that reports something; its item's readings, when it is an item.
  struct Reporter : NSObject {
    bool isBufferEmpty = false;
    double time = std::numeric_limits<double>::quiet_NaN();
    double duration = std::numeric_limits<double>::quiet_NaN();
  };

  const std::shared_ptr<Reporter> vodPlayer = std::make_shared<Reporter>();
  const std::shared_ptr<Reporter> adPlayer = std::make_shared<Reporter>();
  const std::shared_ptr<Reporter> item = std::make_shared<Reporter>();
  float vodRate = 0;
  float adRate = 0;
  double vodTime = 12;
  double vodDuration = 90;
  double adTimeNow = 3;
  double adDurationNow = 20;
  float recordedRate = 0;
  std::int64_t startPosition = 0;
  int quartile = 0;
  std::shared_ptr<YMRAbstractPlayerState> state;
  RecordingHost host;
  Lines& did = host.heard;

  template <typename State>
  void begin() {
    state = std::make_shared<State>();
    did.clear();
  }

  // An event, handed on as the player does it.
  void report(const std::string& keyPath, const std::shared_ptr<Reporter>& object) {
    const auto current = state;
    current->observeValueForKeyPath(keyPath, object, NSKeyValueChange{}, nullptr, *this);
  }
  void setVodRate(float rate) {
    vodRate = rate;
    report("rate", vodPlayer);
  }
  void setAdRate(float rate) {
    adRate = rate;
    report("rate", adPlayer);
  }

  bool isCurrent(const YMRAbstractPlayerState& asking) const override { return &asking == state.get(); }
  void setPlayerState(std::shared_ptr<YMRAbstractPlayerState> next) override {
    state = std::move(next);
    did.push_back("-> " + nameOf(*state));
  }
  bool isVodPlayer(const NSObject* object) const override { return object == vodPlayer.get(); }
  float vodPlayerRate() const override { return vodRate; }
  double programmeTime() const override { return vodTime; }
  double programmeDuration() const override { return vodDuration; }
  void seekVodPlayer(const CMTime& time) override {
    did.push_back("seek " + std::to_string(std::lround(CMTimeGetSeconds(time))));
  }
  bool isAdPlayer(const NSObject* object) const override { return object == adPlayer.get(); }
  float adPlayerRate() const override { return adRate; }
  double adTime() const override { return adTimeNow; }
  double adDuration() const override { return adDurationNow; }
  std::shared_ptr<YMRAd> currentAdBreak() const override { return nullptr; }
  void trackEvent(std::uint32_t event) override { did.push_back("track " + std::to_string(event)); }
  bool isPlaybackBufferEmpty(const NSObject* object) const override {
    return static_cast<const Reporter*>(object)->isBufferEmpty;
  }
  double itemTime(const NSObject* object) const override { return static_cast<const Reporter*>(object)->time; }
  double itemDuration(const NSObject* object) const override { return static_cast<const Reporter*>(object)->duration; }
  float currentVodPlayerRate() const override { return recordedRate; }
  void setCurrentVodPlayerRate(float rate) override { recordedRate = rate; }
  std::int64_t videoStartPosition() const override { return startPosition; }
  void setVideoStartPosition(std::int64_t seconds) override { startPosition = seconds; }
  int currentQuartile() const override { return quartile; }
  void setCurrentQuartile(int reported) override { quartile = reported; }

  std::shared_ptr<YMRVideoPlayerDelegate> delegate() const override { return host.delegate; }

  // "PausedVideo" for a YMRPlayerStatePausedVideo.
  static std::string nameOf(const YMRAbstractPlayerState& state);
};
