#include "platform/avkit/ClockText.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

std::string clockText(double seconds) {
  if (!std::isfinite(seconds)) return {};
  // Past this no programme goes, and the conversion stays defined.
  const auto whole = static_cast<long>(std::clamp(seconds, 0.0, 3.6e9));
  char text[32];
  std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60, whole % 60);
  return text;
}
