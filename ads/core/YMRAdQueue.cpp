#include "ads/core/YMRAdQueue.h"

#include <algorithm>
#include <utility>

#include "VAST/Parser/YMRVastModel.h"
#include "VAST/SKLogger.h"

namespace {

// How many ads are looked at ahead of their turn.
constexpr std::size_t foreseenLimit = 8;

constexpr int replacementsLimit = 5;

}  // namespace

YMRAdQueue::YMRAdQueue(YMRVastModel& request) {
  const auto models = request.sequencedAdModels();
  models_.assign(models.begin(), models.end());
  totalCount_ = static_cast<int>(models.size());
}

std::optional<YMRPreparedAd> YMRAdQueue::foresee(const YMRPreparedAd::Pick& pick) const {
  const SKLogger::Silence silence;
  for (std::size_t ahead = 0; ahead < std::min(models_.size(), foreseenLimit); ++ahead) {
    auto ad = YMRPreparedAd::from(*models_[ahead], pick);
    if (!ad.failure) return ad;
    if (!ad.rules().isReplacedAfter(*ad.failure)) continue;
    const auto standalone = models_[ahead]->nextStandaloneAd();
    if (!standalone) continue;
    ad = YMRPreparedAd::from(*standalone, pick);
    return ad.failure ? std::nullopt : std::optional(std::move(ad));
  }
  return std::nullopt;
}

YMRPreparedAd YMRAdQueue::takeNext(const YMRPreparedAd::Pick& pick) {
  const auto model = std::move(models_.front());
  models_.pop_front();
  auto ad = YMRPreparedAd::from(*model, pick);
  if (ad.rules().isReplacedAfter(ad.failure.value_or(SKVASTErrorPlayback))) {
    ad.replaceable = model;
    if (ad.failure) putReplacement(ad);
  } else {
    model->setParent(nullptr);
  }
  return ad;
}

void YMRAdQueue::replace(YMRPreparedAd& ad) {
  if (ad.replaceable && replacedFilms_++ < replacementsLimit) return putReplacement(ad);
  ad.replaceable = nullptr;
}

void YMRAdQueue::putReplacement(YMRPreparedAd& ad) {
  const auto model = std::exchange(ad.replaceable, nullptr);
  if (!model) return;
  const auto standalone = model->sequencedAdModelsOfStandaloneAd();
  models_.insert(models_.begin(), standalone.begin(), standalone.end());
  model->setParent(nullptr);
}

void YMRAdQueue::clear() {
  for (const auto& model : models_) model->setParent(nullptr);
  models_.clear();
  totalCount_ = 0;
}
