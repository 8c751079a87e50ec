#include "VAST/Parser/YMRTagRules.h"

#include "VAST/Parser/YMRProfiles.h"

const YMRTagRules& YMRTagRules::of(YMRTagProfile profile) {
  static const YMRExactRules exact;
  static const YMRBroadRules broad;
  if (profile == YMRTagProfileBroad) return broad;
  return exact;
}
