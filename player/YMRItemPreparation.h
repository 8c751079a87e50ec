#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/avfoundation/AVPlayerItem.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/NSTimer.h"
#include "player/YMRMediaItem.h"

// The way from a media item to a player item: the asset is loaded and remote artwork fetched side by side, and the
// player item gets its metadata before anybody else sees it. Main thread.
//
// Artwork never holds a programme up for long: what has not come two seconds after the asset has is left out, which the
// media item's videoThumbnailDidFail() is told. A failed asset makes an item all the same, which then fails by itself.
class YMRItemPreparation : public std::enable_shared_from_this<YMRItemPreparation> {
 public:
  using Completion = std::function<void(std::shared_ptr<AVPlayerItem>)>;

  // Calls `completion` once, on a later turn of the main queue, unless the preparation is let go of before. Neither
  // `mediaItem` nor `asset` may be nil.
  static std::shared_ptr<YMRItemPreparation> begin(std::shared_ptr<YMRMediaItem> mediaItem,
                                                   std::shared_ptr<AVURLAsset> asset, Completion completion);
  YMRItemPreparation(const YMRItemPreparation&) = delete;
  YMRItemPreparation& operator=(const YMRItemPreparation&) = delete;

 private:
  YMRItemPreparation(std::shared_ptr<YMRMediaItem> mediaItem, std::shared_ptr<AVURLAsset> asset, Completion completion);
  void loadAsset();
  void fetchArtwork();
  void artworkCame(std::vector<std::byte> artwork);
  // Goes on without. The host, which is told, may let go of the preparation.
  void artworkFailed(const NSError& error);
  void finishWhenComplete();
  void finish();
  std::vector<AVMetadataItem> metadata() const;

  const std::shared_ptr<YMRMediaItem> mediaItem_;
  const std::shared_ptr<AVURLAsset> asset_;
  Completion completion_;
  bool isAssetLoaded_ = false;
  bool isFetchingArtwork_ = false;
  std::string artworkUrl_;          // as it was given, when the fetch began
  std::vector<std::byte> artwork_;  // fetched; empty without
  std::shared_ptr<NSTimer> artworkWait_;
};
