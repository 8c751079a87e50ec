// Time to the first picture on the screen after playWithMediaItem(), with the engine in a process of its own and in
// this one, against a bare playbin3 that prerolls the same media at the same place, in the same process and in turns:
// from a file and from a loopback server. Prints medians and ratios, and the very first item of the program apart.
//
//   bench_first_frame CLIP [ROUNDS] [START]     the first round is discarded; START in whole seconds, 0 without
//   bench_first_frame --kinds SAMPLES [ROUNDS]  short clips of several kinds in the folder of the tests' samples, and a
//                                               playlist of segments with texts (hls/master.m3u8)
#include <QEventLoop>
#include <QGuiApplication>
#include <QTimer>
#include <filesystem>
#include <memory>
#include <utility>

#include "bench/Playbin.h"
#include "platform/avfoundation/engine/MediaEngine.h"
#include "platform/avfoundation/layer/AVPlayerLayer.h"
#include "platform/uikit/UIWindow.h"
#include "player/YMRVideoPlayer.h"
#include "player/YMRVideoPlayerImpl.h"
#include "tests/support/HTTPServer.h"

namespace {

using Clock = std::chrono::steady_clock;

std::shared_ptr<AVPlayerLayer> layerOf(const std::shared_ptr<UIView>& view) {
  for (const auto& layer : view->layer()->sublayers()) {
    if (auto found = std::dynamic_pointer_cast<AVPlayerLayer>(layer)) return found;
  }
  for (const auto& subview : view->subviews()) {
    if (auto found = layerOf(subview)) return found;
  }
  return nullptr;
}

// Screens fade in and out, pipelines stop: none of it may cost either contender anything.
void comeToRest() {
  QEventLoop loop;
  QTimer::singleShot(700, &loop, &QEventLoop::quit);
  loop.exec();
}

// From the call to the first picture on the screen. The player is made, and its screen is up, before.
double playerFirstFrame(const std::shared_ptr<UIViewController>& root, const NSURL& url, int startPosition) {
  YMRVideoPlayer player;
  const auto delegate = std::make_shared<YMRVideoPlayerDelegate>();
  delegate->videoOnError = [](const NSError& error) { std::fprintf(stderr, "%s\n", error.message.c_str()); };
  player.setDelegate(delegate);
  player.presentWithController(root);
  comeToRest();
  bool isOnScreen = false;
  double elapsed = 0;
  const auto layer = layerOf(player.ymrPlayer()->avPlayerVC()->view());
  const auto start = Clock::now();
  layer->setPicturePresented([&](const CMTime& time) {
    if (!isOnScreen) elapsed = millisecondsSince(start);
    if (!isOnScreen && CMTimeGetSeconds(time) < startPosition - 0.1) std::fputs("a picture of elsewhere\n", stderr);
    isOnScreen = true;
  });
  player.playWithMediaItem(YMRMediaItem::itemWithUrl(url), startPosition);
  while (!isOnScreen && millisecondsSince(start) < 30'000)
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  layer->setPicturePresented({});
  player.dismiss();
  comeToRest();
  if (!isOnScreen) {
    std::fprintf(stderr, "no picture of %s within 30 s\n", url.absoluteString().c_str());
    std::exit(1);
  }
  return elapsed;
}

double firstFrameOf(MediaEngineSettings::Process process, const std::shared_ptr<UIViewController>& root,
                    const NSURL& url, int start) {
  MediaEngineSettings::shared().process = process;
  return playerFirstFrame(root, url, start);
}

void compare(const char* name, const std::shared_ptr<UIViewController>& root, const NSURL& url, int rounds, int start) {
  using Process = MediaEngineSettings::Process;
  std::vector<double> own, host, bare;
  for (int round = 0; round <= rounds; ++round) {
    const double first = firstFrameOf(Process::own, root, url, start);
    static bool isFirst = true;
    if (std::exchange(isFirst, false)) std::printf("first item of all at %2d s, %-16s %6.1f ms\n", start, name, first);
    const double here = firstFrameOf(Process::host, root, url, start);
    const double peer = barePreroll(url.absoluteString(), start);
    if (round == 0) continue;
    own.push_back(first);
    host.push_back(here);
    bare.push_back(peer);
  }
  std::printf(
      "first frame at %2d s, %-16s %6.1f ms  engine in the host %6.1f ms, ratio %.2f  bare playbin3 preroll %6.1f ms, "
      "ratio %.2f\n",
      start, name, median(own), median(host), median(own) / median(host), median(bare), median(own) / median(bare));
}

void compareKinds(const std::string& samples, const std::shared_ptr<UIViewController>& root, int rounds) {
  HTTPServer server;
  for (const auto& each : std::filesystem::recursive_directory_iterator(samples)) {
    if (!each.is_regular_file()) continue;
    const auto place = "/" + std::filesystem::relative(each.path(), samples).string();
    server.onFile(place, each.path().string(), "application/octet-stream");
  }
  for (const char* name : {"clip.mp4", "clip.mkv", "clip.ts"}) {
    compare(name, root, NSURL::fileURLWithPath(samples + "/" + name), rounds, 0);
  }
  for (const char* name : {"clip.mp4", "clip.mkv", "clip.ts", "hls/master.m3u8"}) {
    const std::string place = std::string("/") + name;
    compare(place.c_str(), root, *NSURL::URLWithString(server.url(place)), rounds, 0);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fputs("usage: bench_first_frame CLIP [ROUNDS] [START]\n", stderr);
    return 2;
  }
  const int rounds = argc > 2 ? std::max(1, std::atoi(argv[2])) : 11;
  const int start = argc > 3 ? std::max(0, std::atoi(argv[3])) : 0;
  qputenv("QT_QPA_PLATFORM", qgetenv("DISPLAY").isEmpty() ? "offscreen" : "xcb");
  QGuiApplication application(argc, argv);
  gst_init(nullptr, nullptr);
  MediaEngineSettings::shared().audio = MediaEngineSettings::Audio::none;
  UIWindow window(CGSize{1920, 1080}, UIGraphics::software);
  const auto root = std::make_shared<UIViewController>();
  window.setRootViewController(root);
  window.makeKeyAndVisible();

  if (std::string_view(argv[1]) == "--kinds") {
    if (argc > 2) compareKinds(argv[2], root, argc > 3 ? std::max(1, std::atoi(argv[3])) : 11);
    return argc > 2 ? 0 : 2;
  }
  HTTPServer server;
  server.onFile("/clip.mp4", argv[1], "video/mp4");
  compare("file", root, NSURL::fileURLWithPath(argv[1]), rounds, start);
  compare("loopback", root, *NSURL::URLWithString(server.url("/clip.mp4")), rounds, start);
}
