// Many players at once in one host, each in a window of its own: whether each comes to its end, and what memory that
// takes, of the host and of its media processes.
//
//   bench_fifty CLIP [PLAYERS] [host]     "host": the engines in the host's process instead
#include <QGuiApplication>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

#include "bench/stress/Belongings.h"
#include "platform/avfoundation/engine/MediaEngine.h"
#include "platform/uikit/UIWindow.h"
#include "player/YMRVideoPlayer.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Screen {
  explicit Screen(const NSURL& url) {
    window.setRootViewController(std::make_shared<UIViewController>());
    window.makeKeyAndVisible();
    delegate->videoOnError = [this](const NSError& error) {
      hasFailed = true;
      std::fprintf(stderr, "%s\n", error.message.c_str());
    };
    delegate->videoDidPlayFinished = [this] { hasEnded = true; };
    delegate->videoOnTime = [this](double) { isPlaying = true; };
    player.setDelegate(delegate);
    player.presentWithController(window.rootViewController());
    player.playWithMediaItem(YMRMediaItem::itemWithUrl(url), 0);
  }

  UIWindow window{CGSize{320, 180}, UIGraphics::software};
  std::shared_ptr<YMRVideoPlayerDelegate> delegate = std::make_shared<YMRVideoPlayerDelegate>();
  YMRVideoPlayer player;
  bool isPlaying = false, hasEnded = false, hasFailed = false;
};

// The most that there was at once, in MiB.
struct Memory {
  double host = 0, processes = 0;
  std::size_t count = 0;
};

Memory memory() {
  Memory now{memoryOf(getpid()), 0, 0};
  for (const int child : children()) now.processes += memoryOf(child), ++now.count;
  return now;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || !NSURL::URLFromUserInput(argv[1])) {
    std::fputs("usage: bench_fifty CLIP [PLAYERS] [host]\n", stderr);
    return 2;
  }
  const int wanted = argc > 2 ? std::atoi(argv[2]) : 50;
  if (argc > 3 && std::string_view(argv[3]) == "host") {
    MediaEngineSettings::shared().process = MediaEngineSettings::Process::host;
  }
  MediaEngineSettings::shared().audio = MediaEngineSettings::Audio::none;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QGuiApplication application(argc, argv);
  const auto began = Clock::now();
  const auto elapsed = [&] { return std::chrono::duration<double>(Clock::now() - began).count(); };
  const auto url = NSURL::URLFromUserInput(argv[1]);
  std::vector<std::unique_ptr<Screen>> screens;
  for (int one = 0; one < wanted; ++one) screens.push_back(std::make_unique<Screen>(*url));
  const auto count = [&](bool Screen::*field) {
    return std::ranges::count_if(screens, [field](const auto& screen) { return (*screen).*field; });
  };
  Memory most;
  double looked = 0;
  while (count(&Screen::hasEnded) + count(&Screen::hasFailed) < wanted && elapsed() < 180) {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    if (elapsed() < looked + 2) continue;
    looked = elapsed();
    const Memory now = memory();
    if (now.host + now.processes > most.host + most.processes) most = now;
  }
  std::printf("%d players at once: %d played, %d came to the end, %.1f s\n", wanted,
              static_cast<int>(count(&Screen::isPlaying)), static_cast<int>(count(&Screen::hasEnded)), elapsed());
  std::printf("memory: host %.0f MiB, %zu media processes %.0f MiB, %.1f MiB a player in all\n", most.host, most.count,
              most.processes, (most.host + most.processes) / wanted);
  return count(&Screen::hasEnded) == wanted ? 0 : 1;
}
