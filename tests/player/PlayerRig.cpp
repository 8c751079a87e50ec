#include "tests/player/PlayerRig.h"

#include <algorithm>
#include <cstdio>

namespace {

// What a callback says, as text: of an ad only its roll, and that where nothing follows.
std::string shown() {
  return "";
}
std::string shown(double number) {
  char text[32];
  std::snprintf(text, sizeof text, " %g", number);
  return text;
}
std::string shown(double one, double other) {
  return shown(one) + shown(other);
}
std::string shown(int code, const std::string&) {
  return shown(code);
}
std::string shown(const NSError& error) {
  return shown(static_cast<double>(error.code));
}
std::string shown(const std::string& text) {
  return ":" + text;
}
std::string shown(const std::shared_ptr<YMRAd>& ad) {
  return ":" + YMRAd::getNameFromRoll(ad->roll());
}
template <typename First, typename... More>
std::string shown(const std::shared_ptr<YMRAd>&, const First& first, const More&... more) {
  return shown(first, more...);
}

}  // namespace

template <typename... Values>
void RecordingHost::listen(std::function<void(Values...)>& slot, const std::string& name) {
  callbacks.push_back(name);
  slot = [this, name](const auto&... values) { hear(name, shown(values...)); };
}

RecordingHost::RecordingHost() {
  auto& to = *delegate;
  listen(to.videoOnPlay, "videoOnPlay");
  listen(to.videoOnPlayDuration, "videoOnPlayDuration");
  listen(to.videoOnPause, "videoOnPause");
  listen(to.videoOnPauseDuration, "videoOnPauseDuration");
  listen(to.videoOnTime, "videoOnTime");
  listen(to.videoOnTimeDuration, "videoOnTimeDuration");
  listen(to.videoDidBuffer, "videoDidBuffer");
  listen(to.videoOnBuffer, "videoOnBuffer");
  listen(to.videoDidSeekTo, "videoDidSeekTo");
  listen(to.videoOnError, "videoOnError");
  listen(to.videoDidPlayFinished, "videoDidPlayFinished");
  listen(to.playerWillDismiss, "playerWillDismiss");
  listen(to.playerDidDismiss, "playerDidDismiss");
  listen(to.videoClosedCaptionDidChange, "videoClosedCaptionDidChange");
  listen(to.videoAdOnRequest, "videoAdOnRequest");
  listen(to.videoAdOnResponse, "videoAdOnResponse");
  listen(to.videoAdOnPodStart, "videoAdOnPodStart");
  listen(to.videoAdOnStart, "videoAdOnStart");
  listen(to.videoAdOnComplete, "videoAdOnComplete");
  listen(to.videoAdOnPodComplete, "videoAdOnPodComplete");
  listen(to.videoAdOnSkip, "videoAdOnSkip");
  listen(to.videoAdOnTime, "videoAdOnTime");
  listen(to.videoAdOnBuffer, "videoAdOnBuffer");
  listen(to.videoAdOnPause, "videoAdOnPause");
  listen(to.videoAdOnPlay, "videoAdOnPlay");
  listen(to.videoAdOnPlayQuartile, "videoAdOnPlayQuartile");
  listen(to.videoAdOnError, "videoAdOnError");
  listen(to.videoAdOnErrorDesc, "videoAdOnErrorDesc");
}

Lines RecordingHost::heardOf(const std::vector<std::string>& wanted) const {
  Lines lines;
  for (const auto& line : heard) {
    const auto name = line.substr(0, line.find_first_of(" :"));
    if (std::find(wanted.begin(), wanted.end(), name) != wanted.end()) lines.push_back(line);
  }
  return lines;
}

int RecordingHost::count(const std::string& callback) const {
  return static_cast<int>(heardOf({callback}).size());
}

void RecordingHost::hear(const std::string& callback, const std::string& values) {
  heard.push_back(callback + values);
  if (const auto found = inside.find(callback); found != inside.end()) {
    const auto act = found->second;  // which may replace itself
    act();
  }
}
