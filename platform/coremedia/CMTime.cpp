#include "platform/coremedia/CMTime.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <numeric>

namespace {

__extension__ using Wide = __int128;

constexpr Wide valueMax = std::numeric_limits<std::int64_t>::max();
constexpr Wide valueMin = std::numeric_limits<std::int64_t>::min();

bool fits(Wide value) {
  return value >= valueMin && value <= valueMax;
}

// numerator / denominator to the nearest integer, halves away from zero.
Wide divideRounded(Wide numerator, Wide denominator, bool& rounded) {
  const Wide quotient = numerator / denominator;
  const Wide remainder = numerator % denominator;
  if (remainder == 0) return quotient;
  rounded = true;
  const Wide magnitude = remainder < 0 ? -remainder : remainder;
  if (magnitude * 2 < denominator) return quotient;
  return quotient + (numerator < 0 ? -1 : 1);
}

// numerator / denominator seconds at `timescale`, or at the largest halving of it that fits.
CMTime makeRounded(Wide numerator, Wide denominator, std::int32_t timescale, bool rounded) {
  for (; timescale > 0; timescale /= 2) {
    bool roundedHere = rounded;
    const Wide value = divideRounded(numerator * timescale, denominator, roundedHere);
    if (!fits(value)) continue;
    const std::uint32_t flag = roundedHere ? kCMTimeFlags_HasBeenRounded : 0u;
    return {static_cast<std::int64_t>(value), timescale, kCMTimeFlags_Valid | flag, 0};
  }
  return numerator < 0 ? kCMTimeNegativeInfinity : kCMTimePositiveInfinity;
}

// Where the time's kind stands in the total order.
int rank(const CMTime& time) {
  if (CMTIME_IS_INVALID(time)) return 4;
  if (time.flags & kCMTimeFlags_Indefinite) return 3;
  if (time.flags & kCMTimeFlags_PositiveInfinity) return 2;
  if (time.flags & kCMTimeFlags_NegativeInfinity) return 0;
  return time.timescale > 0 ? 1 : 4;
}

CMTime opposite(const CMTime& time) {
  if (time.flags & kCMTimeFlags_PositiveInfinity) return kCMTimeNegativeInfinity;
  if (time.flags & kCMTimeFlags_NegativeInfinity) return kCMTimePositiveInfinity;
  return time;
}

// left + sign * right for numeric times.
CMTime sum(const CMTime& left, const CMTime& right, int sign) {
  const Wide divisor = std::gcd(left.timescale, right.timescale);
  const Wide common = static_cast<Wide>(left.timescale) * right.timescale / divisor;
  const Wide numerator = static_cast<Wide>(left.value) * (right.timescale / divisor) +
                         static_cast<Wide>(right.value) * (left.timescale / divisor) * sign;
  const std::int32_t timescale = common <= std::numeric_limits<std::int32_t>::max()
                                     ? static_cast<std::int32_t>(common)
                                     : std::max(left.timescale, right.timescale);
  return makeRounded(numerator, common, timescale, CMTIME_HAS_BEEN_ROUNDED(left) || CMTIME_HAS_BEEN_ROUNDED(right));
}

}  // namespace

CMTime CMTimeMake(std::int64_t value, std::int32_t timescale) {
  if (timescale <= 0) return kCMTimeInvalid;
  return {value, timescale, kCMTimeFlags_Valid, 0};
}

CMTime CMTimeMakeWithSeconds(double seconds, std::int32_t preferredTimescale) {
  if (preferredTimescale <= 0 || std::isnan(seconds)) return kCMTimeInvalid;
  for (std::int32_t timescale = preferredTimescale; timescale > 0; timescale /= 2) {
    const double scaled = std::round(seconds * timescale);
    if (std::abs(scaled) >= 9223372036854775808.0) continue;
    const CMTime time{static_cast<std::int64_t>(scaled), timescale, kCMTimeFlags_Valid, 0};
    if (CMTimeGetSeconds(time) == seconds) return time;
    return {time.value, timescale, kCMTimeFlags_Valid | kCMTimeFlags_HasBeenRounded, 0};
  }
  return seconds < 0 ? kCMTimeNegativeInfinity : kCMTimePositiveInfinity;
}

double CMTimeGetSeconds(const CMTime& time) {
  switch (rank(time)) {
    case 0:
      return -std::numeric_limits<double>::infinity();
    case 1:
      return static_cast<double>(time.value) / time.timescale;
    case 2:
      return std::numeric_limits<double>::infinity();
    default:
      return std::numeric_limits<double>::quiet_NaN();
  }
}

std::int32_t CMTimeCompare(const CMTime& left, const CMTime& right) {
  const int leftRank = rank(left), rightRank = rank(right);
  if (leftRank != rightRank) return leftRank < rightRank ? -1 : 1;
  if (leftRank != 1) return 0;
  const Wide a = static_cast<Wide>(left.value) * right.timescale;
  const Wide b = static_cast<Wide>(right.value) * left.timescale;
  return a < b ? -1 : a > b ? 1 : 0;
}

CMTime CMTimeAdd(const CMTime& left, const CMTime& right) {
  const int leftRank = rank(left), rightRank = rank(right);
  if (leftRank == 4 || rightRank == 4) return kCMTimeInvalid;
  if (leftRank == 3 || rightRank == 3) return kCMTimeIndefinite;
  if (leftRank == 1 && rightRank == 1) return sum(left, right, 1);
  if (leftRank == 1) return right;
  if (rightRank == 1 || leftRank == rightRank) return left;
  return kCMTimeInvalid;
}

CMTime CMTimeSubtract(const CMTime& left, const CMTime& right) {
  if (rank(left) == 1 && rank(right) == 1) return sum(left, right, -1);
  return CMTimeAdd(left, opposite(right));
}

CMTime CMTimeConvertScale(const CMTime& time, std::int32_t timescale) {
  if (rank(time) != 1) return time;
  if (timescale <= 0) return kCMTimeInvalid;
  return makeRounded(time.value, time.timescale, timescale, CMTIME_HAS_BEEN_ROUNDED(time));
}

CMTime CMTimeRangeGetEnd(const CMTimeRange& range) {
  return CMTimeAdd(range.start, range.duration);
}
