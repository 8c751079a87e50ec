#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "platform/dispatch/VirtualRunLoop.h"
#include "player/YMRVideoPlayer.h"
#include "player/YMRVideoPlayerImpl.h"
#include "tests/support/ScreenTest.h"
#include "tests/support/ScriptedMediaEngine.h"
#include "tests/support/ScriptedURLLoader.h"

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

// A host that answers every callback and writes each down as text: "videoOnPause 12", "videoOnError -11800",
// "videoAdOnStart:Midroll", "videoAdOnTime 8 3", "videoAdOnErrorDesc 10".
class RecordingHost {
 public:
  RecordingHost();

  // What was heard of these callbacks only.
  Lines heardOf(const std::vector<std::string>& callbacks) const;
  int count(const std::string& callback) const;

  std::shared_ptr<YMRVideoPlayerDelegate> delegate = std::make_shared<YMRVideoPlayerDelegate>();
  Lines callbacks;  // the names of all
  Lines heard;
  // Runs inside the callback of this name, after it has been written down.
  std::map<std::string, std::function<void()>> inside;

 private:
  template <typename... Values>
  void listen(std::function<void(Values...)>& slot, const std::string& name);
  void hear(const std::string& callback, const std::string& values);
};

// A player on virtual time: scripted media, a scripted loader, a host that listens; no window.
class PlayerRig {
 public:
  static constexpr const char* film = "http://media.example/film.mp4";

  PlayerRig() {
    media.script(film).duration = 60;
    player->setDelegate(host.delegate);
  }

  YMRVideoPlayerImpl& hub() { return *player->ymrPlayer(); }
  static std::shared_ptr<YMRMediaItem> item(const std::string& url = film) {
    return YMRMediaItem::itemWithUrl(NSURL::URLWithString(url));
  }
  // Asks for the film and lets it begin.
  void playFilm(std::int64_t startPosition = 0) {
    player->playWithMediaItem(item(), startPosition);
    EXPECT_TRUE(loop.advanceUntil([this] { return hub().vodPlayer() && hub().vodPlayer()->rate() == 1; }, 5s));
  }
  ScriptedMediaEngine& engine() { return *media.engine(film); }
  // "PausedVideo" for a YMRPlayerStatePausedVideo.
  std::string state() {
    const auto& state = *hub().playerState();
    const std::string_view name = typeid(state).name();
    return std::string(name.substr(name.find("State") + 5));
  }

  QGuiApplication& application = screenApplication();  // which views need
  VirtualRunLoop loop;
  ScriptedMedia media;
  ScriptedLoaderInPlace net;
  RecordingHost host;
  std::unique_ptr<YMRVideoPlayer> player = std::make_unique<YMRVideoPlayer>();
};
