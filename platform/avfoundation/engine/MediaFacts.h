#pragma once

#include <gst/gst.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/avfoundation/engine/MediaEngine.h"

// What is known of the media. Times are media time in nanoseconds.
struct MediaFacts {
  std::optional<std::int64_t> duration;
  // False when the duration is guessed from what has come, or the sum of what a playlist says.
  bool saysItsLength = true;
  // Some elements take a seek all the same, and lose their way or their server.
  bool isSeekable = true;
  std::int64_t seekableStart = 0;
  std::optional<std::int64_t> seekableEnd;
  std::vector<MediaTrack> tracks;
};

// As far as a pipeline answers; `streams` may be null. Any thread.
MediaFacts factsOf(GstElement* pipeline, GstStreamCollection* streams);
