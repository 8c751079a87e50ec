#include "platform/avfoundation/AVPlayerItem.h"

#include <utility>

#include "platform/avfoundation/AVMediaFormat.h"
#include "platform/avfoundation/ItemPlayback.h"
#include "platform/dispatch/Weakly.h"
#include "platform/foundation/MainThread.h"

AVPlayerItem::AVPlayerItem(std::shared_ptr<AVURLAsset> asset) : asset_(std::move(asset)) {}

AVPlayerItem::~AVPlayerItem() = default;

std::shared_ptr<AVPlayerItem> AVPlayerItem::playerItemWithAsset(std::shared_ptr<AVURLAsset> asset) {
  YMR_ASSERT_MAIN_THREAD();
  if (!asset) asset = std::make_shared<AVURLAsset>(std::nullopt);
  const std::shared_ptr<AVPlayerItem> item(new AVPlayerItem(std::move(asset)));
  item->playback_ = std::make_shared<ItemPlayback>(item->asset_, item,
                                                   weakly(std::weak_ptr(item), &AVPlayerItem::didChangeValueForKey));
  return item;
}

std::shared_ptr<AVPlayerItem> AVPlayerItem::playerItemWithURL(std::optional<NSURL> url, AVURLAssetOptions options) {
  return playerItemWithAsset(std::make_shared<AVURLAsset>(std::move(url), options));
}

AVPlayerItemStatus AVPlayerItem::status() const {
  return playback_->status();
}
std::optional<NSError> AVPlayerItem::error() const {
  return playback_->error();
}
CMTime AVPlayerItem::currentTime() const {
  return playback_->currentTime();
}
// A loaded asset knows it before its item has become ready.
CMTime AVPlayerItem::duration() const {
  const CMTime own = playback_->duration();
  return CMTIME_IS_VALID(own) ? own : asset_->duration();
}
std::vector<CMTimeRange> AVPlayerItem::loadedTimeRanges() const {
  return playback_->loadedTimeRanges();
}
bool AVPlayerItem::isPlaybackBufferEmpty() const {
  return playback_->isBufferEmpty();
}
bool AVPlayerItem::isPlaybackLikelyToKeepUp() const {
  return playback_->isLikelyToKeepUp();
}
std::optional<MediaCaption> AVPlayerItem::currentCaption() const {
  return playback_->caption();
}

void AVPlayerItem::selectMediaOption(const std::shared_ptr<AVMediaSelectionOption>& option,
                                     const std::shared_ptr<AVMediaSelectionGroup>& group) {
  YMR_ASSERT_MAIN_THREAD();
  const auto legible = asset_->mediaSelectionGroupForMediaCharacteristic(AVMediaCharacteristicLegible);
  if (!group || group != legible) return;
  if (!option) return playback_->selectLegibleTrack(std::nullopt);
  if (group->optionWithIdentifier(option->identifier())) playback_->selectLegibleTrack(option->identifier());
}

std::shared_ptr<AVMediaSelectionOption> AVPlayerItem::selectedMediaOptionInMediaSelectionGroup(
    const std::shared_ptr<AVMediaSelectionGroup>& group) const {
  const auto& selected = playback_->legibleTrack();
  return group && selected ? group->optionWithIdentifier(*selected) : nullptr;
}

std::any AVPlayerItem::valueForKey(std::string_view key) const {
  if (key == "status") return status();
  if (key == "duration") return duration();
  if (key == "loadedTimeRanges") return loadedTimeRanges();
  if (key == "playbackBufferEmpty") return isPlaybackBufferEmpty();
  if (key == "playbackLikelyToKeepUp") return isPlaybackLikelyToKeepUp();
  if (key == "currentCaption") return currentCaption();
  return {};
}
