#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "platform/avfoundation/engine/CaptionTimeline.h"

// Closed captions of line 21 (CEA-608) on their way to cues: pairs of bytes, two a picture, that write on a screen of
// text. What they mean is libzvbi's knowledge. Of the captions that may run side by side the first that shows a text is
// taken. One thread.
class ClosedCaptions {
 public:
  struct Pair {
    int field = 0;  // 0 for the first one, which is where nearly all captions are
    std::uint8_t first = 0, second = 0;
  };
  explicit ClosedCaptions(std::function<void(CaptionCue)> found);
  ClosedCaptions(const ClosedCaptions&) = delete;
  ClosedCaptions& operator=(const ClosedCaptions&) = delete;
  ~ClosedCaptions();

  // The pairs of one picture, which is due at `time`. Pictures may come in the order in which they are decoded: nothing
  // before `settled` comes any more, and what is due by then is read.
  void take(std::int64_t time, std::span<const Pair> pairs, std::int64_t settled);
  // Reads all that has come.
  void finish() { read(INT64_MAX); }
  // Begins anew, elsewhere in the media.
  void restart();

 private:
  struct Decoder;
  void read(std::int64_t until);
  void read(std::int64_t time, const Pair& pair);

  const std::function<void(CaptionCue)> found_;
  std::multimap<std::int64_t, Pair> waiting_;
  std::unique_ptr<Decoder> decoder_;  // nil as long as nothing is said
};
