#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Export.h"
#include "platform/foundation/NSScanner.h"
#include "subtitles/core/ASBSubtitle.h"

// One cue as it stands in a file, for the reader and for whoever tells what is odd about it. Views into the content.
struct ASBSubtitleSource {
  std::size_t location = 0;           // behind its "-->", in bytes; without one, where its reading began
  std::optional<std::int64_t> index;  // nil where there is no number
  std::string_view startTime;         // down to "-->", or to the end of the content where there is none
  bool hasArrow = false;              // whether "-->" was there
  std::string_view stopTime;          // with the rest of its line
  std::string text;
  std::string_view lost;  // the first text that stands between the end of a text line and the next "\n", and so is
                          // passed over; white space and further line ends, as in "\r\r\n", are none
};

// Takes a content apart, cue by cue. One thread; the content must outlive it.
class YMR_API ASBSubtitleSourceReader {
 public:
  explicit ASBSubtitleSourceReader(std::string_view content) : scanner_(content) {}

  // nil at the end.
  std::optional<ASBSubtitleSource> next();

 private:
  void readText(ASBSubtitleSource& source);

  NSScanner scanner_;
};

YMR_API ASBSubtitle subtitleFromSource(ASBSubtitleSource source);

// What a time stamp is read as.
struct YMR_API ASBTimeStamp {
  explicit ASBTimeStamp(std::string_view stamp);

  // The sum, which never overflows.
  double seconds() const;

  struct Field {
    std::optional<std::int64_t> number;  // nil where there is none
    std::string_view text;               // the number as it is written
  };
  Field hour, minute, second, millisecond;
  std::string_view rest;  // what follows, without white space before it
};
