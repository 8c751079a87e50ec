#include "ads/YMRNextFilm.h"

#include <cmath>
#include <exception>
#include <utility>

#include "ads/core/VASTSettings.h"
#include "platform/avfoundation/AVURLAsset.h"
#include "platform/foundation/ConnectionRate.h"
#include "platform/foundation/MainThread.h"

namespace {

// What a film may take to become ready: a process, a connection, a picture.
constexpr double leadSeconds = 3;

std::shared_ptr<AVURLAsset> filmOf(const YMRPreparedAd& ad, const VASTMacroValues& values) {
  const auto& rules = ad.rules();
  const AVURLAssetOptions options{.purpose = rules.opensAnyContainer() ? MediaPurpose::anyAdvertisement
                                                                       : MediaPurpose::advertisement};
  return std::make_shared<AVURLAsset>(rules.withMacros(*ad.mediaFile->url(), values), options);
}

}  // namespace

bool YMRNextFilm::isDue(const AVPlayerItem& playing, double second, const std::optional<VASTOffset>& skipOffset) {
  if (!VASTSettings::preparesNextFilm() || !playing.isPlaybackLikelyToKeepUp()) return false;
  const double duration = CMTimeGetSeconds(playing.duration());
  const bool isLong = std::isfinite(duration) && duration / 4 >= leadSeconds;
  if (!isLong || second >= duration * 3 / 4) return true;
  const auto untilSkip = skipOffset ? skipOffset->secondsLeft(second, duration) : std::nullopt;
  return untilSkip && static_cast<double>(*untilSkip) <= leadSeconds;
}

void YMRNextFilm::prepare(const YMRAdQueue& ads, const VASTMacroValues& values) {
  const auto kilobits = ConnectionRate::shared().kilobits();
  const auto next = ads.foresee();
  if (!next) return;
  prepare(*next, values);
  if (ready_) ready_->kilobits = kilobits;
}

void YMRNextFilm::prepare(const YMRPreparedAd& ad, VASTMacroValues values) {
  YMR_ASSERT_MAIN_THREAD();
  values.adPlayhead = std::nullopt;
  values.podSequence = ad.sequence;
  values.assetURI = ad.mediaFile->url()->absoluteString();
  ready_ = Ready{*ad.mediaFile->url(), ConnectionRate::shared().kilobits(), filmOf(ad, values)};
  try {
    ready_->film->loadValuesAsynchronouslyForKeys({"playable"}, nullptr);
  } catch (const std::exception&) {
    letGo();  // it is told when the ad has its turn
  }
}

YMRPreparedAd::Pick YMRNextFilm::pick(YMRTagProfile profile) const {
  if (!ready_) return nullptr;
  return [profile, kilobits = ready_->kilobits](const SKVASTMediaFilePicker::Files& files) {
    return SKVASTMediaFilePicker::pick(files, profile, kilobits);
  };
}

std::shared_ptr<AVURLAsset> YMRNextFilm::take(const YMRPreparedAd& ad, const VASTMacroValues& values) {
  const auto ready = std::exchange(ready_, std::nullopt);
  return ready && ready->url == *ad.mediaFile->url() ? ready->film : filmOf(ad, values);
}
