#pragma once

#include <cstdint>
#include <string>

// One cue of a file of subtitles. A plain value.
struct ASBSubtitle {
  std::int64_t index = 0;  // the number that the file gives it; need be neither unique nor in order
  double startTime = 0;    // seconds from the start of the programme: the first instant at which it shows
  double stopTime = 0;     // and the last one
  std::string text;        // UTF-8, lines joined with "\n"; empty hides the label

  friend bool operator==(const ASBSubtitle& left, const ASBSubtitle& right) = default;
};
