#pragma once

#include <compare>
#include <cstdint>

#include "platform/Export.h"

// Rational media time: value / timescale seconds, exact where binary fractions are not.
//
// A time is numeric, one of the two infinities, indefinite (the duration of a live stream) or invalid (an all-zero
// CMTime, so what was never set is invalid). Plain values; any thread.
//
// Kept from the platform: the flags, the total order (-infinity < numeric < +infinity < indefinite < invalid), the
// rounded flag, comparison by value across timescales. Left out: epochs other than 0, ranges beyond CMTimeRange,
// mapping.

enum CMTimeFlags : std::uint32_t {
  kCMTimeFlags_Valid = 1u << 0,
  kCMTimeFlags_HasBeenRounded = 1u << 1,
  kCMTimeFlags_PositiveInfinity = 1u << 2,
  kCMTimeFlags_NegativeInfinity = 1u << 3,
  kCMTimeFlags_Indefinite = 1u << 4,
  kCMTimeFlags_ImpliedValueFlagsMask =
      kCMTimeFlags_PositiveInfinity | kCMTimeFlags_NegativeInfinity | kCMTimeFlags_Indefinite,
};

struct CMTime {
  std::int64_t value = 0;
  std::int32_t timescale = 0;  // units a second
  std::uint32_t flags = 0;
  std::int64_t epoch = 0;
};

struct CMTimeRange {
  CMTime start;
  CMTime duration;
};

inline constexpr CMTime kCMTimeInvalid{};
inline constexpr CMTime kCMTimeZero{0, 1, kCMTimeFlags_Valid, 0};
inline constexpr CMTime kCMTimeIndefinite{0, 0, kCMTimeFlags_Valid | kCMTimeFlags_Indefinite, 0};
inline constexpr CMTime kCMTimePositiveInfinity{0, 0, kCMTimeFlags_Valid | kCMTimeFlags_PositiveInfinity, 0};
inline constexpr CMTime kCMTimeNegativeInfinity{0, 0, kCMTimeFlags_Valid | kCMTimeFlags_NegativeInfinity, 0};

constexpr bool CMTIME_IS_VALID(const CMTime& time) {
  return time.flags & kCMTimeFlags_Valid;
}
constexpr bool CMTIME_IS_INVALID(const CMTime& time) {
  return !CMTIME_IS_VALID(time);
}
constexpr bool CMTIME_IS_INDEFINITE(const CMTime& time) {
  return CMTIME_IS_VALID(time) && (time.flags & kCMTimeFlags_Indefinite);
}
constexpr bool CMTIME_IS_NUMERIC(const CMTime& time) {
  return CMTIME_IS_VALID(time) && !(time.flags & kCMTimeFlags_ImpliedValueFlagsMask);
}
constexpr bool CMTIME_HAS_BEEN_ROUNDED(const CMTime& time) {
  return CMTIME_IS_NUMERIC(time) && (time.flags & kCMTimeFlags_HasBeenRounded);
}

// A timescale that is not positive gives an invalid time.
YMR_API CMTime CMTimeMake(std::int64_t value, std::int32_t timescale);
// The nearest time to `seconds` at `preferredTimescale`, halves away from zero; flagged as rounded when it is not
// exactly `seconds`. A value too large for the timescale halves the timescale until it fits, and past that is an
// infinity. NaN and a timescale that is not positive give an invalid time; an infinity gives an infinity.
YMR_API CMTime CMTimeMakeWithSeconds(double seconds, std::int32_t preferredTimescale);
// NaN for invalid and indefinite times, ±infinity for the infinities.
YMR_API double CMTimeGetSeconds(const CMTime& time);

// -1, 0 or 1 by the order above; numeric times compare by exact value. Two invalid times are equal.
YMR_API std::int32_t CMTimeCompare(const CMTime& left, const CMTime& right);
inline bool operator==(const CMTime& left, const CMTime& right) {
  return CMTimeCompare(left, right) == 0;
}
inline std::strong_ordering operator<=>(const CMTime& left, const CMTime& right) {
  return CMTimeCompare(left, right) <=> 0;
}

// Sum and difference, at the smallest common timescale, or the larger of the two and rounded when that does not fit.
// Anything with invalid is invalid, with indefinite indefinite; infinities of opposite sign cancel to invalid; a sum
// too large for any timescale is an infinity.
YMR_API CMTime CMTimeAdd(const CMTime& left, const CMTime& right);
YMR_API CMTime CMTimeSubtract(const CMTime& left, const CMTime& right);
// The same time at another timescale, rounded like CMTimeMakeWithSeconds. Times that are not numeric are unchanged.
YMR_API CMTime CMTimeConvertScale(const CMTime& time, std::int32_t timescale);

// start + duration.
YMR_API CMTime CMTimeRangeGetEnd(const CMTimeRange& range);
