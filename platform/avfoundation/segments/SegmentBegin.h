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

// When the first picture and the first sound are presented, by the transport stream's clock or by the tag before packed
// sound: ticks of 1/90,000 s, modulo 2^33. nil where nothing says so: fragments have times of their own.
struct FirstTimes {
  std::optional<std::uint64_t> picture, sound;
};
YMR_API FirstTimes firstTimes(std::span<const std::byte> bytes);

}  // namespace SegmentBegin
