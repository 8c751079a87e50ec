#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "platform/Export.h"
#include "subtitles/core/ASBSubtitle.h"

// The cues of one track, which never change; any thread.
class YMR_API ASBSubtitleList {
 public:
  explicit ASBSubtitleList(std::vector<ASBSubtitle> subtitles);

  // In the order of the file.
  const std::vector<ASBSubtitle>& subtitles() const { return subtitles_; }
  // The cue that shows at that time: of those that start at or before it and stop at or after it, the one that stands
  // last in the file. nil for none. Looks at runs of cues, and into those whose time it is: of a
  // film's cues, which follow one another, at a few hundred.
  const ASBSubtitle* lastSubtitleAtTime(double seconds) const;

 private:
  struct Times {
    double start, stop;
  };

  const std::vector<ASBSubtitle> subtitles_;
  static constexpr std::size_t runLength = 256;
  std::vector<Times> times_;  // of the cues, side by side, for the look-up
  std::vector<Times> runs_;   // from the first start to the last stop of so many cues each
};

// Where a list that was read on one thread is found by another. Any thread; a list is there whole or not at all.
class YMR_API ASBPublishedSubtitles {
 public:
  // nil takes the list away. Whoever has got the former one may go on using it.
  void publish(std::shared_ptr<const ASBSubtitleList> list);
  // nil until something was published.
  std::shared_ptr<const ASBSubtitleList> current() const;

 private:
  mutable std::mutex mutex_;
  std::shared_ptr<const ASBSubtitleList> list_;
};
