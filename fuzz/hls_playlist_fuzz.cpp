// A text is a playlist or a fault, within its limits, and whatever it is finds a place on a time line.
#include <cstdlib>

#include "platform/avfoundation/hls/HLSTimeline.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

void check(const HLSMediaPlaylist& list) {
  require(list.segments.size() <= HLSLimits::segmentsLimit && list.duration() >= 0);
  for (const HLSSegment& segment : list.segments) {
    require(!segment.uri.empty() && segment.duration >= 0 && segment.duration <= list.targetDuration);
    require(!segment.key || *segment.key < list.keys.size());
    require(!segment.map || *segment.map < list.maps.size());
    require(!segment.range || segment.range->length > 0);
  }
  for (const HLSMap& map : list.maps) require(!map.key || *map.key < list.keys.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto half = text.find("\n\n#EXTM3U");  // a reload may follow
  const auto first = readHLSPlaylist(text.substr(0, half));
  if (const auto* master = std::get_if<HLSMasterPlaylist>(&first)) {
    require(!master->variants.empty() && master->variants.size() <= HLSLimits::variantsLimit);
  } else if (const auto* list = std::get_if<HLSMediaPlaylist>(&first)) {
    check(*list);
    HLSTimeline timeline;
    timeline.adopt(*list, nullptr);
    require(timeline.begin() == 0 && timeline.end() == list->duration());
    const auto second = readHLSPlaylist(half == text.npos ? text : text.substr(half + 2));
    if (const auto* next = std::get_if<HLSMediaPlaylist>(&second)) {
      check(*next);
      HLSTimeline other;
      other.adopt(*next, &timeline);
      timeline.adopt(*next, nullptr);
      require(timeline.end() - timeline.begin() == next->duration());
      const auto found = timeline.indexAt(timeline.liveStart());
      require(!found || *found < next->segments.size());
    }
  } else {
    require(!std::get<HLSFault>(first).reason.empty());
  }
  return 0;
}
