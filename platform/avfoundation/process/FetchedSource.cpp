#include "platform/avfoundation/process/FetchedSource.h"

#include <utility>

#include "platform/avfoundation/bytes/PipeBytes.h"

namespace {

struct Fetched {
  std::shared_ptr<ByteFetcher> fetcher;
  std::shared_ptr<MediaBytes> reader;
};

}  // namespace

std::shared_ptr<ByteFetcher> fetcherOf(const MediaSource& source) {
  if (!source.url.isHTTP() || source.bytes) return nullptr;
  return ByteFetcher::open(source.url, source.purpose == MediaPurpose::programme ? ByteFetcher::programmeBytesLimit
                                                                                 : ByteFetcher::adBytesLimit);
}

MediaSource withBytes(MediaSource source, std::shared_ptr<ByteFetcher> fetcher) {
  if (fetcher) {
    auto reader = fetcher->makeReader();
    const auto fetched = std::make_shared<Fetched>(Fetched{std::move(fetcher), std::move(reader)});
    if (fetched->reader) source.bytes = std::shared_ptr<MediaBytes>(fetched, fetched->reader.get());
  } else if (source.url.isFileURL() && source.purpose == MediaPurpose::programme && !source.bytes) {
    source.bytes = PipeBytes::make(PipeBytes::open(source.url.path()), source.url.absoluteString());
  }
  return source;
}
