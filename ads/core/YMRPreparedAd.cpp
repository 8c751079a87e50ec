#include "ads/core/YMRPreparedAd.h"

#include "VAST/SKLogger.h"
#include "ads/core/YMRPlayerErrorHandler.h"

namespace {

constexpr const char* tag = "VAST - Model";

}  // namespace

YMRPreparedAd YMRPreparedAd::from(const YMRVastModel& model, const Pick& pick) {
  YMRPreparedAd ad;
  ad.profile = model.rules().profile();
  ad.sequence = model.adSequence();
  ad.trackingEvents = model.trackingEvents();
  ad.impressions = model.impressions();
  ad.errors = model.errors();
  const auto files = model.mediaFiles();
  ad.notRun = model.notRun();
  for (const auto& each : ad.notRun) {
    SKLogger::info(tag, "Not run: " + each.what + " (" + std::to_string(each.code) + ")");
  }
  if (files.empty()) {
    ad.failure = model.vastError().value_or(SKVASTErrorNoAd);
    ad.reason = model.vastErrorReason();
    ad.code = model.rules().codeOf(model, *ad.failure);
    return ad;
  }
  const auto picked = pick ? pick(files) : SKVASTMediaFilePicker::pick(files, ad.profile);
  if (!picked || !picked->url()) {
    ad.failure = picked ? SKVASTErrorMediaFileNotCompatible : SKVASTMediaFilePicker::errorOfNone();
    ad.code = model.rules().codeOf(model, *ad.failure);
    return ad;
  }
  ad.progress = model.progress();
  ad.skipOffset = model.skipOffset();
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

std::string YMRPreparedAd::errorCodeOfFilm(const NSError& error, SKVASTError otherwise) const {
  const auto known = rules().codeOfFilm(error);
  return known ? std::to_string(*known) : YMRPlayerErrorHandler::VASTErrorToErrorCode(otherwise);
}

std::string YMRPreparedAd::errorCode() const {
  if (code) return std::to_string(*code);
  return YMRPlayerErrorHandler::VASTErrorToErrorCode(failure.value_or(SKVASTErrorUnknown));
}
