#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/Export.h"

// Playlists of HTTP Live Streaming as plain values. What is not needed to play is passed over: unknown tags, renditions
// that can't be used, attributes that nobody asks for. Addresses are as they were written. Times are nanoseconds.

struct HLSByteRange {
  std::uint64_t first = 0;
  std::uint64_t length = 0;
};

// How segments are encrypted (AES-128 in CBC mode, each one from its beginning).
struct HLSKey {
  std::string uri;
  std::optional<std::array<std::uint8_t, 16>> iv = {};  // nil: the segment's number
};

// What stands before the segments of fragmented media.
struct HLSMap {
  std::string uri;
  std::optional<HLSByteRange> range = {};
  std::optional<std::size_t> key = {};
};

struct HLSSegment {
  std::string uri;
  std::int64_t duration = 0;
  std::optional<HLSByteRange> range = {};  // nil: all of the resource
  std::optional<std::size_t> key = {};     // of the playlist's keys and maps
  std::optional<std::size_t> map = {};
  bool isGap = false;               // it is known to be missing
  std::uint64_t discontinuity = 0;  // its media time goes on from the segment before that has the same number
};

// One stream as a row of segments.
struct HLSMediaPlaylist {
  std::uint64_t firstSequence = 0;  // the first segment's number; the others count up
  std::int64_t targetDuration = 0;  // no segment is longer
  bool hasEnded = false;            // no segment will be added
  std::vector<HLSSegment> segments = {};
  std::vector<HLSKey> keys = {};
  std::vector<HLSMap> maps = {};

  std::uint64_t endSequence() const { return firstSequence + segments.size(); }
  std::int64_t duration() const;
};

// The same programme in one quality.
struct HLSVariant {
  std::string uri;
  std::uint64_t bandwidth = 0;  // bits a second
  int width = 0, height = 0;    // 0 when they are not told
  std::string codecs = {};
  std::string audioGroup = {}, textGroup = {};  // empty for none
};

// A stream beside the variants'.
struct HLSRendition {
  enum class Kind { audio, text };
  Kind kind = Kind::audio;
  std::string group, name, language;
  std::string uri;  // empty: it is part of the variant's own stream
  bool isDefault = false;
};

struct HLSMasterPlaylist {
  std::vector<HLSVariant> variants;  // in the order of the list
  std::vector<HLSRendition> renditions;
};

// Why a text is no playlist that can be played, as the end of a sentence.
struct HLSFault {
  enum class Kind { malformed, isProtected } kind = Kind::malformed;
  std::string reason;
};

using HLSPlaylist = std::variant<HLSMasterPlaylist, HLSMediaPlaylist, HLSFault>;

namespace HLSLimits {
inline constexpr std::size_t textBytesLimit = 8 * 1024 * 1024;
inline constexpr std::size_t lineBytesLimit = 32 * 1024;
inline constexpr std::size_t segmentsLimit = 100'000;
inline constexpr std::size_t variantsLimit = 200;
inline constexpr std::size_t renditionsLimit = 200;
inline constexpr std::size_t attributesLimit = 64;
inline constexpr std::size_t keysLimit = 10'000;                        // and maps
inline constexpr std::int64_t durationLimit = 3600LL * 1'000'000'000;   // of one segment
inline constexpr std::int64_t listDurationLimit = 240 * durationLimit;  // of all
}  // namespace HLSLimits

// Reads a playlist. Linear in the text, whatever it holds; any thread.
YMR_API HLSPlaylist readHLSPlaylist(std::string_view text);
