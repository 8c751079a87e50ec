#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>

#include "platform/avfoundation/engine/MediaCaption.h"

// A text and the media time in which it is shown, in nanoseconds.
struct CaptionCue {
  std::int64_t start = 0;
  std::int64_t end = untilNext;
  MediaCaption caption;  // an empty text takes away what was there

  // For a cue whose length nobody said: it stays until the track's next one.
  static constexpr std::int64_t untilNext = std::numeric_limits<std::int64_t>::max();
};

// The cues of every legible track that the media has given up so far, and which of them are due. What was seen before a
// seek is kept, since a container does not give a cue again that began before the place that was sought. A plain value.
class CaptionTimeline {
 public:
  // A cue that is there already is ignored. The oldest goes when a track has `cuesLimit`.
  void add(const std::string& track, CaptionCue cue);
  // The texts due at `time`, in the order of their starts, a line each; nil when there is none. The texts of a track
  // are of one kind.
  std::optional<MediaCaption> captionAt(const std::string& track, std::int64_t time) const;
  // When captionAt() may next give something else; nil when nothing later is known.
  std::optional<std::int64_t> nextChange(const std::string& track, std::int64_t time) const;

  static constexpr std::size_t cuesLimit = 4000;

 private:
  using Cues = std::multimap<std::int64_t, CaptionCue>;
  std::map<std::string, Cues> tracks_;
};
