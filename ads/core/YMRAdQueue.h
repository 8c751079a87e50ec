#pragma once

#include <deque>
#include <memory>
#include <optional>

#include "ads/core/YMRPreparedAd.h"
#include "platform/Export.h"

class YMRVastModel;

// The ads of a break that are still to be played, in order. Taking them uses up the stand-alone ads of their models. No
// locks: one thread at a time.
class YMR_API YMRAdQueue {
 public:
  // Empty.
  YMRAdQueue() = default;
  // The ads that a resolved request found: its pod, or its only ad.
  explicit YMRAdQueue(YMRVastModel& request);

  bool isEmpty() const { return models_.empty(); }
  // How many ads there were at first; a stand-alone ad that takes the place of another one does not count.
  int totalCount() const { return totalCount_; }
  bool isPod() const { return totalCount_ >= 2; }
  // Whether as many are left as there were at first.
  bool isWhole() const { return static_cast<int>(models_.size()) == totalCount_; }
  // Which of them was taken last, from 1.
  int number() const { return totalCount_ - static_cast<int>(models_.size()); }

  // The first of the ads to come that has a film, as things stand; nothing is taken, and nothing logged. nil when there
  // is none among the next few, or when it can't be known without taking others.
  std::optional<YMRPreparedAd> foresee(const YMRPreparedAd::Pick& pick = nullptr) const;
  // The ad whose turn is next. Not when empty.
  const std::shared_ptr<YMRVastModel>& next() const { return models_.front(); }
  // Takes it out, parted from its pod. When it failed in a way that lets one take its place, its pod's next stand-alone
  // ad is now next. Not when empty.
  YMRPreparedAd takeNext(const YMRPreparedAd::Pick& pick = nullptr);
  // The ad, taken from here, has failed as it was to be played, and nothing of it was seen: its pod's next stand-alone
  // ad is now next where its profile lets that take its place; five times, since each film may take long to fail.
  void replace(YMRPreparedAd& ad);
  // Parts the ads from their pods and lets go of them.
  void clear();

 private:
  void putReplacement(YMRPreparedAd& ad);

  std::deque<std::shared_ptr<YMRVastModel>> models_;
  int totalCount_ = 0;
  int replacedFilms_ = 0;
};
