// A mid-roll behind four wrappers, all on loopback, as the viewer sees it: how long until the ad is on the screen,
// against a bare playbin3 that prerolls the same ad in the same process, and what is on the screen around it; with the
// engine in processes of their own and, in turns, in this one.
//
//   bench_adbreak PROGRAMME AD [ROUNDS]     numbered clips, the ad's numbers from 32768; the first round is discarded
#include <QGuiApplication>
#include <cmath>
#include <memory>

#include "ads/YMRAdSchedule.h"
#include "ads/core/SKVASTMediaFilePicker.h"
#include "bench/adbreak/ScreenWatch.h"
#include "bench/adbreak/Until.h"
#include "platform/avfoundation/engine/MediaEngine.h"
#include "platform/uikit/UIWindow.h"
#include "player/YMRVideoPlayer.h"
#include "tests/support/HTTPServer.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int wrappers = 4;
constexpr int midRollSecond = 2;
constexpr double frameInterval = 1000.0 / 30;
constexpr int picturesAfter = 15;

bool isAd(const ScreenWatch::Picture& picture) {
  return picture.number >= 32768;
}

// Everything in milliseconds.
struct Round {
  double late;          // the programme's position when its break was begun, after the second that was asked for
  double dueToAd;       // from the tick that was due to the ad's first picture
  double gapBefore;     // from the programme's last picture to the ad's first
  double gapToPicture;  // from the ad's last picture to the programme's
  double gapToNext;     // from the ad's last picture to the first one of the programme that was not there before
  int jump;             // how many pictures on it was; 1 is right
  int strays;           // black pictures and others that belong to neither side
};

void serve(HTTPServer& server, const char* programme, const char* ad) {
  server.onFile("/programme.mp4", programme, "video/mp4");
  server.onFile("/ad.mp4", ad, "video/mp4");
  server.onOthers([](const HTTPServer::Request&) { return HTTPServer::Reply(); });
  for (int hop = 0; hop < wrappers; ++hop) {
    server.on("/tag" + std::to_string(hop),
              "<VAST version=\"2.0\"><Ad id=\"w\"><Wrapper><AdSystem>b</AdSystem><VASTAdTagURI>" +
                  server.url("/tag" + std::to_string(hop + 1)) + "</VASTAdTagURI><Impression>" + server.url("/i") +
                  "</Impression><Creatives/></Wrapper></Ad></VAST>",
              "application/xml");
  }
  server.on("/tag" + std::to_string(wrappers),
            "<VAST version=\"2.0\"><Ad id=\"a\"><InLine><AdSystem>b</AdSystem><AdTitle>b</AdTitle><Impression>" +
                server.url("/i") +
                "</Impression><Creatives><Creative><Linear><Duration>00:00:02</Duration><MediaFiles><MediaFile "
                "delivery=\"progressive\" type=\"video/mp4\" width=\"1280\" height=\"720\">" +
                server.url("/ad.mp4") +
                "</MediaFile></MediaFiles></Linear></Creative></Creatives></InLine></Ad></VAST>",
            "application/xml");
}

int moved(const std::vector<ScreenWatch::Picture>& pictures) {
  int count = 0;
  for (auto one = pictures.rbegin(); one != pictures.rend() && !isAd(*one); ++one) ++count;
  return count;
}

Round evaluate(const std::vector<ScreenWatch::Picture>& seen, Clock::time_point due) {
  std::size_t firstAd = 0, lastAd = 0;
  for (std::size_t at = 0; at < seen.size(); ++at) {
    if (!isAd(seen[at])) continue;
    if (firstAd == 0) firstAd = at;
    lastAd = at;
  }
  if (firstAd == 0) {
    std::fputs("the ad never came to the screen\n", stderr);
    std::exit(1);
  }
  Round round{};
  std::size_t lastBefore = firstAd - 1;
  for (; lastBefore > 0 && seen[lastBefore].number == 0; --lastBefore) ++round.strays;
  for (std::size_t at = 1; at < firstAd; ++at) {
    if (seen[at].number != 0 && seen[at].number < seen[at - 1].number) ++round.strays;
  }
  for (std::size_t at = firstAd; at < lastAd; ++at) round.strays += !isAd(seen[at]);
  round.dueToAd = millisecondsBetween(due, seen[firstAd].at);
  round.gapBefore = millisecondsBetween(seen[lastBefore].at, seen[firstAd].at);
  const int stoppedAt = seen[lastBefore].number;
  bool isBack = false;
  for (std::size_t at = lastAd + 1; at < seen.size(); ++at) {
    if (seen[at].number != stoppedAt && seen[at].number != stoppedAt + 1 && seen[at].number <= seen[at - 1].number) {
      ++round.strays;
    } else if (!std::exchange(isBack, true)) {
      round.gapToPicture = millisecondsBetween(seen[lastAd].at, seen[at].at);
    }
    if (seen[at].number > stoppedAt) {
      round.gapToNext = millisecondsBetween(seen[lastAd].at, seen[at].at);
      round.jump = seen[at].number - stoppedAt;
      break;
    }
  }
  return round;
}

