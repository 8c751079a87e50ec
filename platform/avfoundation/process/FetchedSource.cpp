#include "platform/avfoundation/process/FetchedSource.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <utility>

#include "platform/avfoundation/bytes/PipeBytes.h"
#include "platform/avfoundation/hls/HLSPlaylist.h"
#include "platform/avfoundation/process/PlaylistLook.h"
#include "platform/uikit/values/UIScreen.h"

namespace {

template <class Fetcher>
struct Fetched {
  std::shared_ptr<Fetcher> fetcher;
  std::shared_ptr<MediaBytes> reader;
};

// A reader that keeps its fetcher; null when there are no descriptors left.
template <class Fetcher>
std::shared_ptr<MediaBytes> keepingReader(std::shared_ptr<Fetcher> fetcher) {
  auto reader = fetcher->makeReader();
  if (!reader) return nullptr;
  const auto fetched = std::make_shared<Fetched<Fetcher>>(Fetched<Fetcher>{std::move(fetcher), std::move(reader)});
  return {fetched, fetched->reader.get()};
}

std::size_t bytesLimitOf(MediaPurpose purpose) {
  return isAdvertisement(purpose) ? ByteFetcher::adBytesLimit : ByteFetcher::programmeBytesLimit;
}

}  // namespace

std::shared_ptr<HLSFetcher> segmentFetcher(const NSURL& url, const std::string& text, MediaPurpose purpose) {
  const auto screenHeight = static_cast<int>(UIScreen::mainScreen().bounds().size.height);
  return HLSFetcher::open(url, text, bytesLimitOf(purpose), screenHeight);
}

std::optional<std::string> localPlaylist(const MediaSource& source) {
  std::error_code error;
  const bool isFile = source.url.isFileURL() && std::filesystem::is_regular_file(source.url.path(), error);
  if (!isFile || source.purpose != MediaPurpose::programme) return std::nullopt;
  std::ifstream file(source.url.path(), std::ios::binary);
  std::string text(PlaylistLook::lookLimit, ' ');
  const auto more = [&](std::size_t place) {
    file.read(text.data() + place, static_cast<std::streamsize>(text.size() - place));
    text.resize(place + static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
  };
  more(0);
  if (!HLSFetcher::isPlaylist(text)) return std::nullopt;
  const std::size_t begin = text.size();
  text.resize(HLSLimits::textBytesLimit + 1);
  more(begin);
  return text;
}

MediaSource withSegments(MediaSource source, std::shared_ptr<HLSFetcher> fetcher) {
  source.bytes = keepingReader(std::move(fetcher));
  source.areSegments = source.bytes != nullptr;
  return source;
}

std::shared_ptr<ByteFetcher> fetcherOf(const MediaSource& source) {
  if (!source.url.isHTTP() || source.bytes) return nullptr;
  return ByteFetcher::open(source.url, bytesLimitOf(source.purpose));
}

MediaSource withBytes(MediaSource source, std::shared_ptr<ByteFetcher> fetcher) {
  if (fetcher) {
    source.bytes = keepingReader(std::move(fetcher));
  } else if (source.url.isFileURL() && source.purpose == MediaPurpose::programme && !source.bytes) {
    source.bytes = PipeBytes::make(PipeBytes::open(source.url.path()), source.url.absoluteString());
  }
  return source;
}
