#include "platform/avkit/ClockText.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "platform/foundation/NSString.h"

std::string clockText(double seconds) {
  if (!std::isfinite(seconds)) return {};
  // Past this no programme goes, and the conversion stays defined.
  const auto whole = static_cast<std::int64_t>(std::clamp(seconds, 0.0, 3.6e9));
  return stringWithFormat("%d:%02d:%02d", {whole / 3600, whole / 60 % 60, whole % 60});
}
