#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/Export.h"

// A moment of a film as ad documents write it: "00:00:05", "00:00:05.250" or "25%". A plain value.
struct YMR_API VASTOffset {
  double value = 0;  // in seconds, or in hundredths of the film's length
  bool isPercent = false;

  // nil for any other text. White space around it counts for nothing.
  static std::optional<VASTOffset> from(std::string_view text);
  // In seconds of a film that is `duration` seconds long; nil for a share of a length that is not known: 0, not a
  // number, or without end.
  std::optional<double> secondsOf(double duration) const;
  // As the moment from when on a film may be skipped, of which `second` has been reached: the whole seconds, rounded
  // up, that are left until then; 0 when it may be. nil when it never may: no whole second from the moment on lies
  // before the film's end, or it is a share of a length that is not known.
  std::optional<std::int64_t> secondsLeft(double second, double duration) const;

  friend bool operator==(const VASTOffset&, const VASTOffset&) = default;
};
