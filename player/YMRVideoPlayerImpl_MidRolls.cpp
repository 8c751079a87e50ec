// Which mid-roll is next, when it is due, what a jump over some of them makes of it, and their marks on the bar.
#include <algorithm>
#include <cmath>
#include <utility>

#include "player/YMRVideoPlayerImpl.h"

namespace {

// The programme ticks once a second: from one tick it gets no further than this by playing on.
constexpr double tickReach = 1.5;

bool isArmedMidRoll(const std::shared_ptr<YMRAd>& adBreak) {
  return adBreak && adBreak->roll() == YMRAdRollMid && !adBreak->isPlayed();
}

}  // namespace

bool YMRVideoPlayerImpl::placeShares() {
  if (!adSchedule_ || !adSchedule_->hasShares()) return false;
  const double duration = programmeDuration();
  if (!std::isfinite(duration) || duration <= 0) return false;
  // What is armed goes back into its list, which is looked through from its beginning: it may not be the next any more.
  if (isArmedMidRoll(currentAdBreak_) && adState_ == YMRAdStateMidRoll) {
    auto& groups = *adSchedule_->midRolls();
    if (currentMidRollOffsetIndex_ < groups.size()) {
      auto& group = groups[currentMidRollOffsetIndex_];
      group.insert(group.begin(), currentAdBreak_);
    }
    currentAdBreak_ = nullptr;
  }
  adSchedule_->placeShares(duration);
  currentMidRollOffsetIndex_ = 0;
  return true;
}

void YMRVideoPlayerImpl::startMidRoll() {
  placeShares();
  if (!adSchedule_ || adSchedule_->midRollOffsets()->empty()) {
    adState_ = YMRAdStatePostRoll;
    currentAdBreak_ = nullptr;
    return;
  }
  adState_ = YMRAdStateMidRoll;
  auto& groups = *adSchedule_->midRolls();
  // After a jump while a break was under way only those of its own moment follow it by themselves.
  const bool hasJumped = jump_ && !jump_->isReckonedWith;
  const auto end = hasJumped ? std::min(currentMidRollOffsetIndex_ + 1, groups.size()) : groups.size();
  for (auto index = currentMidRollOffsetIndex_; index < end; ++index) {
    if (auto next = takeFirst(groups[index])) {
      currentAdBreak_ = std::move(next);
      currentMidRollOffsetIndex_ = index;
      return;
    }
  }
  if (hasJumped) chooseMidRollAfterJump();
}

bool YMRVideoPlayerImpl::playMidRollDueAt(const CMTime& time) {
  if (!adSchedule_ || adState_ != YMRAdStateMidRoll || isBreakUnderWay() || !isArmedMidRoll(currentAdBreak_)) {
    return false;
  }
  const auto& offsets = *adSchedule_->midRollOffsets();
  if (currentMidRollOffsetIndex_ >= offsets.size()) return false;
  const auto offset = static_cast<double>(offsets[currentMidRollOffsetIndex_]);
  if (!(offset <= std::trunc(CMTimeGetSeconds(time)))) return false;
  const auto due = currentAdBreak_;
  playVastUrl(due->vastUrl());
  due->setIsPlayed(true);
  return true;
}

// A break's own seek, to where the programme was stopped, is no jump, nor is what a host does with it behind an ad.
void YMRVideoPlayerImpl::programmeDidJump() {
  if (!adSchedule_ || adSchedule_->missedBreaks() == YMRMissedBreaksAll || adState_ != YMRAdStateMidRoll ||
      breakStage_ == BreakStage::onScreen) {
    return;
  }
  const double to = currentPosition();
  if (to >= tickedAt_ && to <= tickedAt_ + tickReach) return;
  jump_ = {jump_ ? jump_->from : tickedAt_, to, false};
  if (!isBreakUnderWay()) chooseMidRollAfterJump();
}

void YMRVideoPlayerImpl::chooseMidRollAfterJump() {
  jump_->isReckonedWith = true;
  auto& groups = *adSchedule_->midRolls();
  const auto& offsets = *adSchedule_->midRollOffsets();
  const auto former = currentMidRollOffsetIndex_;
  // What was next goes back to those that wait, unless the schedule is another one by now.
  if (isArmedMidRoll(currentAdBreak_) && former < groups.size() && offsets[former] == currentAdBreak_->offset()) {
    groups[former].insert(groups[former].begin(), currentAdBreak_);
  }
  const auto next = adSchedule_->midRollAfterJump(jump_->from, jump_->to);
  currentAdBreak_ = next ? takeFirst(groups[*next]) : nullptr;
  if (next) currentMidRollOffsetIndex_ = *next;
}

void YMRVideoPlayerImpl::followMidRolls(const CMTime& time) {
  if (jump_ && jump_->isReckonedWith) jump_.reset();
  if (breakStage_ != BreakStage::onScreen) tickedAt_ = CMTimeGetSeconds(time);
  playMidRollDueAt(time);
  markBreaks();
}

void YMRVideoPlayerImpl::markBreaks() {
  const auto item = vodPlayer_ ? vodPlayer_->currentItem() : nullptr;
  if (!item) return;
  std::vector<CMTimeRange> marks;
  const bool isBeforeOrInProgramme = adState_ == YMRAdStatePreRoll || adState_ == YMRAdStateMidRoll;
  if (adSchedule_ && adSchedule_->showsBreakMarks() && isBeforeOrInProgramme) {
    const auto& groups = *adSchedule_->midRolls();
    for (std::size_t index = 0; index < groups.size(); ++index) {
      const bool isNext = index == currentMidRollOffsetIndex_ && isArmedMidRoll(currentAdBreak_);
      if (!isNext && groups[index].empty()) continue;
      const auto offset = static_cast<double>((*adSchedule_->midRollOffsets())[index]);
      marks.push_back({CMTimeMakeWithSeconds(offset, 1), kCMTimeZero});
    }
  }
  item->setInterstitialTimeRanges(std::move(marks));
}
