#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/Export.h"

// Media that come in segments, as one row of bytes that an engine reads through MediaBytes: records, each a head and so
// many bytes behind it. Who writes them has sorted out playlists, addresses, keys and failures; what is left are the
// segments' own bytes and where they belong. Times are nanoseconds on the programme's time line.
//
// Written and read by one build on one machine, so the heads go as they lie in memory.
struct SegmentRecord {
  enum class Kind : std::uint32_t {
    facts = 1,  // the first of each row, and when something has changed; see SegmentFacts
    segment,    // of a track begins; its bytes follow in `data`, its end in `end`
    data,
    end,       // of the track's segment; `isCut`: not all of it came, and what follows may begin before this
    hole,      // nothing is there from `start` on; what comes next belongs right behind what came before
    trackEnd,  // no more of the track will come
    over,      // of nothing
  };
  static constexpr std::uint32_t madeByUs = 0x31534D59;
  static constexpr std::uint32_t sizeLimit = 1024 * 1024;
  static constexpr std::uint32_t mainTrack = 0;
  static constexpr std::uint32_t audioTrack = 1;
  static constexpr std::uint32_t firstTextTrack = 2;

  std::uint32_t mark = madeByUs;
  Kind kind = Kind::over;
  std::uint32_t track = mainTrack;
  std::uint32_t size = 0;  // of what follows the head
  std::int64_t start = 0;
  std::int64_t duration = 0;
  std::uint64_t discontinuity = 0;  // segments of all tracks with the same number count time alike
  std::uint32_t isCut = 0;
  std::uint32_t isLive = 0;
  std::int64_t writtenAt = 0;  // of facts: by the system's monotonic clock

  bool isText() const { return track >= firstTextTrack; }
};

// The head and what follows it.
YMR_API std::vector<std::byte> bytesOf(SegmentRecord record, std::span<const std::byte> content = {});
// nil for what bytesOf() does not write.
YMR_API std::optional<SegmentRecord> segmentRecord(std::span<const std::byte> head);

// What follows a record of facts; in its head are the times that can be gone to, and whether they move on.
struct SegmentFacts {
  struct Text {
    std::string language, name;
  };
  bool hasAudioTrack = false;  // the sound comes as a track of its own, and that of the main track is not wanted
  std::string audioLanguage;
  std::vector<Text> texts;
};
YMR_API std::vector<std::byte> bytesOf(const SegmentFacts& facts);
YMR_API SegmentFacts segmentFacts(std::span<const std::byte> bytes);

// What the reader of such a row wants, as the number that MediaBytes::setWish() takes. Each wish has the next number,
// and rows begin at places that follow from it: so it is clear which wish a row answers.
struct SegmentWish {
  static constexpr unsigned numbers = 4096;
  static constexpr unsigned textsLimit = 254;

  unsigned number = 0;           // below `numbers`, from 0 on and round again
  std::optional<unsigned> text;  // which texts come along
  std::int64_t time = 0;         // where the rows begin

  std::uint64_t packed() const;
  static SegmentWish unpacked(std::uint64_t packed);
  // Where the row of media, or of texts, begins that answers this wish.
  std::uint64_t mediaPlace() const { return std::uint64_t{number} << rowBits; }
  std::uint64_t textPlace() const { return textRows | mediaPlace(); }
  static unsigned numberAt(std::uint64_t place) { return static_cast<unsigned>(place >> rowBits) % numbers; }

 private:
  static constexpr unsigned rowBits = 44;  // no row is longer
  static constexpr std::uint64_t textRows = std::uint64_t{1} << 60;
};