Round play(const std::shared_ptr<UIViewController>& root, ScreenWatch& watch, const HTTPServer& server) {
  YMRVideoPlayer player;
  bool completed = false, dismissed = false;
  Clock::time_point due;
  double position = 0;
  const auto delegate = std::make_shared<YMRVideoPlayerDelegate>();
  delegate->videoAdOnRequest = [&](const std::shared_ptr<YMRAd>&) {
    due = Clock::now();
    position = player.currentPosition();
  };
  delegate->videoAdOnComplete = [&](const std::shared_ptr<YMRAd>&) { completed = true; };
  delegate->videoAdOnError = [](const std::shared_ptr<YMRAd>&, const std::string& message) {
    std::fprintf(stderr, "%s\n", message.c_str());
  };
  delegate->playerDidDismiss = [&] { dismissed = true; };
  player.setDelegate(delegate);
  auto schedule = std::make_shared<YMRAdSchedule>();
  schedule->addAdBreak(YMRAd::initMidRollWithVastUrl(NSURL::URLWithString(server.url("/tag0")), midRollSecond));
  schedule->setAdCountdownText("Ad · %d s");
  player.setAdSchedule(schedule);
  player.presentWithController(root);
  player.playWithMediaItem(YMRMediaItem::itemWithUrl(NSURL::URLWithString(server.url("/programme.mp4"))), 0);
  watch.clear();
  runUntil([&] { return completed && moved(watch.pictures()) >= picturesAfter; }, "the programme after the ad");
  Round round = evaluate(watch.pictures(), due);
  round.late = (position - midRollSecond) * 1000;
  player.dismiss();
  runUntil([&] { return dismissed; }, "dismissal");
  return round;
}

void report(const std::vector<Round>& rounds, const std::vector<double>& bare) {
  const auto of = [&](double Round::*field) {
    std::vector<double> values;
    for (const auto& round : rounds) values.push_back(round.*field);
    return median(values);
  };
  const auto intervals = [&](const char* what, double Round::*field) {
    std::printf("%-45s %6.1f ms = %.2f frame intervals, goal 2\n", what, of(field), of(field) / frameInterval);
  };
  std::printf("%-45s %6.1f ms / bare playbin3 preroll %.1f ms = %.2f, goal 2.5\n", "due tick to the ad's first picture",
              of(&Round::dueToAd), median(bare), of(&Round::dueToAd) / median(bare));
  intervals("programme's last picture to the ad's first", &Round::gapBefore);
  intervals("ad's last picture to the programme's", &Round::gapToPicture);
  intervals("ad's last picture to the programme's next", &Round::gapToNext);
  int right = 0, strays = 0;
  for (const auto& round : rounds) {
    right += round.jump == 1;
    strays += round.strays;
  }
  std::printf("%-45s %6.1f ms after second %d\n", "position when the break began", of(&Round::late), midRollSecond);
  std::printf("%-45s %4d of %zu rounds\n", "the right picture came next in", right, rounds.size());
  std::printf("%-45s %4d\n", "black and stray pictures in all rounds", strays);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fputs("usage: bench_adbreak PROGRAMME AD [ROUNDS]\n", stderr);
    return 2;
  }
  const int count = argc > 3 ? std::max(1, std::atoi(argv[3])) : 5;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QGuiApplication application(argc, argv);
  gst_init(nullptr, nullptr);
  MediaEngineSettings::shared().audio = MediaEngineSettings::Audio::none;
  SKVASTMediaFilePicker::setProbeHost("127.0.0.1");
  UIWindow window(CGSize{1920, 1080}, UIGraphics::software);
  const auto root = std::make_shared<UIViewController>();
  window.setRootViewController(root);
  window.makeKeyAndVisible();
  ScreenWatch watch(window);

  HTTPServer server;
  serve(server, argv[1], argv[2]);
  std::vector<Round> rounds, inHost;
  std::vector<double> bare;
  for (int number = 0; number <= count; ++number) {
    MediaEngineSettings::shared().process = MediaEngineSettings::Process::host;
    const Round here = play(root, watch, server);
    MediaEngineSettings::shared().process = MediaEngineSettings::Process::own;
    const Round round = play(root, watch, server);
    const double peer = barePreroll(server.url("/ad.mp4"));
    std::fprintf(
        stderr, "  round %d: %.1f ms, bare %.1f ms, before %.1f ms, after %.1f ms, next %.1f ms (+%d), %d stray\n",
        number, round.dueToAd, peer, round.gapBefore, round.gapToPicture, round.gapToNext, round.jump, round.strays);
    if (number == 0) continue;
    rounds.push_back(round);
    inHost.push_back(here);
    bare.push_back(peer);
  }
  report(rounds, bare);
  std::puts("with the engine in the host:");
  report(inHost, bare);
}
