// Lists of segments: which there are, and that a live one is never the same twice.
#include <utility>

#include "platform/avfoundation/engine/MediaErrors.h"
#include "platform/avfoundation/process/FetchedSource.h"
#include "platform/avfoundation/process/ProcessEngine.h"

void ProcessEngine::looked(const PlaylistLook::Result& result) {
  look_.reset();
  if (result.finding == PlaylistLook::Finding::failed) {
    return fail(fetcher_->failure().value_or(readingError(source_.url)));
  }
  use(result);
  start();
}

void ProcessEngine::use(const PlaylistLook::Result& result) {
  if (source_.purpose == MediaPurpose::advertisement) return;
  isPlaylist_ = result.finding == PlaylistLook::Finding::playlist;
  if (result.finding != PlaylistLook::Finding::segments) return playlist_.reset();
  playlist_.emplace(NSURL::URLWithString(result.url).value_or(source_.url), result.text);
}

void ProcessEngine::startAnew() {
  if (!isPlaylist_ && !playlist_) return start();
  silence_.setWaiting(true, silenceLimit());  // however many processes it takes
  if (auto text = localPlaylist(source_)) playlist_.emplace(source_.url, std::move(*text));
  nextFetcher_ = fetch_ ? fetch_() : nullptr;
  auto bytes = nextFetcher_ ? nextFetcher_->makeReader() : nullptr;
  if (!bytes) return start();
  look_ = std::make_unique<PlaylistLook>(std::move(bytes), [this](const PlaylistLook::Result& result) {
    look_.reset();
    auto next = std::exchange(nextFetcher_, nullptr);
    const bool isThere =
        result.finding == PlaylistLook::Finding::playlist || result.finding == PlaylistLook::Finding::segments;
    if (isThere) {
      fetcher_ = std::move(next);
      use(result);
    }
    start();
  });
}
