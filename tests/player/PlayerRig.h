#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "platform/dispatch/VirtualRunLoop.h"
#include "player/YMRVideoPlayer.h"
#include "player/YMRVideoPlayerImpl.h"
#include "tests/player/RecordingHost.h"
#include "tests/support/ScreenTest.h"
#include "tests/support/ScriptedMediaEngine.h"
#include "tests/support/ScriptedURLLoader.h"

using namespace std::chrono_literals;

// A player on virtual time: scripted media, a scripted loader, a host that listens; no window.
class PlayerRig {
 public:
  static constexpr const char* film = "http://media.example/film.mp4";

  PlayerRig();

  YMRVideoPlayerImpl& hub() { return *player->ymrPlayer(); }
  static std::shared_ptr<YMRMediaItem> item(const std::string& url = film);
  // Asks for the film and lets it begin.
  void playFilm(std::int64_t startPosition = 0);
  ScriptedMediaEngine& engine() { return *media.engine(film); }
  // "PausedVideo" for a YMRPlayerStatePausedVideo.
  std::string state();

  QGuiApplication& application = screenApplication();  // which views need
  VirtualRunLoop loop;
  ScriptedMedia media;
  ScriptedLoaderInPlace net;
  RecordingHost host;
  std::unique_ptr<YMRVideoPlayer> player;
};
