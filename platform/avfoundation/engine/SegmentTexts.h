#pragma once

#include <deque>
#include <functional>
#include <string>

#include "platform/avfoundation/engine/SegmentClock.h"

// Segments of texts on their way to cues. One thread.
class SegmentTexts {
 public:
  // Times are of the programme's line; `text` has markup.
  using Found = std::function<void(std::size_t track, std::int64_t start, std::int64_t end, const std::string& text)>;
  SegmentTexts(SegmentClock& clock, Found found) : clock_(clock), found_(std::move(found)) {}

  void take(const SegmentRecord& record, std::string_view content);
  // What had to wait until it was known what its times mean.
  void giveHeld();
  // Another row begins.
  void restart();

 private:
  struct Segment {
    SegmentRecord record;
    std::string text;
  };
  bool give(const Segment& segment);

  SegmentClock& clock_;
  const Found found_;
  Segment current_;
  std::deque<Segment> held_;
  std::deque<std::pair<std::int64_t, std::string>> given_;  // the last ones: a long cue is in several segments
};
