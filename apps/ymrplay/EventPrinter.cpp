#include "apps/ymrplay/EventPrinter.h"

#include <cmath>
#include <utility>

#include "ads/YMRAd.h"
#include "vastscreen/SKVASTViewController.h"

namespace {

using Json = nlohmann::ordered_json;

// NaN and the infinities, which JSON does not have, are null.
Json number(double value) {
  return std::isfinite(value) ? Json(value) : Json(nullptr);
}

Json text(const std::optional<std::string>& value) {
  return value ? Json(*value) : Json(nullptr);
}

Json describe(const std::shared_ptr<YMRAd>& ad) {
  if (!ad) return nullptr;
  return {{"roll", YMRAd::getNameFromRoll(ad->roll())},
          {"offset", ad->offset()},
          {"vastUrl", ad->vastUrl() ? Json(ad->vastUrl()->absoluteString()) : Json(nullptr)},
          {"title", text(ad->adTitle())},
          {"description", text(ad->adDescription())}};
}

}  // namespace

EventPrinter::EventPrinter(std::function<double()> elapsed, Write write)
    : elapsed_(std::move(elapsed)), write_(std::move(write)) {}

void EventPrinter::print(std::string_view event, const Json& values) {
  Json line{{"t", std::round(elapsed_() * 1000) / 1000}, {"event", event}};
  line.update(values);
  write_(line.dump(-1, ' ', false, Json::error_handler_t::replace));
}

void EventPrinter::printAd(std::string_view event, const std::shared_ptr<YMRAd>& ad, const Json& values) {
  Json all{{"ad", describe(ad)}};
  all.update(values);
  print(event, all);
}

YMRVideoPlayerDelegate EventPrinter::delegate() {
  YMRVideoPlayerDelegate delegate;
  addProgrammeCallbacks(delegate);
  addAdCallbacks(delegate);
  return delegate;
}

void EventPrinter::addProgrammeCallbacks(YMRVideoPlayerDelegate& delegate) {
  delegate.videoOnPlay = [this] { print("videoOnPlay"); };
  delegate.videoOnPlayDuration = [this](double time, double duration) {
    print("videoOnPlayDuration", {{"time", number(time)}, {"duration", number(duration)}});
  };
  delegate.videoOnPause = [this](double time) { print("videoOnPause", {{"time", number(time)}}); };
  delegate.videoOnPauseDuration = [this](double time, double duration) {
    print("videoOnPauseDuration", {{"time", number(time)}, {"duration", number(duration)}});
  };
  delegate.videoOnTime = [this](double time) { print("videoOnTime", {{"time", number(time)}}); };
  delegate.videoOnTimeDuration = [this](double time, double duration) {
    print("videoOnTimeDuration", {{"time", number(time)}, {"duration", number(duration)}});
  };
  delegate.videoDidBuffer = [this] { print("videoDidBuffer"); };
  delegate.videoOnBuffer = [this] { print("videoOnBuffer"); };
  delegate.videoDidSeekTo = [this](double time) { print("videoDidSeekTo", {{"time", number(time)}}); };
  delegate.videoOnError = [this](const NSError& error) {
    print("videoOnError", {{"domain", error.domain}, {"code", error.code}, {"message", error.message}});
  };
  delegate.videoDidPlayFinished = [this] { print("videoDidPlayFinished"); };
  delegate.playerWillDismiss = [this] { print("playerWillDismiss"); };
  delegate.playerDidDismiss = [this] { print("playerDidDismiss"); };
  delegate.videoClosedCaptionDidChange = [this](const std::string& language) {
    print("videoClosedCaptionDidChange", {{"language", language}});
  };
}

void EventPrinter::addAdCallbacks(YMRVideoPlayerDelegate& delegate) {
  using Ad = std::shared_ptr<YMRAd>;
  const auto plain = [this](const char* event) { return [this, event](const Ad& ad) { printAd(event, ad); }; };
  const auto timed = [this](const char* event) {
    return [this, event](const Ad& ad, double duration, double second) {
      printAd(event, ad, {{"duration", number(duration)}, {"second", number(second)}});
    };
  };
  delegate.videoAdOnRequest = plain("videoAdOnRequest");
  delegate.videoAdOnResponse = plain("videoAdOnResponse");
  delegate.videoAdOnPodStart = plain("videoAdOnPodStart");
  delegate.videoAdOnStart = plain("videoAdOnStart");
  delegate.videoAdOnComplete = plain("videoAdOnComplete");
  delegate.videoAdOnPodComplete = plain("videoAdOnPodComplete");
  delegate.videoAdOnSkip = plain("videoAdOnSkip");
  delegate.videoAdOnTime = timed("videoAdOnTime");
  delegate.videoAdOnBuffer = timed("videoAdOnBuffer");
  delegate.videoAdOnPause = timed("videoAdOnPause");
  delegate.videoAdOnPlay = timed("videoAdOnPlay");
  delegate.videoAdOnPlayQuartile = [this](const Ad& ad, std::int32_t quartile, double duration) {
    printAd("videoAdOnPlayQuartile", ad, {{"quartile", quartile}, {"duration", number(duration)}});
  };
  delegate.videoAdOnError = [this](const Ad& ad, const std::string& message) {
    printAd("videoAdOnError", ad, {{"message", message}});
  };
  delegate.videoAdOnErrorDesc = [this](const Ad& ad, std::int32_t code, const std::string& message) {
    printAd("videoAdOnErrorDesc", ad, {{"code", code}, {"message", message}});
  };
}

SKVASTViewControllerDelegate EventPrinter::adScreenDelegate() {
  using Sender = SKVASTViewControllerDelegate::Sender;
  const auto plain = [this](const char* event) { return [this, event](const Sender&) { print(event); }; };
  SKVASTViewControllerDelegate delegate;
  delegate.vastReady = plain("vastReady");
  delegate.vastWillPresentFullScreen = plain("vastWillPresentFullScreen");
  delegate.vastDidDismissFullScreen = plain("vastDidDismissFullScreen");
  delegate.vastError = [this](const Sender& sender, SKVASTError error) {
    print("vastError", {{"code", error}, {"message", sender->errorMessage()}});
  };
  delegate.vastOpenBrowseWithUrl = [this](const NSURL& url) {
    print("vastOpenBrowseWithUrl", {{"url", url.absoluteString()}});
  };
  delegate.vastTrackingEvent = [this](const std::string& event) {
    print("vastTrackingEvent", {{"trackingEvent", event}});
  };
  return delegate;
}
