// Pods of two to four short ads, drawn by lot, in a mid-roll over loopback, as the viewer sees them: how long the
// screen stands between two ads, and how often it is black: with the next film made ready ahead, without, and for a
// viewer who skips each ad 0.9 s after its beginning, in turns. When skipped, the last ad's gap is that to the
// programme.
//
//   bench_pods PODS PROGRAMME CLIP...     numbered clips; the ads' numbers from 32768, each of its own thousand
#include <QGuiApplication>
#include <QTimer>
#include <algorithm>
#include <memory>
#include <random>

#include "ads/YMRAdSchedule.h"
#include "ads/core/SKVASTMediaFilePicker.h"
#include "ads/core/VASTSettings.h"
#include "bench/adbreak/ScreenWatch.h"
#include "bench/adbreak/Until.h"
#include "platform/avfoundation/engine/MediaEngine.h"
#include "platform/uikit/UIWindow.h"
#include "player/YMRVideoPlayer.h"
#include "player/YMRVideoPlayerImpl.h"
#include "tests/support/HTTPServer.h"

namespace {

enum class Way { madeReady, asItComes, skipped };

struct Outcome {
  std::vector<double> gaps;       // milliseconds from an ad's last picture to the next one's first
  std::vector<double> intervals;  // the same in frame intervals of the ad that ended
  int black = 0;                  // times that the screen was black between the first ad's picture and the last one's
  int requests = 0;               // of films
  int ads = 0;
};

std::string tagOf(const HTTPServer& server, const std::vector<int>& clips) {
  std::string ads;
  for (std::size_t place = 0; place < clips.size(); ++place) {
    ads += "<Ad id=\"" + std::to_string(place) + "\" sequence=\"" + std::to_string(place + 1) +
           "\"><InLine><AdSystem>b</AdSystem><AdTitle>b</AdTitle><Impression>" + server.url("/i") +
           "</Impression><Creatives><Creative><Linear "
           "skipoffset=\"0%\"><Duration>00:00:02</Duration><MediaFiles><MediaFile "
           "delivery=\"progressive\" type=\"video/mp4\" width=\"1280\" height=\"720\">" +
           server.url("/" + std::to_string(clips[place]) + ".mp4") +
           "</MediaFile></MediaFiles></Linear></Creative></Creatives></InLine></Ad>";
  }
  return "<VAST version=\"3.0\">" + ads + "</VAST>";
}

int clipOf(const ScreenWatch::Picture& picture) {
  return picture.number / 1000;
}

void evaluate(const std::vector<ScreenWatch::Picture>& seen, Outcome& outcome) {
  const auto isAd = [](const auto& picture) { return picture.number >= 32768; };
  const auto first = std::ranges::find_if(seen, isAd);
  auto end = std::find_if(seen.rbegin(), seen.rend(), isAd).base();
  // The programme's first picture after the pod, if it was waited for.
  const auto back = std::find_if(end, seen.end(), [](const auto& picture) { return picture.number != 0; });
  if (back != seen.end()) end = back + 1;
  std::vector<double> steps;
  const auto* last = &*first;
  for (auto at = first + 1; at < end; last = at->number != 0 ? &*at : last, ++at) {
    outcome.black += at->number == 0 && (at - 1)->number != 0;
    if (at->number == 0) continue;
    const double step = millisecondsBetween(last->at, at->at);
    const bool isNext = clipOf(*at) != clipOf(*last) || at->number < last->number;
    if (!isNext) steps.push_back(step);
    if (!isNext || steps.empty()) continue;
    outcome.gaps.push_back(step);
    outcome.intervals.push_back(step / median(steps));
    steps.clear();
  }
}

void play(const std::shared_ptr<UIViewController>& root, ScreenWatch& watch, const NSURL& programme, const NSURL& tag,
          Way way, Outcome& outcome) {
  YMRVideoPlayer player;
  bool isOver = false, isBack = false, dismissed = false;
  const auto delegate = std::make_shared<YMRVideoPlayerDelegate>();
  delegate->videoAdOnPodComplete = [&](const std::shared_ptr<YMRAd>&) { isOver = true; };
  delegate->videoAdOnError = [](const std::shared_ptr<YMRAd>&, const std::string& message) {
    std::fprintf(stderr, "%s\n", message.c_str());
  };
  const auto button = player.ymrPlayer()->adContainerView()->skipButton();
  if (way == Way::skipped) {
    delegate->videoAdOnStart = [&](const std::shared_ptr<YMRAd>&) {
      QTimer::singleShot(900, button.get(), [&] { button->press(); });
    };
  }
  delegate->videoOnTime = [&](double) { isBack = isOver; };
  delegate->playerDidDismiss = [&] { dismissed = true; };
  player.setDelegate(delegate);
  auto schedule = std::make_shared<YMRAdSchedule>();
  schedule->addAdBreak(YMRAd::initMidRollWithVastUrl(tag, 1));
  schedule->setTagProfile(YMRTagProfileBroad);
  schedule->setAdpodCountdownText("Ad · %d s");
  player.setAdSchedule(schedule);
  player.presentWithController(root);
  watch.clear();
  player.playWithMediaItem(YMRMediaItem::itemWithUrl(programme), 0);
  runUntil([&] { return way == Way::skipped ? isBack : isOver; }, "the end of the pod");
  evaluate(watch.pictures(), outcome);
  player.dismiss();
  runUntil([&] { return dismissed; }, "dismissal");
}

void report(const char* how, const Outcome& outcome) {
  auto gaps = outcome.gaps, intervals = outcome.intervals;
  std::ranges::sort(gaps);
  std::ranges::sort(intervals);
  const auto within = std::ranges::count_if(intervals, [](double gap) { return gap <= 2; });
  std::printf("%-38s %3zu gaps: median %5.1f ms = %.2f frame intervals, longest %5.1f ms = %.2f, %td within 2\n", how,
              gaps.size(), median(gaps), median(intervals), gaps.back(), intervals.back(), within);
  std::printf("%-38s %3d times; %d requests for the films of %d ads\n", "  black between them", outcome.black,
              outcome.requests, outcome.ads);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fputs("usage: bench_pods PODS PROGRAMME CLIP...\n", stderr);
    return 2;
  }
  const int pods = std::max(1, std::atoi(argv[1])), clips = argc - 3;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QGuiApplication application(argc, argv);
  MediaEngineSettings::shared().audio = MediaEngineSettings::Audio::none;
  SKVASTMediaFilePicker::setProbeHost("127.0.0.1");
  UIWindow window(CGSize{1920, 1080}, UIGraphics::software);
  const auto root = std::make_shared<UIViewController>();
  window.setRootViewController(root);
  window.makeKeyAndVisible();
  ScreenWatch watch(window);

