#pragma once

#include <cstddef>
#include <limits>
#include <map>
#include <optional>
#include <vector>

// Which cue is on the screen at which time, from 0 s on: where several are due it is the one that stands last in the
// file. One thread; n log n for n cues.
class ASBSubtitleTimeline {
 public:
  // How much of the programme a cue is on the screen.
  struct Share {
    double seconds = 0;         // in all; more than 0 for a single instant, too
    bool onFullSecond = false;  // whether it is there at a whole number of seconds, when the player looks
  };
  // A stretch in which another cue is on the screen.
  struct Cover {
    std::size_t cue;  // from 0, in the order of the file
    double from, to;
  };

  // The next cue of the file.
  void add(double startTime, double stopTime);
  // Of every cue, when all were added.
  std::vector<Share> shares() const;
  // The first stretch of a cue's time in which one that stands later in the file is; nil for none.
  std::optional<Cover> firstCover(std::size_t cue, double startTime, double stopTime) const;

 private:
  static constexpr std::size_t nobody = std::numeric_limits<std::size_t>::max();

  std::size_t count_ = 0;
  std::map<double, std::size_t> from_{{0, nobody}};  // from that second up to the next entry's, without that
};
