#include "subtitles/core/ASBSubtitleList.h"

#include <algorithm>
#include <utility>

ASBSubtitleList::ASBSubtitleList(std::vector<ASBSubtitle> subtitles) : subtitles_(std::move(subtitles)) {
  times_.reserve(subtitles_.size());
  for (const auto& subtitle : subtitles_) {
    const Times times{subtitle.startTime, subtitle.stopTime};
    if (times_.size() % runLength == 0) runs_.push_back(times);
    runs_.back() = {std::min(runs_.back().start, times.start), std::max(runs_.back().stop, times.stop)};
    times_.push_back(times);
  }
}

const ASBSubtitle* ASBSubtitleList::lastSubtitleAtTime(double seconds) const {
  const auto isTimeOf = [seconds](const Times& times) { return times.start <= seconds && times.stop >= seconds; };
  for (std::size_t run = runs_.size(); run-- > 0;) {
    if (!isTimeOf(runs_[run])) continue;
    const std::size_t first = run * runLength;
    for (std::size_t cue = std::min(first + runLength, times_.size()); cue-- > first;) {
      if (isTimeOf(times_[cue])) return &subtitles_[cue];
    }
  }
  return nullptr;
}

void ASBPublishedSubtitles::publish(std::shared_ptr<const ASBSubtitleList> list) {
  std::lock_guard lock(mutex_);
  list_.swap(list);  // the former list, perhaps a long one, is freed after the lock is released
}

std::shared_ptr<const ASBSubtitleList> ASBPublishedSubtitles::current() const {
  std::lock_guard lock(mutex_);
  return list_;
}
