// Ad breaks with real media from a real server, in a window that draws: films of every bad kind, and many breaks in one
// process.
//
// With YMR_BREAKS=500 in the environment the last case is a soak, which prints what a break costs in the long run.
#include <algorithm>

#include "ads/core/SKVASTMediaFilePicker.h"
#include "platform/avfoundation/engine/MediaEngine.h"
#include "player/YMRVideoPlayer.h"
#include "player/YMRVideoPlayerImpl.h"
#include "tests/player/Soak.h"

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

namespace {

std::string sample(const std::string& name) {
  return std::string(YMR_SAMPLES) + "/" + name;
}

class BreakMedia : public testing::Test {
 protected:
  BreakMedia() {
    SKVASTMediaFilePicker::setProbeHost("127.0.0.1");
    MediaEngineSettings::shared().audio = MediaEngineSettings::Audio::none;
    MediaEngineSettings::shared().firstFrameSilenceLimit = 1.5;
    server.onOthers([](const HTTPServer::Request& request) {
      return HTTPServer::Reply{.status = request.path.rfind("/track/", 0) == 0 ? 200 : 404};
    });
    delegate->videoAdOnComplete = [this](const auto&) { endings.emplace_back("complete"); };
    delegate->videoAdOnErrorDesc = [this](const auto&, int code, const auto&) {
      endings.push_back("error " + std::to_string(code));
    };
    delegate->videoOnTime = [this](double) { ++ticks; };
    delegate->videoDidPlayFinished = [this] { isFinished = true; };
  }
  ~BreakMedia() override { MediaEngineSettings::shared() = {}; }

  // A tag with one ad whose film is /film/NAME.mp4.
  NSURL tag(const std::string& name) {
    server.on("/tag/" + name, adDocument({{name}}, {server.url("/film"), server.url("/track")}), "application/xml");
    return *NSURL::URLWithString(server.url("/tag/" + name));
  }

  // Plays a half-second programme with the schedule from its beginning to its dismissal.
  void play(const std::shared_ptr<YMRAdSchedule>& schedule, std::chrono::seconds bound) {
    UIWindow window(CGSize{320, 180}, screenGraphics());
    window.setRootViewController(std::make_shared<UIViewController>());
    window.makeKeyAndVisible();
    isFinished = false;
    auto owned = std::make_unique<YMRVideoPlayer>();
    auto& player = *owned;
    player.setDelegate(delegate);
    player.setAdSchedule(schedule);
    player.presentWithController(window.rootViewController());
    player.playWithMediaItem(YMRMediaItem::itemWithUrl(NSURL::fileURLWithPath(sample("half.mp4"))), 0);
    const auto deadline = std::chrono::steady_clock::now() + bound;
    const auto isOver = [&] { return isFinished || std::chrono::steady_clock::now() > deadline; };
    while (!isOver()) runEventsUntil([&, next = 0]() mutable { return isOver() || ++next > 20; });
    EXPECT_TRUE(isFinished);
    EXPECT_EQ(player.ymrPlayer()->adPlayer(), nullptr);
    const std::weak_ptr<AVPlayerViewController> screen = player.ymrPlayer()->avPlayerVC();
    player.dismiss();
    EXPECT_TRUE(runEventsUntil([&] { return !window.rootViewController()->presentedViewController(); }));
    owned.reset();
    EXPECT_TRUE(runEventsUntil([&] { return screen.expired(); }));
  }

  // The tracking requests of one ad as they came in.
  Lines tracked(const std::string& ad) {
    Lines lines;
    const std::string path = "/track/" + ad + "/";
    for (const auto& request : server.log()) {
      if (request.path.rfind(path, 0) == 0) lines.push_back(request.path.substr(path.size()));
    }
    std::sort(lines.begin(), lines.end());  // several connections: on the way they may overtake each other
    return lines;
  }

  QGuiApplication& application = screenApplication();
  HTTPServer server;
  std::shared_ptr<YMRVideoPlayerDelegate> delegate = std::make_shared<YMRVideoPlayerDelegate>();
  Lines endings;
  int ticks = 0;
  bool isFinished = false;
};

}  // namespace

TEST_F(BreakMedia, aFilmHasOneEndingHoweverItFailsAndTheProgrammeComes) {
  using Reply = HTTPServer::Reply;
  const std::string failed = "error 10";
  struct Film {
    const char* name;
    Reply reply;
    std::string ending;
  };
  const auto file = [](const char* name) { return Reply{.type = "video/mp4", .file = sample(name)}; };
  auto silent = file("half.mp4");
  silent.silent = true;
  const std::vector<Film> films{
      {"page-as-film", file("page.mp4"), failed},
      {"silent-server", silent, failed},
      {"truncated", file("truncated.mp4"), failed},
      {"odd-size", file("odd.mp4"), "complete"},
  };
  const auto schedule = std::make_shared<YMRAdSchedule>();
  Lines expected;
  for (const auto& film : films) {
    server.on(std::string("/film/") + film.name + ".mp4", film.reply);
    schedule->addAdBreak(YMRAd::initPreRollWithVastUrl(tag(film.name)));
    expected.push_back(film.ending);
  }
  play(schedule, 90s);
  EXPECT_EQ(endings, expected);
  EXPECT_GE(ticks, 1) << "the programme";
  for (const auto& film : films) {
    const bool completes = film.ending == "complete";
    EXPECT_EQ(tracked(film.name), (Lines{completes ? "complete" : "creativeView",
                                         completes ? "creativeView" : "error-402", "impression", "start"}))
        << film.name;
  }
}

TEST_F(BreakMedia, manyBreaksEachInAPlayerOfItsOwnLeaveNothingBehind) {
  Soak soak("YMR_BREAKS");
  const AdServerProcess ads;
  const std::shared_ptr<YMRAd> kinds[] = {YMRAd::initPreRollWithVastUrl(ads.tag()),
                                          YMRAd::initMidRollWithVastUrl(ads.tag(), 0),
                                          YMRAd::initPostRollWithVastUrl(ads.tag())};
  for (int done = 0; done < soak.rounds(); ++done) {
    SCOPED_TRACE(done);
    const auto schedule = std::make_shared<YMRAdSchedule>();
    schedule->addAdBreak(kinds[done % 3]);
    endings.clear();
    ASSERT_NO_FATAL_FAILURE(play(schedule, 30s));
    ASSERT_EQ(endings, Lines{"complete"});
    soak.roundIsOver();
  }
  soak.isOver();
}
