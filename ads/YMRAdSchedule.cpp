#include "ads/YMRAdSchedule.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/foundation/NSException.h"

namespace {

VMAPParser::Completion finishing(const YMRAdSchedule::Completion& completion, YMRTagProfile profile) {
  return [completion, profile](const VMAPParser::Result& result) {
    if (!result.document) return completion(nullptr, result.problem);
    const auto schedule = std::make_shared<YMRAdSchedule>();
    schedule->setTagProfile(profile);
    schedule->addBreaks(*result.document);
    completion(schedule, "");
  };
}

}  // namespace

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

void YMRAdSchedule::addBreaks(const VMAPDocument& document) {
  Breaks midRolls;
  for (const auto& each : document.breaks) {
    if (!each.refusal.empty()) continue;
    auto listed = std::make_shared<const VMAPBreak>(each);
    if (listed->percent) {
      shares_->push_back(std::move(listed));
      continue;
    }
    auto made = YMRAd::initWithListedBreak(listed, listed->second.value_or(0));
    made->roll() == YMRAdRollMid ? midRolls.push_back(std::move(made)) : addAdBreak(made);
  }
  mergeMidRolls(std::move(midRolls));
}

void YMRAdSchedule::scheduleWithVMAPUrl(const NSURL& url, const Completion& completion, YMRTagProfile profile) {
  VMAPParser::parseWithUrl(url, finishing(completion, profile), profile);
}

void YMRAdSchedule::scheduleWithVMAPData(std::vector<std::byte> document, const Completion& completion,
                                         YMRTagProfile profile) {
  VMAPParser::parseWithData(std::move(document), finishing(completion, profile));
}

void YMRAdSchedule::placeShares(double duration) {
  if (!std::isfinite(duration) || duration <= 0) return;
  Breaks midRolls;
  for (auto& listed : std::exchange(*shares_, {})) {
    const auto second = static_cast<std::uint64_t>(std::ceil(duration * *listed->percent / 100));
    midRolls.push_back(YMRAd::initWithListedBreak(std::move(listed), second));
  }
  mergeMidRolls(std::move(midRolls));
}

// Sorts all at once: a document may list thousands, in any order.
void YMRAdSchedule::mergeMidRolls(Breaks breaks) {
  if (breaks.empty()) return;
  for (const auto& group : *midRolls_) breaks.insert(breaks.end(), group.begin(), group.end());
  const auto rank = [](const std::shared_ptr<YMRAd>& each) {
    const auto& listed = each->listedBreak();
    return std::pair(each->offset(), listed ? listed->number + 1 : 0);
  };
  std::erase(breaks, nullptr);
  std::ranges::stable_sort(breaks, {}, rank);
  midRolls_->clear();
  midRollOffsets_->clear();
  for (auto& each : breaks) addMidRoll(each);
}

std::optional<std::size_t> YMRAdSchedule::midRollAfterJump(double from, double to) const {
  std::optional<std::size_t> missed, next;
  for (std::size_t index = 0; index < midRolls_->size() && !next; ++index) {
    const auto& group = (*midRolls_)[index];
    if (std::ranges::count(group, nullptr) == std::ssize(group)) continue;
    const auto offset = static_cast<double>((*midRollOffsets_)[index]);
    if (missedBreaks_ == YMRMissedBreaksLast && offset > from && offset <= to) {
      missed = index;
    } else if (offset >= to) {
      next = index;
    }
  }
  return missed ? missed : next;
}

std::shared_ptr<YMRAdSchedule> YMRAdSchedule::copy() const {
  return std::make_shared<YMRAdSchedule>(*this);
}
