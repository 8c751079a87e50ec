#include "platform/avfoundation/engine/CaptionTimeline.h"

#include <algorithm>
#include <utility>

void CaptionTimeline::add(const std::string& track, CaptionCue cue) {
  if (cue.end <= cue.start) return;
  Cues& cues = tracks_[track];
  const auto [first, last] = cues.equal_range(cue.start);
  const bool isKnown =
      std::any_of(first, last, [&cue](const auto& entry) { return entry.second.caption == cue.caption; });
  if (isKnown) return;
  if (cues.size() >= cuesLimit) cues.erase(cues.begin());
  cues.emplace(cue.start, std::move(cue));
}

std::optional<MediaCaption> CaptionTimeline::captionAt(const std::string& track, std::int64_t time) const {
  const auto found = tracks_.find(track);
  if (found == tracks_.end()) return std::nullopt;
  const Cues& cues = found->second;
  MediaCaption due;
  const auto end = cues.upper_bound(time);
  for (auto cue = cues.begin(); cue != end; ++cue) {
    const MediaCaption& caption = cue->second.caption;
    const bool isOpen = cue->second.end == CaptionCue::untilNext;
    if (caption.text.empty() || cue->second.end <= time) continue;
    if (isOpen && cues.upper_bound(cue->first) != end) continue;
    if (!due.text.empty()) due.text += '\n';
    due.text += caption.text;
    due.isMarkup = caption.isMarkup;
  }
  if (due.text.empty()) return std::nullopt;
  return due;
}

std::optional<std::int64_t> CaptionTimeline::nextChange(const std::string& track, std::int64_t time) const {
  const auto found = tracks_.find(track);
  if (found == tracks_.end()) return std::nullopt;
  std::optional<std::int64_t> next;
  const auto consider = [&next, time](std::int64_t candidate) {
    if (candidate > time && candidate != CaptionCue::untilNext && (!next || candidate < *next)) next = candidate;
  };
  for (const auto& [start, cue] : found->second) {
    consider(start);
    consider(cue.end);
    if (start > time) break;
  }
  return next;
}