  HTTPServer server;
  server.onFile("/programme.mp4", argv[2], "video/mp4");
  for (int clip = 0; clip < clips; ++clip) {
    server.onFile("/" + std::to_string(clip) + ".mp4", argv[3 + clip], "video/mp4");
  }
  server.onOthers([](const HTTPServer::Request&) { return HTTPServer::Reply(); });
  const auto requests = [&] {
    int count = 0;
    for (int clip = 0; clip < clips; ++clip)
      count += static_cast<int>(server.count("/" + std::to_string(clip) + ".mp4"));
    return count;
  };
  std::minstd_rand lots(1);
  Outcome outcomes[3];
  for (int pod = 0; pod < pods; ++pod) {
    std::vector<int> drawn(2 + lots() % 3);
    std::ranges::generate(drawn, [&] { return static_cast<int>(lots() % static_cast<unsigned>(clips)); });
    const std::string path = "/tag" + std::to_string(pod);
    server.on(path, tagOf(server, drawn), "application/xml");
    for (const auto way : {Way::madeReady, Way::asItComes, Way::skipped}) {
      VASTSettings::setPreparesNextFilm(way != Way::asItComes);
      Outcome& outcome = outcomes[static_cast<int>(way)];
      const int before = requests();
      play(root, watch, *NSURL::URLWithString(server.url("/programme.mp4")), *NSURL::URLWithString(server.url(path)),
           way, outcome);
      outcome.requests += requests() - before;
      outcome.ads += static_cast<int>(drawn.size());
      std::fprintf(stderr, "  pod %d of %zu ads: gaps up to now %zu, black %d\n", pod + 1, drawn.size(),
                   outcome.gaps.size(), outcome.black);
    }
  }
  report("the next film made ready ahead", outcomes[0]);
  report("asked for at its turn", outcomes[1]);
  report("made ready, each ad skipped", outcomes[2]);
  return outcomes[0].black + outcomes[2].black == 0 ? 0 : 1;
}
