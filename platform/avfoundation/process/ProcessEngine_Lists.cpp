// Lists of segments: who plays one has to reach the network, and a live one is never the same twice.
#include <utility>

#include "platform/avfoundation/engine/MediaErrors.h"
#include "platform/avfoundation/process/ProcessEngine.h"

namespace {

// Segments of a live list that are needed and don't come for so long won't.
constexpr RunLoop::Duration segmentsLimit = std::chrono::seconds(6);

}  // namespace

void ProcessEngine::looked(PlaylistLook::Finding finding) {
  look_.reset();
  if (finding == PlaylistLook::Finding::failed) return fail(fetcher_->failure().value_or(readingError(source_.url)));
  isPlaylist_ = finding == PlaylistLook::Finding::playlist && source_.purpose != MediaPurpose::advertisement;
  start();
}

void ProcessEngine::openListAnew() {
  nextFetcher_ = fetch_();
  auto bytes = nextFetcher_ ? nextFetcher_->makeReader() : nullptr;
  const auto goOn = [this](PlaylistLook::Finding finding) {
    look_.reset();
    const auto next = std::exchange(nextFetcher_, nullptr);
    const bool isThere = finding == PlaylistLook::Finding::playlist;
    const bool isNeeded = buffering_.isEmpty || isRecovering_;
    if (link_ && (!isThere || !isNeeded)) return watchSegments();
    if (isThere) fetcher_ = next;
    if (link_) {
      floor_ = place();
      hangs_.end();
      std::exchange(link_, nullptr)->cut();
    }
    isRecovering_ = isReady_;
    silence_.setWaiting(true, silenceLimit());  // however many processes it takes
    start();
  };
  if (!bytes) return goOn(PlaylistLook::Finding::failed);
  look_ = std::make_unique<PlaylistLook>(std::move(bytes), goOn);
}

void ProcessEngine::watchSegments() {
  const bool isLive = isPlaylist_ && link_ && isReady_ && facts_.isLive;
  const bool isMissing = isRecovering_ || (rate_ != 0 && buffering_.isEmpty);
  segments_.setWaiting(isLive && isMissing && !look_, segmentsLimit);
}
