#include "subtitles/core/ASBSubtitleTimeline.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

constexpr double forever = std::numeric_limits<double>::infinity();

// A cue is given up to and with its stop time; the timeline's stretches end before the next one begins.
double endOf(double stopTime) {
  return std::nextafter(stopTime, forever);
}

}  // namespace

void ASBSubtitleTimeline::add(double startTime, double stopTime) {
  const std::size_t cue = count_++;
  const double start = std::max(startTime, 0.0), end = endOf(stopTime);
  if (!(start < end)) return;
  const auto next = from_.upper_bound(end);
  const std::size_t after = std::prev(next)->second;
  from_.erase(from_.lower_bound(start), next);
  from_[start] = cue;
  from_[end] = after;
}

std::vector<ASBSubtitleTimeline::Share> ASBSubtitleTimeline::shares() const {
  std::vector<Share> shares(count_);
  for (auto stretch = from_.begin(); stretch != from_.end(); ++stretch) {
    if (stretch->second == nobody) continue;
    const double end = std::next(stretch)->first;  // there is one: the last stretch belongs to no cue
    Share& share = shares[stretch->second];
    share.seconds += end - stretch->first;
    share.onFullSecond |= std::ceil(stretch->first) < end;
  }
  return shares;
}

std::optional<ASBSubtitleTimeline::Cover> ASBSubtitleTimeline::firstCover(std::size_t cue, double startTime,
                                                                          double stopTime) const {
  const double start = std::max(startTime, 0.0), end = endOf(stopTime);
  if (!(start < end)) return std::nullopt;
  auto stretch = std::prev(from_.upper_bound(start));
  if (stretch->second == cue) ++stretch;
  if (stretch->first >= end) return std::nullopt;
  return Cover{stretch->second, std::max(stretch->first, start), std::min(std::next(stretch)->first, end)};
}
