#include "player/states/YMRPlayerStateRules.h"

#include "VAST/SKLogger.h"
#include "platform/foundation/NSString.h"

std::optional<std::uint32_t> quartileEventDue(double second, double duration, int reported) {
  if (reported < 0 || reported > 2) return std::nullopt;
  constexpr std::uint32_t firstQuartileEvent = 2;
  // Single precision, so that rounding in the division is no progress.
  const auto share = static_cast<float>(second / duration * 100.0);
  if (!(share > 25.0f * static_cast<float>(reported + 1))) return std::nullopt;
  return firstQuartileEvent + static_cast<std::uint32_t>(reported);
}

void reportProgrammeJump(const NSNotification& notification, YMRPlayerStateHub& ymrPlayer) {
  const NSObject* item = notification.object.get();
  SKLogger::debug(ymrPlayerTag, "Video did Seek " + stringWithDouble(ymrPlayer.itemTime(item), 6) + " / " +
                                    stringWithDouble(ymrPlayer.itemDuration(item), 6));
  ymrPlayer.tell(&YMRVideoPlayerDelegate::videoDidSeekTo, ymrPlayer.itemTime(item));
}
