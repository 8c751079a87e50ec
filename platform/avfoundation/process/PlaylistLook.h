#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/avfoundation/bytes/MediaBytes.h"
#include "platform/dispatch/RunLoop.h"

// Waits for a resource's first bytes and tells whether they begin a list of segments. One that is read here
// (HLSFetcher) is waited for whole. The fetching of another is the media library's: a process that plays one has to
// reach the network, and only such a one. Media tell with their first byte; whatever looks like neither is no list.
//
// Main thread. Nothing waits: it looks again and again, the more seldom the longer it takes, so that any number of
// servers may be slow at once. Nobody else reads meanwhile.
class PlaylistLook {
 public:
  enum class Finding { media, segments, playlist, failed };
  struct Result {
    Finding finding = Finding::failed;
    std::string url, text;  // of segments: where the playlist came from, and all of it
  };

  // The bytes are interrupted for good. `found` is called once, by a turn of the main queue of its own, unless the look
  // goes before.
  PlaylistLook(std::shared_ptr<MediaBytes> bytes, std::function<void(Result)> found);
  PlaylistLook(const PlaylistLook&) = delete;
  PlaylistLook& operator=(const PlaylistLook&) = delete;
  ~PlaylistLook();

  // What so much of its beginning says; `isAll` when there is no more. nil when more has to be seen.
  static std::optional<Finding> findingOf(std::string_view begin, bool isAll);
  static constexpr std::size_t lookLimit = 4096;

 private:
  void look(RunLoop::Duration since);
  void lookIn(RunLoop::Duration interval, RunLoop::Duration since);
  // nil when there is not enough yet.
  std::optional<Result> readOn();

  const std::shared_ptr<MediaBytes> bytes_;
  std::string text_;  // that was read
  std::function<void(Result)> found_;
  RunLoop::TimerToken timer_ = 0;
};
