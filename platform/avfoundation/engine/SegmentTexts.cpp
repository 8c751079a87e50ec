#include "platform/avfoundation/engine/SegmentTexts.h"

#include <algorithm>

#include "platform/avfoundation/segments/WebVTT.h"

namespace {

constexpr std::size_t segmentBytesLimit = 4 * 1024 * 1024;
constexpr std::size_t heldLimit = 16;
constexpr std::size_t rememberedLimit = 64;

}  // namespace

void SegmentTexts::restart() {
  current_ = {};
  held_.clear();
  given_.clear();
}

void SegmentTexts::take(const SegmentRecord& record, std::string_view content) {
  switch (record.kind) {
    case SegmentRecord::Kind::segment:
      current_ = {record, {}};
      break;
    case SegmentRecord::Kind::data:
      if (current_.text.size() + content.size() <= segmentBytesLimit) current_.text += content;
      break;
    case SegmentRecord::Kind::end:
      if (record.isCut || give(current_)) break;
      if (held_.size() < heldLimit) held_.push_back(std::move(current_));
      break;
    default:
      break;
  }
}

void SegmentTexts::giveHeld() {
  while (!held_.empty() && give(held_.front())) held_.pop_front();
}

// False when it can't be told yet when its cues are due.
bool SegmentTexts::give(const Segment& segment) {
  const auto texts = readWebVTT(segment.text);
  if (!texts) return true;
  std::int64_t shift = 0;  // from the cues' times to the programme's
  if (texts->map) {
    const auto raw = SegmentClock::ofTicks(texts->map->ticks % (std::uint64_t{1} << 33));
    // Near to where the segment is: the first cue's time is.
    const std::int64_t first = texts->cues.empty() ? texts->map->local : texts->cues.front().start;
    const std::int64_t near = segment.record.start - (first - texts->map->local);
    const auto time = clock_.time(segment.record.discontinuity, raw, near);
    if (!time) return false;
    shift = *time - texts->map->local;
  }
  for (const WebVTT::Cue& cue : texts->cues) {
    std::pair<std::int64_t, std::string> told{cue.start + shift, cue.text};
    if (told.first + (cue.end - cue.start) < 0 || std::ranges::count(given_, told) > 0) continue;
    found_(segment.record.track - SegmentRecord::firstTextTrack, told.first, cue.end + shift, cue.text);
    given_.push_back(std::move(told));
    if (given_.size() > rememberedLimit) given_.pop_front();
  }
  return true;
}
