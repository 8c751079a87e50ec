#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/Export.h"

// From when on an ad may be skipped: a time from its start, or a share of its length. A plain value; any thread.
class YMR_API YMRSkipOffset {
 public:
  // Reads "HH:MM:SS", "HH:MM:SS.mmm" or "N%" with N from 0 to 100, blanks around it left out; minutes and seconds below
  // 60. nil for everything else: negative, more than the whole, no number at all.
  static std::optional<YMRSkipOffset> fromText(std::string_view text);
  // Neither may be negative.
  static YMRSkipOffset ofSeconds(double seconds) { return {seconds, false}; }
  static YMRSkipOffset ofPercent(double percent) { return {percent, true}; }

  // The whole seconds, rounded up, that are left until an ad of `duration` seconds may be skipped, when `second` of it
  // has been reached; 0 when it may be. nil when it never may: the offset does not lie before the ad's end, or is a
  // share of an unknown length. NaN is an unknown duration, and so is one of 0.
  std::optional<std::int64_t> secondsLeft(double second, double duration) const;

  friend bool operator==(const YMRSkipOffset&, const YMRSkipOffset&) = default;

 private:
  YMRSkipOffset(double value, bool isPercent) : value_(value), isPercent_(isPercent) {}

  double value_;
  bool isPercent_;
};
