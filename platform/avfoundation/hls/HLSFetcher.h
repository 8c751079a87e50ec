#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/Export.h"
#include "platform/avfoundation/bytes/ByteStore.h"
#include "platform/foundation/NSURL.h"

class FetchThread;

// Fetches what a playlist of segments names, for an engine that reads it as one row of records (SegmentRecord.h)
// somewhere, perhaps in another process. See HLSLoader for what it survives.
//
// open() on the main thread, the rest on any. Letting go of it ends the fetching.
class YMR_API HLSFetcher {
 public:
  // `url` is where the playlist came from, after redirects; http, https, or a file whose playlist names files beside
  // and below it. `text` is all of it. Holds at most `bytesLimit` of media. Pictures higher than `screenHeight` pixels
  // are not fetched when there is a choice; 0 for any. nil when the machine has no memory or no descriptors left.
  static std::unique_ptr<HLSFetcher> open(const NSURL& url, std::string text, std::size_t bytesLimit, int screenHeight);
  HLSFetcher(const HLSFetcher&) = delete;
  HLSFetcher& operator=(const HLSFetcher&) = delete;
  ~HLSFetcher();

  // Whether a text is a playlist of the kind that is read here.
  static bool isPlaylist(std::string_view text);

  ByteStoreDescriptors descriptors() const { return store_->descriptors(); }
  std::shared_ptr<MediaBytes> makeReader() const { return store_->makeReader(); }
  std::optional<NSError> failure() const { return store_->failure(); }

 private:
  HLSFetcher(const NSURL& url, std::string text, std::shared_ptr<ByteStore> store, int screenHeight);

  const std::shared_ptr<ByteStore> store_;
  const std::shared_ptr<FetchThread> thread_;
  const std::uint64_t number_;
};
