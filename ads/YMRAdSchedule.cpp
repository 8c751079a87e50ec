#include "ads/YMRAdSchedule.h"

#include <algorithm>

#include "platform/foundation/NSException.h"

YMRAdSchedule::YMRAdSchedule() {
  setAttrs();
}

void YMRAdSchedule::setAttrs() {
  adCountdownFont_ = UIFont::systemFontOfSize(32);
  adCountdownTextColor_ = UIColor::whiteColor();
  adCountdownStrokeColor_ = UIColor::blackColor();
  adCountdownStrokeWidth_ = 10;
}

void YMRAdSchedule::addAdBreak(const std::shared_ptr<YMRAd>& adBreak) {
  if (!adBreak) return;
  switch (adBreak->roll()) {
    case YMRAdRollPre:
      preRolls_->push_back(adBreak);
      break;
    case YMRAdRollMid:
      addMidRoll(adBreak);
      break;
    case YMRAdRollPost:
      postRolls_->push_back(adBreak);
      break;
  }
}

void YMRAdSchedule::addMidRoll(const std::shared_ptr<YMRAd>& adBreak) {
  if (!adBreak) return;
  const auto offset = adBreak->offset();
  auto& offsets = *midRollOffsets_;
  auto& groups = *midRolls_;
  const auto above = std::upper_bound(offsets.begin(), offsets.end(), offset);
  if (above == offsets.begin() && !offsets.empty()) {
    throw NSRangeException("a mid-roll at " + std::to_string(offset) + " s comes before the first one, at " +
                           std::to_string(offsets.front()) + " s");
  }
  const auto index = above - offsets.begin();
  if (index > 0 && offsets[static_cast<std::size_t>(index) - 1] == offset) {
    groups[static_cast<std::size_t>(index) - 1].push_back(adBreak);
    return;
  }
  groups.insert(groups.begin() + index, Breaks{adBreak});
  offsets.insert(above, offset);
}

std::shared_ptr<YMRAdSchedule> YMRAdSchedule::copy() const {
  return std::make_shared<YMRAdSchedule>(*this);
}
