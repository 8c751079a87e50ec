#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/avfoundation/engine/MediaCaption.h"

// A text and the media time in which it is shown, in nanoseconds.
struct CaptionCue {
  std::int64_t start = 0;
  std::int64_t end = std::numeric_limits<std::int64_t>::max();
  // It goes before its end when the track's next one begins, whose length it is that nobody said. One of these that
  // begins when another one does takes its place.
  bool endsWithNext = false;
  MediaCaption caption;  // an empty text takes away what was there
};

// The cues of every legible track that the media has given up so far, and which of them are due. What was seen before a
// seek is kept, since a container does not give a cue again that began before the place that was sought.
//
// It follows a time that runs on: what is due is at hand, a cue costs its look-up (log n), and only a step back looks
// through all cues of a track. One thread.
class CaptionTimeline {
 public:
  CaptionTimeline() = default;
  CaptionTimeline(const CaptionTimeline&) = delete;
  CaptionTimeline& operator=(const CaptionTimeline&) = delete;

  // A cue that is there already is ignored. The track's earliest goes when there are too many of all tracks, or when
  // they have too much text.
  void add(const std::string& track, CaptionCue cue);
  // The texts due at `time`, in the order of their starts, a line each; nil when there is none. The texts of a track
  // are of one kind.
  std::optional<MediaCaption> captionAt(const std::string& track, std::int64_t time);
  // When captionAt() may next give something else; nil when nothing later is known.
  std::optional<std::int64_t> nextChange(const std::string& track, std::int64_t time);

  static constexpr std::size_t cuesLimit = 200'000;
  static constexpr std::size_t textsLimit = 16 * 1024 * 1024;  // bytes
  static constexpr std::size_t dueLimit = 32;                  // at once; later ones are not shown

 private:
  using Cues = std::multimap<std::int64_t, CaptionCue>;
  struct Track {
    Cues cues;
    std::int64_t time = std::numeric_limits<std::int64_t>::min();  // up to which they have been looked at
    Cues::iterator next = cues.end();                              // the first that begins later
    std::vector<Cues::iterator> due;                               // in the order of their starts
  };
  static void follow(Track& track, std::int64_t time);
  static void begin(Track& track, Cues::iterator cue);
  void forget(Track& track, Cues::iterator cue);

  std::map<std::string, Track> tracks_;
  std::size_t count_ = 0;
  std::size_t texts_ = 0;  // bytes
};
