// A text is WebVTT or it is not; its cues have times that go forwards, and a bounded text.
#include <cstdlib>

#include "platform/avfoundation/segments/SegmentBegin.h"
#include "platform/avfoundation/segments/WebVTT.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto bytes = std::as_bytes(std::span(data, size));
  SegmentBegin::firstTimes(bytes);
  const auto texts = readWebVTT({reinterpret_cast<const char*>(data), size});
  if (!texts) return 0;
  if (!SegmentBegin::looksLikeMedia(bytes) || texts->cues.size() > WebVTT::cuesLimit) std::abort();
  for (const WebVTT::Cue& cue : texts->cues) {
    const bool isFine = cue.start >= 0 && cue.end > cue.start && !cue.text.empty();
    if (!isFine || cue.text.size() > WebVTT::cueBytesLimit + WebVTT::cuesLimit) std::abort();
  }
  return 0;
}
