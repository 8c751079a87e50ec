#include "subtitles/core/ASBSubtitleList.h"

#include <algorithm>
#include <utility>

ASBSubtitleList::ASBSubtitleList(std::vector<ASBSubtitle> subtitles) : subtitles_(std::move(subtitles)) {
  times_.reserve(subtitles_.size());
  for (const auto& subtitle : subtitles_) times_.push_back({subtitle.startTime, subtitle.stopTime});
}

const ASBSubtitle* ASBSubtitleList::lastSubtitleAtTime(double seconds) const {
  const auto found = std::find_if(times_.rbegin(), times_.rend(), [seconds](const Times& times) {
    return times.start <= seconds && times.stop >= seconds;
  });
  return found == times_.rend() ? nullptr : &subtitles_[static_cast<std::size_t>(times_.rend() - found) - 1];
}

void ASBPublishedSubtitles::publish(std::shared_ptr<const ASBSubtitleList> list) {
  std::lock_guard lock(mutex_);
  list_.swap(list);  // the former list, perhaps a long one, is freed after the lock is released
}

std::shared_ptr<const ASBSubtitleList> ASBPublishedSubtitles::current() const {
  std::lock_guard lock(mutex_);
  return list_;
}
