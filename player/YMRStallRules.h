#pragma once

#include "platform/coremedia/CMTime.h"

// The rules by which a stalled programme is recovered.

// Whether a programme that won't keep up is to be recovered at `time`: it has begun, and is not at its end.
inline bool isStallToRecover(const CMTime& time, const CMTime& duration) {
  return time > kCMTimeZero && time != duration;
}

// Whether `lead` seconds buffered ahead are enough to go on: more than ten.
constexpr bool isLeadEnough(double lead) {
  return lead > 10.0;
}
