#pragma once

#include <any>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Export.h"
#include "platform/avfoundation/AVMediaSelection.h"
#include "platform/avfoundation/AVMetadataItem.h"
#include "platform/avfoundation/AVURLAsset.h"
#include "platform/avfoundation/engine/MediaCaption.h"
#include "platform/coremedia/CMTime.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/NSObject.h"

class ItemPlayback;

enum AVPlayerItemStatus {
  AVPlayerItemStatusUnknown = 0,
  AVPlayerItemStatusReadyToPlay = 1,
  AVPlayerItemStatusFailed = 2,
};

// The item has played to its end. Posted by the item, after the player's rate was set as the end action says.
inline constexpr const char* AVPlayerItemDidPlayToEndTimeNotification = "AVPlayerItemDidPlayToEndTimeNotification";
// The item's time has jumped: posted by the item once for each seek that was carried out, and when media that can't go
// elsewhere had to be begun again; never for a seek that a later one replaced, nor for plain playing.
inline constexpr const char* AVPlayerItemTimeJumpedNotification = "AVPlayerItemTimeJumpedNotification";

// The playing of an asset: its state, time and choices. Always held by shared_ptr. Main thread, except currentTime().
//
// An item begins to load when a player takes it, and plays in that player only: one item, one player, once. When the
// player lets go of it, it says nothing more and keeps what it last knew.
//
// Keys to observe: "status", "duration", "loadedTimeRanges", "playbackBufferEmpty", "playbackLikelyToKeepUp",
// "currentCaption". All notify from a turn of the main queue of their own, never from inside a call, and only when the
// value has changed. A failure (status 2) is the last thing that an item says.
//
// Kept from the platform: the keys, the two notifications, selection, external metadata, interstitial time ranges
// (as plain ranges). Left out: seeking by the item,
// access logs, outputs, stepping, end times.
class YMR_API AVPlayerItem : public NSObject {
 public:
  static std::shared_ptr<AVPlayerItem> playerItemWithAsset(std::shared_ptr<AVURLAsset> asset);
  // An item of a new asset. A nil URL gives an item that fails with NSURLErrorBadURL.
  static std::shared_ptr<AVPlayerItem> playerItemWithURL(std::optional<NSURL> url, AVURLAssetOptions options = {});
  ~AVPlayerItem() override;

  const std::shared_ptr<AVURLAsset>& asset() const { return asset_; }

  // Unknown until a turn of the main queue after a player took the item, even when the asset has loaded or failed.
  AVPlayerItemStatus status() const;
  // Why it failed; nil unless it did.
  std::optional<NSError> error() const;

  // The media time of what is on screen; the target while a seek is under way; the asset's start time before anything
  // is known. Any thread: off the main thread it is the time of the latest tick, jump or change of rate.
  CMTime currentTime() const;
  // Invalid until known, indefinite for a live stream.
  CMTime duration() const;
  // What can be played without waiting, the range that holds the current time first.
  std::vector<CMTimeRange> loadedTimeRanges() const;
  // Playing waits for data.
  bool isPlaybackBufferEmpty() const;
  // Playing would go on without waiting. False until ready.
  bool isPlaybackLikelyToKeepUp() const;

  // For the information panel. Not used here.
  const std::vector<AVMetadataItem>& externalMetadata() const { return externalMetadata_; }
  void setExternalMetadata(std::vector<AVMetadataItem> metadata) { externalMetadata_ = std::move(metadata); }
  // Where something else than the programme is shown, ascending; for the transport bar. Not used here.
  const std::vector<CMTimeRange>& interstitialTimeRanges() const { return interstitialTimeRanges_; }
  void setInterstitialTimeRanges(std::vector<CMTimeRange> ranges) { interstitialTimeRanges_ = std::move(ranges); }

  // Selects the option, or none (nil), of one of the asset's groups. An option that is not in the asset's legible group
  // is ignored. Nothing is selected at first.
  void selectMediaOption(const std::shared_ptr<AVMediaSelectionOption>& option,
                         const std::shared_ptr<AVMediaSelectionGroup>& group);
  std::shared_ptr<AVMediaSelectionOption> selectedMediaOptionInMediaSelectionGroup(
      const std::shared_ptr<AVMediaSelectionGroup>& group) const;
  // The text of the selected legible option that is due now; nil when there is none.
  std::optional<MediaCaption> currentCaption() const;

  // The engine's side. For AVPlayer.
  const std::shared_ptr<ItemPlayback>& playback() const { return playback_; }

 protected:
  std::any valueForKey(std::string_view key) const override;

 private:
  explicit AVPlayerItem(std::shared_ptr<AVURLAsset> asset);

  const std::shared_ptr<AVURLAsset> asset_;
  std::shared_ptr<ItemPlayback> playback_;
  std::vector<AVMetadataItem> externalMetadata_;
  std::vector<CMTimeRange> interstitialTimeRanges_;
};
