#include "ads/core/YMRAdQueue.h"

#include <utility>

#include "VAST/Parser/YMRVastModel.h"

namespace {

constexpr int replacementsLimit = 5;

}  // namespace

YMRAdQueue::YMRAdQueue(YMRVastModel& request) {
  const auto models = request.sequencedAdModels();
  models_.assign(models.begin(), models.end());
  totalCount_ = static_cast<int>(models.size());
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
