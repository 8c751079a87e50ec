#pragma once

#include <cstdint>
#include <deque>

#include "platform/dispatch/RunLoop.h"

// Whether media that have crashed or hung their process are tried once more. A plain value.
//
// Three times within a minute near one place is for good: the same bytes would do it again. Elsewhere, or later, it was
// something else; the place of a live stream moves on by itself.
class CrashHistory {
 public:
  // Takes note of one, at `place` in nanoseconds of media time. True when it is to be tried again.
  bool note(RunLoop::Duration now, std::int64_t place) {
    while (!crashes_.empty() && now - crashes_.front().when > memory) crashes_.pop_front();
    crashes_.push_back({now, place});
    return nearBy(place) < crashesLimit;
  }
  // What was known before did not help: after two near the place that is tried, something is left out.
  bool isSuspect(std::int64_t place) const { return nearBy(place) >= crashesLimit - 1; }

 private:
  struct Crash {
    RunLoop::Duration when;
    std::int64_t place;
  };
  static constexpr auto memory = std::chrono::minutes(1);
  static constexpr std::int64_t nearness = 5'000'000'000;
  static constexpr int crashesLimit = 3;

  int nearBy(std::int64_t place) const {
    int count = 0;
    for (const Crash& crash : crashes_) {
      const std::int64_t distance = crash.place - place;
      count += distance < nearness && distance > -nearness;
    }
    return count;
  }

  std::deque<Crash> crashes_;  // at most as many as fit into a minute
};
