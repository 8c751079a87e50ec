#pragma once

#include <cstdint>
#include <optional>

#include "platform/foundation/NSNotificationCenter.h"
#include "player/states/YMRPlayerStateHub.h"

// What several states share: the rules by which they decide, and the one report that two of them make alike.

// Whether a programme whose rate was `recorded` has come to a halt. A second report of the same halt is none.
constexpr bool programmeDidStop(float rate, float recorded) {
  return rate == 0.0f && recorded != 0.0f;
}

// Whether it has begun to play. Only exactly normal speed is playing.
constexpr bool programmeDidStart(float rate, float recorded) {
  return rate == 1.0f && recorded != 1.0f;
}

// The tracking event of the quartile that is due when `second` of an ad of `duration` seconds has been played and
// `reported` quartiles are known: 2 "firstQuartile", 3 "midpoint", 4 "thirdQuartile". One a call at most; the share
// must exceed the quartile. An unknown duration never makes one due, a duration of 0 always does.
std::optional<std::uint32_t> quartileEventDue(double second, double duration, int reported);

// Tells the host where the programme item that posted `notification` now stands.
void reportProgrammeJump(const NSNotification& notification, YMRPlayerStateHub& ymrPlayer);
