#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Export.h"

// What a segment of WebVTT holds. Cues that can't be read are passed over, one by one. Times are nanoseconds.
struct WebVTT {
  struct Cue {
    std::int64_t start = 0, end = 0;
    std::string text;  // with its markup, lines parted by \n
  };
  // The cues' time `local` is the media's `ticks`, of 1/90,000 s, modulo 2^33.
  struct TimeMap {
    std::int64_t local = 0;
    std::uint64_t ticks = 0;
  };
  std::optional<TimeMap> map = {};
  std::vector<Cue> cues;

  static constexpr std::size_t cuesLimit = 10'000;
  static constexpr std::size_t cueBytesLimit = 16 * 1024;
};

// nil for what does not begin like WebVTT. Linear in the text; any thread.
YMR_API std::optional<WebVTT> readWebVTT(std::string_view text);
