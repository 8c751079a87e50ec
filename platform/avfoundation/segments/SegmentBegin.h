#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/Export.h"

// What the first bytes of a segment say, whichever container it is of.
namespace SegmentBegin {

// As many are enough.
inline constexpr std::size_t bytesLimit = 64 * 1024;

// They are those of a container or a text that segments have; a page, an empty body or noise is none.
YMR_API bool looksLikeMedia(std::span<const std::byte> bytes);

// When the first picture, or else the first sound, is presented, by the transport stream's clock or by the tag before
// packed sound: ticks of 1/90,000 s, modulo 2^33. nil where nothing says so: fragments have times of their own.
struct FirstTime {
  std::uint64_t ticks = 0;
  bool isOfPicture = false;
};
YMR_API std::optional<FirstTime> firstTime(std::span<const std::byte> bytes);

}  // namespace SegmentBegin
