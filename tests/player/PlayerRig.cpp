#include "tests/player/PlayerRig.h"

#include <gmock/gmock.h>

#include <QGuiApplication>
#include <algorithm>
#include <cstdio>

#include "tests/player/states/RecordingHub.h"

namespace {

// Views need the application object, once for the whole program.
class Application : public testing::Environment {
 public:
  void SetUp() override { application_ = std::make_unique<QGuiApplication>(argc_, argv_); }
  void TearDown() override { application_ = nullptr; }

 private:
  int argc_ = 1;
  char name_[5] = "test";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<QGuiApplication> application_;
};
[[maybe_unused]] const auto* application = testing::AddGlobalTestEnvironment(new Application);

std::string nameOf(const std::string& line) {
  return line.substr(0, line.find_first_of(" :"));
}

}  // namespace

const std::vector<std::string>& RecordingHost::callbacks() {
  static const std::vector<std::string> names{"videoOnPlay",          "videoOnPlayDuration",
                                              "videoOnPause",         "videoOnPauseDuration",
                                              "videoOnTime",          "videoOnTimeDuration",
                                              "videoDidBuffer",       "videoOnBuffer",
                                              "videoDidSeekTo",       "videoOnError",
                                              "videoDidPlayFinished", "playerWillDismiss",
                                              "playerDidDismiss",     "videoClosedCaptionDidChange"};
  return names;
}

RecordingHost::RecordingHost() {
  auto& to = *delegate;
  to.videoOnPlay = [this] { hear("videoOnPlay"); };
  to.videoOnPlayDuration = [this](double time, double duration) { hear("videoOnPlayDuration", {time, duration}); };
  to.videoOnPause = [this](double time) { hear("videoOnPause", {time}); };
  to.videoOnPauseDuration = [this](double time, double duration) { hear("videoOnPauseDuration", {time, duration}); };
  to.videoOnTime = [this](double time) { hear("videoOnTime", {time}); };
  to.videoOnTimeDuration = [this](double time, double duration) { hear("videoOnTimeDuration", {time, duration}); };
  to.videoDidBuffer = [this] { hear("videoDidBuffer"); };
  to.videoOnBuffer = [this] { hear("videoOnBuffer"); };
  to.videoDidSeekTo = [this](double time) { hear("videoDidSeekTo", {time}); };
  to.videoOnError = [this](const NSError& error) { hear("videoOnError", {static_cast<double>(error.code)}); };
  to.videoDidPlayFinished = [this] { hear("videoDidPlayFinished"); };
  to.playerWillDismiss = [this] { hear("playerWillDismiss"); };
  to.playerDidDismiss = [this] { hear("playerDidDismiss"); };
  to.videoClosedCaptionDidChange = [this](const std::string& tag) { hear("videoClosedCaptionDidChange:" + tag); };
}

void RecordingHost::hearOfAds() {
  using Ad = YMRVideoPlayerDelegate::Ad;
  auto& to = *delegate;
  const auto aboutAd = [this](const char* name) {
    return [this, name](const Ad& ad) { hear(name + (":" + YMRAd::getNameFromRoll(ad->roll()))); };
  };
  const auto withTimes = [this](const char* name) {
    return [this, name](const Ad&, double duration, double second) { hear(name, {duration, second}); };
  };
  to.videoAdOnRequest = aboutAd("videoAdOnRequest");
  to.videoAdOnResponse = aboutAd("videoAdOnResponse");
  to.videoAdOnPodStart = aboutAd("videoAdOnPodStart");
  to.videoAdOnStart = aboutAd("videoAdOnStart");
  to.videoAdOnComplete = aboutAd("videoAdOnComplete");
  to.videoAdOnPodComplete = aboutAd("videoAdOnPodComplete");
  to.videoAdOnTime = withTimes("videoAdOnTime");
  to.videoAdOnBuffer = withTimes("videoAdOnBuffer");
  to.videoAdOnPause = withTimes("videoAdOnPause");
  to.videoAdOnPlay = withTimes("videoAdOnPlay");
  to.videoAdOnPlayQuartile = [this](const Ad&, int quartile, double duration) {
    hear("videoAdOnPlayQuartile", {static_cast<double>(quartile), duration});
  };
  to.videoAdOnError = [this](const Ad&, const std::string& message) { hear("videoAdOnError:" + message); };
  to.videoAdOnErrorDesc = [this](const Ad&, int code, const std::string&) {
    hear("videoAdOnErrorDesc", {static_cast<double>(code)});
  };
}

const std::vector<std::string>& RecordingHost::adCallbacks() {
  static const std::vector<std::string> names{
      "videoAdOnRequest",  "videoAdOnResponse",    "videoAdOnPodStart", "videoAdOnStart", "videoAdOnTime",
      "videoAdOnBuffer",   "videoAdOnPause",       "videoAdOnPlay",     "videoAdOnError", "videoAdOnPlayQuartile",
      "videoAdOnComplete", "videoAdOnPodComplete", "videoAdOnErrorDesc"};
  return names;
}

void RecordingHost::leaveOut(const std::string& callback) {
  if (callback == "videoDidPlayFinished") delegate->videoDidPlayFinished = nullptr;
  if (callback == "playerDidDismiss") delegate->playerDidDismiss = nullptr;
}

Lines RecordingHost::heardOf(const std::vector<std::string>& wanted) const {
  Lines lines;
  for (const auto& line : heard) {
    if (std::find(wanted.begin(), wanted.end(), nameOf(line)) != wanted.end()) lines.push_back(line);
  }
  return lines;
}

int RecordingHost::count(const std::string& callback) const {
  return static_cast<int>(heardOf({callback}).size());
}

void RecordingHost::hear(const std::string& callback, std::initializer_list<double> numbers) {
  std::string line = callback;
  for (const double number : numbers) {
    char text[32];
    std::snprintf(text, sizeof text, " %g", number);
    line += text;
  }
  heard.push_back(line);
  if (const auto found = inside.find(callback.substr(0, callback.find(':'))); found != inside.end()) {
    const auto act = found->second;  // which may replace itself
    act();
  }
}

PlayerRig::PlayerRig() : player(std::make_unique<YMRVideoPlayer>()) {
  media.script(film).duration = 60;
  player->setDelegate(host.delegate);
}

std::shared_ptr<YMRMediaItem> PlayerRig::item(const std::string& url) {
  return YMRMediaItem::itemWithUrl(NSURL::URLWithString(url));
}

void PlayerRig::playFilm(std::int64_t startPosition) {
  player->playWithMediaItem(item(), startPosition);
  EXPECT_TRUE(loop.advanceUntil([this] { return hub().vodPlayer() && hub().vodPlayer()->rate() == 1; }, 5s));
}

std::string PlayerRig::state() {
  return RecordingHub::nameOf(*hub().playerState());
}
