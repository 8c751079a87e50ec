#pragma once

#include <string>
#include <string_view>

// What a file that is to hold subtitles looks like. A guess from its bytes, most of it from the first few thousand; any
// thread, linear time.
enum class ASBSubtitleKind {
  subRip,  // or anything else that is not told apart
  webVTT,
  utf16,   // whose every other byte is often zero; without a byte-order mark
  binary,  // no text
};

// Of UTF-8 content.
ASBSubtitleKind kindOfContent(std::string_view content);

// Of bytes that are not UTF-8, for people: what they look like and what to do, as in "Latin-1. Save it as UTF-8.".
std::string looksOfBytes(std::string_view bytes);
// "little endian" or "big endian" when the bytes look like UTF-16 without a byte-order mark; else empty.
std::string_view endianOfUTF16(std::string_view bytes);
