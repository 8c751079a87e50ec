#include "subtitles/ASBPlayerScrubbing.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <utility>

#include "VAST/SKLogger.h"
#include "platform/avfoundation/AVMediaFormat.h"
#include "platform/dispatch/Weakly.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSString.h"
#include "platform/uikit/UILabel.h"

namespace {

constexpr const char* durationKey = "duration";
constexpr std::int32_t nanoseconds = 1000000000;

bool isDefinite(const CMTime& duration) {
  return CMTIME_IS_VALID(duration) && !CMTIME_IS_INDEFINITE(duration);
}

// Cut off; what is not finite is 0, and nothing is beyond 10^12.
std::int64_t wholeNumber(double value) {
  return std::isfinite(value) ? static_cast<std::int64_t>(std::clamp(value, -1e12, 1e12)) : 0;
}

}  // namespace

ASBPlayerScrubbingDelegate::~ASBPlayerScrubbingDelegate() = default;

ASBPlayerScrubbing::ASBPlayerScrubbing() {
  setup();
}

ASBPlayerScrubbing::~ASBPlayerScrubbing() {
  const auto item = player_ ? player_->currentItem() : nullptr;
  if (!item || !CMTIME_IS_INDEFINITE(item->duration())) return;
  try {
    item->removeObserver(this, durationKey);
  } catch (...) {  // another item than the one that was observed
  }
}

void ASBPlayerScrubbing::setFlag(bool& flag, bool value) {
  if (std::exchange(flag, value) != value) playerTimeChanged();
}

void ASBPlayerScrubbing::setShowTimeHours(bool shows) {
  setFlag(showTimeHours_, shows);
}

void ASBPlayerScrubbing::setShowTimeFrames(bool shows) {
  setFlag(showTimeFrames_, shows);
}

void ASBPlayerScrubbing::setShowMinusSignOnRemainingTime(bool shows) {
  setFlag(showMinusSignOnRemainingTime_, shows);
}

double ASBPlayerScrubbing::nominalFrameRateForPlayer(const std::shared_ptr<AVPlayer>& player) {
  const auto item = player ? player->currentItem() : nullptr;
  if (!item) return 0;
  const auto tracks = item->asset()->tracksWithMediaType(AVMediaTypeVideo);
  return tracks.empty() ? 0 : tracks.front().nominalFrameRate;
}

void ASBPlayerScrubbing::setPlayer(const std::shared_ptr<AVPlayer>& player) {
  YMR_ASSERT_MAIN_THREAD();
  const auto alive = weak_from_this().lock();
  const auto next = player;  // a copy, since `player` may be player_ itself, which is set below
  if (const auto previous = player_) {
    previous->pause();
    if (player_ != previous) return;
    removeTimeObserver();
  }
  player_ = next;
  learnFrameRate();
  setupTimeObserver();
  updateCurrentTimeLabelWithTime(0);
  const auto item = player_ ? player_->currentItem() : nullptr;
  if (item) item->addObserver(alive, durationKey, NSKeyValueObservingOptionNew);
}

void ASBPlayerScrubbing::learnFrameRate() {
  nbFramesPerSecond_ = nominalFrameRateForPlayer(player_);
  frameDuration_ = nbFramesPerSecond_ != 0 ? 1 / nbFramesPerSecond_ : std::numeric_limits<double>::infinity();
}

void ASBPlayerScrubbing::setupTimeObserver() {
  if (!timeObserver_.expired() || !(nbFramesPerSecond_ > 0) || !player_) return;
  // A tick that finds the scrubbing destroyed takes its own observer off the player.
  const auto own = std::make_shared<std::weak_ptr<AVPlayerPeriodicObserver>>();
  const auto tick = [weak = weak_from_this(), player = std::weak_ptr(player_), own](CMTime) {
    if (const auto self = weak.lock()) {
      self->playerTimeChanged();
    } else if (const auto observed = player.lock()) {
      observed->removeTimeObserver(own->lock());
    }
  };
  const CMTime interval = CMTimeMakeWithSeconds(1 / nbFramesPerSecond_, nanoseconds);
  timeObserver_ = *own = player_->addPeriodicTimeObserver(interval, nullptr, tick);
}

void ASBPlayerScrubbing::removeTimeObserver() {
  const auto observer = std::exchange(timeObserver_, {}).lock();
  if (observer && player_) player_->removeTimeObserver(observer);
}

void ASBPlayerScrubbing::observeValueForKeyPath(const std::string& keyPath, const std::shared_ptr<NSObject>& object,
                                                const NSKeyValueChange&, void*) {
  const auto item = std::dynamic_pointer_cast<AVPlayerItem>(object);
  if (keyPath != durationKey || !item) return;
  // The tracks of an asset that had not loaded are known by now.
  if (nbFramesPerSecond_ == 0 && nominalFrameRateForPlayer(player_) > 0) {
    learnFrameRate();
    setupTimeObserver();
  }
  if (!isDefinite(item->duration())) return;
  item->removeObserver(this, keyPath);
  playerTimeChanged();
}

