#include "player/YMRItemPreparation.h"

#include <utility>

#include "VAST/HostCall.h"
#include "VAST/SKLogger.h"
#include "platform/dispatch/Weakly.h"
#include "platform/foundation/URLLoader.h"
#include "player/states/YMRPlayerStateRules.h"

namespace {

using namespace std::chrono_literals;

constexpr auto artworkFetchLimit = 5s;  // for the fetch as a whole
constexpr auto artworkWaitLimit = 2s;   // once the programme itself could begin
constexpr std::size_t artworkBytesLimit = 8 << 20;

AVMetadataItem commonItem(const char* key, AVMetadataItem::Value value) {
  AVMutableMetadataItem item;
  item.setKeySpace(AVMetadataKeySpaceCommon);
  item.setLocale(NSLocale::currentLocale());
  item.setKey(key);
  item.setValue(std::move(value));
  return item;
}

// Why what came is no picture; nil when it is one.
std::optional<NSError> failureOf(const URLResponse& response) {
  if (response.error) return response.error;
  if (auto reason = response.reason(); !reason.empty()) {
    return NSError{NSURLErrorDomain, NSURLErrorBadServerResponse, std::move(reason)};
  }
  if (UIImage::imageWithData(response.body)) return std::nullopt;
  return NSError{NSURLErrorDomain, NSURLErrorCannotDecodeContentData, "This is no picture."};
}

std::vector<std::byte> pngOf(const UIImage& picture) {
  const auto png = UIImagePNGRepresentation(picture);
  const auto* bytes = reinterpret_cast<const std::byte*>(png.data());
  return {bytes, bytes + png.size()};
}

}  // namespace

std::shared_ptr<YMRItemPreparation> YMRItemPreparation::begin(std::shared_ptr<YMRMediaItem> mediaItem,
                                                              std::shared_ptr<AVURLAsset> asset,
                                                              Completion completion) {
  const std::shared_ptr<YMRItemPreparation> self(
      new YMRItemPreparation(std::move(mediaItem), std::move(asset), std::move(completion)));
  self->fetchArtwork();
  self->loadAsset();
  return self;
}

YMRItemPreparation::YMRItemPreparation(std::shared_ptr<YMRMediaItem> mediaItem, std::shared_ptr<AVURLAsset> asset,
                                       Completion completion)
    : mediaItem_(std::move(mediaItem)), asset_(std::move(asset)), completion_(std::move(completion)) {}

void YMRItemPreparation::loadAsset() {
  asset_->loadValuesAsynchronouslyForKeys({"playable"}, weakly(weak_from_this(), [](YMRItemPreparation& self) {
                                            self.isAssetLoaded_ = true;
                                            self.finishWhenComplete();
                                          }));
}

void YMRItemPreparation::fetchArtwork() {
  const std::string given = mediaItem_->videoThumbnailUrl().value_or("");
  if (mediaItem_->videoThumbnail() || given.empty()) return;
  isFetchingArtwork_ = true;
  artworkUrl_ = given;
  const auto url = NSURL::URLWithString(given);
  if (!url) {
    return dispatch_async(dispatch_get_main_queue(), weakly(weak_from_this(), [](YMRItemPreparation& self) {
                            self.artworkFailed({NSURLErrorDomain, NSURLErrorBadURL, "This is no URL."});
                          }));
  }
  URLRequest request{*url};
  request.silenceLimit = artworkFetchLimit;
  request.timeLimit = artworkFetchLimit;
  request.bytesLimit = artworkBytesLimit;
  request.allowsFiles = true;
  // Decoding, which tells a picture from anything else, stays off the main thread.
  URLLoader::shared()->load(
      std::move(request), dispatch_get_global_queue(), [weak = weak_from_this()](URLResponse response) {
        auto failure = failureOf(response);
        dispatch_async(dispatch_get_main_queue(),
                       [weak, failure = std::move(failure), body = std::move(response.body)]() mutable {
                         const auto self = weak.lock();
                         if (self) failure ? self->artworkFailed(*failure) : self->artworkCame(std::move(body));
                       });
      });
}

void YMRItemPreparation::artworkCame(std::vector<std::byte> artwork) {
  if (!isFetchingArtwork_) return;  // it is too late
  artwork_ = std::move(artwork);
  isFetchingArtwork_ = false;
  finishWhenComplete();
}

void YMRItemPreparation::artworkFailed(const NSError& error) {
  if (!isFetchingArtwork_) return;
  isFetchingArtwork_ = false;
  artworkWait_ = nullptr;
  dispatch_async(dispatch_get_main_queue(), weakly(weak_from_this(), &YMRItemPreparation::finishWhenComplete));
  SKLogger::warning(ymrPlayerTag, "No artwork from " + artworkUrl_ + ": " + error.message);
  const auto didFail = mediaItem_->videoThumbnailDidFail();
  if (didFail) callHost(ymrPlayerTag, [&] { didFail(artworkUrl_, error); });
}

void YMRItemPreparation::finishWhenComplete() {
  if (!isAssetLoaded_) return;
  if (!isFetchingArtwork_) {
    finish();
  } else if (!artworkWait_) {
    artworkWait_ = NSTimer::scheduledTimerWithTimeInterval(
        artworkWaitLimit, false, weakly(weak_from_this(), [](YMRItemPreparation& self) {
          self.artworkFailed({NSURLErrorDomain, NSURLErrorTimedOut, "It did not come in time."});
        }));
  }
}

void YMRItemPreparation::finish() {
  const auto completion = std::exchange(completion_, nullptr);
  if (!completion) return;
  artworkWait_ = nullptr;
  auto item = AVPlayerItem::playerItemWithAsset(asset_);
  if (auto items = metadata(); !items.empty()) item->setExternalMetadata(std::move(items));
  completion(std::move(item));
}

std::vector<AVMetadataItem> YMRItemPreparation::metadata() const {
  std::vector<AVMetadataItem> items;
  if (const auto& title = mediaItem_->videoTitle()) items.push_back(commonItem(AVMetadataCommonKeyTitle, *title));
  if (const auto& text = mediaItem_->videoDescription()) {
    items.push_back(commonItem(AVMetadataCommonKeyDescription, *text));
  }
  if (const auto& picture = mediaItem_->videoThumbnail()) {
    items.push_back(commonItem(AVMetadataCommonKeyArtwork, pngOf(*picture)));
  } else if (!artwork_.empty()) {
    items.push_back(commonItem(AVMetadataCommonKeyArtwork, artwork_));
  }
  return items;
}
