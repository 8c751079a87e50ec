#include "platform/avfoundation/engine/CaptionTimeline.h"

#include <algorithm>
#include <utility>

#include "platform/avfoundation/engine/CaptionText.h"

namespace {
constexpr std::int64_t forever = std::numeric_limits<std::int64_t>::max();
}  // namespace

void CaptionTimeline::add(const std::string& name, CaptionCue cue) {
  if (cue.end <= cue.start) return;
  Track& track = tracks_.try_emplace(name).first->second;
  Cues& cues = track.cues;
  std::size_t besides = 0;
  for (auto [other, last] = cues.equal_range(cue.start); other != last; ++other) {
    if (other->second.caption == cue.caption || ++besides == dueLimit) return;
    if (!cue.endsWithNext || !other->second.endsWithNext) continue;
    forget(track, other);
    break;
  }
  texts_ += cue.caption.text.size();
  const auto added = cues.emplace(cue.start, std::move(cue));
  if (added->first > track.time) {
    if (track.next == cues.end() || added->first < track.next->first) track.next = added;
  } else if (!added->second.endsWithNext || std::next(added) == track.next) {
    begin(track, added);
  }
  ++count_;
  while ((count_ > cuesLimit || texts_ > textsLimit) && !cues.empty()) forget(track, cues.begin());
}

void CaptionTimeline::forget(Track& track, Cues::iterator cue) {
  --count_;
  texts_ -= cue->second.caption.text.size();
  std::erase(track.due, cue);
  if (track.next == cue) ++track.next;
  track.cues.erase(cue);
}

// One that begins may be the end of those before it.
void CaptionTimeline::begin(Track& track, Cues::iterator cue) {
  std::erase_if(track.due, [&](const auto& other) {
    return other->second.end <= track.time || (other->second.endsWithNext && other->first < cue->first);
  });
  if (cue->second.end <= track.time || track.due.size() >= dueLimit) return;
  const auto later = std::ranges::upper_bound(track.due, cue->first, {}, [](const auto& each) { return each->first; });
  track.due.insert(later, cue);
}

void CaptionTimeline::follow(Track& track, std::int64_t time) {
  if (time < track.time) {
    track.due.clear();
    track.next = track.cues.begin();
  }
  track.time = time;
  for (; track.next != track.cues.end() && track.next->first <= time; ++track.next) begin(track, track.next);
  std::erase_if(track.due, [time](const auto& cue) { return cue->second.end <= time; });
}

std::optional<MediaCaption> CaptionTimeline::captionAt(const std::string& name, std::int64_t time) {
  const auto found = tracks_.find(name);
  if (found == tracks_.end()) return std::nullopt;
  follow(found->second, time);
  MediaCaption due;
  for (const auto& cue : found->second.due) {
    const MediaCaption& caption = cue->second.caption;
    if (caption.text.empty()) continue;
    if (!due.text.empty() && due.text.size() + caption.text.size() > captionBytesLimit) break;
    if (!due.text.empty()) due.text += '\n';
    due.text += caption.text;
    due.isMarkup = caption.isMarkup;
  }
  if (due.text.empty()) return std::nullopt;
  return due;
}

std::optional<std::int64_t> CaptionTimeline::nextChange(const std::string& name, std::int64_t time) {
  const auto found = tracks_.find(name);
  if (found == tracks_.end()) return std::nullopt;
  Track& track = found->second;
  follow(track, time);
  std::optional<std::int64_t> next;
  if (track.next != track.cues.end()) next = track.next->first;
  for (const auto& cue : track.due) next = std::min(next.value_or(forever), cue->second.end);
  return next == forever ? std::nullopt : next;
}
