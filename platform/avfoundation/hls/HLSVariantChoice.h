#pragma once

#include <optional>
#include <vector>

#include "platform/avfoundation/hls/HLSPlaylist.h"
#include "platform/dispatch/RunLoop.h"

// Which variant the next segment is taken from: the best that fits the screen and 0.8 of the measured throughput. It
// goes down as soon as it must, and up only when enough is held ready and it went down a while ago, so that it does not
// swing. A variant that has failed is left alone for a while.
//
// A plain value; times are the run loop's.
class HLSVariantChoice {
 public:
  using Time = RunLoop::Duration;

  // Pictures that are higher than the screen are of no use to it; 0 for any.
  HLSVariantChoice(const std::vector<HLSVariant>& variants, int screenHeight);

  // So much came within so long.
  void note(std::uint64_t bytes, Time time);
  // Bits a second; nil before anything was measured.
  std::optional<double> throughput() const;

  // The variant for a segment that is asked for now, with so much of media held ready; nil when all have failed.
  std::optional<std::size_t> choose(Time now, Time ahead);
  // One that was not asked for this segment yet, the nearest below first; nil when there is none.
  std::optional<std::size_t> instead(const std::vector<std::size_t>& asked, Time now) const;
  void bar(std::size_t variant, Time now);
  // All may be tried again.
  void forgive();
  bool isBarred(std::size_t variant, Time now) const { return now < candidates_[variant].barredUntil; }

 private:
  struct Candidate {
    std::size_t variant;
    std::uint64_t bandwidth;
    int height;
    Time barredUntil{-1};
  };
  // An average that forgets half of what is older than so many seconds of receiving.
  struct Average {
    double halfLife;
    double value = 0, weight = 0;
    void note(double rate, double seconds);
  };
  bool fits(const Candidate& candidate) const { return candidate.height <= heightLimit_; }
  // Of those that fit and are not barred, the best below `rate`, else the least.
  std::optional<std::size_t> bestBelow(double rate, Time now) const;

  std::vector<Candidate> candidates_;  // as in the playlist
  int heightLimit_ = 0;
  Average quick_{2}, slow_{8};
  std::optional<std::size_t> current_;
  Time loweredAt_{-1};
};
