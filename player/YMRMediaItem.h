#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/Export.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/NSURL.h"
#include "platform/uikit/UIImage.h"

// A programme: where its stream is, and what the viewer is told of it. Only the address is needed; everything else
// starts as nil and is then not shown. Held by shared_ptr; main thread. Read when the player is asked to play it.
class YMRMediaItem {
 public:
  YMRMediaItem() = default;
  // An address of nil, or one that can't be played, is reported through videoOnError.
  YMR_API static std::shared_ptr<YMRMediaItem> itemWithUrl(std::optional<NSURL> mediaUrl);

  const std::optional<NSURL>& mediaUrl() const { return mediaUrl_; }
  void setMediaUrl(std::optional<NSURL> url) { mediaUrl_ = std::move(url); }

  // Shown in the player's information panel.
  const std::optional<std::string>& videoTitle() const { return videoTitle_; }
  void setVideoTitle(std::optional<std::string> title) { videoTitle_ = std::move(title); }
  const std::optional<std::string>& videoDescription() const { return videoDescription_; }
  void setVideoDescription(std::optional<std::string> description) { videoDescription_ = std::move(description); }

  // Artwork, and the address (http, https or file) from which it is fetched when there is no picture at hand. A picture
  // that does not come within a few seconds, or is none, is left out; videoThumbnailDidFail() tells.
  const std::optional<UIImage>& videoThumbnail() const { return videoThumbnail_; }
  void setVideoThumbnail(std::optional<UIImage> picture) { videoThumbnail_ = std::move(picture); }
  const std::optional<std::string>& videoThumbnailUrl() const { return videoThumbnailUrl_; }
  void setVideoThumbnailUrl(std::optional<std::string> url) { videoThumbnailUrl_ = std::move(url); }

  // Called on the main thread, once, when the picture of that address can't be shown, with why: on a turn of its own,
  // and not when another programme was asked for meanwhile or the player dismissed. The programme plays without it.
  // Empty, as it starts: nobody is told.
  using ThumbnailFailure = std::function<void(const std::string& url, const NSError& error)>;
  const ThumbnailFailure& videoThumbnailDidFail() const { return videoThumbnailDidFail_; }
  void setVideoThumbnailDidFail(ThumbnailFailure didFail) { videoThumbnailDidFail_ = std::move(didFail); }

 private:
  std::optional<NSURL> mediaUrl_;
  std::optional<std::string> videoTitle_;
  std::optional<std::string> videoDescription_;
  std::optional<UIImage> videoThumbnail_;
  std::optional<std::string> videoThumbnailUrl_;
  ThumbnailFailure videoThumbnailDidFail_;
};
