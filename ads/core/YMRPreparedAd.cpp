#include "ads/core/YMRPreparedAd.h"

#include "VAST/Parser/YMRVastModel.h"
#include "ads/core/YMRPlayerErrorHandler.h"

YMRPreparedAd YMRPreparedAd::from(const YMRVastModel& model, const Pick& pick) {
  YMRPreparedAd ad;
  ad.trackingEvents = model.trackingEvents();
  ad.impressions = model.impressions();
  ad.errors = model.errors();
  const auto files = model.mediaFiles();
  if (files.empty()) {
    ad.failure = model.vastError().value_or(SKVASTErrorNoAd);
    ad.reason = model.vastErrorReason();
    return ad;
  }
  const auto picked = pick(files);
  if (!picked || !picked->url()) {
    ad.failure = picked ? SKVASTErrorMediaFileNotCompatible : SKVASTMediaFilePicker::errorOfNone();
    return ad;
  }
  ad.mediaFile = picked;
  ad.title = model.adTitle();
  ad.description = model.adDescription();
  return ad;
}

bool YMRPreparedAd::foundNothing() const {
  return failure == SKVASTErrorNoAd || failure == SKVASTErrorNoAdAfterWrappers;
}

std::string YMRPreparedAd::message() const {
  return YMRPlayerErrorHandler::messageOf(failure.value_or(SKVASTErrorUnknown), reason);
}

std::string YMRPreparedAd::errorCode() const {
  return YMRPlayerErrorHandler::VASTErrorToErrorCode(failure.value_or(SKVASTErrorUnknown));
}