void ASBPlayerScrubbing::playerTimeChanged() {
  YMR_ASSERT_MAIN_THREAD();
  const auto item = player_ ? player_->currentItem() : nullptr;
  if (!item) return;
  const auto delegate = delegate_.lock();
  const bool isLabelled = !durationLabel_.expired() || !currentTimeLabel_.expired() || !remainingTimeLabel_.expired();
  if (!isLabelled && !delegate) return;
  const double time = CMTimeGetSeconds(item->currentTime());
  double whole = 0;
  if (const CMTime duration = item->duration(); isDefinite(duration)) {
    whole = CMTimeGetSeconds(duration);
    if (whole != 0) updateDurationLabelWithTime(whole);
  }
  updateCurrentTimeLabelWithTime(time);
  updateRemainingTimeLabelWithTime(whole - time);
  if (!delegate) return;
  try {
    delegate->playerScrubbingDidUpdateTime(weak_from_this().lock());
  } catch (const std::exception& thrown) {
    SKLogger::error("ASBPlayerScrubbing", std::string("A callback of the host's threw: ") + thrown.what());
  } catch (...) {
    SKLogger::error("ASBPlayerScrubbing", "A callback of the host's threw");
  }
}

void ASBPlayerScrubbing::updateDurationLabelWithTime(double seconds) {
  if (const auto label = durationLabel_.lock()) label->setText(timecodeForTimeInterval(seconds));
}

void ASBPlayerScrubbing::updateCurrentTimeLabelWithTime(double seconds) {
  if (const auto label = currentTimeLabel_.lock()) label->setText(timecodeForTimeInterval(seconds));
}

void ASBPlayerScrubbing::updateRemainingTimeLabelWithTime(double seconds) {
  if (const auto label = remainingTimeLabel_.lock()) label->setText(timecodeForTimeInterval(-seconds));
}

std::string ASBPlayerScrubbing::timecodeForTimeInterval(double seconds) const {
  if (!std::isfinite(seconds)) seconds = 0;
  const std::string prefix = seconds < 0 && showMinusSignOnRemainingTime_ ? "\u2212" : "";
  const double time = std::min(std::abs(seconds), 1e12);
  const std::int64_t hours = wholeNumber(time / 60 / 24);
  const double rest = time - static_cast<double>(hours) * 24;
  const std::int64_t minutes = wholeNumber(rest / 60);
  const std::int64_t second = wholeNumber(rest - static_cast<double>(minutes) * 60);
  const std::int64_t frames = showTimeFrames_ ? wholeNumber((time - std::trunc(time)) * nbFramesPerSecond_) : 0;
  const bool showsHours = hours > 0 || showTimeHours_;
  if (showsHours && showTimeFrames_) {
    return prefix + stringWithFormat("%d:%02d:%02d:%02d", {hours, minutes, second, frames});
  }
  if (showsHours) return prefix + stringWithFormat("%d:%02d:%02d", {hours, minutes, second});
  if (showTimeFrames_) return prefix + stringWithFormat("%02d:%02d:%02d", {minutes, second, frames});
  return prefix + stringWithFormat("%02d:%02d", {minutes, second});
}

void ASBPlayerScrubbing::playPause(const UIView*) {
  YMR_ASSERT_MAIN_THREAD();
  const auto player = player_;
  if (!player) return;
  if (player->rate() != 0) return player->pause();
  const auto item = player->currentItem();
  if (!item || CMTimeCompare(player->currentTime(), item->duration()) != 0) return player->play();
  player->seekToTime(kCMTimeZero,
                     weakly(weak_from_this(), [from = std::weak_ptr(player)](const ASBPlayerScrubbing& self) {
                       const auto sought = from.lock();
                       if (sought && self.player_ == sought) sought->play();
                     }));
}

void ASBPlayerScrubbing::sliderValueChanged(const UISlider*, const UIEvent& event) {
  YMR_ASSERT_MAIN_THREAD();
  const auto alive = weak_from_this().lock();
  const auto& touches = event.allTouches();
  const bool began = !touches.empty() && touches.front().phase() == UITouchPhaseBegan;
  const bool ended = !touches.empty() && touches.front().phase() == UITouchPhaseEnded;
  if (began) {
    const auto player = player_;
    playAfterDrag_ = player && player->rate() > 0;
    if (player) player->pause();
  }
  updatePlayer(ended);
}

void ASBPlayerScrubbing::updatePlayer(bool) {}
