#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Export.h"
#include "platform/avfoundation/AVAssetTrack.h"
#include "platform/avfoundation/AVMediaSelection.h"
#include "platform/avfoundation/engine/MediaEngine.h"
#include "platform/coremedia/CMTime.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSURL.h"

class EngineSession;

enum AVKeyValueStatus {
  AVKeyValueStatusUnknown = 0,  // nobody asked yet
  AVKeyValueStatusLoading = 1,
  AVKeyValueStatusLoaded = 2,
  AVKeyValueStatusFailed = 3,
};

struct AVURLAssetOptions {
  MediaPurpose purpose = MediaPurpose::programme;
};

// Media at a URL, and what is known of them. Always held by shared_ptr. Main thread.
//
// Loading decodes up to the picture at the start time, in the very pipeline that the asset's first item then plays:
// nothing is opened or downloaded twice, and the item plays at once; the first picture of an ad is then here already.
// An asset that failed to load stays failed, and so do its items.
//
// Kept from the platform: asynchronous loading by key (all keys load together), the legible selection group, tracks by
// media type. Left out: composition, export, the other characteristics. Keys to observe: none.
class YMR_API AVURLAsset : public NSObject {
 public:
  // With a nil URL it loads nothing and fails with NSURLErrorBadURL.
  explicit AVURLAsset(std::optional<NSURL> url, AVURLAssetOptions options = {});
  // Drops what is being loaded, unless an item has it.
  ~AVURLAsset() override;

  const std::optional<NSURL>& URL() const { return url_; }
  MediaPurpose purpose() const { return options_.purpose; }

  // Where playing is to begin: the pipeline is made ready there, so that its first picture is of that place. Clamped to
  // the media. Zero at first; to be set before an item plays, and best before anything is loaded: a pipeline that has
  // been made ready elsewhere goes there.
  const CMTime& startTime() const { return startTime_; }
  void setStartTime(const CMTime& time);

  // Begins to load, unless that is done, and calls `completion` exactly once when the keys ("playable", "tracks",
  // "duration", …) have loaded or failed, or the load was given up. Always on a later turn of the main queue. Loading
  // ends in bounded time; the completion may hold the asset.
  void loadValuesAsynchronouslyForKeys(const std::vector<std::string>& keys, std::function<void()> completion);
  // How far the key is; `error`, if given, gets the reason of a failure.
  AVKeyValueStatus statusOfValueForKey(std::string_view key, NSError* error = nullptr) const;

  // What follows is known once loaded, without waiting.

  // Invalid until known, indefinite for a live stream.
  CMTime duration() const { return duration_; }
  // In the media's order; empty until loaded.
  std::vector<AVAssetTrack> tracksWithMediaType(std::string_view mediaType) const;
  // The group for AVMediaCharacteristicLegible; nil when there is nothing to choose from, or for anything else. The
  // same object as long as the options are the same.
  std::shared_ptr<AVMediaSelectionGroup> mediaSelectionGroupForMediaCharacteristic(
      std::string_view characteristic) const;

  // The pipeline for an item that begins to play: the one that loading began, for the first who asks, else a new one.
  // Nil when the asset has failed. For AVPlayerItem.
  std::shared_ptr<EngineSession> takeSession();

 private:
  class Loading;
  std::shared_ptr<EngineSession> openSession();
  void loaded();
  void failed(const NSError& error);
  void givenUp();
  void learn();
  void completeWaiters();

  const std::optional<NSURL> url_;
  const AVURLAssetOptions options_;
  CMTime startTime_ = kCMTimeZero;
  AVKeyValueStatus status_ = AVKeyValueStatusUnknown;
  NSError error_;
  std::vector<std::function<void()>> waiters_;
  std::shared_ptr<Loading> loading_;
  std::shared_ptr<EngineSession> session_;   // loading or loaded, and not handed to an item yet
  std::weak_ptr<EngineSession> learnsFrom_;  // tells duration and tracks; perhaps an item's by now
  CMTime duration_;
  std::vector<MediaTrack> tracks_;
  std::shared_ptr<AVMediaSelectionGroup> legibleGroup_;
};
